// SPDX-License-Identifier: Apache-2.0

// What the page's script shows, as JSON.

#ifndef VOK_APPS_RULECHECK_PAGE_DATA_BLOCK_H_
#define VOK_APPS_RULECHECK_PAGE_DATA_BLOCK_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>

#include "rulecheck/page/findings.h"

namespace rulecheck {

// The rule of that key, which is looked up in specs_violated and then in specs_affirmed;
// null if neither has it.
const vok::rulecheck::RuleSpec* specOf(const vok::rulecheck::SessionResult& result,
                                       const std::string& key);

// The name of that rule; "" if it has none but its key.
std::string nameOf(const vok::rulecheck::RuleSpec& spec, const std::string& key);

// Returns an object that can be the content of a script element. Texts that findings share
// are in lists, in which findings have numbers:
//
//   kinds, marks  [word, slug] of each
//   files         [path, address or ""]
//   rules         [key, name, [label, HTML...], [further label, HTML...]]
//   modules       names; the first one is none
//   labels        of values
//   texts         HTML
//   findings      [kind, severity, mark, rule, file, line, column, module, number, permalink,
//                 text, [HTML of the argument in each U+0001 of the text...],
//                 label, text, label, text...]
//   sources       [[first line, text, text...]...] of each file
//
// Names, keys and paths are plain text. The source lines are read below the root; none
// are there if it is empty.
std::string dataBlock(const vok::rulecheck::SessionResult& result, const Findings& findings,
                      const std::filesystem::path& sourceRoot);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_DATA_BLOCK_H_
