# SPDX-License-Identifier: Apache-2.0

"""Several clients at once: no finding is lost or doubled."""

import collections
import json
import os
import pathlib
import re
import subprocess
import unittest

from certificates import Certificates
from servers import RULECHECK, SCHEMA, Server, ServerTest, protocol

JAVASCRIPT = [os.environ["NODE"], pathlib.Path(__file__).with_name("reporting_client.mjs")]


class ClientsTest(ServerTest):
    @classmethod
    def setUpClass(cls):
        cls.certificates = Certificates(cls)

    def setUp(self):
        super().setUp()
        self.server = Server(self, "--files", ".", *self.certificates.server_options())
        self.client = self.channel(self.server.address, self.certificates.credentials(),
                                   [("grpc.max_receive_message_length", 64 << 20)])
        self.shared = self.client.start("shared")


class SeveralClients(ClientsTest):
    COUNT = 100

    def reporting(self, name, count):
        """A client in JavaScript, which prints what was acknowledged."""
        process = subprocess.Popen(
            [*JAVASCRIPT, self.server.address, *self.certificates.client_files(), self.shared, name,
             str(count)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env={**os.environ, "SCHEMA": str(SCHEMA)})
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    @staticmethod
    def acknowledged(*outputs):
        """The marks by number, by session."""
        sessions = collections.defaultdict(dict)
        for line in "".join(outputs).splitlines():
            session, number, mark = line.split()
            assert int(number) not in sessions[session], line
            sessions[session][int(number)] = mark
        return sessions

    def test_lose_no_finding_and_double_none(self):
        outputs = []
        for process in [self.reporting(f"c{i}", self.COUNT) for i in range(4)]:
            output, errors = process.communicate(timeout=120)
            self.assertEqual((process.returncode, errors), (0, ""))
            outputs.append(output)
        expected = self.acknowledged(*outputs)
        self.assertEqual({session: self.client.found(session) for session in expected}, expected)
        self.assertEqual(len(expected), 5)
        self.assertEqual(len(expected[self.shared]), 4 * self.COUNT)

    def test_that_are_killed_leave_what_was_acknowledged(self):
        process = self.reporting("killed", 10 ** 6)
        lines = [process.stdout.readline() for _ in range(60)]
        process.kill()
        sessions = self.acknowledged(*lines, process.stdout.read())
        found = {session: self.client.found(session) for session in sessions}
        self.assertEqual(len(sessions), 2)
        for session, marks in sessions.items():
            self.assertLessEqual(marks.items(), found[session].items())
        self.assertLessEqual(
            sum(map(len, found.values())), 1 + sum(map(len, sessions.values())))


class Results(ClientsTest):
    def setUp(self):
        super().setUp()
        self.remote = ["--server", self.server.address, *self.certificates.client_options()]

    def lint(self, *options):
        verilator = self.verilator_saying(pathlib.Path(os.environ["RECORDED"], "narrow.txt"))
        self.write("waivers", "UNDRIVEN * -- later\n")
        ended = self.run_program(RULECHECK, "lint", "--verilator", verilator, "--waivers", "waivers",
                                 *options, "--", "narrow.v")
        self.assertEqual(ended.returncode, 0, ended.stderr)

    def send(self, result, *options):
        """The result of the session in which the server has recorded another result."""
        ended = self.run_program(RULECHECK, "send", result, *self.remote, *options)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        return self.client.call("getSessionResult", name="", uuid=ended.stdout.removesuffix("\n"))

    def test_are_the_same_with_and_without_a_server(self):
        self.lint("-o", "local.pb")
        local = self.comparable("local.pb")
        self.assertIn("violation_count: 3", local)
        self.lint("-o", "remote.pb", *self.remote)
        self.assertEqual(self.comparable("remote.pb"), local)
        (self.folder / "sent.pb").write_bytes(self.send("local.pb").SerializeToString())
        self.assertEqual(self.comparable("sent.pb"), local)
        for report in [lambda *options: self.lint(*self.remote, *options),
                       lambda *options: self.send("local.pb", *options)]:
            report("--server-output", self.folder)
            self.assertEqual(self.comparable("session.pb"), local)
            (self.folder / "session.pb").unlink()
            (self.folder / "report.html").unlink()

    def test_of_other_tools_keep_what_they_say(self):
        self.write("other.json", json.dumps({
            "session": {"name": "other"},
            "violations": {"hashmap": {
                "7": {"id": 7, "severity": "SEV_UNKNOWN", "ruleKey": "free",
                      "actualValue": {"intVal": 3}, "thresholdValue": {"intVal": 2},
                      "details": {"text": "%1 is wide", "args": {"arg": [{"stringVal": "w"}]}},
                      "resolution": {"text": "Cut it."}, "categories": {"3": "own", "4": "lost"}}}},
            "waivedViolations": {"hashmap": {"5": {"id": 5, "severity": "SEV_ERROR", "ruleKey": "old"}}},
            "affirmations": {"hashmap": {
                "1": {"id": 1, "ruleKey": "met", "details": {"text": "All are named."}}}},
            "specsViolated": {"hashmap": {"free": {
                "key": "free", "fullName": "Free", "dynamicCategories": {"3": True, "4": False}}}}}))
        sent = self.send("other.json")
        self.assertEqual(sent.session.name, "other")
        violation = sent.violations.hashmap[2]
        self.assertEqual(
            (violation.severity, violation.rule_key, violation.actual_value.int_val,
             violation.threshold_value.int_val, violation.details.text,
             violation.details.args.arg[0].string_val, violation.resolution.text,
             dict(violation.categories)),
            (protocol.Violation.SEV_UNKNOWN, "free", 3, 2, "%1 is wide", "w", "Cut it.", {3: "own"}))
        waived = sent.waived_violations.hashmap[1]
        self.assertEqual((waived.severity, waived.rule_key, waived.details.text, dict(waived.categories)),
                         (protocol.Violation.SEV_ERROR, "old", "old", {1: "no reason given"}))
        self.assertEqual([affirmation.details.text for affirmation in sent.affirmations.hashmap.values()],
                         ["All are named."])

    def comparable(self, name):
        """The content without the session's id, time and files."""
        text = str(protocol.SessionResult.FromString((self.folder / name).read_bytes()))
        text = re.sub(r"  (report|proto)_file \{.*?\n  \}\n", "", text, flags=re.S)
        text, ids = re.subn(r"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", "ID", text)
        text, times = re.subn(r"timestamp: \d+|\d{4}-\d\d-\d\d[ T]\d\d:\d\d:\d\d", "TIME", text)
        self.assertGreaterEqual(min(ids, times), 1, name)
        return text

    def test_with_a_rule_that_is_read_only_in_the_server_are_refused(self):
        self.write("fixed.json", json.dumps({
            "session": {"name": "n"}, "specsViolated": {"hashmap": {
                "F": {"key": "F", "fullName": "F", "disposition": "READONLY"}}}}))
        self.send("fixed.json")
        self.assert_refused(self.run_program(RULECHECK, "send", "fixed.json", *self.remote),
                            'rulecheck: the server answered: rule "F" is read-only')


if __name__ == "__main__":
    unittest.main()
