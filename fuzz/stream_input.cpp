#include "stream_input.h"

#include <cstdint>

namespace fuzz {

std::optional<std::string> readFrame(const std::string& stream, std::size_t* position) {
  constexpr unsigned kLongestVarint = 10;
  std::uint64_t length = 0;
  std::size_t at = *position;
  for (unsigned i = 0;; ++i) {
    if (at == stream.size() || i == kLongestVarint) {
      return {};
    }
    const auto byte = static_cast<unsigned char>(stream[at++]);
    length |= static_cast<std::uint64_t>(byte & 0x7f) << 7 * i;
    if (byte < 0x80) {
      break;
    }
  }
  if (length > stream.size() - at) {
    return {};
  }
  *position = at + length;
  return stream.substr(at, length);
}

void appendFrame(const std::string& content, std::string* stream) {
  std::size_t rest = content.size();
  for (; rest >= 0x80; rest >>= 7) {
    *stream += static_cast<char>(rest | 0x80);
  }
  *stream += static_cast<char>(rest);
  *stream += content;
}

}  // namespace fuzz
