// SPDX-License-Identifier: Apache-2.0

#include "plugin.h"

#include <memory>
#include <stdexcept>

#include "support/use_library.h"

namespace {

using google::protobuf::Message;
using vok::rulecheck::SessionResult;

void* make() {
  return static_cast<Message*>(new SessionResult(tests::makeResult()));
}

void change(void* message) {
  auto& result = dynamic_cast<SessionResult&>(*static_cast<Message*>(message));
  tests::read(result);
  (*result.mutable_violations()->mutable_hashmap())[9].set_rule_key("added by another plugin");
  result.mutable_session()->set_description("a text that takes memory from another plugin");
}

void destroy(void* message) {
  const std::unique_ptr<Message> owner(static_cast<Message*>(message));
  const auto& result = dynamic_cast<const SessionResult&>(*owner);
  if (result.violations().hashmap().size() != 2 || result.session().description().size() != 44) {
    throw std::logic_error("the message is not what the other plugin made of it");
  }
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const Plugin plugin;
extern "C" const Plugin plugin = {tests::useEverything, make, change, destroy};
