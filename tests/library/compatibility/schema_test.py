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

# Changes of the schema that break programs: the rule of buf that each breaks, and the texts to
# replace. Where there is no rule, contract.txt alone shows the change.
BREAKING = [
    ("FIELD_NO_DELETE", {"int32 port = 3;": "int32 port = 30;"}),
    ("FIELD_NO_DELETE", {"optional int32 noop = 1;": ""}),
    ("FIELD_NO_DELETE", {"optional int32 noop = 1;": "reserved 1;"}),
    ("FIELD_SAME_NAME", {"int_val = 1;": "int_val = 2;", "double_val = 2;": "double_val = 1;"}),
    ("FIELD_SAME_NAME", {"string rule_key = 3;": "string key = 3;"}),
    ("FIELD_SAME_TYPE", {"int32 port = 3;": "int64 port = 3;"}),
    ("FIELD_SAME_TYPE", {"optional string data = 9;": "optional bytes data = 9;"}),
    ("FIELD_SAME_TYPE", {"optional Links uris = 4;": "optional Link uris = 4;"}),
    ("FIELD_SAME_TYPE", {"map<int32, bool> dynamic": "map<int32, int32> dynamic"}),
    ("FIELD_SAME_TYPE", {"map<string, RuleSpec>": "map<int32, RuleSpec>"}),
    ("FIELD_SAME_CARDINALITY", {"optional string link_text": "required string link_text"}),
    ("FIELD_SAME_CARDINALITY", {"required Scheme scheme": "optional Scheme scheme"}),
    ("FIELD_SAME_CARDINALITY", {"optional ArgList args = 2;": "repeated ArgList args = 2;"}),
    ("MESSAGE_SAME_REQUIRED_FIELDS",
     {"repeated string msg = 1;": "repeated string msg = 1; required int32 count = 2;"}),
    ("FIELD_SAME_DEFAULT", {" [default = SEV_ADVISORY]": ""}),
    ("FIELD_SAME_DEFAULT", {"int32 pid = 2;": "int32 pid = 2 [default = 1];"}),
    ("FIELD_SAME_DEFAULT", {"[default = ENABLED]": "[default = NEW]"}),
    ("FIELD_SAME_ONEOF", {"optional int32 noop = 1;": "oneof body { int32 noop = 1; }"}),
    ("FIELD_SAME_CPP_STRING_TYPE", {"repeated string msg = 1;": "repeated string msg = 1 [ctype = CORD];"}),
    ("", {"string host = 2;": "string path = 4;", "string path = 4;": "string host = 2;"}),
    ("", {"repeated Link uri = 1;": "optional int32 count = 2; repeated Link uri = 1;"}),
    ("", {"repeated string msg = 1;": "repeated string msg = 1; extensions 100 to 199;"}),
    ("",
     {"message ErrorResponse {": "message StatusResponse {",
      "message StatusResponse {": "message ErrorResponse {"}),
    ("", {"MAILTO = 6;": "MAILTO = 6; MAIL = 6; option allow_alias = true;"}),
    ("", {"FTP = 2;": "HTTP = 3;", "HTTP = 3;": "FTP = 2;"}),
    ("",
     {"rpc startSession(Session) returns (Session)": "rpc getSession(GetSession) returns (Session)",
      "rpc getSession(GetSession) returns (Session)": "rpc startSession(Session) returns (Session)"}),
    ("", {"MINOR = 4;": "MINOR = 3;"}),
    ("", {"MAJOR = 1;": "MAJOR = 2;"}),
    ("MESSAGE_NO_DELETE",
     {"message GetVersion {": "message AskVersion {",
      "optional GetVersion get_version": "optional AskVersion get_version"}),
    ("ENUM_VALUE_NO_DELETE", {"NODISABLE = 6;": "NODISABLE = 7;"}),
    ("ENUM_VALUE_NO_DELETE", {"STOP_SERVER = 15;": ""}),
    ("ENUM_VALUE_SAME_NAME", {"IRC = 5;": "CHAT = 5;"}),
    ("ENUM_VALUE_SAME_NAME", {"SEV_FATAL = 0;": "SEV_FATAL = 1;", "SEV_ERROR = 1;": "SEV_ERROR = 0;"}),
    ("ENUM_NO_DELETE",
     {"enum Disposition {": "enum State {",
      "optional Disposition disposition": "optional State disposition"}),
    ("RPC_NO_DELETE", {"rpc stopServer(ExchangeToken) returns (StatusResponse);": ""}),
    ("RPC_NO_DELETE", {"rpc dumpRules(": "rpc writeRules("}),
    ("RPC_SAME_REQUEST_TYPE", {"getSessionResult(Session)": "getSessionResult(GetSessionResult)"}),
    ("RPC_SAME_RESPONSE_TYPE",
     {"getVersion(EmptyMessage) returns (Version)": "getVersion(EmptyMessage) returns (StatusResponse)"}),
    ("RPC_SAME_SERVER_STREAMING",
     {"getSession(GetSession) returns (Session)": "getSession(GetSession) returns (stream Session)"}),
    ("SERVICE_NO_DELETE", {"service RuleCheckService {": "service RuleCheck {"}),
    ("FILE_SAME_PACKAGE", {"package vok.rulecheck;": "package vok.rules;"}),
    ("FILE_SAME_JAVA_PACKAGE", {'"ui.vok.rulecheck.pb"': '"vok.rulecheck.pb"'}),
]

PERMITTED = [
    {},
    {"// A list of links.": "// Links, in order."},
    {"repeated Link uri = 1;": "repeated Link uri = 1; optional int32 count = 2;"},
    {"optional int32 noop = 1;": "optional int32 noop = 1; repeated string notes = 7;"},
    {"repeated string msg = 1;": "repeated string msg = 1; map<int32, string> notes = 2;"},
    {"enum ActualVersion {": "message Note { required string text = 1; } enum ActualVersion {"},
    {"MAILTO = 6;": "MAILTO = 6; SFTP = 7;"},
    {"rpc stopServer(ExchangeToken) returns (StatusResponse);": "rpc stopServer(ExchangeToken) returns (StatusResponse); rpc ping(EmptyMessage) returns (EmptyMessage);"},
    {"MINOR = 4;": "MINOR = 5;"},
    {"PATCH = 0;": "PATCH = 1; option allow_alias = true;"},
]


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
        for _, edits in BREAKING:
            with self.subTest(str(edits)):
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

    def test_finds_each_breaking_change_that_it_has_a_rule_for(self):
        for rule, edits in BREAKING:
            with self.subTest(str(edits)):
                found = self.broken_rules(edits)
                self.assertTrue(rule in found if rule else not found, found)

    def test_allows_permitted_changes(self):
        for edits in PERMITTED:
            with self.subTest(str(edits)):
                self.assertEqual(self.broken_rules(edits), {})


if __name__ == "__main__":
    unittest.main()
