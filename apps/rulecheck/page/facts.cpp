// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/facts.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <utility>

#include "rulecheck/page/safe_html.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Links;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::StringList;
using vok::rulecheck::Version;

std::string descriptionHtml(const RuleSpec& spec) {
  if (!spec.has_description()) {
    return "";
  }
  const bool isLink = isLinkable(spec.description());
  return linkHtml(spec.description(), isLink ? describe(spec.description()) : "");
}

std::string dispositionWord(RuleSpec::Disposition disposition) {
  std::string word(vok::rulecheck::RuleSpec_Disposition_Name(disposition));
  std::transform(word.begin(), word.end(), word.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return word;
}

std::string versionText(const Version& version) {
  return std::to_string(version.major()) + "." + std::to_string(version.minor()) + "." +
         std::to_string(version.patch());
}

std::string joined(const StringList& list) {
  std::string text;
  for (const std::string& string : list.msg()) {
    text += (text.empty() ? "" : ", ") + string;
  }
  return text;
}

}  // namespace

void Facts::add(const std::string& label, const std::string& html) {
  if (!isBlank(html)) {
    list_.push_back({label, html});
  }
}

data Facts::view(std::size_t mostBytes) const {
  data list(data::type::list);
  for (const Fact& fact : list_) {
    data view;
    view["label"] = fact.label;
    view["value"] = fact.html;
    view["long"] = isLong(fact.html, mostBytes);
    list << view;
  }
  if (list_.empty()) {
    return data(false);
  }
  data view;
  view["list"] = std::move(list);
  return view;
}

bool isLong(const std::string& html, std::size_t mostBytes) {
  const auto breaks = static_cast<std::size_t>(std::count(html.begin(), html.end(), '\n'));
  return html.size() > mostBytes || breaks > mostBytes / 100;
}

std::string linksHtml(const Links& safeLinks) {
  std::string html;
  for (const Link& link : safeLinks.uri()) {
    html += "<span class=\"link\">" + Converter::toHtml(link) + "</span> ";
  }
  return html;
}

std::string categoriesHtml(const std::map<std::int32_t, std::string>& categories) {
  std::string html;
  for (const auto& [number, value] : categories) {
    html += "<span class=\"tag\">" + std::to_string(number) + ": " + escapeText(value) + "</span> ";
  }
  return html;
}

std::string linkHtml(const Resource& resource, const std::string& text) {
  Link link;
  *link.mutable_url() = resource;
  link.set_link_text(text);
  return Converter::toHtml(safeCopy(link));
}

Facts mainFacts(const RuleSpec& spec) {
  const RuleSpec safe = safeCopy(spec);
  Facts facts;
  facts.add("Expects", safe.expects());
  facts.add("Resolution", safe.resolution_msg());
  facts.add("Threshold", Converter::toString(safe.threshold_value()));
  facts.add("Description", descriptionHtml(spec));
  return facts;
}

Facts furtherFacts(const RuleSpec& spec) {
  const RuleSpec safe = safeCopy(spec);
  Facts facts;
  facts.add("Severity", spec.has_severity() ? levelOf(spec.severity()).word : "");
  facts.add("Message", safe.raw_msg());
  facts.add("When met", safe.affirm_msg());
  facts.add("In short", safe.msg_abbrev());
  facts.add("Message number", spec.has_msg_id() ? std::to_string(spec.msg_id()) : "");
  facts.add("Owner", safe.owner());
  facts.add("State", spec.has_disposition() ? dispositionWord(spec.disposition()) : "");
  facts.add("First release", spec.has_first_release() ? versionText(spec.first_release()) : "");
  facts.add("Sessions", joined(safe.session_names()));
  facts.add("Architectures", joined(safe.architectures()));
  facts.add("Categories", categoriesHtml({spec.categories().begin(), spec.categories().end()}));
  facts.add("Examples", linksHtml(safe.examples()));
  return facts;
}

}  // namespace rulecheck
