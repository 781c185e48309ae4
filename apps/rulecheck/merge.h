// SPDX-License-Identifier: Apache-2.0

// Several results as one.

#ifndef VOK_APPS_RULECHECK_MERGE_H_
#define VOK_APPS_RULECHECK_MERGE_H_

#include <vok/rulecheck/RuleService.pb.h>

namespace rulecheck {

// Moves what a result holds to another one. The session stays, if it has one. Findings get
// the numbers after the last one, in their order, and keep their build target. An affirmation
// that the other result has, too, is dropped. Of two specifications of a rule, the first one
// stays. Both messages are on one arena, or nothing is moved but copied.
void merge(vok::rulecheck::SessionResult* from, vok::rulecheck::SessionResult* into);

// Removes affirmations of rules that have violations, waived or not, and sets the counts.
void finishMerge(vok::rulecheck::SessionResult* result);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_MERGE_H_
