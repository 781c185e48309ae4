# SPDX-License-Identifier: Apache-2.0

"""`rulecheck lint`, with a stand-in for Verilator."""

import json
import os
import pathlib
import resource
import signal
import subprocess
import time
import unittest

from programs import RECORDED, RULECHECK, SAMPLE, RulecheckTest, findings, read_json, verilator_findings

MODULE = "module m; endmodule\n"
NARROW = (RECORDED / "narrow.txt").read_text(encoding="utf-8")
FOUND = [("MULTIDRIVEN", "narrow.v:4:22"), ("UNDRIVEN", "narrow.v:6:8"),
         ("UNUSEDSIGNAL", "narrow.v:3:18"), ("WIDTH", "narrow.v:7:27")]
RULES = 70


class LintTest(RulecheckTest):
    def lint(self, output, *options, arguments=("m.v",), **fake):
        """What the program prints, and the result."""
        self.write("m.v", MODULE)
        program = self.fake_verilator(output, **fake)
        ended = self.rulecheck("lint", "--verilator", program, "-o", "result.json", *options,
                               "--", *arguments)
        return ended.stderr.decode("utf-8"), read_json(self.folder / "result.json")


class BadArguments(RulecheckTest):
    def test_are_refused(self):
        self.write("broken", "WIDTH\n")
        self.write("regex", "WIDTH * match=( -- reason\n")
        waivers = [
            ("WIDTH * until=tomorrow", "until=tomorrow: no such day"),
            ("WIDTH * until=2027-02-29", "until=2027-02-29: no such day"),
            ("WIDTH * until=2100-02-29", "until=2100-02-29: no such day"),
            ("WIDTH * until=2026-04-31", "until=2026-04-31: no such day"),
            ("WIDTH * until=2026-13-01", "until=2026-13-01: no such day"),
            ("WIDTH * until=2026-01-00", "until=2026-01-00: no such day"),
            ("WIDTH * match=a match=b", "expected RULE FILE"),
            ("WIDTH m.v:2:10", "expected RULE FILE"),
            ("WIDTH m.v:3-5", "expected RULE FILE"),
            ("WIDTH m.v:", "expected RULE FILE"),
            ("WIDTH :x", "expected RULE FILE"),
            ("WIDTH m.v:0", "expected RULE FILE"),
        ]
        for number, (waiver, _) in enumerate(waivers):
            self.write(f"waiver{number}", waiver + " -- reason\n")
        for name in ["m.v", "waivers.txt"]:
            self.write(name, "")
        self.write("reason", "WIDTH * -- cut short by an error\n")
        self.write("keys.ini", "[lint]\n")
        self.write("keys", "[lint]\nseverty=WIDTH=error\n")
        fine = ["lint", "--verilator", self.fake_verilator(""), "-o", "result.pb"]
        cases = [
            (["lint", "-o", "result.pb"], "VERILATOR-ARGUMENTS is required"),
            (["lint", "m.v"], "--output is required"),
            ([*fine, "--severity", "WIDTH", "m.v"], "--severity WIDTH: expected RULE=LEVEL, with "
             "one of fatal, error, critical-warning, warning, advisory"),
            (["lint", "--verilator", "./missing", "-o", "result.pb", "--severity", "WIDTH=bad", "m.v"],
             "--severity WIDTH=bad: expected"),
            ([*fine, "--waivers", "missing", "m.v"], "missing: cannot be read"),
            ([*fine, "--waivers", "broken", "m.v"], "broken:1: expected RULE FILE"),
            ([*fine, "--waivers", "reason", "m.v"], "reason:1: the reason means that a rule was not checked"),
            ([*fine[:-1], "waivers.txt", "--waivers", "waivers.txt", "m.v"], "waivers.txt: is the input"),
            ([*fine, "--html", "./m.v", "m.v"], "./m.v: is the input"),
            ([*fine, "--config", "keys.ini", "--html", "keys.ini", "m.v"], "keys.ini: is the input"),
            ([*fine, "--waivers", "regex", "m.v"], "regex:1: match=(: missing )"),
            *(([*fine, "--waivers", f"waiver{number}", "m.v"], f"waiver{number}:1: {line}")
              for number, (_, line) in enumerate(waivers)),
            *(([*fine, "--severity", f"{name}=error", "m.v"],
               f"--severity {name}=error: Verilator has no such rule")
              for name in ["WITDH", ""]),
            ([*fine, "--config", "keys", "m.v"], "keys: INI was not able to parse lint.severty"),
            ([*fine, "--html", "./result.pb", "m.v"], "--html ./result.pb: is the output"),
            ([*fine[:-1], "result.xml", "m.v"], "result.xml: unknown extension"),
            ([*fine[:-1], ".", "m.v"], "unknown extension"),
            ([*fine, "--html", "missing/page.html", "m.v"], "missing/page.html: cannot be written"),
        ]
        for words, line in cases:
            with self.subTest(words):
                self.assert_error(line, *words)
        for name in ["m.v", "waivers.txt", "keys.ini"]:
            self.assertTrue((self.folder / name).exists(), name)

    def test_verilator_that_cannot_be_run(self):
        for program in ["./missing", "no-such-verilator"]:
            self.assert_error(
                f"{program}: cannot be run: No such file or directory",
                "lint", "--verilator", program, "-o", "result.pb", "m.v", status=3)

    def test_verilator_that_fails_without_a_message(self):
        program = self.fake_verilator("first\nlast words\n", status=3)
        for action in [signal.SIG_DFL, signal.SIG_IGN]:
            with self.subTest(action):
                self.assert_error(
                    "fake verilator failed: last words",
                    "lint", "--verilator", program, "-o", "result.pb", "m.v", status=3,
                    preexec_fn=lambda: signal.signal(signal.SIGCHLD, action))
        self.assert_error(
            "fake verilator failed: exit status 9", "lint", "--verilator", self.fake_verilator(
                "%Warning-WIDTH: m.v:1:2: text\n    1 | a\n", status=9), "-o", "result.pb", "m.v", status=3)
        self.assert_error("/bin/false failed: exit status 1", "lint", "--verilator", "/bin/false",
                          "-o", "result.pb", "m.v", status=3)

    def test_temporary_folder_that_is_missing(self):
        self.assert_error("/nonexistent: No such file or directory",
                          "lint", "--verilator", "/bin/true", "-o", "result.pb", "m.v", status=3,
                          env={**os.environ, "TMPDIR": "/nonexistent"})

    def test_verilator_that_writes_half_a_list_of_files(self):
        program = self.fake_verilator("")
        program.write_text(program.read_text(encoding="utf-8").replace("echo '/dev", "printf '/dev"),
                           encoding="utf-8")
        self.assert_error("cannot write all of a file to /tmp", "lint", "--verilator", program,
                          "-o", "result.pb", "m.v", status=3, env={**os.environ, "TMPDIR": ""})

    def test_verilator_that_reads_no_source(self):
        self.assert_error("/bin/true: checked nothing", "lint", "--verilator", "/bin/true",
                          "-o", "result.pb", "m.v", status=3)


