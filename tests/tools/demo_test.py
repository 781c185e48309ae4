# SPDX-License-Identifier: Apache-2.0

"""tools/demo from the command line to the report. Builds in build/demo."""

import os
import pathlib
import unittest

from program_test import ProgramTest

DEMO = pathlib.Path(os.environ["TOOLS_DIR"]) / "demo"


class Demo(ProgramTest):
    def report_of(self, *arguments):
        """The page that the last line printed names."""
        ended = self.run_program(DEMO, *arguments, timeout=1200)  # builds
        self.assertEqual(ended.returncode, 0, ended.stdout + ended.stderr)
        last = ended.stdout.splitlines()[-1]
        self.assertTrue(last.startswith("Report: "), last)
        return pathlib.Path(last.removeprefix("Report: ")).read_text(encoding="utf-8")

    def test_design_that_comes_with_it(self):
        page = self.report_of()
        for text in ["uart", "LATCH", "CASEINCOMPLETE", "left open until the registers use them"]:
            self.assertIn(text, page)

    def test_own_arguments(self):
        self.write("rtl/narrow.v", "`include \"w.vh\"\n"
                   "module m(input [`W:0] a, output [3:0] b); assign b = a; endmodule\n")
        self.write("inc/w.vh", "`define W 7\n")
        self.write("broken.v", "This is a letter.\n")
        self.assertIn("rtl/narrow.v:2:", self.report_of("-Iinc", "rtl/narrow.v"))
        self.assertIn("broken.v:1:", self.report_of("broken.v"))


if __name__ == "__main__":
    unittest.main()
