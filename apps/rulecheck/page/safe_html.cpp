// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_html.h"

#include <google/protobuf/descriptor.h>
#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "common/characters.h"

namespace rulecheck {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;
using vok::rulecheck::Converter;
using vok::rulecheck::Link;
using vok::rulecheck::Reference;
using vok::rulecheck::Resource;

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isPlain(char c) {
  const bool isMarkup = c == '&' || c == '<' || c == '>' || c == '"' || c == '\'';
  return (c >= ' ' && c < 0x7F && !isMarkup) || c == '\t' || c == '\n';
}

std::string_view reference(char32_t value, std::string_view bytes) {
  switch (value) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '"': return "&quot;";
    case '\'': return "&#39;";
    default: return bytes;
  }
}

// The text that is shown for a code point; bytes are how it is encoded.
std::string_view shown(char32_t value, std::string_view bytes, bool isHtml) {
  if (value == '\r') {
    return "";
  }
  if (!apps::isHarmless(value)) {
    return replacement;
  }
  return isHtml ? reference(value, bytes) : bytes;
}

std::string converted(std::string_view rest, bool isHtml) {
  std::string text;
  text.reserve(rest.size());
  while (!rest.empty()) {
    const auto plain = static_cast<std::size_t>(
        std::find_if_not(rest.begin(), rest.end(), isPlain) - rest.begin());
    text += rest.substr(0, plain);
    rest.remove_prefix(plain);
    if (!rest.empty()) {
      const apps::CodePoint first = apps::firstOf(rest);
      text += shown(first.value, rest.substr(0, first.length), isHtml);
      rest.remove_prefix(first.length);
    }
  }
  return text;
}

constexpr std::string_view hexDigits = "0123456789ABCDEFabcdef";
constexpr std::string_view addressCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=";

bool isEncoded(std::string_view text, std::size_t at) {
  const std::string_view digits = text.substr(at + 1, 2);
  return text[at] == '%' && digits.size() == 2 &&
         digits.find_first_not_of(hexDigits) == std::string_view::npos;
}

// Part of an address. The delimiters would end the part early.
std::string encodePart(const std::string& text, std::string_view delimiters) {
  std::string part;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool keeps = addressCharacters.find(text[i]) != std::string_view::npos &&
                       delimiters.find(text[i]) == std::string_view::npos;
    if (keeps || isEncoded(text, i)) {
      part += text[i];
    } else {
      const auto byte = static_cast<unsigned char>(text[i]);
      part += '%';
      part += hexDigits[byte >> 4];
      part += hexDigits[byte & 15];
    }
  }
  return part;
}

std::string mailAddress(const Resource& resource) {
  constexpr std::string_view prefix = "mailto:";
  std::string address = isBlank(resource.host()) ? resource.path() : resource.host();
  if (address.compare(0, prefix.size(), prefix) == 0) {
    address.erase(0, prefix.size());
  }
  return isBlank(address) ? "" : address;
}

void encodeMailAddress(Resource* resource) {
  resource->set_host("mailto:" + encodePart(mailAddress(*resource), "?#"));
  resource->clear_port();
  resource->clear_path();
  resource->clear_query();
  resource->clear_fragment();
}

std::string address(const Resource& resource) {
  if (resource.scheme() == Resource::MAILTO) {
    return mailAddress(resource);
  }
  const bool hasPrefix = resource.scheme() == Resource::HTTP ||
                         resource.scheme() == Resource::HTTPS ||
                         resource.scheme() == Resource::FILE;
  const std::string href = Converter::href(resource);
  return hasPrefix ? href : Converter::toString(resource.scheme()) + "://" + href;
}

bool isThisHost(const std::string& host) {
  return host.empty() || host == "localhost";
}

// Two slashes before a name would make it another host's on Windows, also behind "/..".
std::string singleSlashes(std::string path) {
  const auto both = [](char a, char b) { return a == '/' && b == '/'; };
  path.erase(std::unique(path.begin(), path.end(), both), path.end());
  return path;
}

// Of a linkable resource.
void encodeAddress(Resource* resource) {
  if (resource->scheme() == Resource::MAILTO) {
    encodeMailAddress(resource);
  } else {
    resource->set_host(encodePart(resource->host(), "?#"));
    resource->set_path(encodePart(resource->path(), "?#"));
  }
  if (resource->scheme() == Resource::FILE) {
    resource->set_path(singleSlashes(resource->path()));
  }
  if (resource->has_query()) {
    resource->set_query(encodePart(resource->query(), "#"));
  }
  if (resource->has_fragment()) {
    resource->set_fragment(encodePart(resource->fragment(), ""));
  }
}

