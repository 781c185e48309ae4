// SPDX-License-Identifier: Apache-2.0

// One use of each part of the library, for tests of when and where it is used:
// at first, at exit, in a plugin, in many threads.
//
// Each function checks what it gets, and throws std::logic_error if that is wrong.

#ifndef VOK_TESTS_SUPPORT_USE_LIBRARY_H_
#define VOK_TESTS_SUPPORT_USE_LIBRARY_H_

#include <vok/rulecheck/RuleService.pb.h>

namespace tests {

// The result of a session with one entry in each of its maps.
vok::rulecheck::SessionResult makeResult();

void useDefaultInstances();
void useDescriptors();
void useParsing();
void useTextFormat();
void useRendering();

// All of the above.
void useEverything();

// Reads a copy of makeResult() in each way that leaves it unchanged: by accessors, as bytes,
// as text, which takes reflection, and as HTML.
void read(const vok::rulecheck::SessionResult& result);

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_USE_LIBRARY_H_
