// SPDX-License-Identifier: Apache-2.0

// The inputs of render_fuzzer that a fuzzer makes of others.

#include <string>

#include "mutation.h"
#include "render_input.h"

namespace {

const fuzz::Words words = {
    {"",
     {"", "a", "<b>", "\"", " ", "\xff", std::string("\0", 1), std::string(3, 'b'),
      std::string(6, 'c'), std::string(12, 'd'), std::string(24, 'e'), std::string(40, 'f'),
      std::string(300, 'x')}},
    {"path", {"", "/", "/a", "a", "a/b", "//"}},
    {"media_type", {"", "text/html", "text/plain", "TEXT/HTML", "text/html "}},
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  fuzz::Mutation mutation(seed, words);
  fuzz::RenderInput input;
  if (mutation.oneIn(10) || !input.read(data, size)) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  if (mutation.oneIn(3)) {
    input.settings = static_cast<std::uint8_t>(mutation.below(0x80));
  }
  if (mutation.oneIn(5)) {
    input.number = static_cast<std::int32_t>(mutation.below(34)) - 2;
  }
  if (mutation.oneIn(20)) {
    input.arg.Clear();
    mutation.fill(&input.arg);
  }
  mutation.change(&input.arg);
  return fuzz::put(input.bytes(), data, size, maxSize);
}
