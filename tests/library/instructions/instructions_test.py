# SPDX-License-Identifier: Apache-2.0

"""Instructions of the hot paths, counted by callgrind, against committed figures.

What counts is what the library and the Protocol Buffers runtime execute
themselves; the C library chooses its functions by processor, and is left out.

    instructions_test.py --update    updates the figures instead
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HOT_PATHS = os.environ["HOT_PATHS"]
BUILT_WITH = os.environ["BUILT_WITH"]
FIGURES = pathlib.Path(__file__).with_name("figures.txt")
SLACK = 1.02
TIMES = 1000


def own_instructions(profile):
    """The instructions of the library and of the runtime in one file of callgrind's."""
    listed = subprocess.run(["callgrind_annotate", "--threshold=100", profile],
                            capture_output=True, text=True, check=True).stdout
    counts = re.findall(r"^ *([\d,]+) .*/lib(?:vok_rulecheck|protobuf)\.[^/]*\]$", listed, re.MULTILINE)
    return sum(int(count.replace(",", "")) for count in counts)


def measure():
    """Instructions per call, by path, in the order of the paths."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", "--quiet",
             f"--callgrind-out-file={folder}/profile", HOT_PATHS], check=True)
        figures = {}
        for path in sorted(pathlib.Path(folder).glob("profile.*"), key=lambda path: int(path.suffix[1:])):
            if trigger := re.search(r"Trigger: Client Request: (\w+)", path.read_text()):
                figures[trigger[1]] = own_instructions(path) // TIMES
        return figures


def committed():
    """What the figures were measured with, and the figures."""
    first, *lines = FIGURES.read_text().splitlines()
    return first, {path: int(number) for path, number in (line.split() for line in lines)}


@unittest.skipUnless(shutil.which("valgrind"), "valgrind is not installed")
class Instructions(unittest.TestCase):
    def test_are_no_more_than_the_committed_figures(self):
        built_with, figures = committed()
        if built_with != BUILT_WITH:
            self.skipTest(f"the figures are those of {built_with}, and this is {BUILT_WITH}")
        measured = measure()
        self.assertEqual(list(measured), list(figures))
        for path, number in measured.items():
            print(f"{path}: {number} instructions, committed {figures[path]}")
            with self.subTest(path=path):
                self.assertLessEqual(number, figures[path] * SLACK)


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        lines = [BUILT_WITH] + [f"{path} {number}" for path, number in measure().items()]
        FIGURES.write_text("\n".join(lines) + "\n")
    else:
        unittest.main()
