#include <google/protobuf/util/json_util.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>

#include "carrying/codec.h"

namespace benchmarks {

namespace {

// The JSON form of messages, parsed into a document.
template <typename Message>
class RapidJson {
 public:
  using Buffer = rapidjson::StringBuffer;

  static std::string source(const Message& message) {
    google::protobuf::util::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    std::string text;
    require(google::protobuf::util::MessageToJsonString(message, &text, options).ok(),
            "a message has no JSON form");
    return text;
  }

  static std::string wireBytes(const Buffer& text) {
    Message message;
    const std::string json(text.GetString(), text.GetSize());
    require(google::protobuf::util::JsonStringToMessage(json, &message).ok(),
            "RapidJSON writes text that is not the JSON form of a message");
    return bytesOf(message);
  }

  explicit RapidJson(const std::string& text) {
    document_.Parse(text.data(), text.size());
    require(!document_.HasParseError(), "RapidJSON does not parse a message");
  }

  void write(Buffer* text) const {
    text->Clear();
    rapidjson::Writer<Buffer> writer(*text);
    document_.Accept(writer);
    benchmark::DoNotOptimize(text->GetString());
  }

 private:
  rapidjson::Document document_;
};

}  // namespace

void registerRapidJson() {
  registerCodec<RapidJson>("RapidJSON");
}

}  // namespace benchmarks
