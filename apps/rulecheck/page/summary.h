// SPDX-License-Identifier: Apache-2.0

// The outcome of a session at a glance.

#ifndef VOK_APPS_RULECHECK_PAGE_SUMMARY_H_
#define VOK_APPS_RULECHECK_PAGE_SUMMARY_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <kainjow/mustache.hpp>

#include "rulecheck/page/findings.h"

namespace rulecheck {

// Adds the session, the counts and what is wrong with them to the page's data.
void addSummary(const vok::rulecheck::SessionResult& result, const Findings& findings,
                kainjow::mustache::data* page);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SUMMARY_H_
