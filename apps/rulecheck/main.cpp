// SPDX-License-Identifier: Apache-2.0

// rulecheck: checks a design, and writes the result for people and for programs.

#include <google/protobuf/arena.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/command_line.h"
#include "common/message_file.h"
#include "rulecheck/commands.h"
#include "rulecheck/compare.h"
#include "rulecheck/files.h"
#include "rulecheck/lint/server_options.h"
#include "rulecheck/merge.h"
#include "rulecheck/page/page.h"
#include "rulecheck/plain_text.h"
#include "rulecheck/sarif.h"
#include "rulecheck/severity.h"

namespace {

using google::protobuf::Arena;
using rulecheck::Violations;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

// Those of the command, and what it reads.
struct Options {
  std::string result;
  std::string baseline;
  std::vector<std::string> results;
  std::string output = "-";
  std::string format;
  bool quiet = false;
  rulecheck::PageOptions page;
  bool noSource = false;
  vok::rulecheck::Violation_Severity failOn = Violation::SEV_ERROR;
  std::size_t most = 0;
  bool newOnly = false;
  int status = 0;

  SessionResult* read(const std::string& path) const {
    // Never destroyed: to free a million findings takes long.
    static auto* const arena = new Arena;
    auto* message = Arena::CreateMessage<SessionResult>(arena);
    rulecheck::readResult(path, format, message);
    return message;
  }

  // Null if there is none.
  const SessionResult* readBaseline() const { return baseline.empty() ? nullptr : read(baseline); }

  void checkOutput() const {
    rulecheck::checkIsOther(output, result);
    rulecheck::checkIsOther(output, baseline);
  }
};

CLI::App* addCommand(CLI::App& app, const char* name, const char* description, const char* example,
                     Options& options) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("--format", options.format,
                      "The format of results, such as json, instead of their extension");
  command->footer(std::string("Example:\n  ") + example);
  return command;
}

void addResult(CLI::App* command, const char* name, std::string* path) {
  command->add_option(name, *path, std::string("A result: ") + rulecheck::kResultFormats)
      ->required();
}

CLI::Option* addOutput(CLI::App* command, Options& options) {
  return command->add_option("-o,--output", options.output,
                             "The file to write; - is the standard output");
}

CLI::Option* addBaseline(CLI::App* command, Options& options, const char* description) {
  return command->add_option("--baseline", options.baseline, description)->check(apps::notEmpty());
}

using Conversion = std::function<std::string(const SessionResult&, const SessionResult* baseline)>;

CLI::App* addConversion(CLI::App& app, const char* name, const char* description,
                        const char* example, Options& options, const Conversion& convert) {
  CLI::App* command = addCommand(app, name, description, example, options);
  addResult(command, "RESULT", &options.result);
  addOutput(command, options)->capture_default_str();
  command->callback([&options, convert] {
    options.checkOutput();
    const SessionResult& result = *options.read(options.result);
    rulecheck::writeText(options.output, convert(result, options.readBaseline()));
  });
  return command;
}

void setLink(Options& options, const std::string& text) {
  if (!rulecheck::isLinkTemplate(text)) {
    throw std::runtime_error("--link " + text +
                             ": expected the address of a web host or an editor, with "
                             "{path}, {absolute}, {line} or {column}");
  }
  options.page.linkTemplate = text;
}

void addHtml(CLI::App& app, Options& options) {
  options.page.sourceRoot = ".";
  CLI::App* command =
      addConversion(app, "html", "Writes a result as one page for people",
                    "rulecheck html result.pb -o report.html", options,
                    [&options](const SessionResult& result, const SessionResult* baseline) {
                      options.page.baseline = baseline;
                      if (options.noSource) {
                        options.page.sourceRoot.clear();
                      }
                      return rulecheck::page(result, options.page);
                    });
  addBaseline(command, options,
              "An older result: findings are marked as new, moved, unchanged or fixed");
  CLI::Option* root =
      command
          ->add_option("--source-root", options.page.sourceRoot,
                       "The folder of the files whose lines the page shows (default: .)")
          ->check(CLI::ExistingDirectory);
  command->add_flag("--no-source", options.noSource, "Show no source lines")->excludes(root);
  command->add_option_function<std::string>(
      "--link", [&options](const std::string& text) { setLink(options, text); },
      "Where places lead: vscode://file{absolute}:{line}, https://host/blob/main/{path}#L{line}");
}

