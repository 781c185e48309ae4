#include <RuleService.pb-c.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "carrying/codec.h"

namespace benchmarks {

namespace {

const ProtobufCMessageDescriptor& typeOf(const vok::rulecheck::SessionResult* /*type*/) {
  return vok__rulecheck__session_result__descriptor;
}
const ProtobufCMessageDescriptor& typeOf(const vok::rulecheck::Request* /*type*/) {
  return vok__rulecheck__request__descriptor;
}

template <typename Message>
class ProtobufC {
 public:
  using Buffer = std::vector<std::uint8_t>;

  static std::string source(const Message& message) { return bytesOf(message); }
  static std::string wireBytes(const Buffer& bytes) { return {bytes.begin(), bytes.end()}; }

  explicit ProtobufC(const std::string& bytes)
      : message_(protobuf_c_message_unpack(&typeOf(static_cast<const Message*>(nullptr)), nullptr,
                                           bytes.size(),
                                           reinterpret_cast<const std::uint8_t*>(bytes.data()))) {
    require(message_ != nullptr, "protobuf-c does not parse a message");
  }
  ProtobufC(const ProtobufC&) = delete;
  ProtobufC& operator=(const ProtobufC&) = delete;
  ~ProtobufC() { protobuf_c_message_free_unpacked(message_, nullptr); }

  void write(Buffer* bytes) const {
    bytes->resize(protobuf_c_message_get_packed_size(message_));
    protobuf_c_message_pack(message_, bytes->data());
    benchmark::DoNotOptimize(bytes->data());
  }

 private:
  ProtobufCMessage* message_;
};

}  // namespace

void registerProtobufC() {
  registerCodec<ProtobufC>("protobuf-c");
}

}  // namespace benchmarks
