# SPDX-License-Identifier: Apache-2.0

"""Programs see the library's own default instances, descriptors and types, also
where the linker gave the program copies of them."""

import os
import subprocess
import unittest

from elf import relocations

FIXED_PROGRAM = os.environ["FIXED_PROGRAM"]
MOVABLE_PROGRAM = os.environ["MOVABLE_PROGRAM"]
PLUGIN = os.environ["PLUGIN"]
SELF_BOUND_LIBRARY_DIR = os.environ["SELF_BOUND_LIBRARY_DIR"]


def run(program, *library_path):
    library_path = filter(None, [*library_path, os.environ.get("LD_LIBRARY_PATH")])
    return subprocess.run([program, PLUGIN], capture_output=True, text=True, check=False,
                          env={**os.environ, "LD_LIBRARY_PATH": ":".join(library_path)})


class Identity(unittest.TestCase):
    def test_the_position_dependent_program_has_copies_and_the_plugin_has_none(self):
        self.assertRegex(" ".join(relocations(FIXED_PROGRAM)), "_COPY")
        self.assertNotRegex(" ".join(relocations(PLUGIN)), "_COPY")

    def test_a_position_dependent_program_and_its_plugin_see_the_librarys_objects(self):
        ended = run(FIXED_PROGRAM)
        self.assertEqual((ended.stdout, ended.returncode), ("38 types\n", 0), ended.stderr)

    def test_a_position_independent_program_and_its_plugin_see_the_librarys_objects(self):
        ended = run(MOVABLE_PROGRAM)
        self.assertEqual((ended.stdout, ended.returncode), ("38 types\n", 0), ended.stderr)

    def test_a_library_that_binds_every_symbol_to_itself_would_be_noticed(self):
        ended = run(FIXED_PROGRAM, SELF_BOUND_LIBRARY_DIR)
        self.assertNotEqual(ended.returncode, 0, ended.stdout)  # some programs crash


if __name__ == "__main__":
    unittest.main()
