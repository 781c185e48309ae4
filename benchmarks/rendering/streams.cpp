#include <iomanip>
#include <sstream>

#include "rendering/renderers.h"
#include "rendering/words.h"

namespace benchmarks {

using namespace vok::rulecheck;

namespace {

template <typename Enum>
std::string wordOf(Enum value) {
  std::ostringstream out;
  out << word(value);
  return out.str();
}

template <typename List>
std::string listOf(const List& list) {
  std::ostringstream out;
  const char* separator = "";
  for (const auto& element : list) {
    out << separator << Streams::toHtml(element);
    separator = ",";
  }
  return out.str();
}

std::string numberFirst(const Scalar& scalar) {
  std::ostringstream out;
  if (scalar.has_int_val()) {
    out << scalar.int_val();
  } else if (scalar.has_double_val()) {
    out << std::fixed << scalar.double_val();
  } else if (scalar.has_string_val()) {
    out << scalar.string_val();
  } else {
    out << scalar.address();
  }
  return out.str();
}

}  // namespace

std::string Streams::toString(Resource_Scheme scheme) {
  return wordOf(scheme);
}

std::string Streams::toString(Reference_RefType type) {
  return wordOf(type);
}

std::string Streams::toString(Violation_Severity severity) {
  return wordOf(severity);
}

std::string Streams::toString(const Scalar& scalar) {
  std::ostringstream out;
  if (scalar.has_string_val()) {
    out << scalar.string_val();
  } else if (scalar.has_int_val()) {
    out << scalar.int_val();
  } else if (scalar.has_double_val()) {
    out << std::fixed << scalar.double_val();
  } else {
    out << scalar.address();
  }
  if (scalar.has_units() && !scalar.has_address()) {
    out << ' ' << scalar.units();
  }
  return out.str();
}

std::string Streams::toString(const Reference& reference) {
  std::ostringstream out;
  if (reference.has_name()) {
    out << reference.name();
  } else if (reference.has_id()) {
    out << toString(reference.type()) << " #" << reference.id();
  } else if (reference.has_uuid()) {
    out << toString(reference.type()) << ' ' << reference.uuid();
  } else {
    out << toString(reference.type());
  }
  return out.str();
}

std::string Streams::href(const Resource& resource) {
  std::ostringstream out;
  if (!resource.has_scheme()) {
    return out.str();
  }
  out << addressPrefix(resource.scheme());
  if (resource.scheme() == Resource::DATA) {
    out << resource.media_type();
    if (resource.has_media_type() && resource.has_encoding()) {
      out << ';';
    }
    out << resource.encoding();
    if (resource.has_data()) {
      out << ',' << resource.data();
    }
    return out.str();
  }
  out << resource.host();
  if (resource.has_port()) {
    out << ':' << resource.port();
  }
  if (!resource.path().empty() && resource.path().front() != '/') {
    out << '/';
  }
  out << resource.path();
  if (resource.has_query()) {
    out << '?' << resource.query();
  }
  if (resource.has_fragment()) {
    out << '#' << resource.fragment();
  }
  return out.str();
}

std::string Streams::toHtml(const Resource& resource, const std::string& text) {
  std::ostringstream out;
  if (!resource.has_scheme()) {
    return out.str();
  }
  if (resource.scheme() == Resource::DATA && resource.media_type() == "text/html") {
    out << resource.data();
  } else {
    out << "<a href=\"" << href(resource) << "\">" << text << "</a>";
  }
  return out.str();
}

std::string Streams::toHtml(const Link& link) {
  std::ostringstream text;
  if (link.has_link_text()) {
    text << link.link_text();
  } else if (!link.has_url()) {
    text << "<empty>";
  } else if (link.url().has_media_type()) {
    text << link.url().media_type();
  } else {
    text << "link";
  }
  return link.has_url() ? toHtml(link.url(), text.str()) : text.str();
}

std::string Streams::toHtml(const Reference& reference) {
  const std::string text = toString(reference);
  return reference.has_url() ? toHtml(reference.url(), text) : text;
}

std::string Streams::toHtml(const Arg& arg) {
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
  return numberFirst(arg.scalar());
}

}  // namespace benchmarks
