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
#include <utility>

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
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"a.v: \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80",
       "a.v: \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80"},
      {"a\nb\r\tc", "a b c"},
      {"\x1b[2J\x07\x7f", "?[2J??"},
      {"\xC2\x9B\x9B\xFF", "???"},
      {"\xE2\x80\xA9 \xE2\x80\xAA\xE2\x80\xAE \xE2\x80\xAF", "\xE2\x80\xA9 ?? \xE2\x80\xAF"},
      {"\xE2\x81\xA5 \xE2\x81\xA6\xE2\x81\xA9 \xE2\x81\xAA", "\xE2\x81\xA5 ?? \xE2\x81\xAA"},
  };
  for (const auto& [text, line] : cases) {
    const char* const error = text;
    const Outcome failed = run([error] { throw std::runtime_error(error); });
    EXPECT_EQ(2, failed.status) << line;
    EXPECT_EQ(std::string("program: ") + line + '\n', failed.errors);
  }
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
