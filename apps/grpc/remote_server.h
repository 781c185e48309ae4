// SPDX-License-Identifier: Apache-2.0

// A rule server that is reached through gRPC, for report() of rulecheck.

#ifndef VOK_APPS_GRPC_REMOTE_SERVER_H_
#define VOK_APPS_GRPC_REMOTE_SERVER_H_

#include <grpcpp/grpcpp.h>

#include <memory>
#include <string>

#include "grpc/security.h"
#include "rulecheck/lint/report.h"

namespace rule_grpc {

// No request is sent twice, and large results are taken. Throws what parseAddress() and
// clientCredentials() do.
std::shared_ptr<grpc::Channel> channelTo(const std::string& address, const Security& security);

// Carries those requests that report() makes. It throws apps::CannotRun if the server can't be
// reached, or goes away before it answers, and std::runtime_error if it refuses a request.
rulecheck::Server remoteServer(const std::shared_ptr<grpc::Channel>& channel);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_REMOTE_SERVER_H_
