// SPDX-License-Identifier: Apache-2.0

#include "lint_client/summary.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <iomanip>
#include <map>
#include <sstream>
#include <vector>

#include "lint_client/catalog.h"
#include "lint_client/messages.h"
#include "lint_client/waivers.h"

namespace lint_client {
namespace {

using vok::rulecheck::Converter;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

void addLine(const std::string& label, int count, std::ostream& out) {
  out << "  " << std::left << std::setw(18) << label << std::right << std::setw(5) << count << '\n';
}

void addSeverities(const SessionResult& result, std::ostream& out) {
  std::map<int, int> counts;
  for (const auto& entry : result.violations().hashmap()) {
    ++counts[entry.second.severity()];
  }
  for (int severity = Violation::SEV_FATAL; severity <= Violation::SEV_ADVISORY; ++severity) {
    addLine(Converter::toString(static_cast<vok::rulecheck::Violation_Severity>(severity)),
            counts[severity], out);
  }
}

bool isUsed(const Waiver& waiver, const Findings& findings) {
  return std::any_of(findings.messages.begin(), findings.messages.end(),
                     [&](const Message& message) {
                       return waiverFor(ruleKeyOf(message), message, findings.waivers) == &waiver;
                     });
}

void addUnusedWaivers(const Findings& findings, std::ostream& out) {
  for (const Waiver& waiver : findings.waivers) {
    if (!isUsed(waiver, findings)) {
      out << "No finding for the waiver " << waiver.rule << (waiver.file.empty() ? "" : ":")
          << waiver.file << '\n';
    }
  }
}

}  // namespace

std::string summary(const SessionResult& result, const Connection& server,
                    const Findings& findings) {
  std::ostringstream out;
  out << "Findings\n";
  addSeverities(result, out);
  addLine("waived", result.waived_count(), out);
  addLine("rules affirmed", result.affirmation_count(), out);
  if (hasErrors(findings.messages)) {
    out << "Errors cut the check short: no rule is affirmed\n";
  }
  addUnusedWaivers(findings, out);
  out << server.requests() << " requests travelled in " << server.bytesSent()
      << " bytes, their answers in " << server.bytesReceived() << " bytes\n";
  return out.str();
}

}  // namespace lint_client
