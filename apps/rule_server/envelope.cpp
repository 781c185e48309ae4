// SPDX-License-Identifier: Apache-2.0

#include "rule_server/envelope.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace rule_server {
namespace {

using vok::rulecheck::Request;
using vok::rulecheck::Response;

const google::protobuf::FieldDescriptor* bodyOf(Request::RequestType type) {
  const int number = type == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber
                                                  : static_cast<int>(type) + 1;
  return Request::descriptor()->FindFieldByNumber(number);
}

Response ofType(Response::ResponseType type) {
  Response response;
  response.set_type(type);
  return response;
}

template <typename Body>
Response carrying(Response::ResponseType type, Body* (Response::*mutableBody)(), Body body) {
  Response response = ofType(type);
  *(response.*mutableBody)() = std::move(body);
  return response;
}

}  // namespace

void checkEnvelope(const Request& request) {
  if (!request.has_type()) {
    throw Failure(ErrorCode::TypeMissing, "the request has no type that is known here");
  }
  const std::string type(Request::RequestType_Name(request.type()));
  const google::protobuf::FieldDescriptor* body = bodyOf(request.type());
  for (int number = Request::kTypeFieldNumber + 1; number <= Request::kDumpRulesFieldNumber;
       ++number) {
    const auto* field = Request::descriptor()->FindFieldByNumber(number);
    if (field != body && request.GetReflection()->HasField(request, field)) {
      throw Failure(ErrorCode::BodyMismatch,
                    type + " does not go with the body " + std::string(field->name()));
    }
  }
  if (!request.GetReflection()->HasField(request, body)) {
    throw Failure(ErrorCode::BodyMissing, type + " needs the body " + std::string(body->name()));
  }
  if (!request.IsInitialized()) {
    throw Failure(ErrorCode::BodyIncomplete, "missing " + request.InitializationErrorString());
  }
}

Response respond(ErrorCode code, const std::string& text) {
  Response response = ofType(Response::ERROR_RESPONSE);
  response.mutable_error()->set_code(static_cast<std::int32_t>(code));
  std::string line = text;
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  response.mutable_error()->set_msg(line);
  return response;
}

Response respond(const std::string& status) {
  Response response = ofType(Response::STATUS_RESPONSE);
  response.mutable_status()->set_code(0);
  response.mutable_status()->set_msg(status);
  return response;
}

Response respond(vok::rulecheck::Affirmation affirmation) {
  return carrying(Response::AFFIRMATION, &Response::mutable_affirmation, std::move(affirmation));
}

Response respond(vok::rulecheck::Session session) {
  return carrying(Response::SESSION, &Response::mutable_session, std::move(session));
}

Response respond(vok::rulecheck::SessionResult result) {
  return carrying(Response::SESSION_RESULT, &Response::mutable_session_result, std::move(result));
}

Response respond(vok::rulecheck::Version version) {
  return carrying(Response::VERSION, &Response::mutable_version, std::move(version));
}

Response respond(vok::rulecheck::Violation violation) {
  return carrying(Response::VIOLATION, &Response::mutable_violation, std::move(violation));
}

}  // namespace rule_server
