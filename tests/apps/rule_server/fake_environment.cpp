// SPDX-License-Identifier: Apache-2.0

#include "fake_environment.h"

#include <stdexcept>

#include "common/message_file.h"

namespace tests {

std::string MemoryFiles::read(const std::string& path) {
  const auto file = contents.find(path);
  if (file == contents.end()) {
    throw apps::FileError(path + ": cannot be read");
  }
  return file->second;
}

void MemoryFiles::write(const std::string& path, const std::string& content) {
  if (path.rfind("/broken", 0) == 0) {
    throw apps::FileError(path + ": cannot be written");
  }
  contents[path] = content;
}

rule_server::Environment FakeEnvironment::environment(const rule_server::Limits& limits) {
  rule_server::Environment environment;
  environment.limits = limits;
  environment.token = "secret";
  environment.files = &files;
  environment.now = [this] { return time_++; };
  environment.newUuid = [this] { return "uuid-" + std::to_string(++uuids_); };
  environment.page = [](const vok::rulecheck::SessionResult& result) {
    if (result.session().name() == "unprintable") {
      throw std::runtime_error("no page");
    }
    return "page of " + result.session().name();
  };
  return environment;
}

}  // namespace tests
