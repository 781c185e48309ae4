# SPDX-License-Identifier: Apache-2.0

"""The library has one initializer and no finalizer, and logs no string, in each build type of a host project."""

import os
import pathlib
import tempfile
import unittest

from elf import own_functions_in, run, symbols

SOURCE = pathlib.Path(__file__).resolve().parents[3]
HOST = f"""cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
add_subdirectory("{SOURCE}" vok_rulecheck)
"""


class BuildTypes(unittest.TestCase):
    def test_each_gives_one_initializer_no_finalizer_and_no_check_for_utf8(self):
        for build_type in os.environ["BUILD_TYPES"].split("|"):
            with self.subTest(build_type), tempfile.TemporaryDirectory() as folder:
                (pathlib.Path(folder) / "CMakeLists.txt").write_text(HOST)
                run("cmake", "-G", "Ninja", "-S", folder, "-B", f"{folder}/build",
                    f"-DCMAKE_BUILD_TYPE={build_type}", *os.environ["OPTIONS"].split("|"))
                run("cmake", "--build", f"{folder}/build")
                library = next(pathlib.Path(folder).rglob("libvok_rulecheck.so")).resolve()
                self.assertEqual(len(own_functions_in(library, ".init_array")), 1)
                self.assertEqual(own_functions_in(library, ".fini_array"), [])
                imports = symbols("-D", "--undefined-only", library)
                self.assertEqual([name for name in imports if "utf8" in name.lower()], [])


if __name__ == "__main__":
    unittest.main()
