// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/report.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "rule_server/rule_server.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;

// Performs the request after its type is set, and takes what is in it.
void call(const Server& server, Request::RequestType type, Request* request, Response* response) {
  request->set_type(type);
  server(request, response);
  if (response->type() == Response::ERROR_RESPONSE) {
    throw std::runtime_error("the server answered: " + response->error().msg());
  }
}

Response call(const Server& server, Request::RequestType type, Request* request) {
  Response response;
  call(server, type, request, &response);
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

// Body is what a request of the type has.
template <typename Body>
void sendFindings(const Server& server, const Session& session, Request::RequestType type,
                  Body* (Request::*body)(), std::vector<Body>* findings) {
  Response response;
  for (Body& finding : *findings) {
    Request request;
    (request.*body)()->Swap(&finding);
    (request.*body)()->set_session_uuid(session.uuid());
    call(server, type, &request, &response);
  }
}

// Without a result, none is requested.
void finish(const Server& server, const Session& session, bool writes, SessionResult* result) {
  if (result != nullptr) {
    Request get;
    get.mutable_get_session_result()->set_session_uuid(session.uuid());
    call(server, Request::GET_SESSION_RESULT, &get).mutable_session_result()->Swap(result);
  }
  if (writes) {
    Request write;
    *write.mutable_write_report()->mutable_session() = session;
    call(server, Request::WRITE_REPORT, &write);
  }
  Request stop;
  *stop.mutable_stop_session()->mutable_session() = session;
  call(server, Request::STOP_SESSION, &stop);
}

}  // namespace

Server localServer() {
  const auto server = std::make_shared<rule_server::Server>(rule_server::Environment());
  return [server](Request* request, Response* response) {
    *response = server->handle(std::move(*request));
  };
}

void setOutput(const std::string& directory, vok::rulecheck::StartSession* session) {
  if (directory.empty()) {
    return;
  }
  const auto set = [&directory](const char* name, vok::rulecheck::Resource* address) {
    address->set_scheme(vok::rulecheck::Resource::FILE);
    address->set_path((std::filesystem::path(directory) / name).string());
  };
  set("report.html", session->mutable_report_file());
  set("session.pb", session->mutable_proto_file());
}

std::string report(const Server& server, Report report, SessionResult* result) {
  const Session session = start(server, report.session);
  sendRules(server, report.rules);
  sendFindings(server, session, Request::CREATE_VIOLATION, &Request::mutable_create_violation,
               &report.violations);
  sendFindings(server, session, Request::CREATE_AFFIRMATION, &Request::mutable_create_affirmation,
               &report.affirmations);
  finish(server, session, report.session.has_report_file(), result);
  return session.uuid();
}

}  // namespace rulecheck
