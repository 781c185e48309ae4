// SPDX-License-Identifier: Apache-2.0

// The decision whether a result is good enough.

#ifndef VOK_APPS_RULECHECK_GATE_H_
#define VOK_APPS_RULECHECK_GATE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>

#include "rulecheck/compare.h"

namespace rulecheck {

struct Gate {
  vok::rulecheck::Violation_Severity failOn = vok::rulecheck::Violation::SEV_ERROR;
  // How many findings may be that serious.
  std::size_t most = 0;
};

// Those of the violations that are as serious as the gate says, or more. A violation of
// unknown severity is.
Violations seriousOf(const Gate& gate, const Violations& violations);

// A line for each of the first twenty findings, and the decision.
std::string decision(const Gate& gate, const Violations& serious);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_GATE_H_
