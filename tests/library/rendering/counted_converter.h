// SPDX-License-Identifier: Apache-2.0

// Converter as the tests of rendering call it: the same functions, and each call
// is held to the promise on allocations.

#ifndef VOK_TESTS_LIBRARY_RENDERING_COUNTED_CONVERTER_H_
#define VOK_TESTS_LIBRARY_RENDERING_COUNTED_CONVERTER_H_

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cstddef>
#include <string>

#include "support/allocations.h"

namespace tests {

class CountedConverter {
 public:
  template <typename Value>
  static std::string toString(const Value& value) {
    return counted([&] { return vok::rulecheck::Converter::toString(value); });
  }

  static std::string href(const vok::rulecheck::Resource& resource) {
    return counted([&] { return vok::rulecheck::Converter::href(resource); });
  }

  static std::string toHtml(const vok::rulecheck::Resource& resource, const std::string& text) {
    return counted([&] { return vok::rulecheck::Converter::toHtml(resource, text); });
  }

  template <typename Message>
  static std::string toHtml(const Message& message) {
    return counted([&] { return vok::rulecheck::Converter::toHtml(message); });
  }

 private:
  // A call allocates once, or not at all if a string holds the text within itself.
  template <typename Call>
  static std::string counted(Call call) {
    const std::size_t before = allocations();
    const std::string text = call();
    const std::size_t made = allocations() - before;
    EXPECT_EQ(made, text.size() > std::string().capacity() ? 1u : 0u) << text;
    return text;
  }
};

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_RENDERING_COUNTED_CONVERTER_H_
