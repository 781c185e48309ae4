# SPDX-License-Identifier: Apache-2.0

"""pip install ./python, with the library as the package test has installed it, and without."""

import os
import pathlib
import shutil
import subprocess
import sys
import unittest

from program_test import ProgramTest
from readme import readme

ROOT = pathlib.Path(__file__).resolve().parents[2]
PKG_CONFIG = next(pathlib.Path(os.environ["PREFIX"]).glob("**/pkgconfig"))


class Pip(ProgramTest):
    def install(self, pkg_config):
        shutil.copytree(ROOT / "python", self.folder / "python")
        return subprocess.run(
            [sys.executable, "-m", "pip", "install", "--no-index", "--no-deps", "--target", "site", "./python"],
            cwd=self.folder, env={**os.environ, "PKG_CONFIG_PATH": str(pkg_config)}, check=False,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)

    def test_builds_a_package_that_works(self):
        ended = self.install(PKG_CONFIG)
        self.assertEqual(ended.returncode, 0, ended.stdout)
        page = ROOT / "docs/python.md"
        ended = self.run_program("env", f"PYTHONPATH={self.folder}/site", sys.executable, "-c",
                                 readme("python", page=page))
        self.assertEqual((ended.stdout, ended.stderr), (readme("text", page=page), ""))
        installed = {path.name.split(".cpython")[0] for path in (self.folder / "site/vok_rulecheck").iterdir()}
        self.assertEqual(installed - {"__pycache__"}, {
            "RuleService_pb2.py", "RuleService_pb2.pyi", "__init__.py", "__main__.py", "converter",
            "converter.pyi", "delimited.py", "py.typed"})

    def test_says_that_the_library_is_missing(self):
        ended = self.install(self.folder)
        self.assertNotEqual(ended.returncode, 0)
        self.assertIn("Install the library first", ended.stdout)


if __name__ == "__main__":
    unittest.main()
