// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/place.h"

#include <gtest/gtest.h>

#include <string>

#include "support/messages.h"

namespace {

using rulecheck::Place;
using rulecheck::placeOf;
using rulecheck::textOf;
using vok::rulecheck::Reference;

struct WrittenCase {
  Place place;
  const char* name;
  const char* path;
  const char* fragment;
};

TEST(Place, IsWrittenAsAnAddressAndRelativeToTheDirectory) {
  const WrittenCase cases[] = {
      {{"a.v", 12, 3}, "a.v:12:3", "/d/e/a.v", "L12C3"},
      {{"./x/../a.v", 12, 0}, "a.v:12", "/d/e/a.v", "L12"},
      {{"../a.v", 0, 0}, "/d/a.v", "/d/a.v", ""},
      {{"/d/e/rtl/a.v", 1, 2}, "rtl/a.v:1:2", "/d/e/rtl/a.v", "L1C2"},
      {{"a b?c#d%\"<>&'", 1, 1},
       "a b?c#d%\"<>&':1:1",
       "/d/e/a%20b%3Fc%23d%25%22%3C%3E%26%27",
       "L1C1"},
      {{"\xc3\xa4\x01\x7f", 0, 0}, "\xc3\xa4\x01\x7f", "/d/e/%C3%A4%01%7F", ""},
      {{"a:b;c", 7, 1}, "a:b;c:7:1", "/d/e/a:b%3Bc", "L7C1"},
  };
  for (const WrittenCase& c : cases) {
    const Reference reference = referenceTo(c.place, "/d/e");
    EXPECT_EQ(c.name, reference.name());
    EXPECT_EQ(c.path, reference.url().path()) << c.name;
    EXPECT_EQ(c.fragment, reference.url().fragment()) << c.name;
  }
}

TEST(Place, IsReadFromReferences) {
  const std::pair<const char*, const char*> cases[] = {
      {"name: 'a.v:12:3' url { path: '/d/a.v' fragment: 'L12C3' }", "a.v:12:3"},
      {"name: 'a.v' url { path: '/d/a.v' fragment: 'L12C3' }", "a.v:12:3"},
      {"name: 'a.v:12' url { path: '/d/a.v' }", "a.v:12"},
      {"name: 'a.v' url { path: '/d/a.v' fragment: 'L12-L14' }", "a.v:12"},
      {"url { path: '/d/a.v' fragment: '7:2' }", "/d/a.v:7:2"},
      {"name: 'a.v' url { path: '/d/a.v' fragment: 'anchor' }", "a.v"},
      {"name: 'a:b.v:12345678901'", "a:b.v:12345678901"},
      {"name: 'a:1:2:3'", "a:1:2:3"},
      {"name: 'a.v:0:0'", "a.v"},
      {"name: ':7' url { path: '/d/a.v' }", "/d/a.v:7"},
      {"name: 'a.v:x' url { fragment: 'L7x' }", "a.v:x"},
      {"name: 'a.v:3:4' url { fragment: 'L7' }", "a.v:7"},
      {"", ""},
  };
  for (const auto& c : cases) {
    const auto reference = tests::parse<Reference>(std::string("type: FILE ") + c.first);
    EXPECT_EQ(c.second, textOf(placeOf(reference))) << c.first;
  }
}

TEST(Place, IsTheFirstFileWithAnAddress) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"arg { string_val: 'x' } arg { ref { type: PORT name: 'p' url { path: '/p' } } }"
       "arg { ref { type: FILE name: 'named' } }",
       ""},
      {"arg { ref { type: FILE name: 'named' } }"
       "arg { ref { type: FILE name: 'a:1' url { path: '/a' } } }"
       "arg { ref { type: FILE name: 'b:2' url { path: '/b' } } }",
       "a:1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.second, textOf(placeOf(tests::parse<vok::rulecheck::ArgList>(c.first)))) << c.first;
  }
}

}  // namespace
