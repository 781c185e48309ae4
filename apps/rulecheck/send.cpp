// SPDX-License-Identifier: Apache-2.0

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "rulecheck/commands.h"
#include "rulecheck/files.h"
#include "rulecheck/lint/report.h"
#include "rulecheck/lint/server_options.h"
#include "rulecheck/not_checked.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::CreateAffirmation;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;
using vok::rulecheck::ViolationMap;

struct Options {
  std::string result;
  std::string format;
  std::string serverOutput;
  std::function<Server()> server;
};

Catalog rulesOf(const SessionResult& result) {
  Catalog rules;
  for (const auto* specs : {&result.specs_violated(), &result.specs_affirmed()}) {
    rules.insert(specs->hashmap().begin(), specs->hashmap().end());
  }
  return rules;
}

// The rule of a finding. One that the result lacks has only what is required.
RuleSpec& ruleOf(const std::string& key, Catalog* rules) {
  RuleSpec& rule = (*rules)[key];
  if (!rule.has_key()) {
    rule.set_key(key);
    rule.set_full_name(key);
  }
  return rule;
}

// What violations and affirmations have in common. Of the categories, a request has those that the
// rule lets findings choose.
template <typename Body, typename Finding>
Body bodyOf(const Finding& finding, const RuleSpec& rule) {
  Body body;
  body.set_rule_key(rule.key());
  if (finding.details().has_args()) {
    *body.mutable_args() = finding.details().args();
  }
  if (finding.has_actual_value()) {
    *body.mutable_actual_value() = finding.actual_value();
  }
  if (finding.has_threshold_value()) {
    *body.mutable_threshold_value() = finding.threshold_value();
  }
  for (const auto& category : finding.categories()) {
    const auto allowed = rule.dynamic_categories().find(category.first);
    if (allowed != rule.dynamic_categories().end() && allowed->second) {
      (*body.mutable_dynamic_category_values())[std::to_string(category.first)] = category.second;
    }
  }
  return body;
}

// A server words findings as their rule does. A rule without words gets those of its first finding.
void addViolation(const Violation& violation, bool isWaived, Report* report) {
  RuleSpec& rule = ruleOf(violation.rule_key(), &report->rules);
  if (!rule.has_raw_msg() && violation.details().has_text()) {
    rule.set_raw_msg(violation.details().text());
  }
  if (!rule.has_resolution_msg() && violation.resolution().has_text()) {
    rule.set_resolution_msg(violation.resolution().text());
  }
  auto body = bodyOf<CreateViolation>(violation, rule);
  body.set_severity(violation.severity());
  if (isWaived) {
    const std::string reason = waiverOf(violation);
    (*body.mutable_dynamic_category_values())["waiver"] =
        reason.empty() ? "no reason given" : reason;
  }
  report->violations.push_back(std::move(body));
}

void addAffirmation(const Affirmation& affirmation, Report* report) {
  RuleSpec& rule = ruleOf(affirmation.rule_key(), &report->rules);
  if (!rule.has_affirm_msg() && affirmation.details().has_text()) {
    rule.set_affirm_msg(affirmation.details().text());
  }
  report->affirmations.push_back(bodyOf<CreateAffirmation>(affirmation, rule));
}

// In the order of their numbers.
void addFindings(const SessionResult& result, Report* report) {
  std::multimap<int, std::pair<const Violation*, bool>> violations;
  for (const bool isWaived : {false, true}) {
    const ViolationMap& these = isWaived ? result.waived_violations() : result.violations();
    for (const auto& entry : these.hashmap()) {
      violations.emplace(entry.first, std::make_pair(&entry.second, isWaived));
    }
  }
  for (const auto& [number, violation] : violations) {
    addViolation(*violation.first, violation.second, report);
  }
  const auto& affirmations = result.affirmations().hashmap();
  for (const auto& [number, affirmation] :
       std::map<int, Affirmation>(affirmations.begin(), affirmations.end())) {
    addAffirmation(affirmation, report);
  }
}

void send(const Options& options) {
  SessionResult result;
  readResult(options.result, options.format, &result);
  Report sent;
  sent.session.set_name(result.session().name());
  sent.session.set_description(result.session().description());
  setOutput(options.serverOutput, &sent.session);
  sent.rules = rulesOf(result);
  addFindings(result, &sent);
  writeText("-", report(options.server(), std::move(sent), nullptr) + '\n');
}

}  // namespace

void addSend(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("send", "Records a result in a server");
  command->add_option("RESULT", options->result, std::string("A result: ") + kResultFormats)
      ->required();
  command->add_option("--format", options->format,
                      "The format of the result, such as json, instead of its extension");
  options->server = addServerOptions(*command, &options->serverOutput);
  command->get_option("--server")->required();
  command->footer("Example:\n  rulecheck send eslint.sarif --server unix:/run/user/1000/rules");
  command->callback([options] { send(*options); });
}

}  // namespace rulecheck
