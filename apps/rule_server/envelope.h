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

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_ENVELOPE_H_
