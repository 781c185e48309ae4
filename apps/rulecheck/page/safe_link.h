// SPDX-License-Identifier: Apache-2.0

// Which resources a page links to, and how their addresses are written.

#ifndef VOK_APPS_RULECHECK_PAGE_SAFE_LINK_H_
#define VOK_APPS_RULECHECK_PAGE_SAFE_LINK_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

namespace rulecheck {

// Whether a page may link to the resource: an http or https resource with a
// host, a file resource of this host (none or "localhost", and no port) with a path, a
// mailto resource with an address (which is the host, or else the path) and no query,
// which would be headers of the mail. No other resource.
bool isLinkable(const vok::rulecheck::Resource& resource);

// Changes a linkable resource so that Converter::href gives an address that
// browsers read the way it is meant:
//   * in host, path, query and fragment, a character that has no place in an
//     address (a space, a quote, a backslash, any byte outside of ASCII...) is
//     percent-encoded, and so is "?" or "#" where it would begin another part;
//     a percent-encoding that is there already stays;
//   * a file's path has single slashes only;
//   * a mail address gets "mailto:" put before it and keeps no other part.
void encodeAddress(vok::rulecheck::Resource* resource);

// Whether the resource carries text inline: data that is not empty, whose media
// type is absent or begins with "text/".
bool carriesText(const vok::rulecheck::Resource& resource);

// The resource as plain text, never empty: the text that it carries inline, what
// other inline data is, or the address.
std::string describe(const vok::rulecheck::Resource& resource);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SAFE_LINK_H_
