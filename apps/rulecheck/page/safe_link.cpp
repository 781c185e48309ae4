// SPDX-License-Identifier: Apache-2.0

#include "rulecheck/page/safe_link.h"

#include <vok/rulecheck/Converter.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "rulecheck/page/safe_text.h"

namespace rulecheck {
namespace {

using vok::rulecheck::Converter;
using vok::rulecheck::Resource;

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

std::string address(Resource resource) {
  if (resource.scheme() == Resource::MAILTO) {
    return mailAddress(resource);
  }
  const bool hasPrefix = resource.scheme() == Resource::HTTP ||
                         resource.scheme() == Resource::HTTPS ||
                         resource.scheme() == Resource::FILE;
  if (resource.has_scheme() && hasPrefix) {
    return Converter::href(resource);
  }
  const std::string prefix =
      resource.has_scheme() ? Converter::toString(resource.scheme()) + "://" : "";
  resource.set_scheme(Resource::FTP);  // whose addresses have no prefix
  return prefix + Converter::href(resource);
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

std::string describeData(const Resource& resource) {
  if (carriesText(resource)) {
    return resource.data();
  }
  return isBlank(resource.media_type()) ? "inline data"
                                        : "inline data (" + resource.media_type() + ")";
}

}  // namespace

bool isLinkable(const Resource& resource) {
  if (!resource.has_scheme()) {
    return false;
  }
  switch (resource.scheme()) {
    case Resource::HTTP:
    case Resource::HTTPS: return !isBlank(resource.host());
    case Resource::FILE:
      return isThisHost(resource.host()) && !resource.has_port() && !isBlank(resource.path());
    case Resource::MAILTO: return !mailAddress(resource).empty() && isBlank(resource.query());
    default: return false;
  }
}

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

bool carriesText(const Resource& resource) {
  const bool isData = resource.has_scheme() && resource.scheme() == Resource::DATA;
  const bool isText =
      !resource.has_media_type() || resource.media_type().compare(0, 5, "text/") == 0;
  return isData && isText && !isBlank(resource.data());
}

std::string describe(const Resource& resource) {
  if (resource.has_scheme() && resource.scheme() == Resource::DATA) {
    return describeData(resource);
  }
  const std::string text = address(resource);
  return isBlank(text) ? "no address" : text;
}

}  // namespace rulecheck
