// Which rules of a catalogue a request means.

#ifndef VOK_EXAMPLES_RULE_SERVER_SELECTION_H_
#define VOK_EXAMPLES_RULE_SERVER_SELECTION_H_

#include <re2/re2.h>

#include <optional>
#include <string>

namespace rule_server {

// Selects keys by a name pattern, by a regular expression, by both or by neither.
class Selection {
 public:
  // Takes a LoadRuleDataFile or a DumpRules. Throws Failure (SelectionInvalid).
  template <typename Body>
  explicit Selection(const Body& body) {
    if (body.has_pattern()) {
      pattern_ = body.pattern();
    }
    if (body.has_regex()) {
      setRegex(body.regex());
    }
  }

  bool matches(const std::string& key) const;

 private:
  void setRegex(const std::string& text);

  std::optional<std::string> pattern_;
  std::optional<RE2> regex_;
};

// Whether the whole text matches the pattern, in which "*" stands for any bytes
// and "?" for any one byte.
bool matchesPattern(const std::string& text, const std::string& pattern);

}  // namespace rule_server

#endif  // VOK_EXAMPLES_RULE_SERVER_SELECTION_H_
