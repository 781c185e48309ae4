"""The command lines of rule_server and grpc_lint_client."""

import unittest

from program_test import ProgramTest
from servers import GRPC_LINT_CLIENT, README, RULE_SERVER

SERVER_OPTIONS = ["--listen", "--files", "--token-file", "--certificate", "--key", "--client-ca",
                  "--insecure"]
CLIENT_OPTIONS = ["--server", "--ca", "--certificate", "--key", "--insecure", "--output", "--text",
                  "--top", "--verilator", "--waive"]


class Help(ProgramTest):
    def test_names_all_options_and_so_does_the_manual(self):
        manual = README.read_text(encoding="utf-8")
        for program, options in [(RULE_SERVER, SERVER_OPTIONS), (GRPC_LINT_CLIENT, CLIENT_OPTIONS)]:
            ended = self.run_program(program, "--help")
            self.assertEqual((ended.returncode, ended.stderr), (0, ""))
            for option in options:
                self.assertIn(f"  {option} ", ended.stdout.replace("Needs:", ""))
                self.assertIn(option, manual)


class BadArguments(ProgramTest):
    def test_of_the_server(self):
        self.write("empty", "\n")
        cases = [
            (["more"], "The following argument was not expected: more"),
            (["--nosuch"], "The following argument was not expected: --nosuch"),
            (["--files", "missing"], "--files: Directory does not exist: missing"),
            (["--token-file", "missing"], "missing: cannot be read"),
            (["--token-file", "empty"], "empty: has no token"),
            (["--certificate", "a.pem"], "--certificate requires --key"),
            (["--key", "a.key"], "--key requires --certificate"),
            (["--client-ca", "ca.pem"], "--client-ca requires --certificate"),
            (["--certificate", "a.pem", "--key", "a.key"], "a.key: cannot be read"),
            (["--listen", "127.0.0.1:x"],
             "127.0.0.1:x: cannot listen there, or not with that certificate"),
            (["--listen", "unix:missing/socket"],
             "unix:missing/socket: cannot listen there, or not with that certificate"),
        ]
        for words, line in cases:
            with self.subTest(words):
                self.assert_refused(self.run_program(RULE_SERVER, *words), f"rule_server: {line}")

    def test_of_the_client(self):
        self.write("m.v", "module m; endmodule\n")
        server = ["m.v", "--server", "127.0.0.1:1"]
        cases = [
            (["m.v"], "--server is required"),
            (["--server", "127.0.0.1:1"], "FILES is required"),
            ([*server, "--ca", "missing"], "missing: cannot be read"),
            ([*server, "--certificate", "a", "--key", "b"], "--certificate requires --ca"),
            ([*server, "--ca", "m.v", "--key", "b"], "--key requires --certificate"),
            ([*server, "--verilator", "no-such-verilator"],
             "no-such-verilator: cannot be run: No such file or directory"),
        ]
        for words, line in cases:
            with self.subTest(words):
                self.assert_refused(
                    self.run_program(GRPC_LINT_CLIENT, *words), f"grpc_lint_client: {line}")


if __name__ == "__main__":
    unittest.main()
