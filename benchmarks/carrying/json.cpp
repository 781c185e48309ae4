#include <google/protobuf/util/json_util.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>
#include <string>
#include <vector>

#include "carrying/carriers.h"
#include "data/messages.h"
#include "support/measure.h"

namespace benchmarks {

using vok::rulecheck::Request;
using vok::rulecheck::SessionResult;

namespace {

namespace json = google::protobuf::util;

// A message in the JSON form of protocol messages.
std::string jsonOf(const google::protobuf::Message& message) {
  json::JsonPrintOptions options;
  options.preserve_proto_field_names = true;
  std::string text;
  require(json::MessageToJsonString(message, &text, options).ok(), "a message has no JSON form");
  return text;
}

void parse(const std::string& text, rapidjson::Document* document) {
  document->Parse(text.data(), text.size());
  require(!document->HasParseError(), "RapidJSON: a text cannot be parsed");
}

void write(const rapidjson::Document& document, rapidjson::StringBuffer* text) {
  text->Clear();
  rapidjson::Writer<rapidjson::StringBuffer> writer(*text);
  document.Accept(writer);
  benchmark::DoNotOptimize(text->GetString());
}

template <typename Message>
void requireSameContent(const rapidjson::Document& document, const Message& expected) {
  rapidjson::StringBuffer text;
  write(document, &text);
  Message message;
  require(json::JsonStringToMessage(std::string(text.GetString(), text.GetSize()), &message).ok() &&
              bytesOf(message) == bytesOf(expected),
          "RapidJSON: a parsed text has other content than its source");
}

void registerResult() {
  const SessionResult result = makeResult(resultViolations);
  const auto text = std::make_shared<const std::string>(jsonOf(result));
  const auto document = std::make_shared<rapidjson::Document>();
  parse(*text, document.get());
  requireSameContent(*document, result);
  measure("result, parse/RapidJSON", {resultViolations}, [text] {
    rapidjson::Document parsed;
    parse(*text, &parsed);
  });
  measure("result, serialize/RapidJSON", {resultViolations}, [document] {
    rapidjson::StringBuffer written;
    write(*document, &written);
  });
}

void registerRequests() {
  const auto texts = std::make_shared<std::vector<std::string>>();
  const auto documents = std::make_shared<std::vector<rapidjson::Document>>();
  for (const Request& request : makeRequests()) {
    texts->push_back(jsonOf(request));
    parse(texts->back(), &documents->emplace_back());
    requireSameContent(documents->back(), request);
  }
  measure("requests, parse/RapidJSON", {texts->size()}, [texts] {
    for (const std::string& text : *texts) {
      rapidjson::Document parsed;
      parse(text, &parsed);
    }
  });
  measure("requests, serialize/RapidJSON", {texts->size()},
          [documents, written = std::make_shared<rapidjson::StringBuffer>()] {
            for (const rapidjson::Document& document : *documents) {
              write(document, written.get());
            }
          });
}

}  // namespace

void registerJson() {
  registerResult();
  registerRequests();
}

}  // namespace benchmarks
