// SPDX-License-Identifier: Apache-2.0

#include "test_server.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

#include "common/message_file.h"
#include "support/messages.h"

namespace tests {

using vok::rulecheck::Request;
using vok::rulecheck::Response;
using vok::rulecheck::SessionResult;

namespace {

const std::map<std::string, std::string>& words() {
  static const std::map<std::string, std::string> words = {
      {"start", "START_SESSION name: 'n' uuid: 's'"},
      {"stop", "STOP_SESSION session { name: '' uuid: 's' }"},
      {"reset", "RESET_SESSION session { name: '' uuid: 's' }"},
      {"write", "WRITE_REPORT session { name: '' uuid: 's' }"},
      {"result", "GET_SESSION_RESULT session_uuid: 's'"},
      {"violation", "CREATE_VIOLATION rule_key: 'W' session_uuid: 's'"},
      {"affirmation", "CREATE_AFFIRMATION rule_key: 'W' session_uuid: 's'"},
      {"W", "UPSERT_RULESPEC rule_spec { key: 'W' full_name: 'Widths' }"},
      {"P", "UPSERT_RULESPEC rule_spec { key: 'P' full_name: 'Planned' disposition: PLANNED }"},
      {"R", "UPSERT_RULESPEC rule_spec { key: 'R' full_name: 'Fixed' disposition: READONLY }"},
  };
  return words;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end = 0; end != std::string::npos; start = end + separator.size()) {
    end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
  }
  return parts;
}

template <typename Findings>
void expectIds(const Findings& findings, int count, std::set<int>* ids) {
  EXPECT_EQ(count, findings.hashmap_size());
  for (const auto& [id, finding] : findings.hashmap()) {
    EXPECT_EQ(id, finding.id());
    EXPECT_TRUE(ids->insert(id).second) << "finding " << id << " is there twice";
  }
}

rule_server::Environment environmentWith(MemoryFiles* files, const rule_server::Limits& limits) {
  rule_server::Environment environment;
  environment.limits = limits;
  environment.token = "secret";
  environment.files = files;
  environment.now = [time = 1000]() mutable { return time++; };
  environment.newUuid = [count = 0]() mutable { return "uuid-" + std::to_string(++count); };
  environment.page = [](const SessionResult& result) {
    if (result.session().name() == "unprintable") {
      throw std::runtime_error("no page");
    }
    return "page of " + result.session().name();
  };
  return environment;
}

}  // namespace

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

TestServer::TestServer(const rule_server::Limits& limits)
    : server(environmentWith(&files, limits)) {}

Request requestOf(const std::string& text) {
  const auto word = words().find(text);
  const std::string line = std::regex_replace(word == words().end() ? text : word->second,
                                              std::regex("@(\\S+)"), "{ scheme: FILE path: '$1' }");
  const std::string type = line.substr(0, line.find(' '));
  Request::RequestType number{};
  if (!Request::RequestType_Parse(type, &number)) {
    throw std::invalid_argument("not a request: " + text);
  }
  Request request;
  request.set_type(number);
  const int body = number == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber : number + 1;
  fill(line.substr(type.size()), request.GetReflection()->MutableMessage(
                                     &request, Request::descriptor()->FindFieldByNumber(body)));
  return request;
}

std::vector<std::vector<std::string>> rowsOf(const std::string& table) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty()) {
      // An empty last cell has no blank behind it.
      rows.push_back(split(line + " ", " | "));
      rows.back().back().erase(rows.back().back().find_last_not_of(' ') + 1);
    }
  }
  return rows;
}

Response TestServer::ask(const Request& request) {
  Response response = server.handle(request);
  EXPECT_TRUE(response.IsInitialized()) << response.InitializationErrorString();
  for (int type = Response::STATUS_RESPONSE; type <= Response::VIOLATION; ++type) {
    const auto* body = Response::descriptor()->FindFieldByNumber(type + 2);
    EXPECT_EQ(type == response.type(), response.GetReflection()->HasField(response, body))
        << textOf(response);
  }
  Response copy;
  EXPECT_TRUE(copy.ParseFromString(bytesOf(response)) && bytesOf(response) == bytesOf(copy))
      << textOf(response).substr(0, 2000);
  return response;
}

std::string TestServer::outcome(const std::string& request) {
  const Response response = ask(request);
  return response.has_status() ? response.status().msg() : std::to_string(response.error().code());
}

void TestServer::prepare(const std::string& requests) {
  if (requests.empty()) {
    return;
  }
  for (const std::string& request : split(requests, "; ")) {
    const Response response = ask(request);
    EXPECT_FALSE(response.has_error()) << request << ": " << response.error().msg();
  }
}

SessionResult TestServer::result(const std::string& session) {
  Request request;
  request.set_type(Request::GET_SESSION_RESULT);
  request.mutable_get_session_result()->set_session_uuid(session);
  const SessionResult result = ask(request).session_result();
  std::set<int> ids;
  expectIds(result.violations(), result.violation_count(), &ids);
  expectIds(result.waived_violations(), result.waived_count(), &ids);
  expectIds(result.affirmations(), result.affirmation_count(), &ids);
  EXPECT_TRUE(ids.empty() || (*ids.begin() == 1 && *ids.rbegin() == static_cast<int>(ids.size())));
  return result;
}

}  // namespace tests
