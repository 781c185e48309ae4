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
  vok::rulecheck::ErrorResponse error;
  error.set_code(static_cast<std::int32_t>(code));
  error.set_msg(text);
  std::replace_if(
      error.mutable_msg()->begin(), error.mutable_msg()->end(),
      [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return respond(std::move(error));
}

Response respond(const std::string& status) {
  vok::rulecheck::StatusResponse body;
  body.set_code(0);
  body.set_msg(status);
  return respond(std::move(body));
}

Response respond(google::protobuf::Message&& body) {
  Response response;
  for (int type = Response::ResponseType_MIN; type <= Response::ResponseType_MAX; ++type) {
    const auto* field = Response::descriptor()->FindFieldByNumber(type + 2);
    if (field->message_type() == body.GetDescriptor()) {
      response.set_type(static_cast<Response::ResponseType>(type));
      auto* target = response.GetReflection()->MutableMessage(&response, field);
      target->GetReflection()->Swap(target, &body);
    }
  }
  return response;
}

}  // namespace rule_server
