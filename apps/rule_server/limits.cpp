// SPDX-License-Identifier: Apache-2.0

#include "rule_server/limits.h"

#include "rule_server/errors.h"

namespace rule_server {

std::size_t bytesOf(const google::protobuf::Message& message) {
  return message.SpaceUsedLong();
}

void checkBytes(const std::string& what, std::size_t bytes, std::size_t limit,
                const std::string& advice) {
  if (bytes > limit) {
    throw Failure(ErrorCode::LimitExceeded, what + " takes " + std::to_string(bytes) +
                                                " bytes, more than " + std::to_string(limit) +
                                                ": " + advice);
  }
}

Budget::Share Budget::take(std::size_t bytes) {
  const std::size_t before = used_.fetch_add(bytes);
  Share share(this, Return{bytes});
  checkBytes("what the server records", before + bytes, limit_,
             "reset sessions, or restart the server with a higher limit");
  return share;
}

}  // namespace rule_server
