# SPDX-License-Identifier: Apache-2.0

"""diff, gate, merge, text and json on results."""

import json
import unittest

from programs import SAMPLE, RulecheckTest, read_json


def finding(rule="WIDTH", file="rtl/a.v", line=7, column=3, text="too narrow", source="a <= b;",
            severity="SEV_WARNING", objects=("b",)):
    name = f"{file}:{line}:{column}"
    url = {"scheme": "FILE", "path": f"/src/{file}", "fragment": f"L{line}C{column}"}
    place = {"type": "FILE", "name": name, "url": url, "value": {"stringVal": source}}
    arguments = [{"ref": place}, {"stringVal": text},
                 *({"ref": {"type": "PORT", "name": name}} for name in objects)]
    return {"severity": severity, "ruleKey": rule,
            "details": {"text": "%1: %2", "args": {"arg": arguments}}}


class ResultsTest(RulecheckTest):
    def result(self, name, violations, waived=(), affirmed=()):
        def numbered(found):
            return {"hashmap": {n: {"id": n, **each} for n, each in enumerate(found, 1)}}

        content = {"session": {"name": name}, "violations": numbered(violations),
                   "waivedViolations": numbered(waived),
                   "affirmations": numbered({"ruleKey": rule} for rule in affirmed)}
        return self.write(f"{name}.json", json.dumps(content))

    def printed(self, *words, status=0):
        return self.rulecheck(*words, status=status).stdout.decode("utf-8").splitlines()


class Diff(ResultsTest):
    def counts(self, before, after, **more):
        line = self.printed("diff", "--quiet", self.result("old", before),
                            self.result("new", after, **more))[-1]
        return [int(word) for word in line.split() if word.isdigit()]

    def test_matches_what_only_moved_or_was_written_differently(self):
        same = [("nothing", {}), ("number of the line", {"line": 9}), ("column", {"column": 8}),
                ("white space", {"text": " too\tnarrow ", "source": "\ta  <= b;\r"}),
                ("severity", {"severity": "SEV_ERROR"})]
        for name, change in same:
            with self.subTest(name):
                new, fixed, unchanged, moved = self.counts([finding()], [finding(**change)])
                self.assertEqual((new, fixed, unchanged + moved), (0, 0, 1))
                self.assertEqual(moved, "line" in change or "column" in change)

    def test_tells_apart_what_is_another_finding(self):
        for change in [{"rule": "LATCH"}, {"file": "rtl/b.v"}, {"text": "too wide"},
                       {"source": "a <= c;"}, {"objects": ["c"]}]:
            with self.subTest(change):
                self.assertEqual(self.counts([finding()], [finding(**change)]), [1, 1, 0, 0])

    def test_leaves_out_positions_but_no_other_numbers(self):
        for field, before, after, same in [
                ("text", "see rtl/b.v:7:3", "see rtl/b.v:12:9", 1), ("text", "see b2.f90:7.", "see b2.f90:8.", 1),
                ("text", "see (é:7)", "see (é:8)", 1), ("text", "bits b[7:6]", "bits b[7:3]", 0),
                ("text", "bits b(7:6)", "bits b(7:3)", 0), ("text", "bits 7:6", "bits 7:3", 0),
                ("source", "b ? c:1", "b ? c:0", 0)]:
            with self.subTest(field, before=before):
                counts = self.counts([finding(**{field: before})], [finding(**{field: after})])
                self.assertEqual(counts, [1 - same, 1 - same, same, 0])

    def test_matches_as_many_as_there_are(self):
        lines = [finding(line=line) for line in (1, 2, 3)]
        self.assertEqual(self.counts(lines, lines[:2]), [0, 1, 2, 0])
        self.assertEqual(self.counts(lines[:1], lines), [2, 0, 1, 0])
        self.assertEqual(self.counts([], []), [0, 0, 0, 0])

    def test_takes_what_was_waived_for_neither_new_nor_fixed(self):
        self.assertEqual(self.counts([finding()], [], waived=[finding(line=8)]), [0, 0, 0, 0])

    def test_does_not_take_for_fixed_what_is_not_checked_any_more(self):
        def off(reason, rule="WIDTH"):
            return {**finding(rule, "rtl/off.v", text="lint_off"), "categories": {"1": reason}}

        in_source = off("switched off in the source")
        cases = [
            ([], [in_source], 0), ([in_source], [in_source], 1), ([in_source], [in_source] * 2, 0),
            ([], [off("switched off on the command line")], 0),
            ([], [off("switched off in the source", "LATCH")], 1), ([], [off("later")], 1),
            ([off("cut short by an error", "LATCH")], [off("cut short by an error", "LATCH")], 0)]
        for before, after, fixed in cases:
            with self.subTest(before=before, after=after):
                old = self.result("old", [finding()], waived=before)
                lines = self.printed("diff", old, self.result("new", [], waived=after))
                self.assertEqual(
                    [line.split(" rtl")[0] for line in lines],
                    ["fixed:", "0 new, 1 fixed, 0 unchanged, 0 moved"] if fixed else
                    ["not checked:", "0 new, 0 fixed, 0 unchanged, 0 moved, 1 not checked"])

    def test_matches_texts_that_are_not_utf8_in_each_format(self):
        old = self.write("old.txtpb", r"""session { name: 'n' } violations { hashmap { key: 1 value {
            id: 1 severity: SEV_ERROR rule_key: 'R' details { text: '\344 \303\244 \374b' } } } }""")
        for command in ["json", "sarif"]:
            self.rulecheck(command, old, "-o", f"new.{command}")
            self.assertEqual(self.printed("diff", old, f"new.{command}"),
                             ["0 new, 0 fixed, 1 unchanged, 0 moved"])

    def test_prints_findings_in_the_order_of_their_places(self):
        old = self.result("old", [finding(text="gone")])
        new = self.result("new", [finding(line=10), finding(line=9, column=11), finding(line=9)])
        self.assertEqual(self.printed("diff", old, new), [
            "new: rtl/a.v:9:3: warning: too narrow [WIDTH]",
            "new: rtl/a.v:9:11: warning: too narrow [WIDTH]",
            "new: rtl/a.v:10:3: warning: too narrow [WIDTH]",
            "fixed: rtl/a.v:7:3: warning: gone [WIDTH]",
            "3 new, 1 fixed, 0 unchanged, 0 moved"])


