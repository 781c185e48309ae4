// SPDX-License-Identifier: Apache-2.0

#include "messages.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/io/zero_copy_stream_impl_lite.h>

#include <map>
#include <random>
#include <stdexcept>

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

// std::uniform_int_distribution would differ between standard libraries.
class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  // A number from 0 to end - 1.
  int below(int end) { return static_cast<int>(engine_() % static_cast<unsigned>(end)); }

  template <int size>
  const char* pick(const char* const (&words)[size]) {
    return words[below(size)];
  }

 private:
  std::mt19937 engine_;
};

const char* const blocks[] = {"dma",  "uart",    "fifo",   "decoder", "scheduler",
                              "pcie", "arbiter", "memctl", "crossbar"};
const char* const signals[] = {"wr_data", "rd_addr",  "burst_len", "irq_status",
                               "tready",  "clk_core", "rst_n",     "grant"};
const char* const units[] = {"bits", "MHz", "ns", "bytes", "LUTs"};
const char* const words[] = {"asynchronous", "unregistered", "round robin", "little endian"};
const char* const targets[] = {"hardware", "emulation", "simulation"};
const char* const conditions[] = {"width <= 512", "depth is a power of two", "read after write"};

const char* const texts[] = {
    "%1 drives %3, which is more than the interface described in %2 takes at the requested clock.",
    "%1 is read before anything is written to it (%3); the usual order of these is shown in %2.",
    "The depth of %1 is %3. Bursts stall below the depth that is recommended in %2 for its clock.",
};
const char* const resolutions[] = {
    "Widen the interface to the width of its master, or split the transfer in two.",
    "Reset the register, or move the read behind the first write of the same cycle.",
    "Set the depth to the next power of two above the length of the longest burst.",
};
const char* const sessionUuid = "6f1c8a52-90b4-4d0e-8f57-2ce1a3d7b946";

std::string ruleKey(int number) {
  const char* const areas[] = {"TIMING", "AXI", "RESET", "MEMORY"};
  return std::string(areas[number % 4]) + "-" + std::to_string(100 + number);
}

std::string anyRule(Random& random) {
  return ruleKey(random.below(200));
}

Violation::Severity anySeverity(Random& random) {
  return static_cast<Violation::Severity>(random.below(5));
}

std::string numbered(const std::string& word, int number) {
  return word + "_" + std::to_string(number);
}

// An object of the design, with the line of the file where it is.
void fillReference(Random& random, Reference* reference) {
  reference->set_type(random.below(2) == 0 ? Reference::PORT : Reference::VARIABLE);
  if (random.below(8) == 0) {
    reference->set_id(random.below(10000));
  } else {
    const std::string block = numbered(random.pick(blocks), random.below(40));
    reference->set_name(block + "/" + random.pick(signals));
  }
  Resource* file = reference->mutable_url();
  const std::string block = random.pick(blocks);
  file->set_scheme(Resource::FILE);
  file->set_path("/home/nightly/soc/rtl/" + block + "/" + numbered(block, random.below(40)) + ".v");
  file->set_fragment("L" + std::to_string(1 + random.below(2000)));
}

void fillLink(Random& random, Link* link) {
  link->set_link_text(random.below(2) == 0 ? "Interfaces" : "Design rules");
  Resource* page = link->mutable_url();
  page->set_scheme(random.below(2) == 0 ? Resource::HTTP : Resource::HTTPS);
  page->set_host("docs.example");
  if (random.below(4) == 0) {
    page->set_port(8443);
  }
  page->set_path("/nightly/rules/" + anyRule(random) + ".html");
  page->set_fragment(random.pick(blocks));
}

// A number with its unit; now and then an address or a word.
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

void fillArguments(Random& random, ArgList* arguments) {
  fillReference(random, arguments->add_arg()->mutable_ref());
  fillLink(random, arguments->add_arg()->mutable_uri());
  fillValue(random, arguments->add_arg()->mutable_scalar());
}

