#include "hostile_results.h"

namespace tests {

using vok::rulecheck::Resource;

const std::vector<HostileText>& hostileTexts() {
  using namespace std::string_literals;
  static const std::vector<HostileText> texts = {
      {"script", "<script>alert(1)</script>"},
      {"end_of_double_quotes", "\"><img src=x onerror=alert(1)>"},
      {"end_of_single_quotes", "'><svg onload=alert(1)>"},
      {"attribute", "x\" onmouseover=\"alert(1)"},
      {"javascript_address", "javascript:alert(1)"},
      {"javascript_address_in_disguise", "\x01 JaVa\nScript\t:alert(1)//"},
      {"data_address", "data:text/html,<script>alert(1)</script>"},
      {"end_of_style", "</style></title></textarea><script>alert(1)</script>"},
      {"end_of_script", "</script><script>alert(1)</script>"},
      {"end_of_comment", "--><script>alert(1)</script><!--"},
      {"end_of_list",
       "</li></ul></details></main><base href=//x><meta http-equiv=refresh content=0>"},
      {"template_tags", "{{style}}{{{script}}}{{#kinds}}{{/sections}}{{=<% %>=}}"},
      {"places", "%1 %2 %99 %% %"},
      {"character_references", "&lt;script&gt;&#60;b&#x3e;&quot;&amp"},
      {"not_utf8", "\xC0\xBCscript\xC0\xBE \xED\xA0\x80 \xF8\xFF <b>\xE2\x82"},
      {"zero_byte", "a\0<b\0>\0"s},
      {"line_ends", "a\r\nb\x0b\x0c\x85<b>\r"},
      {"blank", " \t\n"},
  };
  return texts;
}

namespace {

Resource resourceOf(Resource::Scheme scheme, const std::string& text) {
  Resource resource;
  resource.set_scheme(scheme);
  resource.set_host(text);
  resource.set_data(text);
  return resource;
}

Resource inlinePage(const std::string& text) {
  Resource resource;
  resource.set_scheme(Resource::DATA);
  resource.set_media_type("text/html");
  resource.set_data(text);
  return resource;
}

bool mayBreakOutOfAddress(const std::string& name) {
  return name.find("address") != std::string::npos || name.find("quotes") != std::string::npos ||
         name == "attribute";
}

void addEveryScheme(const HostileText& hostile, std::vector<HostileCase>* cases) {
  for (int number = Resource::Scheme_MIN; number <= Resource::Scheme_MAX; ++number) {
    const auto scheme = static_cast<Resource::Scheme>(number);
    const std::string name(vok::rulecheck::Resource_Scheme_Name(scheme));
    if (scheme != Resource::HTTP) {
      cases->push_back({hostile.name + "-" + name, hostile.text, resourceOf(scheme, hostile.text)});
    }
  }
  Resource mail;
  mail.set_scheme(Resource::MAILTO);
  mail.set_path(hostile.text);
  cases->push_back({hostile.name + "-MAILTO_path", hostile.text, mail});
  Resource noScheme;
  noScheme.set_host(hostile.text);
  cases->push_back({hostile.name + "-no_scheme", hostile.text, noScheme});
}

}  // namespace

std::vector<HostileCase> hostileCases() {
  std::vector<HostileCase> cases;
  for (const HostileText& hostile : hostileTexts()) {
    cases.push_back(
        {hostile.name + "-HTTP", hostile.text, resourceOf(Resource::HTTP, hostile.text)});
    cases.push_back({hostile.name + "-DATA_html", hostile.text, inlinePage(hostile.text)});
    if (mayBreakOutOfAddress(hostile.name)) {
      addEveryScheme(hostile, &cases);
    }
  }
  return cases;
}

}  // namespace tests
