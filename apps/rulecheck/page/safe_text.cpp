// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_text.h"

#include <string_view>

#include "common/characters.h"

namespace rulecheck {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

// What stands for a code point, whose bytes are given.
std::string_view shown(char32_t value, std::string_view bytes) {
  switch (value) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    case '\r': return "";
    case '\t':
    case '\n': return bytes;
    default: return apps::isHarmless(value) ? bytes : replacement;
  }
}

}  // namespace

std::string escapeText(const std::string& text) {
  std::string html;
  html.reserve(text.size());
  std::string_view rest = text;
  while (!rest.empty()) {
    const apps::CodePoint first = apps::firstOf(rest);
    html += shown(first.value, rest.substr(0, first.length));
    rest.remove_prefix(first.length);
  }
  return html;
}

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace rulecheck
