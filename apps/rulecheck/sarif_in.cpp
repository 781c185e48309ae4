// SPDX-License-Identifier: Apache-2.0

#include <google/protobuf/util/json_util.h>
#include <re2/re2.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "rulecheck/merge.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/place.h"
#include "rulecheck/sarif.h"

namespace rulecheck {
namespace {

using Json = nlohmann::json;
using vok::rulecheck::MsgInst;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;
using vok::rulecheck::Violation_Severity;

namespace fs = std::filesystem;

// A part of a value, or null.
const Json& at(const Json& json, const char* name) {
  static const Json null;
  const auto found = json.is_object() ? json.find(name) : json.end();
  return found == json.end() ? null : *found;
}

const Json& at(const Json& json, std::size_t index) {
  static const Json null;
  return json.is_array() && index < json.size() ? json[index] : null;
}

template <typename... Path>
const Json& at(const Json& json, Path... path) {
  const Json* part = &json;
  ((part = &at(*part, path)), ...);
  return *part;
}

// The part of an object, if it is a string.
template <typename... Path>
std::string text(const Json& json, Path... path) {
  const Json& part = at(json, path...);
  return part.is_string() ? part.get<std::string>() : "";
}

// A number that counts something, or none.
std::size_t number(const Json& json, std::size_t none) {
  const bool fits = json.is_number_unsigned() && json.get<std::uint64_t>() <= 999'999'999;
  return fits ? json.get<std::size_t>() : none;
}

constexpr std::size_t kNoIndex = static_cast<std::size_t>(-1);

std::string percentDecoded(re2::StringPiece uri) {
  static const RE2 encoded("(?s)(.*?)%([0-9A-Fa-f]{2})", RE2::Latin1);
  std::string path;
  std::string before;
  int byte = 0;
  while (RE2::Consume(&uri, encoded, &before, RE2::Hex(&byte))) {
    path += before + static_cast<char>(byte);
  }
  return path + uri.as_string();
}

bool isUtf8(const std::string& text) {
  const std::string valid = Json(text).dump(-1, ' ', false, Json::error_handler_t::ignore);
  return Json::parse(valid) == text;
}

bool hasScheme(re2::StringPiece uri) {
  static const RE2 scheme("[A-Za-z][A-Za-z0-9+.-]+:", RE2::Latin1);
  return RE2::Consume(&uri, scheme);
}

bool isAbsolute(const std::string& uri) {
  return hasScheme(uri) || uri.substr(0, 1) == "/";
}

// The path of a "file:" address of this host, or of a relative one. JSON has no bytes that are not
// UTF-8, so a path with such bytes stays encoded.
std::optional<std::string> localPath(const std::string& uri) {
  static const RE2 file("(?i)file:(?://(?:localhost)?(/.*)|(/(?:[^/].*)?))", RE2::Latin1);
  std::string path;
  std::string bare;
  if (RE2::FullMatch(uri, file, &path, &bare)) {
    path += bare;
  } else if (hasScheme(uri)) {
    return std::nullopt;
  } else {
    path = uri;
  }
  const std::string decoded = percentDecoded(path);
  return isUtf8(decoded) ? decoded : path;
}

// Without a scheme if it is neither the address of a page nor one of a file on another host.
Resource remoteAddress(const std::string& uri) {
  static const RE2 remote(
      R"((?i)(?:(file)|http(s?))://([^/?#:]+)(?::(\d{1,5}))?([^?#]*)(?:\?([^#]*))?(?:#(.*))?)",
      RE2::Latin1);
  Resource address;
  std::string file;
  std::string secure;
  std::string port;
  std::string query;
  std::string fragment;
  if (!RE2::FullMatch(uri, remote, &file, &secure, address.mutable_host(), &port,
                      address.mutable_path(), &query, &fragment)) {
    return address;
  }
  address.set_scheme(!file.empty()    ? Resource::FILE
                     : secure.empty() ? Resource::HTTP
                                      : Resource::HTTPS);
  if (!port.empty()) {
    address.set_port(std::stoi(port));
  }
  if (!query.empty()) {
    address.set_query(query);
  }
  if (!fragment.empty()) {
    address.set_fragment(fragment);
  }
  return address;
}

// A file that is not on this host. Without an address if the scheme is another one.
Reference remoteReference(const Place& place) {
  Reference reference = referenceTo(place, "/");
  Resource address = remoteAddress(place.file);
  reference.set_name(textOf(place));
  if (reference.url().has_fragment()) {
    address.set_fragment(reference.url().fragment());
  }
  if (address.has_scheme()) {
    *reference.mutable_url() = address;
  } else {
    reference.clear_url();
  }
  return reference;
}

// Reads what toSarif() wrote about a finding or a rule. Returns false if another tool did.
template <typename Message>
bool readOwn(const Json& json, Message* message) {
  const Json& own = at(json, "properties", kOwnProperty);
  const bool isRead = own.is_object() &&
                      google::protobuf::util::JsonStringToMessage(own.dump(), message).ok() &&
                      message->IsInitialized();
  if (!isRead) {
    message->Clear();
  }
  return isRead;
}

Violation_Severity severityOf(const std::string& level) {
  return level == "error"                     ? Violation::SEV_ERROR
         : level == "note" || level == "none" ? Violation::SEV_ADVISORY
                                              : Violation::SEV_WARNING;
}

// The first tool that has each rule.
using Owners = std::map<std::string, std::string>;

// A run, and what becomes of it.
class Run {
 public:
  Run(const Json& run, const fs::path& directory, Owners* owners, SessionResult* result)
      : run_(run),
        tool_(text(run, "tool", "driver", "name")),
        directory_(directory),
        owners_(owners),
        result_(result),
        invocations_(invocationsOf(run)) {}

