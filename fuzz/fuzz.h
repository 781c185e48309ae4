// SPDX-License-Identifier: Apache-2.0

// What the fuzz targets share. They use GoogleTest's assertions: one that fails ends the process,
// which the fuzzer and CTest report as a failure.

#ifndef VOK_FUZZ_FUZZ_H_
#define VOK_FUZZ_FUZZ_H_

#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <string>

namespace fuzz {

// The target, which each program defines.
void run(const std::string& input);

// Makes failed assertions end the process.
void initialize();

// Reads text format, in which required fields may be missing. Logs nothing.
bool read(const std::string& text, google::protobuf::Message* message);

}  // namespace fuzz

#endif  // VOK_FUZZ_FUZZ_H_
