// Texts that would do harm in a page that takes them for markup.

#ifndef VOK_TESTS_APPS_HTML_REPORT_HOSTILE_RESULTS_H_
#define VOK_TESTS_APPS_HTML_REPORT_HOSTILE_RESULTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <string>
#include <vector>

namespace tests {

struct HostileText {
  std::string name;
  std::string text;
};

const std::vector<HostileText>& hostileTexts();

// A text, and what resources are like whose other parts hold it.
struct HostileCase {
  std::string name;
  std::string text;
  vok::rulecheck::Resource rest;
};

// Every text in web addresses and in an inline page. Texts that could break out
// of an address are in resources of every scheme, and of none.
std::vector<HostileCase> hostileCases();

}  // namespace tests

#endif  // VOK_TESTS_APPS_HTML_REPORT_HOSTILE_RESULTS_H_
