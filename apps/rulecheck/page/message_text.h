// SPDX-License-Identifier: Apache-2.0

// Message texts with their arguments in place.

#ifndef VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_
#define VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

// Returns the HTML of a message instance that safeCopy() has made.
//
// In the text, "%" and a number from 1 on is the place of the argument with that
// number; "%%" is a percent sign. A number without an argument, and any other
// "%", stays as it is. Arguments that have no place in the text follow it in
// parentheses. Arguments are not searched for places. Once the arguments in
// place make up a mebibyte, the places that are left stay as they are.
std::string messageHtml(const vok::rulecheck::MsgInst& safeMessage);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_MESSAGE_TEXT_H_
