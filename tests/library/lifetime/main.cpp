// A program that uses the library itself, too.

#include <cstdio>

#include "support/use_library.h"

int main() {
  tests::useEverything();
  std::puts("in main");
}
