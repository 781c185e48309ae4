// SPDX-License-Identifier: Apache-2.0

// How much the rule server records, and how it counts that.

#ifndef VOK_APPS_RULE_SERVER_LIMITS_H_
#define VOK_APPS_RULE_SERVER_LIMITS_H_

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "rule_server/errors.h"

namespace rule_server {

// Bytes are those of messages in memory: up to 58 times those of serialized messages.
struct Limits {
  std::size_t ruleBytes = std::size_t{256} << 10;
  std::size_t rules = 100'000;
  std::size_t sessions = 10'000;
  // Of a session. Its bytes are those of its result.
  std::size_t findings = 1'000'000;
  std::size_t sessionBytes = std::size_t{512} << 20;
  // Of a message that is written as a page, text or JSON.
  std::size_t textBytes = std::size_t{64} << 20;
  // Of all rules, sessions and findings.
  std::size_t bytes = std::size_t{1} << 30;
};

// Throws Failure (LimitExceeded) if there are more bytes than the limit. The function says of what.
template <typename Name>
void checkBytes(Name name, std::size_t bytes, std::size_t limit, const char* advice) {
  if (bytes > limit) {
    throw Failure(ErrorCode::LimitExceeded, name() + " takes " + std::to_string(bytes) +
                                                " bytes, more than " + std::to_string(limit) +
                                                ": " + advice);
  }
}

// The bytes that are left for all that is recorded. Thread-safe.
class Budget {
 public:
  struct Return {
    std::size_t bytes;
    void operator()(Budget* budget) const { budget->used_ -= bytes; }
  };
  // Bytes that are taken until the share is destroyed.
  using Share = std::unique_ptr<Budget, Return>;

  explicit Budget(std::size_t limit) : limit_(limit) {}

  // Throws Failure (LimitExceeded).
  Share take(std::size_t bytes) {
    const std::size_t before = used_.fetch_add(bytes);
    Share share(this, Return{bytes});
    checkBytes([] { return std::string("what the server records"); }, before + bytes, limit_,
               "reset sessions, or restart the server with a higher limit");
    return share;
  }

 private:
  const std::size_t limit_;
  std::atomic<std::size_t> used_{0};
};

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_LIMITS_H_
