#include "grpc/rule_check_service.h"

#include <google/protobuf/message.h>
#include <grpcpp/alarm.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <utility>

#include "grpc/statuses.h"

namespace rule_grpc {
namespace {

using google::protobuf::Message;
using grpc::Status;
using grpc::StatusCode;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using Bytes = RuleCheckService::Bytes;
using Context = RuleCheckService::Context;
using Reactor = RuleCheckService::Reactor;

// How a method is asked for in an envelope: where its argument stands in the request,
// and its answer in the response.
struct Method {
  Request::RequestType type;
  std::function<Message*(Request*)> argument;
  std::function<Message*(Response*)> answer;
};

Status parse(const Bytes& bytes, Message* message) {
  grpc::Slice block;
  // There are none if what arrived was not framed as gRPC frames a message.
  if (!bytes.DumpToSingleSlice(&block).ok() ||
      !message->ParsePartialFromArray(block.begin(), static_cast<int>(block.size()))) {
    return refusal(StatusCode::INVALID_ARGUMENT, "malformed bytes");
  }
  if (!message->IsInitialized()) {
    return refusal(StatusCode::INVALID_ARGUMENT, "missing " + message->InitializationErrorString());
  }
  return Status::OK;
}

Status handle(rule_server::Server& server, const Request& request,
              const std::function<Message*(Response*)>& body, Bytes* answer) {
  Response response = server.handle(request);
  if (response.type() == Response::ERROR_RESPONSE) {
    return statusOf(response.error());
  }
  const grpc::Slice block(body(&response)->SerializeAsString());
  *answer = Bytes(&block, 1);
  return Status::OK;
}

Status perform(rule_server::Server& server, const Method& method, const Bytes& argument,
               Bytes* answer) {
  Request request;
  request.set_type(method.type);
  Status parsed = parse(argument, method.argument(&request));
  return parsed.ok() ? handle(server, request, method.answer, answer) : parsed;
}

// The two messages number their fields differently, and a StartSession has neither
// timestamp nor build_target.
Request startOf(const Session& session) {
  Request request;
  request.set_type(Request::START_SESSION);
  vok::rulecheck::StartSession* start = request.mutable_start_session();
  start->set_name(session.name());
  if (session.has_uuid()) {
    start->set_uuid(session.uuid());
  }
  if (session.has_description()) {
    start->set_description(session.description());
  }
  if (session.has_report_file()) {
    *start->mutable_report_file() = session.report_file();
  }
  if (session.has_proto_file()) {
    *start->mutable_proto_file() = session.proto_file();
  }
  return request;
}

Request resultOf(const Session& session) {
  Request request;
  request.set_type(Request::GET_SESSION_RESULT);
  request.mutable_get_session_result()->set_session_uuid(session.uuid());
  return request;
}

Reactor* finish(Context* context, const Status& status) {
  Reactor* reactor = context->DefaultReactor();
  reactor->Finish(status);
  return reactor;
}

Reactor* answerWith(rule_server::Server& server, Context* context, const Bytes& argument,
                    Bytes* answer, const Method& method) {
  return finish(context, perform(server, method, argument, answer));
}

// Answers later.
class Delayed : public Reactor {
 public:
  Delayed(std::chrono::milliseconds delay, std::function<Status()> work) : work_(std::move(work)) {
    alarm_.Set(std::chrono::system_clock::now() + delay, [this](bool) { Finish(work_()); });
  }
  void OnDone() override { delete this; }

