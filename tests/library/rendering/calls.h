// SPDX-License-Identifier: Apache-2.0

// Calls of Converter, by name.

#ifndef VOK_TESTS_LIBRARY_RENDERING_CALLS_H_
#define VOK_TESTS_LIBRARY_RENDERING_CALLS_H_

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "support/allocations.h"
#include "support/messages.h"

namespace tests {

// Returns render(), which may allocate once, or not at all if a string holds the text
// within itself.
template <typename Render>
std::string counted(Render render) {
  const std::size_t before = allocations();
  const std::string text = render();
  EXPECT_EQ(allocations() - before, text.size() > std::string().capacity() ? 1u : 0u) << text;
  return text;
}

// The functions of Converter, by name and type of the first argument. The text of an
// anchor is "A".
using Function = std::function<std::string(const google::protobuf::Message&)>;

inline const std::map<std::string, Function>& functions() {
  using namespace vok::rulecheck;
  static const std::map<std::string, Function> all = {
#define VOK_FUNCTION(name, Type)                                                    \
  {                                                                                 \
#name "(" #Type ")",                                                            \
        [](const auto& m) { return Converter::name(dynamic_cast<const Type&>(m)); } \
  }
      VOK_FUNCTION(toString, Scalar),
      VOK_FUNCTION(toString, Reference),
      VOK_FUNCTION(href, Resource),
      VOK_FUNCTION(toHtml, Link),
      VOK_FUNCTION(toHtml, Reference),
      VOK_FUNCTION(toHtml, Arg),
#undef VOK_FUNCTION
      {"toHtml(Resource)",
       [](const auto& m) { return Converter::toHtml(dynamic_cast<const Resource&>(m), "A"); }},
  };
  return all;
}

struct Call {
  std::shared_ptr<google::protobuf::Message> message;
  Function function;

  std::string render() const { return function(*message); }
};

// Such as call("toString(Scalar)", "int_val: 3").
inline Call call(const std::string& name, const std::string& text) {
  const auto begin = name.find('(') + 1;
  Call result = {newMessage(name.substr(begin, name.find(')') - begin)), functions().at(name)};
  fill(text, result.message.get());
  return result;
}

}  // namespace tests

#endif  // VOK_TESTS_LIBRARY_RENDERING_CALLS_H_
