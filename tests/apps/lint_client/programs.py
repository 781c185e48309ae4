# SPDX-License-Identifier: Apache-2.0

"""The client under test, and a stand-in for Verilator."""

import os
import pathlib
import stat

import program_test

LINT_CLIENT = os.environ["LINT_CLIENT"]
SOURCE_DIR = pathlib.Path(os.environ["SOURCE_DIR"])
RECORDED = pathlib.Path(os.environ["RECORDED"])


class ProgramTest(program_test.ProgramTest):
    def fake_verilator(self, output, status=0):
        """A program that notes its arguments, one a line, and says what Verilator would."""
        said = self.write("said", output)
        program = self.write("fake verilator", f"""#!/bin/sh
printf '%s\\n' "$@" > '{self.folder}/arguments'
cat '{said}' >&2
exit {status}
""")
        program.chmod(program.stat().st_mode | stat.S_IXUSR)
        return program

    def arguments(self):
        return (self.folder / "arguments").read_text(encoding="utf-8").splitlines()
