// SPDX-License-Identifier: Apache-2.0

// Findings that the user accepts, from a file of waivers.

#ifndef VOK_APPS_RULECHECK_LINT_WAIVERS_H_
#define VOK_APPS_RULECHECK_LINT_WAIVERS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace rulecheck {

// A line of a file:
//
//   RULE FILE[:LINE] [match=REGEX] [owner=NAME] [until=YYYY-MM-DD] -- REASON
//
// RULE and FILE are patterns: "*" matches any characters, "?" one. FILE matches the path
// that a finding shows, or the last parts of it. REGEX, in RE2's syntax and without blanks,
// matches a part of the message. A waiver no longer counts after the day of until.
// Blank lines and lines that begin with "#" are skipped.
//
// Sets the category "waiver" of each violation that has none and that a waiver is for, to
// the reason, the owner and the day. The first waiver counts. today is "YYYY-MM-DD".
// Returns a line of text for each waiver that is expired or matches nothing, which begins
// with "FILE:LINE: ". Throws apps::FileError if a file can't be read or has a malformed line.
std::vector<std::string> applyWaivers(const std::vector<std::string>& paths,
                                      const std::string& today,
                                      std::vector<vok::rulecheck::CreateViolation>* violations);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_WAIVERS_H_
