// SPDX-License-Identifier: Apache-2.0

// Parses and serializes untrusted bytes.

#ifndef VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_
#define VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_

#include <google/protobuf/arena.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "support/messages.h"

namespace tests {

// What a message that was parsed from the bytes is serialized as, in hexadecimal
// digits, or "refused". Required fields may be missing.
//
// Fails the test unless the result is the same from one block, byte by byte from a
// stream, onto an arena and into a message that was used before, is as long as
// announced, and does not change when it is parsed and serialized again.
inline std::string writtenAgain(const google::protobuf::Message& prototype,
                                const std::string& bytes) {
  SCOPED_TRACE(toHex(bytes));
  const auto outcome = [](bool isRead, const google::protobuf::Message& message) {
    const std::size_t announced = message.ByteSizeLong();
    const std::string written = bytesOf(message);
    EXPECT_EQ(written.size(), announced) << toHex(written);
    return isRead ? toHex(written) : "refused";
  };
  const std::unique_ptr<google::protobuf::Message> message(prototype.New());
  const std::string written = outcome(message->ParsePartialFromString(bytes), *message);
  google::protobuf::io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), 1);
  EXPECT_EQ(outcome(message->ParsePartialFromZeroCopyStream(&stream), *message), written);
  google::protobuf::Arena arena;
  google::protobuf::Message* onArena = prototype.New(&arena);
  EXPECT_EQ(outcome(onArena->ParsePartialFromString(bytes), *onArena), written);
  if (written != "refused") {
    EXPECT_EQ(outcome(message->ParsePartialFromString(fromHex(written)), *message), written);
  }
  return written;
}

// Bytes of the wire format: a number, the tag of a field, and a field with a length.
inline std::string varint(std::uint64_t number) {
  std::string bytes;
  for (; number >= 0x80; number >>= 7) {
    bytes += static_cast<char>(0x80 | (number & 0x7f));
  }
  return bytes + static_cast<char>(number);
}

inline std::string tag(int field, int wireType) {
  return varint(static_cast<std::uint64_t>(field) << 3 | static_cast<std::uint64_t>(wireType));
}

inline std::string record(int field, const std::string& content) {
  return tag(field, 2) + varint(content.size()) + content;
}

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_MALFORMED_INPUT_PARSE_AND_SERIALIZE_H_
