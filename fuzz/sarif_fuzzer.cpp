// SPDX-License-Identifier: Apache-2.0

// The input is a SARIF log.

#include "rulecheck/sarif.h"

#include <exception>
#include <string>

#include "check.h"
#include "rulecheck/compare.h"

namespace {

using fuzz::check;
using vok::rulecheck::SessionResult;

bool import(const std::string& log, SessionResult* result) {
  try {
    rulecheck::fromSarif(log, "/src", result);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

void checkSame(const std::string& log, const SessionResult& before, const SessionResult& after) {
  check(after.violation_count() == before.violation_count() &&
            after.waived_count() == before.waived_count() &&
            after.affirmation_count() == before.affirmation_count(),
        log, "export and import change the number of findings");
  const rulecheck::Comparison comparison = rulecheck::compare(before, after);
  check(comparison.added.empty() && comparison.fixed.empty(), log,
        "export and import change a finding");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SessionResult result;
  if (!import({reinterpret_cast<const char*>(data), size}, &result)) {
    return 0;
  }
  check(result.IsInitialized(), result.InitializationErrorString(), "a field is missing");
  const std::string log = rulecheck::toSarif(result, nullptr);
  SessionResult again;
  check(import(log, &again), log, "what was exported cannot be imported");
  checkSame(log, result, again);
  fuzz::checkEqual(rulecheck::toSarif(again, nullptr), log, "log", "a second export differs");
  return 0;
}