  void read() {
    readDescriptors(at(run_, "tool", "driver"));
    for (const Json& extension : at(run_, "tool", "extensions")) {
      readDescriptors(extension);
    }
    readOverrides();
    for (const Json& found : at(run_, "results")) {
      read(found);
    }
    for (std::size_t index = 0; index < invocations_.size(); ++index) {
      readInvocation(*invocations_[index], index);
    }
  }

 private:
  // That of a converter is the last one.
  static std::vector<const Json*> invocationsOf(const Json& run) {
    std::vector<const Json*> invocations;
    for (const Json& invocation : at(run, "invocations")) {
      invocations.push_back(&invocation);
    }
    invocations.push_back(&at(run, "conversion", "invocation"));
    return invocations;
  }

  void readDescriptors(const Json& component) {
    for (const char* const kind : {"rules", "notifications"}) {
      for (const Json& descriptor : at(component, kind)) {
        descriptors_.emplace(std::pair(kind, text(descriptor, "id")), &descriptor);
        descriptors_.emplace(std::pair(kind, text(descriptor, "guid")), &descriptor);
      }
    }
    for (const auto& message : at(component, "globalMessageStrings").items()) {
      messages_.emplace(message.key(), text(message.value(), "text"));
    }
  }

  void readOverrides() {
    for (std::size_t invocation = 0; invocation < invocations_.size(); ++invocation) {
      for (const auto& [kind, list] :
           {std::pair("rules", "ruleConfigurationOverrides"),
            std::pair("notifications", "notificationConfigurationOverrides")}) {
        for (const Json& change : at(*invocations_[invocation], list)) {
          const Json& descriptor = descriptorFor(at(change, "descriptor"), kind);
          const std::string level = text(change, "configuration", "level");
          if (!descriptor.is_null() && !level.empty()) {
            overrides_.emplace(std::pair(invocation, &descriptor), level);
          }
        }
      }
    }
  }

  std::string configuredLevel(std::size_t invocation, const Json& descriptor) const {
    const auto changed = overrides_.find({invocation, &descriptor});
    return changed == overrides_.end() ? text(descriptor, "defaultConfiguration", "level")
                                       : changed->second;
  }

