// SPDX-License-Identifier: Apache-2.0

// The inputs of parse_fuzzer that a fuzzer makes of others.

#include <memory>
#include <string>

#include "mutation.h"
#include "support/messages.h"

namespace {

const fuzz::Words words = {
    {"", {"", "a", "\xff", std::string("\0", 1), "\\n'\"", std::string(130, 'x')}},
};

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  fuzz::Mutation mutation(seed, words);
  if (size == 0 || mutation.oneIn(2)) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  const auto& prototypes = tests::allMessages();
  const std::unique_ptr<google::protobuf::Message> message(
      prototypes[*data % prototypes.size()]->New());
  if (!message->ParsePartialFromArray(data + 1, static_cast<int>(size - 1))) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  if (mutation.oneIn(20)) {
    mutation.fill(message.get());
  }
  mutation.change(message.get());
  if (mutation.oneIn(3)) {
    mutation.complete(message.get());
  }
  const std::string number(1, static_cast<char>(*data));
  return fuzz::put(number + message->SerializePartialAsString(), data, size, maxSize);
}
