# SPDX-License-Identifier: Apache-2.0

"""The conformance suite: what it covers, and that the Python package passes it."""

import base64
import json
import os
import pathlib
import re
import unittest

from google.protobuf import text_format

from vok_rulecheck import RuleService_pb2 as pb
from vok_rulecheck import converter

ROOT = pathlib.Path(__file__).resolve().parents[2]
FUNCTIONS = {"toString": converter.to_string, "href": converter.href, "toHtml": converter.to_html}
IS_PURE = os.environ["PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION"] == "python"


def cases(name):
    return [json.loads(line) for line in (ROOT / "conformance" / name).read_text(encoding="utf-8").splitlines()]


def message(case):
    return getattr(pb, case["type"]).FromString(base64.b64decode(case["bytes"]))


def is_readable(case):
    """Python's pure implementation refuses strings that are not UTF-8."""
    return not IS_PURE or "number" in case or case["json"] is not None


def enumeration(name):
    outer, _, inner = name.partition(".")
    return getattr(getattr(pb, outer), inner)


def render(case):
    if "number" in case:
        return converter.to_string(case["number"], enumeration(case["type"]))
    anchor_text = [case["anchorText"]] if "anchorText" in case else []
    return FUNCTIONS[case["function"]](message(case), *anchor_text)


class Package(unittest.TestCase):
    def test_renders_every_case(self):
        passed = 0
        for case in filter(is_readable, cases("rendering.jsonl")):
            text = render(case)
            self.assertEqual(text.encode(errors="surrogateescape"), base64.b64decode(case["base64"]), case)
            self.assertIn(case["text"], (text, None))
            passed += 1
        self.assertGreater(passed, 600)
        print(f"{passed} rendering cases")

    def test_reads_and_writes_every_message(self):
        for case in filter(is_readable, cases("wire.jsonl")):
            copy = message(case).SerializePartialToString(deterministic=True)
            self.assertEqual(base64.b64encode(copy).decode(), case["bytes"], case["case"])


class Coverage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.cases = cases("rendering.jsonl")

    def test_has_every_row_of_the_page_on_rendering(self):
        texts = {(case["function"], case["type"], case["bytes"]): case["text"]
                 for case in self.cases if "bytes" in case}
        rows = re.findall(r"^\| `(\w+)\(([A-Z][a-z]+)\)` \| (?:`(.*?)`)? ?\| (.*) \|$",
                          (ROOT / "docs/rendering.md").read_text(encoding="utf-8"), re.MULTILINE)
        self.assertTrue(rows)
        for function, type_name, text, result in rows:
            data = text_format.Parse(text, getattr(pb, type_name)()).SerializePartialToString()
            self.assertEqual(texts.get((function, type_name, base64.b64encode(data).decode())),
                             "" if result == "*(empty)*" else result.strip("`"), text)

    def test_has_what_the_page_on_renderers_names(self):
        page = (ROOT / "docs/write_a_renderer.md").read_text(encoding="utf-8")
        (case,) = re.findall(r"^```json\n(.*?)```$", page, re.MULTILINE | re.DOTALL)
        self.assertIn(json.loads(case), self.cases)
        named = re.findall(r"^\|.*\| `([a-z][^`]*)` \|$", page, re.MULTILINE)
        self.assertTrue(named)
        self.assertLessEqual(set(named), {case["case"] for case in self.cases})

    def test_has_every_number_of_the_enumerations_and_its_neighbors(self):
        for name in ("Resource.Scheme", "Reference.RefType", "Violation.Severity"):
            numbers = {case["number"] for case in self.cases if case["type"] == name}
            for number in enumeration(name).values():
                self.assertLessEqual({number - 1, number, number + 1}, numbers, name)

    def test_has_every_field_unset_empty_and_set(self):
        """For each function, of the message that it takes."""
        states = {}
        for case in self.cases:
            if "bytes" in case:
                found = message(case) if is_readable(case) else getattr(pb, case["type"])()
                for field in found.DESCRIPTOR.fields:
                    value = getattr(found, field.name)
                    is_set = len(value) > 0 if field.label == field.LABEL_REPEATED else found.HasField(field.name)
                    is_empty = is_set and not (value.ByteSize() if field.message_type else value)
                    states.setdefault((case["function"], field.full_name), set()).add(is_set + is_empty)
        self.assertEqual({key: state for key, state in states.items() if state != {0, 1, 2}}, {})


if __name__ == "__main__":
    unittest.main()
