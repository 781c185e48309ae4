// SPDX-License-Identifier: Apache-2.0

// What the tests share: messages from text or at random, bytes from hexadecimal
// digits, and the list of all message types.

#ifndef VOK_TESTS_SUPPORT_MESSAGES_H_
#define VOK_TESTS_SUPPORT_MESSAGES_H_

#include <google/protobuf/text_format.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace tests {

// The list of all message types, in declaration order, for templates.
template <typename... Types>
struct TypeList {};
namespace types {
using namespace vok::rulecheck;
using All =
    TypeList<Resource, Link, Links, Scalar, Reference, RefList, StringList, Arg, ArgList, MsgInst,
             Affirmation, AffirmationMap, Violation, ViolationMap, RuleSpec, RuleSpecMap, Session,
             SessionResult, Version, ErrorResponse, StatusResponse, EmptyMessage, CreateAffirmation,
             CreateViolation, ExchangeToken, GetSession, GetRuleSpecs, GetSessionResult, GetVersion,
             LoadRuleDataFile, DumpRules, ResetSession, StartSession, StopSession, UpsertRuleSpec,
             WriteReport, Request, Response>;
}  // namespace types
using MessageTypes = types::All;

// The default instances of all message types, in declaration order.
const std::vector<const google::protobuf::Message*>& allMessages();

// A new message of the type with that name, such as "Resource".
std::unique_ptr<google::protobuf::Message> newMessage(const std::string& type);

// Fills a message from text format; required fields may be missing.
void fill(const std::string& text, google::protobuf::Message* message);

template <typename Message>
Message parse(const std::string& text) {
  Message message;
  fill(text, &message);
  return message;
}

// Gives each field of a message, and of the messages inside it, as many random values
// as count() says: at most one if the field is not repeated.
void fillRandomly(const std::function<int(const google::protobuf::FieldDescriptor&)>& count,
                  std::mt19937_64* random, google::protobuf::Message* message);

// A message of that type with every field set, in the messages inside it too.
std::unique_ptr<google::protobuf::Message> fullMessage(const std::string& type);

// The text format of a message.
std::string textOf(const google::protobuf::Message& message);

// The bytes of a message in deterministic mode; required fields may be missing.
std::string bytesOf(const google::protobuf::Message& message);

// "08 0f" gives two bytes, and back.
std::string fromHex(const std::string& digits);
std::string toHex(const std::string& bytes);

}  // namespace tests

#endif  // VOK_TESTS_SUPPORT_MESSAGES_H_
