// SPDX-License-Identifier: Apache-2.0

#include "support/use_library.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/text_format.h>
#include <vok/rulecheck/Converter.h>

#include <stdexcept>
#include <string>

namespace tests {

using google::protobuf::Descriptor;
using google::protobuf::TextFormat;
using namespace vok::rulecheck;

#define VOK_REQUIRE(condition) \
  if (!(condition))            \
  throw std::logic_error("not true: " #condition)

SessionResult makeResult() {
  SessionResult result;
  result.mutable_session()->set_name("nightly");
  result.set_violation_count(1);
  Violation& violation = (*result.mutable_violations()->mutable_hashmap())[7];
  violation.set_id(7);
  violation.set_severity(Violation::SEV_CRITICAL_WARNING);
  violation.mutable_actual_value()->set_double_val(1.5);
  violation.mutable_details()->set_text("Port %1 \xff");  // logs nothing, although it is not UTF-8
  Reference* place = violation.mutable_details()->mutable_args()->add_arg()->mutable_ref();
  place->set_type(Reference::PORT);
  place->set_name("clk");
  place->mutable_url()->set_scheme(Resource::FILE);
  place->mutable_url()->set_path("/t.v");
  (*violation.mutable_categories())[3] = "timing";
  (*result.mutable_affirmations()->mutable_hashmap())[8].set_id(8);
  RuleSpec& spec = (*result.mutable_specs_violated()->mutable_hashmap())["WIDTH"];
  spec.set_key("WIDTH");
  spec.set_full_name("Widths agree");
  (*spec.mutable_dynamic_categories())[1] = true;
  return result;
}

void useDefaultInstances() {
  VOK_REQUIRE(&Link::default_instance().url() == &Resource::default_instance());
  VOK_REQUIRE(Violation::default_instance().severity() == Violation::SEV_ADVISORY);
  VOK_REQUIRE(SessionResult::default_instance().violations().hashmap().empty());
}

void useDescriptors() {
  const Descriptor* type = Violation::descriptor();
  VOK_REQUIRE(type->full_name() == "vok.rulecheck.Violation");
  VOK_REQUIRE(type->file()->service(0)->method_count() == 14);
  VOK_REQUIRE(Violation::Severity_descriptor()->FindValueByName("SEV_ERROR")->number() == 1);
  const auto* pool = google::protobuf::DescriptorPool::generated_pool();
  VOK_REQUIRE(pool->FindMessageTypeByName("vok.rulecheck.Violation") == type);
  VOK_REQUIRE(pool->FindServiceByName("vok.rulecheck.RuleCheckService") != nullptr);
}

void useParsing() {
  const std::string bytes = makeResult().SerializeAsString();
  SessionResult copy;
  VOK_REQUIRE(copy.ParseFromString(bytes));
  VOK_REQUIRE(copy.SerializeAsString() == bytes);
  VOK_REQUIRE(!copy.ParseFromString("\x0a"));
}

void useTextFormat() {
  std::string text;
  VOK_REQUIRE(TextFormat::PrintToString(makeResult(), &text));
  SessionResult copy;
  VOK_REQUIRE(TextFormat::ParseFromString(text, &copy));
  VOK_REQUIRE(copy.SerializeAsString() == makeResult().SerializeAsString());
}

void useRendering() {
  Link link;
  link.mutable_url()->set_scheme(Resource::FILE);
  link.mutable_url()->set_path("/t.v");
  Scalar scalar;
  scalar.set_double_val(1.5);
  Arg argument;
  Reference* reference = argument.mutable_refs()->add_ref();
  reference->set_type(Reference::KERNEL);
  reference->set_id(4);
  VOK_REQUIRE(Converter::toString(Resource::FILE) == "file");
  VOK_REQUIRE(Converter::toString(Reference::DATAMOVER) == "data mover");
  VOK_REQUIRE(Converter::toString(Violation::SEV_FATAL) == "fatal");
  VOK_REQUIRE(Converter::toString(scalar) == "1.500000");
  VOK_REQUIRE(Converter::toString(*reference) == "kernel #4");
  VOK_REQUIRE(Converter::href(link.url()) == "file:///t.v");
  VOK_REQUIRE(Converter::toHtml(link.url(), "t") == "<a href=\"file:///t.v\">t</a>");
  VOK_REQUIRE(Converter::toHtml(link) == "<a href=\"file:///t.v\">link</a>");
  VOK_REQUIRE(Converter::toHtml(*reference) == "kernel #4");
  VOK_REQUIRE(Converter::toHtml(argument) == "kernel #4");
}

void useEverything() {
  useDefaultInstances();
  useDescriptors();
  useParsing();
  useTextFormat();
  useRendering();
}

void read(const SessionResult& result) {
  const Violation& violation = result.violations().hashmap().at(7);
  VOK_REQUIRE(violation.categories().at(3) == "timing");
  VOK_REQUIRE(result.specs_violated().hashmap().at("WIDTH").dynamic_categories().at(1));
  VOK_REQUIRE(result.IsInitialized());
  VOK_REQUIRE(result.SerializeAsString() == makeResult().SerializeAsString());
  VOK_REQUIRE(violation.ShortDebugString().find("timing") != std::string::npos);
  VOK_REQUIRE(SessionResult(result).violation_count() == 1);
  VOK_REQUIRE(Converter::toHtml(violation.details().args().arg(0)) ==
              "<a href=\"file:///t.v\">clk</a>");
}

}  // namespace tests
