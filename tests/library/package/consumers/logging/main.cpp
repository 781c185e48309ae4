// SPDX-License-Identifier: Apache-2.0

// Carries bytes that are not UTF-8 through every operation. Whatever is logged
// goes to the standard error output, which the test watches. With the argument
// "host" the program's own message carries them: its debugging code does log.

#include <vok/rulecheck/Converter.h>

#include <cstring>
#include <string>

#include "host.pb.h"

using namespace vok::rulecheck;

template <typename Message>
static bool carry(const Message& message) {
  std::string bytes;
  Message parsed;
  if (!message.SerializeToString(&bytes) || !parsed.ParseFromString(bytes)) {
    return false;
  }
  parsed.MergeFrom(message);
  Message copy(parsed);
  return copy.SerializeToString(&bytes) && copy.ParseFromString(bytes);
}

static bool carryOwn(const std::string& text) {
  host::Names names;
  (*names.mutable_by_name())[text] = text;
  (*names.mutable_by_number())[1] = text;
  names.set_last(text);
  return carry(names);
}

static bool carryLibrarys(const std::string& text) {
  Request request;
  request.set_type(Request::CREATE_VIOLATION);
  CreateViolation* create = request.mutable_create_violation();
  create->set_rule_key(text);
  (*create->mutable_dynamic_category_values())[text] = text;
  create->mutable_args()->add_arg()->set_string_val(text);

  RuleSpecMap rules;
  RuleSpec& spec = (*rules.mutable_hashmap())[text];
  spec.set_key(text);
  spec.set_full_name(text);
  spec.mutable_session_names()->add_msg(text);
  (*spec.mutable_categories())[1] = text;
  return carry(request) && carry(rules) && Converter::toHtml(create->args().arg(0)) == text;
}

int main(int argc, char** argv) {
  const std::string text("\xff\xfe\x00 not UTF-8 \xc3", 15);
  const bool own = argc > 1 && std::strcmp(argv[1], "host") == 0;
  return (own ? carryOwn(text) : carryLibrarys(text)) ? 0 : 1;
}
