// SPDX-License-Identifier: Apache-2.0

// Checks the envelope of requests, and makes that of responses.

#ifndef VOK_APPS_RULE_SERVER_ENVELOPE_H_
#define VOK_APPS_RULE_SERVER_ENVELOPE_H_

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
// Moves the body into a response of its type.
vok::rulecheck::Response respond(google::protobuf::Message&& body);

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
