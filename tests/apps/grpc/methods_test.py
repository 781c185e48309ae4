# SPDX-License-Identifier: Apache-2.0

"""What the methods answer."""

import unittest

from google.protobuf import text_format
from servers import METHODS, Server, ServerTest, protocol

SESSION = 'name: "n" uuid: "s"'
FILE = 'data_file { scheme: FILE path: "r.pb" }'
FILES = 'report_file { scheme: FILE path: "r.html" } proto_file { scheme: FILE path: "s.pb" }'
FINDING = 'rule_key: "W" session_uuid: "s"'

# In the order of the calls: method, argument, answer without the time.
CALLS = [
    ("getVersion", '', 'major: 1 minor: 4 patch: 0'),
    ("exchangeToken", 'token: "secret"', 'code: 0 msg: "token accepted"'),
    ("upsertRuleSpec", 'key: "W" full_name: "Widths"', 'code: 0 msg: "rule stored"'),
    ("dumpRules", FILE, 'code: 0 msg: "1 rule written"'),
    ("loadRuleDataFile", FILE, 'code: 0 msg: "1 rule loaded, 0 rules skipped"'),
    ("startSession", f'{SESSION} description: "d" timestamp: 5 build_target: "t" {FILES}',
     f'{SESSION} description: "d" {FILES}'),
    ("getSession", 'session_uuid: "s"', f'{SESSION} description: "d" {FILES}'),
    ("createAffirmation", FINDING, 'id: 1 rule_key: "W" details { text: "Widths" }'),
    ("createViolation", f'{FINDING} severity: SEV_ERROR',
     'id: 2 rule_key: "W" details { text: "Widths" } severity: SEV_ERROR'),
    ("writeReport", 'name: "" uuid: "s"', 'code: 0 msg: "report written"'),
    ("resetSession", 'name: "" uuid: "s"', 'code: 0 msg: "session reset"'),
    ("getSessionResult", 'name: "another" uuid: "s"',
     f'session {{ {SESSION} description: "d" {FILES} }} violation_count: 0 waived_count: 0'
     ' affirmation_count: 0 violations { } waived_violations { } affirmations { }'),
    ("stopSession", 'name: "" uuid: "s"', 'code: 0 msg: "session stopped"'),
    ("stopServer", 'token: "secret"', 'code: 0 msg: "server stopped"'),
]


class Methods(ServerTest):
    def test_answer_with_the_body_of_the_response(self):
        server = Server(self, "--files", ".", environment={"RULE_SERVER_TOKEN": "secret"})
        client = self.channel(server.address)
        self.assertEqual({method for method, _, _ in CALLS}, METHODS.keys())
        for method, argument, expected in CALLS:
            with self.subTest(method):
                argument_type, answer_type = METHODS[method]
                content = text_format.Parse(argument, argument_type())
                answer = answer_type.FromString(client.send(method, content))
                for session in (answer, getattr(answer, "session", None)):
                    if isinstance(session, protocol.Session):
                        session.ClearField("timestamp")
                self.assertEqual(answer, text_format.Parse(expected, answer_type()))

    def test_answer_errors_with_statuses(self):
        client = self.channel(Server(self).address)
        for method, argument, expected in [
                ("getSession", 'session_uuid: "s"', ("NOT_FOUND", 'there is no session "s"')),
                ("dumpRules", FILE,
                 ("FAILED_PRECONDITION", "this server was given no directory for files"))]:
            content = text_format.Parse(argument, METHODS[method][0]())
            self.assertEqual(client.refusal(method, content), expected)


if __name__ == "__main__":
    unittest.main()
