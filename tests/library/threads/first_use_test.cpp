// The first use of the library in a process, by many threads at once: nothing
// needs to be set up beforehand. Only the first case that a process runs is a
// first use, so these cases are to be run one by one, as CTest does.

#include <gmock/gmock.h>

#include "run_at_once.h"
#include "support/use_library.h"

namespace {

using testing::IsEmpty;

void expectFirstUse(void (*use)()) {
  EXPECT_THAT(tests::runAtOnce(32, [use](int) { use(); }), IsEmpty());
}

TEST(FirstUse, OfDefaultInstances) {
  expectFirstUse(tests::useDefaultInstances);
}

TEST(FirstUse, OfDescriptors) {
  expectFirstUse(tests::useDescriptors);
}

TEST(FirstUse, OfReflection) {
  expectFirstUse(tests::useReflection);
}

TEST(FirstUse, OfParsing) {
  expectFirstUse(tests::useParsing);
}

TEST(FirstUse, OfTextFormat) {
  expectFirstUse(tests::useTextFormat);
}

TEST(FirstUse, OfRendering) {
  expectFirstUse(tests::useRendering);
}

TEST(FirstUse, OfADifferentPartInEachThread) {
  using Use = void (*)();
  const Use uses[] = {tests::useDefaultInstances, tests::useDescriptors, tests::useReflection,
                      tests::useParsing,          tests::useTextFormat,  tests::useRendering};
  EXPECT_THAT(tests::runAtOnce(30, [&uses](int i) { uses[i % 6](); }), IsEmpty());
}

}  // namespace
