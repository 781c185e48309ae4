// SPDX-License-Identifier: Apache-2.0

// What Converter returns, written as programs would write it without the library: from the rules
// of its header, in a style that is a parameter. The model that tests compare with, and what
// benchmarks compare with. Slow, and without any code of the library's.

#ifndef VOK_TESTS_SUPPORT_PLAIN_RENDERING_H_
#define VOK_TESTS_SUPPORT_PLAIN_RENDERING_H_

#include <vok/rulecheck/RuleService.pb.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace plain {

using namespace vok::rulecheck;

// The words are not what styles differ in.
inline std::string_view wordAt(int number, const std::vector<std::string_view>& words,
                               std::string_view other) {
  return number < 0 || static_cast<std::size_t>(number) >= words.size()
             ? other
             : words[static_cast<std::size_t>(number)];
}

inline std::string_view wordOfScheme(int number) {
  return wordAt(number, {"data", "file", "ftp", "http", "https", "irc", "mailto"}, "unknown");
}

inline std::string_view wordOfKind(int number) {
  static const std::vector<std::string_view> words = {
      "array",     "AXI",        "channel",   "condition", "constraint", "conversion",
      "core",      "data mover", "data type", "DDR bank",  "file",       "function",
      "hierarchy", "interface",  "kernel",    "loop",      "memory",     "operation",
      "operator",  "other",      "PCIE",      "port",      "pragma",     "predicate",
      "READ OP",   "region",     "system",    "variable",  "WRITE OP"};
  return wordAt(number, words, "<undefined>");
}

inline std::string_view wordOfSeverity(int number) {
  static const std::vector<std::string_view> words = {"fatal", "error", "critical warning",
                                                      "warning", "advisory"};
  return wordAt(number, words, "<undefined>");
}

// std::string, with snprintf for numbers.
class Concatenation {
 public:
  template <typename... Parts>
  void add(const Parts&... parts) {
    text_.reserve(text_.size() + (std::string_view(parts).size() + ...));
    ((text_ += parts), ...);
  }
  void addNumber(std::int64_t value) { print("%lld", static_cast<long long>(value)); }
  void addNumber(double value) { print("%f", value); }
  std::string take() { return std::move(text_); }

 private:
  template <typename Number>
  void print(const char* format, Number value) {
    char digits[400];
    std::snprintf(digits, sizeof digits, format, value);
    text_ += digits;
  }

  std::string text_;
};

inline const char* addressPrefix(Resource_Scheme scheme) {
  switch (scheme) {
    case Resource::DATA: return "data:";
    case Resource::FILE: return "file://";
    case Resource::HTTP: return "http://";
    case Resource::HTTPS: return "https://";
    default: return "";
  }
}

template <typename Style>
void addData(const Resource& resource, Style* out) {
  const bool hasBoth = resource.has_media_type() && resource.has_encoding();
  out->add(resource.media_type(), hasBoth ? ";" : "", resource.encoding());
  if (resource.has_data()) {
    out->add(",", resource.data());
  }
}

template <typename Style>
void addHierarchy(const Resource& resource, Style* out) {
  out->add(resource.host());
  if (resource.has_port()) {
    out->add(":");
    out->addNumber(std::int64_t{resource.port()});
  }
  const bool isRelative = !resource.path().empty() && resource.path().front() != '/';
  out->add(isRelative ? "/" : "", resource.path());
  if (resource.has_query()) {
    out->add("?", resource.query());
  }
  if (resource.has_fragment()) {
    out->add("#", resource.fragment());
  }
}

template <typename Style>
void addValue(const Scalar& scalar, bool isStringFirst, Style* out) {
  const bool hasNumber = scalar.has_int_val() || scalar.has_double_val();
  if (scalar.has_string_val() && (isStringFirst || !hasNumber)) {
    out->add(scalar.string_val());
  } else if (scalar.has_int_val()) {
    out->addNumber(std::int64_t{scalar.int_val()});
  } else if (scalar.has_double_val()) {
    out->addNumber(scalar.double_val());
  } else {
    out->add(scalar.address());
  }
}

// The functions of Converter by their names. Each combines what the others return.
template <typename Style>
class Rendering {
 public:
  static std::string toString(Violation_Severity severity) {
    return std::string(wordOfSeverity(severity));
  }

  static std::string toString(const Scalar& scalar) {
    Style out;
    addValue(scalar, true, &out);
    if (scalar.has_units() && !scalar.has_address()) {
      out.add(" ", scalar.units());
    }
    return out.take();
  }

  static std::string toString(const Reference& reference) {
    if (reference.has_name()) {
      return reference.name();
    }
    Style out;
    out.add(wordOfKind(reference.type()));
    if (reference.has_id()) {
      out.add(" #");
      out.addNumber(std::int64_t{reference.id()});
    } else if (reference.has_uuid()) {
      out.add(" ", reference.uuid());
    }
    return out.take();
  }

  static std::string href(const Resource& resource) {
    if (!resource.has_scheme()) {
      return "";
    }
    Style out;
    out.add(addressPrefix(resource.scheme()));
    if (resource.scheme() == Resource::DATA) {
      addData(resource, &out);
    } else {
      addHierarchy(resource, &out);
    }
    return out.take();
  }

  static std::string toHtml(const Resource& resource, const std::string& text) {
    if (!resource.has_scheme()) {
      return "";
    }
    if (resource.scheme() == Resource::DATA && resource.media_type() == "text/html") {
      return resource.data();
    }
    Style out;
    out.add("<a href=\"", href(resource), "\">", text, "</a>");
    return out.take();
  }

  static std::string toHtml(const Link& link) {
    if (!link.has_url()) {
      return link.has_link_text() ? link.link_text() : "<empty>";
    }
    if (link.has_link_text()) {
      return toHtml(link.url(), link.link_text());
    }
    return toHtml(link.url(), link.url().has_media_type() ? link.url().media_type() : "link");
  }

  static std::string toHtml(const Reference& reference) {
    return reference.has_url() ? toHtml(reference.url(), toString(reference)) : toString(reference);
  }

  static std::string toHtml(const Arg& arg) {
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
    if (arg.has_string_val()) {
      return arg.string_val();
    }
    Style out;
    addValue(arg.scalar(), false, &out);
    return out.take();
  }

 private:
  template <typename List>
  static std::string listOf(const List& list) {
    Style out;
    const char* separator = "";
    for (const auto& element : list) {
      out.add(separator, toHtml(element));
      separator = ",";
    }
    return out.take();
  }
};

}  // namespace plain

#endif  // VOK_TESTS_SUPPORT_PLAIN_RENDERING_H_