class Gate(ResultsTest):
    def test_counts_findings_that_are_serious_enough(self):
        result = self.result("new", [
            finding(severity="SEV_ERROR"), finding(severity="SEV_WARNING"),
            finding(severity="SEV_WARNING", line=8), finding(severity="SEV_UNKNOWN")])
        cases = [(["fatal"], 1, "failed: 1 of severity fatal or worse, 0 allowed"),
                 (["fatal", "--max", "1"], 0, "passed: 1 of severity fatal or worse, 1 allowed"),
                 (["error"], 1, "failed: 2 of severity error or worse, 0 allowed"),
                 (["advisory", "--max", "3"], 1, "failed: 4 of severity advisory or worse, 3 allowed"),
                 (["warning", "--max", "4"], 0, "passed: 4 of severity warning or worse, 4 allowed")]
        for options, status, line in cases:
            with self.subTest(options):
                printed = self.printed("gate", result, "--fail-on", *options, status=status)
                self.assertEqual(printed[-1], line)

    def test_counts_what_the_baseline_has_not(self):
        old = self.result("old", [finding(), finding(text="gone")])
        new = self.result("new", [finding(line=9), finding(severity="SEV_ADVISORY", text="more")])
        words = ["gate", new, "--baseline", old, "--new-only", "--fail-on"]
        self.assertEqual(self.printed(*words, "warning"), [
            "1 new, 1 fixed, 0 unchanged, 1 moved", "passed: 0 of severity warning or worse, 0 allowed"])
        self.assertEqual(self.printed(*words, "advisory", status=1)[1],
                         "rtl/a.v:7:3: advisory: more [WIDTH]")
        self.assertEqual(self.printed(*words[:4], "--fail-on", "warning", "--quiet", status=1), [])

    def test_prints_twenty_findings(self):
        result = self.result("new", [finding(line=line) for line in range(1, 24)])
        printed = self.printed("gate", result, "--fail-on", "warning", status=1)
        self.assertEqual((len(printed), printed[20]), (22, "... and 3 more"))

    def test_refuses_bad_arguments(self):
        result = self.result("new", [])
        for words, line in [(["gate", result], "--fail-on is required"),
                            (["gate", result, "--fail-on", "bad"], "--fail-on bad: expected one of fatal, "),
                            (["gate", result, "--fail-on", "fatal", "--max", "-1"],
                             "Value -1 not in range 0 to 2147483647"),
                            (["gate", result, "--fail-on", "fatal", "--max", "2147483648"], "--max"),
                            (["gate", result, "--fail-on", "fatal", "--max", "010"], "010 is not a decimal number"),
                            *((words + ["--baseline", ""], "--baseline: is empty") for words in [
                                ["gate", result, "--fail-on", "fatal"], ["html", result], ["sarif", result]]),
                            (["gate", result, "--fail-on", "fatal", "--new-only"], "--baseline"),
                            (["gate", "missing.pb", "--fail-on", "fatal"], "missing.pb: cannot be read")]:
            with self.subTest(words):
                self.assert_error(line, *words)


