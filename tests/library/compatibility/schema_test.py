# SPDX-License-Identifier: Apache-2.0

"""The schema against the baseline: changes that break programs are found, others are not.

Every change shows in contract.txt. To update it after a change that may be made:
    build/release/tests/library/compatibility/print_contract > tests/library/compatibility/contract.txt
"""

import json
import os
import pathlib
import re
import unittest

from program_test import ProgramTest

HERE = pathlib.Path(__file__).resolve().parent
BASELINE = next(HERE.glob("baseline-*.binpb"))
CONTRACT = HERE / "contract.txt"
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
PROTOC = os.environ["PROTOC"]
PRINT_CONTRACT = os.environ["PRINT_CONTRACT"]
BUF = os.environ.get("BUF")

# Changes of the schema that break programs: the texts to replace in it, and the rule of buf
# that they break. Where there is no rule, contract.txt alone shows the change.
BREAKING = [
    ("a field is renumbered", {"int32 port = 3;": "int32 port = 30;"}, "FIELD_NO_DELETE"),
    ("two fields exchange their numbers",
     {"int_val = 1;": "int_val = 2;", "double_val = 2;": "double_val = 1;"}, "FIELD_SAME_NAME"),
    ("a field is renamed", {"string rule_key = 3;": "string key = 3;"}, "FIELD_SAME_NAME"),
    ("a field is removed", {"optional int32 noop = 1;": ""}, "FIELD_NO_DELETE"),
    ("a field is removed and its number reserved",
     {"optional int32 noop = 1;": "reserved 1;"}, "FIELD_NO_DELETE"),
    ("a field is widened", {"int32 port = 3;": "int64 port = 3;"}, "FIELD_SAME_TYPE"),
    ("text becomes bytes", {"optional string data = 9;": "optional bytes data = 9;"}, "FIELD_SAME_TYPE"),
    ("a field becomes another message",
     {"optional Links uris = 4;": "optional Link uris = 4;"}, "FIELD_SAME_TYPE"),
    ("the values of a map change their type",
     {"map<int32, bool> dynamic": "map<int32, int32> dynamic"}, "FIELD_SAME_TYPE"),
    ("the keys of a map change their type",
     {"map<string, RuleSpec>": "map<int32, RuleSpec>"}, "FIELD_SAME_TYPE"),
    ("an optional field becomes required",
     {"optional string link_text": "required string link_text"}, "FIELD_SAME_CARDINALITY"),
    ("a required field becomes optional",
     {"required Scheme scheme": "optional Scheme scheme"}, "FIELD_SAME_CARDINALITY"),
    ("an optional field becomes repeated",
     {"optional ArgList args = 2;": "repeated ArgList args = 2;"}, "FIELD_SAME_CARDINALITY"),
    ("a required field is new",
     {"repeated string msg = 1;": "repeated string msg = 1; required int32 count = 2;"},
     "MESSAGE_SAME_REQUIRED_FIELDS"),
    ("a default is dropped", {" [default = SEV_ADVISORY]": ""}, "FIELD_SAME_DEFAULT"),
    ("a default is added", {"int32 pid = 2;": "int32 pid = 2 [default = 1];"}, "FIELD_SAME_DEFAULT"),
    ("a default is changed", {"[default = ENABLED]": "[default = NEW]"}, "FIELD_SAME_DEFAULT"),
    ("a field moves into a oneof",
     {"optional int32 noop = 1;": "oneof body { int32 noop = 1; }"}, "FIELD_SAME_ONEOF"),
    ("a field gets an option",
     {"repeated string msg = 1;": "repeated string msg = 1 [ctype = CORD];"}, "FIELD_SAME_CPP_STRING_TYPE"),
    ("two fields exchange their places",
     {"string host = 2;": "string path = 4;", "string path = 4;": "string host = 2;"}, ""),
    ("a new field stands before the others",
     {"repeated Link uri = 1;": "optional int32 count = 2; repeated Link uri = 1;"}, ""),
    ("a message may be extended",
     {"repeated string msg = 1;": "repeated string msg = 1; extensions 100 to 199;"}, ""),
    ("a message is renamed",
     {"message GetVersion {": "message AskVersion {",
      "optional GetVersion get_version": "optional AskVersion get_version"}, "MESSAGE_NO_DELETE"),
    ("two messages exchange their places",
     {"message ErrorResponse {": "message StatusResponse {",
      "message StatusResponse {": "message ErrorResponse {"}, ""),
    ("a value is renumbered", {"NODISABLE = 6;": "NODISABLE = 7;"}, "ENUM_VALUE_NO_DELETE"),
    ("a value is renamed", {"IRC = 5;": "CHAT = 5;"}, "ENUM_VALUE_SAME_NAME"),
    ("a value is removed", {"STOP_SERVER = 15;": ""}, "ENUM_VALUE_NO_DELETE"),
    ("a value's number is used again",
     {"MAILTO = 6;": "MAILTO = 6; MAIL = 6; option allow_alias = true;"}, ""),
    ("two values exchange their numbers",
     {"SEV_FATAL = 0;": "SEV_FATAL = 1;", "SEV_ERROR = 1;": "SEV_ERROR = 0;"}, "ENUM_VALUE_SAME_NAME"),
    ("two values exchange their places", {"FTP = 2;": "HTTP = 3;", "HTTP = 3;": "FTP = 2;"}, ""),
    ("an enumeration is renamed",
     {"enum Disposition {": "enum State {",
      "optional Disposition disposition": "optional State disposition"}, "ENUM_NO_DELETE"),
    ("a method is removed", {"rpc stopServer(ExchangeToken) returns (StatusResponse);": ""}, "RPC_NO_DELETE"),
    ("a method is renamed", {"rpc dumpRules(": "rpc writeRules("}, "RPC_NO_DELETE"),
    ("a method gets another argument",
     {"getSessionResult(Session)": "getSessionResult(GetSessionResult)"}, "RPC_SAME_REQUEST_TYPE"),
    ("a method gets another result",
     {"getVersion(EmptyMessage) returns (Version)": "getVersion(EmptyMessage) returns (StatusResponse)"}, "RPC_SAME_RESPONSE_TYPE"),
    ("a method streams its results",
     {"getSession(GetSession) returns (Session)": "getSession(GetSession) returns (stream Session)"}, "RPC_SAME_SERVER_STREAMING"),
    ("two methods exchange their places",
     {"rpc startSession(Session) returns (Session)": "rpc getSession(GetSession) returns (Session)",
      "rpc getSession(GetSession) returns (Session)": "rpc startSession(Session) returns (Session)"}, ""),
    ("the service is renamed", {"service RuleCheckService {": "service RuleCheck {"}, "SERVICE_NO_DELETE"),
    ("the version falls", {"MINOR = 4;": "MINOR = 3;"}, ""),
    ("the major version rises", {"MAJOR = 1;": "MAJOR = 2;"}, ""),
    ("the file gets another package", {"package vok.rulecheck;": "package vok.rules;"}, "FILE_SAME_PACKAGE"),
    ("the file's option changes", {'"ui.vok.rulecheck.pb"': '"vok.rulecheck.pb"'}, "FILE_SAME_JAVA_PACKAGE"),
]

