// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/lint/verilator.h"

#include <re2/re2.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "rulecheck/place.h"

namespace rulecheck {
namespace {

using re2::StringPiece;
using vok::rulecheck::ArgList;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;
using vok::rulecheck::Scalar;
using vok::rulecheck::Violation;

namespace fs = std::filesystem;

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

// Takes "file:line:column: " off the beginning of a text. A file's name may have colons
// and blanks in it.
Place takePlace(StringPiece* text) {
  static const RE2 pattern(R"((.+?):(\d{1,9}):(\d{1,9}): )", RE2::Latin1);
  Place place;
  RE2::Consume(text, pattern, &place.file, &place.line, &place.column);
  return place;
}

Scalar scalarOf(const std::string& value, const char* units) {
  static const RE2 number(R"(\d{1,18})");
  Scalar scalar;
  if (RE2::FullMatch(value, number)) {
    scalar.set_int_val(std::stoll(value));
  } else {
    scalar.set_string_val(value);
  }
  if (*units != '\0') {
    scalar.set_units(units);
  }
  return scalar;
}

// What is between two phrases of a text, and behind them; empty if they aren't there. A regular
// expression would take as long as all else that is done with a message.
struct Cut {
  std::string_view between;
  std::string_view behind;
};

Cut cut(std::string_view text, std::string_view first, std::string_view second) {
  const std::size_t start = text.find(first);
  if (start == std::string_view::npos) {
    return {};
  }
  text.remove_prefix(start + first.size());
  const std::size_t end = text.find(second);
  return end == std::string_view::npos ? Cut{}
                                       : Cut{text.substr(0, end), text.substr(end + second.size())};
}

void addValues(const std::string& text, CreateViolation* body) {
  const auto add = [body](std::string_view threshold, std::string_view actual, const char* units) {
    if (!threshold.empty() && !actual.empty()) {
      *body->mutable_threshold_value() = scalarOf(std::string(threshold), units);
      *body->mutable_actual_value() = scalarOf(std::string(actual), units);
    }
  };
  const Cut width = cut(text, " expects ", " bit");
  add(width.between, cut(width.behind, " generates ", " bits").between, "bits");
  const Cut index = cut(text, " requires ", " bit index, not ");
  add(index.between, cut(index.behind, "", " bits").between, "bits");
  const Cut range = cut(text, "Selection index out of range: ", " outside ");
  add(range.behind, range.between, "");
}

// A message, while its lines are read.
struct Message {
  CreateViolation body;
  Place place;
  std::string text;
  std::string instance;
  std::vector<Link> links;
  std::vector<std::string> advice;
};

// Nothing, one element itself, or a list.
template <typename Element, typename List>
void addAll(const std::vector<Element>& elements, Element* (vok::rulecheck::Arg::*one)(),
            List* (vok::rulecheck::Arg::*many)(), Element* (List::*add)(), ArgList* args) {
  if (elements.size() == 1) {
    *(args->add_arg()->*one)() = elements.front();
  } else if (!elements.empty()) {
    List* list = (args->add_arg()->*many)();
    for (const Element& element : elements) {
      *(list->*add)() = element;
    }
  }
}

CreateViolation violationOf(Message message, const fs::path& directory) {
  using vok::rulecheck::Arg;
  CreateViolation body = std::move(message.body);
  ArgList* args = body.mutable_args();
  if (message.place.file.empty()) {
    args->add_arg()->set_string_val("design");
  } else {
    *args->add_arg()->mutable_ref() = referenceTo(message.place, directory);
  }
  args->add_arg()->set_string_val(message.text);
  addAll(namedObjects(message.text), &Arg::mutable_ref, &Arg::mutable_refs,
         &vok::rulecheck::RefList::add_ref, args);
  if (!message.instance.empty()) {
    Reference* instance = args->add_arg()->mutable_ref();
    instance->set_type(Reference::HIERARCHY);
    instance->set_name(message.instance);
  }
  addAll(message.links, &Arg::mutable_uri, &Arg::mutable_uris, &vok::rulecheck::Links::add_uri,
         args);
  for (const std::string& text : message.advice) {
    args->add_arg()->set_string_val(text);
  }
  addValues(message.text, &body);
  return body;
}

class Reader {
 public:
  explicit Reader(fs::path directory) : directory_(std::move(directory)) {}

