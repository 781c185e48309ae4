// SPDX-License-Identifier: Apache-2.0

#include "grpc/rule_check_service.h"

#include <google/protobuf/message.h>
#include <grpcpp/alarm.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>
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

constexpr std::size_t kMostWaiting = 64;
constexpr std::size_t kMostUnreadBytes = std::size_t{256} << 20;

using Read = std::function<Status(const Bytes&, Request*)>;

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

// Reads the argument of a method into the field of the request that it has there.
Read into(Request::RequestType type, std::function<Message*(Request*)> field) {
  return [type, field = std::move(field)](const Bytes& bytes, Request* request) {
    request->set_type(type);
    return parse(bytes, field(request));
  };
}

// Reads a session, and makes a request of it.
Read through(Request (*requestOf)(const Session&)) {
  return [requestOf](const Bytes& bytes, Request* request) {
    Session session;
    Status status = parse(bytes, &session);
    if (status.ok()) {
      *request = requestOf(session);
    }
    return status;
  };
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

Status busy(const std::string& reason) {
  return refusal(StatusCode::RESOURCE_EXHAUSTED, reason + ": try again later");
}

// An exception would end the process.
template <typename Work>
Status unlessMemoryLacks(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return busy("the server has no memory left");
  }
}

Reactor* finish(Context* context, const Status& status) {
  Reactor* reactor = context->DefaultReactor();
  reactor->Finish(status);
  return reactor;
}

// An answer, which counts as unread until it is sent.
class Answer : public grpc::ServerUnaryReactor {
 public:
  explicit Answer(std::atomic<std::size_t>* unread) : unread_(unread) {}
  void finish(const Status& status, const Bytes& answer) {
    bytes_ = status.ok() ? answer.Length() : 0;
    *unread_ += bytes_;
    Finish(status);
  }
  void OnDone() override {
    *unread_ -= bytes_;
    delete this;
  }

 private:
  std::atomic<std::size_t>* unread_;
  std::size_t bytes_ = 0;
};

}  // namespace

// How a method is asked for in an envelope, and where its answer is in the response.
struct RuleCheckService::Method {
  Read read;
  std::function<Message*(Response*)> answer;
};

Status serialize(const Message& message, Bytes* bytes) {
  auto content = std::make_unique<std::string>();
  if (!message.SerializeToString(content.get())) {
    return refusal(StatusCode::RESOURCE_EXHAUSTED,
                   "the answer has more than 2 GiB: report to more sessions");
  }
  std::string* owned = content.release();
  const grpc::Slice block(
      owned->data(), owned->size(), [](void* held) { delete static_cast<std::string*>(held); },
      owned);
  *bytes = Bytes(&block, 1);
  return Status::OK;
}

RuleCheckService::RuleCheckService(rule_server::Server& server, std::function<void()> stop)
    : server_(server), stop_(std::move(stop)), worker_(kMostWaiting) {}

Status RuleCheckService::perform(const Request& request, const Method& method, Bytes* answer) {
  return unlessMemoryLacks([&] {
    Response response = server_.handle(request);
    if (response.type() == Response::ERROR_RESPONSE) {
      return statusOf(response.error());
    }
    return serialize(*method.answer(&response), answer);
  });
}

Status RuleCheckService::performNow(const Bytes& argument, const Method& method, Bytes* answer) {
  Request request;
  const Status status = unlessMemoryLacks([&] { return method.read(argument, &request); });
  return status.ok() ? perform(request, method, answer) : status;
}

Status RuleCheckService::checkUnread() const {
  return unreadBytes_ > kMostUnreadBytes ? busy("clients have not read what was answered")
                                         : Status::OK;
}

