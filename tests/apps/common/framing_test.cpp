// SPDX-License-Identifier: Apache-2.0

// Messages on a stream of bytes.

#include "common/framing.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "common/message_file.h"
#include "support/messages.h"

namespace {

using apps::appendFramed;
using apps::readFramed;
using vok::rulecheck::ExchangeToken;
using vok::rulecheck::Links;

ExchangeToken tokenOf(std::size_t length) {
  ExchangeToken token;
  token.set_token(std::string(length, 't'));
  return token;
}

TEST(Framing, PutsTheLengthBeforeTheMessage) {
  std::string stream = "before";
  ASSERT_TRUE(appendFramed(tests::parse<ExchangeToken>("token: 'abc'"), &stream));
  ASSERT_TRUE(appendFramed(Links(), &stream));
  EXPECT_EQ("before" + tests::fromHex("05 0a 03 61 62 63 00"), stream);
}

TEST(Framing, ReadsWhatItWrote) {
  const std::size_t lengths[] = {0, 1, 125, 126, 16381, 16384, 3000000};
  std::string stream;
  for (const std::size_t length : lengths) {
    ASSERT_TRUE(appendFramed(tokenOf(length), &stream));
  }
  ExchangeToken token;
  std::size_t position = 0;
  for (const std::size_t length : lengths) {
    EXPECT_TRUE(readFramed(stream, &position, &token)) << length;
    EXPECT_EQ(length, token.token().size());
  }
  EXPECT_EQ(stream.size(), position);
  EXPECT_FALSE(readFramed(stream, &position, &token));
}

TEST(Framing, RefusesToWriteMessagesThatAreIncompleteOrTooLong) {
  ExchangeToken longest;
  longest.mutable_token()->resize(std::size_t{2} << 30);
  std::string stream = "before";
  EXPECT_FALSE(appendFramed(longest, &stream));
  EXPECT_FALSE(appendFramed(ExchangeToken(), &stream));
  EXPECT_EQ("before", stream);
  for (const char* const path : {"a.pb", "a.json", "a.txt"}) {
    EXPECT_THROW(apps::encodeFor(path, longest), apps::FileError) << path;
  }
}

TEST(Framing, RefusesMalformedStreams) {
  std::string good;
  ASSERT_TRUE(appendFramed(tokenOf(200), &good));
  std::vector<std::string> streams;
  for (std::size_t size = 0; size < good.size(); ++size) {
    streams.push_back(good.substr(0, size));
  }
  for (const char* const hex : {
           "80 80 80 80 80 80 80 80 80 80 80 01 0a 00",  // a length that never ends
           "ff ff ff ff ff ff ff ff ff 01 0a 00",        // the greatest length
           "82 80 80 80 10 0a 00",                       // 4 GiB and 2 bytes
           "80 80 80 80 08 0a 00",                       // 2 GiB
           "02 0a 05",                                   // bytes that cannot be parsed
           "00",                                         // without the required field
           "02 10 01",                                   // the same
           "01 0a 00",                                   // a field that ends behind the message
       }) {
    streams.push_back(tests::fromHex(hex));
  }
  for (const std::string& stream : streams) {
    ExchangeToken token;
    std::size_t position = 0;
    EXPECT_FALSE(readFramed(stream, &position, &token)) << tests::toHex(stream);
    EXPECT_EQ(0u, position) << tests::toHex(stream);
  }
}

TEST(Framing, RefusesMessagesThatExceedTheLimit) {
  std::string stream;
  ASSERT_TRUE(appendFramed(tokenOf(10), &stream));
  ExchangeToken token;
  std::size_t position = 0;
  EXPECT_FALSE(readFramed(stream, &position, &token, 11));
  EXPECT_EQ(0u, position);
  EXPECT_TRUE(readFramed(stream, &position, &token, 12));
}

}  // namespace
