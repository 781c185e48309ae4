// SPDX-License-Identifier: Apache-2.0

#include "rule_server/rule_server.h"

#include <google/protobuf/message.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "common/message_file.h"
#include "rule_server/envelope.h"
#include "rule_server/errors.h"
#include "rule_server/files.h"
#include "rule_server/findings.h"
#include "rule_server/selection.h"

namespace rule_server {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Resource;
using vok::rulecheck::Response;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;

const std::string& pathOf(const Resource& address) {
  const bool isHere = address.scheme() == Resource::FILE &&
                      (address.host().empty() || address.host() == "localhost");
  const bool isPath = !address.path().empty() && address.path().find('\0') == std::string::npos;
  if (!isHere || !isPath) {
    throw Failure(ErrorCode::FileAddress, "not the address of a file on this host");
  }
  return address.path();
}

template <typename Body>
const std::string& dataFile(const Body& body) {
  if (!body.has_data_file()) {
    throw Failure(ErrorCode::FileAddress, "no data_file is given");
  }
  return pathOf(body.data_file());
}

void checkReportName(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  if (extension != ".html" && extension != ".htm") {
    throw Failure(ErrorCode::FileFormat, path + ": a report has the extension .html or .htm");
  }
}

// Takes as long wherever the texts differ: otherwise the time of a refusal would tell
// how many bytes of a guess are right.
bool equalInConstantTime(const std::string& guess, const std::string& secret) {
  unsigned difference = guess.size() == secret.size() ? 0 : 1;
  for (std::size_t i = 0; i < guess.size(); ++i) {
    const char expected = secret.empty() ? '\0' : secret[i % secret.size()];
    difference |= static_cast<unsigned char>(guess[i] ^ expected);
  }
  return difference == 0;
}

std::string counted(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " rule" : " rules");
}

}  // namespace

std::int64_t millisecondsSince1970() {
  using std::chrono::milliseconds;
  const auto time = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<milliseconds>(time).count();
}

std::string randomUuid() {
  std::string uuid = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  std::random_device random;
  for (char& c : uuid) {
    const std::size_t digit = random() % 16;
    if (c == 'x') {
      c = "0123456789abcdef"[digit];
    } else if (c == 'y') {
      c = "89ab"[digit % 4];
    }
  }
  return uuid;
}

Server::Server(Environment environment)
    : environment_(std::move(environment)), budget_(environment_.limits.bytes) {
  // By default malloc keeps freed small pieces apart, and joins all of them in its next large
  // allocation: after a long result that takes seconds, perhaps under the lock.
  mallopt(M_MXFAST, 0);
}

Response Server::handle(Request request) {
  try {
    if (stopped()) {
      throw Failure(ErrorCode::ServerStopped, "the server is stopped");
    }
    checkEnvelope(request);
    return perform(&request);
  } catch (const Failure& failure) {
    return respond(failure.code(), failure.what());
  } catch (const apps::FormatError& error) {
    return respond(ErrorCode::FileFormat, error.what());
  } catch (const apps::FileError& error) {
    return respond(ErrorCode::FileAccess, error.what());
  } catch (const std::bad_alloc&) {
    return respond(ErrorCode::LimitExceeded, "the server has no memory left: try again later");
  } catch (const std::exception& error) {
    return respond(ErrorCode::Internal, error.what());
  }
}

bool Server::takesLong(const Request& request) const {
  switch (request.type()) {
    case Request::GET_RULESPECS: return takesLong(request.get_rulespecs().session().uuid());
    case Request::GET_SESSION_RESULT: return takesLong(request.get_session_result().session_uuid());
    case Request::LOAD_RULESPEC_FILE:
    case Request::WRITE_REPORT:
    case Request::DUMP_RULES: return true;
    default: return false;
  }
}

// Rules can have grown since findings named them, so that few are taken for little.
bool Server::takesLong(const std::string& uuid) const {
  constexpr std::size_t kMostBytes = std::size_t{1} << 20;
  constexpr std::size_t kMostRules = 64;
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = sessions_.find(uuid);
  return found != sessions_.end() &&
         (found->second.bytes > kMostBytes ||
          found->second.violated.size() + found->second.affirmed.size() > kMostRules);
}

// The finding is made without the lock: its body may be long.
template <typename Made, typename Body>
Response Server::record(Body* body, Made (*make)(const vok::rulecheck::RuleSpec&, Body*)) {
  Rule rule;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    openSession(body->session_uuid());
    rule = catalog_.inForce(body->rule_key());
  }
  std::string bytes;
  if (!body->SerializeToString(&bytes)) {
    throw Failure(ErrorCode::LimitExceeded, "a finding has more than 2 GiB: shorten it");
  }
  Made made = make(rule->spec, body);
  Finding finding = makeFinding(rule, std::move(bytes), made, budget_);
  const std::lock_guard<std::mutex> lock(mutex_);
  made.set_id(openSession(body->session_uuid()).add(std::move(finding), environment_.limits));
  return responseWith(std::move(made));
}

