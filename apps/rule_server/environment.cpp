// SPDX-License-Identifier: Apache-2.0

#include "rule_server/environment.h"

#include <chrono>
#include <cstddef>
#include <random>

namespace rule_server {

std::int64_t millisecondsSince1970() {
  using std::chrono::milliseconds;
  const auto time = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<milliseconds>(time).count();
}

// In the form of a random (version 4) identifier.
std::string randomUuid() {
  std::string uuid = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  std::random_device random;
  for (char& c : uuid) {
    const std::size_t digit = random() % 16;
    if (c == 'x') {
      c = "0123456789abcdef"[digit];
    } else if (c == 'y') {
      c = "89ab"[digit % 4];
    }
  }
  return uuid;
}

}  // namespace rule_server
