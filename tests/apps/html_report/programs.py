# SPDX-License-Identifier: Apache-2.0

"""The programs under test."""

import os
import pathlib
import subprocess

import program_test

HERE = pathlib.Path(__file__).parent
SAMPLE = HERE / "sample.txtpb"


def run(program, *arguments):
    """Runs the program that an environment variable names."""
    command = [os.environ[program], *map(str, arguments)]
    return subprocess.run(command, capture_output=True, text=True, check=False)


class FolderTestCase(program_test.ProgramTest):
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
