// SPDX-License-Identifier: Apache-2.0

#include "lint_client/connection.h"

#include <stdexcept>
#include <type_traits>
#include <utility>

#include "common/framing.h"

namespace lint_client {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

Connection::Connection(Transport transport) : transport_(std::move(transport)) {}

Response Connection::call(const Request& request) {
  if (!request.IsInitialized()) {
    throw std::runtime_error("a request lacks " + request.InitializationErrorString());
  }
  const Exchange exchange = transport_(request);
  ++requests_;
  bytesSent_ += exchange.bytesSent;
  bytesReceived_ += exchange.bytesReceived;
  if (exchange.answer.type() == Response::ERROR_RESPONSE) {
    throw std::runtime_error("the server answered: " + exchange.answer.error().msg());
  }
  return exchange.answer;
}

Transport framed(std::function<std::string(const std::string&)> carry) {
  return [carry = std::move(carry)](const Request& request) {
    std::string sent;
    if (!apps::appendFramed(request, &sent)) {
      throw std::runtime_error("a request is incomplete or has more than 2 GiB");
    }
    const std::string received = carry(sent);
    Exchange exchange{Response(), sent.size(), received.size()};
    std::size_t position = 0;
    if (!apps::readFramed(received, &position, &exchange.answer) || position != received.size()) {
      throw std::runtime_error("the server's answer is malformed");
    }
    return exchange;
  };
}

std::string serve(rule_server::Server& server, const std::string& requests) {
  std::string responses;
  std::size_t position = 0;
  while (position < requests.size()) {
    Request request;
    if (!apps::readFramed(requests, &position, &request, rule_server::kMaxRequestBytes) ||
        !apps::appendFramed(server.handle(request), &responses)) {
      throw std::runtime_error("the server got malformed bytes");
    }
  }
  return responses;
}

}  // namespace lint_client
