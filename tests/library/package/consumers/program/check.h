// What an outside program checks: prints the failed condition and counts it.

#ifndef CHECK_H_
#define CHECK_H_

#include <cstdio>

extern int failures;

#define CHECK(condition)                                                    \
  do {                                                                      \
    if (!(condition)) {                                                     \
      std::printf("%s:%d: not true: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                           \
    }                                                                       \
  } while (false)

void checkMessages();
void checkIdentity();
void checkConstants();
void checkRendering();
void checkMacrosIncludedBefore();
void checkMacrosIncludedAfter();

#endif  // CHECK_H_