 private:
  std::function<Status()> work_;
  grpc::Alarm alarm_;
};

}  // namespace

RuleCheckService::RuleCheckService(rule_server::Server& server, std::function<void()> stop)
    : server_(server), stop_(std::move(stop)) {}

Reactor* RuleCheckService::getVersion(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(server_, context, *argument, answer,
                    {Request::GET_VERSION,
                     [](Request* request) { return request->mutable_get_version()->mutable_msg(); },
                     &Response::mutable_version});
}

Reactor* RuleCheckService::exchangeToken(Context* context, const Bytes* argument, Bytes* answer) {
  return withToken(context, *argument, [this, argument, answer] {
    return perform(
        server_,
        {Request::EXCHANGE_TOKEN, &Request::mutable_exchange_token, &Response::mutable_status},
        *argument, answer);
  });
}

Reactor* RuleCheckService::loadRuleDataFile(Context* context, const Bytes* argument,
                                            Bytes* answer) {
  return answerWith(server_, context, *argument, answer,
                    {Request::LOAD_RULESPEC_FILE, &Request::mutable_load_rulespec_file,
                     &Response::mutable_status});
}

Reactor* RuleCheckService::dumpRules(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(server_, context, *argument, answer,
                    {Request::DUMP_RULES, &Request::mutable_dump_rules, &Response::mutable_status});
}

Reactor* RuleCheckService::upsertRuleSpec(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      server_, context, *argument, answer,
      {Request::UPSERT_RULESPEC,
       [](Request* request) { return request->mutable_upsert_rulespec()->mutable_rule_spec(); },
       &Response::mutable_status});
}

Reactor* RuleCheckService::startSession(Context* context, const Bytes* argument, Bytes* answer) {
  Session session;
  Status status = parse(*argument, &session);
  if (status.ok()) {
    status = handle(server_, startOf(session), &Response::mutable_session, answer);
  }
  return finish(context, status);
}

Reactor* RuleCheckService::getSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      server_, context, *argument, answer,
      {Request::GET_SESSION, &Request::mutable_get_session, &Response::mutable_session});
}

Reactor* RuleCheckService::stopSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      server_, context, *argument, answer,
      {Request::STOP_SESSION,
       [](Request* request) { return request->mutable_stop_session()->mutable_session(); },
       &Response::mutable_status});
}

Reactor* RuleCheckService::createAffirmation(Context* context, const Bytes* argument,
                                             Bytes* answer) {
  return answerWith(server_, context, *argument, answer,
                    {Request::CREATE_AFFIRMATION, &Request::mutable_create_affirmation,
                     &Response::mutable_affirmation});
}

Reactor* RuleCheckService::createViolation(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(server_, context, *argument, answer,
                    {Request::CREATE_VIOLATION, &Request::mutable_create_violation,
                     &Response::mutable_violation});
}

Reactor* RuleCheckService::getSessionResult(Context* context, const Bytes* argument,
                                            Bytes* answer) {
  Session session;
  Status status = parse(*argument, &session);
  if (status.ok()) {
    status = handle(server_, resultOf(session), &Response::mutable_session_result, answer);
  }
  return finish(context, status);
}

Reactor* RuleCheckService::resetSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      server_, context, *argument, answer,
      {Request::RESET_SESSION,
       [](Request* request) { return request->mutable_reset_session()->mutable_session(); },
       &Response::mutable_status});
}

Reactor* RuleCheckService::writeReport(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      server_, context, *argument, answer,
      {Request::WRITE_REPORT,
       [](Request* request) { return request->mutable_write_report()->mutable_session(); },
       &Response::mutable_status});
}

Reactor* RuleCheckService::stopServer(Context* context, const Bytes* argument, Bytes* answer) {
  return withToken(context, *argument, [this, argument, answer] {
    Status status =
        perform(server_,
                {Request::STOP_SERVER, &Request::mutable_exchange_token, &Response::mutable_status},
                *argument, answer);
    if (status.ok()) {
      stop_();
    }
    return status;
  });
}

Reactor* RuleCheckService::withToken(Context* context, const Bytes& argument,
                                     std::function<Status()> attempt) {
  if (argument.Valid() && argument.Length() > kMaxTokenBytes) {
    return finish(context, refusal(StatusCode::RESOURCE_EXHAUSTED, "the argument is too long"));
  }
  const auto watched = [this, attempt = std::move(attempt)] {
    constexpr auto kSuspicion = std::chrono::seconds(10);
    Status status = attempt();
    if (status.error_code() == StatusCode::UNAUTHENTICATED) {
      suspiciousUntil_ = Clock::now() + kSuspicion;
    }
    return status;
  };
  if (Clock::now() < suspiciousUntil_.load()) {
    constexpr auto kDelay = std::chrono::seconds(1);
    return new Delayed(kDelay, watched);
  }
  return finish(context, watched());
}

}  // namespace rule_grpc
