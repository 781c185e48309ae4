# SPDX-License-Identifier: Apache-2.0

"""The command line of lint_client, with a stand-in for Verilator."""

import os
import pathlib
import signal
import subprocess
import time
import unittest

from programs import LINT_CLIENT, RECORDED, ProgramTest

MODULE = "module m; endmodule\n"


class BadArguments(ProgramTest):
    def test_no_arguments(self):
        self.assert_refused(self.run_program(LINT_CLIENT), "lint_client: FILES is required")

    def test_missing_file(self):
        self.assert_refused(
            self.run_program(LINT_CLIENT, "missing.v"),
            "lint_client: FILES: File does not exist: missing.v")

    def test_names_with_control_characters(self):
        for name, shown in [("a\nb\x1b[31m.v", "a?b?[31m.v"), ("\u202ev.a", "?v.a"), ("\x85\x7f", "??")]:
            self.assert_refused(
                self.run_program(LINT_CLIENT, name),
                f"lint_client: FILES: File does not exist: {shown}")

    def test_bad_waivers(self):
        self.write("m.v", MODULE)
        for waiver in ["", "WIDTH", "WIDTH=", "=reason", ":a.v=reason", "WIDTH:=reason", "WIDTH:a.v", "WIDTH:a.v="]:
            with self.subTest(waiver):
                self.assert_refused(
                    self.run_program(LINT_CLIENT, "m.v", "--waive", waiver),
                    f"lint_client: --waive {waiver}: expected RULE[:FILE]=REASON")

    def test_missing_verilator(self):
        self.write("m.v", MODULE)
        for program in ["./missing", "no-such-verilator"]:
            ended = self.run_program(LINT_CLIENT, "m.v", "--verilator", program)
            self.assertRegex(
                ended.stderr,
                rf"\Alint_client: .*{program.lstrip('./')}: cannot be run: "
                r"No such file or directory\n\Z")
            self.assertEqual(ended.returncode, 2)

    def test_output_that_is_a_file(self):
        self.write("m.v", MODULE)
        ended = self.run_program(
            LINT_CLIENT, "m.v", "--verilator", self.fake_verilator(""), "--output", "m.v")
        self.assertEqual(len(ended.stderr.splitlines()), 1, ended.stderr)
        self.assertRegex(ended.stderr, r"\Alint_client: .*m\.v")
        self.assertEqual(ended.returncode, 2)

    def test_help(self):
        ended = self.run_program(LINT_CLIENT, "--help")
        self.assertEqual(ended.returncode, 0)
        for option in ["--output", "--text", "--top", "--verilator", "--waive", "FILES"]:
            self.assertIn(option, ended.stdout)


class BadDesigns(ProgramTest):
    def lint(self, output, status=1):
        self.write("rtl/m.v", MODULE)
        program = self.fake_verilator(output, status)
        return self.run_program(
            LINT_CLIENT, "rtl/m.v", "--verilator", program, "--output", "report")

    def test_syntax_error(self):
        output = (RECORDED / "syntax.txt").read_text(encoding="utf-8")
        self.assert_refused(
            self.lint(output.replace("syntax.v", "0/m.v")),
            "lint_client: rtl/m.v:2:14: Define or directive not defined: '`NOT_DEFINED'")
        self.assertFalse((self.folder / "report").exists())

    def test_syntax_error_in_an_included_file(self):
        self.assert_refused(
            self.lint("%Error: in0/m.vh:3:4: syntax error, unexpected end\n"),
            "lint_client: rtl/m.vh:3:4: syntax error, unexpected end")

    def test_missing_top(self):
        self.assert_refused(
            self.lint((RECORDED / "no_top.txt").read_text(encoding="utf-8")),
            "lint_client: Specified --top-module 'nothing' was not found in design.")

    def test_verilator_that_fails_without_a_message(self):
        ended = self.lint("first\nlast words\n", 3)
        self.assertRegex(ended.stderr, r"\Alint_client: .*fake verilator failed: last words\n\Z")
        self.assertEqual(ended.returncode, 2)


