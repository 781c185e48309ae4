// SPDX-License-Identifier: Apache-2.0

// All findings of a result in one list.

#ifndef VOK_APPS_RULECHECK_PAGE_FINDINGS_H_
#define VOK_APPS_RULECHECK_PAGE_FINDINGS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rulecheck/severity.h"

namespace rulecheck {

// What a finding counts as: its severity if it is a violation of the result, or else one
// of these.
enum Kind { kNotChecked = vok::rulecheck::Violation::SEV_UNKNOWN + 1, kWaived, kMet, kFixed };
const std::vector<Level>& kinds();

// What a violation is since the baseline.
enum Mark { kUnmarked, kNew, kMoved, kUnchanged };
const std::vector<Level>& marks();

// A file that findings are in, as they name it, and its address; "" if a page can't link to it.
struct File {
  std::string path;
  std::string address;
};

struct Finding {
  int kind;
  int number;  // its key in the map of findings
  // One of the two.
  const vok::rulecheck::Violation* violation;
  const vok::rulecheck::Affirmation* affirmation;
  int severity = vok::rulecheck::Violation::SEV_UNKNOWN;
  int mark = kUnmarked;
  std::size_t rule = 0;
  std::size_t file = 0;
  int line = 0;
  int column = 0;
  int placeArgument = -1;  // the number of the argument that is its place
  std::uint64_t fingerprint = 0;

  template <typename Visitor>
  auto visit(const Visitor& visitor) const {
    return violation != nullptr ? visitor(*violation) : visitor(*affirmation);
  }
};

struct Findings {
  std::vector<std::string> rules;  // keys
  std::vector<File> files;         // by path and address; the first one is none
  std::vector<Finding> list;       // by file, line, column, kind and number
  bool isCompared = false;         // with a baseline
  std::size_t uncheckedSince = 0;  // gone findings of rules that are not checked any more
  std::vector<std::size_t> ofKind = std::vector<std::size_t>(kFixed + 1);
  std::vector<std::size_t> ofMark = std::vector<std::size_t>(kUnchanged + 1);
};

// The findings of the result, and those of the baseline that are fixed. A finding is where
// placeOf() says, or else where its first reference to an address of a file leads. The
// baseline may be null. Points into both.
Findings findingsOf(const vok::rulecheck::SessionResult& result,
                    const vok::rulecheck::SessionResult* baseline);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_FINDINGS_H_
