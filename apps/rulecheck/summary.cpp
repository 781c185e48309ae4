// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/summary.h"

#include <iomanip>
#include <map>
#include <set>
#include <sstream>

#include "common/characters.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/severity.h"

namespace rulecheck {

std::string summary(const vok::rulecheck::SessionResult& result,
                    const std::vector<std::string>& remarks) {
  std::map<int, std::size_t> counts;
  for (const auto& entry : result.violations().hashmap()) {
    ++counts[entry.second.severity()];
  }
  std::set<std::string> unchecked;
  std::size_t waived = 0;
  for (const auto& entry : result.waived_violations().hashmap()) {
    if (isNotChecked(entry.second)) {
      unchecked.insert(entry.second.rule_key());
    } else {
      ++waived;
    }
  }
  std::ostringstream out;
  const auto add = [&out](const std::string& label, std::size_t count) {
    out << "  " << std::left << std::setw(20) << label << std::right << std::setw(5) << count
        << '\n';
  };
  out << "Findings\n";
  for (const Level& level : violationLevels()) {
    if (level.rank != vok::rulecheck::Violation::SEV_UNKNOWN || counts[level.rank] != 0) {
      add(level.word, counts[level.rank]);
    }
  }
  add("waived", waived);
  add("rules affirmed", result.affirmations().hashmap().size());
  add("rules not checked", unchecked.size());
  for (const std::string& remark : remarks) {
    out << apps::oneLine(remark) << '\n';
  }
  return out.str();
}

}  // namespace rulecheck