Reactor* RuleCheckService::answerWith(Context* context, const Bytes* argument, Bytes* answer,
                                      const Method& method) {
  auto* reply = new Answer(&unreadBytes_);
  Request request;
  Status status = checkUnread();
  if (status.ok()) {
    status = unlessMemoryLacks([&] { return method.read(*argument, &request); });
  }
  if (!status.ok() || !server_.takesLong(request)) {
    status = status.ok() ? perform(request, method, answer) : status;
    reply->finish(status, *answer);
    return reply;
  }
  // The bytes are kept, since the request can take 58 times their length.
  const bool isTaken = worker_.add([this, context, argument, answer, method, reply] {
    const Status reason = context->IsCancelled() ? Status::CANCELLED : checkUnread();
    reply->finish(reason.ok() ? performNow(*argument, method, answer) : reason, *answer);
  });
  if (!isTaken) {
    reply->finish(busy("too many long requests wait"), *answer);
  }
  return reply;
}

Reactor* RuleCheckService::getVersion(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::GET_VERSION,
            [](Request* request) { return request->mutable_get_version()->mutable_msg(); }),
       &Response::mutable_version});
}

Reactor* RuleCheckService::exchangeToken(Context* context, const Bytes* argument, Bytes* answer) {
  return withToken(context, *argument, [this, argument, answer] {
    return performNow(*argument,
                      {into(Request::EXCHANGE_TOKEN, &Request::mutable_exchange_token),
                       &Response::mutable_status},
                      answer);
  });
}

Reactor* RuleCheckService::loadRuleDataFile(Context* context, const Bytes* argument,
                                            Bytes* answer) {
  return answerWith(context, argument, answer,
                    {into(Request::LOAD_RULESPEC_FILE, &Request::mutable_load_rulespec_file),
                     &Response::mutable_status});
}

Reactor* RuleCheckService::dumpRules(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::DUMP_RULES, &Request::mutable_dump_rules), &Response::mutable_status});
}

Reactor* RuleCheckService::upsertRuleSpec(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(context, argument, answer,
                    {into(Request::UPSERT_RULESPEC,
                          [](Request* request) {
                            return request->mutable_upsert_rulespec()->mutable_rule_spec();
                          }),
                     &Response::mutable_status});
}

Reactor* RuleCheckService::startSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(context, argument, answer, {through(startOf), &Response::mutable_session});
}

Reactor* RuleCheckService::getSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::GET_SESSION, &Request::mutable_get_session), &Response::mutable_session});
}

Reactor* RuleCheckService::stopSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::STOP_SESSION,
            [](Request* request) { return request->mutable_stop_session()->mutable_session(); }),
       &Response::mutable_status});
}

Reactor* RuleCheckService::createAffirmation(Context* context, const Bytes* argument,
                                             Bytes* answer) {
  return answerWith(context, argument, answer,
                    {into(Request::CREATE_AFFIRMATION, &Request::mutable_create_affirmation),
                     &Response::mutable_affirmation});
}

Reactor* RuleCheckService::createViolation(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(context, argument, answer,
                    {into(Request::CREATE_VIOLATION, &Request::mutable_create_violation),
                     &Response::mutable_violation});
}

Reactor* RuleCheckService::getSessionResult(Context* context, const Bytes* argument,
                                            Bytes* answer) {
  return answerWith(context, argument, answer,
                    {through(resultOf), &Response::mutable_session_result});
}

Reactor* RuleCheckService::resetSession(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::RESET_SESSION,
            [](Request* request) { return request->mutable_reset_session()->mutable_session(); }),
       &Response::mutable_status});
}

Reactor* RuleCheckService::writeReport(Context* context, const Bytes* argument, Bytes* answer) {
  return answerWith(
      context, argument, answer,
      {into(Request::WRITE_REPORT,
            [](Request* request) { return request->mutable_write_report()->mutable_session(); }),
       &Response::mutable_status});
}

Reactor* RuleCheckService::stopServer(Context* context, const Bytes* argument, Bytes* answer) {
  return withToken(context, *argument, [this, argument, answer] {
    Status status = performNow(
        *argument,
        {into(Request::STOP_SERVER, &Request::mutable_exchange_token), &Response::mutable_status},
        answer);
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
