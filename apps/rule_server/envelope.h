// SPDX-License-Identifier: Apache-2.0

// Checks the envelope of requests, and makes that of responses.

#ifndef VOK_APPS_RULE_SERVER_ENVELOPE_H_
#define VOK_APPS_RULE_SERVER_ENVELOPE_H_

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>

#include "rule_server/errors.h"

namespace rule_server {

// Throws Failure unless the request has a type, that type's body, nothing but
// that body, and everything that is required in it.
void checkEnvelope(const vok::rulecheck::Request& request);

vok::rulecheck::Response respond(ErrorCode code, const std::string& text);
vok::rulecheck::Response respond(const std::string& status);
// The field of a response for bodies of that type.
const google::protobuf::FieldDescriptor* fieldFor(const google::protobuf::Descriptor* body);

// Makes the response one of the body's type, and returns its body, which keeps what it has.
template <typename Body>
Body* mutableBody(vok::rulecheck::Response* response) {
  static const auto* const field = fieldFor(Body::descriptor());
  const auto type = static_cast<vok::rulecheck::Response::ResponseType>(field->number() - 2);
  if (response->type() != type) {
    response->Clear();
  }
  response->set_type(type);
  return static_cast<Body*>(response->GetReflection()->MutableMessage(response, field));
}

// A response of the body's type.
template <typename Body>
vok::rulecheck::Response responseWith(Body body) {
  vok::rulecheck::Response response;
  mutableBody<Body>(&response)->Swap(&body);
  return response;
}

// Copies what a StartSession and a Session both have, under different numbers.
template <typename From, typename To>
void copyStart(const From& from, To* to) {
  to->set_name(from.name());
  if (from.has_uuid()) {
    to->set_uuid(from.uuid());
  }
  if (from.has_description()) {
    to->set_description(from.description());
  }
  if (from.has_report_file()) {
    *to->mutable_report_file() = from.report_file();
  }
  if (from.has_proto_file()) {
    *to->mutable_proto_file() = from.proto_file();
  }
}

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_ENVELOPE_H_
