// SPDX-License-Identifier: Apache-2.0

// The error codes of the rule server, and how its parts report them.

#ifndef VOK_APPS_RULE_SERVER_ERRORS_H_
#define VOK_APPS_RULE_SERVER_ERRORS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace rule_server {

// ErrorResponse.code. Gaps are for codes to come.
enum class ErrorCode : std::int32_t {
  TypeMissing = 1,        // the request has no type, or one that is not listed
  BodyMismatch = 2,       // a body that does not belong to the type
  BodyMissing = 3,        // the type's body is absent
  BodyIncomplete = 4,     // a required field is absent somewhere in the body
  ServerStopped = 5,      // an earlier STOP_SERVER was accepted
  TokenRefused = 6,       // not the server's token
  SessionUnknown = 10,    // no uuid, or none of the server's
  SessionStopped = 11,    // the session takes no more findings, resets or stops
  SessionExists = 12,     // the uuid of the new session is taken
  RuleUnknown = 20,       // no rule has this key
  RulePlanned = 21,       // the rule is not in force yet
  RuleReadOnly = 22,      // the rule is not to be changed
  RuleInvalid = 23,       // a rule that the catalog does not take
  CategoryRefused = 24,   // a category value that the rule has no place for
  FileAddress = 30,       // not the address of a file on this host
  FileAccess = 31,        // the file cannot be read or written
  FileFormat = 32,        // unknown extension, or malformed content
  SelectionInvalid = 33,  // a regular expression that is malformed or refused
  Internal = 40,          // something that the server was given failed
  LimitExceeded = 41,     // the request would exceed a limit; nothing recorded is lost
};

// An operation that failed. handle() turns it into an ErrorResponse.
class Failure : public std::runtime_error {
 public:
  Failure(ErrorCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
  ErrorCode code() const { return code_; }

 private:
  ErrorCode code_;
};

// A text of the request, for error messages: in quotes, cut if it is long, and with spaces
// instead of zero bytes, which would end the message.
inline std::string quoted(const std::string& text) {
  constexpr std::size_t kLongest = 100;
  std::string shown = text.substr(0, kLongest);
  std::replace(shown.begin(), shown.end(), '\0', ' ');
  return '"' + shown + (text.size() > kLongest ? "...\"" : "\"");
}

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_ERRORS_H_
