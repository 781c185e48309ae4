// SPDX-License-Identifier: Apache-2.0

// Labeled values, as the templates list them.

#ifndef VOK_APPS_RULECHECK_PAGE_FACTS_H_
#define VOK_APPS_RULECHECK_PAGE_FACTS_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <kainjow/mustache.hpp>
#include <map>
#include <string>

namespace rulecheck {

// What is longer, or has a line break for each hundred of these bytes, gets a scroll bar.
constexpr std::size_t kMostBytes = 2000;
constexpr std::size_t kMostBytesOfHeading = 1000;
bool isLong(const std::string& html, std::size_t mostBytes = kMostBytes);

// A list of facts. Values are HTML, made of what safeCopy() has made safe.
class Facts {
 public:
  explicit Facts(std::size_t mostBytes = kMostBytes) : mostBytes_(mostBytes) {}

  // Adds nothing if the value is blank.
  void add(const std::string& label, const std::string& html);

  // What a template needs: an object with the list, or false if that is empty.
  kainjow::mustache::data view() const;

 private:
  std::size_t mostBytes_;
  kainjow::mustache::data list_{kainjow::mustache::data::type::list};
};

// The links, one after another.
std::string linksHtml(const vok::rulecheck::Links& safeLinks);

// Category values in the order of their numbers.
template <typename Categories>
std::string categoriesHtml(const Categories& safeCategories) {
  std::map<int, std::string> sorted;
  for (const auto& category : safeCategories) {
    sorted[category.first] = category.second;
  }
  std::string html;
  for (const auto& category : sorted) {
    html += "<span class=\"tag\">" + std::to_string(category.first) + ": " + category.second +
            "</span> ";
  }
  return html;
}

// An anchor to a resource as it came, or the text alone where there is nothing
// to link to. The text is as it came, too.
std::string linkHtml(const vok::rulecheck::Resource& resource, const std::string& text);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_FACTS_H_
