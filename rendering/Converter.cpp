// Copyright 2026 The vok_rulecheck authors
// SPDX-License-Identifier: Apache-2.0

#include <vok/rulecheck/Converter.h>

#include <langinfo.h>

#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>

// Each kind of value has one function that appends it to a text; the public
// functions below are thin wrappers around those. A rendered value thus costs
// one growing string, however deep it is.

namespace vok::rulecheck {
namespace {

std::string_view word(Resource_Scheme scheme) {
  switch (scheme) {
    case Resource_Scheme_DATA: return "data";
    case Resource_Scheme_FILE: return "file";
    case Resource_Scheme_FTP: return "ftp";
    case Resource_Scheme_HTTP: return "http";
    case Resource_Scheme_HTTPS: return "https";
    case Resource_Scheme_IRC: return "irc";
    case Resource_Scheme_MAILTO: return "mailto";
  }
  return "unknown";
}

std::string_view word(Reference_RefType type) {
  switch (type) {
    case Reference_RefType_ARRAY: return "array";
    case Reference_RefType_AXI: return "AXI";
    case Reference_RefType_CHANNEL: return "channel";
    case Reference_RefType_CONDITION: return "condition";
    case Reference_RefType_CONSTRAINT: return "constraint";
    case Reference_RefType_CONVERSION: return "conversion";
    case Reference_RefType_CORE: return "core";
    case Reference_RefType_DATAMOVER: return "data mover";
    case Reference_RefType_DATA_TYPE: return "data type";
    case Reference_RefType_DDR_BANK: return "DDR bank";
    case Reference_RefType_FILE: return "file";
    case Reference_RefType_FUNCTION: return "function";
    case Reference_RefType_HIERARCHY: return "hierarchy";
    case Reference_RefType_INTERFACE: return "interface";
    case Reference_RefType_KERNEL: return "kernel";
    case Reference_RefType_LOOP: return "loop";
    case Reference_RefType_MEMORY: return "memory";
    case Reference_RefType_OPERATION: return "operation";
    case Reference_RefType_OPERATOR: return "operator";
    case Reference_RefType_OTHER: return "other";
    case Reference_RefType_PCIE: return "PCIE";
    case Reference_RefType_PORT: return "port";
    case Reference_RefType_PRAGMA: return "pragma";
    case Reference_RefType_PREDICATE: return "predicate";
    case Reference_RefType_READ_OP: return "READ OP";
    case Reference_RefType_REGION: return "region";
    case Reference_RefType_SYSTEM: return "system";
    case Reference_RefType_VARIABLE: return "variable";
    case Reference_RefType_WRITE_OP: return "WRITE OP";
  }
  return "<undefined>";
}

std::string_view word(Violation_Severity severity) {
  switch (severity) {
    case Violation_Severity_SEV_FATAL: return "fatal";
    case Violation_Severity_SEV_ERROR: return "error";
    case Violation_Severity_SEV_CRITICAL_WARNING: return "critical warning";
    case Violation_Severity_SEV_WARNING: return "warning";
    case Violation_Severity_SEV_ADVISORY: return "advisory";
    case Violation_Severity_SEV_UNKNOWN: break;
  }
  return "<undefined>";
}

void appendInteger(std::string& out, std::int64_t number) {
  char digits[std::numeric_limits<std::int64_t>::digits10 + 2];
  char* const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
  out.append(digits, end);
}

void appendFixedByPrintf(std::string& out, double number) {
  const int length = std::snprintf(nullptr, 0, "%f", number);
  if (length < 0) {
    throw std::bad_alloc();  // the only way in which "%f" can fail
  }
  const std::size_t start = out.size();
  const auto size = static_cast<std::size_t>(length);
  out.resize(start + size + 1);  // snprintf ends its text with a zero byte
  std::snprintf(&out[start], size + 1, "%f", number);
  out.resize(start + size);
}

// std::to_chars rounds to nearest and writes a full stop, whatever the rounding
// mode and the locale are.
bool toCharsEqualsPrintf(double number) {
  return std::isfinite(number) && std::fegetround() == FE_TONEAREST &&
         std::strcmp(nl_langinfo(RADIXCHAR), ".") == 0;
}

void appendFixed(std::string& out, double number) {
  if (!toCharsEqualsPrintf(number)) {
    appendFixedByPrintf(out, number);
    return;
  }
  char text[std::numeric_limits<double>::max_exponent10 + 16];  // sign, digits, ".", six digits
  char* const end =
      std::to_chars(std::begin(text), std::end(text), number, std::chars_format::fixed, 6).ptr;
  out.append(text, end);
}

void appendText(std::string& out, const Scalar& scalar) {
  if (scalar.has_string_val()) {
    out += scalar.string_val();
  } else if (scalar.has_int_val()) {
    appendInteger(out, scalar.int_val());
  } else if (scalar.has_double_val()) {
    appendFixed(out, scalar.double_val());
  } else if (scalar.has_address()) {
    out += scalar.address();
  }
  if (scalar.has_units() && !scalar.has_address()) {
    out += ' ';
    out += scalar.units();
  }
}

void appendText(std::string& out, const Reference& reference) {
  if (reference.has_name()) {
    out += reference.name();
    return;
  }
  out += word(reference.type());
  if (reference.has_id()) {
    out += " #";
    appendInteger(out, reference.id());
  } else if (reference.has_uuid()) {
    out += ' ';
    out += reference.uuid();
  }
}

std::string_view addressPrefix(Resource_Scheme scheme) {
  switch (scheme) {
    case Resource_Scheme_DATA: return "data:";
    case Resource_Scheme_FILE: return "file://";
    case Resource_Scheme_HTTP: return "http://";
    case Resource_Scheme_HTTPS: return "https://";
    default: return "";
  }
}

void appendInlineData(std::string& out, const Resource& resource) {
  out += resource.media_type();
  if (resource.has_media_type() && resource.has_encoding()) {
    out += ';';
  }
  out += resource.encoding();
  if (resource.has_data()) {
    out += ',';
    out += resource.data();
  }
}

void appendHierarchy(std::string& out, const Resource& resource) {
  out += resource.host();
  if (resource.has_port()) {
    out += ':';
    appendInteger(out, resource.port());
  }
  const std::string_view path = resource.path();
  if (!path.empty() && path.front() != '/') {
    out += '/';
  }
  out += path;
  if (resource.has_query()) {
    out += '?';
    out += resource.query();
  }
  if (resource.has_fragment()) {
    out += '#';
    out += resource.fragment();
  }
}

void appendAddress(std::string& out, const Resource& resource) {
  if (!resource.has_scheme()) {
    return;
  }
  out += addressPrefix(resource.scheme());
  if (resource.scheme() == Resource_Scheme_DATA) {
    appendInlineData(out, resource);
  } else {
    appendHierarchy(out, resource);
  }
}

// appendContent(out) appends what stands between the anchor's tags.
template <typename AppendContent>
void appendHtml(std::string& out, const Resource& resource, AppendContent appendContent) {
  if (!resource.has_scheme()) {
    return;
  }
  if (resource.scheme() == Resource_Scheme_DATA && resource.media_type() == "text/html") {
    out += resource.data();
    return;
  }
  out += "<a href=\"";
  appendAddress(out, resource);
  out += "\">";
  appendContent(out);
  out += "</a>";
}

std::string_view textOf(const Link& link) {
  if (link.has_link_text()) {
    return link.link_text();
  }
  if (link.url().has_media_type()) {
    return link.url().media_type();
  }
  return "link";
}

void appendHtml(std::string& out, const Link& link) {
  if (link.has_url()) {
    appendHtml(out, link.url(), [&link](std::string& content) { content += textOf(link); });
  } else if (link.has_link_text()) {
    out += link.link_text();
  } else {
    out += "<empty>";
  }
}

void appendHtml(std::string& out, const Reference& reference) {
  if (reference.has_url()) {
    appendHtml(out, reference.url(),
               [&reference](std::string& content) { appendText(content, reference); });
  } else {
    appendText(out, reference);
  }
}

template <typename List>
void appendHtmlList(std::string& out, const List& list) {
  bool first = true;
  for (const auto& element : list) {
    if (!first) {
      out += ',';
    }
    first = false;
    appendHtml(out, element);
  }
}

// Not appendText: an argument's scalar puts its number first and shows no units.
void appendHtml(std::string& out, const Scalar& scalar) {
  if (scalar.has_int_val()) {
    appendInteger(out, scalar.int_val());
  } else if (scalar.has_double_val()) {
    appendFixed(out, scalar.double_val());
  } else if (scalar.has_string_val()) {
    out += scalar.string_val();
  } else if (scalar.has_address()) {
    out += scalar.address();
  }
}

void appendHtml(std::string& out, const Arg& arg) {
  if (arg.has_ref()) {
    appendHtml(out, arg.ref());
  } else if (arg.has_uri()) {
    appendHtml(out, arg.uri());
  } else if (arg.has_refs()) {
    appendHtmlList(out, arg.refs().ref());
  } else if (arg.has_uris()) {
    appendHtmlList(out, arg.uris().uri());
  } else if (arg.has_string_val()) {
    out += arg.string_val();
  } else if (arg.has_scalar()) {
    appendHtml(out, arg.scalar());
  }
}

}  // namespace

std::string Converter::toString(Resource_Scheme scheme) {
  return std::string(word(scheme));
}

std::string Converter::toString(Reference_RefType type) {
  return std::string(word(type));
}

std::string Converter::toString(Violation_Severity severity) {
  return std::string(word(severity));
}

std::string Converter::toString(const Scalar& scalar) {
  std::string text;
  appendText(text, scalar);
  return text;
}

std::string Converter::toString(const Reference& reference) {
  std::string text;
  appendText(text, reference);
  return text;
}

std::string Converter::href(const Resource& resource) {
  std::string address;
  appendAddress(address, resource);
  return address;
}

std::string Converter::toHtml(const Resource& resource, const std::string& anchorText) {
  std::string html;
  appendHtml(html, resource, [&anchorText](std::string& content) { content += anchorText; });
  return html;
}

std::string Converter::toHtml(const Link& link) {
  std::string html;
  appendHtml(html, link);
  return html;
}

std::string Converter::toHtml(const Reference& reference) {
  std::string html;
  appendHtml(html, reference);
  return html;
}

std::string Converter::toHtml(const Arg& arg) {
  std::string html;
  appendHtml(html, arg);
  return html;
}

}  // namespace vok::rulecheck
