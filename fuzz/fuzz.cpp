// SPDX-License-Identifier: Apache-2.0

#include "fuzz.h"

#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>

#include <cstddef>
#include <cstdint>

namespace fuzz {

void initialize() {
  testing::GTEST_FLAG(break_on_failure) = true;
}

bool read(const std::string& text, google::protobuf::Message* message) {
  const google::protobuf::LogSilencer silencer;
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  return parser.ParseFromString(text, message);
}

}  // namespace fuzz

// What libFuzzer calls.
extern "C" {

int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/);
int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  fuzz::initialize();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::run({reinterpret_cast<const char*>(data), size});
  return 0;
}

}  // extern "C"
