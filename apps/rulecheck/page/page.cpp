// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/page.h"

#include <cstddef>
#include <kainjow/mustache.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rulecheck/assets.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/page/findings.h"
#include "rulecheck/page/summary.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::mustache;
using vok::rulecheck::SessionResult;
using vok::rulecheck::ViolationMap;

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

// Of what was waived by people, and of what was not checked.
struct Waived {
  explicit Waived(const ViolationMap& violations) {
    for (const auto& entry : violations.hashmap()) {
      ViolationMap& map = isNotChecked(entry.second) ? unchecked : accepted;
      (*map.mutable_hashmap())[entry.first] = entry.second;
    }
  }
  ViolationMap accepted;
  ViolationMap unchecked;
};

data sections(const SessionResult& result) {
  const Waived waived(result.waived_violations());
  const auto& violated = result.specs_violated();
  const auto& affirmed = result.specs_affirmed();
  data list(data::type::list);
  list << sectionView(
      "violations", "Violations", "No rule is violated.", result.violations().hashmap().size(),
      blocksHtml(result.violations(), violated, affirmed, {"violation-", true, ""}));
  if (!waived.unchecked.hashmap().empty()) {
    list << sectionView(
        "unchecked", "Not checked", "", waived.unchecked.hashmap().size(),
        blocksHtml(waived.unchecked, violated, affirmed, {"waived-", false, "not-checked"}));
  }
  list << sectionView(
      "waived", "Waived violations", "No violation was waived.", waived.accepted.hashmap().size(),
      blocksHtml(waived.accepted, violated, affirmed, {"waived-", false, "waived"}));
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

}  // namespace rulecheck
