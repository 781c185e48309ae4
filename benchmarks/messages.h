// SPDX-License-Identifier: Apache-2.0

// The messages of the benchmarks, with lengths as in a real design. They are the same in each run.

#ifndef VOK_BENCHMARKS_MESSAGES_H_
#define VOK_BENCHMARKS_MESSAGES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace benchmarks {

// The violations of the result that all codecs parse.
constexpr int resultViolations = 10000;

// A result with a fifth as many affirmations, and a rule specification for each fifty violations.
vok::rulecheck::SessionResult makeResult(int violations);

// 20,000 requests to record a violation.
std::vector<vok::rulecheck::Request> makeRequests();

// Violations, each allocated alone.
using Findings = std::vector<std::unique_ptr<vok::rulecheck::Violation>>;
Findings makeFindings(std::size_t count);

// The bytes of a message, with the entries of maps in the order of their keys.
std::string bytesOf(const google::protobuf::Message& message);

// The bytes of makeResult() and of each of makeRequests(). Made once.
const std::string& resultBytes(int violations);
const std::vector<std::string>& requestBytes();

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_MESSAGES_H_
