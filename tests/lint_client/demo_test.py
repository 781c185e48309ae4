"""The command line of tools/demo, up to where it installs and builds."""

import unittest

from programs import SOURCE_DIR, ProgramTest

DEMO = SOURCE_DIR / "tools/demo"


class Demo(ProgramTest):
    def test_help(self):
        for option in ["--help", "-h"]:
            ended = self.run_program(DEMO, option)
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            self.assertTrue(ended.stdout.startswith("Usage: tools/demo [FILES...]\n"))

    def test_unknown_option(self):
        self.assert_refused(
            self.run_program(DEMO, "--nosuch"), "demo: unknown option --nosuch (see --help)")

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


if __name__ == "__main__":
    unittest.main()
