// The connection between a client and a rule server: two streams of bytes.

#ifndef VOK_EXAMPLES_LINT_CLIENT_CONNECTION_H_
#define VOK_EXAMPLES_LINT_CLIENT_CONNECTION_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <functional>
#include <string>

#include "rule_server/rule_server.h"

namespace lint_client {

// The client's end.
class Connection {
 public:
  // Takes the bytes of requests to the server and returns the bytes of its answers.
  using Transport = std::function<std::string(const std::string&)>;

  explicit Connection(Transport transport);

  // Sends a request and returns the answer to it. Throws std::runtime_error if the
  // request is not initialized, or if the answer is an error or malformed.
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

// The server's end: the framed answers to framed requests. Throws
// std::runtime_error if the bytes are not framed requests.
std::string serve(rule_server::Server& server, const std::string& requests);

}  // namespace lint_client

#endif  // VOK_EXAMPLES_LINT_CLIENT_CONNECTION_H_
