// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/data_block.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "rulecheck/fingerprint.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/page/facts.h"
#include "rulecheck/page/message_text.h"
#include "rulecheck/page/safe_html.h"
#include "rulecheck/page/sources.h"

namespace rulecheck {
namespace {

using nlohmann::json;
using vok::rulecheck::Arg;
using vok::rulecheck::ArgList;
using vok::rulecheck::Converter;
using vok::rulecheck::Reference;
using vok::rulecheck::RuleSpec;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::SessionResult;

// A list in which each text is once.
class Pool {
 public:
  std::size_t numberOf(const std::string& text) {
    const auto [entry, isFirst] = numbers_.insert({text, numbers_.size()});
    if (isFirst) {
      list_.push_back(text);
    }
    return entry->second;
  }
  const json& list() const { return list_; }

 private:
  std::unordered_map<std::string, std::size_t> numbers_;
  json list_ = json::array();
};

json namesOf(const std::vector<Level>& levels) {
  json names = json::array();
  for (const Level& level : levels) {
    names.push_back({level.word, level.slug});
  }
  return names;
}

json listOf(const Facts& facts) {
  json list = json::array();
  for (const Fact& fact : facts.list()) {
    list.push_back(fact.label);
    list.push_back(fact.html);
  }
  return list;
}

const RuleSpec* find(const RuleSpecMap& specs, const std::string& key) {
  const auto spec = specs.hashmap().find(key);
  return spec == specs.hashmap().end() ? nullptr : &spec->second;
}

// The name of the first level of the hierarchy that a message mentions.
std::string moduleOf(const ArgList& arguments) {
  const auto isLevel = [](const Reference& reference) {
    return reference.type() == Reference::HIERARCHY && !isBlank(reference.name());
  };
  for (const Arg& arg : arguments.arg()) {
    const auto& list = arg.refs().ref();
    const auto found = std::find_if(list.begin(), list.end(), isLevel);
    if (found != list.end() || isLevel(arg.ref())) {
      return found != list.end() ? found->name() : arg.ref().name();
    }
  }
  return "";
}

// Without white space, which tools change when they print a line.
std::string squeezed(std::string text) {
  const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  text.erase(std::remove_if(text.begin(), text.end(), isSpace), text.end());
  return text;
}

// At most 400 characters, more or less.
std::string shortened(const std::string& line) {
  constexpr std::size_t kMostBytesOfLine = 400;
  return cleanText(line.size() > kMostBytesOfLine ? line.substr(0, kMostBytesOfLine) + " ..."
                                                  : line);
}

// The lines that a page shows of a file.
class Excerpt {
 public:
  explicit Excerpt(std::vector<std::string> lines) : lines_(std::move(lines)) {}

  // Notes the lines around a place. Returns false if the line is missing, or has become
  // another one since the result was made, which has the text that the line had.
  bool add(int line, const std::string& text) {
    const int count = static_cast<int>(lines_.size());
    if (line < 1 || line > count || (!text.empty() && squeezed(text) != squeezed(at(line)))) {
      return false;
    }
    for (int i = std::max(line - kLinesAround, 1); i <= std::min(line + kLinesAround, count); ++i) {
      wanted_.insert(i);
    }
    return true;
  }

  json runs() const {
    json runs = json::array();
    int last = -1;
    for (const int line : wanted_) {
      if (line != last + 1) {
        runs.push_back(json::array({line}));
      }
      runs.back().push_back(shortened(at(line)));
      last = line;
    }
    return runs;
  }

 private:
  const std::string& at(int line) const { return lines_[static_cast<std::size_t>(line) - 1]; }

