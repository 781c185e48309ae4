// How arguments of methods are parsed. The generated header includes this one.
//
// gRPC's own way reads from a stream, where six bytes can reserve 50 MB, logs what
// required field is missing, and answers INTERNAL. This one reads from a block, logs
// nothing, and answers INVALID_ARGUMENT.

#ifndef VOK_EXAMPLES_GRPC_PARSING_H_
#define VOK_EXAMPLES_GRPC_PARSING_H_

#include <google/protobuf/message.h>
#include <grpcpp/grpcpp.h>
#include <grpcpp/impl/codegen/proto_utils.h>
#include <vok/rulecheck/RuleService.pb.h>

namespace rule_grpc {

// Turns bytes, which are gone then, into a message. Returns INVALID_ARGUMENT if they
// are malformed or a required field is missing.
grpc::Status parse(grpc::ByteBuffer* bytes, google::protobuf::Message* message);

template <typename Message>
class BlockTraits {
 public:
  static grpc::Status Serialize(const Message& message, grpc::ByteBuffer* bytes, bool* ownBytes) {
    return grpc::GenericSerialize<grpc::ProtoBufferWriter, Message>(message, bytes, ownBytes);
  }
  static grpc::Status Deserialize(grpc::ByteBuffer* bytes, Message* message) {
    return parse(bytes, message);
  }
};

}  // namespace rule_grpc

namespace grpc {

// One for each type that a method takes.
template <>
class SerializationTraits<vok::rulecheck::CreateAffirmation>
    : public rule_grpc::BlockTraits<vok::rulecheck::CreateAffirmation> {};
template <>
class SerializationTraits<vok::rulecheck::CreateViolation>
    : public rule_grpc::BlockTraits<vok::rulecheck::CreateViolation> {};
template <>
class SerializationTraits<vok::rulecheck::DumpRules>
    : public rule_grpc::BlockTraits<vok::rulecheck::DumpRules> {};
template <>
class SerializationTraits<vok::rulecheck::EmptyMessage>
    : public rule_grpc::BlockTraits<vok::rulecheck::EmptyMessage> {};
template <>
class SerializationTraits<vok::rulecheck::ExchangeToken>
    : public rule_grpc::BlockTraits<vok::rulecheck::ExchangeToken> {};
template <>
class SerializationTraits<vok::rulecheck::GetSession>
    : public rule_grpc::BlockTraits<vok::rulecheck::GetSession> {};
template <>
class SerializationTraits<vok::rulecheck::LoadRuleDataFile>
    : public rule_grpc::BlockTraits<vok::rulecheck::LoadRuleDataFile> {};
template <>
class SerializationTraits<vok::rulecheck::RuleSpec>
    : public rule_grpc::BlockTraits<vok::rulecheck::RuleSpec> {};
template <>
class SerializationTraits<vok::rulecheck::Session>
    : public rule_grpc::BlockTraits<vok::rulecheck::Session> {};

}  // namespace grpc

#endif  // VOK_EXAMPLES_GRPC_PARSING_H_
