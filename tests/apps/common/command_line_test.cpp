// SPDX-License-Identifier: Apache-2.0

// What a program prints when something fails.

#include "common/command_line.h"

#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

struct Outcome {
  int status;
  std::string errors;
};

Outcome run(const std::function<void()>& work) {
  CLI::App app("", "program");
  const char* const words[] = {"program"};
  testing::internal::CaptureStderr();
  const int status = apps::run(app, 1, words, work);
  return {status, testing::internal::GetCapturedStderr()};
}

TEST(CommandLines, AnswerFailuresWithOneLineWithoutControlCharacters) {
  const Outcome failed = run([] { throw std::runtime_error("a\x1b[2J\r\nb: \xE2\x80\xAE\xFF"); });
  EXPECT_EQ(2, failed.status);
  EXPECT_EQ("program: a?[2J??b: ??\n", failed.errors);
}

TEST(CommandLines, PrintNothingThatTheRuntimeLogs) {
  const Outcome logged = run([] { GOOGLE_LOG(ERROR) << "the runtime's own words"; });
  EXPECT_EQ(0, logged.status);
  EXPECT_EQ("", logged.errors);
}

TEST(CommandLines, TakeALimitOfSizesForAFailure) {
  EXPECT_EQ(0, run([] { raise(SIGXFSZ); }).status);
}

}  // namespace
