// SPDX-License-Identifier: Apache-2.0

// What a program prints when something fails.

#include "common/command_line.h"

#include <google/protobuf/stubs/logging.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

// What a program prints as errors that does the work and ends with the status.
std::string errorsOf(int status, const std::function<void()>& work) {
  CLI::App app("", "program");
  const char* const words[] = {"program"};
  testing::internal::CaptureStderr();
  EXPECT_EQ(status, apps::run(app, 1, words, work));
  return testing::internal::GetCapturedStderr();
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
    EXPECT_EQ(std::string("program: ") + line + '\n',
              errorsOf(2, [text = text] { throw std::runtime_error(text); }));
  }
}

TEST(CommandLines, PrintNothingThatTheRuntimeLogs) {
  EXPECT_EQ("", errorsOf(0, [] { GOOGLE_LOG(ERROR) << "the runtime's own words"; }));
}

}  // namespace
