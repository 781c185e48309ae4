"""The programs under test, and a folder that goes away with the test."""

import os
import pathlib
import subprocess
import tempfile
import unittest

HERE = pathlib.Path(__file__).parent
SAMPLE = HERE / "sample.txtpb"


def run(program, *arguments):
    """Runs the program that an environment variable names."""
    command = [os.environ[program], *map(str, arguments)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


class FolderTestCase(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def make(self, program, *arguments):
        done = run(program, *arguments)
        self.assertEqual((done.returncode, done.stderr), (0, ""), arguments)

    def page_of(self, result, name="page.html"):
        page = self.folder / name
        self.make("HTML_REPORT", result, page)
        return page.read_bytes()

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content)
        return path
