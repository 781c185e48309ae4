# SPDX-License-Identifier: Apache-2.0

"""tools/demo from the command line to the report. Builds in build/demo."""

import os
import pathlib
import re
import unittest

from program_test import ProgramTest

DEMO = pathlib.Path(os.environ["TOOLS_DIR"]) / "demo"


def without_id_and_time(page):
    page = re.sub(r"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}", "ID", page)
    return re.sub(r"\d{4}-\d\d-\d\d[ T]\d\d:\d\d:\d\d", "TIME", page)


class Demo(ProgramTest):
    def report_of(self, *arguments):
        """The page that the last line printed names."""
        ended = self.run_program(DEMO, *arguments)
        self.assertEqual((ended.returncode, ended.stderr), (0, ""), ended.stdout)
        last = ended.stdout.splitlines()[-1]
        self.assertTrue(last.startswith("Report: "), last)
        return pathlib.Path(last.removeprefix("Report: ")).read_text(encoding="utf-8")

    def test_design_that_comes_with_it(self):
        page = self.report_of()
        for text in ["uart", "LATCH", "CASEINCOMPLETE", "left open until the registers use them"]:
            self.assertIn(text, page)

    def test_server_on_grpc_writes_the_same_report(self):
        plain, from_server = self.report_of(), self.report_of("--grpc")
        self.assertNotEqual(plain, from_server)
        self.assertEqual(*map(without_id_and_time, [plain, from_server]))

    def test_file_that_verilator_cannot_parse_for_a_server_on_grpc(self):
        path = self.write("no verilog.v", "This is a letter.\n")
        ended = self.run_program(DEMO, "--grpc", path)
        self.assertEqual(ended.returncode, 2, ended.stdout)
        self.assertEqual(len(ended.stderr.splitlines()), 1, ended.stderr)
        self.assertNotIn("Report:", ended.stdout)

    def test_own_files_with_lint_errors(self):
        self.write("narrow it.v", "module m(input [7:0] a, output [3:0] b); assign b = a; endmodule\n")
        self.write("missing.v", "module n; nosuch instance_of_it(); endmodule\n")
        page = self.report_of("narrow it.v", "missing.v")
        for text in ["WIDTH", "narrow it.v", "nosuch"]:
            self.assertIn(text, page)

    def test_file_that_verilator_cannot_parse(self):
        path = self.write("no verilog.v", "This is a letter.\n")
        ended = self.run_program(DEMO, path)
        self.assertEqual(ended.returncode, 2, ended.stdout)
        self.assertEqual(len(ended.stderr.splitlines()), 1, ended.stderr)
        self.assertIn("no verilog.v:1:", ended.stderr)


if __name__ == "__main__":
    unittest.main()
