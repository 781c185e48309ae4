// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/findings.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <cstddef>
#include <kainjow/mustache.hpp>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "rulecheck/assets.h"
#include "rulecheck/page/facts.h"
#include "rulecheck/page/message_text.h"
#include "rulecheck/page/rule_facts.h"
#include "rulecheck/page/safe_copy.h"
#include "rulecheck/page/safe_text.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using kainjow::mustache::mustache;
using vok::rulecheck::AffirmationMap;
using vok::rulecheck::Converter;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::ViolationMap;

// A browser skips the blocks of groups and the lists of findings that are out of
// sight, so it needs blocks and lists to skip.
constexpr std::size_t maxBlockLength = 25;
constexpr std::size_t maxListLength = 25;

constexpr std::size_t kMostBytesOfName = 200;

template <typename Finding>
struct Entry {
  int number;  // its key in the map of findings
  const Finding* finding;
  Level level;
};

template <typename Finding>
struct Group {
  std::string key;
  std::vector<Entry<Finding>> entries;
};

// The entries of a group are sorted before the groups are.
template <typename Finding>
std::vector<Group<Finding>> sortedGroups(std::map<std::string, std::vector<Entry<Finding>>> byKey) {
  std::vector<Group<Finding>> groups;
  for (auto& group : byKey) {
    std::sort(group.second.begin(), group.second.end(), [](const auto& a, const auto& b) {
      return std::make_pair(a.level.rank, a.number) < std::make_pair(b.level.rank, b.number);
    });
    groups.push_back({group.first, std::move(group.second)});
  }
  std::stable_sort(groups.begin(), groups.end(), [](const auto& a, const auto& b) {
    return a.entries.front().level.rank < b.entries.front().level.rank;
  });
  return groups;
}

template <typename Findings>
auto groupedByRule(const Findings& findings) {
  using Finding = typename Findings::mapped_type;
  std::map<std::string, std::vector<Entry<Finding>>> byKey;
  for (const auto& entry : findings) {
    const Finding& finding = entry.second;
    byKey[finding.rule_key()].push_back({entry.first, &finding, levelOf(finding)});
  }
  return sortedGroups<Finding>(std::move(byKey));
}

template <typename Finding>
data findingFacts(const Finding& safe) {
  Facts facts;
  facts.add("Resolution", messageHtml(safe.resolution()));
  facts.add("Expects", safe.expects());
  facts.add("Actual", Converter::toString(safe.actual_value()));
  facts.add("Threshold", Converter::toString(safe.threshold_value()));
  facts.add("Build target", safe.build_target());
  facts.add("Examples", linksHtml(safe.examples()));
  facts.add("Categories", categoriesHtml(safe.categories()));
  return facts.view();
}

template <typename Finding>
data findingView(const Entry<Finding>& entry, const Presentation& presentation) {
  const Finding safe = safeCopy(*entry.finding);
  const std::string message = messageHtml(safe.details());
  const std::string number = std::to_string(entry.number);
  data view;
  view["element"] = presentation.idPrefix + number;
  view["kind"] = presentation.kind.empty() ? entry.level.slug : presentation.kind;
  view["slug"] = entry.level.slug;
  view["word"] = entry.level.word;
  view["id"] = safe.has_id() ? std::to_string(safe.id()) : number;
  view["number"] = safe.has_id() && safe.id() != entry.number ? data(number) : data(false);
  view["message"] = message;
  view["silent"] = isBlank(message);
  view["long"] = isLong(message);
  view["facts"] = findingFacts(safe);
  return view;
}

// How many findings of each level a group has.
template <typename Finding>
data levelCounts(const Group<Finding>& group) {
  std::map<int, std::pair<Level, int>> counts;
  for (const auto& entry : group.entries) {
    auto& count = counts.insert({entry.level.rank, {entry.level, 0}}).first->second;
    ++count.second;
  }
  data list(data::type::list);
  for (const auto& count : counts) {
    data view;
    view["slug"] = count.second.first.slug;
    view["word"] = count.second.first.word;
    view["count"] = std::to_string(count.second.second);
    list << view;
  }
  return list;
}

