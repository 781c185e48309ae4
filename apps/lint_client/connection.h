// SPDX-License-Identifier: Apache-2.0

// The connection between a client and a rule server.

#ifndef VOK_APPS_LINT_CLIENT_CONNECTION_H_
#define VOK_APPS_LINT_CLIENT_CONNECTION_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <functional>
#include <string>

#include "rule_server/rule_server.h"

namespace lint_client {

// An answer, and how many bytes travelled for it.
struct Exchange {
  vok::rulecheck::Response answer;
  std::size_t bytesSent;
  std::size_t bytesReceived;
};

// Takes a request to the server and returns its answer.
using Transport = std::function<Exchange(const vok::rulecheck::Request&)>;

// The client's end.
class Connection {
 public:
  explicit Connection(Transport transport);

  // Sends a request and returns the answer to it. Throws std::runtime_error if the
  // request is not initialized, or if the answer is an error, and whatever the
  // transport throws.
  vok::rulecheck::Response call(const vok::rulecheck::Request& request);

  std::size_t requests() const { return requests_; }
  std::size_t bytesSent() const { return bytesSent_; }
  std::size_t bytesReceived() const { return bytesReceived_; }

 private:
  Transport transport_;
  std::size_t requests_ = 0;
  std::size_t bytesSent_ = 0;
  std::size_t bytesReceived_ = 0;
};

// A transport over two streams of bytes, of framed messages. carry takes the bytes of
// requests to the server and returns the bytes of its answers. The transport throws
// std::runtime_error if an answer is malformed.
Transport framed(std::function<std::string(const std::string&)> carry);

// The server's end of such streams: the framed answers to framed requests. Throws
// std::runtime_error if the bytes are not framed requests of kMaxRequestBytes at most.
std::string serve(rule_server::Server& server, const std::string& requests);

}  // namespace lint_client

#endif  // VOK_APPS_LINT_CLIENT_CONNECTION_H_
