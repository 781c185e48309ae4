// SPDX-License-Identifier: Apache-2.0

#include "support/rendering_model.h"

#include <algorithm>
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

#define VOK_FIELD(message, name) \
  ((message).has_##name() ? Field(written((message).name())) : Field())

std::string written(const std::string& text) {
  return text;
}

std::string written(double number) {
  std::vector<char> text(1000);
  const int length = std::snprintf(text.data(), text.size(), "%f", number);
  return {text.data(), static_cast<std::size_t>(length)};
}

std::string written(std::int64_t number) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << number;
  return out.str();
}

std::string written(std::int32_t number) {
  return written(std::int64_t{number});
}

Field firstOf(std::initializer_list<Field> fields) {
  const auto* const found = std::find_if(fields.begin(), fields.end(),
                                         [](const Field& field) { return field.has_value(); });
  return found == fields.end() ? Field() : *found;
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
  return field ? Field(introduction + *field) : Field();
}

std::string wordAt(int number, const std::vector<std::string>& words, const std::string& other) {
  return number < 0 || static_cast<std::size_t>(number) >= words.size()
             ? other
             : words[static_cast<std::size_t>(number)];
}

std::string inlineData(const Resource& resource) {
  const bool isSeparated = resource.has_media_type() && resource.has_encoding();
  return joined({"data:", VOK_FIELD(resource, media_type), isSeparated ? ";" : "",
                 VOK_FIELD(resource, encoding), after(",", VOK_FIELD(resource, data))});
}

std::string hierarchy(const Resource& resource) {
  const std::string& path = resource.path();
  return joined({wordAt(resource.scheme(), {"", "file://", "", "http://", "https://"}, ""),
                 VOK_FIELD(resource, host), after(":", VOK_FIELD(resource, port)),
                 path.empty() || path[0] == '/' ? path : "/" + path,
                 after("?", VOK_FIELD(resource, query)),
                 after("#", VOK_FIELD(resource, fragment))});
}

template <typename List>
std::string list(const List& elements) {
  std::ostringstream out;
  for (int i = 0; i < elements.size(); ++i) {
    out << (i == 0 ? "" : ",") << html(elements.Get(i));
  }
  return out.str();
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
  return joined({firstOf({VOK_FIELD(scalar, string_val), VOK_FIELD(scalar, int_val),
                          VOK_FIELD(scalar, double_val), VOK_FIELD(scalar, address)}),
                 scalar.has_address() ? "" : after(" ", VOK_FIELD(scalar, units))});
}

std::string text(const Reference& reference) {
  const std::string kind = wordOfKind(reference.has_type() ? reference.type() : 0);
  return *firstOf({VOK_FIELD(reference, name), after(kind + " #", VOK_FIELD(reference, id)),
                   after(kind + " ", VOK_FIELD(reference, uuid)), kind});
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
  if (resource.scheme() == 0 && VOK_FIELD(resource, media_type) == "text/html") {
    return VOK_FIELD(resource, data).value_or("");
  }
  return joined({"<a href=\"", address(resource), "\">", anchorText, "</a>"});
}

std::string html(const Link& link) {
  const Field shown = VOK_FIELD(link, link_text);
  return link.has_url()
             ? html(link.url(), *firstOf({shown, VOK_FIELD(link.url(), media_type), "link"}))
             : shown.value_or("<empty>");
}

std::string html(const Reference& reference) {
  return reference.has_url() ? html(reference.url(), text(reference)) : text(reference);
}

std::string html(const Arg& arg) {
  const Scalar& scalar = arg.scalar();
  return arg.has_ref()    ? html(arg.ref())
         : arg.has_uri()  ? html(arg.uri())
         : arg.has_refs() ? list(arg.refs().ref())
         : arg.has_uris() ? list(arg.uris().uri())
                          : firstOf({VOK_FIELD(arg, string_val), VOK_FIELD(scalar, int_val),
                                     VOK_FIELD(scalar, double_val), VOK_FIELD(scalar, string_val),
                                     VOK_FIELD(scalar, address)})
                                .value_or("");
}

}  // namespace model
}  // namespace tests
