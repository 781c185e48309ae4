// SPDX-License-Identifier: Apache-2.0

// usage: program [fork_before|fork_after|shutdown]
//
// Uses everything; forks before or after the first use, or shuts the runtime down.

#include <google/protobuf/stubs/common.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/use_library.h"

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode != "fork_before") {
    tests::useEverything();
  }
  if (mode.rfind("fork", 0) == 0) {
    const pid_t child = fork();
    int status = 0;
    if (child < 0 || (child > 0 && (waitpid(child, &status, 0) != child || status != 0))) {
      std::fprintf(stderr, "the child ended with status %d\n", status);
      return 1;
    }
    tests::useEverything();
    std::puts(child == 0 ? "done in the child" : "done");
    return 0;
  }
  if (mode.empty()) {
    std::puts("in main");
    return 0;
  }
  google::protobuf::ShutdownProtobufLibrary();
  std::puts("done");
}
