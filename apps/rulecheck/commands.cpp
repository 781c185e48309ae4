// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/commands.h"

#include <google/protobuf/arena.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "rulecheck/compare.h"
#include "rulecheck/files.h"
#include "rulecheck/gate.h"
#include "rulecheck/merge.h"
#include "rulecheck/page/page.h"
#include "rulecheck/plain_text.h"
#include "rulecheck/sarif.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using google::protobuf::Arena;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

struct Options {
  // What results are made on: without it, to free a million findings takes seconds.
  Arena arena;
  std::vector<std::string> inputs;
  std::string output = "-";
  std::string format;
  bool quiet = false;

  const SessionResult& read(const std::string& path) { return *mutableResult(path); }
  SessionResult* mutableResult(const std::string& path) {
    auto* result = Arena::CreateMessage<SessionResult>(&arena);
    readResult(path, format, result);
    return result;
  }
};

CLI::App* addCommand(CLI::App& app, const char* name, const char* description, const char* example,
                     const std::shared_ptr<Options>& options) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("--format", options->format, "The format of results, as an extension");
  command->footer(std::string("Example:\n  ") + example);
  return command;
}

CLI::Option* addResult(CLI::App* command, const char* name, std::string* path) {
  return command->add_option(name, *path, std::string("A result: ") + kResultFormats)->required();
}

CLI::Option* addOutput(CLI::App* command, std::string* path) {
  return command->add_option("-o,--output", *path, "The file to write; - is the standard output")
      ->capture_default_str();
}

std::string linesOf(const SessionResult& result) {
  std::string text;
  for (const Violation* violation : sortedByPlace(listOf(result.violations()))) {
    text += lineOf(*violation) + '\n';
  }
  return text;
}

void addConversion(CLI::App& app, const char* name, const char* description, const char* example,
                   const std::function<std::string(const SessionResult&)>& convert) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = addCommand(app, name, description, example, options);
  addResult(command, "RESULT", &options->inputs.emplace_back());
  addOutput(command, &options->output);
  command->callback([options, convert] {
    checkIsOther(options->output, options->inputs[0]);
    writeText(options->output, convert(options->read(options->inputs[0])));
  });
}

}  // namespace

void addConversions(CLI::App& app) {
  addConversion(app, "text", "Writes a result as lines like those of a compiler",
                "rulecheck text result.pb", linesOf);
  addConversion(app, "json", "Writes a result as JSON", "rulecheck json result.pb | jq .violations",
                [](const SessionResult& result) { return encoded(result, "json"); });
}

void addHtml(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  const auto shown = std::make_shared<PageOptions>();
  const auto noSource = std::make_shared<bool>(false);
  shown->sourceRoot = ".";
  CLI::App* command = addCommand(app, "html", "Writes a result as one page for people",
                                 "rulecheck html result.pb -o report.html", options);
  options->inputs.resize(2);
  addResult(command, "RESULT", &options->inputs.front());
  addOutput(command, &options->output);
  command->add_option("--baseline", options->inputs[1],
                      "An older result: findings are marked as new, moved, unchanged or fixed");
  CLI::Option* root =
      command
          ->add_option("--source-root", shown->sourceRoot,
                       "The folder of the files whose lines the page shows (default: .)")
          ->check(CLI::ExistingDirectory);
  command->add_flag("--no-source", *noSource, "Show no source lines")->excludes(root);
  command->add_option_function<std::string>(
      "--link",
      [shown](const std::string& text) {
        if (!isLinkTemplate(text)) {
          throw std::runtime_error("--link " + text +
                                   ": expected the address of a web host or an editor, with "
                                   "{path}, {absolute}, {line} or {column}");
        }
        shown->linkTemplate = text;
      },
      "Where places lead: vscode://file{absolute}:{line}, https://host/blob/main/{path}#L{line}");
  command->callback([options, shown, noSource] {
    checkIsOther(options->output, options->inputs[0]);
    if (!options->inputs[1].empty()) {
      shown->baseline = &options->read(options->inputs[1]);
    }
    if (*noSource) {
      shown->sourceRoot.clear();
    }
    writeText(options->output, page(options->read(options->inputs[0]), *shown));
  });
}

