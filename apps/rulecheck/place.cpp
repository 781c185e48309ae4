// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/place.h"

#include <re2/re2.h>

#include <string_view>

namespace rulecheck {
namespace {

using vok::rulecheck::Arg;
using vok::rulecheck::ArgList;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;

namespace fs = std::filesystem;

// Encodes what would end a path early, or be taken for an encoding.
std::string percentEncoded(const std::string& path) {
  constexpr std::string_view kKept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/-._~+,=@:()!$*";
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : path) {
    if (kKept.find(c) != std::string_view::npos) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return encoded;
}

fs::path shownPath(const fs::path& absolute, const fs::path& directory) {
  const fs::path relative = absolute.lexically_relative(directory);
  return relative.empty() || *relative.begin() == ".." ? absolute : relative;
}

// A text may name a file that is not the finding's place. Such a reference has no address.
bool isPlace(const Reference& reference) {
  return reference.type() == Reference::FILE && reference.has_url();
}

}  // namespace

std::string textOf(const Place& place) {
  std::string text = place.file;
  for (const int number : {place.line, place.column}) {
    if (number == 0) {
      break;
    }
    text += ':' + std::to_string(number);
  }
  return text;
}

Reference referenceTo(const Place& place, const fs::path& directory) {
  const fs::path absolute = (directory / place.file).lexically_normal();
  Place shown = place;
  shown.file = shownPath(absolute, directory).string();
  Reference reference;
  reference.set_type(Reference::FILE);
  reference.set_name(textOf(shown));
  Resource* url = reference.mutable_url();
  url->set_scheme(Resource::FILE);
  url->set_path(percentEncoded(absolute.string()));
  if (place.line != 0) {
    url->set_fragment('L' + std::to_string(place.line) +
                      (place.column == 0 ? "" : 'C' + std::to_string(place.column)));
  }
  if (!place.source.empty()) {
    reference.mutable_value()->set_string_val(place.source);
  }
  return reference;
}

Place placeOf(const Reference& reference) {
  static const RE2 name(R"((?s)(.*?)(?::(\d{1,9}))?(?::(\d{1,9}))?)", RE2::Latin1);
  static const RE2 fragment(R"(L?(\d{1,9})(?:[C:](\d{1,9}))?(?:-.*)?)", RE2::Latin1);
  Place place;
  std::string line;
  std::string column;
  RE2::FullMatch(reference.name(), name, &place.file, &line, &column);
  if (place.file.empty()) {
    place.file = reference.url().path();
  }
  if (reference.url().has_fragment()) {
    RE2::FullMatch(reference.url().fragment(), fragment, &line, &column);
  }
  place.line = line.empty() ? 0 : std::stoi(line);
  place.column = column.empty() ? 0 : std::stoi(column);
  place.source = reference.value().string_val();
  return place;
}

Place placeOf(const ArgList& arguments) {
  for (const Arg& arg : arguments.arg()) {
    if (isPlace(arg.ref())) {
      return placeOf(arg.ref());
    }
  }
  return {};
}

}  // namespace rulecheck
