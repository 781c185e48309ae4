# SPDX-License-Identifier: Apache-2.0

"""What the tests of programs share: a folder of their own, and how to run one."""

import pathlib
import subprocess
import tempfile
import unittest


class ProgramTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="programs test ")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name).resolve()

    def run_program(self, *words, timeout=300):
        return subprocess.run(
            [str(word) for word in words], cwd=self.folder, capture_output=True, text=True,
            check=False, timeout=timeout)

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
