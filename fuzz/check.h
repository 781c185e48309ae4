// SPDX-License-Identifier: Apache-2.0

// What the fuzz targets share. A failed check ends the process, which the fuzzer and CTest
// report as a failure.

#ifndef VOK_FUZZ_CHECK_H_
#define VOK_FUZZ_CHECK_H_

#include <google/protobuf/stubs/logging.h>
#include <google/protobuf/text_format.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "support/messages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline void check(bool holds, const std::string& subject, const char* sentence) {
  if (!holds) {
    std::fprintf(stderr, "%s: %s\n", subject.c_str(), sentence);
    std::abort();
  }
}

inline void checkEqual(const std::string& actual, const std::string& expected,
                       const std::string& subject, const char* sentence) {
  if (actual != expected) {
    std::fprintf(stderr, "actual:   %s\n  %s\nexpected: %s\n  %s\n", actual.c_str(),
                 tests::toHex(actual).c_str(), expected.c_str(), tests::toHex(expected).c_str());
    check(false, subject, sentence);
  }
}

// Reads text format, in which required fields may be missing. Logs nothing.
inline bool read(const std::string& text, google::protobuf::Message* message) {
  const google::protobuf::LogSilencer silencer;
  google::protobuf::TextFormat::Parser parser;
  parser.AllowPartialMessage(true);
  return parser.ParseFromString(text, message);
}

}  // namespace fuzz

#endif  // VOK_FUZZ_CHECK_H_
