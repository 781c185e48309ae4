// One message, read by many threads at once while nobody modifies it.

#include <gmock/gmock.h>
#include <google/protobuf/arena.h>

#include "run_at_once.h"
#include "support/use_library.h"

namespace {

using testing::IsEmpty;
using vok::rulecheck::SessionResult;

void expectReadable(const SessionResult& result) {
  const auto readOften = [&result](int) {
    for (int i = 0; i < 20; ++i) {
      tests::read(result);
    }
  };
  EXPECT_THAT(tests::runAtOnce(16, readOften), IsEmpty());
}

TEST(Reading, OfAMessageThatWasBuilt) {
  expectReadable(tests::makeResult());
}

TEST(Reading, OfAMessageThatWasParsed) {
  SessionResult result;
  ASSERT_TRUE(result.ParseFromString(tests::makeResult().SerializeAsString()));
  expectReadable(result);
}

TEST(Reading, OfAMessageOnAnArena) {
  google::protobuf::Arena arena;
  SessionResult* result = SessionResult().New(&arena);
  *result = tests::makeResult();
  expectReadable(*result);
}

}  // namespace
