// SPDX-License-Identifier: Apache-2.0

#include "lint_client/options.h"

#include <unistd.h>

#include <stdexcept>

#include "lint_client/messages.h"
#include "lint_client/waivers.h"

namespace lint_client {
namespace {

namespace fs = std::filesystem;

vok::rulecheck::Resource fileAddress(const fs::path& path) {
  vok::rulecheck::Resource address;
  address.set_scheme(vok::rulecheck::Resource::FILE);
  address.set_path(path.string());
  return address;
}

}  // namespace

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

Findings findingsOf(const Options& options) {
  Findings findings;
  for (const std::string& waiver : options.waivers) {
    findings.waivers.push_back(parseWaiver(waiver));
  }
  findings.directory = fs::current_path();
  findings.messages = lint(options.job);
  return findings;
}

vok::rulecheck::StartSession sessionFor(const Options& options, const fs::path& directory) {
  vok::rulecheck::StartSession session;
  session.set_name("Verilator lint");
  session.set_pid(getpid());
  std::string description = "verilator --lint-only -Wall over";
  for (const std::string& file : options.job.files) {
    description += ' ' + fs::path(file).filename().string();
  }
  session.set_description(description);
  *session.mutable_report_file() = fileAddress(directory / "report.html");
  *session.mutable_proto_file() =
      fileAddress(directory / (options.asText ? "session.txtpb" : "session.pb"));
  return session;
}

}  // namespace lint_client
