// SPDX-License-Identifier: Apache-2.0

#include "grpc/rule_check_service.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <grpcpp/alarm.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

#include "rule_server/envelope.h"
#include "rule_server/errors.h"

namespace rule_grpc {
namespace {

using google::protobuf::Message;
using grpc::Status;
using grpc::StatusCode;
using rule_server::ErrorCode;
using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::Session;
using Bytes = RuleCheckService::Bytes;
using Context = RuleCheckService::Context;
using Reactor = RuleCheckService::Reactor;

struct Method {
  const char* name;
  Request::RequestType type;
};

constexpr Method kMethods[] = {
    {"getVersion", Request::GET_VERSION},
    {"exchangeToken", Request::EXCHANGE_TOKEN},
    {"loadRuleDataFile", Request::LOAD_RULESPEC_FILE},
    {"dumpRules", Request::DUMP_RULES},
    {"upsertRuleSpec", Request::UPSERT_RULESPEC},
    {"startSession", Request::START_SESSION},
    {"getSession", Request::GET_SESSION},
    {"stopSession", Request::STOP_SESSION},
    {"createAffirmation", Request::CREATE_AFFIRMATION},
    {"createViolation", Request::CREATE_VIOLATION},
    {"getSessionResult", Request::GET_SESSION_RESULT},
    {"resetSession", Request::RESET_SESSION},
    {"writeReport", Request::WRITE_REPORT},
    {"stopServer", Request::STOP_SERVER},
};

constexpr std::size_t kMostWaiting = 64;
constexpr int kMostWaitingTokens = 100;
constexpr std::size_t kMostUnreadBytes = std::size_t{256} << 20;

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

// Where a request of its type has the argument of the method, unless that is a Session which the
// body can't contain.
Message* argumentIn(Request* request) {
  switch (request->type()) {
    case Request::GET_VERSION: return request->mutable_get_version()->mutable_msg();
    case Request::RESET_SESSION: return request->mutable_reset_session()->mutable_session();
    case Request::STOP_SERVER: return request->mutable_exchange_token();
    case Request::STOP_SESSION: return request->mutable_stop_session()->mutable_session();
    case Request::UPSERT_RULESPEC: return request->mutable_upsert_rulespec()->mutable_rule_spec();
    case Request::WRITE_REPORT: return request->mutable_write_report()->mutable_session();
    default:
      return request->GetReflection()->MutableMessage(
          request, Request::descriptor()->FindFieldByNumber(request->type() + 1));
  }
}

Status read(const Bytes& argument, Request::RequestType type, Request* request) {
  request->set_type(type);
  if (type != Request::START_SESSION && type != Request::GET_SESSION_RESULT) {
    return parse(argument, argumentIn(request));
  }
  Session session;
  Status status = parse(argument, &session);
  if (type == Request::START_SESSION) {
    rule_server::copyStart(session, request->mutable_start_session());
  } else {
    request->mutable_get_session_result()->set_session_uuid(session.uuid());
  }
  return status;
}

const Message& bodyOf(const Response& response) {
  return response.GetReflection()->GetMessage(
      response, Response::descriptor()->FindFieldByNumber(response.type() + 2));
}

StatusCode codeFor(ErrorCode code) {
  switch (code) {
    case ErrorCode::ServerStopped: return StatusCode::UNAVAILABLE;
    case ErrorCode::TokenRefused: return StatusCode::UNAUTHENTICATED;
    case ErrorCode::SessionUnknown:
    case ErrorCode::RuleUnknown: return StatusCode::NOT_FOUND;
    case ErrorCode::SessionExists: return StatusCode::ALREADY_EXISTS;
    case ErrorCode::SessionStopped:
    case ErrorCode::RulePlanned:
    case ErrorCode::RuleReadOnly:
    case ErrorCode::FileAccess: return StatusCode::FAILED_PRECONDITION;
    case ErrorCode::LimitExceeded: return StatusCode::RESOURCE_EXHAUSTED;
    case ErrorCode::BodyIncomplete:
    case ErrorCode::RuleInvalid:
    case ErrorCode::CategoryRefused:
    case ErrorCode::FileAddress:
    case ErrorCode::FileFormat:
    case ErrorCode::SelectionInvalid: return StatusCode::INVALID_ARGUMENT;
    // A method has made the envelope: what is wrong with it is the method's fault.
    case ErrorCode::TypeMissing:
    case ErrorCode::BodyMismatch:
    case ErrorCode::BodyMissing:
    case ErrorCode::Internal: return StatusCode::INTERNAL;
  }
  return StatusCode::INTERNAL;
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
  // OnDone() does not wait, so that gRPC may call it in any thread.
  bool InternalInlineable() override { return true; }

  std::atomic<std::size_t>* unread_;
  std::size_t bytes_ = 0;
};

}  // namespace

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

Worker::~Worker() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

bool Worker::add(std::function<void()> work) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (waiting_.size() >= kMostWaiting) {
      return false;
    }
    waiting_.push_back(std::move(work));
  }
  changed_.notify_one();
  return true;
}

