// SPDX-License-Identifier: Apache-2.0

// What a message of Verilator's says, in the protocol's terms.

#ifndef VOK_APPS_LINT_CLIENT_FINDING_ARGUMENTS_H_
#define VOK_APPS_LINT_CLIENT_FINDING_ARGUMENTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>

#include "lint_client/messages.h"

namespace lint_client {

// The arguments of the message: its place, its text, the objects that it names,
// the instance, links to other places, and advice. Files are relative to the
// directory.
vok::rulecheck::ArgList argumentsOf(const Message& message, const std::filesystem::path& directory);

// Sets threshold_value and actual_value if the message compares two values.
void addValues(const Message& message, vok::rulecheck::CreateViolation* body);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_FINDING_ARGUMENTS_H_
