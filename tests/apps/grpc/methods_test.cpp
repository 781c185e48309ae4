// SPDX-License-Identifier: Apache-2.0

// The methods, called through gRPC within the process.

#include <google/protobuf/message.h>
#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "common/message_file.h"
#include "fake_environment.h"
#include "grpc/rule_check_service.h"
#include "grpc/statuses.h"
#include "support/messages.h"

namespace {

using grpc::Status;
using grpc::StatusCode;
using Stub = vok::rulecheck::RuleCheckService::Stub;

struct Outcome {
  Status status;
  // In text format.
  std::string answer;
};

using Method = std::function<Outcome(Stub*, const std::string&)>;

// Calls a method with an argument in text format, whose required fields may be missing.
template <typename Argument, typename Answer>
Method method(Status (Stub::*call)(grpc::ClientContext*, const Argument&, Answer*)) {
  return [call](Stub* stub, const std::string& argument) {
    grpc::ClientContext context;
    Answer answer;
    const Status status = (stub->*call)(&context, tests::parse<Argument>(argument), &answer);
    return Outcome{status, tests::textOf(answer)};
  };
}

const std::map<std::string, Method>& methods() {
  static const std::map<std::string, Method> all = {
      {"getVersion", method(&Stub::getVersion)},
      {"exchangeToken", method(&Stub::exchangeToken)},
      {"loadRuleDataFile", method(&Stub::loadRuleDataFile)},
      {"dumpRules", method(&Stub::dumpRules)},
      {"upsertRuleSpec", method(&Stub::upsertRuleSpec)},
      {"startSession", method(&Stub::startSession)},
      {"getSession", method(&Stub::getSession)},
      {"stopSession", method(&Stub::stopSession)},
      {"createAffirmation", method(&Stub::createAffirmation)},
      {"createViolation", method(&Stub::createViolation)},
      {"getSessionResult", method(&Stub::getSessionResult)},
      {"resetSession", method(&Stub::resetSession)},
      {"writeReport", method(&Stub::writeReport)},
      {"stopServer", method(&Stub::stopServer)},
  };
  return all;
}

struct Call {
  Call(std::string methodName, std::string text)
      : method(std::move(methodName)), argument(std::move(text)) {}
  std::string method;
  std::string argument;
};

const Call kStart = {"startSession", "name: 'n' uuid: 's'"};
const Call kStop = {"stopSession", "name: '' uuid: 's'"};
const Call kRule = {"upsertRuleSpec", "key: 'W' full_name: 'Widths'"};

class Service {
 public:
  Service() : rules_(environment_.environment()), service_(rules_, [this] { ++stops; }) {
    grpc::ServerBuilder builder;
    builder.RegisterService(&service_);
    server_ = builder.BuildAndStart();
    stub_ = vok::rulecheck::RuleCheckService::NewStub(server_->InProcessChannel(anyLength()));
  }

  Outcome call(const Call& call) { return methods().at(call.method)(stub_.get(), call.argument); }

  void prepare(const std::vector<Call>& calls) {
    for (const Call& each : calls) {
      const Status status = call(each).status;
      ASSERT_TRUE(status.ok()) << each.method << ": " << status.error_message();
    }
  }

  int stops = 0;

 private:
  static grpc::ChannelArguments anyLength() {
    grpc::ChannelArguments arguments;
    arguments.SetMaxReceiveMessageSize(-1);
    return arguments;
  }

