// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/fingerprint.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <string_view>

#include "common/characters.h"
#include "rulecheck/plain_text.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Arg;

bool isAscii(std::string_view text) {
  unsigned char bits = 0;
  for (const char c : text) {
    bits |= static_cast<unsigned char>(c);
  }
  return bits < 0x80;
}

// Bytes that are not UTF-8 become blanks, as they do in JSON.
std::string wellFormed(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const apps::CodePoint first = apps::firstOf(text);
    const bool isMalformed = first.value == 0xFFFD && first.length == 1;
    result += isMalformed ? " " : text.substr(0, first.length);
    text.remove_prefix(first.length);
  }
  return result;
}

// FNV-1a, which needs no library and never changes.
class Hash {
 public:
  // Of a part, which the next one can't continue. The text of a message may have positions.
  void add(std::string_view text, bool isMessage = false) {
    if (isAscii(text)) {
      addWellFormed(text, isMessage);
    } else {
      addWellFormed(wellFormed(text), isMessage);
    }
  }

  std::uint64_t value() const { return value_; }

 private:
  void addWellFormed(std::string_view text, bool isMessage) {
    bool isBlank = false;
    bool isNamed = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        isBlank = !isEmpty_;
        isNamed = false;
      } else if (const std::size_t length = isNamed ? positionLength(text.substr(i)) : 0) {
        i += length - 1;
      } else {
        // "7:6" and "[7:6]" are ranges.
        isNamed = isMessage && c != '[' && c != '(' && (isNamed || isLetter(c));
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

  void addByte(char byte) { value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001b3; }

  static bool isDigit(char c) { return c >= '0' && c <= '9'; }
  // Or a part of one that is not ASCII.
  static bool isLetter(char c) { return !isAscii({&c, 1}) || ((c | 32) >= 'a' && (c | 32) <= 'z'); }

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
  hash.add(message.text(), true);
  for (const Arg& argument : message.args().arg()) {
    hash.add(plainText(argument), true);
  }
  return hash.value();
}

std::string hexadecimal(std::uint64_t fingerprint) {
  std::array<char, 17> text;
  std::snprintf(text.data(), text.size(), "%016" PRIx64, fingerprint);
  return text.data();
}

}  // namespace rulecheck
