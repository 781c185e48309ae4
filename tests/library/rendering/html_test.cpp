// SPDX-License-Identifier: Apache-2.0

// HTML of resources, links and references.

#include <gtest/gtest.h>

#include <string>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using tests::parse;
using Converter = tests::CountedConverter;
using namespace vok::rulecheck;

struct ResourceCase {
  const char* name;
  const char* resource;
  const char* anchorText;
  const char* html;
};

const ResourceCase resourceCases[] = {
    {"without a scheme there is nothing", "", "T", ""},
    {"without a scheme the text is dropped", "host: 'h' path: 'p'", "T", ""},
    {"without a scheme inline HTML is dropped", "media_type: 'text/html' data: '<b>'", "T", ""},
    {"inline HTML is its data", "scheme: DATA media_type: 'text/html' data: '<b a=\"1\">hi</b>'",
     "T", "<b a=\"1\">hi</b>"},
    {"inline HTML without data is nothing", "scheme: DATA media_type: 'text/html'", "T", ""},
    {"inline HTML ignores its encoding",
     "scheme: DATA media_type: 'text/html' encoding: 'base64' data: 'aGk='", "T", "aGk="},
    {"a media type in capitals is not inline HTML",
     "scheme: DATA media_type: 'TEXT/HTML' data: 'd'", "T", "<a href=\"data:TEXT/HTML,d\">T</a>"},
    {"a media type with parameters is not inline HTML",
     "scheme: DATA media_type: 'text/html;charset=utf-8' data: 'd'", "T",
     "<a href=\"data:text/html;charset=utf-8,d\">T</a>"},
    {"a media type with a space is not inline HTML",
     "scheme: DATA media_type: 'text/html ' data: 'd'", "T", "<a href=\"data:text/html ,d\">T</a>"},
    {"data without a media type is an anchor", "scheme: DATA data: 'd'", "T",
     "<a href=\"data:,d\">T</a>"},
    {"HTML of another scheme is an anchor",
     "scheme: HTTP host: 'h' media_type: 'text/html' data: 'd'", "T", "<a href=\"http://h\">T</a>"},
    {"an empty text leaves the anchor empty", "scheme: FILE path: '/a'", "",
     "<a href=\"file:///a\"></a>"},
    {"the text is not escaped", "scheme: FILE path: '/a'", "<&\">",
     "<a href=\"file:///a\"><&\"></a>"},
    {"the address is not escaped", "scheme: FILE path: '/a\"><b>'", "T",
     "<a href=\"file:///a\"><b>\">T</a>"},
    {"a scheme without a prefix", "scheme: IRC host: 'h'", "T", "<a href=\"h\">T</a>"},
};

TEST(ResourceHtml, FollowsTheTable) {
  for (const ResourceCase& c : resourceCases) {
    EXPECT_EQ(Converter::toHtml(parse<Resource>(c.resource), c.anchorText), c.html) << c.name;
  }
}

TEST(ResourceHtml, OfAnUnlistedSchemeIsAnAnchor) {
  auto resource = parse<Resource>("host: 'h' media_type: 'text/html' data: 'd'");
  resource.set_scheme(static_cast<Resource_Scheme>(7));
  EXPECT_EQ(Converter::toHtml(resource, "T"), "<a href=\"h\">T</a>");
}

TEST(ResourceHtml, CopiesZeroBytes) {
  const auto resource = parse<Resource>("scheme: FILE path: '/a'");
  EXPECT_EQ(Converter::toHtml(resource, std::string("x\0y", 3)),
            "<a href=\"file:///a\">" + std::string("x\0y", 3) + "</a>");
}

struct HtmlCase {
  const char* name;
  const char* message;
  const char* html;
};

