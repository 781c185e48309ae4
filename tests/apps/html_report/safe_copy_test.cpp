#include "html_report/safe_copy.h"

#include <gtest/gtest.h>
#include <vok/rulecheck/Converter.h>

#include "hostile_results.h"
#include "html_report/safe_text.h"
#include "string_fields.h"
#include "support/messages.h"

namespace {

using html_report::safeCopy;
using vok::rulecheck::Arg;
using vok::rulecheck::Converter;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Reference;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::Session;

struct Case {
  const char* name;
  const char* arg;
  const char* html;
};

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.arg;
}

class SafeCopy : public testing::TestWithParam<Case> {};

TEST_P(SafeCopy, RendersAsHarmlessHtml) {
  const auto arg = tests::parse<Arg>(GetParam().arg);
  EXPECT_EQ(Converter::toHtml(safeCopy(arg)), GetParam().html);
}

INSTANTIATE_TEST_SUITE_P(
    Link, SafeCopy,
    testing::Values(
        Case{"keeps_a_good_address",
             R"(uri { link_text: "a<b" url { scheme: HTTP host: "h" query: "a=1&b='2'" } })",
             R"(<a href="http://h?a=1&amp;b=&#39;2&#39;">a&lt;b</a>)"},
        Case{"gets_its_mail_scheme",
             R"(uri { link_text: "owner" url { scheme: MAILTO path: "a@b" } })",
             R"(<a href="mailto:a@b">owner</a>)"},
        Case{"without_text_shows_the_media_type",
             R"(uri { url { scheme: FILE path: "/a" media_type: "text/x" } })",
             R"(<a href="file:///a">text/x</a>)"},
        Case{"without_any_text_says_link",
             R"(uri { link_text: " " url { scheme: FILE path: "/a" media_type: "" } })",
             R"(<a href="file:///a">link</a>)"},
        Case{"to_elsewhere_is_its_text",
             R"(uri { link_text: "here" url { scheme: FTP host: "h" } })", "here"},
        Case{"to_elsewhere_without_text_is_its_address",
             R"(uri { url { scheme: IRC host: "h<" } })", "irc://h&lt;"},
        Case{"without_scheme_keeps_its_text", R"(uri { link_text: "here" url { host: "h" } })",
             "here"},
        Case{"with_a_page_inline_shows_its_source",
             R"(uri { url { scheme: DATA media_type: "text/html" data: "<script>" } })",
             "&lt;script&gt;"},
        Case{
            "with_text_and_a_page_inline_shows_both",
            R"(uri { link_text: "page" url { scheme: DATA media_type: "text/html" data: "<script>" } })",
            "page (&lt;script&gt;)"},
        Case{"with_an_image_inline_is_its_text",
             R"(uri { link_text: "wave" url { scheme: DATA media_type: "image/png" data: "x" } })",
             "wave"},
        Case{"of_nothing", "uri { }", "empty link"},
        Case{"of_a_blank_text", R"(uri { link_text: "\n" })", "empty link"},
        Case{"of_a_text_alone", R"(uri { link_text: "<empty>" })", "&lt;empty&gt;"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Reference, SafeCopy,
    testing::Values(
        Case{"keeps_a_good_address",
             R"(ref { type: PORT name: "a" url { scheme: FILE path: "/t v" } })",
             R"(<a href="file:///t%20v">a</a>)"},
        Case{"to_elsewhere_is_its_name",
             R"(ref { type: PORT name: "<a>" url { scheme: FTP host: "h" } })", "&lt;a&gt;"},
        Case{"without_name_keeps_kind_and_number",
             R"(ref { type: PORT name: "" id: 4 url { host: 'javascript:alert(1)' } })", "port #4"},
        Case{"with_a_page_inline_shows_name_and_source",
             R"(ref { type: LOOP id: 1 url { scheme: DATA media_type: "text/html" data: "<i>" } })",
             "loop #1 (&lt;i&gt;)"},
        Case{"by_identifier", R"(ref { type: LOOP uuid: "<u>" })", "loop &lt;u&gt;"}),
    [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Lists, SafeCopy,
    testing::Values(
        Case{"of_references",
             R"(refs { ref { type: PORT name: "<" } ref { type: PORT name: ">" } })", "&lt;,&gt;"},
        Case{"of_links", R"(uris { uri { link_text: "<" } uri { } })", "&lt;,empty link"},
        Case{"text", R"-(string_val: "\"'&")-", "&quot;&#39;&amp;"},
        Case{"scalar", R"(scalar { string_val: "<" })", "&lt;"}, Case{"nothing", "", ""}),
    [](const auto& tested) { return tested.param.name; });

#ifdef NDEBUG  // generated code asserts that numbers are listed
TEST(SafeCopy, NamesNoUnlistedKind) {
  Reference reference;
  reference.set_type(static_cast<Reference::RefType>(29));
  reference.set_id(3);
  EXPECT_EQ(Converter::toHtml(safeCopy(reference)), "other #3");
}
#endif

TEST(SafeCopy, KeepsNoAddressOfAResourceThatIsNoLink) {
  const auto session = tests::parse<Session>(R"(
      report_file { scheme: FTP host: "javascript:alert" }
      proto_file { scheme: FILE path: "/a b" })");
  const Session safe = safeCopy(session);
  EXPECT_EQ(Converter::toHtml(safe.report_file(), "text"), "");
  EXPECT_EQ(Converter::toHtml(safe.proto_file(), "text"), R"(<a href="file:///a%20b">text</a>)");
}

TEST(SafeCopy, LeavesTheOriginalAlone) {
  const auto arg = tests::parse<Arg>(R"(uri { link_text: "<" url { scheme: FTP } })");
  const std::string before = tests::textOf(arg);
  safeCopy(arg);
  EXPECT_EQ(tests::textOf(arg), before);
}

TEST(SafeCopy, ReachesKeysOfMaps) {
  RuleSpecMap specs;
  (*specs.mutable_hashmap())["<key>"].set_full_name("<name>");
  const RuleSpecMap safe = safeCopy(specs);
  ASSERT_EQ(safe.hashmap().count("&lt;key&gt;"), 1u);
  EXPECT_EQ(safe.hashmap().at("&lt;key&gt;").full_name(), "&lt;name&gt;");
  EXPECT_EQ(safe.hashmap().size(), 1u);
}

TEST(SafeCopy, ReachesStringsInMaps) {
  CreateViolation request;
  (*request.mutable_dynamic_category_values())["<key>"] = "<value>";
  const CreateViolation safe = safeCopy(request);
  ASSERT_EQ(safe.dynamic_category_values().count("&lt;key&gt;"), 1u);
  EXPECT_EQ(safe.dynamic_category_values().at("&lt;key&gt;"), "&lt;value&gt;");
}

// All string fields of a message that has no markup in any.
bool isHarmless(const google::protobuf::Message& message) {
  std::string bytes;
  return message.SerializePartialToString(&bytes) && bytes.find("<i>") == std::string::npos;
}

TEST(SafeCopy, ReachesEveryStringOfEveryMessageType) {
  int fields = 0;
  for (const google::protobuf::Message* prototype : tests::allMessages()) {
    for (const tests::FieldPath& path : tests::stringFields(prototype->GetDescriptor())) {
      const std::unique_ptr<google::protobuf::Message> message(prototype->New());
      tests::setString(message.get(), path, "<i>", 1);
      const std::string name =
          std::string(prototype->GetDescriptor()->name()) + "." + tests::nameOf(path);
      ASSERT_FALSE(isHarmless(*message)) << name << " is not set";
      html_report::makeSafe(message.get());
      EXPECT_TRUE(isHarmless(*message)) << name;
      ++fields;
    }
  }
  EXPECT_GT(fields, 1000);
}

}  // namespace
