// SPDX-License-Identifier: Apache-2.0

// Addresses of resources.

#include <gtest/gtest.h>

#include <string>

#include "rendering/counted_converter.h"
#include "support/messages.h"

namespace {

using tests::parse;
using Converter = tests::CountedConverter;
using vok::rulecheck::Resource;
using vok::rulecheck::Resource_Scheme;

struct AddressCase {
  const char* name;
  const char* resource;
  const char* address;
};

const AddressCase addressCases[] = {
    {"an empty resource has no address", "", ""},
    {"without a scheme there is no address", "host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f'",
     ""},
    {"without a scheme inline data has no address", "media_type: 'm' encoding: 'e' data: 'd'", ""},

    {"data alone is its prefix", "scheme: DATA", "data:"},
    {"data only", "scheme: DATA data: 'hi'", "data:,hi"},
    {"empty data writes a comma", "scheme: DATA data: ''", "data:,"},
    {"a media type only", "scheme: DATA media_type: 'text/plain'", "data:text/plain"},
    {"an encoding only follows the prefix", "scheme: DATA encoding: 'base64'", "data:base64"},
    {"media type, encoding and data",
     "scheme: DATA media_type: 'text/plain' encoding: 'base64' data: 'aGk='",
     "data:text/plain;base64,aGk="},
    {"encoding and data have no semicolon", "scheme: DATA encoding: 'base64' data: 'aGk='",
     "data:base64,aGk="},
    {"media type and data", "scheme: DATA media_type: 'text/plain' data: 'hi'",
     "data:text/plain,hi"},
    {"an empty media type counts as set", "scheme: DATA media_type: '' encoding: 'e'", "data:;e"},
    {"an empty encoding counts as set", "scheme: DATA media_type: 'm' encoding: '' data: ''",
     "data:m;,"},
    {"inline data ignores the fields of an address",
     "scheme: DATA host: 'h' port: 1 path: 'p' query: 'q' fragment: 'f'", "data:"},

    {"a file's path", "scheme: FILE path: '/tmp/a'", "file:///tmp/a"},
    {"a path gets the slash that it lacks", "scheme: FILE path: 'tmp/a'", "file:///tmp/a"},
    {"an empty path writes nothing", "scheme: FILE path: ''", "file://"},
    {"a path of one slash", "scheme: FILE path: '/'", "file:///"},
    {"a file on a host", "scheme: FILE host: 'h' path: 'a'", "file://h/a"},
    {"an address ignores the fields of inline data",
     "scheme: FILE path: '/a' media_type: 'm' encoding: 'e' data: 'd'", "file:///a"},

    {"every piece of an address",
     "scheme: HTTP host: 'h' port: 80 path: 'x' query: 'a=1' fragment: 'top'",
     "http://h:80/x?a=1#top"},
    {"a port of 0 is written", "scheme: HTTPS host: 'h' port: 0", "https://h:0"},
    {"a negative port is written", "scheme: HTTPS host: 'h' port: -1", "https://h:-1"},
    {"the scheme's own port is written", "scheme: HTTPS host: 'h' port: 443", "https://h:443"},
    {"the largest port is written", "scheme: HTTP port: 2147483647", "http://:2147483647"},
    {"the smallest port is written", "scheme: HTTP port: -2147483648", "http://:-2147483648"},
    {"a port without a host is written", "scheme: HTTP port: 80", "http://:80"},
    {"an empty host is nothing", "scheme: HTTP host: '' path: 'x'", "http:///x"},
    {"an empty query is a question mark", "scheme: HTTP host: 'h' query: ''", "http://h?"},
    {"an empty fragment is a number sign", "scheme: HTTP host: 'h' fragment: ''", "http://h#"},
    {"a query follows a path that has one", "scheme: HTTP path: '/x?a=1' query: 'b=2'",
     "http:///x?a=1?b=2"},
    {"nothing is escaped", "scheme: HTTP host: 'h' path: 'a b\"<>#?'", "http://h/a b\"<>#?"},

    {"a file transfer address has no prefix", "scheme: FTP host: 'h'", "h"},
    {"a chat address has no prefix", "scheme: IRC host: 'h'", "h"},
    {"a mail address has no prefix", "scheme: MAILTO host: 'a@b.example'", "a@b.example"},
    {"a mail address in the path gets a slash", "scheme: MAILTO path: 'a@b.example'",
     "/a@b.example"},
    {"an address without a prefix has all pieces",
     "scheme: FTP host: 'h' port: 21 path: 'x' query: 'q' fragment: 'f'", "h:21/x?q#f"},
    {"a scheme without a prefix alone is nothing", "scheme: IRC", ""},
};

TEST(Address, FollowsTheTable) {
  for (const AddressCase& c : addressCases) {
    EXPECT_EQ(Converter::href(parse<Resource>(c.resource)), c.address) << c.name;
  }
}

TEST(Address, OfAnUnlistedSchemeHasNoPrefix) {
  for (const int number : {7, -1, 1000}) {
    auto resource = parse<Resource>("host: 'h' port: 1 path: 'p' media_type: 'm' data: 'd'");
    resource.set_scheme(static_cast<Resource_Scheme>(number));
    EXPECT_EQ(Converter::href(resource), "h:1/p") << number;
  }
}

TEST(Address, CopiesZeroBytes) {
  Resource resource;
  resource.set_scheme(Resource::FILE);
  resource.set_path(std::string("/a\0b", 4));
  EXPECT_EQ(Converter::href(resource), std::string("file:///a\0b", 11));
}

TEST(Address, LeavesTheResourceUnchanged) {
  const auto resource = parse<Resource>("scheme: FILE path: 'a' port: 1");
  const std::string before = tests::bytesOf(resource);
  (void)Converter::href(resource);
  EXPECT_EQ(tests::bytesOf(resource), before);
}

}  // namespace
