# SPDX-License-Identifier: Apache-2.0

"""The program under test, and a stand-in for Verilator."""

import json
import os
import pathlib
import re
import stat
import subprocess

import program_test

HERE = pathlib.Path(__file__).parent
RECORDED = HERE / "recorded"
SAMPLE = HERE / "sample.txtpb"
RULECHECK = os.environ["RULECHECK"]


class RulecheckTest(program_test.ProgramTest):
    def rulecheck(self, *words, status=0, **options):
        """Runs the program, which must end with that status."""
        ended = subprocess.run(
            [RULECHECK, *map(str, words)], cwd=self.folder, capture_output=True, check=False,
            timeout=300, **options)
        self.assertEqual(ended.returncode, status, (words, ended.stderr))
        return ended

    def assert_error(self, words, *arguments, status=2, **options):
        """The program says one line that has the words, and nothing else."""
        ended = self.rulecheck(*arguments, status=status, **options)
        self.assertEqual(ended.stdout, b"")
        error = ended.stderr.decode("utf-8")
        self.assertRegex(error, r"\Arulecheck: [^\n]+\n\Z")
        self.assertIn(words, error)

    def page_of(self, result, *options):
        return self.rulecheck("html", result, *options).stdout

    def fake_verilator(self, output, status=0, dependencies=""):
        """A program that notes its arguments, one a line, and says what Verilator would."""
        said = self.write("said", output)
        program = self.write("fake verilator", f"""#!/bin/sh
printf '%s\\n' "$@" > '{self.folder}/arguments'
for last; do :; done
echo '/dev/null out : {dependencies}' > "$last/V__ver.d"
cat '{said}' >&2
: > /dev/stderr  # which would empty a file
exit {status}
""")
        program.chmod(program.stat().st_mode | stat.S_IXUSR)
        return program


def data_of(page):
    """What the script of a page reads."""
    return json.loads(re.search(r'id="data">(.*)</script>', page, re.S)[1])


def read_json(path):
    return json.loads(path.read_text(encoding="utf-8"))


def findings(result, kind="violations"):
    """Rule, place and waiver of each finding."""
    found = []
    for finding in result.get(kind, {}).get("hashmap", {}).values():
        argument = finding["details"]["args"]["arg"][0]
        place = argument["ref"]["name"] if "ref" in argument else argument["stringVal"]
        found.append((finding["ruleKey"], place, *finding["categories"].get("1", "").splitlines()))
    return sorted(found)


def verilator_findings(output):
    """Rule and place of each message in Verilator's output, but not its totals and advice."""
    found = []
    for rule, text in re.findall(r"^%(?:Warning|Error)(?:-(\w+))?: (.*)", output, re.M):
        place, text = re.fullmatch(r"(?:([^:]+:\d+:\d+): )?(.*)", text).groups()
        if not re.match("This may be|Exiting due|Command Failed", text):
            found.append((rule or "ERROR", place or "design"))
    return sorted(found)
