// SPDX-License-Identifier: Apache-2.0

// The third state of a rule, after violated and affirmed: it was not checked, or not
// everywhere. A result says so with a waived violation, at the place that is to blame,
// whose reason is one of these.

#ifndef VOK_APPS_RULECHECK_NOT_CHECKED_H_
#define VOK_APPS_RULECHECK_NOT_CHECKED_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

constexpr char kOffInSource[] = "switched off in the source";
constexpr char kOffByArgument[] = "switched off on the command line";
constexpr char kCutShort[] = "cut short by an error";

// The category under which a waived violation has the reason of its waiver.
constexpr int kWaiverCategory = 1;

// The reason; "" if there is none.
inline std::string waiverOf(const vok::rulecheck::Violation& violation) {
  const auto found = violation.categories().find(kWaiverCategory);
  return found == violation.categories().end() ? "" : found->second;
}

inline bool isNotChecked(const std::string& reason) {
  return reason == kOffInSource || reason == kOffByArgument || reason == kCutShort;
}

inline bool isNotChecked(const vok::rulecheck::Violation& violation) {
  return isNotChecked(waiverOf(violation));
}

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_NOT_CHECKED_H_
