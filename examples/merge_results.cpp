// Merges results, each a file in binary format, into the first, and prints it.
//
// usage: merge_results FILE...

// Shown in docs/recipes.md: begin
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <set>
#include <string>

using namespace vok::rulecheck;

// Returns the lowest numbers that no finding has, neither as its key nor as its id.
class FreeNumbers {
 public:
  template <typename Findings>
  void take(const Findings& findings) {
    for (const auto& entry : findings.hashmap()) {
      taken_.insert(entry.first);
      taken_.insert(entry.second.id());
    }
  }

  std::int32_t next() {
    while (!taken_.insert(next_).second) {
      ++next_;
    }
    return next_;
  }

 private:
  std::set<std::int32_t> taken_;
  std::int32_t next_ = 1;
};

// A finding without a build target has its session's: it gets that if the two sessions differ.
template <typename Findings>
void addFindings(const Findings& source, const Session& oldSession, const Session& newSession,
                 FreeNumbers* numbers, Findings* target) {
  std::set<std::int32_t> keys;  // sorted, unlike those of the map
  for (const auto& entry : source.hashmap()) {
    keys.insert(entry.first);
  }
  for (const std::int32_t key : keys) {
    const std::int32_t number = numbers->next();
    auto& finding = (*target->mutable_hashmap())[number];
    finding = source.hashmap().at(key);
    finding.set_id(number);
    if (!finding.has_build_target() && oldSession.build_target() != newSession.build_target()) {
      finding.set_build_target(oldSession.build_target());
    }
  }
}

// If both have a rule, the target's is kept.
void addRules(const RuleSpecMap& source, RuleSpecMap* target) {
  for (const auto& entry : source.hashmap()) {
    target->mutable_hashmap()->insert(entry);
  }
}

// Adds a result to the target, which keeps its session.
void merge(const SessionResult& source, SessionResult* target) {
  FreeNumbers numbers;
  numbers.take(target->violations());
  numbers.take(target->waived_violations());
  numbers.take(target->affirmations());

  const Session& from = source.session();
  const Session& to = target->session();
  addFindings(source.violations(), from, to, &numbers, target->mutable_violations());
  addFindings(source.waived_violations(), from, to, &numbers, target->mutable_waived_violations());
  addFindings(source.affirmations(), from, to, &numbers, target->mutable_affirmations());
  addRules(source.specs_violated(), target->mutable_specs_violated());
  addRules(source.specs_affirmed(), target->mutable_specs_affirmed());

  target->set_violation_count(target->violations().hashmap_size());
  target->set_waived_count(target->waived_violations().hashmap_size());
  target->set_affirmation_count(target->affirmations().hashmap_size());
}
// Shown in docs/recipes.md: end

#include <google/protobuf/text_format.h>

#include <fstream>
#include <iostream>

namespace {

bool read(const char* path, SessionResult* result) {
  std::ifstream in(path, std::ios::binary);
  return in && result->ParsePartialFromIstream(&in) && result->IsInitialized();
}

}  // namespace

int main(int argc, char** argv) {
  SessionResult merged;
  for (int i = 1; i < argc; ++i) {
    SessionResult result;
    if (!read(argv[i], &result)) {
      std::cout << argv[i] << " is no result\n";
      return 1;
    }
    if (i == 1) {
      merged.Swap(&result);
    } else {
      merge(result, &merged);
    }
  }
  std::string text;
  const bool printed = google::protobuf::TextFormat::PrintToString(merged, &text);
  std::cout << text;
  return printed ? 0 : 1;
}
