// SPDX-License-Identifier: Apache-2.0

// Messages on a stream of bytes.

#include "common/framing.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

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
  EXPECT_EQ("before" + tests::fromHex("05 0a 03 61 62 63"), stream);
}

TEST(Framing, ReadsWhatItWrote) {
  for (const std::size_t length : {0, 1, 100, 125, 126, 127, 128, 16000, 16381, 16384, 3000000}) {
    std::string stream;
    ASSERT_TRUE(appendFramed(tokenOf(length), &stream));
    ExchangeToken token;
    std::size_t position = 0;
    EXPECT_TRUE(readFramed(stream, &position, &token)) << length;
    EXPECT_EQ(stream.size(), position);
    EXPECT_EQ(length, token.token().size());
  }
}

TEST(Framing, RefusesAMessageThatIsTooLong) {
  ExchangeToken token;
  token.mutable_token()->resize(std::size_t{2} << 30);
  std::string stream = "before";
  EXPECT_FALSE(appendFramed(token, &stream));
  EXPECT_EQ("before", stream);
  for (const char* const path : {"a.pb", "a.json", "a.txt"}) {
    EXPECT_THROW(apps::encodeFor(path, token), apps::FileError) << path;
  }
}

TEST(Framing, KeepsMessagesApart) {
  std::string stream;
  for (const std::size_t length : {3, 0, 200}) {
    ASSERT_TRUE(appendFramed(tokenOf(length), &stream));
  }
  std::size_t position = 0;
  ExchangeToken token;
  for (const std::size_t length : {3, 0, 200}) {
    ASSERT_TRUE(readFramed(stream, &position, &token));
    EXPECT_EQ(length, token.token().size());
  }
  EXPECT_EQ(stream.size(), position);
  EXPECT_FALSE(readFramed(stream, &position, &token));
}

TEST(Framing, ReadsAnEmptyMessage) {
  std::string stream;
  ASSERT_TRUE(appendFramed(Links(), &stream));
  EXPECT_EQ(std::string(1, '\0'), stream);
  std::size_t position = 0;
  Links links;
  EXPECT_TRUE(readFramed(stream, &position, &links));
  EXPECT_EQ(1u, position);
}

TEST(Framing, RefusesEachTruncation) {
  std::string stream;
  ASSERT_TRUE(appendFramed(tokenOf(5), &stream));
  const std::size_t second = stream.size();
  ASSERT_TRUE(appendFramed(tokenOf(200), &stream));
  for (std::size_t size = 0; size < stream.size(); ++size) {
    SCOPED_TRACE(size);
    const std::string cut = stream.substr(0, size);
    ExchangeToken token;
    std::size_t position = size < second ? 0 : second;
    const std::size_t start = position;
    EXPECT_FALSE(readFramed(cut, &position, &token));
    EXPECT_EQ(start, position);
  }
}

TEST(Framing, RefusesMessagesThatAreTooLong) {
  std::string stream;
  ASSERT_TRUE(appendFramed(tokenOf(10), &stream));
  ExchangeToken token;
  std::size_t position = 0;
  EXPECT_FALSE(readFramed(stream, &position, &token, 11));
  EXPECT_EQ(0u, position);
  EXPECT_TRUE(readFramed(stream, &position, &token, 12));
}

struct BadStream {
  const char* name;
  const char* hex;
};

TEST(Framing, RefusesBadStreams) {
  const BadStream streams[] = {
      {"a length that never ends", "80 80 80 80 80 80 80 80 80 80 80 01 0a 00"},
      {"a length of 4 GiB and 2 bytes", "82 80 80 80 10 0a 00"},
      {"the greatest length", "ff ff ff ff ff ff ff ff ff 01 0a 00"},
      {"a length of 2 GiB", "80 80 80 80 08 0a 00"},
      {"bytes that are no message", "02 0a 05"},
      {"a message that is incomplete", "00"},
      {"a message that lacks its required field", "02 10 01"},
      {"a field behind the end of the message", "01 0a 00"},
  };
  for (const BadStream& bad : streams) {
    ExchangeToken token;
    std::size_t position = 0;
    EXPECT_FALSE(readFramed(tests::fromHex(bad.hex), &position, &token)) << bad.name;
    EXPECT_EQ(0u, position) << bad.name;
  }
}

TEST(Framing, RefusesToWriteIncompleteMessages) {
  std::string stream = "x";
  EXPECT_FALSE(appendFramed(ExchangeToken(), &stream));
  EXPECT_EQ("x", stream);
}

}  // namespace
