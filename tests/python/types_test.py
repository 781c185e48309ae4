# SPDX-License-Identifier: Apache-2.0

"""What a type checker says of programs that use the package's hints. Skipped without pyright."""

import json
import os
import pathlib
import shutil
import sys
import unittest

from program_test import ProgramTest

PYRIGHT = pathlib.Path(__file__).resolve().parents[1] / "node_modules/.bin/pyright"
IMPORTS = """import io
from typing import List, Optional
from vok_rulecheck import RuleService_pb2 as pb, converter, read_delimited, write_delimited
"""
RIGHT = [
    "text: str = converter.to_html(pb.Arg(string_val='a'))",
    "anchor: str = converter.to_html(pb.Resource(scheme=pb.Resource.FILE), 'text')",
    "texts: List[str] = converter.to_html_many([pb.Arg(), pb.Link(), pb.Reference()])",
    "address: str = converter.href(pb.Resource())",
    "plain: str = converter.to_string(pb.Scalar(int_val=4))",
    "word: str = converter.to_string(pb.Violation.SEV_ERROR, pb.Violation.Severity)",
    "link: Optional[pb.Link] = read_delimited(io.BytesIO(), pb.Link, max_bytes=9)",
    "write_delimited(io.BytesIO(), pb.Link())",
]
WRONG = [
    "converter.to_html(5)",
    "converter.to_html(pb.Resource())",
    "converter.to_html(pb.Arg(), 'text')",
    "converter.to_html(pb.Resource(), b'text')",
    "converter.to_html_many(pb.Arg())",
    "converter.href(pb.Arg())",
    "converter.to_string(pb.Arg())",
    "converter.to_string(1)",
    "sure: pb.Link = read_delimited(io.BytesIO(), pb.Link)",
    "write_delimited(io.BytesIO(), 5)",
    "pb.Arg(text='a')",
]


class Types(ProgramTest):
    def test_of_right_calls_are_accepted_and_of_wrong_ones_refused(self):
        lines = RIGHT + WRONG
        program = self.write("program.py", IMPORTS + "\n".join(lines) + "\n")
        self.write("pyrightconfig.json", json.dumps(
            {"extraPaths": [os.environ["PACKAGE"]], "typeCheckingMode": "strict", "reportMissingModuleSource": False}))
        found = json.loads(self.run_program(PYRIGHT, "--outputjson", "-p", self.folder).stdout)
        first = IMPORTS.count("\n")
        errors = {}
        for message in found["generalDiagnostics"]:
            self.assertEqual(message["file"], str(program))
            errors.setdefault(message["range"]["start"]["line"] - first, message["message"])
        for number, line in enumerate(lines):
            with self.subTest(line):
                self.assertEqual(number in errors, line in WRONG, errors.get(number))


if __name__ == "__main__":
    if not PYRIGHT.exists() or not shutil.which("node"):
        sys.exit("There is no pyright: run npm ci in tests" if "VOK_RULECHECK_ALL_TESTS" in os.environ else 77)
    unittest.main()
