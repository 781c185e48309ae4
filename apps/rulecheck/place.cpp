// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/place.h"

#include <re2/re2.h>

#include <optional>
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

// Takes ":12" off the end of a text.
std::optional<int> takeNumber(std::string_view* text) {
  constexpr std::size_t kMostDigits = 9;
  const std::size_t digits = text->size() - (text->find_last_not_of("0123456789") + 1);
  if (digits == 0 || digits > kMostDigits || digits == text->size() ||
      (*text)[text->size() - digits - 1] != ':') {
    return std::nullopt;
  }
  const int number = std::stoi(std::string(text->substr(text->size() - digits)));
  text->remove_suffix(digits + 1);
  return number;
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
  static const RE2 fragment(R"(L?(\d{1,9})(?:[C:](\d{1,9}))?(?:-.*)?)", RE2::Latin1);
  std::string_view name = reference.name();
  const auto last = takeNumber(&name);
  const auto line = last ? takeNumber(&name) : std::nullopt;
  Place place{std::string(name), line ? *line : last.value_or(0), line ? *last : 0};
  if (place.file.empty()) {
    place.file = reference.url().path();
  }
  std::string lineText;
  std::string columnText;
  if (reference.url().has_fragment() &&
      RE2::FullMatch(reference.url().fragment(), fragment, &lineText, &columnText)) {
    place.line = std::stoi(lineText);
    place.column = columnText.empty() ? 0 : std::stoi(columnText);
  }
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
