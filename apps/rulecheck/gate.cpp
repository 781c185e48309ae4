// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/gate.h"

#include "rulecheck/plain_text.h"
#include "rulecheck/severity.h"

namespace rulecheck {

using vok::rulecheck::Violation;

Violations seriousOf(const Gate& gate, const Violations& violations) {
  Violations serious;
  for (const Violation* violation : violations) {
    if (violation->severity() <= gate.failOn || violation->severity() == Violation::SEV_UNKNOWN) {
      serious.push_back(violation);
    }
  }
  return serious;
}

std::string decision(const Gate& gate, const Violations& serious) {
  constexpr std::size_t kMostLines = 20;
  std::string text;
  for (std::size_t i = 0; i < serious.size() && i < kMostLines; ++i) {
    text += lineOf(*serious[i]) + '\n';
  }
  if (serious.size() > kMostLines) {
    text += "... and " + std::to_string(serious.size() - kMostLines) + " more\n";
  }
  return text + (serious.size() > gate.most ? "failed" : "passed") + ": " +
         std::to_string(serious.size()) + " of severity " + levelOf(gate.failOn).slug +
         " or worse, " + std::to_string(gate.most) + " allowed\n";
}

}  // namespace rulecheck
