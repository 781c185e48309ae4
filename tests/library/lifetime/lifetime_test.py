# SPDX-License-Identifier: Apache-2.0

"""The library at unusual times: loaded and unloaded, after a fork, before main and after
it, after the runtime's shutdown, and in a process with a second copy of the schema.

If WITH_VALGRIND is set, programs that must succeed run under Valgrind, which must find no error
and no leak.
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
PROGRAM = PROGRAMS / "life_program"
TIMES = 5 if WITH_VALGRIND else 100
FIRST_PLUGIN, SECOND_PLUGIN, NEEDING, REGENERATED = (
    PROGRAMS / f"liblife_{name}.so"
    for name in ("first_plugin", "second_plugin", "needing_library", "regenerated"))


@unittest.skipIf(WITH_VALGRIND and not shutil.which("valgrind"), "valgrind is not installed")
class Lifetime(ProgramTest):
    # Possibly lost is what the runtime knows by a pointer to its middle only.
    def run_checked(self, *words, leaks="definite,indirect"):
        if WITH_VALGRIND:
            words = ["valgrind", "--quiet", "--error-exitcode=99", "--leak-check=full",
                     f"--show-leak-kinds={leaks}", f"--errors-for-leak-kinds={leaks}", *words]
        return self.run_program(*words)

    def expect(self, words, lines, **options):
        """The program prints those lines and nothing else, and succeeds."""
        ended = self.run_checked(*words, **options)
        self.assertEqual((ended.stderr, ended.stdout.splitlines(), ended.returncode), ("", lines, 0))

    def test_the_library_can_be_closed_and_loaded_again(self):
        self.expect([HOST, "load", TIMES, LIBRARY], ["done"])

    def test_a_plugin_that_uses_the_library_can_be_unloaded(self):
        self.expect([HOST, "use", TIMES, FIRST_PLUGIN], ["done"])

    def test_two_plugins_exchange_a_message(self):
        self.expect([HOST, "exchange", FIRST_PLUGIN, SECOND_PLUGIN], ["done"])

    def test_a_child_uses_everything_before_and_after_the_first_use(self):
        for mode in ("fork_before", "fork_after"):
            with self.subTest(mode):
                self.expect([PROGRAM, mode], ["done in the child", "done"])

    def test_static_objects_of_a_program_and_of_a_library_use_the_library(self):
        for order, library in (("before", "needing_library"), ("after", "needing_library"),
                               ("first", "other_library")):
            with self.subTest(f"linked or initialized {order}"):
                self.expect([PROGRAMS / f"life_statics_{order}"],
                            [f"constructed {library}", "constructed program", "in main",
                             "destroyed program", f"destroyed {library}"])
        log = self.run_program("env", "LD_DEBUG=files", PROGRAMS / "life_statics_first").stderr
        self.assertEqual(re.findall(r"calling init: .*(other_library|vok_rulecheck)\.so", log),
                         ["other_library", "vok_rulecheck"])

    def test_static_objects_of_a_library_that_is_closed_use_the_library(self):
        self.expect([HOST, "both", FIRST_PLUGIN, NEEDING],
                    ["constructed needing_library", "destroyed needing_library", "done"])

    def test_the_runtimes_shutdown_frees_everything(self):
        later = not os.environ["PROTOBUF_RELEASE"].startswith("3.")  # they keep more
        self.expect([PROGRAM, "shutdown"], ["done"], leaks="definite,indirect" if later else "all")

    @unittest.skipIf(WITH_VALGRIND, "a process that aborts frees nothing")
    def test_a_second_copy_of_the_schema_ends_the_process(self):
        copy = self.folder / "libcopy.so"
        shutil.copy(LIBRARY, copy)
        for first, second in ((LIBRARY, copy), (FIRST_PLUGIN, copy), (LIBRARY, REGENERATED),
                              (REGENERATED, LIBRARY)):
            with self.subTest(f"{first}, {second}"):
                ended = self.run_program("env", "ASAN_OPTIONS=detect_odr_violation=0",
                                         HOST, "both", first, second)
                self.assertIn("File already exists in database: RuleService.proto", ended.stderr)
                self.assertEqual((ended.stdout, ended.returncode), ("", -signal.SIGABRT))


if __name__ == "__main__":
    unittest.main()
