// SPDX-License-Identifier: Apache-2.0

#include "server_oracle.h"

#include <cstddef>

#include "check.h"
#include "rule_server/errors.h"
#include "rule_server/findings.h"
#include "support/messages.h"

namespace fuzz {
namespace {

using namespace vok::rulecheck;
using rule_server::ErrorCode;
using tests::bytesOf;

const std::string kDump = "oracle.pb";

const std::set<int>& errorCodes() {
  static const std::set<int> codes = {1,  2,  3,  4,  5,  6,  10, 11, 12, 20,
                                      21, 22, 23, 24, 30, 31, 32, 33, 40, 41};
  return codes;
}

// What a request of that type is answered with if it succeeds.
Response::ResponseType answerTo(Request::RequestType type) {
  switch (type) {
    case Request::CREATE_AFFIRMATION: return Response::AFFIRMATION;
    case Request::CREATE_VIOLATION: return Response::VIOLATION;
    case Request::GET_SESSION:
    case Request::START_SESSION: return Response::SESSION;
    case Request::GET_RULESPECS:
    case Request::GET_SESSION_RESULT: return Response::SESSION_RESULT;
    case Request::GET_VERSION: return Response::VERSION;
    default: return Response::STATUS_RESPONSE;
  }
}

std::set<int> bodiesOf(const Response& response) {
  std::set<int> types;
  const auto note = [&types](bool isSet, int type) {
    if (isSet) {
      types.insert(type);
    }
  };
  note(response.has_status(), Response::STATUS_RESPONSE);
  note(response.has_error(), Response::ERROR_RESPONSE);
  note(response.has_affirmation(), Response::AFFIRMATION);
  note(response.has_session(), Response::SESSION);
  note(response.has_session_result(), Response::SESSION_RESULT);
  note(response.has_version(), Response::VERSION);
  note(response.has_violation(), Response::VIOLATION);
  return types;
}

void checkWellFormed(const Response& response) {
  check(tests::isComplete(response), "response", "a required field is absent");
  check(bodiesOf(response) == std::set<int>{response.type()}, "response",
        "it has not the body of its type alone");
}

void checkError(const ErrorResponse& error) {
  check(errorCodes().count(error.code()) == 1, "error", "its code is not in the list of codes");
  check(!error.msg().empty() && error.msg().find_first_of("\r\n") == std::string::npos, "error",
        "its text is not one line");
}

template <typename Map>
void checkFindings(const Map& findings, int count, const std::map<int, std::string>& acknowledged) {
  check(findings.hashmap().size() == acknowledged.size(), "result",
        "it has another number of findings than was acknowledged");
  check(count >= 0 && static_cast<std::size_t>(count) == acknowledged.size(), "result",
        "a count is not the number of findings");
  for (const auto& entry : findings.hashmap()) {
    const auto found = acknowledged.find(entry.first);
    check(found != acknowledged.end(), "result", "it has a finding that was not acknowledged");
    check(entry.second.id() == entry.first, "result", "a finding's id is not its key");
    checkEqual(bytesOf(entry.second), found->second, "result",
               "a finding is not what was acknowledged");
  }
}

void checkVersion(const Version& version) {
  check(version.major() == 1 && version.minor() == 4 && version.patch() == 0, "version",
        "it is not 1.4.0");
}

}  // namespace

ServerOracle::ServerOracle(rule_server::Server& server, tests::MemoryFiles& files)
    : server_(server), files_(files) {}

Response ServerOracle::ask(const Request& request) {
  const bool wasStopped = stopped_;
  const Response response = server_.handle(request);
  checkWellFormed(response);
  if (response.type() == Response::ERROR_RESPONSE) {
    checkError(response.error());
  } else {
    check(!wasStopped, "stopped server", "a request succeeded");
    check(tests::isComplete(request), "request", "it is incomplete, but succeeded");
    check(response.type() == answerTo(request.type()), "response", "it is of the wrong type");
    note(request, response);
  }
  check((response.error().code() == static_cast<int>(ErrorCode::ServerStopped)) == wasStopped,
        "stopped server", "a request was refused for another reason, or before it was stopped");
  check(server_.stopped() == stopped_, "stopped server",
        "it is stopped without a request that asked for it, or the reverse");
  return response;
}

void ServerOracle::note(const Request& request, const Response& response) {
  switch (request.type()) {
    case Request::CREATE_AFFIRMATION:
      noteFinding(request.create_affirmation(), response.affirmation());
      break;
    case Request::CREATE_VIOLATION:
      noteFinding(request.create_violation(), response.violation());
      break;
    case Request::STOP_SERVER: stopped_ = true; [[fallthrough]];
    case Request::EXCHANGE_TOKEN:
      check(request.exchange_token().token() == "secret", "token", "a wrong one was accepted");
      break;
    case Request::GET_RULESPECS:
      checkSpecs(book(request.get_rulespecs().session().uuid()), response.session_result());
      break;
    case Request::GET_SESSION:
      checkEqual(bytesOf(response.session()),
                 bytesOf(book(request.get_session().session_uuid()).session), "session",
                 "it is not what was acknowledged");
      break;
    case Request::GET_SESSION_RESULT:
      checkResult(book(request.get_session_result().session_uuid()), response.session_result());
      break;
    case Request::GET_VERSION: checkVersion(response.version()); break;
    case Request::LOAD_RULESPEC_FILE: noteLoadedRules(); break;
    case Request::RESET_SESSION: {
      Book& reset = openBook(request.reset_session().session().uuid());
      const Session session = reset.session;
      reset = Book();
      reset.session = session;
      break;
    }
    case Request::START_SESSION: noteSession(request.start_session(), response.session()); break;
    case Request::STOP_SESSION:
      openBook(request.stop_session().session().uuid()).stopped = true;
      break;
    case Request::UPSERT_RULESPEC:
      noteRule(request.upsert_rulespec().rule_spec().key(), request.upsert_rulespec().rule_spec());
      break;
    case Request::WRITE_REPORT: noteReport(book(request.write_report().session().uuid())); break;
    case Request::DUMP_RULES: break;
  }
}

void ServerOracle::noteFinding(const CreateViolation& body, const Violation& violation) {
  Book& to = openBook(body.session_uuid());
  check(violation.id() == ++to.lastId, "violation", "its id is not the next one");
  check(violation.rule_key() == body.rule_key(), "violation", "it is one of another rule");
  const bool isWaived = body.dynamic_category_values().count("waiver") != 0;
  (isWaived ? to.waived : to.violations)[violation.id()] = bytesOf(violation);
  to.rulesViolated.insert(body.rule_key());
}

void ServerOracle::noteFinding(const CreateAffirmation& body, const Affirmation& affirmation) {
  Book& to = openBook(body.session_uuid());
  check(affirmation.id() == ++to.lastId, "affirmation", "its id is not the next one");
  check(affirmation.rule_key() == body.rule_key(), "affirmation", "it is one of another rule");
  to.affirmations[affirmation.id()] = bytesOf(affirmation);
  to.rulesAffirmed.insert(body.rule_key());
}

void ServerOracle::noteSession(const StartSession& body, const Session& session) {
  check(session.name() == body.name(), "session", "its name is not the one given");
  check(!session.uuid().empty(), "session", "its uuid is empty");
  check(body.uuid().empty() || session.uuid() == body.uuid(), "session",
        "its uuid is not the one given");
  Book fresh;
  fresh.session = session;
  check(books_.emplace(session.uuid(), fresh).second, "session", "its uuid was taken before");
}

// The report holds the result as it is.
void ServerOracle::noteReport(const Book& about) const {
  const std::string& path = about.session.proto_file().path();
  const bool isBinary = path.size() > 3 && path.substr(path.size() - 3) == ".pb";
  if (!isBinary) {
    return;
  }
  SessionResult written;
  check(files_.contents.count(path) == 1, "report", "it was not written");
  check(written.ParseFromString(files_.contents.at(path)), "report", "it cannot be parsed");
  checkResult(about, written);
}

void ServerOracle::noteRule(const std::string& key, const RuleSpec& rule) {
  const auto held = rules_.hashmap().find(key);
  check(held == rules_.hashmap().end() || held->second.disposition() != RuleSpec::READONLY,
        "catalog", "a read-only rule was replaced");
  (*rules_.mutable_hashmap())[key] = rule;
}

void ServerOracle::noteLoadedRules() {
  const RuleSpecMap loaded = catalog();
  for (const auto& held : rules_.hashmap()) {
    const auto found = loaded.hashmap().find(held.first);
    check(found != loaded.hashmap().end(), "catalog", "a rule went away when others came");
    check(held.second.disposition() != RuleSpec::READONLY ||
              bytesOf(found->second) == bytesOf(held.second),
          "catalog", "a read-only rule was replaced");
  }
  rules_ = loaded;
}

void ServerOracle::checkRule(const std::string& key, const RuleSpec& rule) const {
  const auto held = rules_.hashmap().find(key);
  check(held != rules_.hashmap().end(), "rule", "it was never acknowledged");
  checkEqual(bytesOf(rule), bytesOf(held->second), "rule", "it is not what was given last");
}

void ServerOracle::checkRules(const std::set<std::string>& keys, const RuleSpecMap& rules) const {
  check(rules.hashmap().size() == keys.size(), "result", "its rules are not those of its findings");
  for (const auto& entry : rules.hashmap()) {
    check(keys.count(entry.first) == 1, "result", "it has a rule that no finding names");
    checkRule(entry.first, entry.second);
  }
}

void ServerOracle::checkResult(const Book& about, const SessionResult& result) const {
  checkEqual(bytesOf(result.session()), bytesOf(about.session), "result", "its session differs");
  checkFindings(result.violations(), result.violation_count(), about.violations);
  checkFindings(result.waived_violations(), result.waived_count(), about.waived);
  checkFindings(result.affirmations(), result.affirmation_count(), about.affirmations);
  checkRules(about.rulesViolated, result.specs_violated());
  checkRules(about.rulesAffirmed, result.specs_affirmed());
}

void ServerOracle::checkSpecs(const Book& about, const SessionResult& result) const {
  SessionResult expected;
  *expected.mutable_session() = about.session;
  *expected.mutable_specs_violated() = result.specs_violated();
  *expected.mutable_specs_affirmed() = result.specs_affirmed();
  checkEqual(bytesOf(result), bytesOf(expected), "result",
             "asked for rules, it has another session, findings or counts");
  checkRules(about.rulesViolated, result.specs_violated());
  checkRules(about.rulesAffirmed, result.specs_affirmed());
}

RuleSpecMap ServerOracle::catalog() {
  Request request;
  request.set_type(Request::DUMP_RULES);
  request.mutable_dump_rules()->mutable_data_file()->set_scheme(Resource::FILE);
  request.mutable_dump_rules()->mutable_data_file()->set_path(kDump);
  check(ask(request).type() == Response::STATUS_RESPONSE, "catalog", "it cannot be written");
  RuleSpecMap rules;
  check(rules.ParseFromString(files_.contents.at(kDump)), "catalog", "it cannot be parsed");
  files_.contents.erase(kDump);
  for (const auto& entry : rules.hashmap()) {
    const RuleSpec& rule = entry.second;
    check(!entry.first.empty() && entry.first.size() <= 255 && entry.first == rule.key() &&
              !rule.full_name().empty() && rule.categories().count(1) == 0 &&
              rule.dynamic_categories().count(1) == 0,
          "catalog", "it has an invalid rule");
  }
  return rules;
}

ServerOracle::Book& ServerOracle::book(const std::string& uuid) {
  const auto found = books_.find(uuid);
  check(found != books_.end(), "session", "a request succeeded for one that never was");
  return found->second;
}

ServerOracle::Book& ServerOracle::openBook(const std::string& uuid) {
  Book& found = book(uuid);
  check(!found.stopped, "session", "a request succeeded that a stopped one does not take");
  return found;
}

void ServerOracle::checkEverything() {
  if (stopped_) {
    return;
  }
  const RuleSpecMap rules = catalog();
  check(rules.hashmap().size() == rules_.hashmap().size(), "catalog",
        "it has another number of rules than was acknowledged");
  for (const auto& entry : rules.hashmap()) {
    checkRule(entry.first, entry.second);
  }
  for (const auto& entry : books_) {
    Request request;
    request.set_type(Request::GET_SESSION_RESULT);
    request.mutable_get_session_result()->set_session_uuid(entry.first);
    check(ask(request).type() == Response::SESSION_RESULT, "result", "it cannot be had");
  }
}

}  // namespace fuzz
