// SPDX-License-Identifier: Apache-2.0

// How failures of requests look on gRPC.

#ifndef VOK_APPS_GRPC_STATUSES_H_
#define VOK_APPS_GRPC_STATUSES_H_

#include <grpcpp/grpcpp.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rule_grpc {

// A status with that text, cut if it is too long for the trailer that carries it.
grpc::Status refusal(grpc::StatusCode code, const std::string& text);

// The status for an error of the rule server's.
grpc::Status statusOf(const vok::rulecheck::ErrorResponse& error);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_STATUSES_H_
