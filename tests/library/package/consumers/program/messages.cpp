// Accessors of every kind, map entries, type information and reflection.

#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>
#include <google/protobuf/stubs/common.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <memory>
#include <string>
#include <typeinfo>

#include "check.h"

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using namespace vok::rulecheck;

static Violation makeViolation() {
  Violation violation;
  violation.set_id(7);
  violation.set_severity(Violation::SEV_ERROR);
  violation.set_rule_key("WIDTH");
  violation.mutable_actual_value()->set_double_val(1.5);
  Arg* argument = violation.mutable_details()->mutable_args()->add_arg();
  argument->mutable_ref()->set_type(Reference::PORT);
  argument->mutable_refs()->add_ref()->set_type(Reference::LOOP);
  violation.mutable_details()->set_text("Port %1");
  violation.mutable_examples()->add_uri()->mutable_url()->set_scheme(Resource::HTTP);
  (*violation.mutable_categories())[3] = "timing";
  return violation;
}

static void checkAccessors() {
  Violation violation = makeViolation();
  CHECK(violation.has_severity() && violation.severity() == Violation_Severity_SEV_ERROR);
  CHECK(violation.details().args().arg_size() == 1);
  CHECK(violation.details().args().arg(0).refs().ref(0).type() == Reference::LOOP);
  CHECK(violation.categories().at(3) == "timing");
  std::unique_ptr<Scalar> value(violation.release_actual_value());
  CHECK(value && value->double_val() == 1.5 && !violation.has_actual_value());
  violation.set_allocated_actual_value(value.release());
  CHECK(violation.has_actual_value());
  violation.clear_categories();
  CHECK(violation.categories().empty());
}

static void checkRoundTrip() {
  Request request;
  request.set_type(Request::UPSERT_RULESPEC);
  RuleSpec* spec = request.mutable_upsert_rulespec()->mutable_rule_spec();
  spec->set_key("k");
  spec->set_full_name("n");
  (*spec->mutable_dynamic_categories())[1] = true;
  (*spec->mutable_categories())[1] = "c";
  std::string bytes;
  CHECK(request.SerializeToString(&bytes));
  Request copy;
  CHECK(copy.ParseFromString(bytes));
  CHECK(copy.upsert_rulespec().rule_spec().dynamic_categories().at(1));
}

static void checkTypeInformation() {
  const Violation violation = makeViolation();
  const Message& message = violation;
  CHECK(dynamic_cast<const Violation*>(&message) == &violation);
  CHECK(dynamic_cast<const Affirmation*>(&message) == nullptr);
  CHECK(typeid(message) == typeid(Violation));
  const std::unique_ptr<Message> fresh(message.New());
  CHECK(typeid(*fresh) == typeid(Violation));
}

static void checkReflection() {
  Violation violation = makeViolation();
  const Reflection* reflection = violation.GetReflection();
  const FieldDescriptor* categories = Violation::descriptor()->FindFieldByName("categories");
  CHECK(reflection->FieldSize(violation, categories) == 1);
  Message* entry = reflection->AddMessage(&violation, categories);
  const Descriptor* type = categories->message_type();
  entry->GetReflection()->SetInt32(entry, type->FindFieldByName("key"), 9);
  entry->GetReflection()->SetString(entry, type->FindFieldByName("value"), "nine");
  CHECK(violation.categories().at(9) == "nine");
  reflection->SetEnum(&violation, Violation::descriptor()->FindFieldByName("severity"),
                      Violation::Severity_descriptor()->FindValueByNumber(0));
  CHECK(violation.severity() == Violation::SEV_FATAL);
}

// The name of a map entry's class depends on the release of Protocol Buffers.
static void checkMapEntryClass() {
#if GOOGLE_PROTOBUF_VERSION >= 3004000 && GOOGLE_PROTOBUF_VERSION < 4022000
  Violation_CategoriesEntry_DoNotUse entry;
  const Message& message = entry;
  CHECK(dynamic_cast<const Violation_CategoriesEntry_DoNotUse*>(&message) == &entry);
  CHECK(typeid(message) == typeid(Violation_CategoriesEntry_DoNotUse));
#endif
  const Descriptor* type = Violation::descriptor()->FindFieldByName("categories")->message_type();
  const Message* prototype =
      google::protobuf::MessageFactory::generated_factory()->GetPrototype(type);
  const std::unique_ptr<Message> fresh(prototype->New());
  fresh->GetReflection()->SetInt32(fresh.get(), type->FindFieldByName("key"), 9);
  CHECK(fresh->GetReflection()->GetInt32(*fresh, type->FindFieldByName("key")) == 9);
  CHECK(typeid(*fresh) == typeid(*prototype));
}

void checkMessages() {
  checkAccessors();
  checkRoundTrip();
  checkTypeInformation();
  checkReflection();
  checkMapEntryClass();
}