  std::vector<std::string> lines_;
  std::set<int> wanted_;
};

// Appends numbers to a row in JSON, with a comma behind each.
template <typename... Numbers>
void append(std::string* row, Numbers... numbers) {
  ((*row += std::to_string(numbers) += ','), ...);
}

// What the rule says already.
struct Rule {
  std::size_t number;
  std::string resolution;
  std::string expects;
  std::string threshold;
  std::string examples;
  const google::protobuf::Map<std::int32_t, std::string>* categories;
};

class Block {
 public:
  Block(const SessionResult& result, const Findings& findings,
        const std::filesystem::path& sourceRoot)
      : result_(result),
        findings_(findings),
        sources_(sourceRoot),
        showsSources_(!sourceRoot.empty()),
        knownRules_(findings.rules.size()) {
    modules_.numberOf("");
    permalinks_.reserve(findings.list.size());
  }

  std::string text() {
    json files = json::array();
    json sources = json::array();
    std::string list;
    auto finding = findings_.list.begin();
    for (std::size_t file = 0; file < findings_.files.size(); ++file) {
      const std::string& path = findings_.files[file].path;
      files.push_back({cleanText(path), findings_.files[file].address});
      Excerpt excerpt(sources_.linesOf(path));
      for (; finding != findings_.list.end() && finding->file == file; ++finding) {
        list += list.empty() ? "[" : ",\n[";
        finding->visit([&](const auto& message) { addRow(*finding, message, &excerpt, &list); });
        list.back() = ']';
      }
      sources.push_back(excerpt.runs());
    }
    const json shared = {
        {"kinds", namesOf(kinds())}, {"marks", namesOf(marks())},  {"files", files},
        {"rules", rules_},           {"modules", modules_.list()}, {"labels", labels_.list()},
        {"texts", texts_.list()},    {"sources", sources}};
    std::string text = shared.dump();
    text.pop_back();
    text += ",\"findings\":[\n" + list + "]}";
    return withoutTags(text);
  }

 private:
  // No content of a text can end the element or begin a comment.
  static std::string withoutTags(const std::string& text) {
    std::string safe;
    safe.reserve(text.size() + text.size() / 50);
    std::size_t begin = 0;
    for (auto tag = text.find('<'); tag != std::string::npos; tag = text.find('<', begin)) {
      safe.append(text, begin, tag - begin);
      safe += "\\u003c";
      begin = tag + 1;
    }
    return safe.append(text, begin);
  }

  const Rule& ruleOf(std::size_t number) {
    std::optional<Rule>& rule = knownRules_[number];
    if (!rule) {
      const std::string& key = findings_.rules[number];
      const RuleSpec* const found = specOf(result_, key);
      const RuleSpec& spec = found == nullptr ? RuleSpec::default_instance() : *found;
      const RuleSpec safe = safeCopy(spec);
      rule = {rules_.size(),
              safe.resolution_msg(),
              safe.expects(),
              Converter::toString(safe.threshold_value()),
              linksHtml(safe.examples()),
              &spec.categories()};
      rules_.push_back({cleanText(key), cleanText(nameOf(spec, key)), listOf(mainFacts(spec)),
                        listOf(furtherFacts(spec))});
    }
    return *rule;
  }

  template <typename Message>
  void addRow(const Finding& finding, const Message& message, Excerpt* excerpt, std::string* row) {
    const auto& arguments = message.details().args();
    const Rule& rule = ruleOf(finding.rule);
    MessageParts parts(message.details(), finding.placeArgument);
    const std::string others = othersOf(&parts);
    // A finding without a text shows its arguments instead.
    const bool isAlone = isBlank(parts.text());
    append(row, finding.kind, finding.severity, finding.mark, rule.number, finding.file,
           finding.line, finding.column, modules_.numberOf(cleanText(moduleOf(arguments))),
           message.has_id() ? message.id() : finding.number);
    row->append(1, '"').append(permalinkOf(finding.fingerprint)).append("\",");
    append(row, texts_.numberOf(isAlone ? others : parts.text()));
    appendArguments(row, &parts);
    addFact("Arguments", isAlone ? "" : others, row);
    addFacts(message, rule, row);
    const bool isWaived = finding.kind == kNotChecked || finding.kind == kWaived;
    if (isWaived) {
      addFact("Reason", escapeText(waiverOf(*finding.violation)), row);
    }
    addCategories(message, rule, isWaived, row);
    const std::string source = sourceOf(arguments, finding.placeArgument);
    const bool isCurrent = finding.kind != kFixed && excerpt->add(finding.line, source);
    if (!isCurrent && showsSources_) {
      addFact("Source", escapeText(shortened(source)), row);
    }
  }

