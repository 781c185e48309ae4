// SPDX-License-Identifier: Apache-2.0

// The result of a session as a page for people.

#ifndef VOK_APPS_RULECHECK_PAGE_PAGE_H_
#define VOK_APPS_RULECHECK_PAGE_PAGE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>

namespace rulecheck {

struct PageOptions {
  // An older result, to tell what is new and what is fixed.
  const vok::rulecheck::SessionResult* baseline = nullptr;
  // Where files are whose lines the page shows; empty to show none.
  std::filesystem::path sourceRoot;
  // Where a place leads at first: "https://host/blob/main/{path}#L{line}". Empty for the
  // address of its file.
  std::string linkTemplate;
};

// Whether a page takes the template: an address of an http or https host, or of an editor.
bool isLinkTemplate(const std::string& text);

// Returns a complete HTML page in UTF-8 that needs no other file and no network.
// Any result is accepted, incomplete ones included, and none of its texts can
// become markup, a script or a link other than http, https, file and mailto.
// Equal results, options and sources give equal pages.
std::string page(const vok::rulecheck::SessionResult& result, const PageOptions& options = {});

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PAGE_PAGE_H_
