// SPDX-License-Identifier: Apache-2.0

// The statuses that failures become.

#include "grpc/rule_check_service.h"

#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <regex>
#include <string>

#include "common/message_file.h"

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

}  // namespace
