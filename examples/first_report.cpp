// Shown in docs/recipes.md: begin
#include <vok/rulecheck/RuleService.pb.h>

#include <fstream>

using namespace vok::rulecheck;

// What a tool has found, as the result of a session.
SessionResult makeResult() {
  SessionResult result;
  result.mutable_session()->set_name("nightly");

  RuleSpec& rule = (*result.mutable_specs_violated()->mutable_hashmap())["WIDTH"];
  rule.set_key("WIDTH");
  rule.set_full_name("Width of a bus");

  Violation& violation = (*result.mutable_violations()->mutable_hashmap())[1];
  violation.set_id(1);
  violation.set_rule_key("WIDTH");
  violation.set_severity(Violation::SEV_WARNING);
  violation.mutable_details()->set_text("The bus at %1 has 9 bits.");
  Reference* line = violation.mutable_details()->mutable_args()->add_arg()->mutable_ref();
  line->set_type(Reference::FILE);
  line->set_name("fifo.v:12");
  line->mutable_url()->set_scheme(Resource::FILE);
  line->mutable_url()->set_path("/rtl/fifo.v");
  line->mutable_url()->set_fragment("L12");
  result.set_violation_count(1);
  return result;
}

int main() {
  const SessionResult result = makeResult();
  std::ofstream file("result.pb", std::ios::binary);
  return result.IsInitialized() && result.SerializeToOstream(&file) && file.flush() ? 0 : 1;
}
// Shown in docs/recipes.md: end
