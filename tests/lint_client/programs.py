"""What the tests of programs share: a folder of their own, and how to run one."""

import os
import pathlib
import stat
import subprocess
import tempfile
import unittest

LINT_CLIENT = os.environ["LINT_CLIENT"]
SOURCE_DIR = pathlib.Path(os.environ["SOURCE_DIR"])
RECORDED = pathlib.Path(os.environ["RECORDED"])


class ProgramTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="programs test ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()

    def run_program(self, *words):
        return subprocess.run(
            [str(word) for word in words], cwd=self.folder, capture_output=True, text=True,
            check=False)

    def assert_refused(self, ended, line):
        """The program said that line and nothing else, with exit status 2."""
        self.assertEqual(ended.stderr, line + "\n")
        self.assertEqual(ended.stdout, "")
        self.assertEqual(ended.returncode, 2)

    def write(self, name, content):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, encoding="utf-8")
        return path

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
