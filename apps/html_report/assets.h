// SPDX-License-Identifier: Apache-2.0

// The parts of the page, which the build embeds from the files of this folder.

#ifndef VOK_APPS_HTML_REPORT_ASSETS_H_
#define VOK_APPS_HTML_REPORT_ASSETS_H_

#include <string_view>

namespace html_report::assets {

// Mustache templates. {{{x}}} takes HTML, {{x}} takes plain words of ours.
extern const std::string_view page;
extern const std::string_view group;
extern const std::string_view finding;

// The inline style sheet and script, and what the page's policy calls them.
extern const std::string_view style;
extern const std::string_view styleHash;
extern const std::string_view script;
extern const std::string_view scriptHash;

}  // namespace html_report::assets

#endif  // VOK_APPS_HTML_REPORT_ASSETS_H_
