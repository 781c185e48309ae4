# SPDX-License-Identifier: Apache-2.0

"""The memory that merge, diff and gate take for many findings."""

import functools
import json
import resource
import unittest

import make_results
from programs import RulecheckTest

# What the program takes without a finding.
BASE = 16 << 20


def limited_to(size):
    return functools.partial(resource.setrlimit, resource.RLIMIT_DATA, (size, size))


class Memory(RulecheckTest):
    def test_is_at_most_eight_times_the_input(self):
        make_results.many(200000, 100, self.folder / "many.txtpb")
        self.rulecheck("merge", "many.txtpb", "-o", "many.pb")
        bytes_of_one = (self.folder / "many.pb").stat().st_size
        for inputs, words in [(2, ["merge", "many.pb", "many.pb", "-o", "all.pb"]),
                              (2, ["diff", "many.pb", "many.pb"]),
                              (1, ["gate", "many.pb", "--fail-on", "advisory", "--max", "200000"])]:
            with self.subTest(words):
                self.rulecheck(*words, preexec_fn=limited_to(8 * inputs * bytes_of_one + BASE))

    def test_may_run_out(self):
        result = {"ruleId": "R", "message": {"text": "m" * 200}}
        self.write("large.sarif", json.dumps({"version": "2.1.0", "runs": [{"results": [result] * 50000}]}))
        for mebibytes in [20, 40, 80]:
            with self.subTest(mebibytes):
                self.assert_error("rulecheck: out of memory\n", "import", "large.sarif", "-o", "large.pb",
                                  status=3, preexec_fn=limited_to(mebibytes << 20))


if __name__ == "__main__":
    unittest.main()
