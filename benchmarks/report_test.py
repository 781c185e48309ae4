# SPDX-License-Identifier: Apache-2.0

"""The text of the benchmark report."""

import unittest

import report
from rows import Table, Target

FIGURES = {"ours": 10.04, "theirs": 40, "alloc: ours": 0}


class Text(unittest.TestCase):
    def test_numbers_have_three_digits(self):
        for number, text in ((0, "0"), (0.447, "0.45"), (12.34, "12.3"), (1234.5, "1,234"), (7, "7")):
            self.assertEqual(report.digits(number), text)

    def test_durations_have_a_unit(self):
        for nanoseconds, text in ((3.14159, "3.14 ns"), (1950, "1.95 µs"), (78189887, "78.2 ms")):
            self.assertEqual(report.duration(nanoseconds), text)

    def test_a_target_is_met_at_its_limit_and_not_beyond(self):
        for limit, met in (({"at_least": 4}, "yes"), ({"at_least": 4.01}, "**no**"),
                           ({"at_most": 4}, "yes"), ({"at_most": 3.99}, "**no**")):
            target = Target("speed", "theirs", "ours", **limit)
            head, *_, line = report.target_table([target], {"ours": 10, "theirs": 40})
            self.assertIn(f"{int(met == 'yes')} of 1 targets", head)
            self.assertTrue(line.startswith("| speed | 4 | at ") and line.endswith(f"| {met} |"), line)

    def test_a_ratio_is_that_of_the_figures_shown(self):
        table = Table("T", ("A", "B", "C"), (("parse", "ours", "theirs", None),
                                             ("allocations", "alloc: ours", None, None)))
        self.assertEqual(report.figure_table(table, FIGURES)[-2:],
                         ["| parse | 10.0 ns | 40 ns (4) |  |", "| allocations | 0 |  |  |"])


if __name__ == "__main__":
    unittest.main()
