// SPDX-License-Identifier: Apache-2.0

// What each function of Converter returns: the conformance suite, the examples of
// Converter.h, and random messages, which are compared with a model.

#include <google/protobuf/struct.pb.h>
#include <google/protobuf/util/json_util.h>
#include <google/protobuf/wrappers.pb.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rendering/calls.h"
#include "support/messages.h"
#include "support/rendering_model.h"

namespace {

using tests::call;
using tests::counted;
using namespace vok::rulecheck;

std::string wordOf(const std::string& enumeration, int number) {
  if (enumeration == "Resource.Scheme") {
    return Converter::toString(static_cast<Resource_Scheme>(number));
  }
  return enumeration == "Reference.RefType"
             ? Converter::toString(static_cast<Reference_RefType>(number))
             : Converter::toString(static_cast<Violation_Severity>(number));
}

// A line of the conformance suite.
class Case {
 public:
  explicit Case(const std::string& line) { read(line, &members_); }

  std::string expected() const { return bytes("base64"); }

  std::string rendered() const {
    const std::string type = text("type");
    if (has("number")) {
      return wordOf(type, static_cast<int>(members_.fields().at("number").number_value()));
    }
    const auto message = tests::newMessage(type);
    EXPECT_TRUE(message->ParsePartialFromString(bytes("bytes")));
    if (has("anchorText")) {
      const std::string anchorText = text("anchorText");
      return counted(
          [&] { return Converter::toHtml(dynamic_cast<const Resource&>(*message), anchorText); });
    }
    const auto& function = tests::functions().at(text("function") + "(" + type + ")");
    return counted([&] { return function(*message); });
  }

 private:
  static void read(const std::string& json, google::protobuf::Message* message) {
    EXPECT_TRUE(google::protobuf::util::JsonStringToMessage(json, message).ok()) << json;
  }

  bool has(const std::string& member) const { return members_.fields().count(member) == 1; }
  std::string text(const std::string& member) const {
    return members_.fields().at(member).string_value();
  }

  // The bytes of a member in base64, which is how protobuf's JSON has bytes.
  std::string bytes(const std::string& member) const {
    google::protobuf::BytesValue value;
    read('"' + text(member) + '"', &value);
    return value.value();
  }

  google::protobuf::Struct members_;
};

TEST(Rendering, FollowsTheConformanceSuite) {
  std::ifstream suite(SUITE);
  std::size_t cases = 0;
  for (std::string line; std::getline(suite, line); ++cases) {
    const Case tested(line);
    EXPECT_EQ(tests::toHex(tested.rendered()), tests::toHex(tested.expected())) << line;
  }
  EXPECT_GT(cases, 600u);
}

TEST(Rendering, GivesUnlistedSchemesNoPrefix) {
  for (const int number : {7, -1, 1000}) {
    auto resource = tests::parse<Resource>("host: 'h' port: 1 media_type: 'text/html' data: 'd'");
    resource.set_scheme(static_cast<Resource_Scheme>(number));
    EXPECT_EQ(Converter::href(resource), "h:1") << number;
    EXPECT_EQ(Converter::toHtml(resource, ""), "<a href=\"h:1\"></a>") << number;
    Reference reference;
    reference.set_type(static_cast<Reference_RefType>(number + 22));
    EXPECT_EQ(Converter::toString(reference), number == -1 ? "port" : "<undefined>") << number;
  }
}

TEST(Rendering, CopiesZeroBytes) {
  const std::string text("a\0b", 3);
  Reference reference;
  reference.set_name(text);
  EXPECT_EQ(Converter::toString(reference), text);
  reference.mutable_url()->set_scheme(Resource::FTP);
  reference.mutable_url()->set_host(text);
  EXPECT_EQ(Converter::toHtml(reference), "<a href=\"" + text + "\">" + text + "</a>");
}

template <typename Enum>
void expectWords(std::string_view (*word)(int)) {
  std::vector<int> numbers = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  for (int number = -300; number <= 300; ++number) {
    numbers.push_back(number);
  }
  for (const int number : numbers) {
    EXPECT_EQ(counted([&] { return Converter::toString(static_cast<Enum>(number)); }), word(number))
        << number;
  }
}

TEST(Words, MatchTheModelForEveryNumber) {
  expectWords<Resource_Scheme>(plain::wordOfScheme);
  expectWords<Reference_RefType>(plain::wordOfKind);
  expectWords<Violation_Severity>(plain::wordOfSeverity);
}

std::string evaluate(const std::string& function, const std::string& input) {
  static const std::map<std::string, std::string> words = {
#define VOK_WORD(call) {#call, Converter::call}
      VOK_WORD(toString(Resource::HTTPS)),
      // With 3.3 enumerations have no fixed type, and -Wconversion warns of a constant.
      {"toString(static_cast<Resource_Scheme>(-1))",
       Converter::toString(static_cast<Resource_Scheme>(std::stoi("-1")))},
      VOK_WORD(toString(Reference::DATAMOVER)),
      VOK_WORD(toString(Reference::READ_OP)),
      VOK_WORD(toString(static_cast<Reference_RefType>(29))),
      VOK_WORD(toString(Violation::SEV_CRITICAL_WARNING)),
      VOK_WORD(toString(Violation::SEV_UNKNOWN)),
#undef VOK_WORD
  };
  return input.front() == '{' ? call(function, input.substr(1, input.size() - 2)).render()
                              : words.at(input);
}

// An example is a message in braces or a call, on one or more comment lines that are
// indented by three spaces, and its result in double quotes.
TEST(Header, ExamplesAreTrue) {
  const std::regex declaration(R"(  static std::string (\w+)\((?:const )?(\w+).*)");
  const std::regex example(R"re((.*[})])(?:, "A")? +"(.*)"(?:  \(.*\))?)re");
  std::vector<std::pair<std::string, std::string>> examples;
  std::string pending;
  std::size_t tested = 0;
  std::ifstream header(HEADER);
  for (std::string line; std::getline(header, line);) {
    std::smatch parts;
    if (std::regex_match(line, parts, declaration)) {
      const std::string function = parts[1].str() + "(" + parts[2].str() + ")";
      EXPECT_GE(examples.size(), 2u) << function;
      for (const auto& [input, result] : examples) {
        EXPECT_EQ(evaluate(function, input), result) << function << input;
      }
      tested += examples.size();
      examples.clear();
    }
    pending = line.rfind("  //   ", 0) == 0 ? pending + " " + line.substr(7) : "";
    if (std::regex_match(pending, parts, example)) {
      examples.emplace_back(parts[1].str().substr(1), parts[2]);
      pending.clear();
    }
  }
  EXPECT_GT(tested, 0u);
}

// Sets about every second field, and up to five elements of a list.
TEST(RandomMessages, RenderAsInTheModel) {
  std::mt19937_64 random(20260106);
  const auto count = [&random](const google::protobuf::FieldDescriptor& field) {
    return static_cast<int>(random() % (field.is_repeated() ? 6 : 2));
  };
  for (int i = 0; i < 10000 && !HasFailure(); ++i) {
    Arg arg;
    tests::fillRandomly(count, &random, &arg);
    SCOPED_TRACE(tests::textOf(arg));
    tests::expectAsInModel(arg, [](auto render) { return counted(render); });
  }
}

}  // namespace
