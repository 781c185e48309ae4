// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/util/json_util.h>
#include <vok/rulecheck/Converter.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "rulecheck/compare.h"
#include "rulecheck/fingerprint.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"
#include "rulecheck/plain_text.h"
#include "rulecheck/sarif.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using OrderedJson = nlohmann::ordered_json;
using vok::rulecheck::Affirmation;
using vok::rulecheck::ArgList;
using vok::rulecheck::Converter;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

const char* levelWord(const Level& level) {
  return level.rank <= Violation::SEV_ERROR      ? "error"
         : level.rank == Violation::SEV_ADVISORY ? "note"
                                                 : "warning";
}

OrderedJson textJson(const std::string& text) {
  return {{"text", text}};
}

// The message as it is.
OrderedJson messageJson(const google::protobuf::Message& message) {
  std::string text;
  return google::protobuf::util::MessageToJsonString(message, &text).ok()
             ? OrderedJson::parse(text, nullptr, false)
             : OrderedJson();
}

OrderedJson ruleJson(const std::string& key, const RuleSpec& rule) {
  OrderedJson json = {{"id", key}};
  const auto add = [&json](const char* name, const std::string& text) {
    if (!text.empty()) {
      json[name] = textJson(text);
    }
  };
  add("shortDescription", rule.full_name());
  add("fullDescription", rule.expects());
  add("help", rule.resolution_msg());
  if (rule.has_description()) {
    json["helpUri"] = Converter::href(rule.description());
  }
  if (rule.has_severity()) {
    json["defaultConfiguration"] = {{"level", levelWord(levelOf(rule.severity()))}};
  }
  json["properties"][kOwnProperty] = messageJson(rule);
  return json;
}

// The address of a file is relative where its name is.
std::string addressOf(const Reference& reference, const std::string& file) {
  const Resource& url = reference.url();
  if (url.scheme() != Resource::FILE || !url.host().empty()) {
    Resource whole = url;
    whole.clear_fragment();
    return Converter::href(whole);
  }
  if (file.empty() || file[0] == '/') {
    return "file://" + (url.path().empty() ? file : url.path());
  }
  const std::string path = referenceTo({file}, "/").url().path().substr(1);
  // What ends with the first colon would be a scheme.
  return (path.find(':') < path.find('/') ? "./" : "") + path;
}

OrderedJson physicalLocation(const Reference& reference) {
  const Place place = placeOf(reference);
  OrderedJson location;
  location["artifactLocation"]["uri"] = addressOf(reference, place.file);
  if (place.line != 0) {
    location["region"]["startLine"] = place.line;
    if (place.column != 0) {
      location["region"]["startColumn"] = place.column;
    }
    if (!place.source.empty()) {
      location["region"]["snippet"] = textJson(place.source);
    }
  }
  return location;
}

template <typename Finding>
OrderedJson findingJson(const Finding& finding, const std::map<std::string, std::size_t>& rules) {
  OrderedJson json = {{"ruleId", finding.rule_key()}};
  const auto rule = rules.find(finding.rule_key());
  if (rule != rules.end()) {
    json["ruleIndex"] = rule->second;
  }
  json["message"] = textJson(plainText(finding.details()));
  const ArgList& args = finding.details().args();
  const int place = placeArgument(args);
  if (place >= 0) {
    json["locations"] = {{{"physicalLocation", physicalLocation(args.arg(place).ref())}}};
  }
  OrderedJson& own = json["properties"][kOwnProperty] = messageJson(finding);
  own["id"] = 0;  // findings get new numbers when they are imported
  return json;
}

class Writer {
 public:
  explicit Writer(const SessionResult& result) {
    for (const auto* specs : {&result.specs_violated(), &result.specs_affirmed()}) {
      for (const auto& entry : specs->hashmap()) {
        specs_.emplace(entry.first, &entry.second);
      }
    }
    for (const auto& entry : specs_) {
      indices_.emplace(entry.first, rules_.size());
      rules_.push_back(ruleJson(entry.first, *entry.second));
    }
    name_ = result.session().name().empty() ? "rulecheck" : result.session().name();
  }

  void add(const Violations& violations, const char* baselineState, bool waived = false) {
    for (const Violation* violation : violations) {
      OrderedJson json = findingJson(*violation, indices_);
      json["level"] = levelWord(levelOf(*violation));
      const Place place = placeOf(violation->details().args());
      json["partialFingerprints"] = {
          {"rulecheck/v1", hexadecimal(fingerprintOf(*violation, place))}};
      if (baselineState != nullptr) {
        json["baselineState"] = baselineState;
      }
      if (waived) {
        const std::string reason = waiverOf(*violation);
        OrderedJson suppression = {{"kind", reason == kOffInSource ? "inSource" : "external"}};
        if (!reason.empty()) {
          suppression["justification"] = reason;
        }
        json["suppressions"] = OrderedJson::array({suppression});
      }
      results_.push_back(std::move(json));
    }
  }

  void add(const Affirmation& affirmation) {
    OrderedJson json = findingJson(affirmation, indices_);
    json["kind"] = "pass";
    json["level"] = "none";
    results_.push_back(std::move(json));
  }

  std::string text() const {
    const OrderedJson driver = {{"name", name_}, {"rules", rules_}};
    const OrderedJson log = {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                             {"version", "2.1.0"},
                             {"runs",
                              {{{"tool", {{"driver", driver}}},
                                {"columnKind", "unicodeCodePoints"},
                                {"results", results_}}}}};
    return log.dump(1, ' ', false, OrderedJson::error_handler_t::replace) + '\n';
  }

 private:
  std::string name_;
  std::map<std::string, const RuleSpec*> specs_;
  std::map<std::string, std::size_t> indices_;
  OrderedJson rules_ = OrderedJson::array();
  OrderedJson results_ = OrderedJson::array();
};

}  // namespace

std::string toSarif(const SessionResult& result, const SessionResult* baseline) {
  Writer writer(result);
  if (baseline == nullptr) {
    writer.add(sortedByPlace(listOf(result.violations())), nullptr);
  } else {
    const Comparison comparison = compare(*baseline, result);
    writer.add(comparison.added, "new");
    writer.add(comparison.moved, "unchanged");
    writer.add(comparison.unchanged, "unchanged");
    writer.add(comparison.fixed, "absent");
  }
  writer.add(sortedByPlace(listOf(result.waived_violations())), nullptr, true);
  const std::map<int, Affirmation> affirmations(result.affirmations().hashmap().begin(),
                                                result.affirmations().hashmap().end());
  for (const auto& entry : affirmations) {
    writer.add(entry.second);
  }
  return writer.text();
}

}  // namespace rulecheck
