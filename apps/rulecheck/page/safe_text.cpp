// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_text.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "common/characters.h"

namespace rulecheck {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isPlain(char c) {
  const bool isMarkup = c == '&' || c == '<' || c == '>' || c == '"' || c == '\'';
  return (c >= ' ' && c < 0x7F && !isMarkup) || c == '\t' || c == '\n';
}

std::string_view reference(char32_t value, std::string_view bytes) {
  switch (value) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    default: return bytes;
  }
}

// The text that is shown for a code point; bytes are how it is encoded.
std::string_view shown(char32_t value, std::string_view bytes, bool isHtml) {
  if (value == '\r') {
    return "";
  }
  if (!apps::isHarmless(value)) {
    return replacement;
  }
  return isHtml ? reference(value, bytes) : bytes;
}

std::string converted(std::string_view rest, bool isHtml) {
  std::string text;
  text.reserve(rest.size());
  while (!rest.empty()) {
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(rest.begin(), rest.end(), isPlain) - rest.begin());
    text += rest.substr(0, plain);
    rest.remove_prefix(plain);
    if (!rest.empty()) {
      const apps::CodePoint first = apps::firstOf(rest);
      text += shown(first.value, rest.substr(0, first.length), isHtml);
      rest.remove_prefix(first.length);
    }
  }
  return text;
}

}  // namespace

std::string escapeText(const std::string& text) {
  return converted(text, true);
}

std::string cleanText(const std::string& text) {
  return converted(text, false);
}

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace rulecheck
