// SPDX-License-Identifier: Apache-2.0

#include "support/use_library.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/text_format.h>
#include <vok/rulecheck/Converter.h>

#include <stdexcept>
#include <string>

namespace tests {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using google::protobuf::TextFormat;
using namespace vok::rulecheck;

void require(bool holds, const char* what) {
  if (!holds) {
    throw std::logic_error(std::string("not true: ") + what);
  }
}

void fill(int id, Violation* violation) {
  violation->set_id(id);
  violation->set_severity(Violation::SEV_CRITICAL_WARNING);
  violation->set_rule_key("WIDTH");
  violation->mutable_actual_value()->set_double_val(1.5);
  violation->mutable_details()->set_text("Port %1");
  Reference* place = violation->mutable_details()->mutable_args()->add_arg()->mutable_ref();
  place->set_type(Reference::PORT);
  place->set_name("clk");
  place->mutable_url()->set_scheme(Resource::FILE);
  place->mutable_url()->set_path("/t.v");
  (*violation->mutable_categories())[3] = "timing";
}

// The one entry of a map, as reflection gives it.
const Message& onlyEntry(const Message& message, const char* map) {
  const FieldDescriptor* field = message.GetDescriptor()->FindFieldByName(map);
  const Reflection* reflection = message.GetReflection();
  require(reflection->FieldSize(message, field) == 1, "a map has one entry");
  return reflection->GetRepeatedMessage(message, field, 0);
}

const Message& valueOf(const Message& entry) {
  return entry.GetReflection()->GetMessage(entry, entry.GetDescriptor()->FindFieldByName("value"));
}

void readByAccessors(const SessionResult& result) {
  const Violation& violation = result.violations().hashmap().at(7);
  require(violation.id() == 7 && violation.rule_key() == "WIDTH", "the accessors of a violation");
  require(violation.categories().at(3) == "timing", "the accessors of a map of strings");
  require(result.specs_violated().hashmap().at("WIDTH").dynamic_categories().at(1),
          "the accessors of a map of booleans");
}

void readByReflection(const SessionResult& result) {
  const Message& violation = valueOf(onlyEntry(result.violations(), "hashmap"));
  const Message& category = onlyEntry(violation, "categories");
  const Descriptor* type = category.GetDescriptor();
  require(
      category.GetReflection()->GetInt32(category, type->FindFieldByName("key")) == 3 &&
          category.GetReflection()->GetString(category, type->FindFieldByName("value")) == "timing",
      "reflection of a map of strings");
  const Message& spec = valueOf(onlyEntry(result.specs_violated(), "hashmap"));
  const Message& dynamic = onlyEntry(spec, "dynamic_categories");
  require(
      dynamic.GetReflection()->GetBool(dynamic, dynamic.GetDescriptor()->FindFieldByName("value")),
      "reflection of a map of booleans");
}

}  // namespace

SessionResult makeResult() {
  SessionResult result;
  result.mutable_session()->set_name("nightly");
  result.set_violation_count(1);
  fill(7, &(*result.mutable_violations()->mutable_hashmap())[7]);
  Affirmation& affirmation = (*result.mutable_affirmations()->mutable_hashmap())[8];
  affirmation.set_id(8);
  (*affirmation.mutable_categories())[1] = "area";
  RuleSpec& spec = (*result.mutable_specs_violated()->mutable_hashmap())["WIDTH"];
  spec.set_key("WIDTH");
  spec.set_full_name("Widths agree");
  (*spec.mutable_dynamic_categories())[1] = true;
  return result;
}

void useDefaultInstances() {
  require(&Link::default_instance().url() == &Resource::default_instance(),
          "an absent message is the default instance");
  require(Violation::default_instance().severity() == Violation::SEV_ADVISORY,
          "the default of a severity");
  require(Request::default_instance().type() == Request::CREATE_AFFIRMATION,
          "the default of a request");
  require(SessionResult::default_instance().violations().hashmap().empty(), "the default of a map");
}

