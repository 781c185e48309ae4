// SPDX-License-Identifier: Apache-2.0

#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

#include "common/characters.h"
#include "common/message_file.h"
#include "rulecheck/commands.h"
#include "rulecheck/files.h"
#include "rulecheck/lint/report.h"
#include "rulecheck/lint/server_options.h"
#include "rulecheck/lint/verilator.h"
#include "rulecheck/lint/waivers.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/page/page.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using vok::rulecheck::CreateAffirmation;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation_Severity;

namespace fs = std::filesystem;

struct LintOptions {
  std::string verilator = "verilator";
  std::vector<std::string> arguments;
  std::vector<std::pair<std::string, Violation_Severity>> severities;
  std::vector<std::string> waivers;
  std::string output;
  std::string format;
  std::string page;
  bool quiet = false;
  std::function<std::string()> config;
  std::function<Server()> server;
  std::string serverOutput;
};

// Notes the name and the severity in each text.
void addSeverities(const std::vector<std::string>& texts, LintOptions* options) {
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    const auto severity = severityNamed(equals == std::string::npos ? "" : text.substr(equals + 1));
    if (!severity) {
      throw std::runtime_error("--severity " + text + ": expected RULE=LEVEL, with one of " +
                               severityNames());
    }
    options->severities.emplace_back(text.substr(0, equals), *severity);
  }
}

// Of each rule that the options name. Throws std::runtime_error if a name is that of no rule.
std::map<std::string, Violation_Severity> severitiesIn(const LintOptions& options,
                                                       const Catalog& rules) {
  std::map<std::string, Violation_Severity> severities;
  for (const auto& [name, severity] : options.severities) {
    const std::vector<std::string> named = rulesNamed(name, rules);
    if (name.empty() || named.empty()) {
      throw std::runtime_error("--severity " + name + '=' + levelOf(severity).slug +
                               ": Verilator has no such rule");
    }
    for (const std::string& rule : named) {
      severities[rule] = severity;
    }
  }
  return severities;
}

// What Verilator finds, with the severities that the user wants, and rules for all of it.
std::vector<CreateViolation> violationsOf(const LintOptions& options, Catalog* rules) {
  std::vector<CreateViolation> violations = lint(options.verilator, options.arguments, *rules);
  addMissingRules(violations, rules);
  const auto severities = severitiesIn(options, *rules);
  for (const auto& [rule, severity] : severities) {
    rules->at(rule).set_severity(severity);
  }
  for (CreateViolation& violation : violations) {
    const auto severity = severities.find(violation.rule_key());
    if (severity != severities.end()) {
      violation.set_severity(severity->second);
    }
  }
  return violations;
}

std::string today() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  localtime_r(&now, &parts);
  std::ostringstream text;
  text << std::put_time(&parts, "%Y-%m-%d");
  return text.str();
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
  setOutput(options.serverOutput, &session);
  return session;
}

// One for each rule without a violation.
std::vector<CreateAffirmation> affirmationsOf(const Report& report) {
  std::set<std::string> violated;
  for (const CreateViolation& violation : report.violations) {
    violated.insert(violation.rule_key());
  }
  std::vector<CreateAffirmation> affirmations;
  for (const auto& rule : report.rules) {
    if (violated.count(rule.first) == 0) {
      affirmations.emplace_back().set_rule_key(rule.first);
    }
  }
  return affirmations;
}

// Counts of findings by severity, of waived ones and of rules that were affirmed or not
// checked everywhere.
std::string summary(const SessionResult& result) {
  std::map<int, std::size_t> counts;
  for (const auto& entry : result.violations().hashmap()) {
    ++counts[entry.second.severity()];
  }
  std::set<std::string> unchecked;
  std::size_t waived = 0;
  for (const auto& entry : result.waived_violations().hashmap()) {
    if (isNotChecked(entry.second)) {
      unchecked.insert(entry.second.rule_key());
    } else {
      ++waived;
    }
  }
  std::ostringstream out;
  const auto add = [&out](const std::string& label, std::size_t count) {
    out << "  " << std::left << std::setw(24) << label << std::right << std::setw(5) << count
        << '\n';
  };
  out << "Findings\n";
  for (const Level& level : violationLevels()) {
    if (level.rank != vok::rulecheck::Violation::SEV_UNKNOWN || counts[level.rank] != 0) {
      add(level.word, counts[level.rank]);
    }
  }
  add("waived", waived);
  add("rules affirmed", result.affirmations().hashmap().size());
  add("rules not fully checked", unchecked.size());
  return out.str();
}

