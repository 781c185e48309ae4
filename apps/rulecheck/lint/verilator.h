// SPDX-License-Identifier: Apache-2.0

// What Verilator says about a design, as violations.

#ifndef VOK_APPS_RULECHECK_LINT_VERILATOR_H_
#define VOK_APPS_RULECHECK_LINT_VERILATOR_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "rulecheck/lint/catalog.h"

namespace rulecheck {

// Runs `verilator --lint-only -Wall -Wno-fatal ARGUMENTS` in the working directory. The
// program is looked up in PATH if it has no "/" in it. Returns the violations of
// parseMessages() and of uncheckedRules(). Throws apps::CannotRun, or std::runtime_error if a
// signal ends the program.
std::vector<vok::rulecheck::CreateViolation> lint(const std::string& program,
                                                  const std::vector<std::string>& arguments,
                                                  const Catalog& rules);

// The rule of errors without a name.
constexpr char kErrorRule[] = "ERROR";

// Takes the standard error output of Verilator apart: a violation for each warning and
// error. Its arguments are the place, Verilator's text, the objects that the text names in
// quotes, the instance, links to other places, and advice. The severity is set for errors
// only. threshold_value and actual_value are set if the text compares two values.
//
// Left out are excerpts of sources, the totals, pointers to the manual, what $info prints,
// and lines that belong to no message. Files are relative to the directory.
std::vector<vok::rulecheck::CreateViolation> parseMessages(const std::string& output,
                                                           const std::filesystem::path& directory);

inline bool isError(const vok::rulecheck::CreateViolation& parsed) {
  return parsed.has_severity();
}

// The objects of a design whose names are in single quotes in a text, each once and in order,
// with the type that the words before the name suggest, or else OTHER.
std::vector<vok::rulecheck::Reference> namedObjects(const std::string& text);

// The rules that Verilator did not check, or not everywhere: a waived violation, with a reason
// of not_checked.h, for
//  - each place in a file that switches a rule off: a lint_off comment, a lint_off of a
//    configuration file (.vlt), or -Wno- in a file of arguments. The files are those of
//    dependencies, a rule of Make; one that cannot be read switches all rules off;
//  - each argument -Wno-;
//  - each rule that nothing was found of, if an error was found: it cut the check short. The
//    place is that of the error.
// A comment after an `if may be skipped. If there is one, preprocess is called, which returns
// the sources as Verilator preprocesses them or nothing, and what is not in them doesn't count,
// unless it is in a library or the library includes files.
std::vector<vok::rulecheck::CreateViolation> uncheckedRules(
    const std::vector<std::string>& arguments, const std::string& dependencies,
    const std::vector<vok::rulecheck::CreateViolation>& found,
    const std::filesystem::path& directory, const Catalog& rules,
    const std::function<std::string()>& preprocess);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_VERILATOR_H_
