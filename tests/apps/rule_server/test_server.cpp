// SPDX-License-Identifier: Apache-2.0

#include "test_server.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "support/messages.h"

namespace tests {

using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::SessionResult;

const char* const kStart = "type: START_SESSION start_session { name: 'n' uuid: 's' }";
const char* const kStop = "type: STOP_SESSION stop_session { session { name: '' uuid: 's' } }";
const char* const kRule =
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'W' full_name: 'Widths' } }";
const char* const kPlannedRule =
    "type: UPSERT_RULESPEC upsert_rulespec {"
    "  rule_spec { key: 'P' full_name: 'Planned' disposition: PLANNED } }";
const char* const kReadOnlyRule =
    "type: UPSERT_RULESPEC upsert_rulespec {"
    "  rule_spec { key: 'R' full_name: 'Fixed' disposition: READONLY } }";

TestServer::TestServer(const rule_server::Limits& limits) : server(environment(limits)) {}

Response TestServer::ask(const std::string& request) {
  return ask(parse<Request>(request));
}

Response TestServer::ask(const Request& request) {
  Response response = server.handle(request);
  expectWellFormed(response);
  return response;
}

void TestServer::prepare(const std::vector<std::string>& requests) {
  for (const std::string& request : requests) {
    const Response response = ask(request);
    if (response.type() == Response::ERROR_RESPONSE) {
      throw std::invalid_argument(request + ": " + response.error().msg());
    }
  }
}

SessionResult TestServer::result() {
  const Response response =
      ask("type: GET_SESSION_RESULT get_session_result { session_uuid: 's' }");
  EXPECT_EQ(Response::SESSION_RESULT, response.type()) << textOf(response);
  expectConsistent(response.session_result());
  return response.session_result();
}

void expectWellFormed(const Response& response) {
  ASSERT_TRUE(response.IsInitialized()) << response.InitializationErrorString();
  for (int type = Response::STATUS_RESPONSE; type <= Response::VIOLATION; ++type) {
    const auto* body = Response::descriptor()->FindFieldByNumber(type + 2);
    EXPECT_EQ(type == response.type(), response.GetReflection()->HasField(response, body))
        << textOf(response);
  }
  Response copy;
  ASSERT_TRUE(copy.ParseFromString(bytesOf(response)));
  EXPECT_TRUE(bytesOf(response) == bytesOf(copy)) << textOf(response).substr(0, 2000);
}

namespace {

template <typename Findings>
void expectIds(const Findings& findings, std::set<int>* ids) {
  for (const auto& entry : findings.hashmap()) {
    EXPECT_EQ(entry.first, entry.second.id());
    EXPECT_TRUE(ids->insert(entry.first).second) << "finding " << entry.first << " is there twice";
  }
}

}  // namespace

void expectConsistent(const SessionResult& result) {
  EXPECT_EQ(result.violation_count(), static_cast<int>(result.violations().hashmap().size()));
  EXPECT_EQ(result.waived_count(), static_cast<int>(result.waived_violations().hashmap().size()));
  EXPECT_EQ(result.affirmation_count(), static_cast<int>(result.affirmations().hashmap().size()));
  std::set<int> ids;
  expectIds(result.violations(), &ids);
  expectIds(result.waived_violations(), &ids);
  expectIds(result.affirmations(), &ids);
  if (!ids.empty()) {
    EXPECT_EQ(1, *ids.begin());
    EXPECT_EQ(static_cast<int>(ids.size()), *ids.rbegin());
  }
}

}  // namespace tests