class Servers(RulecheckTest):
    def test_are_refused_by_a_program_without_grpc(self):
        if b"--ca" in self.rulecheck("lint", "--help").stdout:
            self.skipTest("the program has gRPC")
        for words in [["lint", "--server", "localhost:1", "--ca", "ca.pem", "m.v"],
                      ["send", SAMPLE, "--server", "localhost:1"]]:
            with self.subTest(words):
                self.assert_error("--server: this program was built without gRPC", *words)


class OldReports(RulecheckTest):
    def test_do_not_survive_a_failure(self):
        for name in ["result.pb", "page.html"]:
            self.write("to " + name, "old")
            (self.folder / name).symlink_to("to " + name)
        self.assert_error("cannot be run", "lint", "--verilator", "./missing", "-o", "result.pb",
                          "--html", "page.html", "m.v", status=3)
        self.assertEqual({path.name for path in self.folder.iterdir()}, {"result.pb", "page.html"})

    def test_are_not_a_file_that_is_named_like_the_standard_output(self):
        self.write("-", MODULE)
        self.rulecheck("lint", "--verilator", self.fake_verilator(""), "-o", "-", "m.v")
        self.assertTrue((self.folder / "-").exists())

    def test_are_not_files_with_another_extension(self):
        self.write("m.v", MODULE)
        self.assert_error("m.v: unknown extension", "lint", "-o", "m.v", "n.v")
        self.assertTrue((self.folder / "m.v").exists())


