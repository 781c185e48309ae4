#include <RuleService.nanopb.h>
#include <pb_decode.h>
#include <pb_encode.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "carrying/carriers.h"
#include "data/messages.h"
#include "support/measure.h"

namespace benchmarks {

namespace {

// A message with its fields described by the generated code.
template <typename Type, const pb_msgdesc_t& fields>
class Message {
 public:
  explicit Message(const std::string& bytes) {
    pb_istream_t stream =
        pb_istream_from_buffer(reinterpret_cast<const pb_byte_t*>(bytes.data()), bytes.size());
    require(pb_decode(&stream, &fields, &value_), "nanopb: a message cannot be parsed");
  }
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;
  ~Message() { pb_release(&fields, &value_); }

  void serialize(std::vector<pb_byte_t>* bytes) const {
    std::size_t size = 0;
    require(pb_get_encoded_size(&size, &fields, &value_), "nanopb: a message has no size");
    bytes->resize(size);
    pb_ostream_t stream = pb_ostream_from_buffer(bytes->data(), size);
    require(pb_encode(&stream, &fields, &value_), "nanopb: a message cannot be serialized");
    benchmark::DoNotOptimize(bytes->data());
  }

 private:
  Type value_ = {};
};

using Result = Message<vok_rulecheck_SessionResult, vok_rulecheck_SessionResult_msg>;
using Request = Message<vok_rulecheck_Request, vok_rulecheck_Request_msg>;

template <typename Message>
void requireSameBytes(const std::string& bytes) {
  std::vector<pb_byte_t> written;
  Message(bytes).serialize(&written);
  require(std::string(written.begin(), written.end()) == bytes,
          "nanopb: a parsed message has other bytes than its source");
}

void registerResult() {
  const std::string& bytes = resultBytes(resultViolations);
  requireSameBytes<Result>(bytes);
  measure("result, parse/nanopb", {resultViolations}, [&bytes] { const Result result(bytes); });
  measure("result, serialize/nanopb", {resultViolations},
          [result = std::make_shared<Result>(bytes)] {
            std::vector<pb_byte_t> written;
            result->serialize(&written);
          });
}

void registerRequests() {
  const std::vector<std::string>& stream = requestBytes();
  const auto requests = std::make_shared<std::vector<std::unique_ptr<Request>>>();
  for (const std::string& bytes : stream) {
    requireSameBytes<Request>(bytes);
    requests->push_back(std::make_unique<Request>(bytes));
  }
  measure("requests, parse/nanopb", {stream.size()}, [&stream] {
    for (const std::string& bytes : stream) {
      const Request request(bytes);
    }
  });
  measure("requests, serialize/nanopb", {stream.size()},
          [requests, written = std::vector<pb_byte_t>()]() mutable {
            for (const auto& request : *requests) {
              request->serialize(&written);
            }
          });
}

}  // namespace

void registerNanopb() {
  registerResult();
  registerRequests();
}

}  // namespace benchmarks
