# SPDX-License-Identifier: Apache-2.0

"""The command lines of the tools, up to where they install and build."""

import os
import pathlib
import unittest

from program_test import ProgramTest

TOOLS = pathlib.Path(os.environ["TOOLS_DIR"])
SECONDS = "expected 1 to 99999 seconds (see --help)"
REFUSED = [
    ("bench", ["--quick", "more"], "unknown argument more (see --help)"),
    ("coverage", ["--nosuch"], "unknown argument --nosuch (see --help)"),
    ("docs", ["site"], "unknown argument site (see --help)"),
    *(("fuzz", [word], f"unknown argument {word}, {SECONDS}")
      for word in ["--nosuch", "0", "-1", "1.5", "1s", "100000", ""]),
    ("fuzz", ["1", "2"], "unknown argument 2 (see --help)"),
    ("matrix", ["nosuch"], f"no row nosuch in {TOOLS}/lib/matrix.txt"),
    ("mutate", ["copy"], "unknown argument copy (see --help)"),
    ("mutate", ["--only"], "--only needs a text (see --help)"),
    ("package", ["deb"], "unknown argument deb (see --help)"),
    ("soak", ["--nosuch"], "unknown argument --nosuch (see --help)"),
    ("test", ["--all", "more"], "unknown argument more (see --help)"),
    ("test", ["--with", "/usr/share/doc"], "no Protocol Buffers is installed in /usr/share/doc"),
    ("test", ["--with", "/nowhere"], "--with needs the folder of an installation (see --help)"),
]


class CommandLine(ProgramTest):
    def test_help(self):
        tools = [path for path in TOOLS.iterdir() if path.is_file()]
        self.assertTrue({tool for tool, *_ in REFUSED} <= {path.name for path in tools})
        for tool in tools:
            for option in ["--help", "-h"]:
                with self.subTest(tool=tool.name, option=option):
                    # The variable makes cd print the folder, and may lead it elsewhere.
                    ended = self.run_program("env", "-C", TOOLS.parent, f"CDPATH={TOOLS.parent}",
                                             f"tools/{tool.name}", option)
                    self.assertEqual((ended.returncode, ended.stderr), (0, ""))
                    usage = ended.stdout.splitlines()
                    self.assertTrue(usage[0].startswith(f"Usage: tools/{tool.name}"), usage[0])
                    self.assertTrue(usage[-1].endswith("."), usage[-1])

    def test_refused_arguments(self):
        for tool, arguments, line in REFUSED:
            with self.subTest(tool=tool, arguments=arguments):
                self.assert_refused(self.run_program(TOOLS / tool, *arguments), f"{tool}: {line}")


if __name__ == "__main__":
    unittest.main()
