// SPDX-License-Identifier: Apache-2.0

// The methods of the protocol's service: each turns its argument into a request, and the
// response into a message or a status.

#ifndef VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_
#define VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_

#include <google/protobuf/message.h>
#include <grpcpp/grpcpp.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#include "rule_server/rule_server.h"

namespace rule_grpc {

// The longest argument with a token, in bytes: many can wait at once.
constexpr std::size_t kMaxTokenBytes = 4096;

// A thread for requests that take long, so that short ones don't wait for them. It performs one
// task at a time.
class Worker {
 public:
  Worker() : thread_([this] { run(); }) {}
  // Performs the tasks that still wait.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Returns false, and does not call work, if too many tasks wait. work must not throw.
  bool add(std::function<void()> work);

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  bool ends_ = false;
  std::thread thread_;
};

// The methods get and return bytes. Otherwise gRPC would parse arguments, from a
// stream, where six bytes can reserve 50 MB; it would log what required fields are
// missing, and answer INTERNAL.
class RuleCheckService : public vok::rulecheck::RuleCheckService::Service {
 public:
  using Bytes = grpc::ByteBuffer;
  using Context = grpc::CallbackServerContext;
  using Reactor = grpc::ServerUnaryReactor;

  // The server outlives the service. stop is called, in any thread, when stopServer
  // was accepted, and before that is answered.
  RuleCheckService(rule_server::Server& server, std::function<void()> stop);

 private:
  using Clock = std::chrono::steady_clock;

  using Request = vok::rulecheck::Request;

  // A call of a method. gRPC keeps what it refers to until the answer.
  struct Call {
    Context* context;
    const Bytes* argument;
    Bytes* answer;
    Request::RequestType type;
  };

  // Performs short requests at once, and long ones in the worker.
  Reactor* answerWith(const Call& call);
  // Answers at once, or after a second if a token was wrong within the last ten. A client that
  // does not wait for the answer never learns it, so that each guess takes that time.
  Reactor* answerToken(const Call& call);
  grpc::Status perform(Request request, Bytes* answer);
  grpc::Status performNow(const Call& call);
  // Refuses while there are too many bytes that clients have not read.
  grpc::Status checkUnread() const;

  rule_server::Server& server_;
  std::function<void()> stop_;
  std::atomic<Clock::time_point> suspiciousUntil_{};
  std::atomic<int> waitingTokens_{0};
  // Of answers that clients have not read yet.
  std::atomic<std::size_t> unreadBytes_{0};
  Worker worker_;
};

// Serializes an answer. RESOURCE_EXHAUSTED if it has more than 2 GiB.
grpc::Status serialize(const google::protobuf::Message& message, grpc::ByteBuffer* bytes);

// A status with that text, cut if it is too long for the trailer that carries it.
grpc::Status refusal(grpc::StatusCode code, const std::string& text);

// The status for an error of the rule server.
grpc::Status statusOf(const vok::rulecheck::ErrorResponse& error);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_
