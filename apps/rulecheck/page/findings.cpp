// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/findings.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <numeric>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "rulecheck/compare.h"
#include "rulecheck/not_checked.h"
#include "rulecheck/page/safe_copy.h"
#include "rulecheck/page/safe_link.h"
#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Affirmation;
using vok::rulecheck::Arg;
using vok::rulecheck::ArgList;
using vok::rulecheck::Converter;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

// The argument that says where a finding is, or null.
const Reference* placeReference(const ArgList& arguments) {
  const int place = placeArgument(arguments);
  if (place >= 0) {
    return &arguments.arg(place).ref();
  }
  const auto leadsToFile = [](const Arg& arg) {
    return arg.ref().url().has_scheme() && arg.ref().url().scheme() == Resource::FILE;
  };
  const auto found = std::find_if(arguments.arg().begin(), arguments.arg().end(), leadsToFile);
  return found == arguments.arg().end() ? nullptr : &found->ref();
}

Place placeOfFinding(const Reference& reference) {
  if (reference.type() == Reference::FILE) {
    return placeOf(reference);
  }
  Reference unnamed = reference;
  unnamed.clear_name();
  return placeOf(unnamed);
}

std::string addressOf(Resource url) {
  url.clear_fragment();
  return isLinkable(url) ? Converter::href(safeCopy(url)) : "";
}

class Collector {
 public:
  explicit Collector(const Comparison& comparison) {
    add(kFixed, comparison.fixed);
    for (const auto& [mark, violations] :
         {std::make_pair(kNew, &comparison.added), std::make_pair(kMoved, &comparison.moved),
          std::make_pair(kUnchanged, &comparison.unchanged)}) {
      for (const Violation* violation : *violations) {
        marks_[violation] = mark;
      }
    }
  }

  void add(const SessionResult& result) {
    for (const auto& [number, violation] : result.violations().hashmap()) {
      add({levelOf(violation).rank, 0, number, 0, 0, 0, &violation, nullptr}, violation);
    }
    for (const auto& [number, violation] : result.waived_violations().hashmap()) {
      const Kind kind = isNotChecked(violation) ? kNotChecked : kWaived;
      add({kind, 0, number, 0, 0, 0, &violation, nullptr}, violation);
    }
    for (const auto& [number, affirmation] : result.affirmations().hashmap()) {
      add({kMet, 0, number, 0, 0, 0, nullptr, &affirmation}, affirmation);
    }
  }

  Findings sorted() {
    sortFiles();
    std::sort(findings_.list.begin(), findings_.list.end(), [](const auto& a, const auto& b) {
      const auto order = [](const Finding& finding) {
        return std::tie(finding.file, finding.line, finding.column, finding.kind, finding.number);
      };
      return order(a) < order(b);
    });
    return std::move(findings_);
  }

 private:
  void add(Kind kind, const Violations& violations) {
    for (const Violation* violation : violations) {
      add({kind, 0, violation->id(), 0, 0, 0, violation, nullptr}, *violation);
    }
  }

  template <typename Message>
  void add(Finding finding, const Message& message) {
    if (const Reference* reference = placeReference(message.details().args())) {
      const Place place = placeOfFinding(*reference);
      finding.file = fileNumber(place.file, reference->url());
      finding.line = place.line;
      finding.column = place.column;
    }
    const auto mark = marks_.find(finding.violation);
    finding.mark = mark == marks_.end() ? kUnmarked : mark->second;
    ++findings_.ofKind[static_cast<std::size_t>(finding.kind)];
    ++findings_.ofMark[static_cast<std::size_t>(finding.mark)];
    findings_.list.push_back(finding);
  }

  std::size_t fileNumber(const std::string& path, const Resource& url) {
    const std::string key = path + '\0' + std::to_string(url.scheme()) + url.host() + '\0' +
                            std::to_string(url.port()) + url.path() + '\0' + url.query();
    const auto [file, isFirst] = numbers_.insert({key, findings_.files.size()});
    if (isFirst) {
      findings_.files.push_back({path, addressOf(url)});
    }
    return file->second;
  }

  void sortFiles() {
    std::vector<File>& files = findings_.files;
    std::vector<std::size_t> order(files.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin() + 1, order.end(), [&files](std::size_t a, std::size_t b) {
      return std::tie(files[a].path, files[a].address) < std::tie(files[b].path, files[b].address);
    });
    std::vector<File> sortedFiles(files.size());
    std::vector<std::size_t> ranks(files.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
      sortedFiles[i] = std::move(files[order[i]]);
      ranks[order[i]] = i;
    }
    files = std::move(sortedFiles);
    for (Finding& finding : findings_.list) {
      finding.file = ranks[finding.file];
    }
  }

  Findings findings_;
  std::unordered_map<std::string, std::size_t> numbers_;
  std::unordered_map<const Violation*, Mark> marks_;
};

}  // namespace

const std::vector<Level>& kinds() {
  static const std::vector<Level> all = [] {
    std::vector<Level> levels = violationLevels();
    levels.push_back({kNotChecked, "not checked", "not-checked"});
    levels.push_back({kWaived, "waived", "waived"});
    levels.push_back({kMet, "met", "met"});
    levels.push_back({kFixed, "fixed", "fixed"});
    return levels;
  }();
  return all;
}

const std::vector<Level>& marks() {
  static const std::vector<Level> all = {{kUnmarked, "", ""},
                                         {kNew, "new", "new"},
                                         {kMoved, "moved", "moved"},
                                         {kUnchanged, "unchanged", "unchanged"}};
  return all;
}

Findings findingsOf(const SessionResult& result, const SessionResult* baseline) {
  Collector collector(baseline == nullptr ? Comparison() : compare(*baseline, result));
  collector.add(result);
  Findings findings = collector.sorted();
  findings.isCompared = baseline != nullptr;
  return findings;
}

}  // namespace rulecheck
