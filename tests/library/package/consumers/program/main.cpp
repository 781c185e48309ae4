// An outside program: it links the library and uses all of it. C++11.

#include "check.h"

int failures = 0;

int main() {
  checkMessages();
  checkIdentity();
  checkConstants();
  checkRendering();
  checkMacrosIncludedBefore();
  checkMacrosIncludedAfter();
  return failures == 0 ? 0 : 1;
}
