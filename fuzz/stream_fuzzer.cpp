// SPDX-License-Identifier: Apache-2.0

// The input is lines. Each that is a Request in text format is sent to the rule server; any other
// becomes the content of the files of rules that requests can name.

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "check.h"
#include "common/framing.h"
#include "fake_environment.h"
#include "rule_server/errors.h"
#include "rule_server/rule_server.h"
#include "support/messages.h"

namespace {

using fuzz::check;
using fuzz::checkEqual;
using tests::bytesOf;
using namespace vok::rulecheck;

// A session and rules for the requests of the input.
const char* const kFirstRequests =
    "type: START_SESSION start_session { name: 'n' uuid: 's' }\n"
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'W' full_name: 'Widths'"
    "  dynamic_categories { key: 2 value: true } } }\n"
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'R' full_name: 'Resets'"
    "  disposition: READONLY } }\n";

void checkResponse(const Response& response) {
  check(tests::isComplete(response), "response", "a required field is absent");
  for (int type = Response::STATUS_RESPONSE; type <= Response::VIOLATION; ++type) {
    const auto* body = Response::descriptor()->FindFieldByNumber(type + 2);
    check(response.GetReflection()->HasField(response, body) == (type == response.type()),
          "response", "it has another body than that of its type");
  }
  check(!response.has_error() || (!response.error().msg().empty() && response.error().code() > 0 &&
                                  response.error().msg().find('\n') == std::string::npos),
        "error", "it has no code, or its text is not one line");
  std::string stream;
  std::size_t position = 0;
  Response received;
  check(apps::appendFramed(response, &stream) && apps::readFramed(stream, &position, &received) &&
            position == stream.size(),
        "response", "it cannot be sent");
  checkEqual(bytesOf(received), bytesOf(response), "response", "sending changes it");
}

template <typename Findings>
void addKeys(const Findings& findings, int count, std::set<int>* ids, std::set<std::string>* keys) {
  check(count == findings.hashmap_size(), "result", "a count is wrong");
  for (const auto& [id, finding] : findings.hashmap()) {
    check(id == finding.id() && ids->insert(id).second, "result", "an id is wrong");
    keys->insert(finding.rule_key());
  }
}

void checkRules(const RuleSpecMap& rules, const std::set<std::string>& keys) {
  check(rules.hashmap_size() == static_cast<int>(keys.size()), "result", "it has other rules");
  for (const std::string& key : keys) {
    check(rules.hashmap().count(key) == 1, "result", "it lacks the rule of a finding");
  }
}

void checkResult(const SessionResult& result) {
  std::set<int> ids;
  std::set<std::string> violated;
  std::set<std::string> affirmed;
  addKeys(result.violations(), result.violation_count(), &ids, &violated);
  addKeys(result.waived_violations(), result.waived_count(), &ids, &violated);
  addKeys(result.affirmations(), result.affirmation_count(), &ids, &affirmed);
  check(ids.empty() || (*ids.begin() == 1 && *ids.rbegin() == static_cast<int>(ids.size())),
        "result", "its ids are not 1, 2, ...");
  checkRules(result.specs_violated(), violated);
  checkRules(result.specs_affirmed(), affirmed);
}

void checkCatalog(const RuleSpecMap& rules) {
  for (const auto& [key, rule] : rules.hashmap()) {
    check(!key.empty() && key.size() <= 255 && key == rule.key() && !rule.full_name().empty() &&
              rule.categories().count(1) == 0 && rule.dynamic_categories().count(1) == 0,
          "catalog", "it has an invalid rule");
  }
}

class Conversation {
 public:
  Conversation() : server_(environment_.environment()) {}

  void take(const std::string& line) {
    Request request;
    if (fuzz::read(line, &request) && !line.empty()) {
      send(request);
    } else {
      for (const char* name : {"rules.pb", "rules.txtpb", "rules.json"}) {
        environment_.files.contents[name] = line;
      }
    }
  }

 private:
  // What the server has recorded.
  struct State {
    // The result of each session, by its uuid.
    std::map<std::string, SessionResult> results;
    RuleSpecMap rules;