void Worker::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
    if (waiting_.empty()) {
      return;
    }
    const std::function<void()> work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

RuleCheckService::RuleCheckService(rule_server::Server& server, std::function<void()> stop)
    : server_(server), stop_(std::move(stop)) {
  const auto* service = Request::descriptor()->file()->FindServiceByName("RuleCheckService");
  for (const Method& method : kMethods) {
    // As the generated class WithRawCallbackMethod_... of each method does.
    MarkMethodRawCallback(
        service->FindMethodByName(method.name)->index(),
        new grpc::internal::CallbackUnaryHandler<Bytes, Bytes>(
            [this, type = method.type](Context* context, const Bytes* argument, Bytes* answer) {
              return answerWith({context, argument, answer, type});
            }));
  }
}

Status RuleCheckService::perform(Request request, Bytes* answer) {
  return unlessMemoryLacks([&] {
    const Response response = server_.handle(std::move(request));
    return response.has_error() ? statusOf(response.error()) : serialize(bodyOf(response), answer);
  });
}

Status RuleCheckService::performNow(const Call& call) {
  Request request;
  const Status status =
      unlessMemoryLacks([&] { return read(*call.argument, call.type, &request); });
  return status.ok() ? perform(std::move(request), call.answer) : status;
}

Status RuleCheckService::checkUnread() const {
  return unreadBytes_ > kMostUnreadBytes ? busy("clients have not read what was answered")
                                         : Status::OK;
}

Reactor* RuleCheckService::answerWith(const Call& call) {
  if (call.type == Request::EXCHANGE_TOKEN || call.type == Request::STOP_SERVER) {
    return answerToken(call);
  }
  auto* reply = new Answer(&unreadBytes_);
  Request request;
  Status status = checkUnread();
  if (status.ok()) {
    status = unlessMemoryLacks([&] { return read(*call.argument, call.type, &request); });
  }
  if (!status.ok() || !server_.takesLong(request)) {
    reply->finish(status.ok() ? perform(std::move(request), call.answer) : status, *call.answer);
    return reply;
  }
  // The bytes are kept, since the request can take 58 times their length.
  const bool isTaken = worker_.add([this, call, reply] {
    const Status reason = call.context->IsCancelled() ? Status::CANCELLED : checkUnread();
    reply->finish(reason.ok() ? performNow(call) : reason, *call.answer);
  });
  if (!isTaken) {
    reply->finish(busy("too many long requests wait"), *call.answer);
  }
  return reply;
}

Reactor* RuleCheckService::answerToken(const Call& call) {
  constexpr auto kDelay = std::chrono::seconds(1);
  const auto attempt = [this, call] {
    constexpr auto kSuspicion = std::chrono::seconds(10);
    Status status = performNow(call);
    if (status.error_code() == StatusCode::UNAUTHENTICATED) {
      suspiciousUntil_ = Clock::now() + kSuspicion;
    } else if (status.ok() && call.type == Request::STOP_SERVER) {
      stop_();
    }
    return status;
  };
  const auto finished = [call](const Status& status) {
    Reactor* reactor = call.context->DefaultReactor();
    reactor->Finish(status);
    return reactor;
  };
  const bool isTooLong = call.argument->Valid() && call.argument->Length() > kMaxTokenBytes;
  if (!isTooLong && Clock::now() < suspiciousUntil_.load()) {
    // A client that acknowledges no settings can have any number of requests in progress.
    if (++waitingTokens_ > kMostWaitingTokens) {
      --waitingTokens_;
      return finished(busy("too many tokens wait"));
    }
    return new Delayed(kDelay, [this, attempt] {
      --waitingTokens_;
      return attempt();
    });
  }
  return finished(isTooLong ? refusal(StatusCode::RESOURCE_EXHAUSTED, "the argument is too long")
                            : attempt());
}

grpc::Status refusal(StatusCode code, const std::string& text) {
  constexpr std::size_t kLongest = 1000;
  return {code, text.size() > kLongest ? text.substr(0, kLongest) + "..." : text};
}

grpc::Status statusOf(const vok::rulecheck::ErrorResponse& error) {
  return refusal(codeFor(static_cast<ErrorCode>(error.code())), error.msg());
}

}  // namespace rule_grpc
