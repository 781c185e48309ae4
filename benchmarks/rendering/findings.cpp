#include "rendering/findings.h"

#include <utility>

#include "data/findings.h"

namespace benchmarks {

Findings makeFindings(std::size_t count) {
  Random random(3);
  Findings findings(count);
  for (auto& finding : findings) {
    finding = std::make_unique<vok::rulecheck::Violation>();
    fillViolation(random, 0, finding.get());
  }
  return findings;
}

Findings makeScatteredFindings() {
  Random random(4);
  Findings findings = makeFindings(150000);
  for (std::size_t left = findings.size(); left > 1; --left) {
    std::swap(findings[left - 1], findings[random.next() % left]);
  }
  return findings;
}

}  // namespace benchmarks
