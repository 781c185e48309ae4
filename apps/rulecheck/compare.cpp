// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/compare.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>

#include "rulecheck/fingerprint.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"
#include "rulecheck/plain_text.h"

namespace rulecheck {
namespace {

using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;
using vok::rulecheck::ViolationMap;

struct Entry {
  std::uint64_t fingerprint;
  int line;
  int column;
  const Violation* violation;

  auto order() const { return std::make_tuple(fingerprint, line, column, violation->id()); }
};

// Sorted, so that the same violations of two results are met at the same time.
std::vector<Entry> entriesOf(const ViolationMap& violations) {
  std::vector<Entry> entries;
  entries.reserve(violations.hashmap().size());
  for (const auto& [number, violation] : violations.hashmap()) {
    const Place place = placeOf(violation.details().args());
    entries.push_back({fingerprintOf(violation, place), place.line, place.column, &violation});
  }
  std::sort(entries.begin(), entries.end(),
            [](const Entry& a, const Entry& b) { return a.order() < b.order(); });
  return entries;
}

// Each of the others takes one with its fingerprint away.
std::vector<Entry> without(const std::vector<Entry>& others, const std::vector<Entry>& entries) {
  std::vector<Entry> rest;
  std::set_difference(entries.begin(), entries.end(), others.begin(), others.end(),
                      std::back_inserter(rest),
                      [](const Entry& a, const Entry& b) { return a.fingerprint < b.fingerprint; });
  return rest;
}

// The rules that the new result doesn't check everywhere where the old one did.
class Unchecked {
 public:
  Unchecked(const std::vector<Entry>& before, const std::vector<Entry>& after) {
    const auto cutShort = [](const Entry& entry) {
      return waiverOf(*entry.violation) == kCutShort;
    };
    all_ = std::any_of(after.begin(), after.end(), cutShort);
    for (const Entry& entry : without(before, after)) {
      if (isNotChecked(*entry.violation)) {
        rules_.insert(entry.violation->rule_key());
      }
    }
  }

  bool has(const std::string& rule) const { return all_ || rules_.count(rule) != 0; }

 private:
  // After an error, Verilator checks little.
  bool all_;
  std::set<std::string> rules_;
};

}  // namespace

Violations listOf(const ViolationMap& violations) {
  Violations all;
  all.reserve(violations.hashmap().size());
  for (const auto& entry : violations.hashmap()) {
    all.push_back(&entry.second);
  }
  return all;
}

Violations sortedByPlace(Violations violations) {
  // A Place has the source line too, and those of a million violations take much memory.
  using Placed = std::tuple<std::string, int, int, int, const Violation*>;
  std::vector<Placed> placed;
  placed.reserve(violations.size());
  for (const Violation* violation : violations) {
    Place place = placeOf(violation->details().args());
    placed.emplace_back(std::move(place.file), place.line, place.column, violation->id(),
                        violation);
  }
  std::sort(placed.begin(), placed.end());
  std::transform(placed.begin(), placed.end(), violations.begin(),
                 [](const Placed& entry) { return std::get<const Violation*>(entry); });
  return violations;
}

Comparison compare(const SessionResult& before, const SessionResult& after) {
  const std::vector<Entry> olds = entriesOf(before.violations());
  const std::vector<Entry> news = entriesOf(after.violations());
  Comparison comparison;
  std::vector<Entry> gone;
  auto old = olds.begin();
  for (const Entry& entry : news) {
    while (old != olds.end() && old->fingerprint < entry.fingerprint) {
      gone.push_back(*old++);
    }
    if (old == olds.end() || old->fingerprint != entry.fingerprint) {
      comparison.added.push_back(entry.violation);
      continue;
    }
    const bool isThere = old->line == entry.line && old->column == entry.column;
    (isThere ? comparison.unchanged : comparison.moved).push_back(entry.violation);
    ++old;
  }
  gone.insert(gone.end(), old, olds.end());
  const std::vector<Entry> waived = entriesOf(after.waived_violations());
  const Unchecked unchecked(entriesOf(before.waived_violations()), waived);
  for (const Entry& entry : without(waived, gone)) {
    const bool isFixed = !unchecked.has(entry.violation->rule_key());
    (isFixed ? comparison.fixed : comparison.unchecked).push_back(entry.violation);
  }
  for (Violations* list : {&comparison.added, &comparison.fixed, &comparison.unchecked}) {
    *list = sortedByPlace(std::move(*list));
  }
  return comparison;
}

std::string textOf(const Comparison& comparison, bool withFindings) {
  std::string text;
  const auto addLines = [&](const char* state, const Violations& violations) {
    for (const Violation* violation : violations) {
      text += std::string(state) + ": " + lineOf(*violation) + '\n';
    }
  };
  if (withFindings) {
    addLines("new", comparison.added);
    addLines("fixed", comparison.fixed);
    addLines("not checked", comparison.unchecked);
  }
  text += std::to_string(comparison.added.size()) + " new, " +
          std::to_string(comparison.fixed.size()) + " fixed, " +
          std::to_string(comparison.unchanged.size()) + " unchanged, " +
          std::to_string(comparison.moved.size()) + " moved";
  if (!comparison.unchecked.empty()) {
    text += ", " + std::to_string(comparison.unchecked.size()) + " not checked";
  }
  return text + '\n';
}

}  // namespace rulecheck
