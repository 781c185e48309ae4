// The content of rules.txtpb, in the program.

#ifndef VOK_EXAMPLES_LINT_CLIENT_RULES_TEXT_H_
#define VOK_EXAMPLES_LINT_CLIENT_RULES_TEXT_H_

namespace lint_client {

extern const char kRulesText[];

}  // namespace lint_client

#endif  // VOK_EXAMPLES_LINT_CLIENT_RULES_TEXT_H_
