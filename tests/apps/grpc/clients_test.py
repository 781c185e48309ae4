# SPDX-License-Identifier: Apache-2.0

"""Clients in several languages at once: no finding is lost or doubled."""

import collections
import os
import pathlib
import re
import subprocess
import sys
import unittest

from certificates import Certificates
from servers import ENDED_WELL, GRPC_LINT_CLIENT, SCHEMA, Server, ServerTest

HERE = pathlib.Path(__file__).parent
LANGUAGES = {
    "C++": [os.environ["FINDER"]],
    "Python": [sys.executable, "-B", HERE / "reporting_client.py"],
    "JavaScript": [os.environ["NODE"], HERE / "reporting_client.mjs"],
}


class ClientsTest(ServerTest):
    @classmethod
    def setUpClass(cls):
        cls.certificates = Certificates(cls)

    def setUp(self):
        super().setUp()
        self.server = Server(self, "--files", ".", *self.certificates.server_options())
        self.client = self.channel(
            self.server.address, self.certificates.credentials(),
            [("grpc.max_receive_message_length", 64 << 20)])
        self.shared = self.client.start("shared")

    def reporting_client(self, language, name, count):
        process = subprocess.Popen(
            [*LANGUAGES[language], self.server.address, *self.certificates.client_files(),
             self.shared, name, str(count)],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env={**os.environ, "SCHEMA": str(SCHEMA)})
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def acknowledged(self, output):
        """What a reporting_client printed: the marks by number, by session."""
        sessions = collections.defaultdict(dict)
        for line in output.splitlines():
            session, number, mark = line.split()
            self.assertNotIn(int(number), sessions[session])
            sessions[session][int(number)] = mark
        return sessions


class SeveralClients(ClientsTest):
    COUNT = 300

    def test_lose_no_finding_and_double_none(self):
        finders = {f"{language}-{i}": self.reporting_client(language, f"{language}-{i}", self.COUNT)
                   for language, number in [("C++", 2), ("Python", 1), ("JavaScript", 1)]
                   for i in range(number)}
        expected = collections.defaultdict(dict)
        for name, reporting_client in finders.items():
            output, errors = reporting_client.communicate(timeout=120)
            self.assertEqual((reporting_client.returncode, errors), (0, ""), name)
            for session, marks in self.acknowledged(output).items():
                self.assertEqual(len(marks), self.COUNT, name)
                self.assertFalse(marks.keys() & expected[session].keys())
                expected[session].update(marks)
        self.assertEqual(len(expected), 1 + len(finders))
        found = {session: self.client.found(session) for session in expected}
        self.assertEqual(found, expected)
        self.assertEqual(len(found[self.shared]), self.COUNT * len(finders))
        print(sum(map(len, expected.values())), "findings acknowledged,",
              sum(map(len, found.values())), "found")
        self.assertEqual(self.server.stop(), ENDED_WELL)

    def test_that_are_killed_leave_what_was_acknowledged(self):
        finders = {language: self.reporting_client(language, language, 10 ** 6) for language in LANGUAGES}
        for language, reporting_client in finders.items():
            lines = [reporting_client.stdout.readline() for _ in range(60)]
            reporting_client.kill()
            output = "".join(lines) + reporting_client.stdout.read()
            with self.subTest(language):
                sessions = self.acknowledged(output)
                self.assertEqual(len(sessions), 2)
                unacknowledged = 0
                for session, marks in sessions.items():
                    found = {number: mark for number, mark in self.client.found(session).items()
                             if mark.startswith(f"{language}-")}
                    self.assertEqual(len(set(found.values())), len(found))
                    self.assertLessEqual(marks.items(), found.items())
                    unacknowledged += len(found) - len(marks)
                self.assertLessEqual(unacknowledged, 1)
        self.assertEqual(self.client.call("getVersion").minor, 4)
        self.assertEqual(self.server.stop(), ENDED_WELL)


class LintClient(ClientsTest):
    def test_reports_what_lint_client_reports(self):
        recorded = pathlib.Path(os.environ["RECORDED"], "narrow.txt").read_text(encoding="utf-8")
        said = self.write("said", recorded.replace("narrow.v:", "0/narrow.v:"))
        verilator = self.write("verilator", f"#!/bin/sh\ncat '{said}' >&2\n")
        verilator.chmod(0o755)
        self.write("narrow.v", "module m; endmodule\n")
        options = ["narrow.v", "--verilator", verilator, "--text", "--waive", "UNDRIVEN=later"]
        results = []
        for words in [[os.environ["LINT_CLIENT"], *options, "--output", "."],
                      [GRPC_LINT_CLIENT, *options, "--server", self.server.address,
                       *self.certificates.client_options(), "--output", self.folder]]:
            ended = self.run_program(*words)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            counts = ended.stdout.split(" requests travelled")[0]
            session = self.folder / "session.txtpb"
            report = self.folder / "report.html"
            results.append((counts, *map(self.comparable, (session, report))))
            session.unlink()
            report.unlink()
        self.assertEqual(results[0], results[1])
        self.assertIn("waived                1", results[0][0])
        self.assertIn("violation_count: 3", results[0][1])

    def comparable(self, path):
        """The content without the session's id and time."""
        text = path.read_text(encoding="utf-8")
        text, ids = re.subn(r"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", "ID", text)
        text, times = re.subn(r"timestamp: \d+|\d{4}-\d\d-\d\d[ T]\d\d:\d\d:\d\d", "TIME", text)
        self.assertGreaterEqual(min(ids, times), 1, path)
        return text


if __name__ == "__main__":
    unittest.main()
