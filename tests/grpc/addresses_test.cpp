// Which addresses may be used without TLS.

#include <gtest/gtest.h>

#include <string>

#include "grpc/security.h"

namespace {

TEST(Addresses, OfThisHostAreLoopbackOrSockets) {
  for (const std::string address :
       {"unix:/tmp/socket", "unix:socket", "unix:///tmp/socket", "localhost:0", "localhost:80",
        "127.0.0.1:0", "127.0.0.1", "127.255.0.9:1", "[::1]:0"}) {
    EXPECT_TRUE(rule_grpc::isOfThisHost(address)) << address;
  }
}

TEST(Addresses, OfOtherHostsAreAllOthers) {
  for (const std::string address :
       {"", ":0", "0.0.0.0:0", "[::]:0", "10.0.0.1:80", "128.0.0.1:0", "126.0.0.1:0",
        "localhost.example:1", "127.0.0.1.example:1", "127.1:0", "dns:///localhost:1",
        "ipv4:127.0.0.1:1", "127.0.0.1:0:0", "[::2]:0", "unix-abstract:name", "example.org:1"}) {
    EXPECT_FALSE(rule_grpc::isOfThisHost(address)) << address;
  }
}

}  // namespace
