// SPDX-License-Identifier: Apache-2.0

// Which rules of a catalog a request means.

#ifndef VOK_APPS_RULE_SERVER_SELECTION_H_
#define VOK_APPS_RULE_SERVER_SELECTION_H_

#include <re2/re2.h>

#include <chrono>
#include <optional>
#include <string>

namespace rule_server {

// Selects keys by a name pattern, in which "*" matches any bytes and "?" any one
// byte, by a regular expression, by both or by neither. Takes time that is linear in the
// length of a key.
class Selection {
 public:
  // Takes a LoadRuleDataFile or a DumpRules. Throws Failure (SelectionInvalid).
  template <typename Body>
  explicit Selection(const Body& body) {
    if (body.has_pattern()) {
      setPattern(body.pattern());
    }
    if (body.has_regex()) {
      set(&regex_, "regex", body.regex(), body.regex());
    }
  }

  // Throws Failure (LimitExceeded) once all calls together have taken five seconds.
  bool matches(const std::string& key);

 private:
  using Expression = std::optional<RE2>;

  void setPattern(const std::string& text);
  static void set(Expression* expression, const char* name, const std::string& text,
                  const std::string& syntax);

  Expression pattern_;
  Expression regex_;
  std::chrono::steady_clock::duration spent_{};
};

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_SELECTION_H_
