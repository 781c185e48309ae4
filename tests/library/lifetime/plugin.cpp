// SPDX-License-Identifier: Apache-2.0

#include "plugin.h"

#include <vok/rulecheck/Converter.h>

#include <cstdio>
#include <exception>
#include <memory>

#include "support/use_library.h"

namespace {

using google::protobuf::Message;
using vok::rulecheck::Converter;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

bool succeeds(void (*act)(const SessionResult&), const SessionResult& result) {
  try {
    act(result);
    return true;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return false;
  }
}

bool use() {
  return succeeds([](const SessionResult&) { tests::useEverything(); },
                  SessionResult::default_instance());
}

void* make() {
  return static_cast<Message*>(new SessionResult(tests::makeResult()));
}

bool change(void* message) {
  auto* result = dynamic_cast<SessionResult*>(static_cast<Message*>(message));
  if (result == nullptr || !succeeds(tests::read, *result)) {
    return false;
  }
  (*result->mutable_violations()->mutable_hashmap())[9].set_rule_key("added by another plugin");
  result->mutable_session()->set_description("a text that takes memory from another plugin");
  return true;
}

bool changed(const void* message) {
  const auto* result = dynamic_cast<const SessionResult*>(static_cast<const Message*>(message));
  return result != nullptr && result->violations().hashmap().size() == 2 &&
         result->session().description().size() == 44;
}

void destroy(void* message) {
  delete static_cast<Message*>(message);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const Plugin plugin;
extern "C" const Plugin plugin = {use, make, change, changed, destroy};
