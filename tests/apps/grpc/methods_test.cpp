// The methods, called through gRPC within the process.

#include <gmock/gmock.h>
#include <google/protobuf/message.h>
#include <grpcpp/grpcpp.h>
#include <gtest/gtest.h>
#include <vok/rulecheck/RuleService.grpc.pb.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/message_file.h"
#include "grpc/rule_check_service.h"
#include "grpc/statuses.h"
#include "rule_server/errors.h"
#include "support/messages.h"
#include "fake_environment.h"

namespace {

using grpc::Status;
using grpc::StatusCode;
using rule_server::ErrorCode;
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
  Service() : rules_(environment_.environment(limits())), service_(rules_, [this] { ++stops; }) {
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

  rule_server::Server& rules() { return rules_; }
  tests::MemoryFiles& files() { return environment_.files; }
  int stops = 0;

 private:
  static rule_server::Limits limits() {
    rule_server::Limits limits;
    limits.sessions = 3;
    return limits;
  }

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
      {"a version asked for with a number",
       {},
       {"getVersion", "noop: 7"},
       "major: 1\nminor: 4\npatch: 0\n"},
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
      {"a session without a uuid",
       {},
       {"startSession", "name: 'n'"},
       "name: \"n\"\nuuid: \"uuid-1\"\ntimestamp: 1000\n"},
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

struct Refusal {
  ErrorCode error;
  std::vector<Call> before;
  Call call;
  StatusCode code;
  const char* text;
};

std::vector<Refusal> refusals() {
  const std::string finding = "rule_key: 'W' session_uuid: 's'";
  return {
      {ErrorCode::ServerStopped,
       {{"stopServer", "token: 'secret'"}},
       {"getVersion", ""},
       StatusCode::UNAVAILABLE,
       "the server is stopped"},
      {ErrorCode::TokenRefused,
       {},
       {"exchangeToken", "token: 'guessed'"},
       StatusCode::UNAUTHENTICATED,
       "the token is not this server's"},
      {ErrorCode::TokenRefused,
       {},
       {"stopServer", "token: ''"},
       StatusCode::UNAUTHENTICATED,
       "the token is not this server's"},
      {ErrorCode::SessionUnknown,
       {},
       {"getSession", ""},
       StatusCode::NOT_FOUND,
       "no session is named by its uuid"},
      {ErrorCode::SessionUnknown,
       {},
       {"getSessionResult", "name: 'n'"},
       StatusCode::NOT_FOUND,
       "no session is named by its uuid"},
      {ErrorCode::SessionUnknown,
       {kRule},
       {"createViolation", finding},
       StatusCode::NOT_FOUND,
       "there is no session \"s\""},
      {ErrorCode::SessionStopped,
       {kStart, kStop},
       kStop,
       StatusCode::FAILED_PRECONDITION,
       "session \"s\" is stopped"},
      {ErrorCode::SessionExists,
       {kStart},
       kStart,
       StatusCode::ALREADY_EXISTS,
       "there is a session \"s\" already"},
      {ErrorCode::RuleUnknown,
       {kStart},
       {"createAffirmation", finding},
       StatusCode::NOT_FOUND,
       "no rule has the key \"W\""},
      {ErrorCode::RulePlanned,
       {kStart, {"upsertRuleSpec", "key: 'W' full_name: 'Widths' disposition: PLANNED"}},
       {"createAffirmation", finding},
       StatusCode::FAILED_PRECONDITION,
       "rule \"W\" is not in force yet"},
      {ErrorCode::RuleReadOnly,
       {{"upsertRuleSpec", "key: 'W' full_name: 'Widths' disposition: READONLY"}},
       kRule,
       StatusCode::FAILED_PRECONDITION,
       "rule \"W\" is read-only"},
      {ErrorCode::RuleInvalid,
       {},
       {"upsertRuleSpec", "key: '' full_name: ''"},
       StatusCode::INVALID_ARGUMENT,
       "rule \"\" is invalid: a key has 1 to 255 bytes"},
      {ErrorCode::CategoryRefused,
       {kStart, kRule},
       {"createViolation", finding + " dynamic_category_values { key: 'waiver' value: '' }"},
       StatusCode::INVALID_ARGUMENT,
       "dynamic category \"waiver\" is refused: a waiver needs a reason"},
      {ErrorCode::FileAddress,
       {},
       {"dumpRules", ""},
       StatusCode::INVALID_ARGUMENT,
       "no data_file is given"},
      {ErrorCode::FileAccess,
       {},
       {"loadRuleDataFile", file("data_file", "missing.pb")},
       StatusCode::FAILED_PRECONDITION,
       "missing.pb: cannot be read"},
      {ErrorCode::FileFormat,
       {},
       {"dumpRules", file("data_file", "rules.doc")},
       StatusCode::INVALID_ARGUMENT,
       "rules.doc: unknown extension, expected .pb, .bin, .txtpb, .textproto, .txt or .json"},
      {ErrorCode::SelectionInvalid,
       {},
       {"dumpRules", "regex: '('" + file("data_file", "r.pb")},
       StatusCode::INVALID_ARGUMENT,
       "regex \"(\": missing ): ("},
      {ErrorCode::LimitExceeded,
       {kStart, {"startSession", "name: 'n'"}, {"startSession", "name: 'n'"}},
       {"startSession", "name: 'n'"},
       StatusCode::RESOURCE_EXHAUSTED,
       "the server has 3 sessions and takes no more: reset one that is not stopped and use it again, "
       "or restart the server with a higher limit"},
      {ErrorCode::Internal,
       {{"startSession", "name: 'unprintable' uuid: 's'" + file("report_file", "r.html")}},
       {"writeReport", "name: '' uuid: 's'"},
       StatusCode::INTERNAL,
       "no page"},
  };
}

TEST(Methods, AnswerErrorsWithStatuses) {
  for (const Refusal& row : refusals()) {
    SCOPED_TRACE(row.call.method + " " + row.call.argument);
    Service service;
    service.prepare(row.before);
    const Outcome outcome = service.call(row.call);
    EXPECT_EQ(row.code, outcome.status.error_code());
    EXPECT_EQ(row.text, outcome.status.error_message());
    EXPECT_EQ("", outcome.answer);
  }
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
  std::set<int> called;
  for (const Refusal& each : refusals()) {
    called.insert(static_cast<int>(each.error));
    EXPECT_EQ(each.code, rows.at(static_cast<int>(each.error)));
  }
  // No method gives the first four.
  EXPECT_EQ(rows.size() - 4, called.size());
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

TEST(Methods, WriteReportsWhereTheSessionSays) {
  Service service;
  service.prepare({{"startSession", "name: 'n' uuid: 's'" + file("report_file", "r.html") +
                                        file("proto_file", "s.txtpb")},
                   {"writeReport", "name: '' uuid: 's'"}});
  EXPECT_EQ("page of n", service.files().contents["r.html"]);
  EXPECT_THAT(service.files().contents["s.txtpb"], testing::HasSubstr("violation_count: 0"));
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

vok::rulecheck::Request parsed(const std::string& request) {
  return tests::parse<vok::rulecheck::Request>(request);
}

// Collecting the result takes a second and more, and it waits for the page before it.
TEST(Methods, AnswerWhileLongRequestsAreInProgress) {
  Service service;
  service.prepare({kStart, kRule, {"startSession", "name: 'n' uuid: 'other'"}});
  const auto finding =
      parsed("type: CREATE_VIOLATION create_violation { rule_key: 'W' session_uuid: 's' }");
  for (int i = 0; i < 100000; ++i) {
    service.rules().handle(finding);
  }
  using Clock = std::chrono::steady_clock;
  std::vector<std::thread> collectors;
  std::atomic<int> collecting{8};
  const auto start = Clock::now();
  for (int i = collecting; i > 0; --i) {
    collectors.emplace_back([&] {
      EXPECT_THAT(service.call({"getSessionResult", "name: '' uuid: 's'"}).answer,
                  testing::HasSubstr("violation_count: 100000"));
      --collecting;
    });
  }
  int answered = 0;
  Clock::duration longest{};
  while (collecting > 0) {
    const auto asked = Clock::now();
    EXPECT_TRUE(service.call({"getSession", "session_uuid: 'other'"}).status.ok());
    EXPECT_TRUE(service.call({"getSessionResult", "name: '' uuid: 'other'"}).status.ok());
    longest = std::max(longest, Clock::now() - asked);
    ++answered;
  }
  const auto took = Clock::now() - start;
  for (std::thread& collector : collectors) {
    collector.join();
  }
  EXPECT_GT(answered, 10);
  EXPECT_LT(longest, took / 4);
}

}  // namespace
