// SPDX-License-Identifier: Apache-2.0

#include "rule_server/errors.h"

#include <algorithm>
#include <cstddef>

namespace rule_server {

std::string quoted(const std::string& text) {
  constexpr std::size_t kLongest = 100;
  std::string shown = text.substr(0, kLongest);
  std::replace(shown.begin(), shown.end(), '\0', ' ');
  return '"' + shown + (text.size() > kLongest ? "...\"" : "\"");
}

}  // namespace rule_server
