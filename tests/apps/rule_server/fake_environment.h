// SPDX-License-Identifier: Apache-2.0

// What surrounds a rule server in tests: nothing outside of the process.

#ifndef VOK_TESTS_APPS_RULE_SERVER_FAKE_ENVIRONMENT_H_
#define VOK_TESTS_APPS_RULE_SERVER_FAKE_ENVIRONMENT_H_

#include <cstdint>
#include <map>
#include <string>

#include "rule_server/files.h"
#include "rule_server/rule_server.h"

namespace tests {

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
class FakeEnvironment {
 public:
  // Refers to this object, which must outlive it.
  rule_server::Environment environment(const rule_server::Limits& limits = {});

  MemoryFiles files;

 private:
  std::int64_t time_ = 1000;
  int uuids_ = 0;
};

}  // namespace tests

#endif  // VOK_TESTS_APPS_RULE_SERVER_FAKE_ENVIRONMENT_H_
