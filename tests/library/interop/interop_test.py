# SPDX-License-Identifier: Apache-2.0

"""A client in another language: what it reads and writes again, and how it talks to the server."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from clients import CLIENTS, run

NAME = os.environ["CLIENT"]
CLIENT = CLIENTS[NAME]
SERVER = os.environ["SERVER"]
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
VECTORS = pathlib.Path(os.environ["VECTORS"])
ALL_TESTS = "VOK_RULECHECK_ALL_TESTS" in os.environ
SKIPPED = 77

ES, JS, KEEPING = "javascript_es", "javascript_protobufjs", "javascript_protobufjs_keeping"

# What C++ reads and writes unchanged, and what the clients make of it that don't.
LOSSES = [
    ("an unknown field", "Link", "0a0161a00605", {JS: "0a0161"}),
    ("an unlisted number in an optional field", "RuleSpec", "0a0012005063", {JS: "0a001200"}),
    ("an unlisted number in a required field", "Resource", "0863",
     {ES: "unwritable", JS: "unreadable", KEEPING: "unreadable"}),
    ("the same in a map", "ViolationMap", "0a080803120408011063",
     {"java": "unwritable", ES: "unwritable", JS: "unreadable", KEEPING: "unreadable"}),
    ("a string that is not UTF-8", "Link", "0a02c328",
     {"python_pure": "unreadable", ES: "0a04efbfbd28", JS: "0a04efbfbd28", KEEPING: "0a04efbfbd28"}),
    ("the same in a map", "CreateViolation", "0a0032060a0161" "1201ff",
     {"python_pure": "unreadable", "java": "unreadable", ES: "0a0032080a01611203efbfbd",
      JS: "0a0032080a01611203efbfbd", KEEPING: "0a0032080a01611203efbfbd"}),
    ("a known field with another wire type", "Resource", "08011005", {ES: "unreadable", JS: "0801"}),
]

# What the answers hold, in the order of the clients' values().
ANSWERS = """0 0 rule stored 0|nightly 1700000000123 /reports/nightly.html 0|2 WIDTH 0|4 host.example
187.5 MHz 0 9223372036854775807|%1 has %2: %3|21 clk -1 -9007199254740993|naïve – ✓ 🙂|2 unsorted team α"""


def golden_vectors():
    """By name: the type, and the bytes in hexadecimal digits."""
    return {case.stem: (case.name.split(".")[0], case.read_text().split("\n")[1].removeprefix("# bytes: "))
            for case in sorted(VECTORS.iterdir())}


def as_text(type_name, digits):
    """A message as C++ reads it. Maps are in the order of their keys."""
    decoded = subprocess.run(
        ["protoc", f"-I{SCHEMA.parent}", f"--decode=vok.rulecheck.{type_name}", SCHEMA.name],
        input=bytes.fromhex(digits), capture_output=True, check=True)
    return decoded.stdout


class Interop(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="interop test ")
        cls.addClassCleanup(folder.cleanup)
        cls.command = CLIENT.build(SCHEMA, pathlib.Path(folder.name).resolve())

    def copies(self, messages):
        """What the client writes of messages, each a type and its bytes."""
        written = run(*self.command, "copy", input="".join(f"{name} {data}\n" for name, data in messages))
        self.assertEqual(written.count("\n"), len(messages), written)
        return written.split("\n")[:-1]

    def test_golden_vectors_keep_their_content(self):
        vectors = golden_vectors()
        self.assertIn("SessionResult.every_field", vectors)
        del vectors["Scalar.not_utf8"]  # see LOSSES
        for (name, (type_name, data)), copy in zip(vectors.items(), self.copies(vectors.values())):
            with self.subTest(name):
                if copy != data:
                    self.assertIn("javascript", NAME, f"other bytes: {copy}")
                    self.assertEqual(as_text(type_name, copy), as_text(type_name, data))

    def test_loses_what_is_documented_and_nothing_else(self):
        copies = self.copies([row[1:3] for row in LOSSES])
        for (what, type_name, data, others), copy in zip(LOSSES, copies):
            with self.subTest(f"{what} in {type_name}"):
                self.assertEqual(copy.split(":")[0], others.get(NAME, data), copy)

    def test_records_a_violation_on_the_server(self):
        requests = subprocess.run([*self.command, "requests"], capture_output=True, check=True)
        answers = subprocess.run([SERVER], input=requests.stdout, capture_output=True, check=True)
        values = subprocess.run([*self.command, "answers"], input=answers.stdout,
                                capture_output=True, check=True)
        self.assertEqual(values.stdout.decode().split(), ANSWERS.replace("|", " ").split())


if __name__ == "__main__":
    reasons = "; ".join(CLIENT.missing())
    if reasons and not ALL_TESTS:
        print(f"Skipped: {reasons}")
        sys.exit(SKIPPED)
    if reasons:
        sys.exit(f"All tests are to run, and {reasons}")
    unittest.main()
