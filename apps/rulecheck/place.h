// SPDX-License-Identifier: Apache-2.0

// Where a finding is: a reference to a file among the arguments of its message.

#ifndef VOK_APPS_RULECHECK_PLACE_H_
#define VOK_APPS_RULECHECK_PLACE_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <filesystem>
#include <string>

namespace rulecheck {

// A line or column of 0 is not known.
struct Place {
  std::string file;
  int line = 0;
  int column = 0;
  // The text of the line; empty if it is not known.
  std::string source = {};
};

// "rtl/a.v:12:3". Parts that are not known are left out.
std::string textOf(const Place& place);

// A reference of that text, to the address of the file. The fragment says line and
// column: "L12C3". A relative file is taken as one in the directory, and a file below the
// directory is named relative to it. The text of the line is the reference's value.
vok::rulecheck::Reference referenceTo(const Place& place, const std::filesystem::path& directory);

// The place that a reference or a link names. Its file is the name without line and
// column, or else the path of the address; line and column are those of the fragment, or
// else those of the name.
Place placeOf(const vok::rulecheck::Reference& reference);

// The number of the first argument that refers to a file, from 0 on; -1 if none does.
int placeArgument(const vok::rulecheck::ArgList& arguments);

// The place that this argument names; an empty one if there is none.
Place placeOf(const vok::rulecheck::ArgList& arguments);

}  // namespace rulecheck

#endif  // VOK_APPS_RULECHECK_PLACE_H_
