// SPDX-License-Identifier: Apache-2.0

// What the rule server gets from the program that it runs in.

#ifndef VOK_APPS_RULE_SERVER_ENVIRONMENT_H_
#define VOK_APPS_RULE_SERVER_ENVIRONMENT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <functional>
#include <string>

#include "rule_server/files.h"
#include "rule_server/limits.h"

namespace rule_server {

// A function that fails throws a std::exception; the request in progress is then
// answered with ErrorCode::Internal.
struct Environment {
  // What EXCHANGE_TOKEN and STOP_SERVER have to bring. Empty: nothing suits.
  std::string token;
  // Outlives the server. Null: requests that name files are refused.
  Files* files = nullptr;
  // The time, in milliseconds since 1970 began (UTC).
  std::function<std::int64_t()> now;
  // A universally unique identifier.
  std::function<std::string()> newUuid;
  // The report of a session, as a page.
  std::function<std::string(const vok::rulecheck::SessionResult&)> page;
  Limits limits;
};

// For now and newUuid, outside of tests.
std::int64_t millisecondsSince1970();
std::string randomUuid();

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_ENVIRONMENT_H_
