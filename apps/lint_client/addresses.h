// SPDX-License-Identifier: Apache-2.0

// Addresses of places in files.

#ifndef VOK_APPS_LINT_CLIENT_ADDRESSES_H_
#define VOK_APPS_LINT_CLIENT_ADDRESSES_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>

#include "lint_client/messages.h"

namespace lint_client {

// The address of a line, such as file:///rtl/uart.v#L12. The file is relative to
// the directory, which is an absolute path.
vok::rulecheck::Resource addressOf(const Place& place, const std::filesystem::path& directory);

// The path with each byte percent-encoded that could end a path in an address or
// mean something else there.
std::string percentEncoded(const std::string& path);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_ADDRESSES_H_
