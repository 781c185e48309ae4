// SPDX-License-Identifier: Apache-2.0

// The content of rules.txtpb, in the program.

#ifndef VOK_APPS_LINT_CLIENT_RULES_TEXT_H_
#define VOK_APPS_LINT_CLIENT_RULES_TEXT_H_

namespace lint_client {

extern const char kRulesText[];

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_RULES_TEXT_H_
