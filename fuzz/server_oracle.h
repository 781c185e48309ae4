// SPDX-License-Identifier: Apache-2.0

// Remembers what a rule server has acknowledged, and compares it with later answers. Whatever does
// not agree ends the process with a sentence.
//
// What must hold:
//   * Each response is complete and has the body of its type and no other. An error
//     has a listed code and one line of text.
//   * Requests that succeed are answered with the body that belongs to their type.
//     Incomplete ones don't succeed, and nothing does once the server is stopped.
//   * No two sessions have the same uuid. A stopped session takes no findings, no
//     reset and no second stop.
//   * A result has each acknowledged finding exactly once, under its id, as it was
//     acknowledged, and no other finding. Ids are 1, 2, ... in each session, and the
//     counts are those of the maps.
//   * The rules of a result are those of its findings, as the catalog has them.
//   * The catalog has each acknowledged rule as it was given last, under its key.
//     Rules in it are valid, and a read-only one never changes.

#ifndef VOK_FUZZ_SERVER_ORACLE_H_
#define VOK_FUZZ_SERVER_ORACLE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <map>
#include <set>
#include <string>

#include "fake_environment.h"
#include "rule_server/rule_server.h"

namespace fuzz {

class ServerOracle {
 public:
  // Both outlive the oracle.
  ServerOracle(rule_server::Server& server, tests::MemoryFiles& files);

  // Sends the request and returns the response, checked and noted.
  vok::rulecheck::Response ask(const vok::rulecheck::Request& request);

  // Asks for each result and for the catalog, and compares.
  void checkEverything();

 private:
  struct Book {
    vok::rulecheck::Session session;
    // Bytes by id.
    std::map<int, std::string> violations;
    std::map<int, std::string> waived;
    std::map<int, std::string> affirmations;
    std::set<std::string> rulesViolated;
    std::set<std::string> rulesAffirmed;
    int lastId = 0;
    bool stopped = false;
  };

  void note(const vok::rulecheck::Request& request, const vok::rulecheck::Response& response);
  void noteFinding(const vok::rulecheck::CreateViolation& body,
                   const vok::rulecheck::Violation& violation);
  void noteFinding(const vok::rulecheck::CreateAffirmation& body,
                   const vok::rulecheck::Affirmation& affirmation);
  void noteSession(const vok::rulecheck::StartSession& body,
                   const vok::rulecheck::Session& session);
  void noteReport(const Book& about) const;
  void noteRule(const std::string& key, const vok::rulecheck::RuleSpec& rule);
  void noteLoadedRules();

  void checkRule(const std::string& key, const vok::rulecheck::RuleSpec& rule) const;
  void checkRules(const std::set<std::string>& keys,
                  const vok::rulecheck::RuleSpecMap& rules) const;
  void checkResult(const Book& about, const vok::rulecheck::SessionResult& result) const;

  void checkSpecs(const Book& about, const vok::rulecheck::SessionResult& result) const;

  vok::rulecheck::RuleSpecMap catalog();
  Book& book(const std::string& uuid);
  Book& openBook(const std::string& uuid);

  rule_server::Server& server_;
  tests::MemoryFiles& files_;
  std::map<std::string, Book> books_;
  vok::rulecheck::RuleSpecMap rules_;
  bool stopped_ = false;
};

}  // namespace fuzz

#endif  // VOK_FUZZ_SERVER_ORACLE_H_
