// SPDX-License-Identifier: Apache-2.0

// The rules that Verilator checks.

#ifndef VOK_APPS_LINT_CLIENT_CATALOG_H_
#define VOK_APPS_LINT_CLIENT_CATALOG_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

#include "lint_client/messages.h"

namespace lint_client {

// The category that holds a rule's group: lint, style, default, error or other.
constexpr int kGroupCategory = 2;

// The rules of rules.txtpb, complete. The program has them in itself.
vok::rulecheck::RuleSpecMap catalog();

// The key of the rule that a message falls under.
std::string ruleKeyOf(const Message& message);

// A rule for messages that fall under none of the catalog.
vok::rulecheck::RuleSpec genericRule(const Message& message);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_CATALOG_H_
