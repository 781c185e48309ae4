// make_results hostile FOLDER         a result per hostile text and kind of resource
// make_results convert FROM TO        the same result in another format
// make_results many COUNT RULES FILE  a result with that many violations, of that many rules

#include <iostream>
#include <string>

#include "common/message_file.h"
#include "hostile_results.h"
#include "string_fields.h"

namespace {

using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

void write(const std::string& path, const SessionResult& result) {
  apps::writeFile(path, apps::encodeFor(path, result));
}

void writeHostile(const std::string& folder) {
  for (const tests::HostileCase& hostile : tests::hostileCases()) {
    if (hostile.rest.has_scheme()) {  // without, the result would be incomplete
      write(folder + "/" + hostile.name + ".pb",
            tests::resultWithEverywhere(hostile.text, hostile.rest));
    }
  }
}

void convert(const std::string& from, const std::string& to) {
  SessionResult result;
  apps::decodeFrom(from, apps::readFile(from), &result);
  write(to, result);
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
    violation.mutable_details()->set_text("Register %1 is written in two always blocks.");
    violation.mutable_details()->mutable_args()->add_arg()->set_string_val("top.u_core.r_" +
                                                                           std::to_string(number));
    violation.mutable_resolution()->set_text("Merge the blocks, or name the registers apart.");
    violation.mutable_actual_value()->set_int_val(2);
    violation.mutable_threshold_value()->set_int_val(1);
  }
  write(path, result);
}

int usage() {
  std::cerr << "make_results hostile FOLDER | convert FROM TO | many COUNT RULES FILE\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) try {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 2 && arguments[0] == "hostile") {
    writeHostile(arguments[1]);
  } else if (arguments.size() == 3 && arguments[0] == "convert") {
    convert(arguments[1], arguments[2]);
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
