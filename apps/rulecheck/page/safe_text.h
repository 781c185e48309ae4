// SPDX-License-Identifier: Apache-2.0

// Text of unknown origin, made fit for a page.

#ifndef VOK_APPS_RULECHECK_PAGE_SAFE_TEXT_H_
#define VOK_APPS_RULECHECK_PAGE_SAFE_TEXT_H_

#include <string>

namespace rulecheck {

// Returns the text as HTML that shows it, between tags and inside a quoted
// attribute value: & < > " ' become character references. The result is valid
// UTF-8: a byte that is not UTF-8, and each character that apps::isHarmless()
// names except tab and line feed, become U+FFFD. A carriage return is left out.
std::string escapeText(const std::string& text);

// The same without character references, for what is not HTML.
std::string cleanText(const std::string& text);

// Whether the text has nothing but white space.
bool isBlank(const std::string& text);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SAFE_TEXT_H_