class Signals(RulecheckTest):
    def test_leave_no_folder_and_no_process(self):
        temporary = self.folder / "tmp"
        temporary.mkdir()
        os.mkfifo(self.folder / "ready")
        program = self.fake_verilator("")
        program.write_text(
            f"#!/bin/sh\nsleep 60 &\necho $! > '{self.folder}/ready'\nsleep 60\n", encoding="utf-8")
        for number in [signal.SIGHUP, signal.SIGINT, signal.SIGQUIT, signal.SIGTERM]:
            with self.subTest(number):
                client = subprocess.Popen(
                    [RULECHECK, "lint", "--verilator", program, "-o", "result.pb", "m.v"],
                    cwd=self.folder, env={**os.environ, "TMPDIR": str(temporary)},
                    stderr=subprocess.DEVNULL)
                child = int((self.folder / "ready").read_text(encoding="utf-8"))
                self.assertEqual(len(list(temporary.iterdir())), 1)
                client.send_signal(number)
                self.assertEqual(client.wait(10), -number)
                self.assertEqual(list(temporary.iterdir()), [])
                self.assertFalse(self.runs(child))

    def runs(self, process):
        """Whether it does, a second at most after it was killed."""
        for _ in range(100):
            try:
                state = pathlib.Path(f"/proc/{process}/stat").read_text(encoding="utf-8")
            except FileNotFoundError:
                return False
            if state.rsplit(")", 1)[1].split()[0] == "Z":
                return False
            time.sleep(0.01)
        return True


class Verilator(LintTest):
    def test_gets_its_arguments_unchanged(self):
        arguments = ["-I", "a b", "+incdir+x", "-DX='1'", "--top-module", "a $c", "-f", "a\nb", "-"]
        self.lint("", arguments=arguments)
        given = (self.folder / "arguments").read_text(encoding="utf-8")
        self.assertTrue(given.startswith("\n".join(
            ["--lint-only", "-Wall", "-Wno-fatal", *arguments, "-MMD", "--Mdir", "/"])), given)