std::string linesOf(const SessionResult& result) {
  std::string text;
  for (const Violation* violation :
       rulecheck::sortedByPlace(rulecheck::listOf(result.violations()))) {
    text += rulecheck::lineOf(*violation) + '\n';
  }
  return text;
}

void addTexts(CLI::App& app, Options& options) {
  addConversion(app, "text", "Writes a result as lines like those of a compiler",
                "rulecheck text result.pb", options,
                [](const SessionResult& result, const SessionResult*) { return linesOf(result); });
  addConversion(app, "json", "Writes a result as JSON", "rulecheck json result.pb | jq .violations",
                options, [](const SessionResult& result, const SessionResult*) {
                  return apps::encodeFor("-.json", result);
                });
  CLI::App* sarif =
      addConversion(app, "sarif", "Writes a result as SARIF 2.1.0",
                    "rulecheck sarif result.pb -o result.sarif", options, rulecheck::toSarif);
  addBaseline(sarif, options, "An older result: findings are marked as new, unchanged or absent");
}

void addImport(CLI::App& app, Options& options) {
  CLI::App* command = addCommand(app, "import", "Converts any tool's SARIF 2.1.0 to a result",
                                 "rulecheck import eslint.sarif -o result.pb", options);
  command->add_option("LOG", options.result, "The SARIF log")->required();
  addOutput(command, options)->required();
  command->callback([&options] {
    options.checkOutput();
    SessionResult result;
    rulecheck::readResult(options.result, "sarif", &result);
    rulecheck::writeResult(options.output, options.format, result);
  });
}

void addMerge(CLI::App& app, Options& options) {
  CLI::App* command = addCommand(app, "merge", "Merges results into one",
                                 "rulecheck merge core.pb uart.pb -o all.pb", options);
  command
      ->add_option("RESULTS", options.results,
                   std::string("Results to merge: ") + rulecheck::kResultFormats)
      ->required();
  addOutput(command, options)->required();
  command->callback([&options] {
    SessionResult* all = options.read(options.results[0]);
    for (std::size_t i = 1; i < options.results.size(); ++i) {
      rulecheck::merge(options.read(options.results[i]), all);
    }
    rulecheck::finishMerge(all);
    rulecheck::writeResult(options.output, options.format, *all);
  });
}

void addDiff(CLI::App& app, Options& options) {
  CLI::App* command = addCommand(app, "diff", "Compares two results, finding by finding",
                                 "rulecheck diff yesterday.pb today.pb", options);
  addResult(command, "OLD", &options.baseline);
  addResult(command, "NEW", &options.result);
  addOutput(command, options)->capture_default_str();
  command->add_flag("--quiet", options.quiet, "Print the counts only");
  command->callback([&options] {
    options.checkOutput();
    const SessionResult& before = *options.read(options.baseline);
    const rulecheck::Comparison comparison =
        rulecheck::compare(before, *options.read(options.result));
    rulecheck::writeText(options.output, textOf(comparison, !options.quiet));
  });
}

// A violation of unknown severity is serious.
Violations seriousOf(const Options& options, const Violations& violations) {
  Violations serious;
  for (const Violation* violation : violations) {
    if (violation->severity() <= options.failOn ||
        violation->severity() == Violation::SEV_UNKNOWN) {
      serious.push_back(violation);
    }
  }
  return rulecheck::sortedByPlace(serious);
}

// A line for each of the first twenty findings, and the decision.
std::string decision(const Options& options, const Violations& serious) {
  constexpr std::size_t kMostLines = 20;
  std::string text;
  for (std::size_t i = 0; i < serious.size() && i < kMostLines; ++i) {
    text += rulecheck::lineOf(*serious[i]) + '\n';
  }
  if (serious.size() > kMostLines) {
    text += "... and " + std::to_string(serious.size() - kMostLines) + " more\n";
  }
  return text + (options.status == 0 ? "passed" : "failed") + ": " +
         std::to_string(serious.size()) + " of severity " +
         rulecheck::levelOf(options.failOn).slug + " or worse, " + std::to_string(options.most) +
         " allowed\n";
}