class Signals(ProgramTest):
    def test_leave_no_folder_and_no_process(self):
        self.write("m.v", MODULE)
        temporary = self.folder / "tmp"
        temporary.mkdir()
        os.mkfifo(self.folder / "ready")
        program = self.fake_verilator("")
        program.write_text(
            f"#!/bin/sh\nsleep 60 &\necho $! > '{self.folder}/ready'\nsleep 60\n", encoding="utf-8")
        for number in [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM]:
            with self.subTest(number):
                client = subprocess.Popen(
                    [LINT_CLIENT, "m.v", "--verilator", program], cwd=self.folder,
                    env={**os.environ, "TMPDIR": str(temporary)}, stderr=subprocess.DEVNULL)
                child = int((self.folder / "ready").read_text(encoding="utf-8"))
                self.assertEqual(len(list(temporary.iterdir())), 1)
                client.send_signal(number)
                self.assertEqual(client.wait(10), -number)
                self.assertEqual(list(temporary.iterdir()), [])
                self.assertFalse(self.runs(child))

    def runs(self, process):
        """Whether it does, a second at most after it was killed."""
        for _ in range(100):
            try:
                state = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="utf-8")
            except FileNotFoundError:
                return False
            if state.rsplit(")", 1)[1].split()[0] == "Z":
                return False
            time.sleep(0.01)
        return True


class Findings(ProgramTest):
    def lint(self, output, *options, status=0):
        self.write("rtl/narrow.v", MODULE)
        program = self.fake_verilator(output.replace("narrow.v:", "0/narrow.v:"), status)
        return self.run_program(
            LINT_CLIENT, "rtl/narrow.v", "--verilator", program, "--output", "some/report",
            *options)

    def narrow(self):
        return (RECORDED / "narrow.txt").read_text(encoding="utf-8")

    def test_are_reported(self):
        ended = self.lint(self.narrow())
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertRegex(
            ended.stdout,
            r"\AFindings\n"
            r"  fatal +0\n  error +1\n  critical warning +1\n  warning +1\n  advisory +1\n"
            r"  waived +0\n  rules affirmed +66\n"
            r"144 requests travelled in [1-9]\d+ bytes, their answers in [1-9]\d+ bytes\n"
            r"Report: ")
        report = self.folder / "some/report/report.html"
        self.assertEqual(ended.stdout.splitlines()[-1], f"Report: {report}")
        self.assertIn("Width mismatch", report.read_text(encoding="utf-8"))
        self.assertGreater((self.folder / "some/report/session.pb").stat().st_size, 1000)

    def test_are_written_as_text(self):
        self.lint(self.narrow(), "--text")
        session = (self.folder / "some/report/session.txtpb").read_text(encoding="utf-8")
        path = str(self.folder / "rtl/narrow.v").replace(" ", "%20")
        self.assertIn(f'path: "{path}"', session)
        self.assertIn('fragment: "L7"', session)
        self.assertIn("violation_count: 4", session)
        self.assertFalse((self.folder / "some/report/session.pb").exists())

    def test_are_waived(self):
        ended = self.lint(
            self.narrow(), "--waive", "WIDTH:rtl/narrow.v=known = accepted",
            "--waive", "UNDRIVEN=later", "--waive", "LATCH:x.v=nothing", "--text")
        self.assertRegex(ended.stdout, r"  waived +2\n")
        self.assertIn("No finding for the waiver LATCH:x.v\n", ended.stdout)
        session = (self.folder / "some/report/session.txtpb").read_text(encoding="utf-8")
        self.assertIn('value: "known = accepted"', session)

    def test_that_are_errors_are_no_failure(self):
        ended = self.lint("%Error: narrow.v:1:2: Can't find definition of variable: 'a'\n", status=1)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertRegex(ended.stdout, r"  error +1\n")
        self.assertIn("Errors cut the check short: no rule is affirmed\n", ended.stdout)

    def test_may_be_none(self):
        ended = self.lint("")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertRegex(ended.stdout, r"  rules affirmed +70\n")


class Verilator(ProgramTest):
    def test_gets_plain_names(self):
        self.write("my rtl/a b$(x).v", MODULE)
        self.write("c.v", MODULE)
        ended = self.run_program(
            LINT_CLIENT, "--verilator", self.fake_verilator(""), "--top", "a 'b' $c", "--",
            "my rtl/a b$(x).v", "c.v")
        self.assertEqual(ended.stderr, "")
        self.assertEqual(
            self.arguments(),
            ["--lint-only", "-Wall", "-Wno-fatal", "--no-timing", "--top-module", "a 'b' $c",
             "-Iin0", "-Iin1", "0/a_b__x_.v", "1/c.v"])

    def test_is_found_beside_the_user(self):
        self.fake_verilator("")
        (self.folder / "fake verilator").rename(self.folder / "fake")
        self.write("m.v", MODULE)
        ended = self.run_program(LINT_CLIENT, "m.v", "--verilator", "./fake")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertTrue((self.folder / "report.html").exists())


if __name__ == "__main__":
    unittest.main()
