# SPDX-License-Identifier: Apache-2.0

"""`rulecheck html` on the command line."""

import os
import pathlib
import re
import subprocess
import unittest

from programs import RULECHECK, SAMPLE, RulecheckTest, data_of

MANUAL = pathlib.Path(os.environ["SOURCE_DIR"], "apps/rulecheck/rulecheck.1")


class Formats(RulecheckTest):
    def test_the_format_of_the_input_makes_no_difference(self):
        page = self.page_of(SAMPLE)
        self.assertIn(b"Camera pipeline, nightly", page)
        for extension in "pb", "bin", "textproto", "txt", "json":
            with self.subTest(extension):
                copy = self.folder / f"copy.{extension}"
                self.rulecheck("merge", SAMPLE, "-o", copy)
                self.assertEqual(self.page_of(copy), page)

    def test_the_standard_input_is_a_message(self):
        self.rulecheck("merge", SAMPLE, "-o", "copy.pb")
        for options, path in [([], self.folder / "copy.pb"), (["--format", "txtpb"], SAMPLE)]:
            with open(path, "rb") as content:
                ended = self.rulecheck("html", "-", *options, stdin=content)
            self.assertIn(b"Camera pipeline, nightly", ended.stdout)


class Options(RulecheckTest):
    def data(self, *options):
        return data_of(self.page_of("result.txtpb", *options).decode("utf-8"))

    def setUp(self):
        super().setUp()
        self.write("result.txtpb", """session { name: "s" } violations { hashmap { key: 1 value {
            id: 1 severity: SEV_ERROR rule_key: "R" details { text: "t" args { arg { ref { type: FILE name: "a.v:1"
            url { scheme: FILE path: "/x/a.v" } value { string_val: "old" } } } } } } } }""")
        (self.folder / "src").mkdir()
        self.write("src/a.v", "old\nsecond\n")

    def test_source_lines_are_those_below_the_working_directory_or_another_folder(self):
        self.assertEqual(self.data()["sources"], [[], []])
        self.assertIn("old", self.data()["texts"])
        self.assertEqual(self.data("--source-root", "src")["sources"], [[], [[1, "old", "second"]]])
        self.write("a.v", "old\n")
        self.assertEqual(self.data()["sources"], [[], [[1, "old"]]])
        without = self.data("--no-source")
        self.assertEqual((without["sources"], "old" in without["texts"]), ([[], []], False))

    def test_a_template_of_links_is_part_of_the_page(self):
        template = "https://host/blob/main/{path}#L{line}&<"
        page = self.page_of("result.txtpb", "--link", template).decode("utf-8")
        self.assertIn('value="https://host/blob/main/{path}#L{line}&amp;&lt;"', page)

    def test_bad_ones_are_refused(self):
        for words, options in [("--source-root", ["--source-root", "missing"]),
                               ("--source-root", ["--no-source", "--source-root", "src"]),
                               ("missing.pb: cannot be read", ["--baseline", "missing.pb"])]:
            with self.subTest(options):
                self.assert_error(words, "html", "result.txtpb", *options)


class BadInput(RulecheckTest):
    def test_arguments(self):
        self.assert_error("RESULT is required", "html")
        self.assert_error("a command is required")
        self.assert_error("nosuch: unknown command (see --help)", "nosuch", "-o", "x")
        self.assert_error("--nosuch", "--nosuch")

    def test_a_page_stays_if_there_is_no_new_one(self):
        output = self.write("page.html", "before")
        self.write("result.txtpb", "session { }")
        for words, path in [("missing session.name", "result.txtpb"), ("cannot be read", "missing.pb")]:
            self.assert_error(words, "html", path, "-o", output)
            self.assertEqual(output.read_bytes(), b"before")

    def test_a_full_standard_output(self):
        with open("/dev/full", "wb") as full:
            self.assertIn(b"cannot be written", subprocess.run(
                [RULECHECK, "html", SAMPLE], stdout=full, stderr=subprocess.PIPE, check=False).stderr)


class Help(RulecheckTest):
    def test_names_the_commands_of_the_manual_page_and_no_others(self):
        printed = self.rulecheck("--help").stdout.decode("utf-8")
        commands = re.findall(r"^  ([a-z]+) ", printed.split("Subcommands:")[1], re.M)
        manual = MANUAL.read_text(encoding="utf-8").split(".SH SYNOPSIS")[1].split(".SH DESC")[0]
        named = re.findall(r"^rulecheck \{?([a-z|]+)", re.sub(r"\\f.", "", manual), re.M)
        self.assertEqual(sorted(commands), sorted("|".join(named).split("|")))
        for command in commands:
            with self.subTest(command):
                printed = self.rulecheck(command, "--help").stdout.decode("utf-8")
                self.assertIn(f"Example:\n  rulecheck {command} ", printed)

    def test_has_the_version(self):
        self.assertEqual(self.rulecheck("--version").stdout, b"rulecheck 1.4.0\n")
        self.assertIn('"rulecheck 1.4.0"', MANUAL.read_text(encoding="utf-8"))


class Installation(RulecheckTest):
    def setUp(self):
        super().setUp()
        for component in ["runtime", "rulecheck"]:
            installed = self.run_program(os.environ["CMAKE"], "--install", os.environ["BUILD_DIR"],
                                         "--component", component, "--prefix", self.folder)
            self.assertEqual(installed.returncode, 0, installed.stderr)

    def test_has_the_program_and_its_manual_page(self):
        self.assertTrue((self.folder / "share/man/man1/rulecheck.1").exists())
        ended = self.run_program(self.folder / "bin/rulecheck", "--version")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))

    def test_completes_commands_and_options_in_bash(self):
        for words, expected in [(["g"], ["gate"]), (["gate", "--m"], ["--max"]),
                                (["lint", "--ver"], ["--verilator"]), (["lint", "x"], [])]:
            ended = self.run_program("bash", "-euc", """
source share/bash-completion/completions/rulecheck
COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
_rulecheck "$1" "${!#}"
echo "${COMPREPLY[@]}"
""", "bash", "bin/rulecheck", *words)
            self.assertEqual((ended.stdout.split(), ended.stderr), (expected, ""), words)


if __name__ == "__main__":
    unittest.main()
