// SPDX-License-Identifier: Apache-2.0

// Which texts are addresses, and which addresses may be used without TLS.

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "grpc/security.h"

namespace {

using rule_grpc::isOfThisHost;
using rule_grpc::parseAddress;

TEST(Addresses, OfThisHostAreLoopbackOrSockets) {
  for (const std::string address :
       {"unix:/tmp/socket", "unix:a socket", "unix:///tmp/socket", "localhost:0", "localhost:80",
        "127.0.0.1:0", "127.0.0.1:65535", "127.255.0.9:1", "[::1]:0"}) {
    EXPECT_TRUE(isOfThisHost(parseAddress(address))) << address;
  }
}

TEST(Addresses, OfOtherHostsAreAllOthers) {
  for (const std::string address :
       {"0.0.0.0:0", "[::]:0", "10.0.0.1:80", "128.0.0.1:0", "126.0.0.1:0", "localhost.example:1",
        "127.0.0.1.example:1", "127.1:0", "[::2]:0", "example.org:1"}) {
    EXPECT_FALSE(isOfThisHost(parseAddress(address))) << address;
  }
}

TEST(Addresses, HaveAPortOrAPath) {
  std::istringstream malformed(
      ":0 127.0.0.1 localhost localhost: localhost:x localhost:-1 127.0.0.1:65536 127.0.0.1:99999 "
      "127.0.0.1:000000 127.0.0.1:0:0 ::1:0 [::1] [::1]: []:1 [::1:1 dns:///localhost:1 "
      "ipv4:127.0.0.1:1 unix-abstract:name unix: unix:// unix://tmp/socket unix:a%b unix:a?b "
      "unix:a#b unix:a,b");
  std::vector<std::string> addresses = {"", "unix:a\nb", "a b:1", "a\n:1", "a:1\n"};
  addresses.insert(addresses.end(), std::istream_iterator<std::string>(malformed), {});
  for (const std::string& address : addresses) {
    EXPECT_THROW(parseAddress(address), std::runtime_error) << address;
  }
}

}  // namespace
