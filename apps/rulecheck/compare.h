// SPDX-License-Identifier: Apache-2.0

// Two results, finding by finding.

#ifndef VOK_APPS_RULECHECK_COMPARE_H_
#define VOK_APPS_RULECHECK_COMPARE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <string>
#include <vector>

namespace rulecheck {

using Violations = std::vector<const vok::rulecheck::Violation*>;

Violations listOf(const vok::rulecheck::ViolationMap& violations);

// By file, line, column and number.
Violations sortedByPlace(Violations violations);

// Each violation of the new result is in one of the first three lists. Waived violations
// of the new result are not fixed.
struct Comparison {
  Violations added;
  Violations moved;
  Violations unchanged;
  Violations fixed;
  // Gone, of rules that the new result doesn't check where the old one did.
  Violations unchecked;
};

// Finds the same violation by its fingerprint. Of several with one fingerprint, those that
// come first are the same. A violation moved if its line or column did.
Comparison compare(const vok::rulecheck::SessionResult& before,
                   const vok::rulecheck::SessionResult& after);

// The lines "new: ...", "fixed: ..." and "not checked: ...", if wanted, and a line of counts.
std::string textOf(const Comparison& comparison, bool withFindings);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_COMPARE_H_
