// SPDX-License-Identifier: Apache-2.0

// rulecheck: checks a design, and writes the result for people and for programs.

#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "common/command_line.h"
#include "rulecheck/commands.h"
#include "rulecheck/files.h"
#include "rulecheck/lint/lint.h"
#include "rulecheck/lint/report.h"
#include "rulecheck/lint/server_options.h"
#include "rulecheck/page/page.h"
#include "rulecheck/summary.h"

namespace {

using vok::rulecheck::SessionResult;

namespace fs = std::filesystem;

struct Options {
  rulecheck::LintOptions lint;
  std::string output;
  std::string format;
  std::string page;
  bool quiet = false;
  std::function<rulecheck::Server()> server;
  // On the server.
  std::string serverOutput;
};

// If this run fails, the files of an older one must not pass for its result.
void removeOld(const std::string& path) {
  std::error_code ignored;
  if (fs::is_regular_file(path, ignored)) {
    fs::remove(path, ignored);
  }
}

void setFile(const Options& options, const char* name, vok::rulecheck::Resource* address) {
  address->set_scheme(vok::rulecheck::Resource::FILE);
  address->set_path((fs::path(options.serverOutput) / name).string());
}

vok::rulecheck::StartSession sessionFor(const Options& options) {
  auto session = rulecheck::sessionFor(options.lint);
  if (!options.serverOutput.empty()) {
    setFile(options, "report.html", session.mutable_report_file());
    setFile(options, "session.pb", session.mutable_proto_file());
  }
  return session;
}

void lint(const Options& options) {
  removeOld(options.output);
  removeOld(options.page);
  const rulecheck::Server server = options.server();
  if (server == nullptr && options.output.empty()) {
    throw CLI::RequiredError("--output");
  }
  rulecheck::LintReport report = rulecheck::lint(options.lint);
  // Never destroyed: to free every finding takes as long as to write them.
  static const auto& result = *new SessionResult(
      rulecheck::report(server == nullptr ? rulecheck::localServer() : server, sessionFor(options),
                        report.rules, std::move(report.violations)));
  if (!options.output.empty()) {
    rulecheck::writeResult(options.output, options.format, result);
  }
  if (!options.page.empty()) {
    rulecheck::PageOptions shown;
    shown.sourceRoot = ".";
    rulecheck::writeText(options.page, rulecheck::page(result, shown));
  }
  if (!options.quiet) {
    std::cerr << rulecheck::summary(result, report.remarks);
  }
}

void addLint(CLI::App& app, Options& options) {
  CLI::App* command = app.add_subcommand("lint", "Checks a design with Verilator");
  command->fallthrough();
  rulecheck::define(*command, options.lint);
  command->add_option("-o,--output", options.output,
                      std::string("The result to write: ") + rulecheck::kResultFormats);
  command->add_option("--format", options.format, "The format of the result, as an extension");
  command->add_option("--html", options.page, "Also write this page");
  command->add_flag("--quiet", options.quiet, "Print no summary");
  options.server = rulecheck::addServerOptions(*command);
  command
      ->add_option("--server-output", options.serverOutput,
                   "A directory of the server, in which it writes report.html and session.pb")
      ->needs("--server");
  command->footer(
      "Example:\n  rulecheck lint -o result.pb --html report.html -- -Irtl -f design.f");
  command->callback([&options] { lint(options); });
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Checks designs against rules, and reports what violates them", "rulecheck");
  app.require_subcommand(0, 1);
  app.set_config("--config", "", "A file of options: a section [lint] of name=value lines");
  app.set_version_flag("--version", "rulecheck " + std::to_string(vok::rulecheck::MAJOR) + '.' +
                                        std::to_string(vok::rulecheck::MINOR) + '.' +
                                        std::to_string(vok::rulecheck::PATCH));
  app.footer(
      "Exit status: 0 fine, 1 the gate failed, 2 wrong use or unreadable input, 3 a program could "
      "not be run, or there is no connection to the server.\n"
      "\"rulecheck COMMAND --help\" has the options of a command.");
  Options options;
  addLint(app, options);
  rulecheck::addHtml(app);
  rulecheck::addConversions(app);
  rulecheck::addSarif(app);
  rulecheck::addImport(app);
  rulecheck::addMerge(app);
  rulecheck::addDiff(app);
  int decision = 0;
  rulecheck::addGate(app, &decision);
  const int status = apps::run(app, argc, argv, [&app] {
    if (app.get_subcommands().empty()) {
      throw std::runtime_error("a command is required (see --help)");
    }
  });
  return status == 0 ? decision : status;
}
