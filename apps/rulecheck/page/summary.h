// SPDX-License-Identifier: Apache-2.0

// The outcome of a session at a glance.

#ifndef VOK_APPS_RULECHECK_PAGE_SUMMARY_H_
#define VOK_APPS_RULECHECK_PAGE_SUMMARY_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <kainjow/mustache.hpp>
#include <string>

#include "rulecheck/page/findings.h"

namespace rulecheck {

// A count of milliseconds since the beginning of 1970, UTC, to the second:
// "2026-03-14 15:09:26". "" outside of the years 1 to 9999.
std::string utcTime(std::int64_t milliseconds);

// Adds the session, the counts and what is wrong with them to the page's data.
void addSummary(const vok::rulecheck::SessionResult& result, const Findings& findings,
                kainjow::mustache::data* page);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SUMMARY_H_
