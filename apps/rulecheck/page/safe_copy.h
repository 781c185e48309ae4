// SPDX-License-Identifier: Apache-2.0

// Messages whose renderings by Converter can go into a page.

#ifndef VOK_APPS_RULECHECK_PAGE_SAFE_COPY_H_
#define VOK_APPS_RULECHECK_PAGE_SAFE_COPY_H_

#include <google/protobuf/message.h>

namespace rulecheck {

// Changes the message and all messages in it, so that what Converter writes of
// them is HTML with no element but anchors, and no anchor but to addresses that
// isLinkable() allows:
//   * all strings, keys and values of maps included, become HTML by escapeText();
//   * a link to anything else loses its url, and its text stands alone: the
//     link_text (for a reference, its plain text), or else what describe() says
//     of the url; text carried inline follows in parentheses;
//   * a link with neither text nor url reads "empty link";
//   * blank names and link texts count as absent;
//   * a reference of an unlisted kind becomes one of kind OTHER.
// Keys that differ only in what escapeText() replaces by U+FFFD fall together:
// look things up in the original.
void makeSafe(google::protobuf::Message* message);

template <typename Message>
Message safeCopy(Message message) {
  makeSafe(&message);
  return message;
}

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_SAFE_COPY_H_
