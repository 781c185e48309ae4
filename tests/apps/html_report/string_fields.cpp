#include "string_fields.h"

#include <google/protobuf/descriptor.pb.h>

namespace tests {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::SessionResult;

bool isString(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
}

bool isMessage(const FieldDescriptor* field) {
  return field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE;
}

void collect(const Descriptor* type, FieldPath* path, std::vector<FieldPath>* paths) {
  for (int i = 0; i < type->field_count(); ++i) {
    path->push_back(type->field(i));
    if (isString(type->field(i))) {
      paths->push_back(*path);
    } else if (isMessage(type->field(i))) {
      collect(type->field(i)->message_type(), path, paths);
    }
    path->pop_back();
  }
}

void setKey(Message* entry, int number) {
  const FieldDescriptor* key = entry->GetDescriptor()->FindFieldByNumber(1);
  if (isString(key)) {
    entry->GetReflection()->SetString(entry, key, "rule-" + std::to_string(number));
  } else {
    entry->GetReflection()->SetInt32(entry, key, number);
  }
}

Message* enter(Message* message, const FieldDescriptor* field, int number) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    return reflection->MutableMessage(message, field);
  }
  Message* element = reflection->AddMessage(message, field);
  if (field->is_map()) {
    setKey(element, number);
  }
  return element;
}

// Sets what is required and absent. A map's value is.
void completeField(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  switch (field->cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING: reflection->SetString(message, field, "-"); break;
    case FieldDescriptor::CPPTYPE_INT32: reflection->SetInt32(message, field, 1); break;
    case FieldDescriptor::CPPTYPE_UINT32: reflection->SetUInt32(message, field, 1); break;
    case FieldDescriptor::CPPTYPE_ENUM:
      reflection->SetEnum(message, field, field->enum_type()->value(1));
      break;
    default: reflection->MutableMessage(message, field); break;
  }
}

void complete(Message* message, const Resource& rest);

void completeNested(Message* message, const FieldDescriptor* field, const Resource& rest) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    complete(reflection->MutableMessage(message, field), rest);
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    complete(reflection->MutableRepeatedMessage(message, field, i), rest);
  }
}

void complete(Message* message, const Resource& rest) {
  if (const auto resource = dynamic_cast<Resource*>(message)) {
    Resource whole = rest;
    whole.MergeFrom(*resource);
    resource->CopyFrom(whole);
    return;
  }
  const Descriptor* type = message->GetDescriptor();
  for (int i = 0; i < type->field_count(); ++i) {
    const FieldDescriptor* field = type->field(i);
    const bool isMapValue = type->options().map_entry() && field->number() == 2;
    if (!field->is_repeated() && (field->is_required() || isMapValue) &&
        !message->GetReflection()->HasField(*message, field)) {
      completeField(message, field);
    }
  }
  std::vector<const FieldDescriptor*> fields;
  message->GetReflection()->ListFields(*message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (isMessage(field)) {
      completeNested(message, field, rest);
    }
  }
}

// Gives each rule a finding, by which the page comes to show it.
template <typename Findings>
void addFindings(const RuleSpecMap& specs, int number, Findings* findings) {
  for (const auto& spec : specs.hashmap()) {
    auto& finding = (*findings)[number++];
    finding.set_rule_key(spec.first);
  }
}

void completeResult(SessionResult* result, const Resource& rest) {
  constexpr int unused = 1000000;
  if (result->has_specs_violated()) {
    addFindings(result->specs_violated(), unused, result->mutable_violations()->mutable_hashmap());
  }
  if (result->has_specs_affirmed()) {
    addFindings(result->specs_affirmed(), unused,
                result->mutable_affirmations()->mutable_hashmap());
  }
  complete(result, rest);
}

}  // namespace

std::vector<FieldPath> stringFields(const Descriptor* type) {
  std::vector<FieldPath> paths;
  FieldPath path;
  collect(type, &path, &paths);
  return paths;
}

std::string nameOf(const FieldPath& path) {
  std::string name;
  for (const FieldDescriptor* field : path) {
    name += (name.empty() ? "" : ".") + std::string(field->name());
  }
  return name;
}

void setString(Message* message, const FieldPath& path, const std::string& text, int number) {
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    message = enter(message, path[i], number);
  }
  const Reflection* reflection = message->GetReflection();
  if (path.back()->is_repeated()) {
    reflection->AddString(message, path.back(), text);
  } else {
    reflection->SetString(message, path.back(), text);
  }
}

SessionResult resultWithEverywhere(const std::string& text, const Resource& rest) {
  SessionResult result;
  int number = 0;
  for (const FieldPath& path : stringFields(SessionResult::descriptor())) {
    setString(&result, path, text, ++number);
  }
  completeResult(&result, rest);
  return result;
}

SessionResult resultWithOnly(const FieldPath& path, const std::string& text, const Resource& rest) {
  SessionResult result;
  setString(&result, path, text, 1);
  completeResult(&result, rest);
  return result;
}

}  // namespace tests
