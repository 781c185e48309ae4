// SPDX-License-Identifier: Apache-2.0

// Messages in files of three formats.

#include "common/message_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>

#include "directory.h"
#include "support/messages.h"

namespace {

using apps::decodeFrom;
using apps::encodeFor;
using apps::FileError;
using vok::rulecheck::RuleSpecMap;
using vok::rulecheck::Session;

const char* const kSession =
    "name: 'n \\303\\244 \"q\" \\n' uuid: '' timestamp: -9223372036854775808"
    " report_file { scheme: FILE path: '/r' }";

TEST(MessageFiles, KeepMessagesInEachFormat) {
  const auto session = tests::parse<Session>(kSession);
  for (const char* const path : {"a.pb", "a.bin", "a.txtpb", "a.textproto", "a.txt", "a.json",
                                 "/some.where/a.b.pb", "dir.json/a.pb"}) {
    Session read;
    decodeFrom(path, encodeFor(path, session), &read);
    EXPECT_EQ(tests::textOf(session), tests::textOf(read)) << path;
  }
}

TEST(MessageFiles, HaveTheFormatThatTheExtensionNames) {
  const auto session = tests::parse<Session>("name: 'n' timestamp: 5");
  EXPECT_EQ(tests::fromHex("0a 01 6e 20 05"), encodeFor("a.pb", session));
  EXPECT_EQ(encodeFor("a.pb", session), encodeFor("a.bin", session));
  EXPECT_EQ("name: \"n\"\ntimestamp: 5\n", encodeFor("a.txtpb", session));
  EXPECT_EQ(encodeFor("a.txtpb", session), encodeFor("a.txt", session));
  EXPECT_EQ(encodeFor("a.txtpb", session), encodeFor("a.textproto", session));
  EXPECT_EQ("{\n \"name\": \"n\",\n \"timestamp\": \"5\"\n}\n", encodeFor("a.json", session));
}

TEST(MessageFiles, HaveEqualBytesForEqualMaps) {
  RuleSpecMap first;
  RuleSpecMap second;
  for (int i = 0; i < 50; ++i) {
    (*first.mutable_hashmap())["k" + std::to_string(i)].set_key("");
    (*second.mutable_hashmap())["k" + std::to_string(49 - i)].set_key("");
  }
  for (RuleSpecMap* const map : {&first, &second}) {
    for (auto& entry : *map->mutable_hashmap()) {
      entry.second.set_full_name("");
    }
  }
  EXPECT_EQ(encodeFor("a.pb", first), encodeFor("a.pb", second));
  EXPECT_EQ(encodeFor("a.txt", first), encodeFor("a.txt", second));
}

TEST(MessageFiles, AreWrittenAsTheyAreEncodedIfTheyAreComplete) {
  const tests::Directory directory;
  const auto session = tests::parse<Session>(kSession);
  for (const char* const name : {"a.pb", "a.txt", "a.json"}) {
    apps::writeMessage(directory.path() + "/file", name, session);
    EXPECT_EQ(encodeFor(name, session), apps::readFile(directory.path() + "/file")) << name;
    EXPECT_THROW(apps::writeMessage("/dev/full", name, session), FileError) << name;
    EXPECT_THROW(encodeFor(name, Session()), FileError) << name;
    EXPECT_THROW(apps::writeMessage(directory.path() + "/none", name, Session()), FileError)
        << name;
  }
  EXPECT_FALSE(std::filesystem::exists(directory.path() + "/none"));
}

TEST(MessageFiles, ThatAreMalformedAreNamedInOneLine) {
  const struct {
    const char* path;
    const char* content;
    const char* error;
  } cases[] = {
      {"a.xml", "", "a.xml: unknown extension, expected"},
      {"a", "", "a: unknown extension, expected"},
      {".pb", "", ".pb: unknown extension, expected"},
      {"a.PB", "", "a.PB: unknown extension, expected"},
      {"a.pb", "\x0a", "a.pb: malformed bytes"},
      {"a.pb", "", "a.pb: missing name"},
      {"a.txt", "", "a.txt: missing name"},
      {"a.json", "{}", "a.json: "},
      {"a.txt", "name: 'n'\n  nme: 'x'", "a.txt: 2:"},
      {"a.txt", "name: 'n", "a.txt: 1:"},
      {"a.txt", "name: 'n' report_file { scheme: GOPHER }", "a.txt: 1:"},
      {"a.json", "{\"name\": ", "a.json: "},
      {"a.json", "{\"name\": {}}", "a.json: "},
      {"a.json", "", "a.json: "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.path) + " with " + c.content);
    Session session;
    try {
      decodeFrom(c.path, c.content, &session);
      ADD_FAILURE() << "accepted";
    } catch (const FileError& error) {
      EXPECT_THAT(error.what(), testing::StartsWith(c.error));
      EXPECT_THAT(error.what(), testing::Not(testing::ContainsRegex("\n|[A-Z]_[A-Z]|: :")));
    }
  }
}

TEST(MessageFiles, HaveAtMostTwoGibibytes) {
  vok::rulecheck::ExchangeToken longest;
  longest.mutable_token()->resize(std::size_t{2} << 30);
  for (const char* const path : {"a.pb", "a.json", "a.txt"}) {
    EXPECT_THROW(encodeFor(path, longest), FileError) << path;
  }
}

TEST(Files, ThatFailAreNamed) {
  // The second opens, but its first byte can't be read.
  for (const auto& [path, reason] :
       {std::pair("missing", "No such file or directory"),
        std::pair("/proc/self/mem", "Input/output error"), std::pair("/", "Is a directory")}) {
    try {
      apps::readFile(path);
      ADD_FAILURE() << "read " << path;
    } catch (const FileError& error) {
      EXPECT_EQ(std::string(path) + ": cannot be read: " + reason, error.what());
    }
  }
}

}  // namespace
