// Makes messages of unknown origin fit for a page.

#ifndef VOK_EXAMPLES_MAKE_SAFE_H_
#define VOK_EXAMPLES_MAKE_SAFE_H_

// Shown in docs/recipes.md: begin
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

inline std::string escape(const std::string& text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&': html += "&amp;"; break;
      case '<': html += "&lt;"; break;
      case '>': html += "&gt;"; break;
      case '"': html += "&quot;"; break;
      case '\'': html += "&#39;"; break;
      default: html += c;
    }
  }
  return html;
}

inline bool isUnsafeAddress(const google::protobuf::Message& message) {
  using vok::rulecheck::Resource;
  const auto* address = dynamic_cast<const Resource*>(&message);
  if (address == nullptr) {
    return false;
  }
  const auto scheme = address->scheme();
  return !address->has_scheme() ||
         (scheme != Resource::HTTP && scheme != Resource::HTTPS && scheme != Resource::FILE);
}

// Escapes the string, or each of the strings, of a field.
inline void escapeField(const google::protobuf::FieldDescriptor* field,
                        google::protobuf::Message* message) {
  const google::protobuf::Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    reflection->SetString(message, field, escape(reflection->GetString(*message, field)));
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    const std::string text = reflection->GetRepeatedString(*message, field, i);
    reflection->SetRepeatedString(message, field, i, escape(text));
  }
}

// Escapes each string of a message, and removes the addresses that a page must not link to.
inline void makeSafe(google::protobuf::Message* message) {
  using google::protobuf::FieldDescriptor;
  if (isUnsafeAddress(*message)) {
    message->Clear();
  }
  const google::protobuf::Reflection* reflection = message->GetReflection();
  std::vector<const FieldDescriptor*> fields;
  reflection->ListFields(*message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      escapeField(field, message);
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE && field->is_repeated()) {
      for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
        makeSafe(reflection->MutableRepeatedMessage(message, field, i));
      }
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      if (isUnsafeAddress(reflection->GetMessage(*message, field))) {
        reflection->ClearField(message, field);
      } else {
        makeSafe(reflection->MutableMessage(message, field));
      }
    }
  }
}
// Shown in docs/recipes.md: end

#endif  // VOK_EXAMPLES_MAKE_SAFE_H_
