// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/objects.h"

#include <re2/re2.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

namespace rulecheck {
namespace {

using re2::StringPiece;
using vok::rulecheck::Reference;

// The last word that says something about the name behind it decides.
Reference::RefType typeOfNameAfter(StringPiece text) {
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
  static const RE2 nextWord("([A-Za-z]+)", RE2::Latin1);
  Reference::RefType type = Reference::OTHER;
  for (std::string word; RE2::FindAndConsume(&text, nextWord, &word);) {
    std::transform(word.begin(), word.end(), word.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto found = types.find(word);
    type = found == types.end() ? type : found->second;
  }
  return type;
}

}  // namespace

std::vector<Reference> namedObjects(const std::string& text) {
  // A name may have instances before it and an index behind it. An apostrophe between
  // letters is not a quote.
  static const RE2 quoted(R"re((?s)(.*?)\B'([A-Za-z_][^ '"`=<>(){}]*)'\B)re", RE2::Latin1);
  std::vector<Reference> objects;
  std::set<std::string> seen;
  StringPiece rest = text;
  StringPiece before;
  for (std::string name; RE2::Consume(&rest, quoted, &before, &name);) {
    if (seen.insert(name).second) {
      Reference object;
      object.set_type(typeOfNameAfter(before));
      object.set_name(name);
      objects.push_back(object);
    }
  }
  return objects;
}

}  // namespace rulecheck
