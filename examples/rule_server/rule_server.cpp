#include "rule_server/rule_server.h"

#include <google/protobuf/message.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <utility>

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

SessionResult emptyResult(const Session& session) {
  SessionResult result;
  *result.mutable_session() = session;
  result.set_violation_count(0);
  result.set_waived_count(0);
  result.set_affirmation_count(0);
  result.mutable_violations();
  result.mutable_waived_violations();
  result.mutable_affirmations();
  return result;
}

void updateCounts(SessionResult* result) {
  result->set_violation_count(static_cast<std::int32_t>(result->violations().hashmap().size()));
  result->set_waived_count(static_cast<std::int32_t>(result->waived_violations().hashmap().size()));
  result->set_affirmation_count(static_cast<std::int32_t>(result->affirmations().hashmap().size()));
}

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

// Calls work, and gives the code to its failure to do something with a file.
template <typename Work>
auto failingAs(ErrorCode code, Work work) {
  try {
    return work();
  } catch (const examples::FileError& error) {
    throw Failure(code, error.what());
  }
}

std::string encoded(const std::string& path, const google::protobuf::Message& message) {
  return failingAs(ErrorCode::FileFormat, [&] { return examples::encodeFor(path, message); });
}

RuleSpecMap decoded(const std::string& path, const std::string& content) {
  return failingAs(ErrorCode::FileFormat, [&] {
    RuleSpecMap rules;
    examples::decodeFrom(path, content, &rules);
    return rules;
  });
}

void write(Files& files, const std::string& path, const std::string& content) {
  failingAs(ErrorCode::FileAccess, [&] { files.write(path, content); });
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

Server::Server(Environment environment) : environment_(std::move(environment)) {}

Response Server::handle(const Request& request) {
  const std::lock_guard<std::mutex> lock(mutex_);
  try {
    if (stopped_) {
      throw Failure(ErrorCode::ServerStopped, "the server is stopped");
    }
    checkEnvelope(request);
    return perform(request);
  } catch (const Failure& failure) {
    return respond(failure.code(), failure.what());
  } catch (const std::exception& error) {
    return respond(ErrorCode::Internal, error.what());
  }
}

bool Server::stopped() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return stopped_;
}

