// SPDX-License-Identifier: Apache-2.0

// A rule server in memory. README.md has what the protocol leaves to the server.

#ifndef VOK_APPS_RULE_SERVER_RULE_SERVER_H_
#define VOK_APPS_RULE_SERVER_RULE_SERVER_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "rule_server/catalog.h"
#include "rule_server/files.h"
#include "rule_server/limits.h"
#include "rule_server/sessions.h"

namespace rule_server {

// The longest request that a transport accepts, in bytes. Parsed, hostile bytes take up to 58
// times their length in memory.
constexpr std::size_t kMaxRequestBytes = 1U << 20;

// In UTC.
std::int64_t millisecondsSince1970();
// In the form of a random (version 4) identifier.
std::string randomUuid();

// What the server gets from the program that it runs in. A function that fails throws a
// std::exception; the request in progress is then answered with ErrorCode::Internal.
struct Environment {
  // What EXCHANGE_TOKEN and STOP_SERVER have to bring. Empty: nothing suits.
  std::string token;
  // Outlives the server. Null: requests that name files are refused.
  Files* files = nullptr;
  std::function<std::int64_t()> now = millisecondsSince1970;
  // A universally unique identifier.
  std::function<std::string()> newUuid = randomUuid;
  // The report of a session, as a page.
  std::function<std::string(const vok::rulecheck::SessionResult&)> page;
  Limits limits;
};

// Thread-safe; a long request delays no other. Each function of the environment is
// called by one thread at a time.
class Server {
 public:
  // Turns off the fast bins of malloc, in the whole process.
  explicit Server(Environment environment);

  // Answers every request, valid or not, with a response that is initialized and has the
  // body of its type and no other. Throws only std::bad_alloc.
  vok::rulecheck::Response handle(vok::rulecheck::Request request);

  // Whether the request uses files, or asks for a result of more than 1 MiB or 64 rules. A
  // transport that performs one such request at a time holds one large result in memory.
  bool takesLong(const vok::rulecheck::Request& request) const;

  // Whether a STOP_SERVER was accepted. From then on each request is refused.
  bool stopped() const { return stopped_; }

 private:
  vok::rulecheck::Response perform(vok::rulecheck::Request* given);
  vok::rulecheck::Response perform(const vok::rulecheck::GetRuleSpecs& body);
  vok::rulecheck::Response perform(const vok::rulecheck::GetSession& body);
  vok::rulecheck::Response perform(const vok::rulecheck::GetSessionResult& body);
  static vok::rulecheck::Response perform(const vok::rulecheck::GetVersion& body);
  vok::rulecheck::Response perform(const vok::rulecheck::LoadRuleDataFile& body);
  vok::rulecheck::Response perform(const vok::rulecheck::ResetSession& body);
  vok::rulecheck::Response perform(const vok::rulecheck::StartSession& body);
  vok::rulecheck::Response perform(const vok::rulecheck::StopSession& body);
  vok::rulecheck::Response perform(const vok::rulecheck::UpsertRuleSpec& body);
  vok::rulecheck::Response perform(const vok::rulecheck::WriteReport& body);
  vok::rulecheck::Response perform(const vok::rulecheck::DumpRules& body);
  vok::rulecheck::Response exchangeToken(const vok::rulecheck::ExchangeToken& body) const;
  vok::rulecheck::Response stopServer(const vok::rulecheck::ExchangeToken& body);

  template <typename Made, typename Body>
  vok::rulecheck::Response record(Body* body, Made (*make)(const vok::rulecheck::RuleSpec&, Body*));
  void checkToken(const std::string& token) const;
  Files& files() const;
  bool takesLong(const std::string& uuid) const;
  Snapshot snapshot(const std::string& uuid);
  // Of what is written to a file of that name. Throws Failure (LimitExceeded).
  void checkText(const std::string& path, std::size_t bytes) const;

  // Of the session, with the mutex held.
  SessionState& session(const std::string& uuid);
  SessionState& openSession(const std::string& uuid);

  const Environment environment_;
  // Outlives all that is recorded.
  Budget budget_;

  // Held by requests that use files or make pages, and never with the other one held.
  std::mutex filesMutex_;
  mutable std::mutex mutex_;
  Catalog catalog_;
  std::map<std::string, SessionState> sessions_;
  std::atomic<bool> stopped_{false};
};

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_RULE_SERVER_H_
