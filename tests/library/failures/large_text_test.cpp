// SPDX-License-Identifier: Apache-2.0

// Texts of more than 4 GiB. They take as much memory, and seconds.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include "huge_text.h"

namespace {

using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Resource;
using vok::rulecheck::Scalar;

constexpr std::size_t fourGiB = std::size_t{1} << 32;

// Zero bytes with a letter here and there, so that it shows if a part is missing.
std::string largeText() {
  std::string text = tests::hugeText(fourGiB + 12345);
  for (std::size_t i = 0; i < text.size(); i += (std::size_t{1} << 27) + 1) {
    text[i] = static_cast<char>('a' + i % 26);
  }
  text.back() = 'z';
  return text;
}

// Not EXPECT_EQ, which would print the texts.
void expectText(std::string_view text, std::string_view start, std::string_view middle,
                std::string_view end) {
  ASSERT_EQ(text.size(), start.size() + middle.size() + end.size());
  EXPECT_EQ(text.substr(0, start.size()), start);
  EXPECT_TRUE(text.substr(start.size(), middle.size()) == middle);
  EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

std::size_t availableMemory() {
  std::ifstream in("/proc/meminfo");
  for (std::string word; in >> word;) {
    std::size_t kibibytes = 0;
    if (word == "MemAvailable:" && in >> kibibytes) {
      return kibibytes * 1024;
    }
  }
  return 0;
}

TEST(LargeText, IsComplete) {
  if (availableMemory() < 2 * fourGiB + fourGiB / 4) {
    GTEST_SKIP() << "9 GiB of memory are needed";
  }
  Scalar scalar;
  *scalar.mutable_string_val() = largeText();
  scalar.set_units("ns");
  const std::string& text = scalar.string_val();
  expectText(Converter::toString(scalar), "", text, " ns");

  Link link;
  link.mutable_url()->set_scheme(Resource::FILE);
  *link.mutable_url()->mutable_path() = std::move(*scalar.mutable_string_val());
  const std::string& path = link.url().path();
  expectText(Converter::href(link.url()), "file:///", path, "");
  expectText(Converter::toHtml(link), "<a href=\"file:///", path, "\">link</a>");

  Arg argument;
  argument.mutable_refs()->add_ref()->set_name("first");
  *argument.mutable_refs()->add_ref()->mutable_name() =
      std::move(*link.mutable_url()->mutable_path());
  argument.mutable_refs()->add_ref()->set_name("last");
  expectText(Converter::toHtml(argument), "first,", argument.refs().ref(1).name(), ",last");
}

}  // namespace
