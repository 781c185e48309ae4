// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_copy.h"

#include <google/protobuf/descriptor.h>
#include <vok/rulecheck/Converter.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

#include "rulecheck/page/safe_link.h"
#include "rulecheck/page/safe_text.h"

namespace rulecheck {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;

// What stands in the place of a link that leads nowhere.
std::string standAlone(const std::string& text, const Resource& url) {
  if (isBlank(text)) {
    return describe(url);
  }
  return carriesText(url) ? text + " (" + describe(url) + ")" : text;
}

void tameLink(Link* link) {
  if (isBlank(link->link_text())) {
    link->clear_link_text();
  }
  if (link->has_url() && isBlank(link->url().media_type())) {
    link->mutable_url()->clear_media_type();
  }
  if (link->has_url() && !isLinkable(link->url())) {
    link->set_link_text(standAlone(link->link_text(), link->url()));
    link->clear_url();
  }
  if (!link->has_url() && !link->has_link_text()) {
    link->set_link_text("empty link");
  }
}

void tameReference(Reference* reference) {
  if (isBlank(reference->name())) {
    reference->clear_name();
  }
  if (!vok::rulecheck::Reference_RefType_IsValid(reference->type())) {
    reference->set_type(Reference::OTHER);
  }
  if (reference->has_url() && !isLinkable(reference->url())) {
    reference->set_name(standAlone(Converter::toString(*reference), reference->url()));
    reference->clear_url();
  }
}

void tameResource(Resource* resource) {
  if (isLinkable(*resource)) {
    encodeAddress(resource);
  } else {
    resource->Clear();
  }
}

// Before the strings become HTML, since addresses are decided on as they are.
void tameAddresses(Message* message) {
  if (auto* const link = dynamic_cast<Link*>(message)) {
    tameLink(link);
  } else if (auto* const reference = dynamic_cast<Reference*>(message)) {
    tameReference(reference);
  } else if (auto* const resource = dynamic_cast<Resource*>(message)) {
    tameResource(resource);
  }
}

void escapeString(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    reflection->SetString(message, field, escapeText(reflection->GetString(*message, field)));
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    reflection->SetRepeatedString(message, field, i,
                                  escapeText(reflection->GetRepeatedString(*message, field, i)));
  }
}

// The entries of a map are messages, with a key and a value.
void makeNestedSafe(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    makeSafe(reflection->MutableMessage(message, field));
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    makeSafe(reflection->MutableRepeatedMessage(message, field, i));
  }
}

}  // namespace

void makeSafe(Message* message) {
  tameAddresses(message);
  std::vector<const FieldDescriptor*> fields;
  message->GetReflection()->ListFields(*message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      escapeString(message, field);
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      makeNestedSafe(message, field);
    }
  }
}

}  // namespace rulecheck
