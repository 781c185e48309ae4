// SPDX-License-Identifier: Apache-2.0

// The input is lines. Each that is a Request in text format is sent to the rule server; any other
// becomes the content of the files of rules that requests can name.

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "fuzz.h"
#include "rule_server/errors.h"
#include "support/messages.h"
#include "test_server.h"

namespace {

using tests::bytesOf;
using namespace vok::rulecheck;

// A session and rules for the requests of the input.
const char* const kFirstRequests =
    "type: START_SESSION start_session { name: 'n' uuid: 's' }\n"
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'W' full_name: 'Widths'"
    "  dynamic_categories { key: 2 value: true } } }\n"
    "type: UPSERT_RULESPEC upsert_rulespec { rule_spec { key: 'R' full_name: 'Resets'"
    "  disposition: READONLY } }\n";

void expectRules(const RuleSpecMap& rules, const std::set<std::string>& keys) {
  std::set<std::string> found;
  for (const auto& rule : rules.hashmap()) {
    found.insert(rule.first);
  }
  EXPECT_EQ(found, keys);
}

template <typename Findings>
void addRules(const Findings& findings, std::set<std::string>* keys) {
  for (const auto& finding : findings.hashmap()) {
    keys->insert(finding.second.rule_key());
  }
}

void expectRulesOfFindings(const SessionResult& result) {
  std::set<std::string> violated;
  std::set<std::string> affirmed;
  addRules(result.violations(), &violated);
  addRules(result.waived_violations(), &violated);
  addRules(result.affirmations(), &affirmed);
  expectRules(result.specs_violated(), violated);
  expectRules(result.specs_affirmed(), affirmed);
}

void expectValid(const RuleSpecMap& catalog) {
  for (const auto& [key, rule] : catalog.hashmap()) {
    EXPECT_EQ(key, rule.key());
    EXPECT_TRUE(!key.empty() && key.size() <= 255 && !rule.full_name().empty()) << key;
    EXPECT_TRUE(rule.categories().count(1) == 0 && rule.dynamic_categories().count(1) == 0) << key;
  }
}

class Conversation {
 public:
  void take(const std::string& line) {
    Request request;
    if (fuzz::read(line, &request) && !line.empty()) {
      send(request);
    } else {
      for (const char* name : {"rules.pb", "rules.txtpb", "rules.json"}) {
        server_.files.contents[name] = line;
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
    const bool wasStopped = server_.server.stopped();
    const Response response = server_.ask(request);
    if (wasStopped) {
      EXPECT_EQ(response.error().code(), static_cast<int>(rule_server::ErrorCode::ServerStopped));
    }
    if (server_.server.stopped()) {
      return;
    }
    if (response.has_session()) {
      state_.results[response.session().uuid()];
    }
    const State before = std::exchange(state_, stateNow());
    if (response.has_error()) {
      EXPECT_GT(response.error().code(), 0);
      EXPECT_NE(response.error().msg(), "");
      EXPECT_EQ(response.error().msg().find('\n'), std::string::npos);
      EXPECT_EQ(state_.bytes(), before.bytes()) << "a failed request changed something";
      return;
    }
    EXPECT_EQ(request.InitializationErrorString(), "");
    expectRecorded(request, response);
    for (const auto& [key, rule] : before.rules.hashmap()) {
      EXPECT_EQ(state_.rules.hashmap().count(key), 1U) << key;
      if (rule.disposition() == RuleSpec::READONLY) {
        EXPECT_EQ(bytesOf(rule), bytesOf(state_.rules.hashmap().at(key)));
      }
    }
  }

  // What was acknowledged is in the state.
  void expectRecorded(const Request& request, const Response& response) {
    if (response.has_violation()) {
      const auto& create = request.create_violation();
      const auto& result = state_.results[create.session_uuid()];
      const bool isWaived = create.dynamic_category_values().count("waiver") != 0;
      const auto& map = isWaived ? result.waived_violations() : result.violations();
      EXPECT_EQ(bytesOf(map.hashmap().at(response.violation().id())),
                bytesOf(response.violation()));
    } else if (response.has_affirmation()) {
      const auto& result = state_.results[request.create_affirmation().session_uuid()];
      EXPECT_EQ(bytesOf(result.affirmations().hashmap().at(response.affirmation().id())),
                bytesOf(response.affirmation()));
    } else if (request.type() == Request::UPSERT_RULESPEC) {
      const RuleSpec& rule = request.upsert_rulespec().rule_spec();
      EXPECT_EQ(bytesOf(state_.rules.hashmap().at(rule.key())), bytesOf(rule));
    }
  }

  State stateNow() {
    State state;
    for (const auto& [uuid, before] : state_.results) {
      state.results[uuid] = server_.result(uuid);
      EXPECT_TRUE(state.results[uuid].has_session());
      expectRulesOfFindings(state.results[uuid]);
    }
    const std::string dump = "dump of the fuzzer.pb";
    Request request;
    request.set_type(Request::DUMP_RULES);
    request.mutable_dump_rules()->mutable_data_file()->set_scheme(Resource::FILE);
    request.mutable_dump_rules()->mutable_data_file()->set_path(dump);
    EXPECT_TRUE(server_.ask(request).has_status());
    EXPECT_TRUE(state.rules.ParseFromString(server_.files.contents[dump]));
    expectValid(state.rules);
    return state;
  }

  tests::TestServer server_;
  State state_;
};

}  // namespace

void fuzz::run(const std::string& input) {
  Conversation conversation;
  std::istringstream lines(kFirstRequests + input);
  for (std::string line; std::getline(lines, line);) {
    conversation.take(line);
  }
}
