// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/page.h"

#include <re2/re2.h>

#include <kainjow/mustache.hpp>
#include <map>
#include <string>
#include <vector>

#include "rulecheck/assets.h"
#include "rulecheck/page/data_block.h"
#include "rulecheck/page/facts.h"
#include "rulecheck/page/findings.h"
#include "rulecheck/page/message_text.h"
#include "rulecheck/page/safe_html.h"
#include "rulecheck/page/summary.h"
#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::mustache;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::SessionResult;

// Pages of more findings need their script.
constexpr std::size_t kMostPlainFindings = 5000;

// For RE2, and for the attribute of an input.
constexpr char kLinkPattern[] =
    R"((?:https?:\/\/[^\/\{\}\s]+\/|(?:vscode|vscode-insiders|vscodium|cursor|zed|idea|emacs):\/\/|)"
    R"((?:subl|txmt|mvim):\/\/open\?)\S*)";

data plainFinding(const Findings& findings, const Finding& finding) {
  data view;
  const Place place{findings.files[finding.file].path, finding.line, finding.column};
  const Level& kind = kinds()[static_cast<std::size_t>(finding.kind)];
  const Level& mark = marks()[static_cast<std::size_t>(finding.mark)];
  view["slug"] = kind.slug;
  view["word"] = kind.word + (mark.word.empty() ? "" : ", " + mark.word);
  view["place"] = escapeText(textOf(place));
  view["message"] = finding.visit([](const auto& found) { return messageHtml(found.details()); });
  return view;
}

// What the page shows without its script: each rule with its findings.
data plainRules(const SessionResult& result, const Findings& findings) {
  std::map<std::string, data> byRule;
  for (const Finding& finding : findings.list) {
    byRule.insert({findings.rules[finding.rule], data(data::type::list)})
        .first->second.push_back(plainFinding(findings, finding));
  }
  data list(data::type::list);
  for (const auto& [key, found] : byRule) {
    const RuleSpec* const spec = specOf(result, key);
    data view;
    view["key"] = isBlank(key) ? "No rule named" : escapeText(key);
    view["name"] = spec == nullptr ? "" : escapeText(nameOf(*spec, key));
    view["facts"] = spec == nullptr ? data(false) : mainFacts(*spec).view();
    view["findings"] = data(found);
    list << view;
  }
  return list;
}

void addAssets(data* page) {
  (*page)["style"] = std::string(assets::style);
  (*page)["styleHash"] = std::string(assets::styleHash);
  (*page)["script"] = std::string(assets::script);
  (*page)["scriptHash"] = std::string(assets::scriptHash);
}

}  // namespace

bool isLinkTemplate(const std::string& text) {
  return RE2::FullMatch(text, kLinkPattern);
}

std::string page(const SessionResult& result, const PageOptions& options) {
  const Findings findings = findingsOf(result, options.baseline);
  const bool isPlain = findings.list.size() <= kMostPlainFindings;
  data view;
  addAssets(&view);
  addSummary(result, findings, &view);
  view["linkPattern"] = escapeText(kLinkPattern);
  view["linkTemplate"] = escapeText(options.linkTemplate);
  view["plain"] = isPlain;
  view["plainRules"] = isPlain ? plainRules(result, findings) : data(false);
  // The template engine would copy what is long.
  std::string html = mustache(std::string(assets::page)).render(view);
  const std::string mark = "<!--data-->";
  return html.replace(html.rfind(mark), mark.size(),
                      dataBlock(result, findings, options.sourceRoot));
}

}  // namespace rulecheck
