// SPDX-License-Identifier: Apache-2.0

#include "support/rendering_model.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <locale>
#include <optional>
#include <sstream>
#include <vector>

namespace tests {
namespace model {
namespace {

using namespace vok::rulecheck;
using Field = std::optional<std::string>;

std::string printed(double number) {
  std::vector<char> text(1000);
  const int length = std::snprintf(text.data(), text.size(), "%f", number);
  return {text.data(), static_cast<std::size_t>(length)};
}

std::string digits(std::int64_t number) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << number;
  return out.str();
}

Field onlyIf(bool isSet, const std::string& text) {
  return isSet ? Field(text) : Field();
}

Field firstOf(std::initializer_list<Field> fields) {
  for (const Field& field : fields) {
    if (field) {
      return field;
    }
  }
  return {};
}

// Writes the pieces that are set.
std::string joined(std::initializer_list<Field> pieces) {
  std::ostringstream out;
  for (const Field& piece : pieces) {
    out << piece.value_or("");
  }
  return out.str();
}

// The field behind what introduces it.
Field after(const std::string& introduction, const Field& field) {
  return onlyIf(field.has_value(), introduction + field.value_or(""));
}

std::string wordAt(int number, const std::vector<std::string>& words, const std::string& other) {
  return number < 0 || static_cast<std::size_t>(number) >= words.size()
             ? other
             : words[static_cast<std::size_t>(number)];
}

struct Fields {
  explicit Fields(const Scalar& scalar)
      : integer(onlyIf(scalar.has_int_val(), digits(scalar.int_val()))),
        real(onlyIf(scalar.has_double_val(), printed(scalar.double_val()))),
        string(onlyIf(scalar.has_string_val(), scalar.string_val())),
        address(onlyIf(scalar.has_address(), scalar.address())) {}
  Field integer;
  Field real;
  Field string;
  Field address;
};

std::string inlineData(const Resource& resource) {
  const bool isSeparated = resource.has_media_type() && resource.has_encoding();
  return joined({"data:", onlyIf(resource.has_media_type(), resource.media_type()),
                 onlyIf(isSeparated, ";"), onlyIf(resource.has_encoding(), resource.encoding()),
                 after(",", onlyIf(resource.has_data(), resource.data()))});
}

std::string rooted(const std::string& path) {
  return path.empty() || path[0] == '/' ? path : "/" + path;
}

std::string hierarchy(const Resource& resource) {
  return joined({wordAt(resource.scheme(), {"", "file://", "", "http://", "https://"}, ""),
                 onlyIf(resource.has_host(), resource.host()),
                 after(":", onlyIf(resource.has_port(), digits(resource.port()))),
                 onlyIf(resource.has_path(), rooted(resource.path())),
                 after("?", onlyIf(resource.has_query(), resource.query())),
                 after("#", onlyIf(resource.has_fragment(), resource.fragment()))});
}

template <typename List>
std::string list(const List& elements) {
  std::ostringstream out;
  for (int i = 0; i < elements.size(); ++i) {
    out << (i == 0 ? "" : ",") << html(elements.Get(i));
  }
  return out.str();
}

std::string number(const Scalar& scalar) {
  const Fields fields(scalar);
  return firstOf({fields.integer, fields.real, fields.string, fields.address}).value_or("");
}

}  // namespace

std::string wordOfScheme(int number) {
  return wordAt(number, {"data", "file", "ftp", "http", "https", "irc", "mailto"}, "unknown");
}

std::string wordOfKind(int number) {
  return wordAt(number,
                {"array",     "AXI",        "channel",   "condition", "constraint", "conversion",
                 "core",      "data mover", "data type", "DDR bank",  "file",       "function",
                 "hierarchy", "interface",  "kernel",    "loop",      "memory",     "operation",
                 "operator",  "other",      "PCIE",      "port",      "pragma",     "predicate",
                 "READ OP",   "region",     "system",    "variable",  "WRITE OP"},
                "<undefined>");
}

std::string wordOfSeverity(int number) {
  return wordAt(number, {"fatal", "error", "critical warning", "warning", "advisory"},
                "<undefined>");
}

std::string text(const Scalar& scalar) {
  const Fields fields(scalar);
  const Field units = onlyIf(scalar.has_units() && !fields.address, scalar.units());
  return joined(
      {firstOf({fields.string, fields.integer, fields.real, fields.address}), after(" ", units)});
}

std::string text(const Reference& reference) {
  const Field name = onlyIf(reference.has_name(), reference.name());
  const Field id = onlyIf(reference.has_id(), digits(reference.id()));
  const Field uuid = onlyIf(reference.has_uuid(), reference.uuid());
  const std::string kind = wordOfKind(reference.has_type() ? reference.type() : 0);
  return firstOf({name, after(kind + " #", id), after(kind + " ", uuid), kind}).value();
}

std::string address(const Resource& resource) {
  if (!resource.has_scheme()) {
    return "";
  }
  return resource.scheme() == 0 ? inlineData(resource) : hierarchy(resource);
}

std::string html(const Resource& resource, const std::string& anchorText) {
  if (!resource.has_scheme()) {
    return "";
  }
  if (resource.scheme() == 0 && resource.has_media_type() && resource.media_type() == "text/html") {
    return resource.has_data() ? resource.data() : "";
  }
  return joined({"<a href=\"", address(resource), "\">", anchorText, "</a>"});
}

std::string html(const Link& link) {
  const Field shown = onlyIf(link.has_link_text(), link.link_text());
  if (!link.has_url()) {
    return shown.value_or("<empty>");
  }
  const Field media = onlyIf(link.url().has_media_type(), link.url().media_type());
  return html(link.url(), firstOf({shown, media, "link"}).value());
}

std::string html(const Reference& reference) {
  return reference.has_url() ? html(reference.url(), text(reference)) : text(reference);
}

std::string html(const Arg& arg) {
  return firstOf({onlyIf(arg.has_ref(), html(arg.ref())), onlyIf(arg.has_uri(), html(arg.uri())),
                  onlyIf(arg.has_refs(), list(arg.refs().ref())),
                  onlyIf(arg.has_uris(), list(arg.uris().uri())),
                  onlyIf(arg.has_string_val(), arg.string_val()),
                  onlyIf(arg.has_scalar(), number(arg.scalar()))})
      .value_or("");
}

}  // namespace model
}  // namespace tests
