#include "support/completeness.h"

#include <google/protobuf/descriptor.h>
#include <vok/rulecheck/RuleService.pb.h>

#include <algorithm>
#include <map>

#include "support/message_types.h"

namespace tests {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::Message;
using namespace vok::rulecheck;

// One function for each message, in the order of the schema.
struct Complete {
  template <typename List>
  static bool all(const List& list) {
    return std::all_of(list.begin(), list.end(), [](const auto& element) { return of(element); });
  }
  template <typename Map>
  static bool allValues(const Map& map) {
    return std::all_of(map.begin(), map.end(), [](const auto& entry) { return of(entry.second); });
  }
  template <typename Finding>
  static bool texts(const Finding& m) {
    return (!m.has_examples() || of(m.examples())) && (!m.has_details() || of(m.details())) &&
           (!m.has_resolution() || of(m.resolution()));
  }
  template <typename Body>
  static bool files(const Body& m) {
    return (!m.has_report_file() || of(m.report_file())) &&
           (!m.has_proto_file() || of(m.proto_file()));
  }
  template <typename Body>
  static bool session(const Body& m) {
    return !m.has_session() || of(m.session());
  }

  static bool of(const Resource& m) { return m.has_scheme(); }
  static bool of(const Link& m) { return !m.has_url() || of(m.url()); }
  static bool of(const Links& m) { return all(m.uri()); }
  static bool of(const Scalar&) { return true; }
  static bool of(const Reference& m) { return m.has_type() && (!m.has_url() || of(m.url())); }
  static bool of(const RefList& m) { return all(m.ref()); }
  static bool of(const StringList&) { return true; }
  static bool of(const Arg& m) {
    return (!m.has_ref() || of(m.ref())) && (!m.has_refs() || of(m.refs())) &&
           (!m.has_uri() || of(m.uri())) && (!m.has_uris() || of(m.uris()));
  }
  static bool of(const ArgList& m) { return all(m.arg()); }
  static bool of(const MsgInst& m) { return m.has_text() && (!m.has_args() || of(m.args())); }
  static bool of(const Affirmation& m) { return m.has_id() && texts(m); }
  static bool of(const AffirmationMap& m) { return allValues(m.hashmap()); }
  static bool of(const Violation& m) { return m.has_id() && m.has_severity() && texts(m); }
  static bool of(const ViolationMap& m) { return allValues(m.hashmap()); }
  static bool of(const RuleSpec& m) {
    return m.has_key() && m.has_full_name() && (!m.has_examples() || of(m.examples())) &&
           (!m.has_first_release() || of(m.first_release())) &&
           (!m.has_description() || of(m.description()));
  }
  static bool of(const RuleSpecMap& m) { return allValues(m.hashmap()); }
  static bool of(const Session& m) { return m.has_name() && files(m); }
  static bool of(const SessionResult& m) {
    return m.has_session() && of(m.session()) && (!m.has_violations() || of(m.violations())) &&
           (!m.has_waived_violations() || of(m.waived_violations())) &&
           (!m.has_affirmations() || of(m.affirmations())) &&
           (!m.has_specs_violated() || of(m.specs_violated())) &&
           (!m.has_specs_affirmed() || of(m.specs_affirmed()));
  }
  static bool of(const Version& m) { return m.has_major() && m.has_minor() && m.has_patch(); }
  static bool of(const ErrorResponse& m) { return m.has_code(); }
  static bool of(const StatusResponse& m) { return m.has_code(); }
  static bool of(const EmptyMessage&) { return true; }
  static bool of(const CreateAffirmation& m) {
    return m.has_rule_key() && (!m.has_args() || of(m.args()));
  }
  static bool of(const CreateViolation& m) {
    return m.has_rule_key() && (!m.has_args() || of(m.args()));
  }
  static bool of(const ExchangeToken& m) { return m.has_token(); }
  static bool of(const GetSession&) { return true; }
  static bool of(const GetRuleSpecs& m) { return session(m); }
  static bool of(const GetSessionResult&) { return true; }
  static bool of(const GetVersion&) { return true; }
  static bool of(const LoadRuleDataFile& m) { return !m.has_data_file() || of(m.data_file()); }
  static bool of(const DumpRules& m) { return !m.has_data_file() || of(m.data_file()); }
  static bool of(const ResetSession& m) { return session(m); }
  static bool of(const StartSession& m) { return m.has_name() && files(m); }
  static bool of(const StopSession& m) { return session(m); }
  static bool of(const UpsertRuleSpec& m) { return !m.has_rule_spec() || of(m.rule_spec()); }
  static bool of(const WriteReport& m) { return session(m); }
  static bool of(const Request& m) {
    return m.has_type() && (!m.has_create_affirmation() || of(m.create_affirmation())) &&
           (!m.has_create_violation() || of(m.create_violation())) &&
           (!m.has_exchange_token() || of(m.exchange_token())) &&
           (!m.has_get_rulespecs() || of(m.get_rulespecs())) &&
           (!m.has_load_rulespec_file() || of(m.load_rulespec_file())) &&
           (!m.has_reset_session() || of(m.reset_session())) &&
           (!m.has_start_session() || of(m.start_session())) &&
           (!m.has_stop_session() || of(m.stop_session())) &&
           (!m.has_upsert_rulespec() || of(m.upsert_rulespec())) &&
           (!m.has_write_report() || of(m.write_report())) &&
           (!m.has_dump_rules() || of(m.dump_rules()));
  }
  static bool of(const Response& m) {
    return m.has_type() && (!m.has_status() || of(m.status())) &&
           (!m.has_error() || of(m.error())) && (!m.has_affirmation() || of(m.affirmation())) &&
           session(m) && (!m.has_session_result() || of(m.session_result())) &&
           (!m.has_version() || of(m.version())) && (!m.has_violation() || of(m.violation()));
  }
};

using Predicate = bool (*)(const Message&);

template <typename... Types>
std::map<const Descriptor*, Predicate> predicatesOf(TypeList<Types...> /*types*/) {
  return {{Types::descriptor(), [](const Message& message) {
             return Complete::of(static_cast<const Types&>(message));
           }}...};
}

}  // namespace

bool isComplete(const Message& message) {
  static const auto predicates = predicatesOf(MessageTypes());
  return predicates.at(message.GetDescriptor())(message);
}

}  // namespace tests
