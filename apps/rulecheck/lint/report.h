// SPDX-License-Identifier: Apache-2.0

// The conversation in which findings are reported to a rule server.

#ifndef VOK_APPS_RULECHECK_LINT_REPORT_H_
#define VOK_APPS_RULECHECK_LINT_REPORT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <functional>
#include <string>
#include <vector>

#include "rulecheck/lint/catalog.h"

namespace rulecheck {

// Takes a request to a server, which may leave it empty, and writes the answer to the response. To
// use a response again saves its memory being allocated again.
using Server = std::function<void(vok::rulecheck::Request*, vok::rulecheck::Response*)>;

// A server of the program's own, which keeps one session and uses no files.
Server localServer();

struct Report {
  vok::rulecheck::StartSession session;
  Catalog rules;
  std::vector<vok::rulecheck::CreateViolation> violations;
  std::vector<vok::rulecheck::CreateAffirmation> affirmations;
};

// Has the server write report.html and session.pb to one of its directories, unless that is "".
void setOutput(const std::string& directory, vok::rulecheck::StartSession* session);

// Opens the session, sends the rules and the findings, and stops the session. Has the server
// write the report if the session has a report_file. Writes the session's result to result,
// unless that is null, and returns the session's uuid.
//
// Throws std::runtime_error if the server refuses something.
std::string report(const Server& server, Report report, vok::rulecheck::SessionResult* result);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_LINT_REPORT_H_
