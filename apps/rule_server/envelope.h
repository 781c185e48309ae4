// SPDX-License-Identifier: Apache-2.0

// The outside of requests and responses.

#ifndef VOK_APPS_RULE_SERVER_ENVELOPE_H_
#define VOK_APPS_RULE_SERVER_ENVELOPE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>

#include "rule_server/errors.h"

namespace rule_server {

// Throws Failure unless the request has a type, that type's body, nothing but
// that body, and everything that is required in it.
void checkEnvelope(const vok::rulecheck::Request& request);

vok::rulecheck::Response respond(ErrorCode code, const std::string& text);
vok::rulecheck::Response respond(const std::string& status);
vok::rulecheck::Response respond(vok::rulecheck::Affirmation affirmation);
vok::rulecheck::Response respond(vok::rulecheck::Session session);
vok::rulecheck::Response respond(vok::rulecheck::SessionResult result);
vok::rulecheck::Response respond(vok::rulecheck::Version version);
vok::rulecheck::Response respond(vok::rulecheck::Violation violation);

}  // namespace rule_server

#endif  // VOK_APPS_RULE_SERVER_ENVELOPE_H_
