// SPDX-License-Identifier: Apache-2.0

#include "rule_server/selection.h"

#include <cstddef>
#include <cstdint>

#include "rule_server/errors.h"

namespace rule_server {

void Selection::setPattern(const std::string& text) {
  std::string syntax = "(?s)";
  for (const char c : text) {
    syntax += c == '*' ? ".*" : c == '?' ? "." : RE2::QuoteMeta(std::string(1, c));
  }
  set(&pattern_, "pattern", text, syntax);
}

// Keys are bytes, so that an expression is taken byte by byte too. Its size limits the
// time that each byte of a key takes.
void Selection::set(Expression* expression, const char* name, const std::string& text,
                    const std::string& syntax) {
  constexpr std::size_t kLongest = 1000;
  constexpr std::int64_t kMostMemory = 1 << 20;
  if (text.size() > kLongest) {
    throw Failure(ErrorCode::SelectionInvalid,
                  std::string(name) + " " + quoted(text) + " has more than 1000 bytes");
  }
  RE2::Options options(RE2::Quiet);
  options.set_encoding(RE2::Options::EncodingLatin1);
  options.set_max_mem(kMostMemory);
  expression->emplace(syntax, options);
  if (!(*expression)->ok()) {
    throw Failure(ErrorCode::SelectionInvalid,
                  std::string(name) + " " + quoted(text) + ": " + (*expression)->error());
  }
}

// The worst expressions take a tenth of a second for a key.
bool Selection::matches(const std::string& key) {
  constexpr auto kLongest = std::chrono::seconds(5);
  const auto start = std::chrono::steady_clock::now();
  const bool result =
      (!pattern_ || RE2::FullMatch(key, *pattern_)) && (!regex_ || RE2::PartialMatch(key, *regex_));
  spent_ += std::chrono::steady_clock::now() - start;
  if (spent_ > kLongest) {
    throw Failure(ErrorCode::LimitExceeded,
                  "selecting rules takes more than five seconds: simplify pattern and regex");
  }
  return result;
}

}  // namespace rule_server
