// SPDX-License-Identifier: Apache-2.0

#include "grpc/remote_server.h"

#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include "common/command_line.h"
#include "common/framing.h"
#include "grpc/address.h"

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
Response call(Stub& stub,
              grpc::Status (Stub::*method)(grpc::ClientContext*, const Argument&, Answer*),
              const Argument& argument, Response::ResponseType type, Answer* (Response::*body)()) {
  constexpr auto kLongest = std::chrono::minutes(1);
  grpc::ClientContext context;
  context.set_deadline(std::chrono::system_clock::now() + kLongest);
  Response response;
  response.set_type(type);
  Answer* answer = (response.*body)();
  const grpc::Status status = (stub.*method)(&context, argument, answer);
  if (!status.ok()) {
    fail(status);
  }
  return response;
}

Session sessionOf(const vok::rulecheck::StartSession& start) {
  Session session;
  session.set_name(start.name());
  session.set_description(start.description());
  if (start.has_report_file()) {
    *session.mutable_report_file() = start.report_file();
  }
  if (start.has_proto_file()) {
    *session.mutable_proto_file() = start.proto_file();
  }
  return session;
}

Session named(const std::string& uuid) {
  Session session;
  session.set_name("");
  session.set_uuid(uuid);
  return session;
}

Response exchange(Stub& stub, const Request& request) {
  switch (request.type()) {
    case Request::CREATE_AFFIRMATION:
      return call(stub, &Stub::createAffirmation, request.create_affirmation(),
                  Response::AFFIRMATION, &Response::mutable_affirmation);
    case Request::CREATE_VIOLATION:
      return call(stub, &Stub::createViolation, request.create_violation(), Response::VIOLATION,
                  &Response::mutable_violation);
    case Request::GET_SESSION_RESULT:
      return call(stub, &Stub::getSessionResult, named(request.get_session_result().session_uuid()),
                  Response::SESSION_RESULT, &Response::mutable_session_result);
    case Request::START_SESSION:
      return call(stub, &Stub::startSession, sessionOf(request.start_session()), Response::SESSION,
                  &Response::mutable_session);
    case Request::STOP_SESSION:
      return call(stub, &Stub::stopSession, request.stop_session().session(),
                  Response::STATUS_RESPONSE, &Response::mutable_status);
    case Request::UPSERT_RULESPEC:
      return call(stub, &Stub::upsertRuleSpec, request.upsert_rulespec().rule_spec(),
                  Response::STATUS_RESPONSE, &Response::mutable_status);
    case Request::WRITE_REPORT:
      return call(stub, &Stub::writeReport, request.write_report().session(),
                  Response::STATUS_RESPONSE, &Response::mutable_status);
    default: throw std::logic_error("not carried: " + Request::RequestType_Name(request.type()));
  }
}

}  // namespace

std::shared_ptr<grpc::Channel> channelTo(const std::string& address, const Security& security) {
  parseAddress(address);
  grpc::ChannelArguments arguments;
  arguments.SetInt(GRPC_ARG_ENABLE_RETRIES, 0);
  arguments.SetMaxReceiveMessageSize(static_cast<int>(apps::kMaxMessageBytes));
  return grpc::CreateCustomChannel(address, clientCredentials(security, address), arguments);
}

rulecheck::Server remoteServer(const std::shared_ptr<grpc::Channel>& channel) {
  const std::shared_ptr<Stub> stub = vok::rulecheck::RuleCheckService::NewStub(channel);
  return [stub](const Request& request) { return exchange(*stub, request); };
}

}  // namespace rule_grpc
