// SPDX-License-Identifier: Apache-2.0

// What the build embeds from the files of this folder.

#ifndef VOK_APPS_RULECHECK_ASSETS_H_
#define VOK_APPS_RULECHECK_ASSETS_H_

#include <string_view>

namespace rulecheck::assets {

// A Mustache template. {{{x}}} takes HTML, {{x}} takes plain words of ours.
extern const std::string_view page;

// The inline style sheet and script, and what the page's policy calls them.
extern const std::string_view style;
extern const std::string_view styleHash;
extern const std::string_view script;
extern const std::string_view scriptHash;

// Verilator's rules, in text format.
extern const std::string_view rules;

}  // namespace rulecheck::assets

#endif  // VOK_APPS_RULECHECK_ASSETS_H_
