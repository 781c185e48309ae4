// usage: shutdown [leaking]
//
// Uses everything, and then gives back what the runtime keeps; leaks a message if
// told to.

#include <google/protobuf/stubs/common.h>

#include <cstdio>

#include "support/use_library.h"

namespace {

// The first thing that happens, so that what follows overwrites the pointer.
void leak() {
  new vok::rulecheck::SessionResult(tests::makeResult());
}

}  // namespace

int main(int argc, char**) {
  if (argc > 1) {
    leak();
  }
  tests::useEverything();
  google::protobuf::ShutdownProtobufLibrary();
  std::puts("done");
}
