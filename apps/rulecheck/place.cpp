// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/place.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace rulecheck {
namespace {

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

constexpr std::size_t kMostDigits = 9;

// Takes a number off the beginning of the text. -1 if there is none.
int takeNumber(std::string_view* text) {
  int number = -1;
  const auto end = std::min(text->find_first_not_of("0123456789"), text->size());
  if (end <= kMostDigits) {
    std::from_chars(text->data(), text->data() + end, number);
    text->remove_prefix(end);
  }
  return number;
}

// Takes ":12" off the end of the text. -1 if it ends otherwise.
int takeLastNumber(std::string_view* text) {
  const auto colon = text->find_last_not_of("0123456789");
  if (colon == std::string_view::npos || (*text)[colon] != ':') {
    return -1;
  }
  std::string_view digits = text->substr(colon + 1);
  const int number = takeNumber(&digits);
  if (number >= 0) {
    text->remove_suffix(text->size() - colon);
  }
  return number;
}

// Line and column of "L12", "L12C3", "12:3" or a range that begins so.
void addFragment(std::string_view fragment, Place* place) {
  fragment.remove_prefix(fragment.substr(0, 1) == "L" ? 1 : 0);
  const int line = takeNumber(&fragment);
  const bool hasColumn = fragment.substr(0, 1) == "C" || fragment.substr(0, 1) == ":";
  fragment.remove_prefix(hasColumn ? 1 : 0);
  const int column = hasColumn ? takeNumber(&fragment) : 0;
  if (line >= 0 && column >= 0 && (fragment.empty() || fragment.front() == '-')) {
    place->line = line;
    place->column = column;
  }
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

// By hand, since each finding is asked for its place more than once.
Place placeOf(const Reference& reference) {
  Place place;
  std::string_view rest = reference.name();
  const int last = takeLastNumber(&rest);
  const int first = last < 0 ? -1 : takeLastNumber(&rest);
  place.line = std::max(first < 0 ? last : first, 0);
  place.column = first < 0 ? 0 : last;
  place.file = rest.empty() ? reference.url().path() : std::string(rest);
  if (reference.url().has_fragment()) {
    addFragment(reference.url().fragment(), &place);
  }
  place.source = reference.value().string_val();
  return place;
}

int placeArgument(const ArgList& arguments) {
  for (int i = 0; i < arguments.arg_size(); ++i) {
    if (isPlace(arguments.arg(i).ref())) {
      return i;
    }
  }
  return -1;
}

Place placeOf(const ArgList& arguments) {
  const int place = placeArgument(arguments);
  return place < 0 ? Place{} : placeOf(arguments.arg(place).ref());
}

}  // namespace rulecheck
