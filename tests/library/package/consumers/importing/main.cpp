// SPDX-License-Identifier: Apache-2.0

// The imported type is the library's own.

#include <google/protobuf/descriptor.h>
#include <vok/rulecheck/Converter.h>

#include "bundle.pb.h"

int main() {
  consumer::Bundle bundle;
  vok::rulecheck::Violation* violation = bundle.add_violation();
  violation->set_id(1);
  violation->set_severity(vok::rulecheck::Violation::SEV_WARNING);
  const auto* field = consumer::Bundle::descriptor()->FindFieldByName("violation");
  return vok::rulecheck::Converter::toString(bundle.violation(0).severity()) == "warning" &&
                 field->message_type() == vok::rulecheck::Violation::descriptor() &&
                 field->message_type()->file()->name() == "RuleService.proto"
             ? 0
             : 1;
}
