// SPDX-License-Identifier: Apache-2.0

// The cases of the conformance suite are what Converter returns, and what a model of its rules
// does.

#include <google/protobuf/struct.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/wrappers.pb.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <fstream>
#include <string>

#include "support/messages.h"
#include "support/rendering_model.h"

namespace {

using google::protobuf::Struct;
using google::protobuf::util::JsonStringToMessage;
using namespace vok::rulecheck;
namespace model = tests::model;

class Case {
 public:
  explicit Case(const std::string& line) {
    EXPECT_TRUE(JsonStringToMessage(line, &members_).ok()) << line;
  }

  bool has(const std::string& member) const { return members_.fields().count(member) == 1; }
  std::string text(const std::string& member) const {
    return members_.fields().at(member).string_value();
  }
  std::string function() const { return text("function") + "(" + text("type") + ")"; }
  int number() const { return static_cast<int>(members_.fields().at("number").number_value()); }

  // The bytes of a member that is in base64.
  std::string bytes(const std::string& member) const {
    google::protobuf::BytesValue value;
    EXPECT_TRUE(JsonStringToMessage('"' + text(member) + '"', &value).ok());
    return value.value();
  }

  template <typename Message>
  Message message() const {
    Message message;
    EXPECT_TRUE(message.ParsePartialFromString(bytes("bytes")));
    return message;
  }

 private:
  Struct members_;
};

struct Texts {
  std::string converter;
  std::string model;
};

Texts textsOf(const Case& c) {
  const std::string function = c.function();
  if (function == "toString(Resource.Scheme)") {
    return {Converter::toString(static_cast<Resource_Scheme>(c.number())),
            model::wordOfScheme(c.number())};
  }
  if (function == "toString(Reference.RefType)") {
    return {Converter::toString(static_cast<Reference_RefType>(c.number())),
            model::wordOfKind(c.number())};
  }
  if (function == "toString(Violation.Severity)") {
    return {Converter::toString(static_cast<Violation_Severity>(c.number())),
            model::wordOfSeverity(c.number())};
  }
  if (function == "toString(Scalar)") {
    const auto scalar = c.message<Scalar>();
    return {Converter::toString(scalar), model::text(scalar)};
  }
  if (function == "toString(Reference)") {
    const auto reference = c.message<Reference>();
    return {Converter::toString(reference), model::text(reference)};
  }
  if (function == "href(Resource)") {
    const auto resource = c.message<Resource>();
    return {Converter::href(resource), model::address(resource)};
  }
  if (function == "toHtml(Resource)") {
    const auto resource = c.message<Resource>();
    const std::string text = c.text("anchorText");
    return {Converter::toHtml(resource, text), model::html(resource, text)};
  }
  if (function == "toHtml(Link)") {
    const auto link = c.message<Link>();
    return {Converter::toHtml(link), model::html(link)};
  }
  if (function == "toHtml(Reference)") {
    const auto reference = c.message<Reference>();
    return {Converter::toHtml(reference), model::html(reference)};
  }
  EXPECT_EQ(function, "toHtml(Arg)");
  const auto arg = c.message<Arg>();
  return {Converter::toHtml(arg), model::html(arg)};
}

TEST(RenderingSuite, IsWhatConverterAndTheModelReturn) {
  std::ifstream file(SUITE);
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    const Case c(line);
    const Texts texts = textsOf(c);
    EXPECT_EQ(tests::toHex(texts.converter), tests::toHex(c.bytes("base64"))) << line;
    EXPECT_EQ(texts.model, texts.converter) << line;
  }
  EXPECT_GT(count, 0);
}

}  // namespace
