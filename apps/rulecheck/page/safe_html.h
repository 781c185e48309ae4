// SPDX-License-Identifier: Apache-2.0

// Texts, addresses and messages of unknown origin, made fit for a page.

#ifndef VOK_APPS_RULECHECK_PAGE_SAFE_HTML_H_
#define VOK_APPS_RULECHECK_PAGE_SAFE_HTML_H_

#include <vok/rulecheck/RuleService.pb.h>

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

// Whether a page may link to the resource: an http or https resource with a
// host, a file resource of this host (none or "localhost", and no port) with a path, a
// mailto resource with an address (which is the host, or else the path) and no query,
// which would be headers of the mail. No other resource.
bool isLinkable(const vok::rulecheck::Resource& resource);

// The resource as plain text, never empty: the text that it carries inline, what
// other inline data is, or the address.
std::string describe(const vok::rulecheck::Resource& resource);

// Changes the message and all messages in it, so that what Converter writes of
// them is HTML with no element but anchors, and no anchor but to addresses that
// isLinkable() allows:
//   * all strings, keys and values of maps included, become HTML by escapeText();
//   * addresses become those that browsers read the way they are meant. In host, path,
//     query and fragment, a character that has no place in an address (a space, a quote, a
//     backslash, any byte outside of ASCII...) is percent-encoded, and so is "?" or "#" where
//     it would begin another part; a percent-encoding that is there already stays. A
//     file's path has single slashes only. A mail address gets "mailto:" put before it
//     and keeps no other part;
//   * a link to anything else loses its url, and its text stands alone: the
//     link_text (for a reference, its plain text), or else what describe() says
//     of the url; text carried inline follows in parentheses;
//   * a link with neither text nor url reads "empty link";
//   * blank names and link texts count as absent.
// Keys that differ only in what escapeText() replaces by U+FFFD fall together:
// look things up in the original.
void makeSafe(google::protobuf::Message* message);

template <typename Message>
Message safeCopy(Message message) {
  makeSafe(&message);
  return message;
}

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SAFE_HTML_H_
