"""What the loader has to do for the shared object, beside the same sources built
with nothing but CMake's flags for a release."""

import os
import pathlib
import unittest

from elf import functions_in, symbols

REASON_TO_SKIP = os.environ["REASON_TO_SKIP"]
LIBRARY = pathlib.Path(os.environ["LIBRARY"])
PLAIN_LIBRARY = pathlib.Path(os.environ["PLAIN_LIBRARY"])
OF_THE_COMPILER = {"frame_dummy", "__do_global_dtors_aux"}


def setUpModule():
    if REASON_TO_SKIP:
        raise unittest.SkipTest(REASON_TO_SKIP)


def own_functions_in(path, section):
    return [name for name in functions_in(path, section) if name not in OF_THE_COMPILER]


class StaticObjects(unittest.TestCase):
    def test_one_is_initialised_the_registration(self):
        initialisers = own_functions_in(LIBRARY, ".init_array")
        self.assertEqual(len(initialisers), 1, initialisers)
        self.assertRegex(initialisers[0], r"^_GLOBAL__sub_I.*RuleService\.pb\.cc$")

    def test_none_is_destroyed(self):
        self.assertEqual(own_functions_in(LIBRARY, ".fini_array"), [])
        imports = symbols("-D", "--undefined-only", LIBRARY)
        self.assertEqual([name for name in imports if "atexit" in name], [])

    def test_of_the_plain_library_are_found_too(self):
        self.assertGreater(len(own_functions_in(PLAIN_LIBRARY, ".init_array")), 1)
        self.assertIn("__cxa_atexit", symbols("-D", "--undefined-only", PLAIN_LIBRARY))


if __name__ == "__main__":
    unittest.main()
