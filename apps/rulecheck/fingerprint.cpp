// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/fingerprint.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <string_view>

#include "rulecheck/plain_text.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Arg;

// FNV-1a, which needs no library and never changes.
class Hash {
 public:
  // Of a part, which the next one can't continue.
  void add(std::string_view text) {
    bool isBlank = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        isBlank = !isEmpty_;
      } else if (const std::size_t length = positionLength(text.substr(i))) {
        i += length - 1;
      } else {
        if (isBlank) {
          addByte(' ');
        }
        isBlank = false;
        isEmpty_ = false;
        addByte(c);
      }
    }
    addByte('\0');
    isEmpty_ = true;
  }

  std::uint64_t value() const { return value_; }

 private:
  void addByte(char byte) { value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001b3; }

  static bool isDigit(char c) { return c >= '0' && c <= '9'; }

  // The length of ":12" at the beginning of the text, or 0.
  static std::size_t positionLength(std::string_view text) {
    std::size_t length = text.front() == ':' ? 1 : 0;
    while (length != 0 && length < text.size() && isDigit(text[length])) {
      ++length;
    }
    return length > 1 ? length : 0;
  }

  std::uint64_t value_ = 0xcbf29ce484222325;
  bool isEmpty_ = true;
};

}  // namespace

std::uint64_t fingerprintOf(const std::string& rule, const vok::rulecheck::MsgInst& message,
                            const Place& place) {
  Hash hash;
  hash.add(rule);
  hash.add(place.file);
  hash.add(place.source);
  hash.add(message.text());
  for (const Arg& argument : message.args().arg()) {
    hash.add(plainText(argument));
  }
  return hash.value();
}

std::string hexadecimal(std::uint64_t fingerprint) {
  std::array<char, 17> text;
  std::snprintf(text.data(), text.size(), "%016" PRIx64, fingerprint);
  return text.data();
}

}  // namespace rulecheck
