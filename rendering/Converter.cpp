// Copyright 2026 The vok_rulecheck authors
// SPDX-License-Identifier: Apache-2.0

#include <vok/rulecheck/Converter.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "numbers.h"

// Each kind of value has one function that appends its pieces to an output. It
// runs twice: on a Length, which adds the pieces up, and then on a Writer, which
// copies them to a string of that length. So a text costs one allocation, however
// deep the value is, and none if it fits into the string object.

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

std::size_t digits(std::uint32_t number) {
  std::size_t count = 1;
  for (; number >= 10; number /= 10) {
    ++count;
  }
  return count;
}

class Length {
 public:
  void add(std::string_view piece) { length_ += piece.size(); }

  void add(std::int32_t number) {
    const auto magnitude = static_cast<std::uint32_t>(number);
    length_ += number < 0 ? 1 + digits(0 - magnitude) : digits(magnitude);
  }

  std::size_t get() const { return length_; }

 private:
  std::size_t length_ = 0;
};

// Copies a piece of n to 2 * n bytes. Both ends are read before any is written:
// the compiler cannot know that source and target do not overlap.
template <std::size_t n>
inline void copyEnds(char* to, std::string_view piece) {
  const std::size_t last = piece.size() - n;
  char first_bytes[n];
  char last_bytes[n];
  std::memcpy(first_bytes, piece.data(), n);
  std::memcpy(last_bytes, piece.data() + last, n);
  std::memcpy(to, first_bytes, n);
  std::memcpy(to + last, last_bytes, n);
}

// Most pieces are so short that a call of memcpy would take longer than the copy.
inline void copy(char* to, std::string_view piece) {
  if (piece.size() > 32) {
    std::memcpy(to, piece.data(), piece.size());
  } else if (piece.size() >= 16) {
    copyEnds<16>(to, piece);
  } else if (piece.size() >= 8) {
    copyEnds<8>(to, piece);
  } else if (piece.size() >= 4) {
    copyEnds<4>(to, piece);
  } else if (piece.size() >= 2) {
    copyEnds<2>(to, piece);
  } else if (piece.size() == 1) {
    *to = piece.front();
  }
}

class Writer {
 public:
  Writer(char* start, char* end) : next_(start), end_(end) {}

  void add(std::string_view piece) {
    copy(next_, piece);
    next_ += piece.size();
  }

  void add(std::int32_t number) { next_ = std::to_chars(next_, end_, number).ptr; }

 private:
  char* next_;
  char* end_;
};

// Returns what append(output) appends.
template <typename Append>
std::string render(Append append) {
  Length length;
  append(length);
  const auto write = [&](char* start, std::size_t) {
    Writer writer(start, start + length.get());
    append(writer);
    return length.get();
  };
  std::string text;
#ifdef __cpp_lib_string_resize_and_overwrite  // saves filling the text with zeros
  text.resize_and_overwrite(length.get(), write);
#else
  text.resize(length.get());
  write(text.data(), length.get());
#endif
  return text;
}

// The text of a number is in the buffer.
std::string_view plainValue(const Scalar& scalar, numbers::Buffer& buffer) {
  if (scalar.has_string_val()) {
    return scalar.string_val();
  }
  if (scalar.has_int_val()) {
    return numbers::decimal(scalar.int_val(), buffer);
  }
  if (scalar.has_double_val()) {
    return numbers::fixed(scalar.double_val(), buffer);
  }
  return scalar.address();
}

// Unlike plainValue, prefers numbers to strings.
std::string_view argumentValue(const Scalar& scalar, numbers::Buffer& buffer) {
  if (scalar.has_int_val()) {
    return numbers::decimal(scalar.int_val(), buffer);
  }
  if (scalar.has_double_val()) {
    return numbers::fixed(scalar.double_val(), buffer);
  }
  if (scalar.has_string_val()) {
    return scalar.string_val();
  }
  return scalar.address();
}

template <typename Output>
void appendText(Output& out, const Reference& reference) {
  if (reference.has_name()) {
    out.add(reference.name());
    return;
  }
  out.add(word(reference.type()));
  if (reference.has_id()) {
    out.add(" #");
    out.add(reference.id());
  } else if (reference.has_uuid()) {
    out.add(" ");
    out.add(reference.uuid());
  }
}

