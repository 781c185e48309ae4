// SPDX-License-Identifier: Apache-2.0

// The result of a session as a page for people.

#ifndef VOK_APPS_RULECHECK_PAGE_PAGE_H_
#define VOK_APPS_RULECHECK_PAGE_PAGE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

// Returns a complete HTML page in UTF-8 that needs no other file and no network.
// Any result is accepted, incomplete ones included, and none of its texts can
// become markup, a script or a link other than http, https, file and mailto.
// Equal results give equal pages.
std::string page(const vok::rulecheck::SessionResult& result);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_PAGE_H_
