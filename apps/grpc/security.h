// SPDX-License-Identifier: Apache-2.0

// Who may listen to a conversation, and who takes part: the options about TLS, and
// what gRPC makes of them.

#ifndef VOK_APPS_GRPC_SECURITY_H_
#define VOK_APPS_GRPC_SECURITY_H_

#include <grpcpp/grpcpp.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace rule_grpc {

// Names of files in PEM format; empty if they are not given, which define() sees to.
struct Security {
  std::string certificate;
  std::string key;
  // Whose certificates the other side may have.
  std::string authority;
  // Whether addresses of other hosts are used without TLS.
  bool insecure = false;
};

// authorityOption is what the option for the authority is called.
void define(CLI::App& app, const std::string& authorityOption, const std::string& authorityHelp,
            Security& security);

// TLS if a certificate (server) or an authority (client) is given. A server with an
// authority takes only clients with a certificate. Throws std::runtime_error if a file
// lacks a certificate or the certificate's key, and if without TLS the address is not
// one of this host.
std::shared_ptr<grpc::ServerCredentials> serverCredentials(const Security& security,
                                                           const std::string& address);
std::shared_ptr<grpc::ChannelCredentials> clientCredentials(const Security& security,
                                                            const std::string& address);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_SECURITY_H_
