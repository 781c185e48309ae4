#include "lint_client/connection.h"

#include <stdexcept>
#include <utility>

#include "common/framing.h"

namespace lint_client {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

Connection::Connection(Transport transport) : transport_(std::move(transport)) {}

Response Connection::call(const Request& request) {
  std::string sent;
  if (!examples::appendFramed(request, &sent)) {
    throw std::runtime_error("a request lacks " + request.InitializationErrorString());
  }
  const std::string received = transport_(sent);
  ++requests_;
  bytesSent_ += sent.size();
  bytesReceived_ += received.size();
  Response response;
  std::size_t position = 0;
  if (!examples::readFramed(received, &position, &response) || position != received.size()) {
    throw std::runtime_error("the server's answer is malformed");
  }
  if (response.type() == Response::ERROR_RESPONSE) {
    throw std::runtime_error("the server answered: " + response.error().msg());
  }
  return response;
}

std::string serve(rule_server::Server& server, const std::string& requests) {
  std::string responses;
  std::size_t position = 0;
  while (position < requests.size()) {
    Request request;
    if (!examples::readFramed(requests, &position, &request) ||
        !examples::appendFramed(server.handle(request), &responses)) {
      throw std::runtime_error("the server got malformed bytes");
    }
  }
  return responses;
}

}  // namespace lint_client
