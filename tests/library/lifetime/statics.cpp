// SPDX-License-Identifier: Apache-2.0

// A static object that uses the library while it is constructed and destroyed,
// and keeps a message. OWNER says whose it is.

#include <cstdio>

#include "support/use_library.h"

namespace {

struct Keeper {
  Keeper() : kept(tests::makeResult()) {
    tests::useEverything();
    std::puts("constructed " OWNER);
  }
  ~Keeper() {
    tests::read(kept);
    tests::useEverything();
    std::puts("destroyed " OWNER);
  }
  Keeper(const Keeper&) = delete;
  Keeper& operator=(const Keeper&) = delete;

  vok::rulecheck::SessionResult kept;
};

const Keeper keeper;

}  // namespace
