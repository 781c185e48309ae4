// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/merge.h"

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/message_file.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::SessionResult;
using vok::rulecheck::ViolationMap;

// Moves findings to another result, which keeps its session.
class Mover {
 public:
  explicit Mover(const SessionResult& into) {
    look(into.violations());
    look(into.waived_violations());
    look(into.affirmations());
  }

  template <typename Findings>
  void move(Findings* from, Findings* into) {
    std::vector<int> numbers;
    numbers.reserve(from->hashmap().size());
    for (const auto& entry : from->hashmap()) {
      numbers.push_back(entry.first);
    }
    std::sort(numbers.begin(), numbers.end());
    if (numbers.size() > static_cast<std::size_t>(std::numeric_limits<int>::max() - last_)) {
      throw std::runtime_error("the results have too many findings");
    }
    for (const int key : numbers) {
      auto& finding = (*into->mutable_hashmap())[++last_];
      finding.Swap(&(*from->mutable_hashmap())[key]);
      finding.set_id(last_);
    }
  }

 private:
  template <typename Findings>
  void look(const Findings& findings) {
    for (const auto& entry : findings.hashmap()) {
      last_ = std::max(last_, entry.first);
    }
  }

  // Of all findings; numbers begin at 1.
  int last_ = 0;
};

template <typename Findings>
void setTarget(const std::string& target, Findings* findings) {
  for (auto& entry : *findings->mutable_hashmap()) {
    if (!entry.second.has_build_target()) {
      entry.second.set_build_target(target);
    }
  }
}

template <typename Specs>
void moveSpecs(Specs* from, Specs* into) {
  for (auto& entry : *from->mutable_hashmap()) {
    if (into->hashmap().count(entry.first) == 0) {
      (*into->mutable_hashmap())[entry.first].Swap(&entry.second);
    }
  }
}

template <typename Predicate>
void dropAffirmations(SessionResult* result, Predicate isDropped) {
  auto& affirmations = *result->mutable_affirmations()->mutable_hashmap();
  for (auto entry = affirmations.begin(); entry != affirmations.end();) {
    entry = isDropped(entry->second) ? affirmations.erase(entry) : std::next(entry);
  }
}

std::string contentOf(Affirmation affirmation) {
  affirmation.set_id(0);
  return apps::encodeFor("-.pb", affirmation);
}

void dropKnownAffirmations(SessionResult* from, const SessionResult& into) {
  std::set<std::string> known;
  for (const auto& entry : into.affirmations().hashmap()) {
    known.insert(contentOf(entry.second));
  }
  dropAffirmations(from, [&known](const Affirmation& affirmation) {
    return known.count(contentOf(affirmation)) != 0;
  });
}

void addRules(const ViolationMap& violations, std::set<std::string>* rules) {
  for (const auto& entry : violations.hashmap()) {
    rules->insert(entry.second.rule_key());
  }
}

}  // namespace

void merge(SessionResult* from, SessionResult* into) {
  if (!into->has_session()) {
    *into->mutable_session() = from->session();
  }
  // A finding without a build target has its session's.
  const std::string& target = from->session().build_target();
  if (target != into->session().build_target()) {
    setTarget(target, from->mutable_violations());
    setTarget(target, from->mutable_waived_violations());
    setTarget(target, from->mutable_affirmations());
  }
  dropKnownAffirmations(from, *into);
  Mover mover(*into);
  mover.move(from->mutable_violations(), into->mutable_violations());
  mover.move(from->mutable_waived_violations(), into->mutable_waived_violations());
  mover.move(from->mutable_affirmations(), into->mutable_affirmations());
  moveSpecs(from->mutable_specs_violated(), into->mutable_specs_violated());
  moveSpecs(from->mutable_specs_affirmed(), into->mutable_specs_affirmed());
}

void finishMerge(SessionResult* result) {
  std::set<std::string> violated;
  addRules(result->violations(), &violated);
  addRules(result->waived_violations(), &violated);
  dropAffirmations(result, [&violated](const Affirmation& affirmation) {
    return violated.count(affirmation.rule_key()) != 0;
  });
  for (const std::string& rule : violated) {
    result->mutable_specs_affirmed()->mutable_hashmap()->erase(rule);
  }
  result->set_violation_count(static_cast<int>(result->violations().hashmap().size()));
  result->set_waived_count(static_cast<int>(result->waived_violations().hashmap().size()));
  result->set_affirmation_count(static_cast<int>(result->affirmations().hashmap().size()));
}

}  // namespace rulecheck