// The fields that violations and affirmations share.
template <typename Finding>
void fillFinding(Random& random, int id, Finding* finding) {
  finding->set_id(id);
  finding->set_rule_key(anyRule(random));
  finding->set_build_target(random.pick(targets));
  fillValue(random, finding->mutable_actual_value());
  finding->mutable_details()->set_text(random.pick(texts));
  fillArguments(random, finding->mutable_details()->mutable_args());
}

void fillViolation(Random& random, int id, Violation* violation) {
  fillFinding(random, id, violation);
  violation->set_severity(anySeverity(random));
  violation->set_expects(random.pick(conditions));
  fillValue(random, violation->mutable_threshold_value());
  violation->mutable_resolution()->set_text(random.pick(resolutions));
  (*violation->mutable_categories())[1] = random.pick(blocks);
  (*violation->mutable_categories())[2] = "performance and area";
}

void fillRuleSpec(Random& random, int number, RuleSpec* spec) {
  spec->set_key(ruleKey(number));
  spec->set_full_name("Width and depth of the interfaces of a block, rule " + spec->key());
  spec->set_owner("architecture");
  spec->set_raw_msg(random.pick(texts));
  spec->set_resolution_msg(random.pick(resolutions));
  spec->set_severity(anySeverity(random));
  spec->mutable_session_names()->add_msg("nightly");
  fillValue(random, spec->mutable_threshold_value());
  (*spec->mutable_categories())[1] = random.pick(blocks);
  (*spec->mutable_dynamic_categories())[2] = true;
}

void fillCreateViolation(Random& random, CreateViolation* violation) {
  violation->set_rule_key(anyRule(random));
  violation->set_session_uuid(sessionUuid);
  fillArguments(random, violation->mutable_args());
  fillValue(random, violation->mutable_actual_value());
  fillValue(random, violation->mutable_threshold_value());
  violation->set_severity(anySeverity(random));
}

}  // namespace

SessionResult makeResult(int violations) {
  Random random(1);
  SessionResult result;
  result.mutable_session()->set_name("nightly");
  result.mutable_session()->set_uuid(sessionUuid);
  result.mutable_session()->set_timestamp(1767225600);
  result.set_violation_count(violations);
  result.set_affirmation_count(violations / 5);
  for (int id = 0; id < violations; ++id) {
    fillViolation(random, id, &(*result.mutable_violations()->mutable_hashmap())[id]);
  }
  for (int id = 0; id < violations / 5; ++id) {
    fillFinding(random, id, &(*result.mutable_affirmations()->mutable_hashmap())[id]);
  }
  auto& specs = *result.mutable_specs_violated()->mutable_hashmap();
  for (int number = 0; number < violations / 50; ++number) {
    fillRuleSpec(random, number, &specs[ruleKey(number)]);
  }
  return result;
}

std::vector<Request> makeRequests() {
  Random random(2);
  std::vector<Request> requests(20000);
  for (Request& request : requests) {
    request.set_type(Request::CREATE_VIOLATION);
    fillCreateViolation(random, request.mutable_create_violation());
  }
  return requests;
}

Findings makeFindings(std::size_t count) {
  Random random(3);
  Findings findings(count);
  for (auto& finding : findings) {
    finding = std::make_unique<Violation>();
    fillViolation(random, 0, finding.get());
  }
  return findings;
}

std::string bytesOf(const google::protobuf::Message& message) {
  std::string bytes;
  {
    google::protobuf::io::StringOutputStream sink(&bytes);
    google::protobuf::io::CodedOutputStream out(&sink);
    out.SetSerializationDeterministic(true);
    if (!message.SerializeToCodedStream(&out)) {
      throw std::runtime_error("a message cannot be serialized");
    }
  }
  return bytes;
}

const std::string& resultBytes(int violations) {
  static std::map<int, std::string> bytes;
  std::string& found = bytes[violations];
  if (found.empty()) {
    found = bytesOf(makeResult(violations));
  }
  return found;
}

const std::vector<std::string>& requestBytes() {
  static const std::vector<std::string> bytes = [] {
    std::vector<std::string> made;
    for (const Request& request : makeRequests()) {
      made.push_back(bytesOf(request));
    }
    return made;
  }();
  return bytes;
}

}  // namespace benchmarks
