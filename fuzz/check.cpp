#include "check.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>

namespace fuzz {
namespace {

std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) {
    char escaped[5] = {c, '\0'};
    if (std::isprint(static_cast<unsigned char>(c)) == 0 || c == '\\') {
      std::snprintf(escaped, sizeof escaped, "\\x%02x",
                    static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
    result += escaped;
  }
  return result;
}

}  // namespace

void check(bool holds, const std::string& subject, const char* sentence) {
  if (!holds) {
    std::fprintf(stderr, "%s: %s\n", subject.c_str(), sentence);
    std::abort();
  }
}

void checkEqual(const std::string& actual, const std::string& expected, const std::string& subject,
                const char* sentence) {
  if (actual != expected) {
    std::fprintf(stderr, "actual:   %s\nexpected: %s\n", printable(actual).c_str(),
                 printable(expected).c_str());
    check(false, subject, sentence);
  }
}

}  // namespace fuzz
