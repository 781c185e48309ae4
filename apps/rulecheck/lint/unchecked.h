// SPDX-License-Identifier: Apache-2.0

// Rules that Verilator did not check, or not everywhere.

#ifndef VOK_APPS_RULECHECK_LINT_UNCHECKED_H_
#define VOK_APPS_RULECHECK_LINT_UNCHECKED_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "rulecheck/lint/catalog.h"

namespace rulecheck {

// A waived violation, with a reason of not_checked.h, for
//  - each place in a file that switches a rule off: a lint_off comment, a line of a
//    configuration file (.vlt), or -Wno- in a file of arguments. The files are the arguments
//    that name one, and those of dependencies, a rule of Make;
//  - each argument -Wno-;
//  - each rule that nothing was found of, if an error was found: it cut the check short. The
//    place is that of the error.
// A comment after an `if may be skipped. If there is one, preprocess is called, which returns
// the sources as Verilator preprocesses them or nothing, and what is not in them doesn't count.
std::vector<vok::rulecheck::CreateViolation> uncheckedRules(
    const std::vector<std::string>& arguments, const std::string& dependencies,
    const std::vector<vok::rulecheck::CreateViolation>& found,
    const std::filesystem::path& directory, const Catalog& rules,
    const std::function<std::string()>& preprocess);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_UNCHECKED_H_
