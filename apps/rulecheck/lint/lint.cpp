// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/lint.h"

#include <unistd.h>

#include <ctime>
#include <map>
#include <stdexcept>

#include "rulecheck/lint/verilator.h"
#include "rulecheck/lint/waivers.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using vok::rulecheck::CreateViolation;
using vok::rulecheck::Violation_Severity;

std::map<std::string, Violation_Severity> severitiesIn(const std::vector<std::string>& texts,
                                                       const Catalog& rules) {
  std::map<std::string, Violation_Severity> severities;
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    const auto severity = severityNamed(equals == std::string::npos ? "" : text.substr(equals + 1));
    if (!severity) {
      throw std::runtime_error("--severity " + text + ": expected RULE=LEVEL, with one of " +
                               severityNames());
    }
    const std::string name = text.substr(0, equals);
    for (const std::string& rule : rulesNamed(name, rules)) {
      severities[rule] = *severity;
    }
    severities.emplace(name, *severity);
  }
  return severities;
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  localtime_r(&now, &parts);
  char text[sizeof("9999-12-31")] = {};
  std::strftime(text, sizeof(text), "%Y-%m-%d", &parts);
  return text;
}

}  // namespace

void define(CLI::App& app, LintOptions& options) {
  app.add_option("--verilator", options.verilator, "The Verilator program to run")
      ->capture_default_str();
  app.add_option("--severity", options.severities,
                 "How serious a rule, or a group or family of rules, is: RULE=LEVEL")
      ->allow_extra_args(false);
  app.add_option("--waivers", options.waivers, "A file of findings to accept; may be repeated")
      ->allow_extra_args(false);
  app.add_option("VERILATOR-ARGUMENTS", options.arguments,
                 "Arguments for Verilator, which it gets unchanged; put -- before them")
      ->required();
}

LintReport lint(const LintOptions& options) {
  LintReport report;
  report.rules = verilatorRules();
  const auto severities = severitiesIn(options.severities, report.rules);
  report.violations = lint(options.verilator, options.arguments, report.rules);
  addMissingRules(report.violations, &report.rules);
  for (auto& rule : report.rules) {
    const auto severity = severities.find(rule.first);
    if (severity != severities.end()) {
      rule.second.set_severity(severity->second);
    }
  }
  for (CreateViolation& violation : report.violations) {
    if (severities.count(violation.rule_key()) != 0) {
      violation.set_severity(severities.at(violation.rule_key()));
    }
  }
  for (const std::string& path : options.waivers) {
    for (const std::string& remark : applyWaivers(path, today(), &report.violations)) {
      report.remarks.push_back(remark);
    }
  }
  return report;
}

vok::rulecheck::StartSession sessionFor(const LintOptions& options) {
  vok::rulecheck::StartSession session;
  session.set_name("Verilator lint");
  session.set_pid(getpid());
  std::string description = "verilator --lint-only -Wall";
  for (const std::string& argument : options.arguments) {
    description += ' ' + argument;
  }
  session.set_description(description);
  return session;
}

}  // namespace rulecheck
