// SPDX-License-Identifier: Apache-2.0

// A rule server whose environment is known to the test.

#ifndef VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_
#define VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_

#include <map>
#include <string>
#include <vector>

#include "rule_server/files.h"
#include "rule_server/rule_server.h"

namespace tests {

// Makes a request of "TYPE BODY", where BODY is the body of that type in text format; required
// fields may be missing. "@PATH" means "{ scheme: FILE path: 'PATH' }", and "start", "violation",
// "result" and the other words of test_server.cpp mean whole requests.
vok::rulecheck::Request requestOf(const std::string& text);

// Splits a table with a row per line and " | " between its cells.
std::vector<std::vector<std::string>> rowsOf(const std::string& table);

// Files in memory. A path that begins with "/broken" can't be written.
class MemoryFiles : public rule_server::Files {
 public:
  std::string read(const std::string& path) override;
  void write(const std::string& path, const std::string& content) override;

  std::map<std::string, std::string> contents;
};

// The token is "secret", the first time 1000 and each further one 1 more, uuids are
// "uuid-1", "uuid-2" and so on, and pages are "page of NAME", except that there is
// no page for a session named "unprintable".
class TestServer {
 public:
  explicit TestServer(const rule_server::Limits& limits = {});

  // Performs a request, and checks that the response is well-formed: initialized, with the body
  // of its type and no other, and the same after being serialized and parsed.
  vok::rulecheck::Response ask(const vok::rulecheck::Request& request);
  vok::rulecheck::Response ask(const std::string& request) { return ask(requestOf(request)); }

  // The status or the code of the error that answers a request.
  std::string outcome(const std::string& request);

  // Performs requests, separated by semicolons, that must succeed.
  void prepare(const std::string& requests);

  // The result of a session. Its counts are the sizes of its maps; ids are the maps' keys,
  // from 1.
  vok::rulecheck::SessionResult result(const std::string& session = "s");

  MemoryFiles files;
  rule_server::Server server;
};

}  // namespace tests

#endif  // VOK_TESTS_APPS_RULE_SERVER_TEST_SERVER_H_
