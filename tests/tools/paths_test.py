# SPDX-License-Identifier: Apache-2.0

"""The linker gets its files wherever the checkout is. CMake is run, but nothing is compiled."""

import os
import pathlib
import shutil
import subprocess
import unittest

from program_test import ProgramTest

SOURCE_DIR = pathlib.Path(os.environ["TOOLS_DIR"]).parent


class Paths(ProgramTest):
    def test_with_special_characters(self):
        for name in ["a,b", "a$b, c"]:
            with self.subTest(name):
                source, build = self.folder / name, self.folder / name / "build"
                source.mkdir()
                for part in ["CMakeLists.txt", "CHANGELOG.md", "LICENSE", "README.md"]:
                    shutil.copy(SOURCE_DIR / part, source)
                for part in ["cmake", "docs", "packaging", "rendering", "swig"]:
                    shutil.copytree(SOURCE_DIR / part, source / part)
                configured = self.run_program(
                    "cmake", "-G", "Ninja", "-S", source, "-B", build,
                    "-DVOK_RULECHECK_BUILD_TESTS=OFF", "-DVOK_RULECHECK_BUILD_APPS=OFF")
                self.assertEqual(configured.returncode, 0, configured.stderr)
                command = subprocess.run(
                    ["ninja", "-C", build, "-t", "commands", "vok_rulecheck"],
                    capture_output=True, text=True, check=True).stdout
                link = next(part for part in command.split("&&") if "--version-script" in part)
                # What the shell makes of the command's words.
                words = subprocess.run(
                    ["sh", "-c", "printf '%s\\n' " + link.strip()],
                    capture_output=True, text=True, check=True).stdout.splitlines()
                files = [word.partition("=")[2] for word in words if word.startswith("--version-script=")]
                self.assertEqual(len(files), 1, link)
                self.assertTrue((build / files[0]).is_file(), link)


if __name__ == "__main__":
    unittest.main()
