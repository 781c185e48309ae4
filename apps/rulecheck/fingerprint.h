// SPDX-License-Identifier: Apache-2.0

// What a finding has in common with the same finding in another result.

#ifndef VOK_APPS_RULECHECK_FINGERPRINT_H_
#define VOK_APPS_RULECHECK_FINGERPRINT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <string>

#include "rulecheck/place.h"

namespace rulecheck {

// A hash of the rule, the file, the text of its line where the result has it, and the
// message with its arguments. White space counts once; the finding's number doesn't count, nor do
// lines and columns: what follows a name in the message, as in "a.v:12:3". It is the same on all
// machines and in all releases. The place is that of the message's arguments.
std::uint64_t fingerprintOf(const std::string& rule, const vok::rulecheck::MsgInst& message,
                            const Place& place);
inline std::uint64_t fingerprintOf(const vok::rulecheck::Violation& violation, const Place& place) {
  return fingerprintOf(violation.rule_key(), violation.details(), place);
}

// In 16 hexadecimal digits.
std::string hexadecimal(std::uint64_t fingerprint);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_FINGERPRINT_H_