void useDescriptors() {
  const Descriptor* type = Violation::descriptor();
  require(type->full_name() == "vok.rulecheck.Violation", "the name of a type");
  require(type->file()->name() == "RuleService.proto", "the name of the schema");
  require(type->file()->service(0)->method_count() == 14, "the methods of the service");
  require(Violation::Severity_descriptor()->FindValueByName("SEV_ERROR")->number() == 1,
          "the number of a value");
  require(google::protobuf::DescriptorPool::generated_pool()->FindMessageTypeByName(
              "vok.rulecheck.SessionResult") == SessionResult::descriptor(),
          "the pool's descriptor");
}

void useReflection() {
  Violation violation;
  const Descriptor* type = Violation::descriptor();
  const Reflection* reflection = violation.GetReflection();
  reflection->SetEnum(&violation, type->FindFieldByName("severity"),
                      Violation::Severity_descriptor()->FindValueByNumber(0));
  require(violation.severity() == Violation::SEV_FATAL, "reflection sets a value");
  Message* entry = reflection->AddMessage(&violation, type->FindFieldByName("categories"));
  const Descriptor* entryType = entry->GetDescriptor();
  entry->GetReflection()->SetInt32(entry, entryType->FindFieldByName("key"), 9);
  entry->GetReflection()->SetString(entry, entryType->FindFieldByName("value"), "nine");
  require(violation.categories().at(9) == "nine", "reflection adds to a map");
}

void useParsing() {
  const std::string bytes = makeResult().SerializeAsString();
  SessionResult copy;
  require(copy.ParseFromString(bytes), "bytes are parsed");
  require(copy.SerializeAsString() == bytes, "a message keeps its bytes");
  require(!copy.ParseFromString("\x0a"), "half a field is not parsed");
}

void useTextFormat() {
  std::string text;
  require(TextFormat::PrintToString(makeResult(), &text), "a message is printed");
  SessionResult copy;
  require(TextFormat::ParseFromString(text, &copy), "a text is parsed");
  require(copy.SerializeAsString() == makeResult().SerializeAsString(),
          "a message comes back from text");
}

void useRendering() {
  Resource resource;
  resource.set_scheme(Resource::FILE);
  resource.set_path("/t.v");
  Link link;
  *link.mutable_url() = resource;
  Reference reference;
  reference.set_type(Reference::KERNEL);
  reference.set_id(4);
  Scalar scalar;
  scalar.set_double_val(1.5);
  scalar.set_units("ns");
  Arg argument;
  *argument.mutable_refs()->add_ref() = reference;
  require(Converter::toString(Resource::FILE) == "file", "the word of a scheme");
  require(Converter::toString(Reference::DATAMOVER) == "data mover", "the word of a kind");
  require(Converter::toString(Violation::SEV_FATAL) == "fatal", "the word of a severity");
  require(Converter::toString(scalar) == "1.500000 ns", "the text of a scalar");
  require(Converter::toString(reference) == "kernel #4", "the text of a reference");
  require(Converter::href(resource) == "file:///t.v", "an address");
  require(Converter::toHtml(resource, "t") == "<a href=\"file:///t.v\">t</a>", "an anchor");
  require(Converter::toHtml(link) == "<a href=\"file:///t.v\">link</a>", "a link");
  require(Converter::toHtml(reference) == "kernel #4", "the HTML of a reference");
  require(Converter::toHtml(argument) == "kernel #4", "the HTML of an argument");
}

void useEverything() {
  useDefaultInstances();
  useDescriptors();
  useReflection();
  useParsing();
  useTextFormat();
  useRendering();
}

void read(const SessionResult& result) {
  readByAccessors(result);
  readByReflection(result);
  const Violation& violation = result.violations().hashmap().at(7);
  require(result.IsInitialized(), "the message is complete");
  require(result.SerializeAsString() == makeResult().SerializeAsString(), "the bytes are the same");
  require(violation.ShortDebugString().find("timing") != std::string::npos, "the text is the same");
  require(SessionResult(result).violation_count() == 1, "a copy is the same");
  require(Converter::toHtml(violation.details().args().arg(0)) == "<a href=\"file:///t.v\">clk</a>",
          "the HTML is the same");
}

}  // namespace tests
