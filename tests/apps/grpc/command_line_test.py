# SPDX-License-Identifier: Apache-2.0

"""The command lines of rule_server, and of rulecheck as its client."""

import re
import unittest

from program_test import ProgramTest
from servers import RULECHECK, SERVE, SOURCE_DIR


class Help(ProgramTest):
    def options(self, command):
        ended = self.run_program(RULECHECK, command, "--help")
        self.assertEqual((ended.returncode, ended.stderr), (0, ""))
        return set(re.findall(r"^  (?:-\w,)?(--[\w-]+)", ended.stdout, re.MULTILINE))

    def test_names_the_options_of_the_manual(self):
        lint = (SOURCE_DIR / "apps/rulecheck/README.md").read_text(encoding="utf-8")
        listed = set(re.findall(r"^  (--[\w-]+)", lint, re.MULTILINE))
        self.assertEqual(self.options("lint") - {"--help", "--output"}, listed - {"--config"})
        limits = (SOURCE_DIR / "apps/rule_server/README.md").read_text(encoding="utf-8")
        self.assertEqual(set(re.findall(r"`(--max-[\w-]+)`", limits)) | {"--max-work-bytes"},
                         {option for option in self.options("serve") if option.startswith("--max-")})


class BadArguments(ProgramTest):
    def test_of_the_server(self):
        self.write("empty", "\n")
        self.write("longest", "a" * 4093)
        self.write("longer", "a" * 4094)
        cases = [
            (["--files", "/"],
             "/: is or holds a home directory, which needs --files-may-hold-home"),
            (["--files-may-hold-home"], "--files-may-hold-home requires --files"),
            (["--max-session-bytes", "2147483648"],
             "--max-session-bytes: Value 2147483648 not in range 1 to 2147483647"),
            (["--max-bytes", "-1"],
             "--max-bytes: Value -1 not in range 1 to 9223372036854775807"),
            (["--token-file", "missing"], "missing: cannot be read: No such file or directory"),
            (["--token-file", "empty"], "empty: has no token"),
            (["--token-file", "longer"], "the token is too long"),
            (["--token-file", "longest", "--listen", "127.0.0.1"],
             "127.0.0.1: not an address, expected HOST:PORT or unix:PATH"),
            (["--certificate", "a.pem", "--key", "a.key"], "a.pem: cannot be read: No such file or directory"),
            (["--certificate", "", "--key", ""], "--certificate: is empty"),
            (["--certificate", "a", "--key", ""], "--key: is empty"),
            (["--certificate", "a", "--key", "b", "--client-ca", ""], "--client-ca: is empty"),
            (["--token-file", ""], "--token-file: is empty"),
            (["--listen", ""], ": not an address, expected HOST:PORT or unix:PATH"),
            (["--listen", "unix:missing/socket"],
             "unix:missing/socket: cannot listen there: No such file or directory"),
            (["--listen", "unix:" + "a" * 108],
             f"unix:{'a' * 108}: cannot listen there: the path is too long"),
        ]
        for words, line in cases:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program("timeout", "20", *SERVE, *words), f"rulecheck: {line}")

    def test_of_lint(self):
        self.write("m.v", "module m; endmodule\n")
        server = ["--server", "127.0.0.1:1", "m.v"]
        cases = [
            ([*server, "--ca", "missing"], "missing: cannot be read: No such file or directory"),
            ([*server, "--ca", ""], "--ca: is empty"),
            (["--server", "127.0.0.1", "m.v"],
             "127.0.0.1: not an address, expected HOST:PORT or unix:PATH"),
            (["--server-output", ".", "m.v"], "--server-output requires --server"),
        ]
        for words, line in cases:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(RULECHECK, "lint", *words), f"rulecheck: {line}")

    def test_with_too_few_descriptors(self):
        self.assert_refused(
            self.run_program("prlimit", "--nofile=47:47", *SERVE),
            "rulecheck: needs 48 file descriptors, and may have 47")
        self.assert_refused(
            self.run_program(
                "sh", "-c", 'exec prlimit --nofile=54:54 "$0" "$1" 3<&0 4<&0 5<&0 6<&0 7<&0 8<&0 9<&0',
                *SERVE),
            "rulecheck: needs 48 file descriptors, and may have 47")


if __name__ == "__main__":
    unittest.main()
