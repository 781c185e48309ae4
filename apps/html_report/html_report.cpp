// SPDX-License-Identifier: Apache-2.0

#include "html_report/html_report.h"

#include <cstddef>
#include <kainjow/mustache.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html_report/assets.h"
#include "html_report/findings.h"
#include "html_report/summary.h"

namespace html_report {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::mustache;
using vok::rulecheck::SessionResult;

data sectionView(const char* id, const char* title, const char* ifEmpty, std::size_t count,
                 const std::vector<std::string>& blocks) {
  data view;
  view["id"] = id;
  view["title"] = title;
  view["ifEmpty"] = ifEmpty;
  view["count"] = std::to_string(count);
  view["empty"] = count == 0;
  data list(data::type::list);
  for (const std::string& block : blocks) {
    list << data(block);
  }
  view["blocks"] = std::move(list);
  return view;
}

data sections(const SessionResult& result) {
  const auto& violated = result.specs_violated();
  const auto& affirmed = result.specs_affirmed();
  data list(data::type::list);
  list << sectionView(
      "violations", "Violations", "No rule is violated.", result.violations().hashmap().size(),
      blocksHtml(result.violations(), violated, affirmed, {"violation-", true, ""}));
  list << sectionView(
      "waived", "Waived violations", "No violation was waived.",
      result.waived_violations().hashmap().size(),
      blocksHtml(result.waived_violations(), violated, affirmed, {"waived-", false, "waived"}));
  list << sectionView(
      "affirmed", "Affirmations", "No rule was affirmed.", result.affirmations().hashmap().size(),
      blocksHtml(result.affirmations(), affirmed, violated, {"affirmation-", true, ""}));
  return list;
}

void addAssets(data* page) {
  (*page)["style"] = std::string(assets::style);
  (*page)["styleHash"] = std::string(assets::styleHash);
  (*page)["script"] = std::string(assets::script);
  (*page)["scriptHash"] = std::string(assets::scriptHash);
}

}  // namespace

std::string page(const SessionResult& result) {
  data view;
  addAssets(&view);
  addSummary(result, &view);
  view["sections"] = sections(result);
  return mustache(std::string(assets::page)).render(view);
}

}  // namespace html_report
