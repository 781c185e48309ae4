#include "grpc/rule_check_service.h"

#include <utility>

#include "grpc/statuses.h"

namespace rule_grpc {
namespace {

using grpc::ServerContext;
using grpc::Status;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using vok::rulecheck::StatusResponse;

Request ofType(Request::RequestType type) {
  Request request;
  request.set_type(type);
  return request;
}

// Performs the request and moves the body of the response to the answer.
template <typename Answer>
Status perform(rule_server::Server& server, const Request& request, Answer* (Response::*body)(),
               Answer* answer) {
  Response response = server.handle(request);
  if (response.type() == Response::ERROR_RESPONSE) {
    return statusOf(response.error());
  }
  answer->Swap((response.*body)());
  return Status::OK;
}

}  // namespace

RuleCheckService::RuleCheckService(rule_server::Server& server, std::function<void()> stop)
    : server_(server), stop_(std::move(stop)) {}

Status RuleCheckService::getVersion(ServerContext* /*context*/,
                                    const vok::rulecheck::EmptyMessage* argument,
                                    vok::rulecheck::Version* answer) {
  Request request = ofType(Request::GET_VERSION);
  *request.mutable_get_version()->mutable_msg() = *argument;
  return perform(server_, request, &Response::mutable_version, answer);
}

Status RuleCheckService::exchangeToken(ServerContext* /*context*/,
                                       const vok::rulecheck::ExchangeToken* argument,
                                       StatusResponse* answer) {
  Request request = ofType(Request::EXCHANGE_TOKEN);
  *request.mutable_exchange_token() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::loadRuleDataFile(ServerContext* /*context*/,
                                          const vok::rulecheck::LoadRuleDataFile* argument,
                                          StatusResponse* answer) {
  Request request = ofType(Request::LOAD_RULESPEC_FILE);
  *request.mutable_load_rulespec_file() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::dumpRules(ServerContext* /*context*/,
                                   const vok::rulecheck::DumpRules* argument,
                                   StatusResponse* answer) {
  Request request = ofType(Request::DUMP_RULES);
  *request.mutable_dump_rules() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::upsertRuleSpec(ServerContext* /*context*/,
                                        const vok::rulecheck::RuleSpec* argument,
                                        StatusResponse* answer) {
  Request request = ofType(Request::UPSERT_RULESPEC);
  *request.mutable_upsert_rulespec()->mutable_rule_spec() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

// The two messages number their fields differently, and a StartSession has neither
// timestamp nor build_target.
Status RuleCheckService::startSession(ServerContext* /*context*/, const Session* argument,
                                      Session* answer) {
  Request request = ofType(Request::START_SESSION);
  vok::rulecheck::StartSession* start = request.mutable_start_session();
  start->set_name(argument->name());
  if (argument->has_uuid()) {
    start->set_uuid(argument->uuid());
  }
  if (argument->has_description()) {
    start->set_description(argument->description());
  }
  if (argument->has_report_file()) {
    *start->mutable_report_file() = argument->report_file();
  }
  if (argument->has_proto_file()) {
    *start->mutable_proto_file() = argument->proto_file();
  }
  return perform(server_, request, &Response::mutable_session, answer);
}

Status RuleCheckService::getSession(ServerContext* /*context*/,
                                    const vok::rulecheck::GetSession* argument, Session* answer) {
  Request request = ofType(Request::GET_SESSION);
  *request.mutable_get_session() = *argument;
  return perform(server_, request, &Response::mutable_session, answer);
}

Status RuleCheckService::stopSession(ServerContext* /*context*/, const Session* argument,
                                     StatusResponse* answer) {
  Request request = ofType(Request::STOP_SESSION);
  *request.mutable_stop_session()->mutable_session() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::createAffirmation(ServerContext* /*context*/,
                                           const vok::rulecheck::CreateAffirmation* argument,
                                           vok::rulecheck::Affirmation* answer) {
  Request request = ofType(Request::CREATE_AFFIRMATION);
  *request.mutable_create_affirmation() = *argument;
  return perform(server_, request, &Response::mutable_affirmation, answer);
}

Status RuleCheckService::createViolation(ServerContext* /*context*/,
                                         const vok::rulecheck::CreateViolation* argument,
                                         vok::rulecheck::Violation* answer) {
  Request request = ofType(Request::CREATE_VIOLATION);
  *request.mutable_create_violation() = *argument;
  return perform(server_, request, &Response::mutable_violation, answer);
}

Status RuleCheckService::getSessionResult(ServerContext* /*context*/, const Session* argument,
                                          vok::rulecheck::SessionResult* answer) {
  Request request = ofType(Request::GET_SESSION_RESULT);
  request.mutable_get_session_result()->set_session_uuid(argument->uuid());
  return perform(server_, request, &Response::mutable_session_result, answer);
}

Status RuleCheckService::resetSession(ServerContext* /*context*/, const Session* argument,
                                      StatusResponse* answer) {
  Request request = ofType(Request::RESET_SESSION);
  *request.mutable_reset_session()->mutable_session() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::writeReport(ServerContext* /*context*/, const Session* argument,
                                     StatusResponse* answer) {
  Request request = ofType(Request::WRITE_REPORT);
  *request.mutable_write_report()->mutable_session() = *argument;
  return perform(server_, request, &Response::mutable_status, answer);
}

Status RuleCheckService::stopServer(ServerContext* /*context*/,
                                    const vok::rulecheck::ExchangeToken* argument,
                                    StatusResponse* answer) {
  Request request = ofType(Request::STOP_SERVER);
  *request.mutable_exchange_token() = *argument;
  Status status = perform(server_, request, &Response::mutable_status, answer);
  if (status.ok()) {
    stop_();
  }
  return status;
}

}  // namespace rule_grpc
