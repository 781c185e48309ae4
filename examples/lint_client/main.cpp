// Checks Verilog sources with Verilator, and has a rule server report what it finds.

#include <unistd.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/command_line.h"
#include "html_report/html_report.h"
#include "lint_client/connection.h"
#include "lint_client/messages.h"
#include "lint_client/report.h"
#include "lint_client/summary.h"
#include "lint_client/verilator.h"
#include "lint_client/waivers.h"
#include "rule_server/environment.h"
#include "rule_server/files.h"
#include "rule_server/rule_server.h"

namespace {

namespace fs = std::filesystem;

struct Options {
  lint_client::Job job;
  std::string output = ".";
  std::vector<std::string> waivers;
  bool asText = false;
};

void define(CLI::App& app, Options& options) {
  app.add_option("FILES", options.job.files, "Verilog sources to check")
      ->required()
      ->check(CLI::ExistingFile);
  app.add_option("--output", options.output, "Directory for the report; made if it is missing")
      ->capture_default_str();
  app.add_flag("--text", options.asText, "Write session.txtpb instead of session.pb");
  app.add_option("--top", options.job.top, "The top module; default: the one that no other uses");
  app.add_option("--verilator", options.job.verilator, "The Verilator program to run")
      ->capture_default_str();
  app.add_option("--waive", options.waivers,
                 "Accept the findings of a rule, in all files or in one: RULE[:FILE]=REASON")
      ->allow_extra_args(false);
}

vok::rulecheck::Resource fileAddress(const fs::path& path) {
  vok::rulecheck::Resource address;
  address.set_scheme(vok::rulecheck::Resource::FILE);
  address.set_path(path.string());
  return address;
}

vok::rulecheck::StartSession sessionFor(const Options& options, const fs::path& output) {
  vok::rulecheck::StartSession session;
  session.set_name("Verilator lint");
  session.set_pid(getpid());
  std::string description = "verilator --lint-only -Wall over";
  for (const std::string& file : options.job.files) {
    description += ' ' + fs::path(file).filename().string();
  }
  session.set_description(description);
  *session.mutable_report_file() = fileAddress(output / "report.html");
  *session.mutable_proto_file() =
      fileAddress(output / (options.asText ? "session.txtpb" : "session.pb"));
  return session;
}

lint_client::Findings findingsOf(const Options& options) {
  lint_client::Findings findings;
  for (const std::string& waiver : options.waivers) {
    findings.waivers.push_back(lint_client::parseWaiver(waiver));
  }
  findings.directory = fs::current_path();
  findings.messages = lint_client::lint(options.job);
  return findings;
}

void work(const Options& options) {
  const lint_client::Findings findings = findingsOf(options);
  fs::create_directories(options.output);
  const fs::path output = fs::canonical(options.output);
  rule_server::DirectoryFiles files(output);
  rule_server::Environment environment;
  environment.files = &files;
  environment.now = rule_server::millisecondsSince1970;
  environment.newUuid = rule_server::randomUuid;
  environment.page = html_report::page;
  rule_server::Server server(environment);
  lint_client::Connection connection(
      [&server](const std::string& requests) { return lint_client::serve(server, requests); });

  const auto result = lint_client::report(connection, sessionFor(options, output), findings);
  std::cout << lint_client::summary(result, connection, findings)
            << "Report: " << (output / "report.html").string() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Checks Verilog sources with Verilator and reports what it finds", "lint_client");
  Options options;
  define(app, options);
  return examples::run(app, argc, argv, [&options] { work(options); });
}