  // A tool that failed may have missed something, so that is a finding, too, and what an older
  // result has beyond this one is not fixed.
  void readInvocation(const Json& invocation, std::size_t index) {
    bool isExplained = false;
    for (const char* const kind :
         {"toolConfigurationNotifications", "toolExecutionNotifications"}) {
      for (const Json& notification : at(invocation, kind)) {
        isExplained = readNotification(notification, index) == "error" || isExplained;
      }
    }
    if (at(invocation, "executionSuccessful") != false) {
      return;
    }
    const Json failure = {{"level", "error"}, {"message", {{"text", failureOf(invocation)}}}};
    if (!isExplained) {
      readNotification(failure, index);
    }
    Violation& cut = addViolation(failure, {}, keyOf("notification"), "error",
                                  result_->mutable_waived_violations());
    (*cut.mutable_categories())[kWaiverCategory] = kCutShort;
  }

  std::string failureOf(const Json& invocation) const {
    std::string failure = tool_ + " failed";
    for (const auto& [name, words] :
         {std::pair("exitSignalName", ": signal "), std::pair("exitSignalNumber", ": signal "),
          std::pair("exitCode", ": exit code ")}) {
      const Json& part = at(invocation, name);
      if (part.is_string() || part.is_number_integer()) {
        return failure + words + (part.is_string() ? part.get<std::string>() : part.dump());
      }
    }
    return failure;
  }

  // Returns its level.
  std::string readNotification(const Json& notification, std::size_t invocation) {
    const Json& reference = at(notification, "descriptor");
    const Json& descriptor = descriptorFor(reference, "notifications");
    std::string level = text(notification, "level");
    level = level.empty() ? configuredLevel(invocation, descriptor) : level;
    if (level != "note" && level != "none") {
      const std::string id = idOf(reference, descriptor);
      addViolation(notification, descriptor, keyOf(id.empty() ? "notification" : id), level,
                   result_->mutable_violations());
    }
    return level;
  }

  // The driver or an extension.
  const Json& componentFor(const Json& reference) const {
    const Json& extensions = at(run_, "tool", "extensions");
    if (!at(reference, "index").is_null()) {
      return at(extensions, number(at(reference, "index"), kNoIndex));
    }
    for (const char* const part : {"guid", "name"}) {
      for (const Json& extension : extensions) {
        if (!text(reference, part).empty() && text(extension, part) == text(reference, part)) {
          return extension;
        }
      }
    }
    return at(run_, "tool", "driver");
  }

  // The rule or notification that a reference names, of the driver or an extension; null if there
  // is none. "R/x" is a part of the rule "R".
  const Json& descriptorFor(const Json& reference, const char* kind) const {
    const Json& component = componentFor(at(reference, "toolComponent"));
    const Json& indexed = at(component, kind, number(at(reference, "index"), kNoIndex));
    const std::string id = text(reference, "id");
    std::string name = id.empty() ? text(reference, "guid") : id;
    while (!name.empty() && name != text(indexed, "id")) {
      const auto named = descriptors_.find({kind, name});
      if (named != descriptors_.end()) {
        return *named->second;
      }
      name.resize(name.find('/') == std::string::npos ? 0 : name.rfind('/'));
    }
    return indexed;
  }

  static std::string idOf(const Json& reference, const Json& descriptor) {
    const std::string id = text(reference, "id");
    return id.empty() ? text(descriptor, "id") : id;
  }

  // The id, after the name of the tool if an earlier one has a rule of that id.
  std::string keyOf(const std::string& id) const {
    const bool isOwn = id.empty() || owners_->emplace(id, tool_).first->second == tool_;
    return isOwn ? id : tool_ + '/' + id;
  }

  static Json ruleReferenceOf(const Json& found) {
    Json reference = at(found, "rule").is_object() ? at(found, "rule") : Json::object();
    for (const auto& [name, own] : {std::pair("id", "ruleId"), std::pair("index", "ruleIndex")}) {
      if (!at(found, own).is_null()) {
        reference[name] = at(found, own);
      }
    }
    return reference;
  }

  template <typename Finding>
  static void label(int id, const std::string& key, Finding* finding) {
    finding->set_id(id);
    if (!key.empty()) {
      finding->set_rule_key(key);
    }
  }