Response Server::perform(Request* given) {
  const Request& request = *given;
  switch (request.type()) {
    case Request::CREATE_AFFIRMATION:
      return record(given->mutable_create_affirmation(), makeAffirmation);
    case Request::CREATE_VIOLATION: return record(given->mutable_create_violation(), makeViolation);
    case Request::EXCHANGE_TOKEN: return exchangeToken(request.exchange_token());
    case Request::GET_RULESPECS: return perform(request.get_rulespecs());
    case Request::GET_SESSION: return perform(request.get_session());
    case Request::GET_SESSION_RESULT: return perform(request.get_session_result());
    case Request::GET_VERSION: return perform(request.get_version());
    case Request::LOAD_RULESPEC_FILE: return perform(request.load_rulespec_file());
    case Request::RESET_SESSION: return perform(request.reset_session());
    case Request::START_SESSION: return perform(request.start_session());
    case Request::STOP_SESSION: return perform(request.stop_session());
    case Request::UPSERT_RULESPEC: return perform(request.upsert_rulespec());
    case Request::WRITE_REPORT: return perform(request.write_report());
    case Request::DUMP_RULES: return perform(request.dump_rules());
    case Request::STOP_SERVER: return stopServer(request.exchange_token());
  }
  throw Failure(ErrorCode::TypeMissing, "the request has no type that is known here");
}

Response Server::perform(const vok::rulecheck::GetRuleSpecs& body) {
  return responseWith(specsOf(snapshot(body.session().uuid())));
}

Response Server::perform(const vok::rulecheck::GetSession& body) {
  const auto about = [&] {
    const std::lock_guard<std::mutex> lock(mutex_);
    return session(body.session_uuid()).about;
  }();
  return responseWith(Session(*about));
}

Response Server::perform(const vok::rulecheck::GetSessionResult& body) {
  return responseWith(resultOf(snapshot(body.session_uuid())));
}

Response Server::perform(const vok::rulecheck::GetVersion& /*body*/) {
  vok::rulecheck::Version version;
  version.set_major(vok::rulecheck::MAJOR);
  version.set_minor(vok::rulecheck::MINOR);
  version.set_patch(vok::rulecheck::PATCH);
  return responseWith(std::move(version));
}

