#include <RuleService.pb-c.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "carrying/carriers.h"
#include "data/messages.h"
#include "support/measure.h"

namespace benchmarks {

namespace {

struct Free {
  void operator()(ProtobufCMessage* message) const {
    protobuf_c_message_free_unpacked(message, nullptr);
  }
};

using Message = std::unique_ptr<ProtobufCMessage, Free>;

Message parse(const ProtobufCMessageDescriptor& type, const std::string& bytes) {
  const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
  Message message(protobuf_c_message_unpack(&type, nullptr, bytes.size(), data));
  require(message != nullptr, "protobuf-c: a message cannot be parsed");
  return message;
}

void serialize(const Message& message, std::vector<std::uint8_t>* bytes) {
  bytes->resize(protobuf_c_message_get_packed_size(message.get()));
  protobuf_c_message_pack(message.get(), bytes->data());
  benchmark::DoNotOptimize(bytes->data());
}

void requireSameBytes(const ProtobufCMessageDescriptor& type, const std::string& bytes) {
  std::vector<std::uint8_t> written;
  serialize(parse(type, bytes), &written);
  require(std::string(written.begin(), written.end()) == bytes,
          "protobuf-c: a parsed message has other bytes than its source");
}

void registerResult() {
  const std::string& bytes = resultBytes(resultViolations);
  const ProtobufCMessageDescriptor& type = vok__rulecheck__session_result__descriptor;
  requireSameBytes(type, bytes);
  measure("result, parse/protobuf-c", {resultViolations}, [&type, &bytes] { parse(type, bytes); });
  const auto result = std::make_shared<Message>(parse(type, bytes));
  measure("result, serialize/protobuf-c", {resultViolations}, [result] {
    std::vector<std::uint8_t> written;
    serialize(*result, &written);
  });
  const auto doomed = std::make_shared<Message>();
  measurePrepared(
      "result, destroy/protobuf-c", {resultViolations},
      [&type, &bytes, doomed] { *doomed = parse(type, bytes); }, [doomed] { doomed->reset(); });
}

void registerRequests() {
  const std::vector<std::string>& stream = requestBytes();
  const ProtobufCMessageDescriptor& type = vok__rulecheck__request__descriptor;
  const auto requests = std::make_shared<std::vector<Message>>();
  for (const std::string& bytes : stream) {
    requireSameBytes(type, bytes);
    requests->push_back(parse(type, bytes));
  }
  measure("requests, parse/protobuf-c", {stream.size()}, [&type, &stream] {
    for (const std::string& bytes : stream) {
      parse(type, bytes);
    }
  });
  measure("requests, serialize/protobuf-c", {stream.size()},
          [requests, written = std::vector<std::uint8_t>()]() mutable {
            for (const Message& request : *requests) {
              serialize(request, &written);
            }
          });
}

}  // namespace

void registerProtobufC() {
  registerResult();
  registerRequests();
}

}  // namespace benchmarks
