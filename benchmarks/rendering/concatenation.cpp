#include <cstdint>
#include <cstdio>

#include "rendering/renderers.h"
#include "rendering/words.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

std::string number(std::int64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "%lld", static_cast<long long>(value));
  return text;
}

std::string number(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%f", value);
  return text;
}

template <typename List>
std::string listOf(const List& list) {
  std::string text;
  const char* separator = "";
  for (const auto& element : list) {
    text += separator + Concatenation::toHtml(element);
    separator = ",";
  }
  return text;
}

std::string numberFirst(const Scalar& scalar) {
  if (scalar.has_int_val()) {
    return number(scalar.int_val());
  }
  if (scalar.has_double_val()) {
    return number(scalar.double_val());
  }
  return scalar.has_string_val() ? scalar.string_val() : scalar.address();
}

std::string valueOf(const Scalar& scalar) {
  if (scalar.has_string_val()) {
    return scalar.string_val();
  }
  if (scalar.has_int_val()) {
    return number(scalar.int_val());
  }
  return scalar.has_double_val() ? number(scalar.double_val()) : scalar.address();
}

}  // namespace

std::string Concatenation::toString(Resource_Scheme scheme) {
  return word(scheme);
}

std::string Concatenation::toString(Reference_RefType type) {
  return word(type);
}

std::string Concatenation::toString(Violation_Severity severity) {
  return word(severity);
}

std::string Concatenation::toString(const Scalar& scalar) {
  if (scalar.has_units() && !scalar.has_address()) {
    return valueOf(scalar) + " " + scalar.units();
  }
  return valueOf(scalar);
}

std::string Concatenation::toString(const Reference& reference) {
  if (reference.has_name()) {
    return reference.name();
  }
  if (reference.has_id()) {
    return toString(reference.type()) + " #" + number(std::int64_t{reference.id()});
  }
  if (reference.has_uuid()) {
    return toString(reference.type()) + " " + reference.uuid();
  }
  return toString(reference.type());
}

std::string Concatenation::href(const Resource& resource) {
  if (!resource.has_scheme()) {
    return "";
  }
  std::string address = addressPrefix(resource.scheme());
  if (resource.scheme() == Resource::DATA) {
    address += resource.media_type();
    if (resource.has_media_type() && resource.has_encoding()) {
      address += ";";
    }
    address += resource.encoding();
    if (resource.has_data()) {
      address += "," + resource.data();
    }
    return address;
  }
  address += resource.host();
  if (resource.has_port()) {
    address += ":" + number(std::int64_t{resource.port()});
  }
  if (!resource.path().empty() && resource.path().front() != '/') {
    address += "/";
  }
  address += resource.path();
  if (resource.has_query()) {
    address += "?" + resource.query();
  }
  if (resource.has_fragment()) {
    address += "#" + resource.fragment();
  }
  return address;
}

std::string Concatenation::toHtml(const Resource& resource, const std::string& text) {
  if (!resource.has_scheme()) {
    return "";
  }
  if (resource.scheme() == Resource::DATA && resource.media_type() == "text/html") {
    return resource.data();
  }
  return "<a href=\"" + href(resource) + "\">" + text + "</a>";
}

std::string Concatenation::toHtml(const Link& link) {
  if (!link.has_url()) {
    return link.has_link_text() ? link.link_text() : "<empty>";
  }
  if (link.has_link_text()) {
    return toHtml(link.url(), link.link_text());
  }
  return toHtml(link.url(), link.url().has_media_type() ? link.url().media_type() : "link");
}

std::string Concatenation::toHtml(const Reference& reference) {
  return reference.has_url() ? toHtml(reference.url(), toString(reference)) : toString(reference);
}

std::string Concatenation::toHtml(const Arg& arg) {
  if (arg.has_ref()) {
    return toHtml(arg.ref());
  }
  if (arg.has_uri()) {
    return toHtml(arg.uri());
  }
  if (arg.has_refs()) {
    return listOf(arg.refs().ref());
  }
  if (arg.has_uris()) {
    return listOf(arg.uris().uri());
  }
  return arg.has_string_val() ? arg.string_val() : numberFirst(arg.scalar());
}

}  // namespace benchmarks
