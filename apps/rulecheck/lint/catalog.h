// SPDX-License-Identifier: Apache-2.0

// The rules that Verilator checks.

#ifndef VOK_APPS_RULECHECK_LINT_CATALOG_H_
#define VOK_APPS_RULECHECK_LINT_CATALOG_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <map>
#include <string>
#include <vector>

namespace rulecheck {

using Catalog = std::map<std::string, vok::rulecheck::RuleSpec>;

// The rules of rules.txtpb, which the program contains, by key.
Catalog verilatorRules();

// Adds a rule for each violation whose rule the catalog lacks.
void addMissingRules(const std::vector<vok::rulecheck::CreateViolation>& violations,
                     Catalog* rules);

// The keys that a name for warnings means on Verilator's command line and in its comments:
// a rule, a group ("lint", which includes "style"), or a family ("UNUSED" for UNUSEDSIGNAL
// and its like). None for other names; all for "".
std::vector<std::string> rulesNamed(const std::string& name, const Catalog& rules);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_CATALOG_H_
