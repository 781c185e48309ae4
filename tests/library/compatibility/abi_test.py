# SPDX-License-Identifier: Apache-2.0

"""The shared object against the baseline: what breaks linked programs is found."""

import lzma
import os
import pathlib
import tempfile
import unittest

import update_baseline as abi

BASELINE = next(pathlib.Path(__file__).resolve().parent.glob("baseline-*.abi.xz"))
OPTIONS = os.environ["OPTIONS"].split("|")
REASON_TO_SKIP = os.environ["REASON_TO_SKIP"]


@unittest.skipIf(REASON_TO_SKIP, REASON_TO_SKIP)
class Abi(unittest.TestCase):
    baseline = lzma.decompress(BASELINE.read_bytes()).decode()

    def test_nothing_breaks_the_baseline(self):
        with tempfile.TemporaryDirectory(prefix="abi test ") as build:
            changes = abi.breaking_changes(self.baseline, abi.dump(build, *OPTIONS))
        if changes:
            self.fail("programs that were linked to the baseline's library would break; undo the change,"
                      " or raise VOK_RULECHECK_ABI in CMakeLists.txt:\n" + changes)

    def test_a_larger_class_breaks_programs_unless_the_soname_changes(self):
        link = "<class-decl name='Link' size-in-bits='384'"
        self.assertIn(link, self.baseline)
        present = self.baseline.replace(link, link.replace("384", "448"))
        self.assertIn("type size changed from 384 to 448", abi.breaking_changes(self.baseline, present))
        renamed = present.replace("soname='libvok_rulecheck.so.1'", "soname='libvok_rulecheck.so.2'")
        self.assertEqual(abi.breaking_changes(self.baseline, renamed), "")


if __name__ == "__main__":
    unittest.main()
