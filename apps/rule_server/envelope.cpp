// SPDX-License-Identifier: Apache-2.0

#include "rule_server/envelope.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace rule_server {
namespace {

using google::protobuf::FieldDescriptor;
using vok::rulecheck::Request;
using vok::rulecheck::Response;

const FieldDescriptor* bodyOf(Request::RequestType type) {
  const int number = type == Request::STOP_SERVER ? Request::kExchangeTokenFieldNumber
                                                  : static_cast<int>(type) + 1;
  return Request::descriptor()->FindFieldByNumber(number);
}

}  // namespace

void checkEnvelope(const Request& request) {
  if (!request.has_type()) {
    throw Failure(ErrorCode::TypeMissing, "the request has no type that is known here");
  }
  const auto type = [&] { return std::string(Request::RequestType_Name(request.type())); };
  const FieldDescriptor* body = bodyOf(request.type());
  std::vector<const FieldDescriptor*> fields;
  request.GetReflection()->ListFields(request, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field != body && field->number() != Request::kTypeFieldNumber) {
      throw Failure(ErrorCode::BodyMismatch,
                    type() + " does not go with the body " + std::string(field->name()));
    }
  }
  if (fields.back() != body) {
    throw Failure(ErrorCode::BodyMissing, type() + " needs the body " + std::string(body->name()));
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
  return responseWith(std::move(error));
}

Response respond(const std::string& status) {
  vok::rulecheck::StatusResponse body;
  body.set_code(0);
  body.set_msg(status);
  return responseWith(std::move(body));
}

const FieldDescriptor* fieldFor(const google::protobuf::Descriptor* body) {
  const google::protobuf::Descriptor& response = *Response::descriptor();
  int i = 0;
  while (response.field(i)->message_type() != body) {
    ++i;
  }
  return response.field(i);
}

}  // namespace rule_server