Response Server::perform(const Request& request) {
  switch (request.type()) {
    case Request::CREATE_AFFIRMATION: return perform(request.create_affirmation());
    case Request::CREATE_VIOLATION: return perform(request.create_violation());
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

Response Server::perform(const vok::rulecheck::CreateAffirmation& body) {
  SessionState& state = openSession(body.session_uuid());
  const auto affirmation =
      makeAffirmation(catalogue_.inForce(body.rule_key()), body, state.lastId + 1);
  (*state.result.mutable_affirmations()->mutable_hashmap())[++state.lastId] = affirmation;
  updateCounts(&state.result);
  return respond(affirmation);
}

Response Server::perform(const vok::rulecheck::CreateViolation& body) {
  SessionState& state = openSession(body.session_uuid());
  const auto violation = makeViolation(catalogue_.inForce(body.rule_key()), body, state.lastId + 1);
  auto* map =
      isWaived(body) ? state.result.mutable_waived_violations() : state.result.mutable_violations();
  (*map->mutable_hashmap())[++state.lastId] = violation;
  updateCounts(&state.result);
  return respond(violation);
}

Response Server::perform(const vok::rulecheck::GetRuleSpecs& body) {
  const SessionResult result = resultOf(session(body.session().uuid()));
  SessionResult specs;
  *specs.mutable_session() = result.session();
  *specs.mutable_specs_violated() = result.specs_violated();
  *specs.mutable_specs_affirmed() = result.specs_affirmed();
  return respond(specs);
}

Response Server::perform(const vok::rulecheck::GetSession& body) {
  return respond(session(body.session_uuid()).result.session());
}

Response Server::perform(const vok::rulecheck::GetSessionResult& body) {
  return respond(resultOf(session(body.session_uuid())));
}

Response Server::perform(const vok::rulecheck::GetVersion& /*body*/) {
  vok::rulecheck::Version version;
  version.set_major(vok::rulecheck::MAJOR);
  version.set_minor(vok::rulecheck::MINOR);
  version.set_patch(vok::rulecheck::PATCH);
  return respond(version);
}

Response Server::perform(const vok::rulecheck::LoadRuleDataFile& body) {
  const Selection selection(body);
  const std::string& path = dataFile(body);
  const std::string content =
      failingAs(ErrorCode::FileAccess, [&] { return environment_.files->read(path); });
  const auto loaded = catalogue_.load(decoded(path, content), selection, body.validate());
  return respond(counted(loaded.taken) + " loaded, " + counted(loaded.skipped) + " skipped");
}

Response Server::perform(const vok::rulecheck::ResetSession& body) {
  SessionState& state = openSession(body.session().uuid());
  state.result = emptyResult(Session(state.result.session()));
  state.lastId = 0;
  return respond("session reset");
}

Response Server::perform(const vok::rulecheck::StartSession& body) {
  Session session;
  session.set_name(body.name());
  session.set_uuid(body.uuid().empty() ? environment_.newUuid() : body.uuid());
  if (body.has_description()) {
    session.set_description(body.description());
  }
  session.set_timestamp(environment_.now());
  if (body.has_report_file()) {
    *session.mutable_report_file() = body.report_file();
  }
  if (body.has_proto_file()) {
    *session.mutable_proto_file() = body.proto_file();
  }
  if (!sessions_.emplace(session.uuid(), SessionState{emptyResult(session)}).second) {
    throw Failure(ErrorCode::SessionExists,
                  "there is a session " + quoted(session.uuid()) + " already");
  }
  return respond(session);
}

Response Server::perform(const vok::rulecheck::StopSession& body) {
  openSession(body.session().uuid()).stopped = true;
  return respond("session stopped");
}

Response Server::perform(const vok::rulecheck::UpsertRuleSpec& body) {
  if (!body.has_rule_spec()) {
    throw Failure(ErrorCode::RuleInvalid, "no rule_spec is given");
  }
  catalogue_.upsert(body.rule_spec());
  return respond("rule stored");
}

Response Server::perform(const vok::rulecheck::WriteReport& body) {
  const SessionResult result = resultOf(session(body.session().uuid()));
  const Session& about = result.session();
  if (!about.has_proto_file() && !about.has_report_file()) {
    throw Failure(ErrorCode::FileAddress, "the session has neither proto_file nor report_file");
  }
  std::map<std::string, std::string> contents;
  if (about.has_proto_file()) {
    const std::string& path = pathOf(about.proto_file());
    contents[path] = encoded(path, result);
  }
  if (about.has_report_file()) {
    contents[pathOf(about.report_file())] = environment_.page(result);
  }
  for (const auto& content : contents) {
    write(*environment_.files, content.first, content.second);
  }
  return respond("report written");
}

Response Server::perform(const vok::rulecheck::DumpRules& body) {
  const RuleSpecMap rules = catalogue_.selected(Selection(body));
  const std::string& path = dataFile(body);
  write(*environment_.files, path, encoded(path, rules));
  return respond(counted(rules.hashmap().size()) + " written");
}

Response Server::exchangeToken(const vok::rulecheck::ExchangeToken& body) const {
  checkToken(body.token());
  return respond("token accepted");
}

Response Server::stopServer(const vok::rulecheck::ExchangeToken& body) {
  checkToken(body.token());
  stopped_ = true;
  return respond("server stopped");
}

void Server::checkToken(const std::string& token) const {
  if (token.empty() || !equalInConstantTime(token, environment_.token)) {
    throw Failure(ErrorCode::TokenRefused, "the token is not this server's");
  }
}

Server::SessionState& Server::session(const std::string& uuid) {
  const auto found = sessions_.find(uuid);
  if (found == sessions_.end()) {
    throw Failure(ErrorCode::SessionUnknown, uuid.empty() ? "no session is named by its uuid"
                                                          : "there is no session " + quoted(uuid));
  }
  return found->second;
}

Server::SessionState& Server::openSession(const std::string& uuid) {
  SessionState& state = session(uuid);
  if (state.stopped) {
    throw Failure(ErrorCode::SessionStopped, "session " + quoted(uuid) + " is stopped");
  }
  return state;
}

SessionResult Server::resultOf(const SessionState& state) const {
  SessionResult result = state.result;
  for (const auto& entry : result.violations().hashmap()) {
    catalogue_.copy(entry.second.rule_key(), result.mutable_specs_violated());
  }
  for (const auto& entry : result.waived_violations().hashmap()) {
    catalogue_.copy(entry.second.rule_key(), result.mutable_specs_violated());
  }
  for (const auto& entry : result.affirmations().hashmap()) {
    catalogue_.copy(entry.second.rule_key(), result.mutable_specs_affirmed());
  }
  return result;
}

}  // namespace rule_server
