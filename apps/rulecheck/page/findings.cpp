// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/findings.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "rulecheck/compare.h"
#include "rulecheck/fingerprint.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/page/safe_html.h"
#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::Arg;
using vok::rulecheck::ArgList;
using vok::rulecheck::Converter;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

// The first reference that leads to a file, or null.
const Reference* objectInFile(const ArgList& arguments) {
  const auto leadsToFile = [](const Arg& arg) {
    return arg.ref().url().has_scheme() && arg.ref().url().scheme() == Resource::FILE;
  };
  const auto found = std::find_if(arguments.arg().begin(), arguments.arg().end(), leadsToFile);
  return found == arguments.arg().end() ? nullptr : &found->ref();
}

Place placeOfObject(Reference object) {
  object.clear_name();
  return placeOf(object);
}

int severityOf(const Violation& violation) {
  const bool isListed =
      violation.has_severity() && vok::rulecheck::Violation_Severity_IsValid(violation.severity());
  return isListed ? violation.severity() : Violation::SEV_UNKNOWN;
}

int severityOf(const Affirmation& /*affirmation*/) {
  return Violation::SEV_UNKNOWN;
}

std::string addressOf(Resource url) {
  url.clear_fragment();
  return isLinkable(url) ? Converter::href(safeCopy(url)) : "";
}

// The findings of a map by their numbers. They are in memory in this order, mostly, which
// makes it faster than that of the map.
template <typename Map>
auto entriesOf(const Map& map) {
  std::vector<std::pair<int, const typename Map::mapped_type*>> entries;
  entries.reserve(map.size());
  for (const auto& [number, finding] : map) {
    entries.emplace_back(number, &finding);
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

class Collector {
 public:
  void add(const SessionResult& result) {
    findings_.list.reserve(findings_.list.size() + result.violations().hashmap().size() +
                           result.waived_violations().hashmap().size() +
                           result.affirmations().hashmap().size());
    for (const auto& [number, violation] : entriesOf(result.violations().hashmap())) {
      add({severityOf(*violation), number, violation, nullptr}, *violation);
    }
    for (const auto& [number, violation] : entriesOf(result.waived_violations().hashmap())) {
      const Kind kind = isNotChecked(*violation) ? kNotChecked : kWaived;
      add({kind, number, violation, nullptr}, *violation);
    }
    for (const auto& [number, affirmation] : entriesOf(result.affirmations().hashmap())) {
      add({kMet, number, nullptr, affirmation}, *affirmation);
    }
  }

  void compareWith(const SessionResult& baseline, const SessionResult& result) {
    const Comparison comparison = compare(baseline, result);
    mark(comparison.added, kNew);
    mark(comparison.moved, kMoved);
    mark(comparison.unchanged, kUnchanged);
    mark(comparison.fixed, kUnmarked);
    for (const auto& [number, violation] : entriesOf(baseline.violations().hashmap())) {
      if (marks_.count(violation) != 0) {
        add({kFixed, number, violation, nullptr}, *violation);
      }
    }
    findings_.isCompared = true;
    findings_.uncheckedSince = comparison.unchecked.size();
  }

  Findings sorted() {
    numberFiles();
    std::sort(findings_.list.begin(), findings_.list.end(), [](const auto& a, const auto& b) {
      const auto order = [](const Finding& finding) {
        return std::tie(finding.file, finding.line, finding.column, finding.kind, finding.number);
      };
      return order(a) < order(b);
    });
    return std::move(findings_);
  }

 private:
  void mark(const Violations& violations, Mark mark) {
    for (const Violation* violation : violations) {
      marks_[violation] = mark;
    }
  }

  template <typename Message>
  void add(Finding finding, const Message& message) {
    const ArgList& arguments = message.details().args();
    finding.severity = severityOf(message);
    finding.rule = ruleNumber(message.rule_key());
    finding.placeArgument = placeArgument(arguments);
    Place place;
    if (finding.placeArgument >= 0) {
      const Reference& reference = arguments.arg(finding.placeArgument).ref();
      place = placeOf(reference);
      setPlace(place, reference.url(), &finding);
    } else if (const Reference* object = objectInFile(arguments)) {
      setPlace(placeOfObject(*object), object->url(), &finding);
    }
    finding.fingerprint = fingerprintOf(message.rule_key(), message.details(), place);
    const auto mark = marks_.find(finding.violation);
    finding.mark = mark == marks_.end() ? kUnmarked : mark->second;
    ++findings_.ofKind[static_cast<std::size_t>(finding.kind)];
    ++findings_.ofMark[static_cast<std::size_t>(finding.mark)];
    findings_.list.push_back(finding);
  }

  std::size_t ruleNumber(const std::string& key) {
    const auto [rule, isFirst] = numberOfRule_.try_emplace(key, findings_.rules.size());
    if (isFirst) {
      findings_.rules.push_back(key);
    }
    return rule->second;
  }

  void setPlace(const Place& place, const Resource& url, Finding* finding) {
    const std::string key = place.file + '\0' + std::to_string(url.scheme()) + url.host() + '\0' +
                            std::to_string(url.port()) + url.path() + '\0' + url.query();
    const auto [file, isFirst] = numberOfUrl_.try_emplace(key, 0);
    if (isFirst) {
      const std::size_t number = numberOfFile_.size();
      const auto named = std::make_pair(place.file, addressOf(url));
      file->second = numberOfFile_.try_emplace(named, number).first->second;
    }
    finding->file = file->second;
    finding->line = place.line;
    finding->column = place.column;
  }

  // Files get the numbers of their order.
  void numberFiles() {
    std::vector<std::size_t> ranks(numberOfFile_.size());
    for (const auto& [file, number] : numberOfFile_) {
      ranks[number] = findings_.files.size();
      findings_.files.push_back({file.first, file.second});
    }
    for (Finding& finding : findings_.list) {
      finding.file = ranks[finding.file];
    }
  }

  Findings findings_;
  std::unordered_map<std::string, std::size_t> numberOfRule_;
  // By path and address; the first one is none.
  std::map<std::pair<std::string, std::string>, std::size_t> numberOfFile_{{{"", ""}, 0}};
  std::unordered_map<std::string, std::size_t> numberOfUrl_;
  std::unordered_map<const Violation*, Mark> marks_;
};

}  // namespace

const std::vector<Level>& kinds() {
  static const std::vector<Level> all = [] {
    std::vector<Level> levels = violationLevels();
    levels.push_back({kNotChecked, "not checked", "not-checked"});
    levels.push_back({kWaived, "waived", "waived"});
    levels.push_back({kMet, "met", "met"});
    levels.push_back({kFixed, "fixed", "fixed"});
    return levels;
  }();
  return all;
}

const std::vector<Level>& marks() {
  static const std::vector<Level> all = {{kUnmarked, "", ""},
                                         {kNew, "new", "new"},
                                         {kMoved, "moved", "moved"},
                                         {kUnchanged, "unchanged", "unchanged"}};
  return all;
}

Findings findingsOf(const SessionResult& result, const SessionResult* baseline) {
  Collector collector;
  if (baseline != nullptr) {
    collector.compareWith(*baseline, result);
  }
  collector.add(result);
  return collector.sorted();
}

}  // namespace rulecheck
