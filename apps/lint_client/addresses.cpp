// SPDX-License-Identifier: Apache-2.0

#include "lint_client/addresses.h"

#include <string_view>

namespace lint_client {
namespace {

bool standsForItself(char c) {
  const bool isAlphanumeric =
      (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return isAlphanumeric || std::string_view("/-._~+,=@:()!$*").find(c) != std::string_view::npos;
}

}  // namespace

vok::rulecheck::Resource addressOf(const Place& place, const std::filesystem::path& directory) {
  vok::rulecheck::Resource address;
  address.set_scheme(vok::rulecheck::Resource::FILE);
  address.set_path(percentEncoded((directory / place.file).lexically_normal().string()));
  address.set_fragment("L" + std::to_string(place.line));
  return address;
}

std::string percentEncoded(const std::string& path) {
  const char* const digit = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (standsForItself(c)) {
      encoded += c;
    } else {
      encoded += '%';
      encoded += digit[byte >> 4];
      encoded += digit[byte & 15];
    }
  }
  return encoded;
}

}  // namespace lint_client
