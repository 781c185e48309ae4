// SPDX-License-Identifier: Apache-2.0

// The conversation in which findings are reported to a rule server.

#ifndef VOK_APPS_RULECHECK_LINT_REPORT_H_
#define VOK_APPS_RULECHECK_LINT_REPORT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <functional>
#include <vector>

#include "rulecheck/lint/catalog.h"

namespace rulecheck {

// Takes a request to a server and returns its answer.
using Server = std::function<vok::rulecheck::Response(const vok::rulecheck::Request&)>;

// A server of the program's own, which keeps one session and uses no files.
Server localServer();

// Opens the session, sends the rules, the violations, and an affirmation for each rule
// without a violation, and stops the session. Has the server write the report if the session
// has a report_file. Returns the session's result.
//
// Throws std::runtime_error if the server refuses something.
vok::rulecheck::SessionResult report(const Server& server,
                                     const vok::rulecheck::StartSession& session,
                                     const Catalog& rules,
                                     std::vector<vok::rulecheck::CreateViolation> violations);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_REPORT_H_