  void read(const Json& found) {
    const std::string kind = text(found, "kind");
    if (kind == "notApplicable" || text(found, "baselineState") == "absent") {
      return;
    }
    const Json reference = ruleReferenceOf(found);
    const Json& rule = descriptorFor(reference, "rules");
    const std::string key = keyOf(idOf(reference, rule));
    if (kind == "pass") {
      const int id = ++count_;
      auto& affirmation = (*result_->mutable_affirmations()->mutable_hashmap())[id];
      if (!readOwn(found, &affirmation)) {
        readDetails(found, rule, affirmation.mutable_details());
      }
      label(id, key, &affirmation);
      addSpec(key, rule, result_->mutable_specs_affirmed());
      return;
    }
    const Json& suppression = suppressionOf(found);
    Violation& violation =
        addViolation(found, rule, key, levelOf(found, rule),
                     suppression.is_null() ? result_->mutable_violations()
                                           : result_->mutable_waived_violations());
    const std::string reason = text(suppression, "justification");
    if (!reason.empty()) {
      (*violation.mutable_categories())[kWaiverCategory] = reason;
    }
  }

  Violation& addViolation(const Json& found, const Json& rule, const std::string& key,
                          const std::string& level, vok::rulecheck::ViolationMap* violations) {
    const int id = ++count_;
    Violation& violation = (*violations->mutable_hashmap())[id];
    if (!readOwn(found, &violation)) {
      violation.set_severity(severityOf(level));
      readDetails(found, rule, violation.mutable_details());
    }
    label(id, key, &violation);
    addSpec(key, rule, result_->mutable_specs_violated());
    return violation;
  }

  // Only a failure has the level of its rule.
  std::string levelOf(const Json& found, const Json& rule) const {
    std::string level = text(found, "level");
    const std::string kind = text(found, "kind");
    if (!level.empty()) {
      return level;
    }
    const std::size_t invocation = number(at(found, "provenance", "invocationIndex"), 0);
    return kind.empty() || kind == "fail" ? configuredLevel(invocation, rule) : "none";
  }

  // The first suppression, or null if there is none or one is not accepted.
  static const Json& suppressionOf(const Json& found) {
    static const Json null;
    for (const Json& suppression : at(found, "suppressions")) {
      const std::string status = text(suppression, "status");
      if (!status.empty() && status != "accepted") {
        return null;
      }
    }
    return at(found, "suppressions", std::size_t{0});
  }

  static void addSpec(const std::string& key, const Json& rule,
                      vok::rulecheck::RuleSpecMap* specs) {
    if (specs->hashmap().count(key) != 0) {
      return;
    }
    RuleSpec& spec = (*specs->mutable_hashmap())[key];
    const bool isOwn = readOwn(rule, &spec);
    spec.set_key(key);
    if (isOwn) {
      return;
    }
    const std::string title = text(rule, "shortDescription", "text");
    const std::string name = text(rule, "name");
    spec.set_full_name(!title.empty() ? title : !name.empty() ? name : key);
    const std::string expects = text(rule, "fullDescription", "text");
    if (!expects.empty()) {
      spec.set_expects(expects);
    }
    const std::string help = text(rule, "help", "text");
    if (!help.empty()) {
      spec.set_resolution_msg(help);
    }
    const Resource page = remoteAddress(text(rule, "helpUri"));
    if (page.has_scheme()) {
      *spec.mutable_description() = page;
    }
    const std::string level = text(rule, "defaultConfiguration", "level");
    if (!level.empty()) {
      spec.set_severity(severityOf(level));
    }
  }

  void readDetails(const Json& found, const Json& rule, MsgInst* details) const {
    const Json& location = at(found, "locations", std::size_t{0});
    const Json& place = at(location, "physicalLocation");
    const std::string object = logicalNameOf(location);
    if (!place.is_null()) {
      *addArgument(details)->mutable_ref() = referenceOf(place);
      details->mutable_text()->append(": ");
    } else if (!object.empty()) {
      addArgument(details)->set_string_val(object);
      details->mutable_text()->append(": ");
    }
    addWords(messageOf(at(found, "message"), rule), found, details);
    addLinks(at(found, "locations"), 1, details);
    addLinks(at(found, "relatedLocations"), 0, details);
  }

