# SPDX-License-Identifier: Apache-2.0

"""The memory that merge, diff and gate take for many findings."""

import functools
import resource
import unittest

import make_results
from programs import RulecheckTest

# What the program takes without a finding.
BASE = 16 << 20


class Memory(RulecheckTest):
    def test_is_at_most_eight_times_the_input(self):
        make_results.many(200000, 100, self.folder / "many.txtpb")
        self.rulecheck("merge", "many.txtpb", "-o", "many.pb")
        bytes_of_one = (self.folder / "many.pb").stat().st_size
        for inputs, words in [(2, ["merge", "many.pb", "many.pb", "-o", "all.pb"]),
                              (2, ["diff", "many.pb", "many.pb"]),
                              (1, ["gate", "many.pb", "--fail-on", "advisory", "--max", "200000"])]:
            with self.subTest(words):
                limit = 8 * inputs * bytes_of_one + BASE
                self.rulecheck(*words, preexec_fn=functools.partial(
                    resource.setrlimit, resource.RLIMIT_DATA, (limit, limit)))


if __name__ == "__main__":
    unittest.main()
