// SPDX-License-Identifier: Apache-2.0

#include "lint_client/report.h"

#include <map>
#include <set>
#include <string>

#include "lint_client/catalog.h"
#include "lint_client/finding_arguments.h"

namespace lint_client {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

Request ofType(Request::RequestType type) {
  Request request;
  request.set_type(type);
  return request;
}

// The catalog, and rules for messages that it has none for, in the order of keys.
std::map<std::string, RuleSpec> rulesFor(const std::vector<Message>& messages) {
  std::map<std::string, RuleSpec> rules;
  const vok::rulecheck::RuleSpecMap known = catalog();
  for (const auto& entry : known.hashmap()) {
    rules.emplace(entry.first, entry.second);
  }
  for (const Message& message : messages) {
    rules.emplace(ruleKeyOf(message), genericRule(message));
  }
  return rules;
}

Session start(Connection& server, const vok::rulecheck::StartSession& session) {
  Request request = ofType(Request::START_SESSION);
  *request.mutable_start_session() = session;
  return server.call(request).session();
}

void sendRule(Connection& server, const RuleSpec& rule) {
  Request request = ofType(Request::UPSERT_RULESPEC);
  *request.mutable_upsert_rulespec()->mutable_rule_spec() = rule;
  server.call(request);
}

void sendViolation(Connection& server, const Session& session, const RuleSpec& rule,
                   const Message& message, const Findings& findings) {
  Request request = ofType(Request::CREATE_VIOLATION);
  auto* body = request.mutable_create_violation();
  body->set_rule_key(rule.key());
  body->set_session_uuid(session.uuid());
  body->set_severity(message.isError ? Violation::SEV_ERROR : rule.severity());
  *body->mutable_args() = argumentsOf(message, findings.directory);
  addValues(message, body);
  const Waiver* waiver = waiverFor(rule.key(), message, findings.waivers);
  if (waiver != nullptr) {
    (*body->mutable_dynamic_category_values())["waiver"] = waiver->reason;
  }
  server.call(request);
}

void sendAffirmation(Connection& server, const Session& session, const RuleSpec& rule) {
  Request request = ofType(Request::CREATE_AFFIRMATION);
  request.mutable_create_affirmation()->set_rule_key(rule.key());
  request.mutable_create_affirmation()->set_session_uuid(session.uuid());
  server.call(request);
}

void sendFindings(Connection& server, const Session& session, const Findings& findings) {
  const auto rules = rulesFor(findings.messages);
  std::set<std::string> violated;
  for (const auto& entry : rules) {
    sendRule(server, entry.second);
  }
  for (const Message& message : findings.messages) {
    const std::string key = ruleKeyOf(message);
    sendViolation(server, session, rules.at(key), message, findings);
    violated.insert(key);
  }
  if (hasErrors(findings.messages)) {
    return;
  }
  for (const auto& entry : rules) {
    if (violated.count(entry.first) == 0) {
      sendAffirmation(server, session, entry.second);
    }
  }
}

SessionResult resultOf(Connection& server, const Session& session) {
  Request request = ofType(Request::GET_SESSION_RESULT);
  request.mutable_get_session_result()->set_session_uuid(session.uuid());
  return server.call(request).session_result();
}

void writeReport(Connection& server, const Session& session) {
  Request request = ofType(Request::WRITE_REPORT);
  *request.mutable_write_report()->mutable_session() = session;
  server.call(request);
}

void stop(Connection& server, const Session& session) {
  Request request = ofType(Request::STOP_SESSION);
  *request.mutable_stop_session()->mutable_session() = session;
  server.call(request);
}

}  // namespace

SessionResult report(Connection& server, const vok::rulecheck::StartSession& session,
                     const Findings& findings) {
  const Session started = start(server, session);
  sendFindings(server, started, findings);
  SessionResult result = resultOf(server, started);
  writeReport(server, started);
  stop(server, started);
  return result;
}

}  // namespace lint_client
