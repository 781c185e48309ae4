// SPDX-License-Identifier: Apache-2.0

// html_report INPUT OUTPUT: writes the result of a session as an HTML page.

#include <vok/rulecheck/RuleService.pb.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>
#include <system_error>

#include "common/command_line.h"
#include "common/message_file.h"
#include "html_report/html_report.h"

namespace {

void writeReport(const std::string& input, const std::string& output) {
  vok::rulecheck::SessionResult result;
  apps::decodeFrom(input, apps::readFile(input), &result);
  std::error_code ignored;
  if (std::filesystem::equivalent(input, output, ignored)) {
    throw apps::FileError(output + ": is the input");
  }
  apps::writeFile(output, html_report::page(result));
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes the result of a rule-check session as one self-contained HTML page.",
               "html_report");
  std::string input;
  std::string output;
  app.add_option("INPUT", input, "The SessionResult: .pb, .bin, .txtpb, .textproto, .txt or .json")
      ->required();
  app.add_option("OUTPUT", output, "The page to write")->required();
  return apps::run(app, argc, argv, [&] { writeReport(input, output); });
}
