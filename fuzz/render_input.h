// SPDX-License-Identifier: Apache-2.0

// What render_fuzzer makes of its input: five bytes of settings, and the bytes of
// an Arg, which contains each kind of value that can be rendered.

#ifndef VOK_FUZZ_RENDER_INPUT_H_
#define VOK_FUZZ_RENDER_INPUT_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

struct RenderInput {
  static constexpr std::size_t kSettings = 5;

  // Returns false if the bytes are none; required fields may be missing.
  bool read(const std::uint8_t* data, std::size_t size) {
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

  std::string bytes() const {
    std::string result(1, static_cast<char>(settings));
    for (const int shift : {24, 16, 8, 0}) {
      result += static_cast<char>(static_cast<std::uint32_t>(number) >> shift);
    }
    return result + arg.SerializePartialAsString();
  }

  // Bits 0 and 1 select the locale, bit 2 whether it is that of the thread or of the
  // process, bits 3 and 4 the rounding mode, bit 5 a grouping global locale of C++,
  // bit 6 whether schemes and kinds are replaced by the number.
  std::uint8_t settings = 0;
  // The number of an enumeration, listed or not.
  std::int32_t number = 0;
  vok::rulecheck::Arg arg;
};

}  // namespace fuzz

#endif  // VOK_FUZZ_RENDER_INPUT_H_
