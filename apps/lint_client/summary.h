// SPDX-License-Identifier: Apache-2.0

// What the program tells its user at the end.

#ifndef VOK_APPS_LINT_CLIENT_SUMMARY_H_
#define VOK_APPS_LINT_CLIENT_SUMMARY_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

#include "lint_client/connection.h"
#include "lint_client/report.h"

namespace lint_client {

// Lines of text: findings by severity, and what travelled.
std::string summary(const vok::rulecheck::SessionResult& result, const Connection& server,
                    const Findings& findings);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_SUMMARY_H_
