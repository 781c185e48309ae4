// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/objects.h"

#include <re2/re2.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string_view>

namespace rulecheck {
namespace {

using re2::StringPiece;
using vok::rulecheck::Reference;

// The last word that says something about the name behind it decides.
Reference::RefType typeOfNameAfter(std::string_view text) {
  static const std::map<std::string, Reference::RefType> types = {
      {"cell", Reference::HIERARCHY},     {"class", Reference::DATA_TYPE},
      {"define", Reference::OTHER},       {"enum", Reference::DATA_TYPE},
      {"file", Reference::FILE},          {"filename", Reference::FILE},
      {"function", Reference::FUNCTION},  {"genvar", Reference::VARIABLE},
      {"instance", Reference::HIERARCHY}, {"interface", Reference::INTERFACE},
      {"label", Reference::OTHER},        {"module", Reference::HIERARCHY},
      {"package", Reference::OTHER},      {"parameter", Reference::OTHER},
      {"pin", Reference::PORT},           {"port", Reference::PORT},
      {"signal", Reference::VARIABLE},    {"task", Reference::FUNCTION},
      {"variable", Reference::VARIABLE},  {"varref", Reference::VARIABLE},
      {"wire", Reference::VARIABLE},
  };
  const auto isLetter = [](unsigned char c) { return std::isalpha(c) != 0; };
  for (auto rest = text.rbegin(); rest != text.rend();) {
    const auto last = std::find_if(rest, text.rend(), isLetter);
    rest = std::find_if_not(last, text.rend(), isLetter);
    std::string word(rest.base(), last.base());
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto found = types.find(word);
    if (found != types.end()) {
      return found->second;
    }
  }
  return Reference::OTHER;
}

}  // namespace

std::vector<Reference> namedObjects(const std::string& text) {
  // A name may have instances before it and an index behind it. An apostrophe between
  // letters is not a quote.
  static const RE2 quoted(R"re((\B'([A-Za-z_][^ '"`=<>(){}]*)'\B))re", RE2::Latin1);
  std::vector<Reference> objects;
  std::set<std::string> seen;
  StringPiece rest = text;
  StringPiece whole;
  const char* before = text.data();
  for (std::string name; RE2::FindAndConsume(&rest, quoted, &whole, &name);) {
    if (seen.insert(name).second) {
      Reference object;
      object.set_type(typeOfNameAfter({before, static_cast<std::size_t>(whole.data() - before)}));
      object.set_name(name);
      objects.push_back(object);
    }
    before = rest.data();
  }
  return objects;
}

}  // namespace rulecheck
