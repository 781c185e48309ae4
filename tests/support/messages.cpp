// SPDX-License-Identifier: Apache-2.0

#include "support/messages.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace tests {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

namespace {

template <typename... Types>
std::vector<const Message*> defaultInstances(TypeList<Types...> /*types*/) {
  return {&Types::default_instance()...};
}

std::string randomText(std::mt19937_64& random) {
  if (random() % 16 == 0) {
    return "text/html";
  }
  std::string text(random() % (random() % 20 == 0 ? 1000 : 40), ' ');
  for (char& c : text) {
    c = static_cast<char>(' ' + random() % 95);
  }
  return text;
}

}  // namespace

const std::vector<const Message*>& allMessages() {
  static const auto messages = defaultInstances(MessageTypes());
  return messages;
}

std::unique_ptr<Message> newMessage(const std::string& type) {
  const auto* descriptor =
      vok::rulecheck::Resource::descriptor()->file()->FindMessageTypeByName(type);
  if (descriptor == nullptr) {
    throw std::invalid_argument("no message type " + type);
  }
  return std::unique_ptr<Message>(
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(descriptor)->New());
}

void fill(const std::string& text, Message* message) {
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  if (!parser.ParseFromString(text, message)) {
    throw std::invalid_argument("not the text of a message: " + text);
  }
}

void fillRandomly(const std::function<int(const FieldDescriptor&)>& count, std::mt19937_64* random,
                  Message* message) {
  const auto* type = message->GetDescriptor();
  const auto* reflection = message->GetReflection();
  const auto integer = static_cast<std::int64_t>((*random)()) >> (*random)() % 64;
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    for (int n = type->options().map_entry() ? 1 : count(*field); n > 0; --n) {
      switch (field->cpp_type()) {
        case FieldDescriptor::CPPTYPE_MESSAGE:
          fillRandomly(count, random,
                       field->is_repeated() ? reflection->AddMessage(message, field)
                                            : reflection->MutableMessage(message, field));
          break;
        case FieldDescriptor::CPPTYPE_STRING:
          field->is_repeated() ? reflection->AddString(message, field, randomText(*random))
                               : reflection->SetString(message, field, randomText(*random));
          break;
        case FieldDescriptor::CPPTYPE_ENUM: {
          const auto* values = field->enum_type();
          const auto index = static_cast<int>((*random)() % 64) % values->value_count();
          reflection->SetEnum(message, field, values->value(index));
          break;
        }
        case FieldDescriptor::CPPTYPE_INT32:
          reflection->SetInt32(message, field, static_cast<std::int32_t>(integer));
          break;
        case FieldDescriptor::CPPTYPE_UINT32:
          reflection->SetUInt32(message, field, static_cast<std::uint32_t>(integer));
          break;
        case FieldDescriptor::CPPTYPE_INT64: reflection->SetInt64(message, field, integer); break;
        case FieldDescriptor::CPPTYPE_DOUBLE:
          reflection->SetDouble(message, field, std::ldexp(static_cast<double>(integer), -20));
          break;
        case FieldDescriptor::CPPTYPE_BOOL:
          reflection->SetBool(message, field, integer % 2 == 0);
          break;
        default: throw std::logic_error("a field of an unexpected type");
      }
    }
  }
}

std::unique_ptr<Message> fullMessage(const std::string& type) {
  std::mt19937_64 random;
  auto message = newMessage(type);
  fillRandomly([](const FieldDescriptor&) { return 1; }, &random, message.get());
  return message;
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

std::string fromHex(const std::string& digits) {
  std::string pairs;
  for (const char c : digits) {
    if (c != ' ') {
      pairs += c;
    }
  }
  std::string bytes;
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(pairs.substr(i, 2), nullptr, 16));
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

}  // namespace tests
