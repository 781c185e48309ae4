// SPDX-License-Identifier: Apache-2.0

#include "lint_client/names.h"

#include <cctype>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string_view>

namespace lint_client {
namespace {

using vok::rulecheck::Reference;

bool isLetter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// A name of Verilog's, with the instances that lead to it and an index.
bool isName(std::string_view text) {
  return !text.empty() && (isLetter(text[0]) || text[0] == '_') &&
         text.find_first_of(" '\"`=<>(){}") == std::string_view::npos;
}

// What a word says about the name behind it.
std::optional<Reference::RefType> typeAfter(const std::string& word) {
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
  const auto found = types.find(word);
  return found == types.end() ? std::nullopt : std::optional<Reference::RefType>(found->second);
}

// The last word that says something decides.
Reference::RefType typeOfNameAfter(std::string_view text) {
  Reference::RefType type = Reference::OTHER;
  std::string word;
  for (const char c : text) {
    if (isLetter(c)) {
      word += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      continue;
    }
    type = typeAfter(word).value_or(type);
    word.clear();
  }
  return typeAfter(word).value_or(type);
}

// Where the next name in quotes begins and ends, quotes included. An apostrophe
// between letters is not a quote.
struct Quoted {
  std::size_t begin;
  std::size_t end;
};

std::optional<Quoted> nextQuoted(const std::string& text, std::size_t from) {
  const auto opens = [&text](std::size_t at) { return at == 0 || !isWordCharacter(text[at - 1]); };
  const auto closes = [&text](std::size_t at) {
    return at + 1 == text.size() || !isWordCharacter(text[at + 1]);
  };
  std::size_t begin = text.find('\'', from);
  while (begin != std::string::npos && !opens(begin)) {
    begin = text.find('\'', begin + 1);
  }
  std::size_t end = begin == std::string::npos ? begin : text.find('\'', begin + 1);
  while (end != std::string::npos && !closes(end)) {
    end = text.find('\'', end + 1);
  }
  return end == std::string::npos ? std::nullopt : std::optional<Quoted>({begin, end + 1});
}

}  // namespace

std::vector<Reference> namedObjects(const std::string& text) {
  std::vector<Reference> objects;
  std::set<std::string> seen;
  for (auto quoted = nextQuoted(text, 0); quoted; quoted = nextQuoted(text, quoted->end)) {
    const std::string name = text.substr(quoted->begin + 1, quoted->end - quoted->begin - 2);
    if (!isName(name) || !seen.insert(name).second) {
      continue;
    }
    Reference object;
    object.set_type(typeOfNameAfter(std::string_view(text).substr(0, quoted->begin)));
    object.set_name(name);
    objects.push_back(object);
  }
  return objects;
}

std::string textWithoutLastName(const std::string& text) {
  const std::size_t end = text.rfind(": '");
  const bool endsWithName = end != std::string::npos && text.back() == '\'' &&
                            isName(std::string_view(text).substr(end + 3, text.size() - end - 4));
  return endsWithName ? text.substr(0, end) : text;
}

}  // namespace lint_client
