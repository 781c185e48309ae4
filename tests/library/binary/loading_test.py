# SPDX-License-Identifier: Apache-2.0

"""What the loader has to do for the shared object, and how large it is, compared with
the same sources built with CMake's default Release flags."""

import os
import pathlib
import tempfile
import unittest

from elf import own_functions_in, relocations, run, symbols

REASON_TO_SKIP = os.environ["REASON_TO_SKIP"]
LIBRARY = pathlib.Path(os.environ["LIBRARY"])
PLAIN_LIBRARY = pathlib.Path(os.environ["PLAIN_LIBRARY"])


@unittest.skipIf(REASON_TO_SKIP, REASON_TO_SKIP)
class Relocations(unittest.TestCase):
    def test_with_a_symbol_are_fewer_than_800_and_others_are_packed(self):
        self.assertIn(len(relocations(LIBRARY)), range(1, 800))
        self.assertNotIn("R_X86_64_RELATIVE", relocations(LIBRARY))
        self.assertIn("(RELR)", run("readelf", "-dW", LIBRARY))


class StaticObjects(unittest.TestCase):
    def test_only_the_registration_is_initialized(self):
        initializers = own_functions_in(LIBRARY, ".init_array")
        self.assertEqual(len(initializers), 1, initializers)
        self.assertRegex(initializers[0], r"^_GLOBAL__sub_I.*RuleService\.pb\.cc$")

    def test_none_is_destroyed(self):
        self.assertEqual(own_functions_in(LIBRARY, ".fini_array"), [])
        imports = symbols("-D", "--undefined-only", LIBRARY)
        self.assertEqual([name for name in imports if "atexit" in name], [])


@unittest.skipIf(REASON_TO_SKIP, REASON_TO_SKIP)
class Size(unittest.TestCase):
    def stripped_size(self, path):
        with tempfile.TemporaryDirectory() as folder:
            stripped = pathlib.Path(folder) / "stripped.so"
            run("strip", "-o", stripped, path)
            return stripped.stat().st_size

    def test_without_symbols_is_at_most_72_percent_of_the_plain_librarys(self):
        self.assertLessEqual(self.stripped_size(LIBRARY), 0.72 * self.stripped_size(PLAIN_LIBRARY))


if __name__ == "__main__":
    unittest.main()