// The outputs must not replace each other or an input.
void checkAreOthers(const LintOptions& options) {
  std::vector<std::string> inputs = options.arguments;
  inputs.insert(inputs.end(), options.waivers.begin(), options.waivers.end());
  inputs.push_back(options.config());
  for (const std::string& input : inputs) {
    checkIsOther(options.output, input);
    checkIsOther(options.page, input);
  }
  const auto normal = [](const std::string& path) {
    return fs::weakly_canonical(fs::absolute(path));
  };
  if (!options.page.empty() && !options.output.empty() &&
      normal(options.page) == normal(options.output)) {
    throw std::runtime_error("--html " + options.page + ": is the output");
  }
}

void lint(const LintOptions& options) {
  if (!options.output.empty()) {
    checkFormat(options.output, options.format);
  }
  checkAreOthers(options);
  // If this run fails, the files of an older one must not pass for its result.
  for (const std::string& path : {options.output, options.page}) {
    if (path != "-") {
      apps::removeFile(path);
    }
  }
  const Server server = options.server();
  if (server == nullptr && options.output.empty()) {
    throw CLI::RequiredError("--output");
  }
  Report found;
  found.session = sessionFor(options);
  found.rules = verilatorRules();
  found.violations = violationsOf(options, &found.rules);
  found.affirmations = affirmationsOf(found);
  const std::vector<std::string> remarks =
      applyWaivers(options.waivers, today(), &found.violations);
  // Never destroyed: to free every finding takes as long as to write them.
  static auto& result = *new SessionResult;
  report(server == nullptr ? localServer() : server, std::move(found), &result);
  if (!options.output.empty()) {
    writeResult(options.output, options.format, result);
  }
  if (!options.page.empty()) {
    PageOptions shown;
    shown.sourceRoot = ".";
    writeText(options.page, page(result, shown));
  }
  if (!options.quiet) {
    std::cerr << summary(result);
  }
  for (const std::string& remark : remarks) {
    std::cerr << apps::oneLine(remark) << '\n';
  }
}

}  // namespace

void addLint(CLI::App& app) {
  const auto options = std::make_shared<LintOptions>();
  CLI::App* command = app.add_subcommand("lint", "Checks a design with Verilator");
  command->fallthrough();
  command->add_option("--verilator", options->verilator, "The Verilator program to run")
      ->capture_default_str();
  command
      ->add_option_function<std::vector<std::string>>(
          "--severity",
          [options](const std::vector<std::string>& texts) { addSeverities(texts, options.get()); },
          "How serious a rule is: RULE=LEVEL; lint, style and UNUSED mean several")
      ->allow_extra_args(false);
  command
      ->add_option("--waivers", options->waivers, "A file of findings to accept; may be repeated")
      ->allow_extra_args(false);
  command
      ->add_option("VERILATOR-ARGUMENTS", options->arguments,
                   "Arguments for Verilator, which it gets unchanged; put -- before them")
      ->required();
  command->add_option("-o,--output", options->output,
                      "The result to write: .pb, .bin, .txtpb, .textproto, .txt or .json");
  command->add_option("--format", options->format,
                      "The format of the result, such as json, instead of its extension");
  command->add_option("--html", options->page, "Also write this page");
  command->add_flag("--quiet", options->quiet, "Print no summary, but name waivers without effect");
  options->config = [&app] { return app.get_config_ptr()->as<std::string>(); };
  options->server = addServerOptions(*command, &options->serverOutput);
  command->footer(
      "Example:\n  rulecheck lint -o result.pb --html report.html -- -Irtl -f design.f");
  command->callback([options] { lint(*options); });
}

}  // namespace rulecheck
