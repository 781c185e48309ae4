// SPDX-License-Identifier: Apache-2.0

// make_results hostile FOLDER         a result per hostile text and kind of resource
// make_results many COUNT RULES FILE  a result with that many violations, of that many rules

#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <iostream>
#include <string>
#include <vector>

#include "common/message_file.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

struct HostileText {
  std::string name;
  std::string text;
};

// The fields that lead from a message to a string field, which comes last. Keys
// and values of maps are fields of their entries.
using FieldPath = std::vector<const FieldDescriptor*>;

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

std::vector<FieldPath> stringFields(const Descriptor* type) {
  std::vector<FieldPath> paths;
  FieldPath path;
  collect(type, &path, &paths);
  return paths;
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

// A result in which every string field holds the text, each field in a finding,
// or a rule with a finding, of its own. What a resource lacks is taken from rest.
SessionResult resultWithEverywhere(const std::string& text, const Resource& rest) {
  SessionResult result;
  int number = 0;
  for (const FieldPath& path : stringFields(SessionResult::descriptor())) {
    setString(&result, path, text, ++number);
  }
  completeResult(&result, rest);
  return result;
}

const std::vector<HostileText>& hostileTexts() {
  using namespace std::string_literals;
  static const std::vector<HostileText> texts = {
      {"harmless", "text"},
      {"script", "<script>alert(1)</script>"},
      {"end_of_double_quotes", "\"><img src=x onerror=alert(1)>"},
      {"end_of_single_quotes", "'><svg onload=alert(1)>"},
      {"attribute", "x\" onmouseover=\"alert(1)"},
      {"javascript_address", "javascript:alert(1)"},
      {"javascript_address_in_disguise", "\x01 JaVa\nScript\t:alert(1)//"},
      {"data_address", "data:text/html,<script>alert(1)</script>"},
      {"end_of_style", "</style></title></textarea><script>alert(1)</script>"},
      {"end_of_script", "</script><script>alert(1)</script>"},
      {"end_of_comment", "--><script>alert(1)</script><!--"},
      {"end_of_list",
       "</li></ul></details></main><base href=//x><meta http-equiv=refresh content=0>"},
      {"template_tags", "{{style}}{{{script}}}{{#kinds}}{{/sections}}{{=<% %>=}}"},
      {"places", "%1 %2 %99 %% %"},
      {"character_references", "&lt;script&gt;&#60;b&#x3e;&quot;&amp"},
      {"not_utf8", "\xC0\xBCscript\xC0\xBE \xED\xA0\x80 \xF8\xFF <b>\xE2\x82"},
      {"zero_byte", "a\0<b\0>\0"s},
      {"line_ends", "a\r\nb\x0b\x0c\x85<b>\r"},
      {"blank", " \t\n"},
  };
  return texts;
}

Resource resourceOf(Resource::Scheme scheme, const std::string& text) {
  Resource resource;
  resource.set_scheme(scheme);
  resource.set_host(text);
  resource.set_data(text);
  return resource;
}

Resource inlinePage(const std::string& text) {
  Resource resource;
  resource.set_scheme(Resource::DATA);
  resource.set_media_type("text/html");
  resource.set_data(text);
  return resource;
}

bool mayBreakOutOfAddress(const std::string& name) {
  return name == "harmless" || name.find("address") != std::string::npos ||
         name.find("quotes") != std::string::npos || name == "attribute";
}

// The name of the file has the text's and that of what the resources are like.
void write(const std::string& folder, const HostileText& hostile, const std::string& kind,
           const Resource& rest) {
  const std::string path = folder + "/" + hostile.name + "-" + kind + ".pb";
  apps::writeFile(path, apps::encodeFor(path, resultWithEverywhere(hostile.text, rest)));
}

void writeEveryScheme(const std::string& folder, const HostileText& hostile) {
  for (int number = Resource::Scheme_MIN; number <= Resource::Scheme_MAX; ++number) {
    const auto scheme = static_cast<Resource::Scheme>(number);
    write(folder, hostile, std::string(vok::rulecheck::Resource_Scheme_Name(scheme)),
          resourceOf(scheme, hostile.text));
  }
  Resource mail;
  mail.set_scheme(Resource::MAILTO);
  mail.set_path(hostile.text);
  write(folder, hostile, "MAILTO_path", mail);
}

// Every text in web addresses and in an inline page. Texts that could break out
// of an address are in resources of every scheme.
void writeHostile(const std::string& folder) {
  for (const HostileText& hostile : hostileTexts()) {
    write(folder, hostile, "DATA_html", inlinePage(hostile.text));
    if (mayBreakOutOfAddress(hostile.name)) {
      writeEveryScheme(folder, hostile);
    } else {
      write(folder, hostile, "HTTP", resourceOf(Resource::HTTP, hostile.text));
    }
  }
}

// The number gives the finding one of 600 files in 24 folders.
void addPlace(int number, Violation* violation) {
  const std::string path =
      "rtl/block_" + std::to_string(number % 24) + "/part_" + std::to_string(number % 600) + ".v";
  const std::string line = std::to_string(number / 600 + 1);
  auto* place = violation->mutable_details()->mutable_args()->add_arg()->mutable_ref();
  place->set_type(vok::rulecheck::Reference::FILE);
  place->set_name(path + ":" + line + ":7");
  place->mutable_url()->set_scheme(Resource::FILE);
  place->mutable_url()->set_path("/srv/design/" + path);
  place->mutable_url()->set_fragment("L" + line + "C7");
}

void writeMany(int count, int rules, const std::string& path) {
  SessionResult result;
  result.mutable_session()->set_name("Many findings");
  for (int number = 1; number <= count; ++number) {
    Violation& violation = (*result.mutable_violations()->mutable_hashmap())[number];
    violation.set_id(number);
    violation.set_severity(
        static_cast<Violation::Severity>(number % (Violation::Severity_MAX + 1)));
    violation.set_rule_key("RULE-" + std::to_string(number % rules));
    violation.mutable_details()->set_text("%1: Register %2 is written in two always blocks.");
    addPlace(number, &violation);
    violation.mutable_details()->mutable_args()->add_arg()->set_string_val("top.u_core.r_" +
                                                                           std::to_string(number));
    violation.mutable_resolution()->set_text("Merge the blocks, or name the registers apart.");
    violation.mutable_actual_value()->set_int_val(2);
    violation.mutable_threshold_value()->set_int_val(1);
  }
  apps::writeFile(path, apps::encodeFor(path, result));
}

int usage() {
  std::cerr << "make_results hostile FOLDER | many COUNT RULES FILE\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 2 && arguments[0] == "hostile") {
    writeHostile(arguments[1]);
  } else if (arguments.size() == 4 && arguments[0] == "many") {
    writeMany(std::stoi(arguments[1]), std::stoi(arguments[2]), arguments[3]);
  } else {
    return usage();
  }
  return 0;
} catch (const std::exception& error) {
  std::cerr << "make_results: " << error.what() << '\n';
  return 2;
}
