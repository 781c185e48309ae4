#include "support/messages.h"

#include <cctype>
#include <cstdint>

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

namespace {

std::uint64_t readVarint(const std::string& bytes, std::size_t* at) {
  std::uint64_t value = 0;
  for (unsigned shift = 0;; shift += 7) {
    const auto byte = static_cast<unsigned char>(bytes.at((*at)++));
    value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
    if (byte < 0x80) {
      return value;
    }
  }
}

void skipField(const std::string& bytes, std::size_t* at) {
  const auto wireType = readVarint(bytes, at) & 7;
  switch (wireType) {
    case 0: readVarint(bytes, at); return;
    case 1: *at += 8; return;
    case 2: {
      const auto length = readVarint(bytes, at);
      *at += static_cast<std::size_t>(length);
      return;
    }
    case 5: *at += 4; return;
    default: throw std::invalid_argument("unexpected wire type " + std::to_string(wireType));
  }
}

}  // namespace

std::vector<std::size_t> fieldBoundaries(const std::string& bytes) {
  std::vector<std::size_t> boundaries = {0};
  std::size_t at = 0;
  while (at < bytes.size()) {
    skipField(bytes, &at);
    boundaries.push_back(at);
  }
  return boundaries;
}

}  // namespace tests