class Findings(LintTest):
    def test_have_line_and_column(self):
        printed, result = self.lint(NARROW)
        self.assertEqual(findings(result), FOUND)
        self.assertRegex(
            printed,
            r"\AFindings\n"
            r"  fatal +0\n  error +1\n  critical warning +1\n  warning +1\n  advisory +1\n"
            rf"  waived +0\n  rules affirmed +{RULES - 4}\n  rules not fully checked +0\n\Z")
        url = result["violations"]["hashmap"]["1"]["details"]["args"]["arg"][0]["ref"]["url"]
        self.assertEqual(url["path"], f"{self.folder}/narrow.v".replace(" ", "%20"))
        self.assertEqual(url["fragment"], "L7C27")

    def test_are_those_of_each_release_of_verilator(self):
        """The output of a release is what it says of apps/designs and of small files with mistakes."""
        for path in RECORDED.glob("*.txt"):
            with self.subTest(path.name):
                said = path.read_text(encoding="utf-8")
                _, result = self.lint(said)
                self.assertEqual(findings(result), verilator_findings(said))
                self.assertNotRegex(str(result["violations"]), "In instance|Looked in|See the manual")

    def test_are_written_as_a_page_too(self):
        self.assertEqual(self.lint(NARROW, "--html", "page.html", "--quiet")[0], "")
        self.assertIn("Width mismatch", (self.folder / "page.html").read_text(encoding="utf-8"))

    def test_are_written_to_the_standard_output(self):
        program = self.fake_verilator(NARROW)
        ended = self.rulecheck("lint", "--verilator", program, "-o", "-", "--format", "txtpb", "m.v")
        self.assertIn(b"violation_count: 4\n", ended.stdout)

    def test_survive_closed_descriptors_and_limits(self):
        self.write("m.v", MODULE)
        words = ["lint", "--verilator", self.fake_verilator(NARROW), "--format", "json", "m.v", "-o"]
        for closed in range(3):
            with self.subTest(closed=closed):
                self.rulecheck(*words, "result", preexec_fn=lambda number=closed: os.close(number))
                self.assertEqual(findings(read_json(self.folder / "result")), FOUND)
        limit = (len(NARROW) - 1,) * 2
        ended = self.rulecheck(
            *words, "-", preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, limit))
        self.assertEqual(findings(json.loads(ended.stdout)), FOUND)

    def test_have_the_severity_that_the_user_says(self):
        _, result = self.lint(NARROW, "--severity", "WIDTH=fatal", "--severity", "UNUSED=error")
        found = {finding["ruleKey"]: finding["severity"]
                 for finding in result["violations"]["hashmap"].values()}
        self.assertEqual((found["WIDTH"], found["UNUSEDSIGNAL"]), ("SEV_FATAL", "SEV_ERROR"))
        self.assertEqual(result["specsViolated"]["hashmap"]["WIDTH"]["severity"], "SEV_FATAL")

    def test_take_options_from_a_file(self):
        self.write("rulecheck.conf", '[lint]\nseverity=["WIDTH=fatal"]\nquiet=true\n')
        printed, result = self.lint(NARROW, "--config", "rulecheck.conf")
        self.assertEqual(printed, "")
        self.assertEqual(result["specsViolated"]["hashmap"]["WIDTH"]["severity"], "SEV_FATAL")

    def test_that_are_errors_cut_the_check_short(self):
        printed, result = self.lint(
            "%Error: m.v:1:2: syntax error, unexpected ';'\n%Error: m.v:9:2: syntax error\n"
            "%Error: Cannot find file containing module: 'x.v'\n", status=1)
        self.assertEqual(findings(result),
                         [("ERROR", "design"), ("ERROR", "m.v:1:2"), ("ERROR", "m.v:9:2")])
        self.assertEqual(findings(result, "affirmations"), [])
        unchecked = findings(result, "waivedViolations")
        self.assertEqual(len(unchecked), RULES - 1)
        self.assertIn(("WIDTH", "m.v:1:2", "cut short by an error"), unchecked)
        self.assertRegex(printed, rf"rules affirmed +0\n  rules not fully checked +{RULES - 1}\n")


class Rules(LintTest):
    def test_are_complete(self):
        rules = self.lint("")[1]["specsAffirmed"]["hashmap"]
        self.assertEqual(len(rules), RULES)
        for key, rule in rules.items():
            with self.subTest(key):
                self.assertEqual((rule["key"], rule["owner"], rule["rawMsg"], rule["affirmMsg"]),
                                 (key, "Verilator", "%1: %2", rule["expects"]))
                self.assertTrue(rule["fullName"] and rule["expects"] and rule["resolutionMsg"])
                self.assertNotIn(rule.get("severity"), [None, "SEV_UNKNOWN"])
                self.assertEqual(rule["description"]["host"], "verilator.org")
                self.assertEqual(rule["description"]["path"],
                                 "/guide/latest/warnings.html" if key == "ERROR" else f"/warn/{key}")

    def test_that_are_unknown_are_added(self):
        _, result = self.lint("%Warning-NEW: m.v:1:2: text\n%Error-BAD: m.v:1:2: text\n")
        rules = result["specsViolated"]["hashmap"]
        for key, severity in [("NEW", "SEV_WARNING"), ("BAD", "SEV_ERROR")]:
            self.assertEqual((rules[key]["severity"], rules[key]["description"]["path"]),
                             (severity, f"/warn/{key}"))


