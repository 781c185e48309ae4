// Prints the result that comes on the standard input, as text and as JSON.

// Shown in docs/recipes.md: begin
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>
#include <google/protobuf/util/json_util.h>

#include <string>

bool printText(const google::protobuf::Message& message, std::string* text) {
  return google::protobuf::TextFormat::PrintToString(message, text);
}

// Also returns false for an incomplete message, which the runtime cannot convert.
bool printJson(const google::protobuf::Message& message, std::string* json) {
  google::protobuf::util::JsonPrintOptions options;
  options.add_whitespace = true;
  json->clear();
  return message.IsInitialized() &&
         google::protobuf::util::MessageToJsonString(message, json, options).ok();
}
// Shown in docs/recipes.md: end

#include <vok/rulecheck/RuleService.pb.h>

#include <iostream>

int main() {
  vok::rulecheck::SessionResult result;
  if (!result.ParsePartialFromIstream(&std::cin)) {
    std::cout << "malformed bytes\n";
    return 1;
  }
  std::string text;
  std::cout << (printText(result, &text) ? text : "no text\n");
  std::string json;
  std::cout << (printJson(result, &json) ? json : "no JSON\n");
}
