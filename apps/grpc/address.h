// SPDX-License-Identifier: Apache-2.0

// Where a server listens: HOST:PORT, [IPV6]:PORT or unix:PATH.

#ifndef VOK_APPS_GRPC_ADDRESS_H_
#define VOK_APPS_GRPC_ADDRESS_H_

#include <string>

namespace rule_grpc {

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

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_ADDRESS_H_
