// The fourteen methods of the protocol's service: each turns its argument into the
// request that asks for the same, and the answer into a message or a status.

#ifndef VOK_EXAMPLES_GRPC_RULE_CHECK_SERVICE_H_
#define VOK_EXAMPLES_GRPC_RULE_CHECK_SERVICE_H_

#include <grpcpp/grpcpp.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <functional>

#include "rule_server/rule_server.h"

namespace rule_grpc {

class RuleCheckService : public vok::rulecheck::RuleCheckService::Service {
 public:
  // The server outlives the service. stop is called, in any thread, when stopServer
  // was accepted, and before that is answered.
  RuleCheckService(rule_server::Server& server, std::function<void()> stop);

  grpc::Status getVersion(grpc::ServerContext* context,
                          const vok::rulecheck::EmptyMessage* argument,
                          vok::rulecheck::Version* answer) override;
  grpc::Status exchangeToken(grpc::ServerContext* context,
                             const vok::rulecheck::ExchangeToken* argument,
                             vok::rulecheck::StatusResponse* answer) override;
  grpc::Status loadRuleDataFile(grpc::ServerContext* context,
                                const vok::rulecheck::LoadRuleDataFile* argument,
                                vok::rulecheck::StatusResponse* answer) override;
  grpc::Status dumpRules(grpc::ServerContext* context, const vok::rulecheck::DumpRules* argument,
                         vok::rulecheck::StatusResponse* answer) override;
  grpc::Status upsertRuleSpec(grpc::ServerContext* context,
                              const vok::rulecheck::RuleSpec* argument,
                              vok::rulecheck::StatusResponse* answer) override;
  grpc::Status startSession(grpc::ServerContext* context, const vok::rulecheck::Session* argument,
                            vok::rulecheck::Session* answer) override;
  grpc::Status getSession(grpc::ServerContext* context, const vok::rulecheck::GetSession* argument,
                          vok::rulecheck::Session* answer) override;
  grpc::Status stopSession(grpc::ServerContext* context, const vok::rulecheck::Session* argument,
                           vok::rulecheck::StatusResponse* answer) override;
  grpc::Status createAffirmation(grpc::ServerContext* context,
                                 const vok::rulecheck::CreateAffirmation* argument,
                                 vok::rulecheck::Affirmation* answer) override;
  grpc::Status createViolation(grpc::ServerContext* context,
                               const vok::rulecheck::CreateViolation* argument,
                               vok::rulecheck::Violation* answer) override;
  grpc::Status getSessionResult(grpc::ServerContext* context,
                                const vok::rulecheck::Session* argument,
                                vok::rulecheck::SessionResult* answer) override;
  grpc::Status resetSession(grpc::ServerContext* context, const vok::rulecheck::Session* argument,
                            vok::rulecheck::StatusResponse* answer) override;
  grpc::Status writeReport(grpc::ServerContext* context, const vok::rulecheck::Session* argument,
                           vok::rulecheck::StatusResponse* answer) override;
  grpc::Status stopServer(grpc::ServerContext* context,
                          const vok::rulecheck::ExchangeToken* argument,
                          vok::rulecheck::StatusResponse* answer) override;

 private:
  rule_server::Server& server_;
  std::function<void()> stop_;
};

}  // namespace rule_grpc

#endif  // VOK_EXAMPLES_GRPC_RULE_CHECK_SERVICE_H_
