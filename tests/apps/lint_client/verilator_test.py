# SPDX-License-Identifier: Apache-2.0

"""lint_client with the real Verilator."""

import os
import re
import unittest

from programs import LINT_CLIENT, RECORDED, SOURCE_DIR, ProgramTest

VERILATOR = os.environ["VERILATOR"]
DESIGNS = SOURCE_DIR / "apps/designs"

HOW_OFTEN = {"": 1, ", twice": 2}


def findings_in_readme():
    """The rule and place of each finding that the design's README lists."""
    text = (DESIGNS / "README.md").read_text(encoding="utf-8")
    findings = []
    for place, rule, count in re.findall(r"^\| `(\S+:\d+)` \| ([A-Z]+)(, twice)? \|", text, re.M):
        findings += [(rule, place)] * HOW_OFTEN[count]
    return sorted(findings)


def findings_in_session(text):
    """The rule and place of each finding in a session's result, in text format."""
    affirmations = text.index("\naffirmations {")
    found = re.findall(
        r'rule_key: "(\w+)".*?ref \{\s+type: FILE\s+name: "([^"]+)"', text[:affirmations], re.S)
    return sorted(found)


class Lint(ProgramTest):
    def lint(self, *words):
        return self.run_program(
            LINT_CLIENT, "--verilator", VERILATOR, "--output", "report", "--text", *words)

    def session(self):
        return (self.folder / "report/session.txtpb").read_text(encoding="utf-8")

    def test_finds_what_the_readme_of_the_design_says(self):
        ended = self.lint(*sorted(DESIGNS.glob("*.v")))
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(findings_in_session(self.session()), findings_in_readme())
        self.assertEqual(len(findings_in_readme()), 27)
        self.assertEqual(len({rule for rule, _ in findings_in_readme()}), 15)
        self.assertIn("violation_count: 27\n", self.session())

    def test_waives_what_the_readme_of_the_design_says(self):
        self.lint(*sorted(DESIGNS.glob("*.v")), "--waive", "PINCONNECTEMPTY:uart.v=left open")
        self.assertIn("violation_count: 25\nwaived_count: 2\n", self.session())

    def test_accepts_any_path(self):
        copy = self.write(
            "my dir/100%: a'b\"/narrow.v", (RECORDED / "narrow.v").read_text(encoding="utf-8"))
        ended = self.lint(copy.relative_to(self.folder))
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertEqual(
            findings_in_session(self.session()),
            [("MULTIDRIVEN", "narrow.v:4"), ("UNDRIVEN", "narrow.v:6"),
             ("UNUSEDSIGNAL", "narrow.v:3"), ("WIDTH", "narrow.v:7")])
        self.assertIn("/my%20dir/100%25:%20a%27b%22/narrow.v", self.session())

    def test_says_where_a_syntax_error_is(self):
        self.write("my dir/syntax.v", "module m;\n  assign = 1;\nendmodule\n")
        self.assert_refused(
            self.lint("my dir/syntax.v"),
            "lint_client: my dir/syntax.v:2:10: syntax error, unexpected '='")

    def test_reads_files_beside_the_given_ones(self):
        self.write("my rtl/top.v", '`include "width.vh"\nmodule top(output [`W:0] o);\n'
                   "  inner u (.o(o));\nendmodule\n")
        self.write("my rtl/width.vh", "`define W 3\n")
        self.write("my rtl/inner.v", "module inner(output [3:0] o, input i);\n"
                   "  assign o = {3'd0, i};\nendmodule\n")
        ended = self.lint("my rtl/top.v")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertIn(("PINMISSING", "top.v:3"), findings_in_session(self.session()))

    def test_reports_errors_in_a_design_as_findings(self):
        ended = self.lint(RECORDED / "errors.v")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertIn(("ERROR", "errors.v:3"), findings_in_session(
            self.session() + "\naffirmations {"))
        self.assertIn("affirmation_count: 0\n", self.session())

    def test_refuses_a_top_that_is_not_there(self):
        self.assert_refused(
            self.lint(RECORDED / "narrow.v", "--top", "nothing"),
            "lint_client: Specified --top-module 'nothing' was not found in design.")

    def test_recordings_are_what_verilator_says(self):
        if "5.006" not in self.run_program(VERILATOR, "--version").stdout:
            self.skipTest("the recordings are of Verilator 5.006")
        for recording in ["errors.v", "narrow.v", "syntax.v"]:
            with self.subTest(recording):
                self.write(recording, (RECORDED / recording).read_text(encoding="utf-8"))
                ended = self.run_program(
                    VERILATOR, "--lint-only", "-Wall", "-Wno-fatal", "--no-timing", recording)
                recorded = RECORDED / recording.split(".")[0]
                self.assertEqual(
                    ended.stderr, recorded.with_suffix(".txt").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
