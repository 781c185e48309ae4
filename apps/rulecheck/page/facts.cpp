// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/facts.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <utility>

#include "rulecheck/page/safe_copy.h"
#include "rulecheck/page/safe_text.h"

namespace rulecheck {

using kainjow::mustache::data;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Links;
using vok::rulecheck::Resource;

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

}  // namespace rulecheck
