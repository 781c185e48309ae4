// SPDX-License-Identifier: Apache-2.0

// The fourteen methods of the protocol's service: each turns its argument into the
// request that asks for the same, and the answer into a message or a status.

#ifndef VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_
#define VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_

#include <google/protobuf/message.h>
#include <grpcpp/grpcpp.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>

#include "grpc/worker.h"
#include "rule_server/rule_server.h"

namespace rule_grpc {

using Methods = vok::rulecheck::RuleCheckService;

// The methods get and return bytes. Otherwise gRPC would parse arguments, from a
// stream, where six bytes can reserve 50 MB; it would log what required fields are
// missing, and answer INTERNAL.
using MethodsOnBytes = Methods::WithRawCallbackMethod_getVersion<
    Methods::WithRawCallbackMethod_exchangeToken<Methods::WithRawCallbackMethod_loadRuleDataFile<
        Methods::WithRawCallbackMethod_dumpRules<Methods::WithRawCallbackMethod_upsertRuleSpec<
            Methods::WithRawCallbackMethod_startSession<Methods::WithRawCallbackMethod_getSession<
                Methods::WithRawCallbackMethod_stopSession<
                    Methods::WithRawCallbackMethod_createAffirmation<
                        Methods::WithRawCallbackMethod_createViolation<
                            Methods::WithRawCallbackMethod_getSessionResult<
                                Methods::WithRawCallbackMethod_resetSession<
                                    Methods::WithRawCallbackMethod_writeReport<
                                        Methods::WithRawCallbackMethod_stopServer<
                                            Methods::Service>>>>>>>>>>>>>>;

// The longest argument with a token, in bytes: many can wait at once.
constexpr std::size_t kMaxTokenBytes = 4096;

// Performs short requests at once, and long ones one after the other in a thread of its own.
class RuleCheckService : public MethodsOnBytes {
 public:
  using Bytes = grpc::ByteBuffer;
  using Context = grpc::CallbackServerContext;
  using Reactor = grpc::ServerUnaryReactor;

  struct Method;

  // The server outlives the service. stop is called, in any thread, when stopServer
  // was accepted, and before that is answered.
  RuleCheckService(rule_server::Server& server, std::function<void()> stop);

  Reactor* getVersion(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* exchangeToken(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* loadRuleDataFile(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* dumpRules(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* upsertRuleSpec(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* startSession(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* getSession(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* stopSession(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* createAffirmation(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* createViolation(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* getSessionResult(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* resetSession(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* writeReport(Context* context, const Bytes* argument, Bytes* answer) override;
  Reactor* stopServer(Context* context, const Bytes* argument, Bytes* answer) override;

 private:
  using Clock = std::chrono::steady_clock;

  // Calls attempt, whose status tells whether a token was right, and answers with that:
  // at once, or after a second if a token was wrong within the last ten. A client that
  // does not wait for the answer never learns it, so that each guess takes that time.
  Reactor* withToken(Context* context, const Bytes& argument,
                     std::function<grpc::Status()> attempt);

  Reactor* answerWith(Context* context, const Bytes* argument, Bytes* answer, const Method& method);
  grpc::Status perform(const vok::rulecheck::Request& request, const Method& method, Bytes* answer);
  // Refuses while there are too many bytes that clients have not read.
  grpc::Status checkUnread() const;
  grpc::Status performNow(const Bytes& argument, const Method& method, Bytes* answer);

  rule_server::Server& server_;
  std::function<void()> stop_;
  std::atomic<Clock::time_point> suspiciousUntil_{};
  // Of answers that clients have not read yet.
  std::atomic<std::size_t> unreadBytes_{0};
  Worker worker_;
};

// Serializes an answer. RESOURCE_EXHAUSTED if it has more than 2 GiB.
grpc::Status serialize(const google::protobuf::Message& message, grpc::ByteBuffer* bytes);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_RULE_CHECK_SERVICE_H_
