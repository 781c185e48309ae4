#include "html_report/safe_text.h"

#include <cstddef>
#include <string_view>

namespace html_report {
namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr std::string_view replacementBytes = "\xEF\xBF\xBD";

struct CodePoint {
  char32_t value;
  std::size_t length;
};

// The number of bytes that the first byte of a sequence announces; 0 if no
// sequence begins with that byte.
std::size_t announcedLength(unsigned char lead) {
  if (lead < 0x80) {
    return 1;
  }
  return lead < 0xC0 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 0;
}

// The code point that the text begins with. One byte that begins no well-formed
// sequence counts as a replacement character.
CodePoint firstOf(std::string_view text) {
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  constexpr CodePoint malformed = {replacement, 1};
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = announcedLength(lead);
  if (length == 0 || length > text.size()) {
    return malformed;
  }
  char32_t value = length == 1 ? lead : lead & (0x7Fu >> length);
  for (const char byte : text.substr(1, length - 1)) {
    const auto next = static_cast<unsigned char>(byte);
    if ((next & 0xC0) != 0x80) {
      return malformed;
    }
    value = value << 6 | (next & 0x3F);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < smallest[length] || value > 0x10FFFF || surrogate) {
    return malformed;
  }
  return {value, length};
}

bool isControl(char32_t value) {
  return (value < 0x20 && value != '\t' && value != '\n') || (value >= 0x7F && value < 0xA0);
}

bool isNoncharacter(char32_t value) {
  return (value >= 0xFDD0 && value <= 0xFDEF) || (value & 0xFFFE) == 0xFFFE;
}

// What stands for a code point, whose bytes are given.
std::string_view shown(char32_t value, std::string_view bytes) {
  switch (value) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    case '\r': return "";
    case replacement: return replacementBytes;
    default: return isControl(value) || isNoncharacter(value) ? replacementBytes : bytes;
  }
}

}  // namespace

std::string escapeText(const std::string& text) {
  std::string html;
  html.reserve(text.size());
  std::string_view rest = text;
  while (!rest.empty()) {
    const CodePoint first = firstOf(rest);
    html += shown(first.value, rest.substr(0, first.length));
    rest.remove_prefix(first.length);
  }
  return html;
}

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

}  // namespace html_report
