// SPDX-License-Identifier: Apache-2.0

#include "grpc/address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <re2/re2.h>
#include <sys/socket.h>

#include <stdexcept>

namespace rule_grpc {
namespace {

bool isPort(const std::string& digits) {
  constexpr int kHighest = 65535;
  return std::stoi(digits) <= kHighest;
}

}  // namespace

Address parseAddress(const std::string& text) {
  Address address;
  // gRPC's clients take a name after two slashes for a host.
  if (RE2::FullMatch(text, R"(unix:([^%?#,[:cntrl:]]+))", &address.path) &&
      !RE2::FullMatch(address.path, "//([^/].*)?")) {
    return address;
  }
  if ((RE2::FullMatch(text, R"(([\w.-]+):(\d{1,5}))", &address.host, &address.port) ||
       RE2::FullMatch(text, R"(\[([\w:.%]+)\]:(\d{1,5}))", &address.host, &address.port)) &&
      isPort(address.port)) {
    return address;
  }
  throw std::runtime_error(text + ": not an address, expected HOST:PORT or unix:PATH");
}

bool isOfThisHost(const Address& address) {
  in_addr number{};
  if (inet_pton(AF_INET, address.host.c_str(), &number) == 1) {
    return ntohl(number.s_addr) >> 24U == IN_LOOPBACKNET;
  }
  return !address.path.empty() || address.host == "localhost" || address.host == "::1";
}

}  // namespace rule_grpc