class RulesThatAreOff(LintTest):
    def unchecked(self, dependencies, *arguments):
        _, result = self.lint("", arguments=["m.v", *arguments], dependencies=dependencies)
        affirmed = {finding["ruleKey"] for finding in result["affirmations"].get("hashmap", {}).values()}
        unchecked = findings(result, "waivedViolations")
        self.assertEqual(len(affirmed | {rule for rule, *_ in unchecked}), RULES)
        self.assertFalse(affirmed & {rule for rule, *_ in unchecked})
        return unchecked

    def test_by_comments_are_not_affirmed(self):
        self.write("a.v", "module a;\n  /* verilator lint_off WIDTH */ // verilator lint_off LATCH\n")
        self.write("a b.v", "/*verilator lint_off UNUSED*/\r\n// verilator lint_on WIDTH\n")
        reason = "switched off in the source"
        self.assertEqual(self.unchecked("a.v a b.v /bin/verilator_bin"), [
            ("LATCH", "a.v:2:34", reason), ("UNUSEDGENVAR", "a b.v:1:1", reason),
            ("UNUSEDPARAM", "a b.v:1:1", reason), ("UNUSEDSIGNAL", "a b.v:1:1", reason),
            ("WIDTH", "a.v:2:3", reason)])

    def test_by_a_file_that_cannot_be_read_are_not_affirmed(self):
        self.write("a.v", MODULE)
        for files in ["missing.v", "missing.v a.v", "/dev/zero /bin/verilator_bin a.v"]:
            with self.subTest(files):
                self.assertEqual(len(self.unchecked(files)), RULES)

    def test_by_the_text_of_a_file_are_not_affirmed(self):
        cases = [
            ("module a;\n  /* verilator\n lint_off WIDTH,\n  LATCH */\nendmodule\n", "LATCH:2:3 WIDTH:2:3"),
            ("// Verilator lint_off width", "WIDTH:1:1"),
            ("// a `verilator_config has lint_off\n// verilator lint_off WIDTH", "WIDTH:2:1"),
            ('string s = "\\" /* verilator lint_off WIDTH */"; // verilator lint_off LATCH', "LATCH:1:49"),
            ("// // verilator lint_off CASEX", ""),
            ('`define S `" // verilator lint_off BLKSEQ `"', "BLKSEQ:1:14"),
            ('wire \\" ; /* verilator lint_off UNDRIVEN */ wire \\"x ;', "UNDRIVEN:1:11"),
            ('wire \\a" , \\b//c , \\d/*e ; /*verilator lint_off LATCH*/ wire \\f" ;', "LATCH:1:28"),
            ("`define OFF(a, b) /*verilator lint_off b*/", "*:1:19"),
            ("`define OFF /*verilator lint_off `RULE*/", "*:1:13"),
            # configuration files
            ('`verilator_config\nlint_off -rule WIDTH -file "*/a.v" -lines 3\n// lint_off -rule LATCH\n'
             "lint_off -msg CASEX\nlint_on -rule BLKSEQ\n", "CASEX:4:1 WIDTH:2:1"),
            ('`verilator_config\nlint_off -file "*/a.v"\n', "*:2:1"),
            ("`verilator_config /**/ lint_off -rule width lint_off -rule CASEX", "CASEX:1:45 WIDTH:1:24"),
            ('`verilator_config\n`verilog\n// verilator lint_off WIDTH\n', "WIDTH:3:1"),
            ("`define OFF lint_off\n`OFF -rule WIDTH", "*:1:13"),
            ('$display("lint_off -rule WIDTH");', ""),
            # files of arguments
            ("/* -Wno-WIDTH\n -Wno-CASEX */ -Wno-LATCH // -Wno-UNDRIVEN\n-y rtl/* --Wno-BLKSEQ */\n",
             "BLKSEQ:3 LATCH:2"),
            ('"-Wno""-width" -Wno-"LATCH" \\-Wno-CASEX', "CASEX:1 LATCH:1 WIDTH:1"),
            ('"+define+OFF=/*verilator lint_off WIDTH*/"', "*:1"),
        ]
        for content, expected in cases:
            with self.subTest(content):
                self.write("a", content)
                found = [f"{rule}{place[1:]}" for rule, place, _ in self.unchecked("a")]
                places = {place.partition(":")[2] for place in found}
                self.assertEqual(f"*:{places.pop()}" if len(found) == RULES else " ".join(found), expected)

    def test_by_an_argument_that_a_later_one_undoes_are_affirmed(self):
        self.assertEqual([found[0] for found in self.unchecked(
            "", "-Wwarn-LATCH", "-Wno-LATCH", "-Wno-WIDTH", "-Wno-UNUSED", "-Wwarn-WIDTH",
            "-Wwarn-UNUSEDPARAM")], ["LATCH", "UNUSEDGENVAR", "UNUSEDSIGNAL"])

    def test_by_the_name_of_a_group_are_not_affirmed(self):
        for name, style, lint in [("style", True, False), ("lint", True, True), ("CASE", False, False)]:
            with self.subTest(name):
                rules = {rule for rule, *_ in self.unchecked("", f"-Wno-{name}")}
                self.assertEqual(("BLKSEQ" in rules, "LATCH" in rules), (style, lint))

    def test_by_arguments_are_not_affirmed(self):
        self.write("a.f", "-Wno-LATCH top.v\n+define+X -Wno-nosuch\n")
        self.assertEqual(self.unchecked("a.f", "-Wno-width", "-Wno-nosuch"), [
            ("LATCH", "a.f:1", "switched off in the source"),
            ("WIDTH", "command line", "switched off on the command line")])


