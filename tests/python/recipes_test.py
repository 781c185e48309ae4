# SPDX-License-Identifier: Apache-2.0

"""The Python programs in examples/."""

import os
import pathlib
import subprocess
import sys
import unittest

from program_test import ProgramTest
from vok_rulecheck import RuleService_pb2 as pb

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
ERROR, WARNING = pb.Violation.SEV_ERROR, pb.Violation.SEV_WARNING


class RecipeTest(ProgramTest):
    def run_recipe(self, name, *words):
        ended = self.run_program(sys.executable, "-B", EXAMPLES / name, *words)
        self.assertEqual((ended.stderr, ended.returncode), ("", 0))
        return ended.stdout

    def write_result(self, name, *violations):
        """A result whose violations, numbered from 1, have a severity, and modules of their places. The
        affirmation after them has another id than its key."""
        result = pb.SessionResult(session=pb.Session(name=name, build_target=f"of {name}"))
        result.specs_violated.hashmap["WIDTH"].full_name = name
        result.specs_violated.hashmap["WIDTH"].key = "WIDTH"
        for number, (severity, *modules) in enumerate(violations, 1):
            violation = result.violations.hashmap[number]
            violation.id, violation.severity, violation.rule_key = number, severity, "WIDTH"
            violation.details.text = f"<{name}>"
            for module in modules:
                violation.details.args.arg.add(ref=pb.Reference(type=pb.Reference.HIERARCHY, name=module))
        result.affirmations.hashmap[len(violations) + 1].id = len(violations) + 2
        (self.folder / name).write_bytes(result.SerializeToString())

    def read_result(self, name):
        return pb.SessionResult.FromString((self.folder / name).read_bytes())


class OwnReport(RecipeTest):
    def test_shows_violations_and_escapes_what_they_say(self):
        self.write_result("a", (WARNING, "top/<b>", "u2"))
        result = self.read_result("a")
        first, second = result.violations.hashmap[1].details.args.arg
        first.ref.url.scheme, first.ref.url.path = pb.Resource.FILE, '/"'
        second.ref.url.scheme, second.ref.url.host = pb.Resource.MAILTO, "javascript:alert(1)"
        (self.folder / "a").write_bytes(result.SerializeToString())
        self.run_recipe("own_report.py", "a", "page.html")
        self.assertIn("<tr><td>1</td><td>warning</td><td>WIDTH</td><td>&lt;a&gt;</td>"
                      '<td><a href="file:///&quot;">top/&lt;b&gt;</a>, u2</td></tr>\n</table>\n',
                      (self.folder / "page.html").read_text())


class Postprocess(RecipeTest):
    def test_merges_filters_and_counts(self):
        self.write_result("a", (ERROR, "top/fifo", "top/uart"), (WARNING, "top"), (ERROR, "cpu"))
        self.write_result("b", (pb.Violation.SEV_FATAL, "top"), (WARNING, "cpu"))
        self.assertEqual(self.run_recipe("postprocess.py", "out", "a", "b"), "2 top\n1 cpu\n")
        out = self.read_result("out")
        self.assertEqual({number: (found.id, found.details.text, found.build_target)
                          for number, found in out.violations.hashmap.items()},
                         {1: (1, "<a>", ""), 3: (3, "<a>", ""), 6: (6, "<b>", "of b")})
        self.assertEqual({number: found.id for number, found in out.affirmations.hashmap.items()}, {4: 5, 8: 8})
        self.assertEqual((out.session.name, out.violation_count, out.affirmation_count), ("a", 3, 2))
        self.assertEqual(out.specs_violated.hashmap["WIDTH"].full_name, "a")


@unittest.skipUnless(os.environ.get("RULECHECK"), "no rule server was built, or there is no gRPC for Python")
class RecordFinding(RecipeTest):
    def test_is_recorded_and_the_report_is_opened(self):
        server = subprocess.Popen([os.environ["RULECHECK"], "serve", "--files", self.folder], text=True,
                                  stdout=subprocess.PIPE)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        address = server.stdout.readline().removeprefix("Listening on ").strip()
        report = self.folder / "report.html"
        os.environ["BROWSER"] = "echo %s"
        self.assertEqual(self.run_recipe("record_finding.py", address, report),
                         f"1: warning\nfile://{report}\n")
        self.assertIn("fifo.v:12", report.read_text())


if __name__ == "__main__":
    unittest.main()
