# SPDX-License-Identifier: Apache-2.0

"""Instructions of the hot paths, counted by callgrind, against committed figures.

What counts is what the library and the Protocol Buffers runtime execute
themselves; the C library chooses its functions by processor, and is left out.

    instructions_test.py --update    updates the figures instead
"""

import collections
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
    """Instructions by object file, from one file of callgrind's."""
    names = {}
    count = collections.Counter()
    current = None
    is_call = False
    for line in profile.read_text().splitlines():
        named = re.match(r"(c?ob)=\((\d+)\)(?: (.+))?$", line)
        if named:
            kind, number, name = named.groups()
            if name:
                names[number] = name
            if kind == "ob":
                current = names[number]
        elif line.startswith("calls="):
            is_call = True  # the next line has what the call cost, inclusively
        elif re.match(r"[0-9+*-]", line):
            if not is_call:
                count[current] += int(line.split()[1])
            is_call = False
    return count


def counted(profile):
    return sum(number for name, number in own_instructions(profile).items()
               if pathlib.Path(name).name.startswith(("libvok_rulecheck.", "libprotobuf.")))


def measure():
    """Instructions per call, by path, in the order of the paths."""
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", "--quiet",
             f"--callgrind-out-file={folder}/profile", HOT_PATHS], check=True)
        figures = {}
        for profile in sorted(pathlib.Path(folder).glob("profile.*"),
                              key=lambda path: int(path.suffix[1:])):
            trigger = re.search(r"Trigger: Client Request: (\w+)", profile.read_text())
            if trigger:
                figures[trigger.group(1)] = counted(profile) // TIMES
        return figures


def committed():
    """What the figures were measured with, and the figures."""
    first, *lines = FIGURES.read_text().splitlines()
    return first, {path: int(number) for path, number in (line.split() for line in lines)}


class Instructions(unittest.TestCase):
    def setUp(self):
        if not shutil.which("valgrind"):
            self.skipTest("valgrind is not installed")

    def test_are_no_more_than_the_committed_figures(self):
        built_with, figures = committed()
        if built_with != BUILT_WITH:
            self.skipTest(f"the figures are those of {built_with}, and this is {BUILT_WITH}")
        measured = measure()
        self.assertEqual(list(measured), list(figures))
        for path, number in measured.items():
            print(f"{path}: {number} instructions, committed {figures[path]}")
        for path, number in measured.items():
            with self.subTest(path=path):
                self.assertLessEqual(number, figures[path] * SLACK)


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        lines = [BUILT_WITH] + [f"{path} {number}" for path, number in measure().items()]
        FIGURES.write_text("\n".join(lines) + "\n")
    else:
        unittest.main()
