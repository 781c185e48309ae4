// SPDX-License-Identifier: Apache-2.0

// A rule server in memory: it answers each of the fifteen types of request.
//
// What the protocol leaves to the server is decided as follows.
//
// Requests
//   * A request carries the body of its type and no other body. The body of
//     STOP_SERVER is exchange_token.
//   * Each failure is an ERROR_RESPONSE with a code of errors.h, and changes
//     nothing but what README.md says of WRITE_REPORT. Each success that returns
//     no data is a STATUS_RESPONSE with code 0.
//
// Sessions
//   * START_SESSION takes the uuid that it names, or makes one if that is absent
//     or empty; its pid is not kept. timestamp is in milliseconds since 1970 (UTC).
//   * Where a request carries a Session, only the uuid of it counts.
//   * STOP_SESSION closes a session to findings, RESET_SESSION and another
//     STOP_SESSION. Its result can still be asked for and written.
//   * RESET_SESSION discards the findings; the next one has the number 1 again.
//   * GET_RULESPECS is answered with a SESSION_RESULT that has the specifications
//     of the session's result, and neither findings nor counts.
//
// Findings
//   * Their ids are 1, 2, ... in the order in which the session got them, and are
//     the keys of the maps.
//   * severity is the request's, or else the rule's, or else SEV_UNKNOWN.
//   * threshold_value is the request's, or else the rule's. expects, examples and
//     categories are the rule's.
//   * The text of details is the rule's raw_msg (of an affirmation: affirm_msg), or
//     else its full_name; resolution is the rule's resolution_msg, if it has one.
//     In a text, "%1" stands for the first argument and "%%" for a percent sign;
//     arguments that no text names follow it. resolution has the arguments only if
//     its text names one.
//   * A dynamic category value is named by the number of a category that the rule's
//     dynamic_categories has as true, and is kept under that number in categories.
//   * A violation whose dynamic category values have a "waiver" is recorded as
//     waived. The waiver's value is its reason: not empty, and kept in categories
//     under kWaiverCategory.
//   * The result's specs_violated has the rules of all violations, waived or not, as
//     the catalog has them when the result is asked for.
//
// Rules
//   * A key has 1 to 255 bytes, a full_name is not empty, and category 1 is left to
//     waivers. A READONLY rule can't be replaced, and there are no findings for a
//     PLANNED one. session_names and architectures are kept and not looked at.
//   * A file of rules holds a RuleSpecMap in the format of its extension (see
//     common/message_file.h). pattern ("*" any bytes, "?" any byte) must match the
//     whole key, and regex (RE2's syntax) a part of it; a rule is selected if all that are
//     present match. Both have at most 1000 bytes. Matching takes five seconds at most.
//   * LOAD_RULESPEC_FILE skips selected rules that UPSERT_RULESPEC would refuse; with
//     validate it refuses the file instead. To DUMP_RULES validate makes no
//     difference, as all rules in the catalog are valid. A key of more than 255 bytes
//     is refused whether or not it is selected.
//   * The extension of a report_file is .html or .htm.
//   * A file's address has the scheme FILE, a path, and "localhost" or nothing as its
//     host; the path is taken byte by byte, and has no zero byte.

#ifndef VOK_APPS_RULE_SERVER_RULE_SERVER_H_
#define VOK_APPS_RULE_SERVER_RULE_SERVER_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

#include "rule_server/catalog.h"
#include "rule_server/environment.h"
#include "rule_server/files.h"
#include "rule_server/limits.h"
#include "rule_server/sessions.h"

namespace rule_server {

// The longest request that a transport takes, in bytes. Hostile bytes take up to 58 times
// their length in memory once they are parsed, so that this one takes 58 MiB.
constexpr std::size_t kMaxRequestBytes = 1U << 20;

// Thread-safe; a long request delays no other. Each function of the environment is
// called by one thread at a time.
class Server {
 public:
  explicit Server(Environment environment);

  // Performs the request. Answers every request, whatever is in it, with a response
  // that is initialized and has the body of its type and no other. Throws nothing
  // but what a lack of memory throws.
  vok::rulecheck::Response handle(const vok::rulecheck::Request& request);

  // Whether the request uses files, or asks for more than a few MiB. A transport that
  // performs one such request at a time holds one large result in memory.
  bool takesLong(const vok::rulecheck::Request& request) const;

  // Whether a STOP_SERVER was accepted. From then on each request is refused.
  bool stopped() const;

 private:
  vok::rulecheck::Response perform(const vok::rulecheck::Request& request);
  vok::rulecheck::Response perform(const vok::rulecheck::CreateAffirmation& body);
  vok::rulecheck::Response perform(const vok::rulecheck::CreateViolation& body);
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
  vok::rulecheck::Response record(const Body& body,
                                  Made (*make)(const vok::rulecheck::RuleSpec&, const Body&));
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
  bool stopped_ = false;
};

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_RULE_SERVER_H_
