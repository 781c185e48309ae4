# SPDX-License-Identifier: Apache-2.0

"""The library at unusual times: loaded and unloaded, after a fork, before main and
after it, after the runtime's shutdown, and beside a second copy of the schema.

Where WITH_VALGRIND is set, everything that is to succeed runs under Valgrind, which
may find no error, and no block to which nothing points. In a build with AddressSanitizer the
same holds for that.
"""

import os
import pathlib
import re
import shutil
import signal
import unittest

from program_test import ProgramTest

LIBRARY = pathlib.Path(os.environ["LIBRARY"])
PROGRAMS = pathlib.Path(os.environ["PROGRAMS"])
WITH_VALGRIND = "WITH_VALGRIND" in os.environ
HOST = PROGRAMS / "life_host"


def shared_object(name):
    return PROGRAMS / f"liblife_{name}.so"


FIRST_PLUGIN = shared_object("first_plugin")
SECOND_PLUGIN = shared_object("second_plugin")
REGENERATED = shared_object("regenerated")


class LifeTest(ProgramTest):
    def setUp(self):
        super().setUp()
        if WITH_VALGRIND and not shutil.which("valgrind"):
            self.skipTest("valgrind is not installed")

    # Possibly lost is what the runtime knows by a pointer to its middle only.
    def run_checked(self, *words, leaks="definite,indirect"):
        if WITH_VALGRIND:
            words = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full",
                     f"--show-leak-kinds={leaks}", f"--errors-for-leak-kinds={leaks}", *words]
        return self.run_program(*words)

    def expect(self, words, lines, **options):
        """The program printed those lines and nothing else, and succeeded."""
        ended = self.run_checked(*words, **options)
        self.assertEqual(ended.stderr, "")
        self.assertEqual(ended.stdout.splitlines(), lines)
        self.assertEqual(ended.returncode, 0)


class Loading(LifeTest):
    def test_the_library_is_loaded_and_closed_a_hundred_times(self):
        self.expect([HOST, "load", 100, LIBRARY], ["done"])

    def test_a_plugin_is_loaded_used_and_unloaded_a_hundred_times(self):
        self.expect([HOST, "use", 100, FIRST_PLUGIN], ["done"])

    def test_two_plugins_exchange_a_message(self):
        self.expect([HOST, "exchange", FIRST_PLUGIN, SECOND_PLUGIN], ["done"])
        self.expect([HOST, "exchange", SECOND_PLUGIN, FIRST_PLUGIN], ["done"])


class Forking(LifeTest):
    def test_a_child_uses_everything_before_and_after_the_first_use(self):
        for time in ("before", "after"):
            with self.subTest(time):
                self.expect([PROGRAMS / "life_program", f"fork_{time}"], ["done in the child", "done"])


class Statics(LifeTest):
    """Static objects of a program and of a library, which use ours as they come and go."""

    def expect_use(self, program, library):
        self.expect([PROGRAMS / program],
                    [f"constructed {library}", "constructed program", "in main",
                     "destroyed program", f"destroyed {library}"])

    def test_of_a_library_that_is_linked_before_ours(self):
        self.expect_use("life_statics_before", "needing_library")

    def test_of_a_library_that_is_linked_after_ours(self):
        self.expect_use("life_statics_after", "needing_library")

    def test_of_a_library_that_is_initialized_before_ours(self):
        self.expect_use("life_statics_first", "other_library")
        log = self.run_program("env", "LD_DEBUG=files", PROGRAMS / "life_statics_first").stderr
        self.assertEqual(re.findall(r"calling init: .*(other_library|vok_rulecheck)\.so", log),
                         ["other_library", "vok_rulecheck"])

    def test_of_a_library_that_is_loaded_and_closed_later(self):
        self.expect([HOST, "both", FIRST_PLUGIN, shared_object("needing_library")],
                    ["constructed needing_library", "destroyed needing_library", "done"])


class Shutdown(LifeTest):
    def test_leaves_nothing_to_be_freed(self):
        later = not os.environ["PROTOBUF_RELEASE"].startswith("3.")  # they keep more
        self.expect([PROGRAMS / "life_program", "shutdown"], ["done"],
                    leaks="definite,indirect" if later else "all")

    def test_leaves_a_leak_to_be_seen(self):
        if not WITH_VALGRIND and os.environ["ADDRESS_SANITIZER"] == "0":
            self.skipTest("nothing looks for leaks")
        ended = self.run_checked(PROGRAMS / "life_program", "leaking")
        self.assertRegex(ended.stderr, "definitely lost|detected memory leaks")
        self.assertIn("makeResult", ended.stderr)
        self.assertNotEqual(ended.returncode, 0)


@unittest.skipIf(WITH_VALGRIND, "a process that is ended frees nothing")
class SecondCopy(LifeTest):
    def expect_end(self, first, second):
        ended = self.run_program("env", "ASAN_OPTIONS=detect_odr_violation=0",
                                 HOST, "both", first, second)
        self.assertIn("File already exists in database: RuleService.proto", ended.stderr)
        self.assertEqual(ended.returncode, -signal.SIGABRT)
        self.assertEqual(ended.stdout, "")

    def test_of_the_library_ends_the_process(self):
        copy = self.folder / "libcopy.so"
        shutil.copy(LIBRARY, copy)
        self.expect_end(LIBRARY, copy)
        self.expect_end(FIRST_PLUGIN, copy)

    def test_of_generated_code_ends_the_process(self):
        self.expect_end(LIBRARY, REGENERATED)
        self.expect_end(REGENERATED, LIBRARY)


if __name__ == "__main__":
    unittest.main()
