// SPDX-License-Identifier: Apache-2.0

// Modifies a message in one thread while another one renders it, which is not allowed:
// ThreadSanitizer has to report it.

#include <vok/rulecheck/Converter.h>

#include "run_at_once.h"

int main() {
  vok::rulecheck::Scalar scalar;
  tests::runAtOnce(2, [&](int thread) {
    if (thread == 1) {
      (void)vok::rulecheck::Converter::toString(scalar);
    } else {
      scalar.set_int_val(thread);
    }
  });
}
