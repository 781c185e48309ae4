// SPDX-License-Identifier: Apache-2.0

#include "grpc/storage.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <stdexcept>

namespace rule_grpc {

void define(CLI::App& app, Storage& storage) {
  app.add_option("--files", storage.directory,
                 "Directory of all files that clients can name; without it, they can name none")
      ->check(CLI::ExistingDirectory);
  app.add_flag("--files-may-hold-home", storage.mayHoldHome,
               "Let --files be /, a home directory, or a directory above one")
      ->needs("--files");
  rule_server::Limits& limits = storage.limits;
  struct Limit {
    const char* option;
    std::size_t* value;
    const char* help;
  };
  // A serialized message has less than 2 GiB, and a finding's number 31 bits.
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  for (const Limit& limit : {
           Limit{"--max-rules", &limits.rules, "Rules in the catalog"},
           Limit{"--max-rule-bytes", &limits.ruleBytes, "Bytes of a rule in memory"},
           Limit{"--max-sessions", &limits.sessions, "Sessions, stopped ones included"},
           Limit{"--max-findings", &limits.findings, "Findings of a session"},
           Limit{"--max-session-bytes", &limits.sessionBytes,
                 "Bytes of a session's result in memory"},
           Limit{"--max-text-bytes", &limits.textBytes,
                 "Bytes in memory of what is written as a page, text or JSON"},
       }) {
    app.add_option(limit.option, *limit.value, limit.help)
        ->check(CLI::Range(std::size_t{1}, kMost))
        ->capture_default_str();
  }
  // CLI11 takes a negative number for an enormous one.
  app.add_option("--max-bytes", limits.bytes, "Bytes of all that is recorded, in memory")
      ->check(CLI::Range(std::size_t{1}, std::numeric_limits<std::size_t>::max() / 2))
      ->capture_default_str();
}

std::optional<rule_server::DirectoryFiles> filesOf(const Storage& storage) {
  if (storage.directory.empty()) {
    return std::nullopt;
  }
  if (!storage.mayHoldHome && rule_server::holdsHome(storage.directory)) {
    throw std::runtime_error(storage.directory +
                             ": is or holds a home directory, which needs --files-may-hold-home");
  }
  return std::optional<rule_server::DirectoryFiles>(storage.directory);
}

}  // namespace rule_grpc