void addSarif(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = addCommand(app, "sarif", "Writes a result as SARIF 2.1.0",
                                 "rulecheck sarif result.pb -o result.sarif", options);
  options->inputs.resize(2);
  addResult(command, "RESULT", &options->inputs.front());
  addOutput(command, &options->output);
  command->add_option("--baseline", options->inputs[1],
                      "An older result: findings are marked as new, unchanged or absent");
  command->callback([options] {
    checkIsOther(options->output, options->inputs[0]);
    const SessionResult* baseline =
        options->inputs[1].empty() ? nullptr : &options->read(options->inputs[1]);
    writeText(options->output, toSarif(options->read(options->inputs[0]), baseline));
  });
}

void addImport(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = addCommand(app, "import", "Converts any tool's SARIF 2.1.0 to a result",
                                 "rulecheck import eslint.sarif -o result.pb", options);
  command->add_option("LOG", options->inputs.emplace_back(), "The SARIF log")->required();
  addOutput(command, &options->output)->required();
  command->callback([options] {
    checkIsOther(options->output, options->inputs[0]);
    SessionResult result;
    readResult(options->inputs[0], "sarif", &result);
    writeResult(options->output, options->format, result);
  });
}

void addMerge(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = addCommand(app, "merge", "Merges results into one",
                                 "rulecheck merge core.pb uart.pb -o all.pb", options);
  command
      ->add_option("RESULTS", options->inputs, std::string("Results to merge: ") + kResultFormats)
      ->required();
  addOutput(command, &options->output)->required();
  command->callback([options] {
    SessionResult* all = options->mutableResult(options->inputs[0]);
    for (std::size_t i = 1; i < options->inputs.size(); ++i) {
      merge(options->mutableResult(options->inputs[i]), all);
    }
    finishMerge(all);
    writeResult(options->output, options->format, *all);
  });
}

void addDiff(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  CLI::App* command = addCommand(app, "diff", "Compares two results, finding by finding",
                                 "rulecheck diff yesterday.pb today.pb", options);
  options->inputs.resize(2);
  addResult(command, "OLD", &options->inputs.front());
  addResult(command, "NEW", &options->inputs[1]);
  addOutput(command, &options->output);
  command->add_flag("--quiet", options->quiet, "Print the counts only");
  command->callback([options] {
    const Comparison comparison =
        compare(options->read(options->inputs[0]), options->read(options->inputs[1]));
    writeText(options->output, textOf(comparison, !options->quiet));
  });
}

void addGate(CLI::App& app, int* status) {
  const auto options = std::make_shared<Options>();
  const auto gate = std::make_shared<Gate>();
  const auto newOnly = std::make_shared<bool>(false);
  CLI::App* command = addCommand(
      app, "gate", "Decides whether a result is good enough: exit status 1 if it is not",
      "rulecheck gate today.pb --fail-on warning --baseline yesterday.pb --new-only", options);
  options->inputs.resize(2);
  addResult(command, "RESULT", &options->inputs.front());
  command
      ->add_option_function<std::string>(
          "--fail-on",
          [gate](const std::string& level) {
            const auto severity = severityNamed(level);
            if (!severity) {
              throw std::runtime_error("--fail-on " + level + ": expected one of " +
                                       severityNames());
            }
            gate->failOn = *severity;
          },
          "The least severity that counts: " + severityNames())
      ->required();
  command->add_option("--max", gate->most, "How many findings that count are allowed")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  CLI::Option* baseline =
      command->add_option("--baseline", options->inputs[1], "An older result to compare with");
  command->add_flag("--new-only", *newOnly, "Count only what the baseline lacks")->needs(baseline);
  command->add_flag("--quiet", options->quiet, "Print nothing");
  command->callback([options, gate, newOnly, status] {
    const SessionResult& result = options->read(options->inputs[0]);
    Violations violations;
    std::string text;
    if (options->inputs[1].empty()) {
      violations = listOf(result.violations());
    } else {
      const Comparison comparison = compare(options->read(options->inputs[1]), result);
      violations = *newOnly ? comparison.added : listOf(result.violations());
      text = textOf(comparison, false);
    }
    const Violations serious = sortedByPlace(seriousOf(*gate, violations));
    if (!options->quiet) {
      writeText("-", text + decision(*gate, serious));
    }
    *status = serious.size() > gate->most ? 1 : 0;
  });
}

}  // namespace rulecheck