void gate(Options& options) {
  const SessionResult& result = *options.read(options.result);
  const SessionResult* baseline = options.readBaseline();
  Violations violations = rulecheck::listOf(result.violations());
  std::string text;
  if (baseline != nullptr) {
    rulecheck::Comparison comparison = rulecheck::compare(*baseline, result);
    text = textOf(comparison, false);
    if (options.newOnly) {
      violations = std::move(comparison.added);
    }
  }
  const Violations serious = seriousOf(options, violations);
  options.status = serious.size() > options.most ? 1 : 0;
  if (!options.quiet) {
    rulecheck::writeText("-", text + decision(options, serious));
  }
}

void setFailOn(Options& options, const std::string& level) {
  const auto severity = rulecheck::severityNamed(level);
  if (!severity) {
    throw std::runtime_error("--fail-on " + level + ": expected one of " +
                             rulecheck::severityNames());
  }
  options.failOn = *severity;
}

// Returns what is wrong, or nothing. Without this, 010 would be 8.
std::string checkDecimal(const std::string& number) {
  const bool isDecimal = number == std::to_string(std::strtoull(number.c_str(), nullptr, 10));
  return isDecimal ? "" : number + " is not a decimal number";
}

void addGate(CLI::App& app, Options& options) {
  // A finding's number has 31 bits.
  constexpr std::size_t kMostFindings = std::numeric_limits<std::int32_t>::max();
  CLI::App* command = addCommand(
      app, "gate", "Decides whether a result is good enough: exit status 1 if it is not",
      "rulecheck gate today.pb --fail-on warning --baseline yesterday.pb --new-only", options);
  addResult(command, "RESULT", &options.result);
  command
      ->add_option_function<std::string>(
          "--fail-on", [&options](const std::string& level) { setFailOn(options, level); },
          "The least severity that counts: " + rulecheck::severityNames())
      ->required();
  command->add_option("--max", options.most, "How many such findings are allowed")
      ->check(CLI::Range(std::size_t{0}, kMostFindings))
      ->check(checkDecimal)
      ->capture_default_str();
  CLI::Option* baseline = addBaseline(command, options, "An older result to compare with");
  command->add_flag("--new-only", options.newOnly, "Count only what the baseline lacks")
      ->needs(baseline);
  command->add_flag("--quiet", options.quiet, "Print nothing");
  command->callback([&options] { gate(options); });
}

// Without this, the error would list the arguments of the command, too.
void checkCommand(const CLI::App& app, const std::string& name) {
  const auto isNamed = [&name](const CLI::App* command) { return command->get_name() == name; };
  if (name.compare(0, 1, "-") != 0 && app.get_subcommands(isNamed).empty()) {
    throw std::runtime_error(name + ": unknown command (see --help)");
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Checks designs against rules, and reports what violates them", "rulecheck");
  app.require_subcommand(0, 1);
  app.set_config(
      "--config", "",
      "A file of options: a section [lint] of name=value lines; an option of the command "
      "line replaces all of its name");
  app.allow_config_extras(CLI::config_extras_mode::error);
  app.set_version_flag("--version", "rulecheck " + std::to_string(vok::rulecheck::MAJOR) + '.' +
                                        std::to_string(vok::rulecheck::MINOR) + '.' +
                                        std::to_string(vok::rulecheck::PATCH));
  app.footer(
      "Exit status: 0 fine, 1 the gate failed, 2 wrong use or unreadable input, 3 Verilator could "
      "not be run or checked nothing, or there is no connection to the server.\n"
      "\"rulecheck COMMAND --help\" lists the options of a command.");
  app.preparse_callback([&](std::size_t count) { checkCommand(app, count == 0 ? "-" : argv[1]); });
  rulecheck::addLint(app);
  Options options;
  addHtml(app, options);
  addTexts(app, options);
  addImport(app, options);
  addMerge(app, options);
  addDiff(app, options);
  addGate(app, options);
  rulecheck::addSend(app);
  rulecheck::addServe(app);
  const int status = apps::run(app, argc, argv, [&app] {
    if (app.get_subcommands().empty()) {
      throw std::runtime_error("a command is required (see --help)");
    }
  });
  return status == 0 ? options.status : status;
}
