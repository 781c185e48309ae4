// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/report.h"

#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "rule_server/environment.h"
#include "rule_server/rule_server.h"

namespace rulecheck {
namespace {

using vok::rulecheck::CreateViolation;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;

// Performs the request after its type is set.
Response call(const Server& server, Request::RequestType type, Request* request) {
  request->set_type(type);
  Response response = server(*request);
  if (response.type() == Response::ERROR_RESPONSE) {
    throw std::runtime_error("the server answered: " + response.error().msg());
  }
  return response;
}

Session start(const Server& server, const vok::rulecheck::StartSession& session) {
  Request request;
  *request.mutable_start_session() = session;
  return call(server, Request::START_SESSION, &request).session();
}

void sendRules(const Server& server, const Catalog& rules) {
  for (const auto& entry : rules) {
    Request request;
    *request.mutable_upsert_rulespec()->mutable_rule_spec() = entry.second;
    call(server, Request::UPSERT_RULESPEC, &request);
  }
}

void sendFindings(const Server& server, const Session& session, const Catalog& rules,
                  std::vector<CreateViolation> violations) {
  std::set<std::string> violated;
  for (CreateViolation& violation : violations) {
    violated.insert(violation.rule_key());
    Request request;
    request.mutable_create_violation()->Swap(&violation);
    request.mutable_create_violation()->set_session_uuid(session.uuid());
    call(server, Request::CREATE_VIOLATION, &request);
  }
  for (const auto& entry : rules) {
    if (violated.count(entry.first) == 0) {
      Request request;
      request.mutable_create_affirmation()->set_rule_key(entry.first);
      request.mutable_create_affirmation()->set_session_uuid(session.uuid());
      call(server, Request::CREATE_AFFIRMATION, &request);
    }
  }
}

SessionResult finish(const Server& server, const Session& session, bool writes) {
  Request get;
  get.mutable_get_session_result()->set_session_uuid(session.uuid());
  Response got = call(server, Request::GET_SESSION_RESULT, &get);
  if (writes) {
    Request write;
    *write.mutable_write_report()->mutable_session() = session;
    call(server, Request::WRITE_REPORT, &write);
  }
  Request stop;
  *stop.mutable_stop_session()->mutable_session() = session;
  call(server, Request::STOP_SESSION, &stop);
  return std::move(*got.mutable_session_result());
}

}  // namespace

Server localServer() {
  rule_server::Environment environment;
  environment.now = rule_server::millisecondsSince1970;
  environment.newUuid = rule_server::randomUuid;
  const auto server = std::make_shared<rule_server::Server>(environment);
  return [server](const Request& request) { return server->handle(request); };
}

SessionResult report(const Server& server, const vok::rulecheck::StartSession& session,
                     const Catalog& rules, std::vector<CreateViolation> violations) {
  const Session started = start(server, session);
  sendRules(server, rules);
  sendFindings(server, started, rules, std::move(violations));
  return finish(server, started, session.has_report_file());
}

}  // namespace rulecheck
