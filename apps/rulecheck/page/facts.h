// SPDX-License-Identifier: Apache-2.0

// Labeled values, as the page lists them.

#ifndef VOK_APPS_RULECHECK_PAGE_FACTS_H_
#define VOK_APPS_RULECHECK_PAGE_FACTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <cstdint>
#include <kainjow/mustache.hpp>
#include <map>
#include <string>
#include <vector>

namespace rulecheck {

// What is longer, or has a line break for each hundred of these bytes, gets a scroll bar.
constexpr std::size_t kMostBytes = 2000;
constexpr std::size_t kMostBytesOfHeading = 1000;
bool isLong(const std::string& html, std::size_t mostBytes = kMostBytes);

struct Fact {
  std::string label;
  std::string html;  // made of what safeCopy() has made safe
};

class Facts {
 public:
  // Adds nothing if the value is blank.
  void add(const std::string& label, const std::string& html);

  const std::vector<Fact>& list() const { return list_; }

  // What a template needs: an object with the list, or false if that is empty.
  kainjow::mustache::data view(std::size_t mostBytes = kMostBytes) const;

 private:
  std::vector<Fact> list_;
};

// The links, one after another.
std::string linksHtml(const vok::rulecheck::Links& safeLinks);

// Category values in the order of their numbers.
std::string categoriesHtml(const std::map<std::int32_t, std::string>& categories);

// An anchor to a resource as it came, or the text alone where there is nothing
// to link to. The text is as it came, too.
std::string linkHtml(const vok::rulecheck::Resource& resource, const std::string& text);

// What helps to understand a rule's findings: texts, limits, description.
Facts mainFacts(const vok::rulecheck::RuleSpec& spec);

// Everything else about it.
Facts furtherFacts(const vok::rulecheck::RuleSpec& spec);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_FACTS_H_
