// SPDX-License-Identifier: Apache-2.0

// Where a conversation takes place, who may listen to it and who takes part: addresses,
// the options about TLS, and what gRPC makes of them.

#ifndef VOK_APPS_GRPC_SECURITY_H_
#define VOK_APPS_GRPC_SECURITY_H_

#include <grpcpp/grpcpp.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

namespace rule_grpc {

// Where a server listens: HOST:PORT, [IPV6]:PORT or unix:PATH.
struct Address {
  std::string host;  // without brackets; empty for unix:
  std::string port;
  std::string path;  // of the socket; empty without unix:
};

// Throws std::runtime_error for any other text: a port must be there, as gRPC would
// make it 443 otherwise, and be at most 65535. A path of unix: has no byte that a
// client's gRPC takes for something else: '%', '?', '#', ',' and control characters.
Address parseAddress(const std::string& text);

// Whether the address can only be this host's: unix:, localhost, or a loopback number.
bool isOfThisHost(const Address& address);

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
