// SPDX-License-Identifier: Apache-2.0

#include "rule_server/sessions.h"

#include <stdexcept>
#include <utility>

#include "rule_server/errors.h"
#include "rule_server/findings.h"

namespace rule_server {
namespace {

using google::protobuf::Message;
using vok::rulecheck::Affirmation;
using vok::rulecheck::CreateAffirmation;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

// What an entry of a map takes besides its message.
constexpr std::size_t kEntryBytes = 64;

// Adds findings to a result.
class Adder {
 public:
  explicit Adder(SessionResult* result) : result_(result) {}

  void add(const Finding& finding, std::int32_t id) {
    if (finding.isAffirmation) {
      parse(finding, &affirmation_);
      Affirmation& made = (*result_->mutable_affirmations()->mutable_hashmap())[id];
      made = makeAffirmation(finding.rule->spec, &affirmation_);
      made.set_id(id);
      return;
    }
    parse(finding, &violation_);
    auto* map =
        isWaived(violation_) ? result_->mutable_waived_violations() : result_->mutable_violations();
    Violation& made = (*map->mutable_hashmap())[id];
    made = makeViolation(finding.rule->spec, &violation_);
    made.set_id(id);
  }

 private:
  static void parse(const Finding& finding, Message* body) {
    if (!body->ParseFromString(finding.body)) {
      throw std::logic_error("a recorded finding is malformed");
    }
  }

  SessionResult* result_;
  CreateViolation violation_;
  CreateAffirmation affirmation_;
};

}  // namespace

Finding makeFinding(const Rule& rule, std::string body, const Message& made, Budget& budget) {
  const bool isAffirmation = made.GetDescriptor() == Affirmation::descriptor();
  Finding finding{isAffirmation, rule, std::move(body), made.SpaceUsedLong() + kEntryBytes,
                  nullptr};
  finding.share = budget.take(sizeof(Finding) + finding.body.capacity() + kEntryBytes);
  return finding;
}

void Findings::add(Finding finding) {
  if (size_ % kBlock == 0) {
    // GCC 12 destroys the findings twice if "new Finding[kBlock]" is the argument and memory lacks.
    blocks_.push_back(std::make_unique<Finding[]>(kBlock));
  }
  blocks_.back().get()[size_ % kBlock] = std::move(finding);
  ++size_;
}

SessionState::SessionState(const vok::rulecheck::Session& session, const Limits& limits,
                           Budget& budget)
    : about(std::make_shared<const vok::rulecheck::Session>(session)),
      share(budget.take(2 * session.SpaceUsedLong() + sizeof(SessionState) +
                        Findings::kBlock * sizeof(Finding))),
      bytes(session.SpaceUsedLong()) {
  checkBytes([&] { return "session " + quoted(session.uuid()); }, bytes, limits.sessionBytes,
             "shorten it");
}

std::int32_t SessionState::add(Finding finding, const Limits& limits) {
  const auto name = [this] { return "session " + quoted(about->uuid()); };
  if (findings.size() >= limits.findings) {
    throw Failure(ErrorCode::LimitExceeded,
                  name() + " has " + std::to_string(findings.size()) +
                      " findings and takes no more: start another session");
  }
  std::set<std::string>& keys = finding.isAffirmation ? affirmed : violated;
  const bool isNew = keys.count(finding.rule->spec.key()) == 0;
  const std::size_t after = bytes + finding.bytes + (isNew ? finding.rule->bytes : 0);
  checkBytes([&] { return name() + " with this finding"; }, after, limits.sessionBytes,
             "start another session");
  std::set<std::string> key;
  if (isNew) {
    key.insert(finding.rule->spec.key());
  }
  findings.add(std::move(finding));
  // Nothing can fail from here on.
  keys.merge(key);
  bytes = after;
  return static_cast<std::int32_t>(findings.size());
}

SessionState::Recorded SessionState::reset() {
  bytes = about->SpaceUsedLong();
  return {std::exchange(findings, {}), std::exchange(violated, {}), std::exchange(affirmed, {})};
}

std::size_t bytesOf(const std::vector<Rule>& rules) {
  std::size_t bytes = 0;
  for (const Rule& rule : rules) {
    bytes += rule->bytes + kEntryBytes;
  }
  return bytes;
}

RuleSpecMap specsOf(const std::vector<Rule>& rules) {
  RuleSpecMap specs;
  for (const Rule& rule : rules) {
    (*specs.mutable_hashmap())[rule->spec.key()] = rule->spec;
  }
  return specs;
}

std::size_t bytesOf(const Snapshot& snapshot) {
  std::size_t bytes =
      snapshot.about->SpaceUsedLong() + bytesOf(snapshot.violated) + bytesOf(snapshot.affirmed);
  for (std::size_t i = 0; i < snapshot.findings.size(); ++i) {
    bytes += snapshot.findings[i].bytes;
  }
  return bytes;
}

SessionResult specsOf(const Snapshot& snapshot) {
  SessionResult specs;
  *specs.mutable_session() = *snapshot.about;
  *specs.mutable_specs_violated() = specsOf(snapshot.violated);
  *specs.mutable_specs_affirmed() = specsOf(snapshot.affirmed);
  return specs;
}

SessionResult resultOf(const Snapshot& snapshot) {
  SessionResult result;
  *result.mutable_session() = *snapshot.about;
  if (!snapshot.violated.empty()) {
    *result.mutable_specs_violated() = specsOf(snapshot.violated);
  }
  if (!snapshot.affirmed.empty()) {
    *result.mutable_specs_affirmed() = specsOf(snapshot.affirmed);
  }
  const auto& violations = result.mutable_violations()->hashmap();
  const auto& waived = result.mutable_waived_violations()->hashmap();
  const auto& affirmations = result.mutable_affirmations()->hashmap();
  Adder adder(&result);
  for (std::size_t i = 0; i < snapshot.findings.size(); ++i) {
    adder.add(snapshot.findings[i], static_cast<std::int32_t>(i + 1));
  }
  result.set_violation_count(static_cast<std::int32_t>(violations.size()));
  result.set_waived_count(static_cast<std::int32_t>(waived.size()));
  result.set_affirmation_count(static_cast<std::int32_t>(affirmations.size()));
  return result;
}

}  // namespace rule_server
