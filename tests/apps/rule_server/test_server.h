// SPDX-License-Identifier: Apache-2.0

// A rule server whose environment are known to the test.

#ifndef VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_
#define VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_

#include <string>
#include <vector>

#include "fake_environment.h"
#include "rule_server/rule_server.h"

namespace tests {

class TestServer : public FakeEnvironment {
 public:
  explicit TestServer(const rule_server::Limits& limits = {});

  // Sends a request in text format, whose required fields may be missing, and checks
  // that the response is well-formed.
  vok::rulecheck::Response ask(const std::string& request);
  vok::rulecheck::Response ask(const vok::rulecheck::Request& request);

  // Sends requests that have to succeed.
  void prepare(const std::vector<std::string>& requests);

  // The result of session "s", with its invariants checked.
  vok::rulecheck::SessionResult result();

  rule_server::Server server;
};

// Fails the test unless the response is initialized, has the body of its type and no
// other, and survives being serialized and parsed.
void expectWellFormed(const vok::rulecheck::Response& response);

// Fails the test unless counts equal the sizes of maps, and ids are unique and the
// maps' keys.
void expectConsistent(const vok::rulecheck::SessionResult& result);

// Requests that many tests need: session "s" and the rules "W" and "P".
extern const char* const kStart;
extern const char* const kStop;
extern const char* const kRule;
extern const char* const kPlannedRule;
extern const char* const kReadOnlyRule;

}  // namespace tests

#endif  // VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_
