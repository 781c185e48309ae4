// Writes a request to record a finding to the standard output, its length before it.

// Shown in docs/recipes.md: begin
#include <google/protobuf/message_lite.h>
#include <google/protobuf/util/delimited_message_util.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>

using namespace vok::rulecheck;

Request makeRequest(const std::string& sessionUuid) {
  Request request;
  request.set_type(Request::CREATE_VIOLATION);
  CreateViolation* violation = request.mutable_create_violation();
  violation->set_rule_key("WIDTH");
  violation->set_session_uuid(sessionUuid);
  violation->set_severity(Violation::SEV_ERROR);
  violation->mutable_args()->add_arg()->set_string_val("fifo.v:12");
  return request;
}

// Returns false if a required field is missing, with nothing written, or if the stream fails.
bool send(const google::protobuf::MessageLite& message, std::ostream* out) {
  return message.IsInitialized() &&
         google::protobuf::util::SerializeDelimitedToOstream(message, out) && out->flush();
}

// Returns the number that the server gave the finding, or throws an exception with its error text.
std::int32_t recordedAs(const Response& response) {
  if (response.type() == Response::VIOLATION && response.has_violation()) {
    return response.violation().id();
  }
  throw std::runtime_error(response.has_error() ? response.error().msg() : "an unexpected answer");
}
// Shown in docs/recipes.md: end

namespace {

std::string outcome(const Response& response) {
  try {
    return "recorded as " + std::to_string(recordedAs(response));
  } catch (const std::runtime_error& failure) {
    return failure.what();
  }
}

}  // namespace

// The answers go to the standard error output, since the other one has the request.
int main() {
  Response recorded;
  recorded.set_type(Response::VIOLATION);
  recorded.mutable_violation()->set_id(7);
  Response refused;
  refused.set_type(Response::ERROR_RESPONSE);
  refused.mutable_error()->set_msg("no such session");
  for (const Response& response : {recorded, refused, Response()}) {
    std::cerr << outcome(response) << "\n";
  }
  const bool incompleteIsSent = send(Request(), &std::cout);
  return !incompleteIsSent && send(makeRequest("5f0c"), &std::cout) ? 0 : 1;
}
