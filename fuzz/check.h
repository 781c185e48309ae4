// SPDX-License-Identifier: Apache-2.0

// How a fuzz target reports what does not hold: one sentence, and the end of the
// process, which the fuzzer and CTest both take for a failure.

#ifndef VOK_FUZZ_CHECK_H_
#define VOK_FUZZ_CHECK_H_

#include <string>

namespace fuzz {

// Does nothing if it holds. Otherwise prints "SUBJECT: SENTENCE" and aborts.
void check(bool holds, const std::string& subject, const char* sentence);

// The same for two texts that are to be equal; prints both of them.
void checkEqual(const std::string& actual, const std::string& expected, const std::string& subject,
                const char* sentence);

}  // namespace fuzz

#endif  // VOK_FUZZ_CHECK_H_
