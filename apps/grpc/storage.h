// SPDX-License-Identifier: Apache-2.0

// What the rule server may keep: the options about its files and limits.

#ifndef VOK_APPS_GRPC_STORAGE_H_
#define VOK_APPS_GRPC_STORAGE_H_

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "rule_server/files.h"
#include "rule_server/limits.h"

namespace rule_grpc {

struct Storage {
  std::string directory;
  bool mayHoldHome = false;
  rule_server::Limits limits;
};

void define(CLI::App& app, Storage& storage);

// None without a directory. Throws std::runtime_error for one that needs mayHoldHome.
std::optional<rule_server::DirectoryFiles> filesOf(const Storage& storage);

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_STORAGE_H_
