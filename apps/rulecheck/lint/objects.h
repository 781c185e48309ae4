// SPDX-License-Identifier: Apache-2.0

// The objects of a design that a text of Verilator's names.

#ifndef VOK_APPS_RULECHECK_LINT_OBJECTS_H_
#define VOK_APPS_RULECHECK_LINT_OBJECTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace rulecheck {

// The objects whose names are in single quotes, each once and in order, with the type
// that the words before the name suggest, or else OTHER.
std::vector<vok::rulecheck::Reference> namedObjects(const std::string& text);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_OBJECTS_H_
