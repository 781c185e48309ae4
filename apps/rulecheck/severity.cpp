// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/severity.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>

namespace rulecheck {

using vok::rulecheck::Violation;

Level levelOf(Violation::Severity severity) {
  if (severity < Violation::SEV_FATAL || severity > Violation::SEV_ADVISORY) {
    return {Violation::SEV_UNKNOWN, "unknown", "unknown"};
  }
  const std::string word = vok::rulecheck::Converter::toString(severity);
  std::string slug = word;
  std::replace(slug.begin(), slug.end(), ' ', '-');
  return {severity, word, slug};
}

Level levelOf(const Violation& violation) {
  return levelOf(violation.has_severity() ? violation.severity() : Violation::SEV_UNKNOWN);
}

std::vector<Level> violationLevels() {
  return {levelOf(Violation::SEV_FATAL),
          levelOf(Violation::SEV_ERROR),
          levelOf(Violation::SEV_CRITICAL_WARNING),
          levelOf(Violation::SEV_WARNING),
          levelOf(Violation::SEV_ADVISORY),
          levelOf(Violation::SEV_UNKNOWN)};
}

std::optional<vok::rulecheck::Violation_Severity> severityNamed(const std::string& slug) {
  for (const Level& level : violationLevels()) {
    if (level.slug == slug && level.rank != Violation::SEV_UNKNOWN) {
      return static_cast<vok::rulecheck::Violation_Severity>(level.rank);
    }
  }
  return std::nullopt;
}

std::string severityNames() {
  std::string names;
  for (const Level& level : violationLevels()) {
    if (level.rank != Violation::SEV_UNKNOWN) {
      names += (names.empty() ? "" : ", ") + level.slug;
    }
  }
  return names;
}

}  // namespace rulecheck
