#include "data/findings.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

const char* const blocks[] = {"dma",  "uart",    "fifo",   "decoder", "scheduler",
                              "pcie", "arbiter", "memctl", "crossbar"};
const char* const signals[] = {"wr_data", "rd_addr",  "burst_len", "irq_status",
                               "tready",  "clk_core", "rst_n",     "grant"};
const char* const units[] = {"bits", "MHz", "ns", "bytes", "LUTs"};
const char* const words[] = {"asynchronous", "unregistered", "round robin", "little endian"};
const char* const targets[] = {"hardware", "emulation", "simulation"};
const char* const conditions[] = {"width <= 512", "depth is a power of two", "read after write"};

const char* const messages[] = {
    "%1 drives %3, which is more than the interface described in %2 takes at the requested clock.",
    "%1 is read before anything is written to it (%3); the usual order of these is shown in %2.",
    "The depth of %1 is %3. Bursts stall below the depth that is recommended in %2 for its clock.",
};
const char* const resolutions[] = {
    "Widen the interface to the width of its master, or split the transfer in two.",
    "Reset the register, or move the read behind the first write of the same cycle.",
    "Set the depth to the next power of two above the length of the longest burst.",
};

std::string numbered(const char* word, int number) {
  return std::string(word) + "_" + std::to_string(number);
}

void fillFile(Random& random, Resource* file) {
  const std::string block = random.pick(blocks);
  file->set_scheme(Resource::FILE);
  file->set_path("/home/nightly/soc/rtl/" + block + "/" +
                 numbered(block.c_str(), random.below(40)) + ".v");
  file->set_fragment("L" + std::to_string(1 + random.below(2000)));
}

// What the message's %3 stands for: mostly a value, sometimes text or a list.
void fillDetail(Random& random, Arg* detail) {
  const int kind = random.below(10);
  if (kind == 0) {
    detail->set_string_val(random.pick(words));
  } else if (kind == 1) {
    for (int i = 0; i < 3; ++i) {
      Reference* element = detail->mutable_refs()->add_ref();
      element->set_type(Reference::PORT);
      element->set_id(random.below(64));
    }
  } else {
    fillValue(random, detail->mutable_scalar());
  }
}

void fillArguments(Random& random, ArgList* arguments) {
  fillPlace(random, arguments->add_arg()->mutable_ref());
  fillPage(random, arguments->add_arg()->mutable_uri());
  fillDetail(random, arguments->add_arg());
}

void fillDetails(Random& random, MsgInst* details) {
  details->set_text(random.pick(messages));
  fillArguments(random, details->mutable_args());
}

}  // namespace

std::string ruleKey(int number) {
  const char* const areas[] = {"TIMING", "AXI", "RESET", "MEMORY"};
  return std::string(areas[number % 4]) + "-" + std::to_string(100 + number);
}

std::string sessionUuid() {
  return "6f1c8a52-90b4-4d0e-8f57-2ce1a3d7b946";
}

void fillPlace(Random& random, Reference* place) {
  place->set_type(random.below(2) == 0 ? Reference::PORT : Reference::VARIABLE);
  if (random.below(8) == 0) {
    place->set_id(random.below(10000));
  } else {
    place->set_name(numbered(random.pick(blocks), random.below(40)) + "/" + random.pick(signals));
  }
  fillFile(random, place->mutable_url());
}

void fillPage(Random& random, Link* link) {
  link->set_link_text(random.below(2) == 0 ? "Interfaces" : "Design rules");
  Resource* page = link->mutable_url();
  page->set_scheme(random.below(2) == 0 ? Resource::HTTP : Resource::HTTPS);
  page->set_host("docs.example");
  if (random.below(4) == 0) {
    page->set_port(8443);
  }
  page->set_path("/nightly/rules/" + ruleKey(random.below(200)) + ".html");
  page->set_fragment(random.pick(blocks));
}

void fillValue(Random& random, Scalar* value) {
  const int kind = random.below(12);
  if (kind == 0) {
    value->set_string_val(random.pick(words));
  } else if (kind == 1) {
    value->set_int_val(random.below(1 << 20));
    value->set_address("0x1000");
  } else if (kind < 7) {
    value->set_int_val(random.below(4096));
    value->set_units(random.pick(units));
  } else {
    value->set_double_val(random.below(1 << 20) / 1024.0);
    value->set_units(random.pick(units));
  }
}

void fillViolation(Random& random, int id, Violation* violation) {
  violation->set_id(id);
  violation->set_severity(static_cast<Violation::Severity>(random.below(5)));
  violation->set_rule_key(ruleKey(random.below(200)));
  violation->set_build_target(random.pick(targets));
  violation->set_expects(random.pick(conditions));
  fillValue(random, violation->mutable_actual_value());
  fillValue(random, violation->mutable_threshold_value());
  fillDetails(random, violation->mutable_details());
  violation->mutable_resolution()->set_text(random.pick(resolutions));
  (*violation->mutable_categories())[1] = random.pick(blocks);
  (*violation->mutable_categories())[2] = "performance and area";
}

void fillAffirmation(Random& random, int id, Affirmation* affirmation) {
  affirmation->set_id(id);
  affirmation->set_rule_key(ruleKey(random.below(200)));
  affirmation->set_build_target(random.pick(targets));
  fillValue(random, affirmation->mutable_actual_value());
  fillDetails(random, affirmation->mutable_details());
}

void fillRuleSpec(Random& random, int number, RuleSpec* spec) {
  spec->set_key(ruleKey(number));
  spec->set_full_name("Width and depth of the interfaces of a block, rule " + spec->key());
  spec->set_owner("architecture");
  spec->set_raw_msg(random.pick(messages));
  spec->set_msg_id(number);
  spec->set_resolution_msg(random.pick(resolutions));
  spec->set_severity(static_cast<Violation::Severity>(random.below(5)));
  spec->mutable_session_names()->add_msg("nightly");
  spec->mutable_first_release()->set_major(1);
  spec->mutable_first_release()->set_minor(4);
  spec->mutable_first_release()->set_patch(0);
  fillValue(random, spec->mutable_threshold_value());
  (*spec->mutable_categories())[1] = random.pick(blocks);
  (*spec->mutable_dynamic_categories())[2] = true;
}

void fillCreateViolation(Random& random, CreateViolation* violation) {
  violation->set_rule_key(ruleKey(random.below(200)));
  violation->set_session_uuid(sessionUuid());
  fillArguments(random, violation->mutable_args());
  fillValue(random, violation->mutable_actual_value());
  fillValue(random, violation->mutable_threshold_value());
  violation->set_severity(static_cast<Violation::Severity>(random.below(5)));
}

}  // namespace benchmarks
