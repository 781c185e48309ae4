// SPDX-License-Identifier: Apache-2.0

// The statuses that failures become, and the texts that are addresses.

#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/message_file.h"
#include "grpc/rule_check_service.h"
#include "grpc/security.h"

namespace {

using grpc::Status;
using grpc::StatusCode;

Status statusOf(int code) {
  vok::rulecheck::ErrorResponse error;
  error.set_code(code);
  error.set_msg("text");
  return rule_grpc::statusOf(error);
}

TEST(Statuses, AreThoseOfTheManual) {
  const std::map<std::string, StatusCode> codes = {
      {"ALREADY_EXISTS", StatusCode::ALREADY_EXISTS},
      {"FAILED_PRECONDITION", StatusCode::FAILED_PRECONDITION},
      {"INTERNAL", StatusCode::INTERNAL},
      {"INVALID_ARGUMENT", StatusCode::INVALID_ARGUMENT},
      {"NOT_FOUND", StatusCode::NOT_FOUND},
      {"RESOURCE_EXHAUSTED", StatusCode::RESOURCE_EXHAUSTED},
      {"UNAUTHENTICATED", StatusCode::UNAUTHENTICATED},
      {"UNAVAILABLE", StatusCode::UNAVAILABLE},
  };
  const std::string manual = apps::readFile(MANUAL);
  const std::regex row("\\| (\\d+) \\| .* \\| ([A-Z_]+) \\|\n");
  int rows = 0;
  for (std::sregex_iterator at(manual.begin(), manual.end(), row); at != std::sregex_iterator();
       ++at, ++rows) {
    const Status status = statusOf(std::stoi(at->str(1)));
    EXPECT_EQ(codes.at(at->str(2)), status.error_code()) << at->str();
    EXPECT_EQ("text", status.error_message());
  }
  EXPECT_GT(rows, 10);
  EXPECT_EQ(StatusCode::INTERNAL, statusOf(999).error_code());
}

TEST(Statuses, HaveTextsThatFitIntoATrailer) {
  const Status status = rule_grpc::refusal(StatusCode::INTERNAL, std::string(100000, 'x'));
  EXPECT_EQ(std::string(1000, 'x') + "...", status.error_message());
}

// A message of 2 GiB can't be serialized, and would be an empty answer.
TEST(Statuses, RefuseAnswersThatAreTooLong) {
  vok::rulecheck::StatusResponse answer;
  answer.set_code(0);
  answer.mutable_msg()->resize(std::size_t{2} << 30);
  grpc::ByteBuffer bytes;
  const Status status = rule_grpc::serialize(answer, &bytes);
  EXPECT_EQ(StatusCode::RESOURCE_EXHAUSTED, status.error_code());
  EXPECT_EQ("the answer has more than 2 GiB: report to more sessions", status.error_message());
}

TEST(Addresses, OfThisHostAreLoopbackOrSockets) {
  for (const std::string address :
       {"unix:/tmp/socket", "unix:a socket", "unix:///tmp/socket", "localhost:0", "localhost:80",
        "127.0.0.1:0", "127.0.0.1:65535", "127.255.0.9:1", "[::1]:0"}) {
    EXPECT_TRUE(rule_grpc::isOfThisHost(rule_grpc::parseAddress(address))) << address;
  }
}

TEST(Addresses, OfOtherHostsAreAllOthers) {
  for (const std::string address :
       {"0.0.0.0:0", "[::]:0", "10.0.0.1:80", "128.0.0.1:0", "126.0.0.1:0", "localhost.example:1",
        "127.0.0.1.example:1", "127.1:0", "[::2]:0", "example.org:1"}) {
    EXPECT_FALSE(rule_grpc::isOfThisHost(rule_grpc::parseAddress(address))) << address;
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
    EXPECT_THROW(rule_grpc::parseAddress(address), std::runtime_error) << address;
  }
}

}  // namespace