  // An argument that the text shows next.
  static vok::rulecheck::Arg* addArgument(MsgInst* details) {
    auto* argument = details->mutable_args()->add_arg();
    details->mutable_text()->append('%' + std::to_string(details->args().arg_size()));
    return argument;
  }

  // Pages that the words link to become arguments. Of links to locations the label remains.
  static void addWords(const std::string& words, const Json& found, MsgInst* details) {
    static const RE2 link(
        R"((?s)(.*?)(\[([^\[\]\\]+)\]\((?:(\d{1,9})|(https?://[^\s()/?#:][^\s()]*))\)))",
        RE2::Latin1);
    const std::set<std::string> locations = locationIds(found);
    re2::StringPiece rest = words;
    std::string plain;
    std::string before;
    std::string whole;
    std::string label;
    std::string id;
    std::string uri;
    while (RE2::Consume(&rest, link, &before, &whole, &label, &id, &uri)) {
      if (uri.empty()) {
        plain += before;
        plain += locations.count(id) != 0 ? label : whole;
        continue;
      }
      addArgument(details)->set_string_val(plain + before);
      plain.clear();
      auto* page = addArgument(details)->mutable_uri();
      page->set_link_text(label);
      *page->mutable_url() = remoteAddress(uri);
    }
    addArgument(details)->set_string_val(plain + rest.as_string());
  }

  static std::set<std::string> locationIds(const Json& found) {
    std::set<std::string> ids;
    for (const char* const list : {"locations", "relatedLocations"}) {
      for (const Json& location : at(found, list)) {
        ids.insert(at(location, "id").dump());
      }
    }
    return ids;
  }

  void addLinks(const Json& locations, std::size_t first, MsgInst* details) const {
    for (std::size_t i = first; i < locations.size(); ++i) {
      const Json& place = at(locations, i, "physicalLocation");
      if (!place.is_null()) {
        const Reference reference = referenceOf(place);
        auto* link = details->mutable_args()->add_arg()->mutable_uri();
        const std::string label = text(locations, i, "message", "text");
        link->set_link_text(label.empty() ? reference.name()
                                          : label + " (" + reference.name() + ')');
        if (reference.has_url()) {
          *link->mutable_url() = reference.url();
        }
      }
    }
  }

  std::string logicalNameOf(const Json& location) const {
    const Json& own = at(location, "logicalLocations", std::size_t{0});
    const Json& known = at(run_, "logicalLocations", number(at(own, "index"), kNoIndex));
    for (const Json* object : {&own, &known}) {
      for (const char* const name : {"fullyQualifiedName", "name"}) {
        if (!text(*object, name).empty()) {
          return text(*object, name);
        }
      }
    }
    return "";
  }

  // The address of a file, and that of the folder which its name is relative to, if the log says
  // so.
  std::pair<std::string, std::string> addressOf(const Json& file) const {
    std::string address = text(file, "uri");
    std::string root;
    std::string base = text(file, "uriBaseId");
    // Bases that are a cycle have no root.
    for (int depth = 0; depth < 9 && !base.empty() && !isAbsolute(address); ++depth) {
      const Json& folder = at(run_, "originalUriBaseIds", base.c_str());
      root = text(folder, "uri");
      if (!root.empty() && root.back() != '/') {
        root += '/';
      }
      address.insert(0, root);
      base = text(folder, "uriBaseId");
    }
    return {address, root};
  }

  // A file below the directory is named relative to it, another one relative to the log's root.
  Reference referenceOf(const Json& location) const {
    const Json* file = &at(location, "artifactLocation");
    if (at(*file, "uri").is_null()) {
      file = &at(run_, "artifacts", number(at(*file, "index"), kNoIndex), "location");
    }
    const Json& region = at(location, "region");
    Place place;
    place.line = static_cast<int>(number(at(region, "startLine"), 0));
    place.column = static_cast<int>(number(at(region, "startColumn"), 0));
    const std::string lines = text(region, "snippet", "text");
    place.source = lines.substr(0, lines.find_first_of("\r\n"));
    const auto [address, root] = addressOf(*file);
    const auto path = localPath(address);
    place.file = path.value_or(address);
    if (!path) {
      return remoteReference(place);
    }
    const Reference reference = referenceTo(place, directory_);
    const fs::path folder = localPath(root).value_or("");
    return folder.is_absolute() && reference.name()[0] == '/' ? referenceTo(place, folder)
                                                              : reference;
  }

