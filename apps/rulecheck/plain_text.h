// SPDX-License-Identifier: Apache-2.0

// A finding as plain text.

#ifndef VOK_APPS_RULECHECK_PLAIN_TEXT_H_
#define VOK_APPS_RULECHECK_PLAIN_TEXT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

// What an argument shows: names, the texts of links, or a value.
std::string plainText(const vok::rulecheck::Arg& argument);

// The text with its arguments in place of "%1", "%2"..., and "%" for "%%". Arguments that
// the text does not name are left out. A place at the beginning is left out, too.
std::string plainText(const vok::rulecheck::MsgInst& message);

// "rtl/a.v:12:3: critical warning: text [RULE]", as compilers print it, on one line and
// without control characters.
std::string lineOf(const vok::rulecheck::Violation& violation);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PLAIN_TEXT_H_