const HtmlCase linkCases[] = {
    {"neither url nor text", "", "<empty>"},
    {"a text alone", "link_text: 'Report'", "Report"},
    {"an empty text alone is nothing", "link_text: ''", ""},
    {"a text is not escaped", "link_text: '<&\"'", "<&\""},
    {"url and text", "link_text: 'Report' url { scheme: FILE path: '/tmp/r.html' }",
     "<a href=\"file:///tmp/r.html\">Report</a>"},
    {"an empty text wins over the media type",
     "link_text: '' url { scheme: FILE path: '/r' media_type: 'm' }", "<a href=\"file:///r\"></a>"},
    {"the media type replaces an absent text", "url { scheme: FILE path: '/r' media_type: 'm' }",
     "<a href=\"file:///r\">m</a>"},
    {"an empty media type replaces an absent text",
     "url { scheme: FILE path: '/r' media_type: '' }", "<a href=\"file:///r\"></a>"},
    {"without a media type the text is link", "url { scheme: FILE path: '/r' }",
     "<a href=\"file:///r\">link</a>"},
    {"inline data is labeled by its media type",
     "url { scheme: DATA media_type: 'text/plain' data: 'hi' }",
     "<a href=\"data:text/plain,hi\">text/plain</a>"},
    {"inline HTML drops the text",
     "link_text: 'T' url { scheme: DATA media_type: 'text/html' data: '<b>hi</b>' }", "<b>hi</b>"},
    {"a url without scheme drops the text", "link_text: 'Report' url { path: '/r' }", ""},
    {"an empty url drops the text", "link_text: 'Report' url { }", ""},
    {"the generated file's name is ignored", "docgen_filename: 'd'", "<empty>"},
    {"the generated file's name is ignored with a url",
     "link_text: 'T' docgen_filename: 'd' url { scheme: FILE path: '/r' }",
     "<a href=\"file:///r\">T</a>"},
};

TEST(LinkHtml, FollowsTheTable) {
  for (const HtmlCase& c : linkCases) {
    EXPECT_EQ(Converter::toHtml(parse<Link>(c.message)), c.html) << c.name;
  }
}

const HtmlCase referenceCases[] = {
    {"an empty reference", "", "array"},
    {"without a url the text has no anchor", "type: KERNEL id: 4", "kernel #4"},
    {"a name is not escaped", "type: PORT name: '<script>'", "<script>"},
    {"with a url the text is an anchor",
     "type: PORT name: 'clk' url { scheme: FILE path: '/t.v' fragment: 'L7' }",
     "<a href=\"file:///t.v#L7\">clk</a>"},
    {"the anchor holds the whole text", "type: LOOP uuid: 'u' url { scheme: HTTP host: 'h' }",
     "<a href=\"http://h\">loop u</a>"},
    {"an empty name leaves the anchor empty", "name: '' url { scheme: FILE path: '/t' }",
     "<a href=\"file:///t\"></a>"},
    {"a url without scheme drops the text", "type: PORT name: 'clk' url { path: '/t.v' }", ""},
    {"inline HTML drops the text",
     "name: 'clk' url { scheme: DATA media_type: 'text/html' data: '<i>' }", "<i>"},
    {"the url's media type is not a text",
     "type: PORT url { scheme: FILE path: '/t' media_type: 'm' }",
     "<a href=\"file:///t\">port</a>"},
    {"the value is not shown", "type: PORT name: 'clk' value { int_val: 1 }", "clk"},
};

TEST(ReferenceHtml, FollowsTheTable) {
  for (const HtmlCase& c : referenceCases) {
    EXPECT_EQ(Converter::toHtml(parse<Reference>(c.message)), c.html) << c.name;
  }
}

TEST(ReferenceHtml, WithoutAUrlEqualsThePlainText) {
  for (int type = -1; type <= 29; ++type) {
    for (const char* rest : {"", "id: 3", "uuid: 'u'", "name: 'n'"}) {
      auto reference = parse<Reference>(rest);
      reference.set_type(static_cast<Reference_RefType>(type));
      EXPECT_EQ(Converter::toHtml(reference), Converter::toString(reference)) << type << rest;
    }
  }
}

}  // namespace
