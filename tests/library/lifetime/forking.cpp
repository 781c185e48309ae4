// usage: forking before|after
//
// Forks before or after the first use of the library. The child uses everything
// and ends as a program does, then the parent.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "support/use_library.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "after") == 0) {
    tests::useEverything();
  }
  const pid_t child = fork();
  if (child < 0) {
    std::perror("fork");
    return 1;
  }
  if (child > 0) {
    int status = -1;
    if (waitpid(child, &status, 0) != child || status != 0) {
      std::fprintf(stderr, "the child ended with status %d\n", status);
      return 1;
    }
  }
  tests::useEverything();
  std::puts(child == 0 ? "done in the child" : "done");
}
