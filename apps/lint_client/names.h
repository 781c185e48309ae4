// SPDX-License-Identifier: Apache-2.0

// The objects of a design that a text of Verilator's names.

#ifndef VOK_APPS_LINT_CLIENT_NAMES_H_
#define VOK_APPS_LINT_CLIENT_NAMES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace lint_client {

// The objects whose names stand in single quotes, each once and in order, with the
// type that the words before the name suggest, or else OTHER.
std::vector<vok::rulecheck::Reference> namedObjects(const std::string& text);

// "Signal is not used: 'busy'" becomes "Signal is not used".
std::string textWithoutLastName(const std::string& text);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_NAMES_H_
