// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/summary.h"

#include <cstddef>
#include <ctime>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>

#include "rulecheck/page/facts.h"
#include "rulecheck/page/safe_html.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using vok::rulecheck::Resource;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

// To the second. Of a year without four digits, the number alone.
std::string timeHtml(const Session& session) {
  const auto time = static_cast<std::time_t>(session.timestamp() / 1000);
  std::tm parts = {};
  if (!session.has_timestamp()) {
    return "";
  }
  if (gmtime_r(&time, &parts) == nullptr || parts.tm_year < -900 || parts.tm_year > 8099) {
    return "timestamp " + std::to_string(session.timestamp());
  }
  std::ostringstream html;
  html << "<time datetime=\"" << std::put_time(&parts, "%FT%TZ") << "\">"
       << std::put_time(&parts, "%F %T") << " UTC</time>";
  return html.str();
}

std::string addressHtml(bool present, const Resource& resource) {
  return present ? linkHtml(resource, describe(resource)) : "";
}

data sessionFacts(const Session& session) {
  Facts facts;
  facts.add("Build target", escapeText(session.build_target()));
  facts.add("Run at", timeHtml(session));
  facts.add("Session id", escapeText(session.uuid()));
  facts.add("Report file", addressHtml(session.has_report_file(), session.report_file()));
  facts.add("Proto file", addressHtml(session.has_proto_file(), session.proto_file()));
  return facts.view(kMostBytesOfHeading);
}

// As "100,000".
std::string grouped(std::size_t count) {
  std::string text = std::to_string(count);
  for (std::size_t end = text.size(); end > 3; end -= 3) {
    text.insert(end - 3, ",");
  }
  return text;
}

std::string counted(std::size_t count, const std::string& noun) {
  return grouped(count) + " " + noun + (count == 1 ? "" : "s");
}

// How many findings of a kind there are, or of a mark.
data filterView(const Level& level, std::size_t count) {
  data view;
  view["slug"] = level.slug;
  view["word"] = level.word;
  view["count"] = grouped(count);
  view["none"] = count == 0;
  return view;
}

data kindViews(const Findings& findings) {
  data list(data::type::list);
  for (const Level& kind : kinds()) {
    const std::size_t count = findings.ofKind[static_cast<std::size_t>(kind.rank)];
    const bool isRare = kind.rank == Violation::SEV_UNKNOWN || kind.rank == kNotChecked;
    if (count != 0 || !(isRare || (kind.rank == kFixed && !findings.isCompared))) {
      list << filterView(kind, count);
    }
  }
  return list;
}

data markViews(const Findings& findings) {
  data list(data::type::list);
  for (const Level& mark : marks()) {
    if (findings.isCompared && mark.rank != kUnmarked) {
      list << filterView(mark, findings.ofMark[static_cast<std::size_t>(mark.rank)]);
    }
  }
  return list;
}

// The rules that are violated, met, or not fully checked.
struct Rules {
  explicit Rules(const Findings& findings) {
    for (const Finding& finding : findings.list) {
      if (finding.kind <= kNotChecked || finding.kind == kMet) {
        auto& rules = finding.kind == kMet          ? met
                      : finding.kind == kNotChecked ? unchecked
                                                    : violated;
        rules.insert(finding.rule);
      }
    }
  }
  std::set<std::size_t> violated;
  std::set<std::size_t> met;
  std::set<std::size_t> unchecked;
};

void checkCount(const char* field, bool present, int stated, std::size_t listed, data* problems) {
  if (present && (stated < 0 || static_cast<std::size_t>(stated) != listed)) {
    *problems << data("The result’s " + std::string(field) + " says " + std::to_string(stated) +
                      ", but it lists " + std::to_string(listed) + ".");
  }
}

data problemsOf(const SessionResult& result) {
  data problems(data::type::list);
  checkCount("violation_count", result.has_violation_count(), result.violation_count(),
             result.violations().hashmap().size(), &problems);
  checkCount("waived_count", result.has_waived_count(), result.waived_count(),
             result.waived_violations().hashmap().size(), &problems);
  checkCount("affirmation_count", result.has_affirmation_count(), result.affirmation_count(),
             result.affirmations().hashmap().size(), &problems);
  return problems;
}

std::string uncheckedSince(const Findings& findings) {
  return findings.uncheckedSince == 0 ? ""
                                      : "; " + counted(findings.uncheckedSince, "finding") +
                                            " of the baseline not checked any more";
}

void addVerdict(const SessionResult& result, const Findings& findings, data* page) {
  const std::size_t violations = result.violations().hashmap().size();
  const Rules rules(findings);
  (*page)["verdict"] = violations == 0 ? "No violations" : counted(violations, "violation");
  (*page)["verdictDetail"] =
      counted(findings.list.size(), "finding") + " in all; " +
      counted(rules.violated.size(), "rule") + " violated, " + grouped(rules.met.size()) +
      " met, " + grouped(rules.unchecked.size()) + " not fully checked" + uncheckedSince(findings);
  (*page)["clean"] = violations == 0 && (*page)["problems"].is_empty_list();
}

}  // namespace

void addSummary(const SessionResult& result, const Findings& findings, data* page) {
  const Session& session = result.session();
  (*page)["name"] = isBlank(session.name()) ? "Unnamed session" : escapeText(session.name());
  (*page)["longName"] = isLong(session.name(), 100);
  (*page)["description"] = escapeText(session.description());
  (*page)["longDescription"] = isLong(session.description(), 200);
  (*page)["described"] = !isBlank(session.description());
  (*page)["sessionFacts"] = sessionFacts(session);
  (*page)["kinds"] = kindViews(findings);
  (*page)["marks"] = markViews(findings);
  (*page)["compared"] = findings.isCompared;
  (*page)["vacant"] = findings.list.empty();
  (*page)["problems"] = problemsOf(result);
  (*page)["flawed"] = (*page)["problems"].is_non_empty_list();
  addVerdict(result, findings, page);
}

}  // namespace rulecheck
