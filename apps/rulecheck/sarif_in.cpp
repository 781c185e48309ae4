// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/util/json_util.h>
#include <re2/re2.h>

#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/characters.h"
#include "rulecheck/merge.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"
#include "rulecheck/sarif.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using Json = nlohmann::json;
using vok::rulecheck::MsgInst;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;
using vok::rulecheck::Violation_Severity;

namespace fs = std::filesystem;

// A part of an object, or null.
const Json& at(const Json& json, const char* name) {
  static const Json null;
  const auto found = json.is_object() ? json.find(name) : json.end();
  return found == json.end() ? null : *found;
}

const Json& at(const Json& json, std::size_t index) {
  static const Json null;
  return json.is_array() && index < json.size() ? json[index] : null;
}

std::string text(const Json& json) {
  return json.is_string() ? json.get<std::string>() : "";
}

// A number that counts something, or none.
std::size_t number(const Json& json, std::size_t none) {
  const bool fits = json.is_number_unsigned() && json.get<std::uint64_t>() <= 999'999'999;
  return fits ? json.get<std::size_t>() : none;
}

constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);

std::string percentDecoded(const std::string& uri) {
  std::string path;
  for (std::size_t i = 0; i < uri.size(); ++i) {
    int byte = 0;
    static const RE2 encoded("%([0-9A-Fa-f]{2})");
    if (uri[i] == '%' && RE2::FullMatch(uri.substr(i, 3), encoded, RE2::Hex(&byte))) {
      path += static_cast<char>(byte);
      i += 2;
    } else {
      path += uri[i];
    }
  }
  return path;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const apps::CodePoint first = apps::firstOf(text);
    if (first.value == 0xFFFD && first.length == 1) {
      return false;
    }
    text.remove_prefix(first.length);
  }
  return true;
}

// The path of a "file:" address, or of a relative one. JSON has no bytes that are not UTF-8, so a
// path with such bytes stays encoded.
std::string pathOf(const std::string& uri) {
  static const RE2 file("(?i)file:(?://(?:localhost)?)?(/.*)", RE2::Latin1);
  std::string path = uri;
  RE2::FullMatch(uri, file, &path);
  const std::string decoded = percentDecoded(path);
  return isUtf8(decoded) ? decoded : path;
}

void readAddress(const std::string& uri, RuleSpec* rule) {
  static const RE2 web(R"((https?)://([^/?#:]+)(?::(\d{1,5}))?([^?#]*)(?:\?([^#]*))?(?:#(.*))?)",
                       RE2::Latin1);
  std::string scheme;
  std::string host;
  std::string port;
  std::string path;
  std::string query;
  std::string fragment;
  if (!RE2::FullMatch(uri, web, &scheme, &host, &port, &path, &query, &fragment)) {
    return;
  }
  Resource* address = rule->mutable_description();
  address->set_scheme(scheme == "http" ? Resource::HTTP : Resource::HTTPS);
  address->set_host(host);
  if (!port.empty()) {
    address->set_port(std::stoi(port));
  }
  address->set_path(path);
  if (!query.empty()) {
    address->set_query(query);
  }
  if (!fragment.empty()) {
    address->set_fragment(fragment);
  }
}

Violation_Severity severityOf(const Json& json, const Json& level) {
  const std::string exact = text(at(at(json, "properties"), "severity"));
  if (severityNamed(exact)) {
    return *severityNamed(exact);
  }
  const std::string word = text(level);
  return exact == "unknown"                 ? Violation::SEV_UNKNOWN
         : word == "error"                  ? Violation::SEV_ERROR
         : word == "note" || word == "none" ? Violation::SEV_ADVISORY
                                            : Violation::SEV_WARNING;
}

// A run, and what becomes of it.
class Run {
 public:
  Run(const Json& run, const fs::path& directory, SessionResult* result)
      : run_(run), directory_(directory), result_(result) {}

  void read() {
    readRules(at(at(run_, "tool"), "driver"));
    for (const Json& extension : at(at(run_, "tool"), "extensions")) {
      readRules(extension);
    }
    for (const Json& found : at(run_, "results")) {
      read(found);
    }
  }

 private:
  void readRules(const Json& component) {
    for (const Json& rule : at(component, "rules")) {
      rules_.emplace(text(at(rule, "id")), &rule);
      inOrder_.push_back(&rule);
    }
  }

  const Json& ruleFor(const Json& found) const {
    static const Json null;
    const Json& index =
        at(found, "ruleIndex").is_null() ? at(at(found, "rule"), "index") : at(found, "ruleIndex");
    const std::size_t position = number(index, kNoIndex);
    const auto named = rules_.find(keyOf(found));
    return named != rules_.end()        ? *named->second
           : position < inOrder_.size() ? *inOrder_[position]
                                        : null;
  }

  static std::string keyOf(const Json& found) {
    const std::string id = text(at(found, "ruleId"));
    return id.empty() ? text(at(at(found, "rule"), "id")) : id;
  }

  void read(const Json& found) {
    const std::string kind = text(at(found, "kind"));
    if (kind == "notApplicable" || text(at(found, "baselineState")) == "absent") {
      return;
    }
    const Json& rule = ruleFor(found);
    std::string key = keyOf(found);
    key = key.empty() ? text(at(rule, "id")) : key;
    const int id = ++count_;
    if (kind == "pass") {
      auto& affirmation = (*result_->mutable_affirmations()->mutable_hashmap())[id];
      affirmation.set_id(id);
      affirmation.set_rule_key(key);
      readDetails(found, rule, affirmation.mutable_details());
      addSpec(key, rule, result_->mutable_specs_affirmed());
      return;
    }
    const Json& suppression = suppressionOf(found);
    auto& violation = (*(suppression.is_null() ? result_->mutable_violations()
                                               : result_->mutable_waived_violations())
                            ->mutable_hashmap())[id];
    violation.set_id(id);
    violation.set_rule_key(key);
    const Json& level = at(found, "level").is_null() ? at(at(rule, "defaultConfiguration"), "level")
                                                     : at(found, "level");
    violation.set_severity(severityOf(found, level));
    readDetails(found, rule, violation.mutable_details());
    const std::string reason = text(at(suppression, "justification"));
    if (!reason.empty()) {
      (*violation.mutable_categories())[kWaiverCategory] = reason;
    }
    addSpec(key, rule, result_->mutable_specs_violated());
  }

