// SPDX-License-Identifier: Apache-2.0

// What each function of Converter returns: tables, the examples of Converter.h, and
// random messages, which are compared with a model.

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "rendering/calls.h"
#include "support/messages.h"
#include "support/rendering_model.h"

namespace {

namespace model = tests::model;
using tests::call;
using tests::counted;
using namespace vok::rulecheck;

struct Table {
  const char* function;
  std::vector<std::pair<const char*, const char*>> rows;  // a message and its text
};

const Table tables[] = {
    {"toString(Scalar)",
     {{"", ""},
      {"string_val: 'abc' units: 'B'", "abc B"},
      {"int_val: -42", "-42"},
      {"int_val: 9223372036854775807", "9223372036854775807"},
      {"double_val: 1.5 units: 'ns'", "1.500000 ns"},
      {"units: ''", " "},
      {"string_val: '' int_val: 7 units: 'x'", " x"},
      {"int_val: 0 double_val: 1.5", "0"},
      {"double_val: 1.5 address: 'a'", "1.500000"},
      {"address: '0x1000' units: 'B'", "0x1000"},
      {"int_val: 3 address: 'a' units: 'B'", "3"},
      {"string_val: 's' address: '' units: 'B'", "s"},
      {"string_val: ' <&\"> ' units: ' u '", " <&\">   u "}}},
    {"toString(Reference)",
     {{"", "array"},
      {"type: PCIE", "PCIE"},
      {"type: PORT name: 'top' id: 9 uuid: 'u'", "top"},
      {"type: PORT name: '' id: 9", ""},
      {"type: LOOP id: 0 uuid: 'u'", "loop #0"},
      {"type: LOOP id: -2147483648", "loop #-2147483648"},
      {"type: DATAMOVER uuid: 'ab-12'", "data mover ab-12"},
      {"type: LOOP uuid: ''", "loop "},
      {"uuid: 'u'", "array u"},
      {"type: LOOP id: 2 value { int_val: 3 } url { scheme: FILE }", "loop #2"}}},
    {"href(Resource)",
     {{"", ""},
      {"host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f' media_type: 'm' data: 'd'", ""},
      {"scheme: DATA host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f'", "data:"},
      {"scheme: DATA data: ''", "data:,"},
      {"scheme: DATA encoding: 'base64' data: 'aGk='", "data:base64,aGk="},
      {"scheme: DATA media_type: 'm' encoding: 'e' data: 'd'", "data:m;e,d"},
      {"scheme: DATA media_type: '' encoding: '' data: ''", "data:;,"},
      {"scheme: FILE path: 'tmp/a' media_type: 'm' data: 'd'", "file:///tmp/a"},
      {"scheme: FILE path: ''", "file://"},
      {"scheme: FILE host: 'h' path: 'a'", "file://h/a"},
      {"scheme: HTTP host: 'h' port: 80 path: 'x' query: 'a=1' fragment: 't'",
       "http://h:80/x?a=1#t"},
      {"scheme: HTTPS host: 'h' port: 0", "https://h:0"},
      {"scheme: HTTP port: -2147483648", "http://:-2147483648"},
      {"scheme: HTTP host: '' path: 'x'", "http:///x"},
      {"scheme: HTTP host: 'h' query: '' fragment: ''", "http://h?#"},
      {"scheme: HTTP path: '/x?a=1' query: 'b=2'", "http:///x?a=1?b=2"},
      {"scheme: HTTP host: 'h' path: 'a b\"<>#?'", "http://h/a b\"<>#?"},
      {"scheme: FTP host: 'h' port: 21 path: 'x' query: 'q' fragment: 'f'", "h:21/x?q#f"},
      {"scheme: MAILTO path: 'a@b.example'", "/a@b.example"}}},
    {"toHtml(Resource)",
     {{"host: 'h' media_type: 'text/html' data: '<b>'", ""},
      {"scheme: DATA media_type: 'text/html' encoding: 'e' data: '<b a=\"1\">'", "<b a=\"1\">"},
      {"scheme: DATA media_type: 'text/html'", ""},
      {"scheme: DATA media_type: 'TEXT/HTML'", "<a href=\"data:TEXT/HTML\">A</a>"},
      {"scheme: DATA media_type: 'text/html;x' data: 'd'", "<a href=\"data:text/html;x,d\">A</a>"},
      {"scheme: DATA data: 'd'", "<a href=\"data:,d\">A</a>"},
      {"scheme: HTTP media_type: 'text/html' data: 'd'", "<a href=\"http://\">A</a>"},
      {"scheme: FILE path: '/a\"><b>'", "<a href=\"file:///a\"><b>\">A</a>"}}},
    {"toHtml(Link)",
     {{"docgen_filename: 'd'", "<empty>"},
      {"link_text: '<&\"'", "<&\""},
      {"link_text: '' url { scheme: FILE media_type: 'm' }", "<a href=\"file://\"></a>"},
      {"url { scheme: FILE path: '/r' media_type: 'm' }", "<a href=\"file:///r\">m</a>"},
      {"url { scheme: FILE path: '/r' media_type: '' }", "<a href=\"file:///r\"></a>"},
      {"link_text: 'T' url { scheme: DATA media_type: 'text/html' data: '<b>' }", "<b>"},
      {"link_text: 'R' url { path: '/r' }", ""}}},
    {"toHtml(Reference)",
     {{"type: KERNEL id: 4 value { int_val: 1 }", "kernel #4"},
      {"name: '<script>'", "<script>"},
      {"name: '' url { scheme: FILE }", "<a href=\"file://\"></a>"},
      {"type: LOOP uuid: 'u' url { scheme: HTTP media_type: 'm' }",
       "<a href=\"http://\">loop u</a>"},
      {"name: 'clk' url { path: '/t.v' }", ""},
      {"name: 'clk' url { scheme: DATA media_type: 'text/html' data: '<i>' }", "<i>"}}},
    {"toHtml(Arg)",
     {{"", ""},
      {"ref { } uri { } refs { ref { name: 'S' } } uris { } string_val: 's' scalar { }", "array"},
      {"ref { url { } } string_val: 's'", ""},
      {"uri { } refs { ref { name: 'S' } } uris { } string_val: 's' scalar { }", "<empty>"},
      {"refs { } uris { uri { } } string_val: 's' scalar { int_val: 1 }", ""},
      {"refs { ref { name: '' } ref { name: 'Q' } ref { url { } } }", ",Q,"},
      {"refs { ref { id: 1 } ref { url { scheme: FTP } } }", "array #1,<a href=\"\">array</a>"},
      {"uris { } string_val: 's'", ""},
      {"uris { uri { link_text: 'L' } uri { } } string_val: 's' scalar { }", "L,<empty>"},
      {"string_val: '<&\">' scalar { int_val: 1 }", "<&\">"},
      {"string_val: '' scalar { int_val: 1 }", ""},
      {"scalar { units: 'u' }", ""},
      {"scalar { int_val: -9223372036854775808 }", "-9223372036854775808"},
      {"scalar { int_val: 0 double_val: 1.5 string_val: 's' address: 'a' }", "0"},
      {"scalar { double_val: 2.5 string_val: 's' address: 'a' units: 'ns' }", "2.500000"},
      {"scalar { string_val: '' address: 'a' units: 'u' }", ""},
      {"scalar { address: 'a' units: 'u' }", "a"}}},
};

TEST(Rendering, FollowsTheTables) {
  for (const Table& table : tables) {
    for (const auto& [message, text] : table.rows) {
      const auto tested = call(table.function, message);
      EXPECT_EQ(counted([&] { return tested.render(); }), text) << table.function << message;
    }
  }
}

TEST(Rendering, TreatsUnlistedSchemesAsWithoutPrefix) {
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
void expectWords(std::string (*word)(int)) {
  std::vector<int> numbers = {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  for (int number = -300; number <= 300; ++number) {
    numbers.push_back(number);
  }
  for (const int number : numbers) {
    EXPECT_EQ(counted([&] { return Converter::toString(static_cast<Enum>(number)); }), word(number))
        << number;
  }
}

TEST(Words, AreThoseOfTheModelForEveryNumber) {
  expectWords<Resource_Scheme>(model::wordOfScheme);
  expectWords<Reference_RefType>(model::wordOfKind);
  expectWords<Violation_Severity>(model::wordOfSeverity);
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
template <typename Message>
Message randomMessage(std::mt19937_64* random) {
  Message message;
  const auto count = [random](const google::protobuf::FieldDescriptor& field) {
    return static_cast<int>((*random)() % (field.is_repeated() ? 6 : 2));
  };
  tests::fillRandomly(count, random, &message);
  return message;
}

TEST(RandomMessages, AreRenderedAsByTheModel) {
  std::mt19937_64 random(20260106);
  for (int i = 0; i < 10000 && !HasFailure(); ++i) {
    const auto arg = randomMessage<Arg>(&random);
    const auto reference = randomMessage<Reference>(&random);
    const auto link = randomMessage<Link>(&random);
    const Resource& url = reference.url();
    SCOPED_TRACE(tests::textOf(arg) + tests::textOf(reference) + tests::textOf(link));
    EXPECT_EQ(counted([&] { return Converter::toHtml(arg); }), model::html(arg));
    EXPECT_EQ(counted([&] { return Converter::toHtml(reference); }), model::html(reference));
    EXPECT_EQ(counted([&] { return Converter::toHtml(link); }), model::html(link));
    EXPECT_EQ(counted([&] { return Converter::toHtml(url, link.link_text()); }),
              model::html(url, link.link_text()));
    EXPECT_EQ(counted([&] { return Converter::href(url); }), model::address(url));
    EXPECT_EQ(counted([&] { return Converter::toString(reference); }), model::text(reference));
    const Scalar& scalar = reference.value();
    EXPECT_EQ(counted([&] { return Converter::toString(scalar); }), model::text(scalar));
  }
}

}  // namespace
