// SPDX-License-Identifier: Apache-2.0

#ifndef VOK_APPS_RULECHECK_SEND_H_
#define VOK_APPS_RULECHECK_SEND_H_

#include <CLI/CLI.hpp>

namespace rulecheck {

// Adds the command that records a result in a server.
void addSend(CLI::App& app);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_SEND_H_
