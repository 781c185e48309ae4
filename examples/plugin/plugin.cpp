// A plugin that says how severe a violation is.

// Shown in docs/recipes.md: begin
#include <vok/rulecheck/Converter.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <string>

using namespace vok::rulecheck;

// Writes the word for a violation's severity and a zero byte to the host's buffer. Returns 0, or -1
// if the bytes are malformed or incomplete or the word doesn't fit. No memory and no exception of
// the plugin reaches the host.
extern "C" __attribute__((visibility("default"))) int severityWord(const void* bytes,
                                                                   std::size_t size, char* word,
                                                                   std::size_t room) {
  try {
    Violation violation;
    const std::string input(static_cast<const char*>(bytes), size);
    if (!violation.ParsePartialFromString(input) || !violation.IsInitialized()) {
      return -1;
    }
    const std::string text = Converter::toString(violation.severity());
    if (text.size() >= room) {
      return -1;
    }
    std::memcpy(word, text.c_str(), text.size() + 1);
    return 0;
  } catch (const std::exception&) {
    return -1;
  }
}
// Shown in docs/recipes.md: end
