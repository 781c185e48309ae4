#include "render_input.h"

namespace fuzz {

bool RenderInput::read(const std::uint8_t* data, std::size_t size) {
  if (size < kSettings ||
      !arg.ParsePartialFromArray(data + kSettings, static_cast<int>(size - kSettings))) {
    return false;
  }
  settings = data[0];
  std::uint32_t bits = 0;
  for (std::size_t i = 1; i < kSettings; ++i) {
    bits = bits << 8 | data[i];
  }
  number = static_cast<std::int32_t>(bits);
  return true;
}

std::string RenderInput::bytes() const {
  std::string result(1, static_cast<char>(settings));
  for (const int shift : {24, 16, 8, 0}) {
    result += static_cast<char>(static_cast<std::uint32_t>(number) >> shift);
  }
  return result + arg.SerializePartialAsString();
}

}  // namespace fuzz