    std::string bytes() const {
      std::string bytes = bytesOf(rules);
      for (const auto& [uuid, result] : results) {
        bytes += uuid + bytesOf(result);
      }
      return bytes;
    }
  };

  void send(const Request& request) {
    const bool wasStopped = server_.stopped();
    const Response response = server_.handle(request);
    checkResponse(response);
    if (wasStopped) {
      check(response.error().code() == static_cast<int>(rule_server::ErrorCode::ServerStopped),
            "stopped server", "a request succeeded");
    }
    if (server_.stopped()) {
      return;
    }
    if (response.has_session()) {
      state_.results[response.session().uuid()];
    }
    const State before = std::exchange(state_, stateNow());
    if (response.has_error()) {
      checkEqual(state_.bytes(), before.bytes(), "server", "a failed request changed something");
      return;
    }
    check(tests::isComplete(request), "server", "an incomplete request succeeded");
    checkRecorded(request, response);
    for (const auto& [key, rule] : before.rules.hashmap()) {
      const auto now = state_.rules.hashmap().find(key);
      check(now != state_.rules.hashmap().end() &&
                (rule.disposition() != RuleSpec::READONLY || bytesOf(rule) == bytesOf(now->second)),
            "catalog", "a rule is gone, or a read-only one has changed");
    }
  }

  // What was acknowledged is in the state.
  void checkRecorded(const Request& request, const Response& response) {
    if (response.has_violation()) {
      const auto& result = state_.results[request.create_violation().session_uuid()];
      const int id = response.violation().id();
      const bool isWaived =
          request.create_violation().dynamic_category_values().count("waiver") != 0;
      const auto& map = isWaived ? result.waived_violations() : result.violations();
      check(map.hashmap().count(id) == 1, "result", "a violation is lost");
      checkEqual(bytesOf(map.hashmap().at(id)), bytesOf(response.violation()), "result",
                 "a violation differs");
    } else if (response.has_affirmation()) {
      const auto& map =
          state_.results[request.create_affirmation().session_uuid()].affirmations().hashmap();
      const int id = response.affirmation().id();
      check(map.count(id) == 1, "result", "an affirmation is lost");
      checkEqual(bytesOf(map.at(id)), bytesOf(response.affirmation()), "result",
                 "an affirmation differs");
    } else if (request.type() == Request::UPSERT_RULESPEC) {
      const RuleSpec& rule = request.upsert_rulespec().rule_spec();
      checkEqual(bytesOf(state_.rules.hashmap().at(rule.key())), bytesOf(rule), "catalog",
                 "a rule differs");
    }
  }

  State stateNow() {
    State state;
    for (const auto& [uuid, before] : state_.results) {
      Request request;
      request.set_type(Request::GET_SESSION_RESULT);
      request.mutable_get_session_result()->set_session_uuid(uuid);
      const Response response = server_.handle(request);
      checkResponse(response);
      check(response.has_session_result(), "result", "it cannot be read");
      checkResult(response.session_result());
      state.results[uuid] = response.session_result();
    }
    const std::string dump = "dump of the fuzzer.pb";
    Request request;
    request.set_type(Request::DUMP_RULES);
    request.mutable_dump_rules()->mutable_data_file()->set_scheme(Resource::FILE);
    request.mutable_dump_rules()->mutable_data_file()->set_path(dump);
    check(server_.handle(request).has_status() &&
              state.rules.ParseFromString(environment_.files.contents[dump]),
          "catalog", "it cannot be read");
    checkCatalog(state.rules);
    return state;
  }

  tests::FakeEnvironment environment_;
  rule_server::Server server_;
  State state_;
};

// Any bytes can be read as frames, up to the first one that is refused.
void checkFraming(const std::string& stream) {
  std::size_t position = 0;
  for (std::size_t start = 0;; start = position) {
    Request request;
    if (!apps::readFramed(stream, &position, &request)) {
      check(position == start, "framing", "a refused frame is skipped");
      return;
    }
    check(position > start && position <= stream.size(), "framing", "a frame ends elsewhere");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  checkFraming(input);
  Conversation conversation;
  std::istringstream lines(kFirstRequests + input);
  for (std::string line; std::getline(lines, line);) {
    conversation.take(line);
  }
  return 0;
}
