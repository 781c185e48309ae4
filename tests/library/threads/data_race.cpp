// SPDX-License-Identifier: Apache-2.0

// usage: data_race setting|rendering
//
// Modifies a message in one thread while another one modifies or renders it,
// which is not allowed: ThreadSanitizer has to report both.

#include <vok/rulecheck/Converter.h>

#include <cstring>

#include "run_at_once.h"

int main(int argc, char** argv) {
  const bool rendering = argc > 1 && std::strcmp(argv[1], "rendering") == 0;
  vok::rulecheck::Scalar scalar;
  tests::runAtOnce(2, [&](int thread) {
    if (rendering && thread == 1) {
      (void)vok::rulecheck::Converter::toString(scalar);
    } else {
      scalar.set_int_val(thread);
    }
  });
}