  static std::string sourceOf(const ArgList& arguments, int place) {
    return place < 0 ? "" : arguments.arg(place).ref().value().string_val();
  }

  static std::string othersOf(MessageParts* parts) {
    std::string html;
    for (const int argument : parts->others()) {
      html += (html.empty() ? "" : ", ") + parts->argument(argument);
    }
    return html;
  }

  static void appendArguments(std::string* row, MessageParts* parts) {
    *row += '[';
    for (const int argument : parts->places()) {
      *row += row->back() == '[' ? "" : ",";
      *row += json(parts->argument(argument)).dump();
    }
    *row += "],";
  }

  // The fingerprint; of several findings with one, the second has "-2" behind it.
  std::string permalinkOf(std::uint64_t fingerprint) {
    const int count = ++permalinks_[fingerprint];
    return hexadecimal(fingerprint) + (count == 1 ? "" : '-' + std::to_string(count));
  }

  void addFact(const char* label, const std::string& html, std::string* row) {
    if (!isBlank(html)) {
      append(row, labels_.numberOf(label), texts_.numberOf(html));
    }
  }

  void addFactUnless(const std::string& known, const char* label, const std::string& html,
                     std::string* row) {
    if (html != known) {
      addFact(label, html, row);
    }
  }

  template <typename Message>
  void addFacts(const Message& message, const Rule& rule, std::string* row) {
    if (message.has_resolution()) {
      addFactUnless(rule.resolution, "Resolution", messageHtml(message.resolution()), row);
    }
    addFactUnless(rule.expects, "Expects", escapeText(message.expects()), row);
    if (message.has_actual_value()) {
      addFact("Actual", escapeText(Converter::toString(message.actual_value())), row);
    }
    if (message.has_threshold_value()) {
      addFactUnless(rule.threshold, "Threshold",
                    escapeText(Converter::toString(message.threshold_value())), row);
    }
    addFact("Build target", escapeText(message.build_target()), row);
    if (message.has_examples()) {
      addFactUnless(rule.examples, "Examples", linksHtml(safeCopy(message.examples())), row);
    }
  }

  // Those that the rule lacks; a waiver is shown as the reason.
  template <typename Message>
  void addCategories(const Message& message, const Rule& rule, bool isWaived, std::string* row) {
    std::map<std::int32_t, std::string> own;
    for (const auto& [number, value] : message.categories()) {
      const auto known = rule.categories->find(number);
      const bool isKnown = known != rule.categories->end() && known->second == value;
      if (!isKnown && !(isWaived && number == kWaiverCategory)) {
        own.emplace(number, value);
      }
    }
    addFact("Categories", categoriesHtml(own), row);
  }

  const SessionResult& result_;
  const Findings& findings_;
  Sources sources_;
  bool showsSources_;
  json rules_ = json::array();
  std::vector<std::optional<Rule>> knownRules_;
  std::unordered_map<std::uint64_t, int> permalinks_;
  Pool modules_;
  Pool labels_;
  Pool texts_;
};

}  // namespace

const RuleSpec* specOf(const SessionResult& result, const std::string& key) {
  const RuleSpec* spec = find(result.specs_violated(), key);
  return spec == nullptr ? find(result.specs_affirmed(), key) : spec;
}

std::string nameOf(const RuleSpec& spec, const std::string& key) {
  return spec.full_name() == key ? "" : spec.full_name();
}

std::string dataBlock(const SessionResult& result, const Findings& findings,
                      const std::filesystem::path& sourceRoot) {
  return Block(result, findings, sourceRoot).text();
}

}  // namespace rulecheck