class Waivers(LintTest):
    def waived(self, *lines):
        """The waived findings, and what the program says about the waivers."""
        self.write("waivers", "".join(f"{line}\n" for line in lines))
        printed, result = self.lint(
            NARROW.replace("narrow.v:", "rtl/narrow.v:"), "--waivers", "waivers")
        return (findings(result, "waivedViolations"), printed.splitlines()[9:])

    def test_match_rule_file_line_and_message(self):
        width = ("WIDTH", "rtl/narrow.v:7:27")
        cases = {
            "WIDTH *": [width], "WIDTH narrow.v": [width], "WIDTH rtl/narrow.v:7": [width],
            "W?D* rtl/*.v": [width], "WIDTH narrow.v match=expects.4": [width],
            "WIDTH narrow.v:8": [], "WIDTH arrow.v": [], "WIDT *": [], "WIDTH * match=nothing": [],
            "U* *": [("UNDRIVEN", "rtl/narrow.v:6:8"), ("UNUSEDSIGNAL", "rtl/narrow.v:3:18")],
        }
        for waiver, expected in cases.items():
            with self.subTest(waiver):
                found, remarks = self.waived(waiver + "  --  a reason -- or two ")
                self.assertEqual(found, [(*each, "a reason -- or two") for each in expected])
                self.assertEqual(remarks, [] if expected else
                                 ["waivers:1: the waiver matches no finding"])

    def test_are_read_from_a_file_with_a_byte_order_mark(self):
        self.assertEqual(self.waived("\ufeffWIDTH * -- reason")[1], [])

    def test_without_effect_are_named_even_if_quiet(self):
        self.write("waivers", "LATCH * -- reason\n")
        printed, _ = self.lint(NARROW, "--quiet", "--waivers", "waivers")
        self.assertEqual(printed, "waivers:1: the waiver matches no finding\n")

    def test_keep_owner_and_day_until_they_expire(self):
        found, remarks = self.waived(
            "# a comment", "", "WIDTH * until=2020-02-29 -- old",
            "WIDTH * owner=ann until=9999-12-31 -- first", "WIDTH * -- second")
        self.assertEqual(found, [("WIDTH", "rtl/narrow.v:7:27", "first (ann, until 9999-12-31)")])
        self.assertEqual(remarks, ["waivers:3: the waiver expired on 2020-02-29",
                                   "waivers:5: the waiver matches no finding"])


if __name__ == "__main__":
    unittest.main()
