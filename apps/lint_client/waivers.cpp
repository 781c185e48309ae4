// SPDX-License-Identifier: Apache-2.0

#include "lint_client/waivers.h"

#include <cstddef>
#include <optional>
#include <stdexcept>

namespace lint_client {
namespace {

bool endsWithParts(const std::string& path, const std::string& parts) {
  if (path.size() < parts.size() ||
      path.compare(path.size() - parts.size(), parts.size(), parts) != 0) {
    return false;
  }
  return path.size() == parts.size() || path[path.size() - parts.size() - 1] == '/';
}

bool isFor(const Waiver& waiver, const std::string& rule, const Message& message) {
  return waiver.rule == rule &&
         (waiver.file.empty() ||
          (message.place && endsWithParts(message.place->file, waiver.file)));
}

}  // namespace

Waiver parseWaiver(const std::string& text) {
  const std::size_t equals = text.find('=');
  const std::string where = text.substr(0, equals);
  const std::size_t colon = where.find(':');
  Waiver waiver;
  waiver.rule = where.substr(0, colon);
  waiver.file = colon == std::string::npos ? "" : where.substr(colon + 1);
  waiver.reason = equals == std::string::npos ? "" : text.substr(equals + 1);
  if (waiver.rule.empty() || waiver.reason.empty() || where.back() == ':') {
    throw std::invalid_argument("--waive " + text + ": expected RULE[:FILE]=REASON");
  }
  return waiver;
}

const Waiver* waiverFor(const std::string& rule, const Message& message,
                        const std::vector<Waiver>& waivers) {
  for (const Waiver& waiver : waivers) {
    if (isFor(waiver, rule, message)) {
      return &waiver;
    }
  }
  return nullptr;
}

}  // namespace lint_client
