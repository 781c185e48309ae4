// SPDX-License-Identifier: Apache-2.0

#include "grpc/remote_server.h"

#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/command_line.h"
#include "rule_server/envelope.h"

namespace rule_grpc {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using Stub = vok::rulecheck::RuleCheckService::Stub;

[[noreturn]] void fail(const grpc::Status& status) {
  switch (status.error_code()) {
    case grpc::StatusCode::UNAVAILABLE:
    case grpc::StatusCode::CANCELLED:
    case grpc::StatusCode::DEADLINE_EXCEEDED:
      throw apps::CannotRun("no connection to the server: " + status.error_message());
    default: throw std::runtime_error("the server answered: " + status.error_message());
  }
}

template <typename Argument, typename Answer>
void call(Stub& stub, grpc::Status (Stub::*method)(grpc::ClientContext*, const Argument&, Answer*),
          const Argument& argument, Response* response) {
  constexpr auto kLongest = std::chrono::minutes(1);
  grpc::ClientContext context;
  context.set_deadline(std::chrono::system_clock::now() + kLongest);
  auto* answer = rule_server::mutableBody<Answer>(response);
  const grpc::Status status = (stub.*method)(&context, argument, answer);
  if (!status.ok()) {
    fail(status);
  }
}

void exchange(Stub& stub, const Request& request, Response* response) {
  Session session;
  switch (request.type()) {
    case Request::CREATE_AFFIRMATION:
      return call(stub, &Stub::createAffirmation, request.create_affirmation(), response);
    case Request::CREATE_VIOLATION:
      return call(stub, &Stub::createViolation, request.create_violation(), response);
    case Request::GET_SESSION_RESULT:
      session.set_name("");
      session.set_uuid(request.get_session_result().session_uuid());
      return call(stub, &Stub::getSessionResult, session, response);
    case Request::START_SESSION:
      rule_server::copyStart(request.start_session(), &session);
      return call(stub, &Stub::startSession, session, response);
    case Request::STOP_SESSION:
      return call(stub, &Stub::stopSession, request.stop_session().session(), response);
    case Request::UPSERT_RULESPEC:
      return call(stub, &Stub::upsertRuleSpec, request.upsert_rulespec().rule_spec(), response);
    case Request::WRITE_REPORT:
      return call(stub, &Stub::writeReport, request.write_report().session(), response);
    default: throw std::logic_error("not carried: " + Request::RequestType_Name(request.type()));
  }
}

}  // namespace

std::shared_ptr<grpc::Channel> channelTo(const std::string& address, const Security& security) {
  parseAddress(address);
  grpc::ChannelArguments arguments;
  arguments.SetInt(GRPC_ARG_ENABLE_RETRIES, 0);
  // A session's result can be long.
  arguments.SetMaxReceiveMessageSize(64 << 20);
  return grpc::CreateCustomChannel(address, clientCredentials(security, address), arguments);
}

rulecheck::Server remoteServer(const std::shared_ptr<grpc::Channel>& channel) {
  const std::shared_ptr<Stub> stub = vok::rulecheck::RuleCheckService::NewStub(channel);
  return [stub](Request* request, Response* response) { exchange(*stub, *request, response); };
}

}  // namespace rule_grpc