  void read(const std::string& line) {
    static const RE2 header(R"(%(Warning|Error)(?:-([^ :]+))?: )", RE2::Latin1);
    StringPiece rest = line;
    std::string kind;
    std::string code;
    if (line[0] == '%' && RE2::Consume(&rest, header, &kind, &code)) {
      begin(kind == "Error", code, rest);
    } else if (line.compare(0, 7, "-Info: ") == 0) {
      isOpen_ = false;
    } else if (isOpen_ && !takeExcerpt(line)) {
      if (line[0] == ' ') {
        addNote(line);
      } else {
        messages_.back().text += '\n' + line;
      }
    }
  }

  std::vector<CreateViolation> takeViolations() {
    std::vector<CreateViolation> violations;
    violations.reserve(messages_.size());
    for (Message& message : messages_) {
      violations.push_back(violationOf(std::move(message), directory_));
    }
    return violations;
  }

 private:
  void begin(bool isError, const std::string& code, StringPiece rest) {
    isOpen_ = false;
    const bool isPlain = isError && code.empty();
    if (isPlain && (rest.starts_with("Exiting due to ") || rest.starts_with("Command Failed "))) {
      return;
    }
    Message message;
    if (!rest.starts_with("Internal Error")) {
      message.place = takePlace(&rest);
    }
    // Verilator gives this advice the form of an error.
    isOpen_ = true;
    if (isPlain && rest.starts_with("This may be because ") && !messages_.empty()) {
      messages_.back().advice.push_back(rest.as_string());
      return;
    }
    message.body.set_rule_key(code.empty() ? kErrorRule : code);
    if (isError) {
      message.body.set_severity(Violation::SEV_ERROR);
    }
    message.text = rest.as_string();
    messages_.push_back(std::move(message));
  }

  // Takes a line of source code, "   12 | text", or the one below that marks a place in it. The
  // first is that of the message's own place. The number has five columns, or more if it needs
  // them.
  bool takeExcerpt(const std::string& line) {
    constexpr std::size_t kLeastBar = 6;
    const std::size_t bar = line.find_first_not_of(" 0123456789");
    if (bar == std::string::npos || bar < kLeastBar || line[bar] != '|') {
      return false;
    }
    Place& place = messages_.back().place;
    if (place.source.empty() && std::atoi(line.c_str()) == place.line) {
      const std::size_t blank = line.compare(bar + 1, 1, " ") == 0 ? 1 : 0;
      place.source = line.substr(bar + 1 + blank);
    }
    return true;
  }

  // An indented line: ": ... text", "file:line:column: ... text" or "... text". Any
  // other without a place is of use to the user of a terminal only.
  void addNote(StringPiece text) {
    static const RE2 indent("(?: +(?:: +)?)");
    static const RE2 mark(R"( *\.\.\. )");
    static const RE2 instance(R"((?:note: )?In instance '?([^']+))", RE2::Latin1);
    static const RE2 manual(R"(For |Use "/\* verilator|See the manual|Looked in:|With current )");
    std::string name;
    RE2::Consume(&text, indent);
    const Place place = takePlace(&text);
    const bool isMarked = RE2::Consume(&text, mark);
    RE2::Consume(&text, indent);
    if (!place.file.empty()) {
      Link link;
      const Reference reference = referenceTo(place, directory_);
      link.set_link_text(text.as_string() + " (" + reference.name() + ")");
      *link.mutable_url() = reference.url();
      messages_.back().links.push_back(link);
    } else if (isMarked && RE2::Consume(&text, instance, &name)) {
      messages_.back().instance = name;
    } else if (isMarked && !RE2::Consume(&text, manual)) {
      messages_.back().advice.push_back(text.as_string());
    }
  }

  fs::path directory_;
  std::vector<Message> messages_;
  // Whether lines belong to the last message.
  bool isOpen_ = false;
};

}  // namespace

std::vector<CreateViolation> parseMessages(const std::string& output, const fs::path& directory) {
  Reader reader(directory);
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    reader.read(line);
  }
  return reader.takeViolations();
}

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
