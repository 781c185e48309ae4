# SPDX-License-Identifier: Apache-2.0

"""The command lines of the tools, up to where they install and build."""

import os
import pathlib
import unittest

from program_test import ProgramTest

TOOLS = pathlib.Path(os.environ["TOOLS_DIR"])
BENCH = TOOLS / "bench"
COVERAGE = TOOLS / "coverage"
DEMO = TOOLS / "demo"
DOCS = TOOLS / "docs"
FUZZ = TOOLS / "fuzz"
MUTATE = TOOLS / "mutate"
PACKAGE = TOOLS / "package"
SOAK = TOOLS / "soak"
TEST = TOOLS / "test"


class Bench(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(BENCH, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/bench [--quick]\n"))

    def test_unknown_argument(self):
        for words in [["--nosuch"], ["quick"], ["--quick", "more"]]:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(BENCH, *words),
                    f"bench: unknown argument {words[-1]} (see --help)")


class Coverage(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(COVERAGE, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/coverage\n"))

    def test_unknown_argument(self):
        for words in [["--nosuch"], ["all"]]:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(COVERAGE, *words),
                    f"coverage: unknown argument {words[-1]} (see --help)")


class Demo(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(DEMO, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/demo [--grpc] [FILES...]\n"))

    def test_unknown_option(self):
        for words in [["--nosuch"], ["--grpc", "--nosuch"]]:
            self.assert_refused(
                self.run_program(DEMO, *words), "demo: unknown option --nosuch (see --help)")

    def test_missing_file(self):
        self.write("a b.v", "module m; endmodule\n")
        self.assert_refused(
            self.run_program(DEMO, "a b.v", "no file.v"),
            "demo: no file.v: no such file, or not readable")

    def test_missing_file_named_like_an_option(self):
        self.assert_refused(
            self.run_program(DEMO, "--", "--help"), "demo: --help: no such file, or not readable")

    def test_directory(self):
        self.assert_refused(self.run_program(DEMO, "."), "demo: .: no such file, or not readable")


class Docs(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(DOCS, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/docs\n"))

    def test_unknown_argument(self):
        for word in ["--nosuch", "site"]:
            with self.subTest(word):
                self.assert_refused(
                    self.run_program(DOCS, word), f"docs: unknown argument {word} (see --help)")


class Fuzz(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(FUZZ, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/fuzz [SECONDS]\n"))

    def test_no_number_of_seconds(self):
        for word in ["--nosuch", "0", "-1", "1.5", "1s", "100000", ""]:
            with self.subTest(word):
                self.assert_refused(
                    self.run_program(FUZZ, word),
                    f"fuzz: unknown argument {word}, expected 1 to 99999 seconds (see --help)")

    def test_too_many_arguments(self):
        for words in [["1", "2"], ["30", "--nosuch"]]:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(FUZZ, *words),
                    f"fuzz: unknown argument {words[-1]} (see --help)")


class Mutate(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(MUTATE, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/mutate [--only TEXT]\n"))

    def test_unknown_argument(self):
        for words in [["--nosuch"], ["copy"], ["--only", "copy", "more"]]:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(MUTATE, *words),
                    f"mutate: unknown argument {words[-1]} (see --help)")

    def test_missing_text(self):
        self.assert_refused(
            self.run_program(MUTATE, "--only"), "mutate: --only needs a text (see --help)")


class Package(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(PACKAGE, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/package\n"))

    def test_unknown_argument(self):
        for word in ["--nosuch", "deb"]:
            with self.subTest(word):
                self.assert_refused(
                    self.run_program(PACKAGE, word), f"package: unknown argument {word} (see --help)")


class Soak(ProgramTest):
    def test_help(self):
        ended = self.run_program(SOAK, "--help")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        self.assertTrue(ended.stdout.startswith("Usage: tools/soak\n"))

    def test_unknown_argument(self):
        self.assert_refused(
            self.run_program(SOAK, "--nosuch"), "soak: unknown argument --nosuch (see --help)")


class Test(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(TEST, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/test [--all] [--with PREFIX]\n"))

    def test_unknown_argument(self):
        for words in [["--nosuch"], ["all"], ["--all", "more"]]:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(TEST, *words),
                    f"test: unknown argument {words[-1]} (see --help)")

    def test_folder_without_protocol_buffers(self):
        for folder, refusal in (
                ("/usr/share/doc", "test: no Protocol Buffers is installed in /usr/share/doc"),
                ("/nowhere", "test: --with needs the folder of an installation (see --help)")):
            with self.subTest(folder):
                self.assert_refused(self.run_program(TEST, "--with", folder), refusal)


if __name__ == "__main__":
    unittest.main()
