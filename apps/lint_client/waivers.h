// SPDX-License-Identifier: Apache-2.0

// Findings that the user accepts: --waive RULE[:FILE]=REASON.

#ifndef VOK_APPS_LINT_CLIENT_WAIVERS_H_
#define VOK_APPS_LINT_CLIENT_WAIVERS_H_

#include <string>
#include <vector>

#include "lint_client/messages.h"

namespace lint_client {

struct Waiver {
  std::string rule;
  // A path, or the last parts of one; empty for all files.
  std::string file;
  std::string reason;
};

// Throws std::invalid_argument.
Waiver parseWaiver(const std::string& text);

// The first of the waivers that is for a message under that rule, or nullptr.
const Waiver* waiverFor(const std::string& rule, const Message& message,
                        const std::vector<Waiver>& waivers);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_WAIVERS_H_
