// SPDX-License-Identifier: Apache-2.0

// Checks Verilog sources with Verilator, and has a rule server report what it finds.

#include <CLI/CLI.hpp>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>

#include "common/command_line.h"
#include "html_report/html_report.h"
#include "lint_client/connection.h"
#include "lint_client/options.h"
#include "lint_client/report.h"
#include "lint_client/summary.h"
#include "rule_server/environment.h"
#include "rule_server/files.h"
#include "rule_server/rule_server.h"

namespace {

namespace fs = std::filesystem;

void work(const lint_client::Options& options) {
  const lint_client::Findings findings = lint_client::findingsOf(options);
  fs::create_directories(options.output);
  const fs::path output = fs::canonical(options.output);
  rule_server::DirectoryFiles files(output);
  rule_server::Environment environment;
  environment.files = &files;
  environment.now = rule_server::millisecondsSince1970;
  environment.newUuid = rule_server::randomUuid;
  environment.page = html_report::page;
  rule_server::Server server(environment);
  lint_client::Connection connection(lint_client::framed(
      [&server](const std::string& requests) { return lint_client::serve(server, requests); }));

  const auto result =
      lint_client::report(connection, lint_client::sessionFor(options, output), findings);
  std::cout << lint_client::summary(result, connection, findings)
            << "Report: " << (output / "report.html").string() << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Checks Verilog sources with Verilator and reports what it finds", "lint_client");
  lint_client::Options options;
  lint_client::define(app, options);
  return apps::run(app, argc, argv, [&options] { work(options); });
}