  // Braces are special in texts with arguments and in those of a rule.
  std::string messageOf(const Json& message, const Json& rule) const {
    std::string words = text(message, "text");
    if (!words.empty() && at(message, "arguments").empty()) {
      return words;
    }
    const std::string id = text(message, "id");
    words = words.empty() ? text(rule, "messageStrings", id.c_str(), "text") : words;
    if (const auto shared = messages_.find(id); words.empty() && shared != messages_.end()) {
      words = shared->second;
    }
    static const RE2 part(R"((?s)(.*?)(\{\{|\}\}|\{(\d{1,3})\}))", RE2::Latin1);
    re2::StringPiece rest = words;
    std::string filled;
    std::string before;
    std::string special;
    std::string index;
    while (RE2::Consume(&rest, part, &before, &special, &index)) {
      const Json& argument =
          index.empty() ? Json() : at(message, "arguments", std::size_t{std::stoul(index)});
      filled += before + (argument.is_string() ? argument.get<std::string>()
                          : index.empty()      ? special.substr(1)
                                               : special);
    }
    return filled + rest.as_string();
  }

  const Json& run_;
  std::string tool_;
  const fs::path& directory_;
  Owners* owners_;
  SessionResult* result_;
  std::vector<const Json*> invocations_;
  int count_ = 0;
  // By kind, and id or guid. Of several with the same, the first.
  std::map<std::pair<std::string, std::string>, const Json*> descriptors_;
  // By id, for all rules.
  std::map<std::string, std::string> messages_;
  // Levels by invocation and descriptor.
  std::map<std::pair<std::size_t, const Json*>, std::string> overrides_;
};

// To copy or print a value takes a stack as deep as the value. The parser's own callback would
// make it slow.
void checkDepth(const std::string& log) {
  int depth = 0;
  bool isString = false;
  for (std::size_t i = 0; i < log.size(); ++i) {
    const char c = log[i];
    if (c == '"') {
      isString = !isString;
    } else if (isString) {
      i += c == '\\' ? 1 : 0;
    } else {
      depth += c == '[' || c == '{' ? 1 : c == ']' || c == '}' ? -1 : 0;
    }
    if (depth > 1000) {
      throw std::runtime_error("malformed JSON: more than 1000 levels");
    }
  }
}

Json parse(const std::string& log) {
  checkDepth(log);
  try {
    return Json::parse(log);
  } catch (const Json::parse_error& error) {
    const std::string before = log.substr(0, error.byte);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    throw std::runtime_error("malformed JSON in line " + std::to_string(line));
  } catch (const Json::exception&) {
    throw std::runtime_error("malformed JSON: a number is too large");
  }
}

// Parts that are elsewhere are not read, and may have results.
void checkIsWhole(const Json& part, const char* elsewhere) {
  if (!at(part, elsewhere).empty()) {
    throw std::runtime_error(std::string("a log with ") + elsewhere + " is not supported");
  }
}

void check(const Json& run) {
  const Json& results = at(run, "results");
  if (!run.is_object() || !(results.is_null() || results.is_array())) {
    throw std::runtime_error("not a SARIF 2.1.0 log");
  }
  checkIsWhole(run, "externalPropertyFileReferences");
}

}  // namespace

void fromSarif(const std::string& log, const fs::path& directory, SessionResult* result) {
  const Json json = parse(log);
  if (text(json, "version") != "2.1.0" || !at(json, "runs").is_array()) {
    throw std::runtime_error("not a SARIF 2.1.0 log");
  }
  checkIsWhole(json, "inlineExternalProperties");
  std::string names;
  Owners owners;
  for (const Json& run : at(json, "runs")) {
    check(run);
    SessionResult part;
    Run(run, directory, &owners, &part).read();
    names += (names.empty() ? "" : ", ") + text(run, "tool", "driver", "name");
    merge(&part, result);
  }
  result->mutable_session()->set_name(names);
  finishMerge(result);
}

}  // namespace rulecheck