// Whether the resource carries text inline: data that is not empty, whose media
// type is absent or begins with "text/".
bool carriesText(const Resource& resource) {
  const bool isText =
      !resource.has_media_type() || resource.media_type().compare(0, 5, "text/") == 0;
  return resource.scheme() == Resource::DATA && isText && !isBlank(resource.data());
}

std::string describeData(const Resource& resource) {
  if (carriesText(resource)) {
    return resource.data();
  }
  return isBlank(resource.media_type()) ? "inline data"
                                        : "inline data (" + resource.media_type() + ")";
}

// The text of a link that leads nowhere.
std::string standAlone(const std::string& text, const Resource& url) {
  if (isBlank(text)) {
    return describe(url);
  }
  return carriesText(url) ? text + " (" + describe(url) + ")" : text;
}

void tameLink(Link* link) {
  if (isBlank(link->link_text())) {
    link->clear_link_text();
  }
  if (link->has_url() && isBlank(link->url().media_type())) {
    link->mutable_url()->clear_media_type();
  }
  if (link->has_url() && !isLinkable(link->url())) {
    link->set_link_text(standAlone(link->link_text(), link->url()));
    link->clear_url();
  }
  if (!link->has_url() && !link->has_link_text()) {
    link->set_link_text("empty link");
  }
}

void tameReference(Reference* reference) {
  if (isBlank(reference->name())) {
    reference->clear_name();
  }
  if (reference->has_url() && !isLinkable(reference->url())) {
    reference->set_name(standAlone(Converter::toString(*reference), reference->url()));
    reference->clear_url();
  }
}

void tameResource(Resource* resource) {
  if (isLinkable(*resource)) {
    encodeAddress(resource);
  } else {
    resource->Clear();
  }
}

// Before the strings become HTML, since addresses are decided on as they are.
void tameAddresses(Message* message) {
  if (auto* const link = dynamic_cast<Link*>(message)) {
    tameLink(link);
  } else if (auto* const reference = dynamic_cast<Reference*>(message)) {
    tameReference(reference);
  } else if (auto* const resource = dynamic_cast<Resource*>(message)) {
    tameResource(resource);
  }
}

void escapeString(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    reflection->SetString(message, field, escapeText(reflection->GetString(*message, field)));
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    reflection->SetRepeatedString(message, field, i,
                                  escapeText(reflection->GetRepeatedString(*message, field, i)));
  }
}

// The entries of a map are messages, with a key and a value.
void makeNestedSafe(Message* message, const FieldDescriptor* field) {
  const Reflection* reflection = message->GetReflection();
  if (!field->is_repeated()) {
    makeSafe(reflection->MutableMessage(message, field));
    return;
  }
  for (int i = 0; i < reflection->FieldSize(*message, field); ++i) {
    makeSafe(reflection->MutableRepeatedMessage(message, field, i));
  }
}

}  // namespace

std::string escapeText(const std::string& text) {
  return converted(text, true);
}

std::string cleanText(const std::string& text) {
  return converted(text, false);
}

bool isBlank(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

bool isLinkable(const Resource& resource) {
  switch (resource.scheme()) {
    case Resource::HTTP:
    case Resource::HTTPS: return !isBlank(resource.host());
    case Resource::FILE:
      return isThisHost(resource.host()) && !resource.has_port() && !isBlank(resource.path());
    case Resource::MAILTO: return !mailAddress(resource).empty() && isBlank(resource.query());
    default: return false;
  }
}

std::string describe(const Resource& resource) {
  if (resource.scheme() == Resource::DATA) {
    return describeData(resource);
  }
  const std::string text = address(resource);
  return isBlank(text) ? "no address" : text;
}

void makeSafe(Message* message) {
  tameAddresses(message);
  std::vector<const FieldDescriptor*> fields;
  message->GetReflection()->ListFields(*message, &fields);
  for (const FieldDescriptor* field : fields) {
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      escapeString(message, field);
    } else if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
      makeNestedSafe(message, field);
    }
  }
}

}  // namespace rulecheck
