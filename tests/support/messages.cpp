// SPDX-License-Identifier: Apache-2.0

#include "support/messages.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <cctype>
#include <cstdint>
#include <stdexcept>

#include "support/message_types.h"

namespace tests {

using google::protobuf::Message;

namespace {

template <typename... Types>
std::vector<const Message*> defaultInstances(TypeList<Types...> /*types*/) {
  return {&Types::default_instance()...};
}

}  // namespace

const std::vector<const Message*>& allMessages() {
  static const auto messages = defaultInstances(MessageTypes());
  return messages;
}

std::unique_ptr<Message> newMessage(const std::string& type) {
  for (const Message* message : allMessages()) {
    if (std::string(message->GetDescriptor()->name()) == type) {
      return std::unique_ptr<Message>(message->New());
    }
  }
  throw std::invalid_argument("no message type " + type);
}

void fill(const std::string& text, Message* message) {
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  if (!parser.ParseFromString(text, message)) {
    throw std::invalid_argument("not the text of a message: " + text);
  }
}

std::string textOf(const Message& message) {
  std::string text;
  if (!google::protobuf::TextFormat::PrintToString(message, &text)) {
    throw std::runtime_error("a message cannot be printed");
  }
  return text;
}

std::string bytesOf(const Message& message) {
  std::string bytes;
  {
    google::protobuf::io::StringOutputStream sink(&bytes);
    google::protobuf::io::CodedOutputStream out(&sink);
    out.SetSerializationDeterministic(true);
    if (!message.SerializePartialToCodedStream(&out)) {
      throw std::runtime_error("a message cannot be serialized");
    }
  }
  return bytes;
}

bool isComplete(const Message& message) {
  const auto* type = message.GetDescriptor();
  const auto* reflection = message.GetReflection();
  for (int i = 0; i < type->field_count(); ++i) {
    if (type->field(i)->is_required() && !reflection->HasField(message, type->field(i))) {
      return false;
    }
  }
  std::vector<const google::protobuf::FieldDescriptor*> fields;
  reflection->ListFields(message, &fields);
  for (const auto* field : fields) {
    if (field->cpp_type() != google::protobuf::FieldDescriptor::CPPTYPE_MESSAGE) {
      continue;
    }
    if (!field->is_repeated() && !isComplete(reflection->GetMessage(message, field))) {
      return false;
    }
    for (int i = 0; field->is_repeated() && i < reflection->FieldSize(message, field); ++i) {
      if (!isComplete(reflection->GetRepeatedMessage(message, field, i))) {
        return false;
      }
    }
  }
  return true;
}

std::string fromHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (std::isspace(static_cast<unsigned char>(digits[i]))) {
      continue;
    }
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    ++i;
  }
  return bytes;
}

std::string toHex(const std::string& bytes) {
  const char* const digit = "0123456789abcdef";
  std::string digits;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    digits += digits.empty() ? "" : " ";
    digits += digit[value >> 4];
    digits += digit[value & 15];
  }
  return digits;
}

std::vector<std::size_t> fieldBoundaries(const std::string& bytes) {
  google::protobuf::io::CodedInputStream in(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                            static_cast<int>(bytes.size()));
  std::vector<std::size_t> boundaries = {0};
  while (const std::uint32_t tag = in.ReadTag()) {
    if (!google::protobuf::internal::WireFormatLite::SkipField(&in, tag)) {
      throw std::invalid_argument("malformed: " + toHex(bytes));
    }
    boundaries.push_back(static_cast<std::size_t>(in.CurrentPosition()));
  }
  return boundaries;
}

}  // namespace tests
