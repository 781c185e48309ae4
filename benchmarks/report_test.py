"""The arithmetic and the text of the report."""

import unittest

import report
from rows import Table, Target

SERIES = {
    "ours": [10, 20, 30],
    "theirs": [40, 40, 300],
    "slow": [2000, 2000, 2000],
    "allocations: ours": [0],
}


class Arithmetic(unittest.TestCase):
    def test_ratios_are_taken_before_the_median(self):
        self.assertEqual(report.median_ratio(SERIES["theirs"], SERIES["ours"]), 4)

    def test_series_of_other_lengths_are_refused(self):
        with self.assertRaises(report.Failure):
            report.median_ratio([1, 2], [1])

    def test_several_pairs_give_their_median(self):
        pairs = (("theirs", "ours"), ("slow", "ours"), ("ours", "ours"))
        self.assertEqual(report.measured(Target("", pairs), SERIES), 4)

    def test_an_amount_is_a_median(self):
        self.assertEqual(report.measured(Target("", (("ours",),)), SERIES), 20)

    def test_a_target_is_met_at_its_limit_and_not_beyond(self):
        for target, met, missed in ((Target("", (), at_least=4), 4, 3.99),
                                    (Target("", (), at_most=0), 0, 0.01)):
            self.assertTrue(report.is_met(target, met))
            self.assertFalse(report.is_met(target, missed))


class Text(unittest.TestCase):
    def test_numbers(self):
        for number, text in ((0, "0"), (0.447, "0.45"), (12.34, "12.3"), (1234.5, "1,234"), (7, "7")):
            self.assertEqual(report.digits(number), text)

    def test_durations(self):
        for nanoseconds, text in ((3.14159, "3.14 ns"), (1950, "1.95 µs"), (78189887, "78.2 ms")):
            self.assertEqual(report.duration(nanoseconds), text)

    def test_targets(self):
        targets = [Target("reuse", (("ours", "theirs"),), at_most=0.42),
                   Target("speed", (("theirs", "ours"),), at_least=15)]
        self.assertEqual(report.target_table(targets, SERIES)[0], "1 of 2 targets are met.")
        self.assertEqual(report.target_table(targets, SERIES)[-2:],
                         ["| reuse | 0.25 | at most 0.42 | yes |",
                          "| speed | 4 | at least 15 | **no** |"])

    def test_a_row_compares_times_with_the_first_one(self):
        table = Table("T", ("A", "B", "C"), (("parse", "ours", "theirs", None),
                                             ("allocations", "allocations: ours", None, None)))
        self.assertEqual(report.figure_table(table, SERIES)[-2:],
                         ["| parse | 20 ns | 40 ns (4) |  |", "| allocations | 0 |  |  |"])


class Page(unittest.TestCase):
    def test_only_what_is_between_the_markers_changes(self):
        page = f"before\n{report.BEGIN}\nold\n{report.END}\nafter\n"
        once = report.replace_between_markers(page, "new")
        self.assertEqual(once, f"before\n{report.BEGIN}\n\nnew\n\n{report.END}\nafter\n")
        self.assertEqual(report.replace_between_markers(once, "new"), once)

    def test_a_page_without_both_markers_in_order_is_refused(self):
        for page in ("", report.BEGIN, report.END + report.BEGIN,
                     report.BEGIN + report.END + report.END):
            with self.assertRaises(report.Failure):
                report.replace_between_markers(page, "new")


if __name__ == "__main__":
    unittest.main()
