# SPDX-License-Identifier: Apache-2.0

"""The shared object against the baseline: what breaks linked programs is found."""

import lzma
import os
import pathlib
import re
import shutil
import tempfile
import unittest

import update_baseline as abi

BASELINE = next(pathlib.Path(__file__).resolve().parent.glob("baseline-*.abi.xz"))
SOURCE = pathlib.Path(os.environ["SOURCE"])
SCHEMA = pathlib.Path(os.environ["SCHEMA"]).relative_to(SOURCE)
OPTIONS = os.environ["OPTIONS"].split("|")
REASON_TO_SKIP = os.environ["REASON_TO_SKIP"]

def edited(text, edits):
    """The text with each of the texts replaced wherever it stands."""
    text, count = re.subn("|".join(map(re.escape, edits)), lambda found: edits[found[0]], text)
    if count < len(edits):
        raise ValueError(f"{count} places found: {edits}")
    return text


@unittest.skipIf(REASON_TO_SKIP, REASON_TO_SKIP)
class Abi(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.baseline = lzma.decompress(BASELINE.read_bytes()).decode()
        folder = tempfile.TemporaryDirectory(prefix="abi test ")
        cls.addClassCleanup(folder.cleanup)
        cls.copy, cls.build = pathlib.Path(folder.name, "source"), pathlib.Path(folder.name, "build")
        shutil.copytree(SOURCE, cls.copy,
                        ignore=shutil.ignore_patterns(".git", "build", "out", "node_modules"))
        cls.present = cls.dump()

    @classmethod
    def dump(cls):
        return abi.dump(cls.copy, cls.build, *OPTIONS)

    def edit(self, path, edits):
        """Edits a file of the copy for this test."""
        before = (self.copy / path).read_text(encoding="utf-8")
        self.addCleanup((self.copy / path).write_text, before, encoding="utf-8")
        (self.copy / path).write_text(edited(before, edits), encoding="utf-8")

    def test_nothing_breaks_the_baseline(self):
        changes = abi.breaking_changes(self.baseline, self.present)
        if changes:
            self.fail("programs that were linked to the baseline's library would break; undo the change,"
                      " or raise VOK_RULECHECK_ABI in CMakeLists.txt:\n" + changes)

    def test_a_new_field_breaks_linked_programs_unless_the_soname_changes(self):
        self.edit(SCHEMA, {"optional string docgen_filename = 3;":
                           "optional string docgen_filename = 3; optional int32 line = 4;"})
        present = self.dump()
        self.assertIn("type size changed from 384 to 448",
                      abi.breaking_changes(self.baseline, present))
        renamed = edited(present, {"soname='libvok_rulecheck.so.1'": "soname='libvok_rulecheck.so.2'"})
        self.assertEqual(abi.breaking_changes(self.baseline, renamed), "")


if __name__ == "__main__":
    unittest.main()
