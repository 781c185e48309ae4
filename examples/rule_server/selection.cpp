#include "rule_server/selection.h"

#include <cstddef>

#include "rule_server/errors.h"

namespace rule_server {

// Keys are bytes, so that an expression is taken byte by byte too.
void Selection::setRegex(const std::string& text) {
  RE2::Options options(RE2::Quiet);
  options.set_encoding(RE2::Options::EncodingLatin1);
  regex_.emplace(text, options);
  if (!regex_->ok()) {
    throw Failure(ErrorCode::SelectionInvalid, "regex " + quoted(text) + ": " + regex_->error());
  }
}

bool Selection::matches(const std::string& key) const {
  return (!pattern_ || matchesPattern(key, *pattern_)) &&
         (!regex_ || RE2::PartialMatch(key, *regex_));
}

// Whatever follows the last "*" that was passed is tried at each later place in
// turn; an earlier "*" never has to be tried again.
bool matchesPattern(const std::string& text, const std::string& pattern) {
  std::size_t in = 0;
  std::size_t at = 0;
  std::size_t star = std::string::npos;
  std::size_t starIn = 0;
  while (in < text.size()) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      starIn = in;
    } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == text[in])) {
      ++at;
      ++in;
    } else if (star != std::string::npos) {
      at = star + 1;
      in = ++starIn;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == std::string::npos;
}

}  // namespace rule_server