  tests::FakeEnvironment environment_;
  rule_server::Server rules_;
  rule_grpc::RuleCheckService service_;
  std::unique_ptr<grpc::Server> server_;
  std::unique_ptr<Stub> stub_;
};

struct Success {
  const char* name;
  std::vector<Call> before;
  Call call;
  std::string answer;
};

std::string file(const std::string& field, const std::string& path) {
  return " " + field + " { scheme: FILE path: '" + path + "' }";
}

std::vector<Success> successes() {
  const std::string session = "name: \"n\"\nuuid: \"s\"\ntimestamp: 1000\n";
  const std::string status = "code: 0\nmsg: ";
  return {
      {"the version", {}, {"getVersion", ""}, "major: 1\nminor: 4\npatch: 0\n"},
      {"the token", {}, {"exchangeToken", "token: 'secret'"}, status + "\"token accepted\"\n"},
      {"a rule", {}, kRule, status + "\"rule stored\"\n"},
      {"rules into a file",
       {kRule},
       {"dumpRules", file("data_file", "r.pb")},
       status + "\"1 rule written\"\n"},
      {"rules from a file",
       {kRule, {"dumpRules", file("data_file", "r.pb")}},
       {"loadRuleDataFile", file("data_file", "r.pb")},
       status + "\"1 rule loaded, 0 rules skipped\"\n"},
      {"a session", {}, kStart, session},
      {"a session with all fields, of which the server has no place for two",
       {},
       {"startSession", "name: 'n' uuid: 's' description: 'd' timestamp: 5 build_target: 't'" +
                            file("report_file", "r.html") + file("proto_file", "s.pb")},
       "name: \"n\"\nuuid: \"s\"\ndescription: \"d\"\ntimestamp: 1000\n"
       "report_file {\n  scheme: FILE\n  path: \"r.html\"\n}\n"
       "proto_file {\n  scheme: FILE\n  path: \"s.pb\"\n}\n"},
      {"a session asked for", {kStart}, {"getSession", "session_uuid: 's'"}, session},
      {"the end of a session", {kStart}, kStop, status + "\"session stopped\"\n"},
      {"the reset of a session",
       {kStart},
       {"resetSession", "name: '' uuid: 's'"},
       status + "\"session reset\"\n"},
      {"an affirmation",
       {kStart, kRule},
       {"createAffirmation", "rule_key: 'W' session_uuid: 's'"},
       "id: 1\nrule_key: \"W\"\ndetails {\n  text: \"Widths\"\n}\n"},
      {"a violation",
       {kStart, kRule},
       {"createViolation", "rule_key: 'W' session_uuid: 's' severity: SEV_ERROR"},
       "id: 1\nseverity: SEV_ERROR\nrule_key: \"W\"\ndetails {\n  text: \"Widths\"\n}\n"},
      {"a result",
       {kStart},
       {"getSessionResult", "name: 'another' uuid: 's'"},
       "session {\n  name: \"n\"\n  uuid: \"s\"\n  timestamp: 1000\n}\n"
       "violation_count: 0\nwaived_count: 0\naffirmation_count: 0\nviolations {\n}\n"
       "waived_violations {\n}\naffirmations {\n}\n"},
      {"a report",
       {{"startSession", "name: 'n' uuid: 's'" + file("report_file", "r.html")}},
       {"writeReport", "name: '' uuid: 's'"},
       status + "\"report written\"\n"},
      {"the end of the server",
       {},
       {"stopServer", "token: 'secret'"},
       status + "\"server stopped\"\n"},
  };
}

TEST(Methods, AnswerWithTheBodyOfTheResponse) {
  std::map<std::string, int> called;
  for (const Success& row : successes()) {
    SCOPED_TRACE(row.name);
    Service service;
    service.prepare(row.before);
    const Outcome outcome = service.call(row.call);
    EXPECT_TRUE(outcome.status.ok()) << outcome.status.error_message();
    EXPECT_EQ(row.answer, outcome.answer);
    ++called[row.call.method];
  }
  EXPECT_EQ(methods().size(), called.size());
}

const std::map<std::string, StatusCode>& statuses() {
  static const std::map<std::string, StatusCode> all = {
      {"ALREADY_EXISTS", StatusCode::ALREADY_EXISTS},
      {"FAILED_PRECONDITION", StatusCode::FAILED_PRECONDITION},
      {"INTERNAL", StatusCode::INTERNAL},
      {"INVALID_ARGUMENT", StatusCode::INVALID_ARGUMENT},
      {"NOT_FOUND", StatusCode::NOT_FOUND},
      {"RESOURCE_EXHAUSTED", StatusCode::RESOURCE_EXHAUSTED},
      {"UNAUTHENTICATED", StatusCode::UNAUTHENTICATED},
      {"UNAVAILABLE", StatusCode::UNAVAILABLE},
  };
  return all;
}

Status statusOf(int code) {
  vok::rulecheck::ErrorResponse error;
  error.set_code(code);
  error.set_msg("text");
  return rule_grpc::statusOf(error);
}

TEST(Methods, AnswerErrorsWithStatuses) {
  Service service;
  const Outcome outcome = service.call({"getSession", "session_uuid: 's'"});
  EXPECT_EQ(StatusCode::NOT_FOUND, outcome.status.error_code());
  EXPECT_EQ("there is no session \"s\"", outcome.status.error_message());
  EXPECT_EQ("", outcome.answer);
}

TEST(Statuses, AreThoseOfTheManual) {
  const std::string manual = apps::readFile(MANUAL);
  const std::regex row("\\| (\\d+) \\w+ \\| ([A-Z_]+) \\|\n");
  std::map<int, StatusCode> rows;
  for (std::sregex_iterator at(manual.begin(), manual.end(), row); at != std::sregex_iterator();
       ++at) {
    rows[std::stoi(at->str(1))] = statuses().at(at->str(2));
  }
  EXPECT_EQ(20u, rows.size());
  for (const auto& each : rows) {
    EXPECT_EQ(each.second, statusOf(each.first).error_code()) << each.first;
    EXPECT_EQ("text", statusOf(each.first).error_message());
  }
  EXPECT_EQ(StatusCode::INTERNAL, statusOf(999).error_code());
}

TEST(Statuses, HaveTextsThatFitIntoATrailer) {
  const Status status = rule_grpc::refusal(StatusCode::INTERNAL, std::string(100000, 'x'));
  EXPECT_EQ(std::string(1000, 'x') + "...", status.error_message());
}

// A client in C++ sends what is incomplete; the server refuses it.
TEST(Methods, RefuseArgumentsThatLackARequiredField) {
  const std::map<std::string, const char*> missing = {
      {"exchangeToken", "missing token"},
      {"stopServer", "missing token"},
      {"upsertRuleSpec", "missing key, full_name"},
      {"startSession", "missing name"},
      {"stopSession", "missing name"},
      {"getSessionResult", "missing name"},
      {"resetSession", "missing name"},
      {"writeReport", "missing name"},
      {"createAffirmation", "missing rule_key"},
      {"createViolation", "missing rule_key"},
  };
  Service service;
  for (const auto& row : missing) {
    const Outcome outcome = service.call({row.first, ""});
    EXPECT_EQ(StatusCode::INVALID_ARGUMENT, outcome.status.error_code()) << row.first;
    EXPECT_EQ(row.second, outcome.status.error_message()) << row.first;
  }
  const Outcome nested =
      service.call({"createViolation", "rule_key: 'W' args { arg { } arg { ref { url { } } } }"});
  EXPECT_EQ("missing args.arg[1].ref.type, args.arg[1].ref.url.scheme",
            nested.status.error_message());
}

TEST(Methods, TellWhoOwnsTheServerWhenItIsToStop) {
  Service service;
  EXPECT_FALSE(service.call({"stopServer", "token: 'guessed'"}).status.ok());
  EXPECT_EQ(0, service.stops);
  EXPECT_TRUE(service.call({"stopServer", "token: 'secret'"}).status.ok());
  EXPECT_EQ(1, service.stops);
  EXPECT_FALSE(service.call({"stopServer", "token: 'secret'"}).status.ok());
  EXPECT_EQ(1, service.stops);
}

// A message of 2 GiB can't be serialized, and would be an empty answer.
TEST(Answers, ThatAreTooLongAreRefused) {
  vok::rulecheck::StatusResponse answer;
  answer.set_code(0);
  answer.mutable_msg()->resize(std::size_t{2} << 30);
  grpc::ByteBuffer bytes;
  const Status status = rule_grpc::serialize(answer, &bytes);
  EXPECT_EQ(StatusCode::RESOURCE_EXHAUSTED, status.error_code());
  EXPECT_EQ("the answer has more than 2 GiB: report to more sessions", status.error_message());
}

}  // namespace
