// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/util/json_util.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <memory>
#include <string>
#include <vector>

#include "carrying/carrying.h"

namespace benchmarks {

namespace {

namespace json = google::protobuf::util;
using rapidjson::Document;
using rapidjson::StringBuffer;

void parse(const std::string& text, Document* document) {
  document->Parse(text.data(), text.size());
  require(!document->HasParseError(), "RapidJSON does not parse a message");
}

void write(const Document& document, StringBuffer* text) {
  text->Clear();
  rapidjson::Writer<StringBuffer> writer(*text);
  document.Accept(writer);
  benchmark::DoNotOptimize(text->GetString());
}

// Messages of one type in their JSON form, and parsed into documents.
struct Carried {
  template <typename Message>
  explicit Carried(const std::vector<Message>& messages) : documents(messages.size()) {
    json::JsonPrintOptions options;
    options.preserve_proto_field_names = true;
    for (const Message& message : messages) {
      texts.emplace_back();
      require(json::MessageToJsonString(message, &texts.back(), options).ok(), "JSON");
      Document& document = documents[texts.size() - 1];
      parse(texts.back(), &document);
      StringBuffer written;
      write(document, &written);
      Message read;
      require(json::JsonStringToMessage({written.GetString(), written.GetSize()}, &read).ok() &&
                  bytesOf(read) == bytesOf(message),
              "RapidJSON changes the content of a message");
    }
  }

  std::vector<std::string> texts;
  std::vector<Document> documents;
};

void registerCarried(const std::string& what, std::size_t items,
                     const std::shared_ptr<Carried>& carried) {
  measure(what + ", parse/RapidJSON", {items}, [carried] {
    for (const std::string& text : carried->texts) {
      Document document;
      parse(text, &document);
    }
  });
  measure(what + ", serialize/RapidJSON", {items},
          [carried, written = std::make_shared<StringBuffer>()] {
            for (const Document& document : carried->documents) {
              write(document, written.get());
            }
          });
}

}  // namespace

void registerRapidJson() {
  const std::vector<vok::rulecheck::SessionResult> result = {makeResult(resultViolations)};
  registerCarried("result", resultViolations, std::make_shared<Carried>(result));
  const auto requests = makeRequests();
  registerCarried("requests", requests.size(), std::make_shared<Carried>(requests));
}

}  // namespace benchmarks
