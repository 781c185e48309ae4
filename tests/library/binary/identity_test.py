# SPDX-License-Identifier: Apache-2.0

"""Programs see the library's own default instances, descriptors and types, also
where the linker gave the program copies of them."""

import os
import subprocess
import unittest

from elf import relocations

FIXED_PROGRAM, MOVABLE_PROGRAM, PLUGIN = (
    os.environ[name] for name in ("FIXED_PROGRAM", "MOVABLE_PROGRAM", "PLUGIN"))


class Identity(unittest.TestCase):
    def test_a_program_and_its_plugin_see_the_librarys_objects(self):
        self.assertRegex(" ".join(relocations(FIXED_PROGRAM)), "_COPY")
        self.assertNotRegex(" ".join(relocations(PLUGIN)), "_COPY")
        for program in (FIXED_PROGRAM, MOVABLE_PROGRAM):
            with self.subTest(program):
                ended = subprocess.run([program, PLUGIN], capture_output=True, text=True, check=False)
                self.assertEqual((ended.stdout, ended.returncode), ("38 types\n", 0), ended.stderr)


if __name__ == "__main__":
    unittest.main()
