// SPDX-License-Identifier: Apache-2.0

#include "lint_client/finding_arguments.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "lint_client/addresses.h"
#include "lint_client/names.h"

namespace lint_client {
namespace {

using vok::rulecheck::ArgList;
using vok::rulecheck::CreateViolation;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;
using vok::rulecheck::Scalar;

namespace fs = std::filesystem;

std::string labelOf(const Place& place) {
  return fs::path(place.file).filename().string() + ':' + std::to_string(place.line);
}

void addPlace(const Message& message, const fs::path& directory, ArgList* args) {
  if (!message.place) {
    args->add_arg()->set_string_val("design");
    return;
  }
  Reference* file = args->add_arg()->mutable_ref();
  file->set_type(Reference::FILE);
  file->set_name(labelOf(*message.place));
  *file->mutable_url() = addressOf(*message.place, directory);
}

void addObjects(const std::vector<Reference>& objects, ArgList* args) {
  if (objects.size() == 1) {
    *args->add_arg()->mutable_ref() = objects.front();
  } else if (!objects.empty()) {
    auto* list = args->add_arg()->mutable_refs();
    for (const Reference& object : objects) {
      *list->add_ref() = object;
    }
  }
}

Link linkFor(const Note& note, const fs::path& directory) {
  Link link;
  link.set_link_text(note.text + " (" + labelOf(*note.place) + ")");
  *link.mutable_url() = addressOf(*note.place, directory);
  return link;
}

void addLinks(const std::vector<Link>& links, ArgList* args) {
  if (links.size() == 1) {
    *args->add_arg()->mutable_uri() = links.front();
  } else if (!links.empty()) {
    auto* list = args->add_arg()->mutable_uris();
    for (const Link& link : links) {
      *list->add_uri() = link;
    }
  }
}

void addNotes(const std::vector<Note>& notes, const fs::path& directory, ArgList* args) {
  std::vector<Link> links;
  for (const Note& note : notes) {
    if (note.place) {
      links.push_back(linkFor(note, directory));
    }
  }
  addLinks(links, args);
  for (const Note& note : notes) {
    if (!note.place) {
      args->add_arg()->set_string_val(note.text);
    }
  }
}

// The text between two others.
std::optional<std::string> between(const std::string& text, const std::string& before,
                                   const std::string& after) {
  const std::size_t start = text.find(before);
  if (start == std::string::npos) {
    return std::nullopt;
  }
  const std::size_t end = text.find(after, start + before.size());
  if (end == std::string::npos) {
    return std::nullopt;
  }
  return text.substr(start + before.size(), end - start - before.size());
}

Scalar scalarOf(const std::string& value, const std::string& units) {
  constexpr std::size_t kMostDigits = 18;
  Scalar scalar;
  const bool isNumber = !value.empty() && value.size() <= kMostDigits &&
                        value.find_first_not_of("0123456789") == std::string::npos;
  if (isNumber) {
    scalar.set_int_val(std::stoll(value));
  } else {
    scalar.set_string_val(value);
  }
  if (!units.empty()) {
    scalar.set_units(units);
  }
  return scalar;
}

// Two values that a message compares, by the texts around them.
struct Comparison {
  std::string beforeThreshold;
  std::string afterThreshold;
  std::string beforeActual;
  std::string afterActual;
  std::string units;
};

bool addValues(const std::string& text, const Comparison& comparison, CreateViolation* body) {
  const auto threshold = between(text, comparison.beforeThreshold, comparison.afterThreshold);
  const auto actual = between(text, comparison.beforeActual, comparison.afterActual);
  if (!threshold || !actual) {
    return false;
  }
  *body->mutable_threshold_value() = scalarOf(*threshold, comparison.units);
  *body->mutable_actual_value() = scalarOf(*actual, comparison.units);
  return true;
}

}  // namespace

ArgList argumentsOf(const Message& message, const fs::path& directory) {
  ArgList args;
  addPlace(message, directory, &args);
  args.add_arg()->set_string_val(textWithoutLastName(message.text));
  addObjects(namedObjects(message.text), &args);
  if (!message.instance.empty()) {
    Reference* instance = args.add_arg()->mutable_ref();
    instance->set_type(Reference::HIERARCHY);
    instance->set_name(message.instance);
  }
  addNotes(message.notes, directory, &args);
  return args;
}

void addValues(const Message& message, CreateViolation* body) {
  static const std::vector<Comparison> comparisons = {
      {" expects ", " bit", " generates ", " bits", "bits"},
      {" requires ", " bit index", " bit index, not ", " bits", "bits"},
      {" outside ", "\n", "Selection index out of range: ", " outside ", ""},
  };
  for (const Comparison& comparison : comparisons) {
    if (addValues(message.text + '\n', comparison, body)) {
      return;
    }
  }
}

}  // namespace lint_client
