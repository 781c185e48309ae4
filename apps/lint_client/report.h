// SPDX-License-Identifier: Apache-2.0

// The conversation in which a client reports what Verilator found.

#ifndef VOK_APPS_LINT_CLIENT_REPORT_H_
#define VOK_APPS_LINT_CLIENT_REPORT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <vector>

#include "lint_client/connection.h"
#include "lint_client/messages.h"
#include "lint_client/waivers.h"

namespace lint_client {

struct Findings {
  std::vector<Message> messages;
  std::vector<Waiver> waivers;
  // What the places of the messages are relative to.
  std::filesystem::path directory;
};

// Opens the session, sends the rules of the catalog, a violation for each message
// and an affirmation for each rule that no message falls under, has the report
// written, and stops the session. Returns its result.
//
// An error cuts a check short: if there is one, rules without a message were not all
// looked at, and no affirmation is sent.
//
// Throws std::runtime_error if the server refuses something.
vok::rulecheck::SessionResult report(Connection& server,
                                     const vok::rulecheck::StartSession& session,
                                     const Findings& findings);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_REPORT_H_
