// SPDX-License-Identifier: Apache-2.0

// Results in the Static Analysis Results Interchange Format (SARIF) 2.1.0.

#ifndef VOK_APPS_RULECHECK_SARIF_H_
#define VOK_APPS_RULECHECK_SARIF_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>

namespace rulecheck {

// The property that has the whole finding or rule, for fromSarif(). No other tool has one of that
// name.
constexpr char kOwnProperty[] = "rulecheck/v1";

// A log with one run. Waived violations are suppressed results, affirmations are results of
// the kind "pass". Each violation has its fingerprint, and if there is a baseline its state:
// new, unchanged, or absent for what was fixed. Strings that are not UTF-8 get U+FFFD.
std::string toSarif(const vok::rulecheck::SessionResult& result,
                    const vok::rulecheck::SessionResult* baseline);

// Reads the runs of a log by any tool. Suppressed results become waived violations, those of
// the kind "pass" affirmations; those that are "notApplicable" or absent are left out. Violations
// also say what failed in the tool itself.
// Relative files are taken as ones in the directory, unless the run says otherwise. What
// toSarif() wrote gives the same findings. Throws std::exception if the log is malformed.
void fromSarif(const std::string& log, const std::filesystem::path& directory,
               vok::rulecheck::SessionResult* result);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_SARIF_H_
