"""The schema against the released one: changes that break programs are found, others are not."""

import json
import os
import pathlib
import re
import typing
import unittest

import schema
from program_test import ProgramTest

RELEASED = next(pathlib.Path(__file__).resolve().parent.glob("released-*.binpb"))
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
PROTOC = os.environ["PROTOC"]
DESCRIPTOR_DIR = os.environ["DESCRIPTOR_DIR"]
BUF = os.environ.get("BUF")


class Breaking(typing.NamedTuple):
    """A change of the schema that breaks programs."""
    what: str
    edits: dict  # the texts to replace in a copy of the schema
    sentence: str  # what must be said of it
    rule: str = ""  # the rule of buf that it breaks, if there is one


BREAKING = [
    Breaking("a field is renumbered", {"int32 port = 3;": "int32 port = 30;"},
             "field Resource.port: number changed from 3 to 30", "FIELD_NO_DELETE"),
    Breaking("two fields exchange their numbers",
             {"int_val = 1;": "int_val = 2;", "double_val = 2;": "double_val = 1;"},
             "field Scalar.int_val: number changed from 1 to 2", "FIELD_SAME_NAME"),
    Breaking("a field is renamed", {"string rule_key = 3;": "string key = 3;"},
             "field Violation.rule_key is gone: its number 3 is that of Violation.key",
             "FIELD_SAME_NAME"),
    Breaking("a field is removed", {"optional int32 noop = 1;": ""},
             "field EmptyMessage.noop is gone", "FIELD_NO_DELETE"),
    Breaking("a field is removed and its number reserved",
             {"optional int32 noop = 1;": "reserved 1;"},
             "field EmptyMessage.noop is gone", "FIELD_NO_DELETE"),
    Breaking("a field is widened", {"int32 port = 3;": "int64 port = 3;"},
             "field Resource.port: type changed from INT32 to INT64", "FIELD_SAME_TYPE"),
    Breaking("text becomes bytes", {"optional string data = 9;": "optional bytes data = 9;"},
             "field Resource.data: type changed from STRING to BYTES", "FIELD_SAME_TYPE"),
    Breaking("a field becomes another message", {"optional Links uris = 4;": "optional Link uris = 4;"},
             "field Arg.uris: type name changed from vok.rulecheck.Links to vok.rulecheck.Link",
             "FIELD_SAME_TYPE"),
    Breaking("the values of a map change their type",
             {"map<int32, bool> dynamic": "map<int32, int32> dynamic"},
             "field RuleSpec.DynamicCategoriesEntry.value: type changed from BOOL to INT32",
             "FIELD_SAME_TYPE"),
    Breaking("the keys of a map change their type",
             {"map<string, RuleSpec>": "map<int32, RuleSpec>"},
             "field RuleSpecMap.HashmapEntry.key: type changed from STRING to INT32",
             "FIELD_SAME_TYPE"),
    Breaking("an optional field becomes required",
             {"optional string link_text": "required string link_text"},
             "field Link.link_text: label changed from OPTIONAL to REQUIRED",
             "FIELD_SAME_CARDINALITY"),
    Breaking("a required field becomes optional",
             {"required Scheme scheme": "optional Scheme scheme"},
             "field Resource.scheme: label changed from REQUIRED to OPTIONAL",
             "FIELD_SAME_CARDINALITY"),
    Breaking("an optional field becomes repeated",
             {"optional ArgList args = 2;": "repeated ArgList args = 2;"},
             "field MsgInst.args: label changed from OPTIONAL to REPEATED", "FIELD_SAME_CARDINALITY"),
    Breaking("a required field is new",
             {"repeated string msg = 1;": "repeated string msg = 1; required int32 count = 2;"},
             "field StringList.count is new and required", "MESSAGE_SAME_REQUIRED_FIELDS"),
    Breaking("a default is dropped", {" [default = SEV_ADVISORY]": ""},
             "field Violation.severity: default value changed from SEV_ADVISORY to nothing",
             "FIELD_SAME_DEFAULT"),
    Breaking("a default is added", {"int32 pid = 2;": "int32 pid = 2 [default = 1];"},
             "field StartSession.pid: default value changed from nothing to 1", "FIELD_SAME_DEFAULT"),
    Breaking("a default is changed", {"[default = ENABLED]": "[default = NEW]"},
             "field RuleSpec.disposition: default value changed from ENABLED to NEW",
             "FIELD_SAME_DEFAULT"),
    Breaking("a field moves into a oneof",
             {"optional int32 noop = 1;": "oneof body { int32 noop = 1; }"},
             "field EmptyMessage.noop: oneof index changed from nothing to 0", "FIELD_SAME_ONEOF"),
    Breaking("a field gets an option", {"repeated string msg = 1;":
                                        "repeated string msg = 1 [ctype = CORD];"},
             "field StringList.msg: options changed from nothing to {'ctype': ['CORD']}",
             "FIELD_SAME_CPP_STRING_TYPE"),
    Breaking("two fields exchange their places",
             {"string host = 2;": "string path = 4;", "string path = 4;": "string host = 2;"},
             "message Resource: field 2 was host and is path"),
    Breaking("a new field stands before the others",
             {"repeated Link uri = 1;": "optional int32 count = 2; repeated Link uri = 1;"},
             "message Links: field 1 was uri and is count"),
    Breaking("a message may be extended",
             {"repeated string msg = 1;": "repeated string msg = 1; extensions 100 to 199;"},
             "message StringList: extension range changed from nothing to"
             " {'start': ['100'], 'end': ['200']}"),
    Breaking("a message is renamed",
             {"message GetVersion {": "message AskVersion {",
              "optional GetVersion get_version": "optional AskVersion get_version"},
             "message GetVersion is gone", "MESSAGE_NO_DELETE"),
    Breaking("two messages exchange their places",
             {"message ErrorResponse {": "message StatusResponse {",
              "message StatusResponse {": "message ErrorResponse {"},
             "the file: message 20 was ErrorResponse and is StatusResponse"),
    Breaking("a value is renumbered", {"NODISABLE = 6;": "NODISABLE = 7;"},
             "value RuleSpec.Disposition.NODISABLE: number changed from 6 to 7",
             "ENUM_VALUE_NO_DELETE"),
    Breaking("a value is renamed", {"IRC = 5;": "CHAT = 5;"},
             "value Resource.Scheme.IRC is gone: its number 5 is that of Resource.Scheme.CHAT",
             "ENUM_VALUE_SAME_NAME"),
    Breaking("a value is removed", {"STOP_SERVER = 15;": ""},
             "value Request.RequestType.STOP_SERVER is gone", "ENUM_VALUE_NO_DELETE"),
    Breaking("a value's number is used again",
             {"MAILTO = 6;": "MAILTO = 6; MAIL = 6; option allow_alias = true;"},
             "enumeration Resource.Scheme: options changed from nothing to {'allow_alias': ['true']}"),
    Breaking("two values exchange their numbers",
             {"SEV_FATAL = 0;": "SEV_FATAL = 1;", "SEV_ERROR = 1;": "SEV_ERROR = 0;"},
             "value Violation.Severity.SEV_FATAL: number changed from 0 to 1", "ENUM_VALUE_SAME_NAME"),
    Breaking("two values exchange their places",
             {"FTP = 2;": "HTTP = 3;", "HTTP = 3;": "FTP = 2;"},
             "enumeration Resource.Scheme: value 3 was FTP and is HTTP"),
    Breaking("an enumeration is renamed",
             {"enum Disposition {": "enum State {",
              "optional Disposition disposition": "optional State disposition"},
             "enumeration RuleSpec.Disposition is gone", "ENUM_NO_DELETE"),
    Breaking("a method is removed", {"rpc stopServer(ExchangeToken) returns (StatusResponse);": ""},
             "method RuleCheckService.stopServer is gone", "RPC_NO_DELETE"),
    Breaking("a method is renamed", {"rpc dumpRules(": "rpc writeRules("},
             "method RuleCheckService.dumpRules is gone", "RPC_NO_DELETE"),
    Breaking("a method gets another argument", {"getSessionResult(Session)":
                                                "getSessionResult(GetSessionResult)"},
             "method RuleCheckService.getSessionResult: input type changed from vok.rulecheck.Session"
             " to vok.rulecheck.GetSessionResult", "RPC_SAME_REQUEST_TYPE"),
    Breaking("a method gets another result",
             {"getVersion(EmptyMessage) returns (Version)":
              "getVersion(EmptyMessage) returns (StatusResponse)"},
             "method RuleCheckService.getVersion: output type changed from vok.rulecheck.Version"
             " to vok.rulecheck.StatusResponse", "RPC_SAME_RESPONSE_TYPE"),
    Breaking("a method streams its results", {"getSession(GetSession) returns (Session)":
                                              "getSession(GetSession) returns (stream Session)"},
             "method RuleCheckService.getSession: server streaming changed from nothing to true",
             "RPC_SAME_SERVER_STREAMING"),
    Breaking("two methods exchange their places",
             {"rpc startSession(Session) returns (Session)":
              "rpc getSession(GetSession) returns (Session)",
              "rpc getSession(GetSession) returns (Session)":
              "rpc startSession(Session) returns (Session)"},
             "service RuleCheckService: method 6 was startSession and is getSession"),
    Breaking("the service is renamed", {"service RuleCheckService {": "service RuleCheck {"},
             "service RuleCheckService is gone", "SERVICE_NO_DELETE"),
    Breaking("the version falls", {"MINOR = 4;": "MINOR = 3;"},
             "the version was MAJOR 1, MINOR 4, PATCH 0 and is MAJOR 1, MINOR 3, PATCH 0"),
    Breaking("the major version rises", {"MAJOR = 1;": "MAJOR = 2;"},
             "the version was MAJOR 1, MINOR 4, PATCH 0 and is MAJOR 2, MINOR 4, PATCH 0"),
    Breaking("the file gets another package", {"package vok.rulecheck;": "package vok.rules;"},
             "the file: package changed from vok.rulecheck to vok.rules", "FILE_SAME_PACKAGE"),
    Breaking("the file's option changes", {'"ui.vok.rulecheck.pb"': '"vok.rulecheck.pb"'},
             "the file: options changed from {'java_package': ['ui.vok.rulecheck.pb']}"
             " to {'java_package': ['vok.rulecheck.pb']}", "FILE_SAME_JAVA_PACKAGE"),
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


def edited(edits):
    """The schema with each of the texts replaced; it has each of them once."""
    text, count = re.subn("|".join(map(re.escape, edits)) or r"\Z", lambda found: edits.get(found[0], ""),
                          SCHEMA.read_text(encoding="utf-8"))
    if count != max(len(edits), 1):
        raise ValueError(f"{count} of {len(edits)} places found: {edits}")
    return text


class SchemaTest(ProgramTest):
    def descriptor_of(self, edits):
        return schema.compile_schema(PROTOC, self.write(SCHEMA.name, edited(edits)))


class Compatibility(SchemaTest):
    def changes(self, edits):
        return schema.breaking_changes(*(schema.read_schema(PROTOC, DESCRIPTOR_DIR, descriptor) for
                                         descriptor in (RELEASED.read_bytes(), self.descriptor_of(edits))))

    def test_nothing_that_was_released_is_broken(self):
        self.assertEqual("\n".join(self.changes({})), "")

    def test_each_breaking_change_is_said(self):
        for change in BREAKING:
            with self.subTest(change.what):
                self.assertIn(change.sentence, self.changes(change.edits))

    def test_permitted_changes_break_nothing(self):
        for what, edits in PERMITTED.items():
            with self.subTest(what):
                self.assertEqual(self.changes(edits), [])


@unittest.skipUnless(BUF, "buf is used where all tests run")
class SecondOpinion(SchemaTest):
    """buf, which knows what breaks protocols in general, but nothing of order and versions."""

    def broken_rules(self, edits):
        present = self.folder / "present.binpb"
        present.write_bytes(self.descriptor_of(edits))
        ended = self.run_program(BUF, "breaking", present, "--against", RELEASED, "--error-format",
                                 "json", "--config", '{"version": "v2", "breaking": {"use": ["FILE"]}}')
        self.assertEqual(ended.stderr, "")
        findings = [json.loads(line) for line in ended.stdout.splitlines()]
        self.assertEqual(ended.returncode, 100 if findings else 0, ended.stdout)
        return {finding["type"]: finding["message"] for finding in findings
                if f'enum "{schema.VERSION}"' not in finding["message"]}

    def test_nothing_that_was_released_is_broken(self):
        self.assertEqual("\n".join(self.broken_rules({}).values()), "")

    def test_each_breaking_change_that_a_rule_is_about_is_found(self):
        for change in BREAKING:
            if change.rule:
                with self.subTest(change.what):
                    self.assertIn(change.rule, self.broken_rules(change.edits))

    def test_permitted_changes_break_no_rule(self):
        for what, edits in PERMITTED.items():
            with self.subTest(what):
                self.assertEqual(self.broken_rules(edits), {})


if __name__ == "__main__":
    unittest.main()
