// The whole conversation, over recorded output of Verilator's.

#include "lint_client/report.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <stdexcept>
#include <string>

#include "common/message_file.h"
#include "lint_client/catalog.h"
#include "support/messages.h"

namespace {

using lint_client::Findings;
using vok::rulecheck::SessionResult;
using vok::rulecheck::StartSession;
using vok::rulecheck::Violation;

class MemoryFiles : public rule_server::Files {
 public:
  std::string read(const std::string& path) override {
    throw apps::FileError(path + ": cannot be read");
  }
  void write(const std::string& path, const std::string& content) override {
    contents[path] = content;
  }
  std::map<std::string, std::string> contents;
};

// A client and a server with a fixed clock and a fixed uuid.
class Road {
 public:
  Road()
      : server_(environment()),
        connection_(lint_client::framed([this](const std::string& requests) {
          return lint_client::serve(server_, requests);
        })) {}

  SessionResult report(const Findings& findings) {
    return lint_client::report(
        connection_,
        tests::parse<StartSession>("name: 'lint' report_file { scheme: FILE path: 'r.html' }"
                                   " proto_file { scheme: FILE path: 's.pb' }"),
        findings);
  }

  lint_client::Connection& connection() { return connection_; }
  MemoryFiles files;

 private:
  rule_server::Environment environment() {
    rule_server::Environment environment;
    environment.files = &files;
    environment.now = [] { return 1700000000000; };
    environment.newUuid = [] { return "00000000-0000-4000-8000-000000000000"; };
    environment.page = [](const SessionResult& result) {
      return "page with " + std::to_string(result.violation_count());
    };
    return environment;
  }

  rule_server::Server server_;
  lint_client::Connection connection_;
};

Findings findingsFrom(const std::string& name) {
  Findings findings;
  findings.messages =
      lint_client::parseMessages(apps::readFile(std::string(RECORDED) + "/" + name));
  findings.directory = "/designs";
  return findings;
}

TEST(Reports, OfANarrowDesign) {
  Road road;
  Findings findings = findingsFrom("narrow.txt");
  findings.waivers = {lint_client::parseWaiver("WIDTH:narrow.v=the upper half is not needed")};
  SessionResult result = road.report(findings);

  EXPECT_EQ(4u, result.specs_violated().hashmap().size());
  EXPECT_EQ(result.affirmation_count(), static_cast<int>(result.specs_affirmed().hashmap().size()));
  EXPECT_EQ(lint_client::catalog().hashmap().size() - 4,
            result.specs_affirmed().hashmap().size());
  result.clear_affirmations();
  result.clear_affirmation_count();
  result.clear_specs_violated();
  result.clear_specs_affirmed();
  SessionResult expected;
  apps::decodeFrom("narrow.txtpb", apps::readFile(std::string(RECORDED) + "/narrow.txtpb"),
                       &expected);
  EXPECT_EQ(tests::textOf(expected), tests::textOf(result));
}

TEST(Reports, AreWrittenByTheServer) {
  Road road;
  const SessionResult result = road.report(findingsFrom("narrow.txt"));
  EXPECT_EQ("page with 4", road.files.contents["r.html"]);
  EXPECT_EQ(tests::bytesOf(result), road.files.contents["s.pb"]);
}

TEST(Reports, HaveOneFindingForEachMessageAndAffirmTheOtherRules) {
  for (const std::string name : {"narrow.txt", "warnings.txt", "own_words.txt"}) {
    SCOPED_TRACE(name);
    Road road;
    const Findings findings = findingsFrom(name);
    const SessionResult result = road.report(findings);
    std::set<std::string> violated;
    for (const auto& message : findings.messages) {
      violated.insert(lint_client::ruleKeyOf(message));
    }
    EXPECT_EQ(static_cast<int>(findings.messages.size()), result.violation_count());
    EXPECT_EQ(violated.size(), result.specs_violated().hashmap().size());
    const std::size_t rules = lint_client::catalog().hashmap().size();
    EXPECT_EQ(rules - violated.size(), result.specs_affirmed().hashmap().size());
    // Start, rules, findings, affirmations, result, report, stop.
    EXPECT_EQ(1 + rules + findings.messages.size() + (rules - violated.size()) + 3,
              road.connection().requests());
  }
}

TEST(Reports, OfCleanDesignsAffirmAllRules) {
  Road road;
  const SessionResult result = road.report(Findings());
  EXPECT_EQ(0, result.violation_count());
  EXPECT_EQ(static_cast<int>(lint_client::catalog().hashmap().size()),
            result.affirmation_count());
}

TEST(Reports, OfChecksThatWereCutShortAffirmNothing) {
  Road road;
  const SessionResult result = road.report(findingsFrom("errors.txt"));
  EXPECT_EQ(3, result.violation_count());
  EXPECT_EQ(0, result.affirmation_count());
}

TEST(Reports, HaveTheSeverityOfTheRuleOrOfAnError) {
  Road road;
  Findings findings;
  findings.messages = lint_client::parseMessages(
      "%Warning-INFINITELOOP: a.v:1:2: text\n%Warning-WIDTH: a.v:1:2: text\n"
      "%Warning-BRANDNEW: a.v:1:2: text\n%Error-WIDTH: a.v:1:2: text\n%Error: a.v:1:2: text\n"
      "%Error-UNHEARDOF: a.v:1:2: text\n");
  const SessionResult result = road.report(findings);
  const Violation::Severity expected[] = {Violation::SEV_FATAL,   Violation::SEV_WARNING,
                                          Violation::SEV_WARNING, Violation::SEV_ERROR,
                                          Violation::SEV_ERROR,   Violation::SEV_ERROR};
  ASSERT_EQ(6, result.violation_count());
  for (int id = 1; id <= 6; ++id) {
    EXPECT_EQ(expected[id - 1], result.violations().hashmap().at(id).severity()) << id;
  }
  EXPECT_EQ(1u, result.specs_violated().hashmap().count("BRANDNEW"));
  EXPECT_EQ(1u, result.specs_violated().hashmap().count("ERROR"));
}

TEST(Reports, KeepWaivedFindingsApart) {
  Road road;
  Findings findings = findingsFrom("warnings.txt");
  findings.waivers = {lint_client::parseWaiver("UNUSEDSIGNAL=later"),
                      lint_client::parseWaiver("WIDTH:other.sv=not here")};
  const SessionResult result = road.report(findings);
  EXPECT_EQ(6, result.waived_count());
  EXPECT_EQ(static_cast<int>(findings.messages.size()) - 6, result.violation_count());
  for (const auto& entry : result.waived_violations().hashmap()) {
    EXPECT_EQ("UNUSEDSIGNAL", entry.second.rule_key());
    EXPECT_EQ("later", entry.second.categories().at(1));
  }
}

TEST(Reports, StopTheSession) {
  Road road;
  const SessionResult result = road.report(Findings());
  auto request = tests::parse<vok::rulecheck::Request>("type: STOP_SESSION stop_session { }");
  *request.mutable_stop_session()->mutable_session() = result.session();
  EXPECT_THROW(road.connection().call(request), std::runtime_error);
}

TEST(Reports, FailWithTheServer) {
  Road road;
  road.report(Findings());
  // The uuid is the same again.
  EXPECT_THROW(road.report(Findings()), std::runtime_error);
}

}  // namespace