template <typename Output>
void appendPrefix(Output& out, Resource_Scheme scheme) {
  switch (scheme) {
    case Resource_Scheme_DATA: out.add("data:"); break;
    case Resource_Scheme_FILE: out.add("file://"); break;
    case Resource_Scheme_HTTP: out.add("http://"); break;
    case Resource_Scheme_HTTPS: out.add("https://"); break;
    default: break;
  }
}

template <typename Output>
void appendInlineData(Output& out, const Resource& resource) {
  out.add(resource.media_type());
  if (resource.has_media_type() && resource.has_encoding()) {
    out.add(";");
  }
  out.add(resource.encoding());
  if (resource.has_data()) {
    out.add(",");
    out.add(resource.data());
  }
}

template <typename Output>
void appendHierarchy(Output& out, const Resource& resource) {
  if (resource.has_host()) {
    out.add(resource.host());
  }
  if (resource.has_port()) {
    out.add(":");
    out.add(resource.port());
  }
  const std::string_view path = resource.path();
  if (!path.empty()) {
    if (path.front() != '/') {
      out.add("/");
    }
    out.add(path);
  }
  if (resource.has_query()) {
    out.add("?");
    out.add(resource.query());
  }
  if (resource.has_fragment()) {
    out.add("#");
    out.add(resource.fragment());
  }
}

template <typename Output>
void appendAddress(Output& out, const Resource& resource) {
  if (!resource.has_scheme()) {
    return;
  }
  appendPrefix(out, resource.scheme());
  if (resource.scheme() == Resource_Scheme_DATA) {
    appendInlineData(out, resource);
  } else {
    appendHierarchy(out, resource);
  }
}

// appendContent() appends the content of the anchor.
template <typename Output, typename AppendContent>
void appendHtml(Output& out, const Resource& resource, AppendContent appendContent) {
  if (!resource.has_scheme()) {
    return;
  }
  if (resource.scheme() == Resource_Scheme_DATA && resource.media_type() == "text/html") {
    out.add(resource.data());
    return;
  }
  out.add("<a href=\"");
  appendAddress(out, resource);
  out.add("\">");
  appendContent();
  out.add("</a>");
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

template <typename Output>
void appendHtml(Output& out, const Link& link) {
  if (link.has_url()) {
    appendHtml(out, link.url(), [&] { out.add(textOf(link)); });
  } else if (link.has_link_text()) {
    out.add(link.link_text());
  } else {
    out.add("<empty>");
  }
}

template <typename Output>
void appendHtml(Output& out, const Reference& reference) {
  if (reference.has_url()) {
    appendHtml(out, reference.url(), [&] { appendText(out, reference); });
  } else {
    appendText(out, reference);
  }
}

template <typename List>
std::string joinedHtml(const List& list) {
  return render([&](auto& out) {
    bool first = true;
    for (const auto& element : list) {
      if (!first) {
        out.add(",");
      }
      first = false;
      appendHtml(out, element);
    }
  });
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
  numbers::Buffer buffer;
  const std::string_view value = plainValue(scalar, buffer);
  return render([&](auto& out) {
    out.add(value);
    if (scalar.has_units() && !scalar.has_address()) {
      out.add(" ");
      out.add(scalar.units());
    }
  });
}

std::string Converter::toString(const Reference& reference) {
  return render([&](auto& out) { appendText(out, reference); });
}

std::string Converter::href(const Resource& resource) {
  return render([&](auto& out) { appendAddress(out, resource); });
}

std::string Converter::toHtml(const Resource& resource, const std::string& anchorText) {
  return render([&](auto& out) { appendHtml(out, resource, [&] { out.add(anchorText); }); });
}

std::string Converter::toHtml(const Link& link) {
  return render([&](auto& out) { appendHtml(out, link); });
}

std::string Converter::toHtml(const Reference& reference) {
  return render([&](auto& out) { appendHtml(out, reference); });
}

std::string Converter::toHtml(const Arg& arg) {
  if (arg.has_ref()) {
    return toHtml(arg.ref());
  }
  if (arg.has_uri()) {
    return toHtml(arg.uri());
  }
  if (arg.has_refs()) {
    return joinedHtml(arg.refs().ref());
  }
  if (arg.has_uris()) {
    return joinedHtml(arg.uris().uri());
  }
  if (arg.has_string_val()) {
    return arg.string_val();
  }
  numbers::Buffer buffer;
  return std::string(argumentValue(arg.scalar(), buffer));
}

}  // namespace vok::rulecheck
