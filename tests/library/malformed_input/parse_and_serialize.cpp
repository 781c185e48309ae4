// SPDX-License-Identifier: Apache-2.0

#include "parse_and_serialize.h"

#include <google/protobuf/arena.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <gtest/gtest.h>

#include <memory>

#include "support/messages.h"

namespace tests {

using google::protobuf::Message;

namespace {

const char* const kRefused = "refused";

std::string outcome(bool isRead, const Message& message) {
  if (!isRead) {
    return kRefused;
  }
  const std::size_t announced = message.ByteSizeLong();
  const std::string written = bytesOf(message);
  EXPECT_EQ(written.size(), announced) << toHex(written);
  return toHex(written);
}

std::string readFromBlock(const Message& prototype, const std::string& bytes) {
  const std::unique_ptr<Message> message(prototype.New());
  const bool isRead = message->ParsePartialFromString(bytes);
  return outcome(isRead, *message);
}

std::string readByteByByte(const Message& prototype, const std::string& bytes) {
  google::protobuf::io::ArrayInputStream stream(bytes.data(), static_cast<int>(bytes.size()), 1);
  const std::unique_ptr<Message> message(prototype.New());
  const bool isRead = message->ParsePartialFromZeroCopyStream(&stream);
  return outcome(isRead, *message);
}

std::string readOntoArena(const Message& prototype, const std::string& bytes) {
  google::protobuf::Arena arena;
  Message* message = prototype.New(&arena);
  const bool isRead = message->ParsePartialFromString(bytes);
  return outcome(isRead, *message);
}

}  // namespace

std::string writtenAgain(const Message& prototype, const std::string& bytes) {
  const std::string written = readFromBlock(prototype, bytes);
  EXPECT_EQ(readByteByByte(prototype, bytes), written) << "byte by byte: " << toHex(bytes);
  EXPECT_EQ(readOntoArena(prototype, bytes), written) << "onto an arena: " << toHex(bytes);
  if (written != kRefused) {
    EXPECT_EQ(readFromBlock(prototype, fromHex(written)), written) << "once more: " << toHex(bytes);
  }
  return written;
}

std::string varint(std::uint64_t number) {
  std::string bytes;
  for (; number >= 0x80; number >>= 7) {
    bytes += static_cast<char>(0x80 | (number & 0x7f));
  }
  return bytes + static_cast<char>(number);
}

std::string tag(int field, int wireType) {
  return varint(static_cast<std::uint64_t>(field) << 3 | static_cast<std::uint64_t>(wireType));
}

std::string record(int field, const std::string& content) {
  return tag(field, 2) + varint(content.size()) + content;
}

}  // namespace tests