  // The first suppression that is accepted, or null.
  static const Json& suppressionOf(const Json& found) {
    static const Json null;
    for (const Json& suppression : at(found, "suppressions")) {
      const std::string status = text(at(suppression, "status"));
      if (status.empty() || status == "accepted") {
        return suppression;
      }
    }
    return null;
  }

  static void addSpec(const std::string& key, const Json& rule,
                      vok::rulecheck::RuleSpecMap* specs) {
    if (specs->hashmap().count(key) != 0) {
      return;
    }
    RuleSpec& spec = (*specs->mutable_hashmap())[key];
    spec.set_key(key);
    const std::string title = text(at(at(rule, "shortDescription"), "text"));
    const std::string name = text(at(rule, "name"));
    spec.set_full_name(!title.empty() ? title : !name.empty() ? name : key);
    const std::string expects = text(at(at(rule, "fullDescription"), "text"));
    if (!expects.empty()) {
      spec.set_expects(expects);
    }
    const std::string help = text(at(at(rule, "help"), "text"));
    if (!help.empty()) {
      spec.set_resolution_msg(help);
    }
    readAddress(text(at(rule, "helpUri")), &spec);
    const Json& level = at(at(rule, "defaultConfiguration"), "level");
    if (!level.is_null()) {
      spec.set_severity(severityOf(rule, level));
    }
  }

  void readDetails(const Json& found, const Json& rule, MsgInst* details) const {
    const Json& own = at(at(found, "properties"), "details");
    if (own.is_object() && google::protobuf::util::JsonStringToMessage(own.dump(), details).ok() &&
        details->IsInitialized()) {
      return;
    }
    details->Clear();
    const Json& location = at(at(at(found, "locations"), std::size_t{0}), "physicalLocation");
    const bool hasPlace = !location.is_null();
    details->set_text(hasPlace ? "%1: %2" : "%1");
    auto* args = details->mutable_args();
    if (hasPlace) {
      *args->add_arg()->mutable_ref() = referenceOf(location);
    }
    args->add_arg()->set_string_val(messageOf(at(found, "message"), rule));
    for (const Json& related : at(found, "relatedLocations")) {
      const Json& place = at(related, "physicalLocation");
      if (!place.is_null()) {
        const auto reference = referenceOf(place);
        auto* link = args->add_arg()->mutable_uri();
        const std::string label = text(at(at(related, "message"), "text"));
        link->set_link_text(label.empty() ? reference.name()
                                          : label + " (" + reference.name() + ')');
        *link->mutable_url() = reference.url();
      }
    }
  }

  vok::rulecheck::Reference referenceOf(const Json& location) const {
    const Json* artifact = &at(location, "artifactLocation");
    if (at(*artifact, "uri").is_null()) {
      artifact =
          &at(at(at(run_, "artifacts"), number(at(*artifact, "index"), kNoIndex)), "location");
    }
    const Json& region = at(location, "region");
    Place place;
    place.file = pathOf(text(at(*artifact, "uri")));
    place.line = static_cast<int>(number(at(region, "startLine"), 0));
    place.column = static_cast<int>(number(at(region, "startColumn"), 0));
    place.source = text(at(at(region, "snippet"), "text"));
    const std::string base = text(at(*artifact, "uriBaseId"));
    const std::string root = text(at(at(at(run_, "originalUriBaseIds"), base.c_str()), "uri"));
    const std::string path = pathOf(root);
    return referenceTo(place, path.empty() || path[0] != '/' ? directory_ : fs::path(path));
  }

  static std::string messageOf(const Json& message, const Json& rule) {
    std::string words = text(at(message, "text"));
    const std::string id = text(at(message, "id"));
    if (words.empty()) {
      words = text(at(at(at(rule, "messageStrings"), id.c_str()), "text"));
    }
    static const RE2 part(R"((?s)(.*?)\{(\d{1,3})\})", RE2::Latin1);
    re2::StringPiece rest = words;
    std::string filled;
    std::string before;
    std::size_t index = 0;
    while (RE2::Consume(&rest, part, &before, &index)) {
      const Json& argument = at(at(message, "arguments"), index);
      filled += before + (argument.is_null() ? '{' + std::to_string(index) + '}' : text(argument));
    }
    return filled + rest.as_string();
  }

  const Json& run_;
  const fs::path& directory_;
  SessionResult* result_;
  int count_ = 0;
  std::map<std::string, const Json*> rules_;
  std::vector<const Json*> inOrder_;
};

}  // namespace

void fromSarif(const std::string& log, const fs::path& directory, SessionResult* result) {
  const Json json = Json::parse(log);
  if (text(at(json, "version")) != "2.1.0" || !at(json, "runs").is_array()) {
    throw std::runtime_error("not a SARIF 2.1.0 log");
  }
  std::string names;
  for (const Json& run : at(json, "runs")) {
    SessionResult part;
    Run(run, directory, &part).read();
    names += (names.empty() ? "" : ", ") + text(at(at(at(run, "tool"), "driver"), "name"));
    merge(&part, result);
  }
  result->mutable_session()->set_name(names);
  finishMerge(result);
}

}  // namespace rulecheck
