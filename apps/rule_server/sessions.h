// SPDX-License-Identifier: Apache-2.0

// What the rule server keeps of a session, and the result that it makes of that.

#ifndef VOK_APPS_RULE_SERVER_SESSIONS_H_
#define VOK_APPS_RULE_SERVER_SESSIONS_H_

#include <google/protobuf/message.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "rule_server/catalog.h"
#include "rule_server/limits.h"

namespace rule_server {

// A finding is kept as the rule and the serialized body that it was made of, since the
// finding itself has copies of the rule's texts, and a parsed body takes up to 58 times
// the memory.
struct Finding {
  bool isAffirmation;
  Rule rule;
  std::string body;
  // Of the finding in a result.
  std::size_t bytes;
  Budget::Share share;
};

// Findings, to which more can be added and which never change. Copying is fast, since a
// copy shares the blocks. Add to the original only.
class Findings {
 public:
  static constexpr std::size_t kBlock = 64;

  void add(Finding finding);
  std::size_t size() const { return size_; }
  const Finding& operator[](std::size_t i) const { return blocks_[i / kBlock].get()[i % kBlock]; }

 private:
  std::vector<std::shared_ptr<Finding[]>> blocks_;
  std::size_t size_ = 0;
};

// Of a request's serialized body, and what it and the rule make: a Violation or an Affirmation.
Finding makeFinding(const Rule& rule, std::string body, const google::protobuf::Message& made,
                    Budget& budget);

struct SessionState {
  SessionState(const vok::rulecheck::Session& session, const Limits& limits, Budget& budget);

  // Returns the id. Throws Failure (LimitExceeded) or std::bad_alloc, and adds nothing then.
  std::int32_t add(Finding finding, const Limits& limits);

  using Recorded = std::tuple<Findings, std::set<std::string>, std::set<std::string>>;
  // What was recorded, which the caller can destroy without a lock.
  Recorded reset();

  std::shared_ptr<const vok::rulecheck::Session> about;
  Budget::Share share;
  // Their ids are 1, 2, ...
  Findings findings;
  std::set<std::string> violated;
  std::set<std::string> affirmed;
  // Of the result, with the rules as they were when findings named them first.
  std::size_t bytes;
  bool stopped = false;
};

// A session as it was at one moment. Using it needs no lock.
struct Snapshot {
  std::shared_ptr<const vok::rulecheck::Session> about;
  Findings findings;
  std::vector<Rule> violated;
  std::vector<Rule> affirmed;
};

std::size_t bytesOf(const std::vector<Rule>& rules);
vok::rulecheck::RuleSpecMap specsOf(const std::vector<Rule>& rules);

// The bytes of its result.
std::size_t bytesOf(const Snapshot& snapshot);

// The session and the rules, without findings and counts.
vok::rulecheck::SessionResult specsOf(const Snapshot& snapshot);

vok::rulecheck::SessionResult resultOf(const Snapshot& snapshot);

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_SESSIONS_H_