const RuleSpec* find(const RuleSpecMap& specs, const std::string& key) {
  const auto spec = specs.hashmap().find(key);
  return spec == specs.hashmap().end() ? nullptr : &spec->second;
}

// What stands between the heading of a group and its findings, or false.
data aboutRule(const RuleSpec* spec, bool keyless) {
  if (spec == nullptr && keyless) {
    return data(false);
  }
  const RuleSpec& rule = spec == nullptr ? RuleSpec::default_instance() : *spec;
  data view;
  view["unspecified"] = spec == nullptr;
  view["facts"] = mainFacts(rule).view();
  view["furtherFacts"] = furtherFacts(rule).view();
  return view;
}

// Renders the groups one by one: the templates see no more than a finding, or a
// group whose findings are rendered, at a time.
class GroupRenderer {
 public:
  GroupRenderer(const RuleSpecMap& specs, const RuleSpecMap& otherSpecs, Presentation presentation)
      : specs_(specs), otherSpecs_(otherSpecs), presentation_(std::move(presentation)) {}

  template <typename Finding>
  std::string render(const Group<Finding>& group) {
    const RuleSpec* spec = specOf(group.key);
    data view;
    view["key"] = escapeText(group.key);
    view["keyless"] = isBlank(group.key);
    view["name"] = spec == nullptr || isBlank(spec->full_name())
                       ? data(false)
                       : data(escapeText(spec->full_name()));
    view["long"] = isLong(group.key, kMostBytesOfName) ||
                   (spec != nullptr && isLong(spec->full_name(), kMostBytesOfName));
    view["slug"] = group.entries.front().level.slug;
    view["expanded"] = presentation_.open ? "true" : "false";
    view["levels"] = levelCounts(group);
    view["about"] = aboutRule(spec, isBlank(group.key));
    view["lists"] = lists(group);
    return groupTemplate_.render(view);
  }

 private:
  const RuleSpec* specOf(const std::string& key) const {
    const RuleSpec* spec = find(specs_, key);
    return spec == nullptr ? find(otherSpecs_, key) : spec;
  }

  template <typename Finding>
  data lists(const Group<Finding>& group) {
    data lists(data::type::list);
    std::string html;
    for (std::size_t i = 0; i < group.entries.size(); ++i) {
      findingTemplate_.render(findingView(group.entries[i], presentation_),
                              [&html](const std::string& piece) { html += piece; });
      html += '\n';
      if ((i + 1) % maxListLength == 0 || i + 1 == group.entries.size()) {
        lists << data(std::exchange(html, ""));
      }
    }
    return lists;
  }

  const RuleSpecMap& specs_;
  const RuleSpecMap& otherSpecs_;
  Presentation presentation_;
  mustache groupTemplate_{std::string(assets::group)};
  mustache findingTemplate_{std::string(assets::finding)};
};

template <typename Findings>
std::vector<std::string> render(const Findings& findings, GroupRenderer renderer) {
  const auto groups = groupedByRule(findings);
  std::vector<std::string> blocks((groups.size() + maxBlockLength - 1) / maxBlockLength);
  for (std::size_t i = 0; i < groups.size(); ++i) {
    blocks[i / maxBlockLength] += renderer.render(groups[i]);
  }
  return blocks;
}

}  // namespace

std::vector<std::string> blocksHtml(const ViolationMap& violations, const RuleSpecMap& specs,
                                    const RuleSpecMap& otherSpecs,
                                    const Presentation& presentation) {
  return render(violations.hashmap(), GroupRenderer(specs, otherSpecs, presentation));
}

std::vector<std::string> blocksHtml(const AffirmationMap& affirmations, const RuleSpecMap& specs,
                                    const RuleSpecMap& otherSpecs,
                                    const Presentation& presentation) {
  return render(affirmations.hashmap(), GroupRenderer(specs, otherSpecs, presentation));
}

}  // namespace rulecheck
