// SPDX-License-Identifier: Apache-2.0

// What the tests share: messages from text, bytes from hexadecimal digits, and
// the list of all message types.

#ifndef VOK_TESTS_SUPPORT_MESSAGES_H_
#define VOK_TESTS_SUPPORT_MESSAGES_H_

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>
#include <google/protobuf/text_format.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tests {

// The default instances of all message types, in declaration order.
const std::vector<const google::protobuf::Message*>& allMessages();

// A new message of the type with that name, such as "Resource".
std::unique_ptr<google::protobuf::Message> newMessage(const std::string& type);

// Fills a message from text format; required fields may be missing.
void fill(const std::string& text, google::protobuf::Message* message);

template <typename Message>
Message parse(const std::string& text) {
  Message message;
  fill(text, &message);
  return message;
}

// The text format of a message.
std::string textOf(const google::protobuf::Message& message);

// The bytes of a message in deterministic mode; required fields may be missing.
std::string bytesOf(const google::protobuf::Message& message);

// Whether all required fields are set in a message and in the messages inside it,
// computed from descriptors, not by generated code.
bool isComplete(const google::protobuf::Message& message);

// "08 0f" gives two bytes, and back.
std::string fromHex(const std::string& digits);
std::string toHex(const std::string& bytes);

// The offsets at which a top-level field ends, 0 included.
std::vector<std::size_t> fieldBoundaries(const std::string& bytes);

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_MESSAGES_H_