class Merge(ResultsTest):
    def merged(self, *results):
        self.rulecheck("merge", *results, "-o", "all.json")
        return read_json(self.folder / "all.json")

    def test_keeps_each_finding_under_a_number_of_its_own(self):
        one = self.result("one", [finding(line=1), finding(line=2)], waived=[finding(line=3)])
        two = self.result("two", [finding(line=4)], waived=[finding(line=5)])
        result = self.merged(one, two)
        self.assertEqual(findings_of(result["violations"]),
                         {"1": "rtl/a.v:1:3", "2": "rtl/a.v:2:3", "3": "rtl/a.v:4:3"})
        self.assertEqual(findings_of(result["waivedViolations"]), {"1": "rtl/a.v:3:3", "4": "rtl/a.v:5:3"})
        self.assertEqual((result["violationCount"], result["waivedCount"]), (3, 2))
        self.assertEqual(result["session"]["name"], "one")
        for number, each in result["violations"]["hashmap"].items():
            self.assertEqual(str(each["id"]), number)

    def test_gives_findings_the_build_target_of_their_session(self):
        results = [self.write(f"{name}.json", json.dumps({
            "session": {"name": name, "buildTarget": name},
            "violations": {"hashmap": {
                1: {"id": 1, **finding()}, 2: {"id": 2, "buildTarget": "own", **finding()}}},
            "affirmations": {"hashmap": {1: {"id": 1, "ruleKey": "A"}}}}))
            for name in ["fpga", "asic"]]
        merged = self.merged(*results)
        for kind, targets in [("violations", [None, "own", "asic", "own"]), ("affirmations", [None, "asic"])]:
            found = sorted(merged[kind]["hashmap"].values(), key=lambda each: each["id"])
            self.assertEqual([each.get("buildTarget") for each in found], targets)

    def test_affirms_what_no_result_contradicts(self):
        one = self.result("one", [finding("A")], affirmed=["B", "C", "D"])
        two = self.result("two", [finding("B")], waived=[finding("C")], affirmed=["A", "D"])
        affirmations = self.merged(one, two)["affirmations"]["hashmap"]
        self.assertEqual([each["ruleKey"] for each in affirmations.values()], ["D"])

    def test_keeps_one_of_equal_affirmations(self):
        # Each map of a program has another order.
        rule = {"id": 1, "ruleKey": "A", "categories": {number: "x" for number in range(2, 40)}}
        one = self.write("one.json", json.dumps(
            {"session": {"name": "one"}, "affirmations": {"hashmap": {1: rule}}}))
        self.assertEqual(len(self.merged(one, one)["affirmations"]["hashmap"]), 1)

    def test_of_one_result_is_that_result(self):
        self.rulecheck("merge", SAMPLE, "-o", "one.json")
        merged = read_json(self.folder / "one.json")
        sample = json.loads(self.rulecheck("json", SAMPLE).stdout)
        for kind in ["violations", "waivedViolations"]:
            self.assertEqual(len(merged[kind]["hashmap"]), len(sample[kind]["hashmap"]))
            self.assertEqual(merged[kind], sample[kind])


class Outputs(ResultsTest):
    def test_are_not_what_the_command_reads(self):
        old, new = self.result("old", [finding()]), self.result("new", [])
        log = self.write("log.sarif", self.rulecheck("sarif", old).stdout.decode("utf-8"))
        for words, output in [(["html", new], new), (["html", new, "--baseline", old], old),
                              (["sarif", new, "--baseline", old], old), (["import", log], log),
                              (["diff", old, new], old), (["diff", old, new], new)]:
            with self.subTest(words, output=output.name):
                before = output.read_bytes()
                self.assert_error(f"{output}: is the input", *words, "-o", output)
                self.assertEqual(output.read_bytes(), before)


class Text(ResultsTest):
    def test_is_a_line_for_each_finding_in_the_order_of_places(self):
        result = self.result("new", [
            finding(file="b.v"), finding(line=12), finding(line=2), finding(text="one\ntwo\x1b[0m"),
            {"severity": "SEV_ERROR", "ruleKey": "R", "details": {
                "text": "100%% of %1, %9", "args": {"arg": [{"scalar": {"intVal": 3, "units": "ns"}}]}}}])
        self.assertEqual(self.printed("text", result), [
            "error: 100% of 3 ns, %9 [R]",
            "b.v:7:3: warning: too narrow [WIDTH]",
            "rtl/a.v:2:3: warning: too narrow [WIDTH]",
            "rtl/a.v:7:3: warning: one two?[0m [WIDTH]",
            "rtl/a.v:12:3: warning: too narrow [WIDTH]"])

    def test_and_json_read_what_the_other_commands_write(self):
        self.rulecheck("merge", SAMPLE, "-o", "sample.pb")
        self.assertEqual(len(self.printed("text", "sample.pb")), 14)
        self.assertEqual(json.loads(self.rulecheck("json", "sample.pb").stdout)["violationCount"], 14)


def findings_of(kind):
    """The places by number."""
    return {number: each["details"]["args"]["arg"][0]["ref"]["name"]
            for number, each in kind["hashmap"].items()}


if __name__ == "__main__":
    unittest.main()