PERMITTED = {
    "nothing changes": {},
    "a comment changes": {"// A list of links.": "// Links, in order."},
    "an optional field is new": {"repeated Link uri = 1;":
                                 "repeated Link uri = 1; optional int32 count = 2;"},
    "a repeated field is new": {"optional int32 noop = 1;":
                                "optional int32 noop = 1; repeated string notes = 7;"},
    "a map is new": {"repeated string msg = 1;":
                     "repeated string msg = 1; map<int32, string> notes = 2;"},
    "a message is new": {"enum ActualVersion {":
                         "message Note { required string text = 1; } enum ActualVersion {"},
    "a value is new": {"MAILTO = 6;": "MAILTO = 6; SFTP = 7;"},
    "a method is new": {"rpc stopServer(ExchangeToken) returns (StatusResponse);":
                        "rpc stopServer(ExchangeToken) returns (StatusResponse);"
                        " rpc ping(EmptyMessage) returns (EmptyMessage);"},
    "the minor version rises": {"MINOR = 4;": "MINOR = 5;"},
    "the patch version rises": {"PATCH = 0;": "PATCH = 1; option allow_alias = true;"},
}


class SchemaTest(ProgramTest):
    def run_checked(self, *command):
        ended = self.run_program(*command)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        return ended.stdout

    def descriptor_of(self, edits):
        """The file of the descriptor of an edited schema, which has each of the texts once."""
        text, count = re.subn("|".join(map(re.escape, edits)) or r"\Z",
                              lambda found: edits.get(found[0], ""), SCHEMA.read_text(encoding="utf-8"))
        self.assertEqual(count, max(len(edits), 1), edits)
        self.write(SCHEMA.name, text)
        self.run_checked(PROTOC, SCHEMA.name, "--descriptor_set_out=present.binpb")
        return "present.binpb"


class Contract(SchemaTest):
    maxDiff = None
    committed = CONTRACT.read_text(encoding="utf-8")

    def test_is_that_of_the_library_and_of_the_schema(self):
        self.assertEqual(self.run_checked(PRINT_CONTRACT), self.committed)
        self.assertEqual(self.run_checked(PRINT_CONTRACT, self.descriptor_of({})), self.committed)

    def test_shows_each_breaking_change(self):
        for what, edits, _ in BREAKING:
            with self.subTest(what):
                self.assertNotEqual(
                    self.run_checked(PRINT_CONTRACT, self.descriptor_of(edits)), self.committed)


@unittest.skipUnless(BUF, "buf is used where all tests run")
class Buf(SchemaTest):
    def broken_rules(self, edits):
        """The rules that a change breaks; the parts of the version may have any number."""
        ended = self.run_program(BUF, "breaking", self.descriptor_of(edits), "--against", BASELINE,
                                 "--error-format", "json", "--config",
                                 '{"version": "v2", "breaking": {"use": ["FILE"]}}')
        self.assertEqual(ended.stderr, "")
        findings = [json.loads(line) for line in ended.stdout.splitlines()]
        self.assertEqual(ended.returncode, 100 if findings else 0, ended.stdout)
        return {finding["type"]: finding["message"] for finding in findings
                if 'enum "ActualVersion"' not in finding["message"]}

    def test_finds_nothing_that_breaks_the_baseline(self):
        self.assertEqual(self.broken_rules({}), {})

    def test_finds_each_breaking_change_that_it_has_a_rule_for(self):
        for what, edits, rule in BREAKING:
            with self.subTest(what):
                found = self.broken_rules(edits)
                self.assertTrue(rule in found if rule else not found, found)

    def test_allows_permitted_changes(self):
        for what, edits in PERMITTED.items():
            with self.subTest(what):
                self.assertEqual(self.broken_rules(edits), {})


if __name__ == "__main__":
    unittest.main()
