// SPDX-License-Identifier: Apache-2.0

#include "check.h"

#include <cstdio>
#include <cstdlib>

#include "support/messages.h"

namespace fuzz {

void check(bool holds, const std::string& subject, const char* sentence) {
  if (!holds) {
    std::fprintf(stderr, "%s: %s\n", subject.c_str(), sentence);
    std::abort();
  }
}

void checkEqual(const std::string& actual, const std::string& expected, const std::string& subject,
                const char* sentence) {
  if (actual != expected) {
    std::fprintf(stderr, "actual:   %s\n  %s\nexpected: %s\n  %s\n", actual.c_str(),
                 tests::toHex(actual).c_str(), expected.c_str(), tests::toHex(expected).c_str());
    check(false, subject, sentence);
  }
}

}  // namespace fuzz