// Lengths of keys are checked before a pattern sees them.
Response Server::perform(const vok::rulecheck::LoadRuleDataFile& body) {
  Selection selection(body);
  const std::string& path = dataFile(body);
  const std::lock_guard<std::mutex> filesLock(filesMutex_);
  RuleSpecMap given;
  apps::decodeFrom(path, files().read(path), &given);
  std::vector<Rule> rules;
  std::map<std::string, Failure> refused;
  const auto unlessRefused = [&refused](const std::string& key, const auto& work) {
    try {
      work();
      return true;
    } catch (const Failure& failure) {
      refused.emplace(key, failure);
      return false;
    }
  };
  for (const auto& [key, rule] : given.hashmap()) {
    if (!hasKeyLength(key) || selection.matches(key)) {
      unlessRefused(key, [&, &key = key, &rule = rule] {
        rules.push_back(makeRule(key, rule, environment_.limits, budget_));
      });
    }
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto isRefused = [&](const Rule& rule) {
    const std::string& key = rule->spec.key();
    return !unlessRefused(key, [&] { catalog_.checkReplaceable(key); });
  };
  rules.erase(std::remove_if(rules.begin(), rules.end(), isRefused), rules.end());
  if (body.validate() && !refused.empty()) {
    throw refused.begin()->second;
  }
  catalog_.put(&rules, environment_.limits);
  return respond(counted(rules.size()) + " loaded, " + counted(refused.size()) + " skipped");
}

Response Server::perform(const vok::rulecheck::ResetSession& body) {
  SessionState::Recorded discarded;
  const std::lock_guard<std::mutex> lock(mutex_);
  discarded = openSession(body.session().uuid()).reset();
  return respond("session reset");
}

Response Server::perform(const vok::rulecheck::StartSession& body) {
  if (body.has_report_file() || body.has_proto_file()) {
    files();
  }
  Session session;
  copyStart(body, &session);
  const std::lock_guard<std::mutex> lock(mutex_);
  if (body.uuid().empty()) {
    session.set_uuid(environment_.newUuid());
  }
  session.set_timestamp(environment_.now());
  if (sessions_.count(session.uuid()) != 0) {
    throw Failure(ErrorCode::SessionExists,
                  "there is a session " + quoted(session.uuid()) + " already");
  }
  if (sessions_.size() >= environment_.limits.sessions) {
    throw Failure(ErrorCode::LimitExceeded,
                  "the server has " + std::to_string(sessions_.size()) +
                      " sessions and takes no more: reset one that is not stopped and use it "
                      "again, or restart the server with a higher limit");
  }
  sessions_.emplace(session.uuid(), SessionState(session, environment_.limits, budget_));
  return responseWith(std::move(session));
}

Response Server::perform(const vok::rulecheck::StopSession& body) {
  const std::lock_guard<std::mutex> lock(mutex_);
  openSession(body.session().uuid()).stopped = true;
  return respond("session stopped");
}

Response Server::perform(const vok::rulecheck::UpsertRuleSpec& body) {
  if (!body.has_rule_spec()) {
    throw Failure(ErrorCode::RuleInvalid, "no rule_spec is given");
  }
  const std::string& key = body.rule_spec().key();
  std::vector<Rule> rules = {makeRule(key, body.rule_spec(), environment_.limits, budget_)};
  const std::lock_guard<std::mutex> lock(mutex_);
  catalog_.checkReplaceable(key);
  catalog_.put(&rules, environment_.limits);
  return respond("rule stored");
}

Response Server::perform(const vok::rulecheck::WriteReport& body) {
  const std::lock_guard<std::mutex> lock(filesMutex_);
  const Snapshot shot = snapshot(body.session().uuid());
  const Session& about = *shot.about;
  if (!about.has_proto_file() && !about.has_report_file()) {
    throw Failure(ErrorCode::FileAddress, "the session has neither proto_file nor report_file");
  }
  const std::string protoFile = about.has_proto_file() ? pathOf(about.proto_file()) : "";
  const std::string reportFile = about.has_report_file() ? pathOf(about.report_file()) : "";
  const std::size_t bytes = bytesOf(shot);
  if (about.has_proto_file()) {
    checkText(protoFile, bytes);
  }
  if (about.has_report_file()) {
    checkReportName(reportFile);
    checkText(reportFile, bytes);
  }
  const SessionResult result = resultOf(shot);
  std::vector<std::pair<std::string, std::string>> contents;
  if (about.has_proto_file()) {
    contents.emplace_back(protoFile, apps::encodeFor(protoFile, result));
  }
  if (about.has_report_file()) {
    contents.emplace_back(reportFile, environment_.page(result));
  }
  for (const auto& [path, content] : contents) {
    files().write(path, content);
  }
  return respond("report written");
}

Response Server::perform(const vok::rulecheck::DumpRules& body) {
  Selection selection(body);
  const std::string& path = dataFile(body);
  const std::lock_guard<std::mutex> filesLock(filesMutex_);
  std::vector<Rule> rules = [&] {
    const std::lock_guard<std::mutex> lock(mutex_);
    return catalog_.all();
  }();
  const auto isLeftOut = [&](const Rule& rule) { return !selection.matches(rule->spec.key()); };
  rules.erase(std::remove_if(rules.begin(), rules.end(), isLeftOut), rules.end());
  checkText(path, bytesOf(rules));
  files().write(path, apps::encodeFor(path, specsOf(rules)));
  return respond(counted(rules.size()) + " written");
}

Response Server::exchangeToken(const vok::rulecheck::ExchangeToken& body) const {
  checkToken(body.token());
  return respond("token accepted");
}

Response Server::stopServer(const vok::rulecheck::ExchangeToken& body) {
  checkToken(body.token());
  if (stopped_.exchange(true)) {
    throw Failure(ErrorCode::ServerStopped, "the server is stopped");
  }
  return respond("server stopped");
}

void Server::checkToken(const std::string& token) const {
  if (token.empty() || !equalInConstantTime(token, environment_.token)) {
    throw Failure(ErrorCode::TokenRefused, "the token is not this server's");
  }
}

Files& Server::files() const {
  if (environment_.files == nullptr) {
    throw Failure(ErrorCode::FileAccess, "this server was given no directory for files");
  }
  return *environment_.files;
}

Snapshot Server::snapshot(const std::string& uuid) {
  Snapshot shot;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    const SessionState& state = session(uuid);
    shot.about = state.about;
    shot.findings = state.findings;
    for (const std::string& key : state.violated) {
      shot.violated.push_back(catalog_.at(key));
    }
    for (const std::string& key : state.affirmed) {
      shot.affirmed.push_back(catalog_.at(key));
    }
  }
  checkBytes([] { return std::string("the result"); }, bytesOf(shot),
             environment_.limits.sessionBytes, "rules have grown; replace them by shorter ones");
  return shot;
}

void Server::checkText(const std::string& path, std::size_t bytes) const {
  if (!apps::isBinary(path)) {
    checkBytes([&] { return path; }, bytes, environment_.limits.textBytes,
               "name a file with the extension .pb, which takes more");
  }
}

SessionState& Server::session(const std::string& uuid) {
  const auto found = sessions_.find(uuid);
  if (found == sessions_.end()) {
    throw Failure(ErrorCode::SessionUnknown, uuid.empty() ? "no session is named by its uuid"
                                                          : "there is no session " + quoted(uuid));
  }
  return found->second;
}

SessionState& Server::openSession(const std::string& uuid) {
  SessionState& state = session(uuid);
  if (state.stopped) {
    throw Failure(ErrorCode::SessionStopped, "session " + quoted(uuid) + " is stopped");
  }
  return state;
}

}  // namespace rule_server
