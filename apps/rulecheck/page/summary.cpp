// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/summary.h"

#include <cstddef>
#include <ctime>
#include <map>
#include <set>
#include <vector>

#include "rulecheck/not_checked.h"
#include "rulecheck/page/facts.h"
#include "rulecheck/page/safe_link.h"
#include "rulecheck/page/safe_text.h"
#include "rulecheck/severity.h"

namespace rulecheck {
namespace {

using kainjow::mustache::data;
using vok::rulecheck::Resource;
using vok::rulecheck::Session;
using vok::rulecheck::SessionResult;
using vok::rulecheck::Violation;

std::string timeHtml(const Session& session) {
  if (!session.has_timestamp()) {
    return "";
  }
  const std::string time = utcTime(session.timestamp());
  if (time.empty()) {
    return "timestamp " + std::to_string(session.timestamp());
  }
  std::string machineTime = time + "Z";
  machineTime[time.find(' ')] = 'T';
  return "<time datetime=\"" + machineTime + "\">" + time + " UTC</time>";
}

std::string addressHtml(bool present, const Resource& resource) {
  return present ? linkHtml(resource, describe(resource)) : "";
}

data sessionFacts(const Session& session) {
  Facts facts(kMostBytesOfHeading);
  facts.add("Build target", escapeText(session.build_target()));
  facts.add("Run at", timeHtml(session));
  facts.add("Session id", escapeText(session.uuid()));
  facts.add("Report file", addressHtml(session.has_report_file(), session.report_file()));
  facts.add("Proto file", addressHtml(session.has_proto_file(), session.proto_file()));
  return facts.view();
}

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

struct Counts {
  std::size_t violations;
  std::size_t waived;
  std::size_t affirmed;
  // Places that keep rules from being checked, and those rules.
  std::size_t unchecked = 0;
  std::set<std::string> uncheckedRules = {};
};

Counts countsOf(const SessionResult& result) {
  Counts counts{result.violations().hashmap().size(), result.waived_violations().hashmap().size(),
                result.affirmations().hashmap().size()};
  for (const auto& entry : result.waived_violations().hashmap()) {
    if (isNotChecked(entry.second)) {
      ++counts.unchecked;
      counts.uncheckedRules.insert(entry.second.rule_key());
    }
  }
  return counts;
}

std::size_t violatedRules(const SessionResult& result) {
  std::set<std::string> keys;
  for (const auto& entry : result.violations().hashmap()) {
    keys.insert(entry.second.rule_key());
  }
  return keys.size();
}

// A kind of finding that the page counts and that its filter knows.
data kindView(const std::string& slug, const std::string& word, std::size_t count) {
  data view;
  view["slug"] = slug;
  view["word"] = word;
  view["count"] = std::to_string(count);
  view["none"] = count == 0;
  return view;
}

data kinds(const SessionResult& result, const Counts& counts) {
  std::map<int, std::size_t> byRank;
  for (const auto& entry : result.violations().hashmap()) {
    ++byRank[levelOf(entry.second).rank];
  }
  data list(data::type::list);
  for (const Level& level : violationLevels()) {
    if (level.rank != Violation::SEV_UNKNOWN || byRank[level.rank] != 0) {
      list << kindView(level.slug, level.word, byRank[level.rank]);
    }
  }
  if (counts.unchecked != 0) {
    list << kindView("not-checked", "not checked", counts.unchecked);
  }
  list << kindView("waived", "waived", counts.waived - counts.unchecked);
  list << kindView("affirmed", "affirmed", counts.affirmed);
  return list;
}

void checkCount(const char* field, bool present, int stated, std::size_t listed, data* problems) {
  if (present && (stated < 0 || static_cast<std::size_t>(stated) != listed)) {
    *problems << data("The result’s " + std::string(field) + " says " + std::to_string(stated) +
                      ", but it lists " + std::to_string(listed) + ".");
  }
}

data problemsOf(const SessionResult& result, const Counts& counts) {
  data problems(data::type::list);
  checkCount("violation_count", result.has_violation_count(), result.violation_count(),
             counts.violations, &problems);
  checkCount("waived_count", result.has_waived_count(), result.waived_count(), counts.waived,
             &problems);
  checkCount("affirmation_count", result.has_affirmation_count(), result.affirmation_count(),
             counts.affirmed, &problems);
  return problems;
}

void addVerdict(const SessionResult& result, const Counts& counts, data* page) {
  const bool clean = counts.violations == 0;
  std::string detail = clean ? "" : "of " + counted(violatedRules(result), "rule") + ", ";
  detail += std::to_string(counts.waived - counts.unchecked) + " waived, " +
            std::to_string(counts.affirmed) + " affirmed";
  if (counts.unchecked != 0) {
    detail += ", " + counted(counts.uncheckedRules.size(), "rule") + " not checked everywhere";
  }
  (*page)["verdict"] = clean ? "No violations" : counted(counts.violations, "violation");
  (*page)["verdictDetail"] = detail;
  (*page)["clean"] = clean && (*page)["problems"].is_empty_list();
}

}  // namespace

std::string utcTime(std::int64_t milliseconds) {
  constexpr std::int64_t year1 = -62135596800;
  constexpr std::int64_t year10000 = 253402300800;
  std::int64_t seconds = milliseconds / 1000;
  seconds -= milliseconds % 1000 < 0 ? 1 : 0;
  if (seconds < year1 || seconds >= year10000) {
    return "";
  }
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts = {};
  gmtime_r(&time, &parts);
  char text[sizeof("9999-12-31 23:59:59")];
  const std::size_t length = std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts);
  const std::string unpadded(text, length);
  return std::string(sizeof(text) - 1 - length, '0') + unpadded;  // the year has four digits
}

void addSummary(const SessionResult& result, data* page) {
  const Session& session = result.session();
  const Counts counts = countsOf(result);
  (*page)["name"] = isBlank(session.name()) ? "Unnamed session" : escapeText(session.name());
  (*page)["longName"] = isLong(session.name(), 100);
  (*page)["description"] = escapeText(session.description());
  (*page)["longDescription"] = isLong(session.description(), 200);
  (*page)["described"] = !isBlank(session.description());
  (*page)["sessionFacts"] = sessionFacts(session);
  (*page)["kinds"] = kinds(result, counts);
  (*page)["vacant"] = counts.violations + counts.waived + counts.affirmed == 0;
  (*page)["problems"] = problemsOf(result, counts);
  (*page)["flawed"] = (*page)["problems"].is_non_empty_list();
  addVerdict(result, counts, page);
}

}  // namespace rulecheck
