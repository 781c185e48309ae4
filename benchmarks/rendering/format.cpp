#include <fmt/format.h>

#include <iterator>

#include "rendering/renderers.h"
#include "rendering/words.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

template <typename List>
std::string listOf(const List& list) {
  fmt::memory_buffer out;
  const char* separator = "";
  for (const auto& element : list) {
    fmt::format_to(fmt::appender(out), "{}{}", separator, Format::toHtml(element));
    separator = ",";
  }
  return fmt::to_string(out);
}

std::string numberFirst(const Scalar& scalar) {
  if (scalar.has_int_val()) {
    return fmt::format("{}", scalar.int_val());
  }
  if (scalar.has_double_val()) {
    return fmt::format("{:f}", scalar.double_val());
  }
  return scalar.has_string_val() ? scalar.string_val() : scalar.address();
}

void appendData(fmt::memory_buffer& out, const Resource& resource) {
  const char* const separator = resource.has_media_type() && resource.has_encoding() ? ";" : "";
  fmt::format_to(fmt::appender(out), "{}{}{}", resource.media_type(), separator,
                 resource.encoding());
  if (resource.has_data()) {
    fmt::format_to(fmt::appender(out), ",{}", resource.data());
  }
}

void appendHierarchy(fmt::memory_buffer& out, const Resource& resource) {
  fmt::format_to(fmt::appender(out), "{}", resource.host());
  if (resource.has_port()) {
    fmt::format_to(fmt::appender(out), ":{}", resource.port());
  }
  const bool relative = !resource.path().empty() && resource.path().front() != '/';
  fmt::format_to(fmt::appender(out), "{}{}", relative ? "/" : "", resource.path());
  if (resource.has_query()) {
    fmt::format_to(fmt::appender(out), "?{}", resource.query());
  }
  if (resource.has_fragment()) {
    fmt::format_to(fmt::appender(out), "#{}", resource.fragment());
  }
}

}  // namespace

std::string Format::toString(Resource_Scheme scheme) {
  return fmt::format("{}", word(scheme));
}

std::string Format::toString(Reference_RefType type) {
  return fmt::format("{}", word(type));
}

std::string Format::toString(Violation_Severity severity) {
  return fmt::format("{}", word(severity));
}

std::string Format::toString(const Scalar& scalar) {
  const bool shown = scalar.has_units() && !scalar.has_address();
  const char* const separator = shown ? " " : "";
  const fmt::string_view units = shown ? fmt::string_view(scalar.units()) : fmt::string_view("");
  if (scalar.has_string_val()) {
    return fmt::format("{}{}{}", scalar.string_val(), separator, units);
  }
  if (scalar.has_int_val()) {
    return fmt::format("{}{}{}", scalar.int_val(), separator, units);
  }
  if (scalar.has_double_val()) {
    return fmt::format("{:f}{}{}", scalar.double_val(), separator, units);
  }
  return fmt::format("{}{}{}", scalar.address(), separator, units);
}

std::string Format::toString(const Reference& reference) {
  if (reference.has_name()) {
    return reference.name();
  }
  if (reference.has_id()) {
    return fmt::format("{} #{}", word(reference.type()), reference.id());
  }
  if (reference.has_uuid()) {
    return fmt::format("{} {}", word(reference.type()), reference.uuid());
  }
  return toString(reference.type());
}

std::string Format::href(const Resource& resource) {
  fmt::memory_buffer out;
  if (!resource.has_scheme()) {
    return "";
  }
  fmt::format_to(fmt::appender(out), "{}", addressPrefix(resource.scheme()));
  if (resource.scheme() == Resource::DATA) {
    appendData(out, resource);
  } else {
    appendHierarchy(out, resource);
  }
  return fmt::to_string(out);
}

std::string Format::toHtml(const Resource& resource, const std::string& text) {
  if (!resource.has_scheme()) {
    return "";
  }
  if (resource.scheme() == Resource::DATA && resource.media_type() == "text/html") {
    return resource.data();
  }
  return fmt::format("<a href=\"{}\">{}</a>", href(resource), text);
}

std::string Format::toHtml(const Link& link) {
  if (!link.has_url()) {
    return link.has_link_text() ? link.link_text() : "<empty>";
  }
  if (link.has_link_text()) {
    return toHtml(link.url(), link.link_text());
  }
  return toHtml(link.url(), link.url().has_media_type() ? link.url().media_type() : "link");
}

std::string Format::toHtml(const Reference& reference) {
  return reference.has_url() ? toHtml(reference.url(), toString(reference)) : toString(reference);
}

std::string Format::toHtml(const Arg& arg) {
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
