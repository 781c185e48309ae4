#include "rule_server/errors.h"

#include <cstddef>

namespace rule_server {

std::string quoted(const std::string& text) {
  constexpr std::size_t kLongest = 100;
  return '"' + text.substr(0, kLongest) + (text.size() > kLongest ? "...\"" : "\"");
}

}  // namespace rule_server
