# SPDX-License-Identifier: Apache-2.0

"""`rulecheck lint` with the real Verilator, whose own output says what it must find."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

from programs import RECORDED, RULECHECK, RulecheckTest, findings, read_json, verilator_findings

VERILATOR = os.environ["VERILATOR"]
DESIGNS = pathlib.Path(os.environ["SOURCE_DIR"], "apps/designs")

HOW_OFTEN = {"": 1, ", twice": 2}


def findings_in_readme():
    """The rule and line of each finding that the design's README lists."""
    text = (DESIGNS / "README.md").read_text(encoding="utf-8")
    found = []
    for place, rule, count in re.findall(r"^\| `(\S+:\d+)` \| ([A-Z]+)(, twice)? \|", text, re.M):
        found += [(rule, place)] * HOW_OFTEN[count]
    return sorted(found)


class Lint(RulecheckTest):
    def lint(self, *arguments):
        """The result, whose findings are those that Verilator prints."""
        said = self.run_program(VERILATOR, "--lint-only", "-Wall", "-Wno-fatal", *arguments)
        self.rulecheck("lint", "-o", "result.json", "--", *arguments)
        result = read_json(self.folder / "result.json")
        self.assertEqual(findings(result), verilator_findings(said.stderr))
        return result

    def test_finds_what_the_readme_of_the_design_says(self):
        shutil.copytree(DESIGNS, self.folder, dirs_exist_ok=True)
        result = self.lint("-f", "design.f", "--top-module", "board")
        self.assertEqual([found[:2] for found in findings(result, "waivedViolations")],
                         [("UNUSEDSIGNAL", "board.sv:15:5")])
        found = [(rule, place.rsplit(":", 1)[0]) for rule, place in findings(result)]
        self.assertEqual(found, findings_in_readme())
        self.assertEqual((len(found), len({rule for rule, _ in found})), (27, 15))

    def test_reads_designs_as_verilator_does(self):
        self.write("rtl/pkg.sv", "package p; localparam int W = 4; endpackage\n")
        self.write("rtl/top.sv", '`include "width.vh"\n// verilator lint_off UNUSEDPARAM\n'
                   "module top(input logic [`W:0] i, output logic [p::W-1:0] o);\n"
                   "  part u_part(.i(i[0]), .o(o[0]));\n  assign o = i;\nendmodule\n")
        self.write("inc/width.vh", "`define W 7\n/* verilator lint_off CASEX */\n")
        self.write("lib/part.v", "module part(input i, output o);\n  wire unused;\nendmodule\n"
                   "// verilator lint_off LATCH\n")
        self.write("waive.vlt", '`verilator_config\nlint_off -rule UNDRIVEN -file "*/lib/*.v"\n')
        self.write("design.f", "+incdir+inc\n-y lib\n-Wno-CASEOVERLAP\nrtl/pkg.sv\nrtl/top.sv\n")
        result = self.lint("-f", "design.f", "waive.vlt", "--top-module", "top", "-Wno-BLKSEQ")
        self.assertIn("WIDTH", {rule for rule, _ in findings(result)})
        unchecked = {found[:2] for found in findings(result, "waivedViolations")}
        self.assertEqual(unchecked, {
            ("UNUSEDPARAM", "rtl/top.sv:2:1"), ("CASEX", "inc/width.vh:2:1"),
            ("LATCH", "lib/part.v:4:1"), ("UNDRIVEN", "waive.vlt:2:1"),
            ("CASEOVERLAP", "design.f:3"), ("BLKSEQ", "command line")})

    def test_counts_what_verilator_reads_of_a_file(self):
        self.write("m.v", "`ifdef NO\n// verilator lint_off WIDTH\n`else\n// verilator lint_off LATCH\n`endif\n"
                   "`define OFF /*verilator lint_off CASEX*/\nmodule m;\n  `OFF\n  part u_part();\nendmodule\n")
        self.write("lib/part.v", "`ifdef NO\n// verilator lint_off BLKSEQ\n`endif\nmodule part; endmodule\n")
        unchecked = findings(self.lint("m.v", "-y", "lib"), "waivedViolations")
        self.assertEqual([found[:2] for found in unchecked], [  # a library is not preprocessed
            ("BLKSEQ", "lib/part.v:2:1"), ("CASEX", "m.v:6:13"), ("LATCH", "m.v:4:1")])

    def test_counts_what_a_library_may_read_of_a_file(self):
        self.write("quiet.vh", "`ifdef QUIET\n// verilator lint_off WIDTH\n`endif\n")
        self.write("m.v", '`include "quiet.vh"\nmodule m;\n  part u_part();\nendmodule\n')
        self.write("a b/lib/part.v", '`define QUIET\n`include "quiet.vh"\nmodule part; endmodule\n')
        self.write("a b/link/.keep", "")
        (self.folder / "link").symlink_to("a b/link")
        unchecked = findings(self.lint("m.v", "-y", "link/../lib"), "waivedViolations")
        self.assertEqual([found[:2] for found in unchecked], [("WIDTH", "quiet.vh:2:1")])

    def test_checks_a_core_of_many_files(self):
        for number in range(20):
            self.write(f"rtl/{'ab'[number % 2]}/part{number}.sv", f"""`include "width.svh"
module part{number} import core::*;(input word_t i, output word_t o);
  logic [1:0] narrow;
  assign narrow = i[`WIDTH-1:0];
  assign o = word_t'(narrow);
endmodule
""")
        for name in ["core", "unused", "more"]:
            self.write(f"pkg/{name}.sv", f"package {name}; typedef logic [7:0] word_t; endpackage\n")
        self.write("include/width.svh", "`define WIDTH 8\n")
        self.write("rtl/top.sv", "module top import core::*;(input word_t i, output word_t o[20]);\n" + "".join(
            f"  part{number} u_part{number}(.i, .o(o[{number}]));\n" for number in range(20)) + "endmodule\n")
        self.write("core.f", "-Iinclude\n-y rtl/a +libext+.sv\n-y rtl/b\n" + "".join(
            f"pkg/{name}.sv\n" for name in ["core", "unused", "more"]) + "rtl/top.sv\n")
        found = [found for found in findings(self.lint("-f", "core.f")) if found[0] == "WIDTH"]
        self.assertEqual(len(found), 20)
        self.write("waivers", "WIDTH rtl/a/*.sv -- one\nWIDTH b/part1?.sv:4 match=8.bits -- two\n")
        self.rulecheck("lint", "-o", "result.json", "--waivers", "waivers", "--", "-f", "core.f")
        result = read_json(self.folder / "result.json")
        reasons = [each[2] for each in findings(result, "waivedViolations")]
        self.assertEqual((reasons.count("one"), reasons.count("two")), (10, 5))
        self.assertEqual(len([each for each in findings(result) if each[0] == "WIDTH"]), 5)

    def test_reports_what_keeps_a_design_from_being_checked(self):
        cases = {
            "two syntax errors": "module m;\n  assign = 1;\nendmodule\nmodule n;\n  wire 3;\nendmodule\n",
            "a missing include": '`include "missing.vh"\nmodule m; endmodule\n',
            "a missing module": "module m;\n  nosuch u();\nendmodule\n",
            "carriage returns": "module m;\r\n  assign = 1;\r\nendmodule\r\n",
            "no Verilog": "This is a letter.\n",
            "nothing": "",
        }
        for name, content in cases.items():
            with self.subTest(name):
                self.write("m.v", content)
                result = self.lint("m.v")
                self.assertGreater(len(findings(result)), 0)
                self.assertEqual(findings(result, "affirmations"), [])
        self.lint("missing.v")
        self.write("m.v", "module m;\0\0 endmodule\n")
        self.lint("m.v")

    def test_affirms_nothing_if_verilator_checks_nothing(self):
        self.write("m.v", "module m; endmodule\n")
        self.write("m.f", "--E\n")
        for words in [["-E", "m.v"], ["--version"], ["--help"], ["-V"], ["-f", "m.f", "m.v"],
                      ["--xml-only", "m.v"], ["--cdc", "m.v"], ["--dpi-hdr-only", "m.v"]]:
            with self.subTest(words):
                self.assert_error("verilator: checked nothing", "lint", "-o", "result.pb", "--",
                                  *words, status=3)

    def test_affirms_rules_of_a_design_without_findings(self):
        self.write("m.v", "module m; endmodule\n")
        self.write("m.f", "m.v\n")
        self.write("empty.vlt", "`verilator_config\n")
        for words in [["m.v"], ["-f", "m.f"], ["--top-module", "m", "m.v"], ["empty.vlt", "m.v"]]:
            with self.subTest(words):
                result = self.lint(*words)
                self.assertEqual(findings(result), [])
                self.assertIn("affirmations", result)

    def test_takes_names_as_verilator_does(self):
        narrow = (RECORDED / "narrow.v").read_text(encoding="utf-8")
        for names in [["ü.v"], ["a'b\".v"], ["./-x.v"], ["one/narrow.v", "two/narrow.v"], ["a b.v"]]:
            with self.subTest(names):
                for name in names:
                    self.write(name, narrow)
                self.lint(*names)
        # Verilator's own lines are broken by such a name.
        self.write("a\nb.v", narrow)
        self.rulecheck("lint", "-o", "result.json", "--", "a\nb.v")
        self.assertGreater(len(findings(read_json(self.folder / "result.json"))), 0)

    def test_gate_of_the_page_about_ci(self):
        page = pathlib.Path(os.environ["SOURCE_DIR"], "docs/ci.md").read_text(encoding="utf-8")
        script = self.write("check.sh", re.search(r"^```sh\n(.*?)^```", page, re.M | re.S)[1])
        self.write("waivers", "")
        path = f"{pathlib.Path(RULECHECK).parent}:{os.environ['PATH']}"
        narrow = "wire [1:0] w = a;"
        for before, now, status in [
                (None, narrow, 0), ("", "", 0), (narrow, narrow, 0), ("", narrow, 1),
                (None, "wire w = ;", 1)]:
            with self.subTest(before=before, now=now):
                module = "module m(input [3:0] a, output [3:0] o);\nassign o = a;\n{}\nendmodule\n"
                if before is not None:
                    self.write("m.v", module.format(before))
                    self.rulecheck("lint", "-o", "main.pb", "--", "m.v")
                self.write("m.v", "// moved\n" + module.format(now))
                ended = subprocess.run(["sh", script, "m.v"], cwd=self.folder, capture_output=True,
                                       text=True, check=False, env={**os.environ, "PATH": path})
                self.assertEqual(ended.returncode, status, ended.stdout + ended.stderr)
                self.assertTrue((self.folder / "today.sarif").exists())
                (self.folder / "main.pb").unlink(missing_ok=True)

    def test_recordings_are_what_verilator_says(self):
        if "5.006" not in self.run_program(VERILATOR, "--version").stdout:
            self.skipTest("the recordings are of Verilator 5.006")
        for recording in ["errors.v", "narrow.v", "syntax.v"]:
            with self.subTest(recording):
                self.write(recording, (RECORDED / recording).read_text(encoding="utf-8"))
                ended = self.run_program(
                    VERILATOR, "--lint-only", "-Wall", "-Wno-fatal", "--no-timing", recording)
                recorded = RECORDED / recording.split(".")[0]
                self.assertEqual(
                    ended.stderr, recorded.with_suffix(".txt").read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
