"""A client in another language: what it reads and writes again, how it talks to the
server, and what docs/compatibility.md says of its runtime."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

from clients import CLIENTS, run

CLIENT = CLIENTS[os.environ["CLIENT"]]
READER = os.environ["READER"]
SERVER = os.environ["SERVER"]
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
SOURCE_DIR = pathlib.Path(os.environ["SOURCE_DIR"])
ALL_TESTS = "VOK_RULECHECK_ALL_TESTS" in os.environ
SKIPPED = 77

# For each fact that a client looks at: what the server sends in the place of what.
LIES = [
    ("type", "type: STATUS_RESPONSE", "type: VERSION"),
    ("status.code", "code: 0", "code: 1"),
    ("status.msg", "rule stored", "rule lost"),
    ("has_error", "status {", "error { code: 1 } status {"),
    ("type", "type: SESSION", "type: VERSION"),
    ("session.name", '"nightly"', '"weekly"'),
    ("session.uuid", '"s-1"', '"s-2"'),
    ("session.has_description", "timestamp:", 'description: "" timestamp:'),
    ("session.timestamp", "1700000000123", "1700000000124"),
    ("session.report_file.scheme", "scheme: FILE", "scheme: FTP"),
    ("session.report_file.path", "/reports/nightly.html", "/reports"),
    ("session.has_proto_file", "timestamp:", "proto_file { scheme: FILE } timestamp:"),
    ("type", "type: VIOLATION", "type: AFFIRMATION"),
    ("id", "id: 1\n", "id: 2\n"),
    ("severity", "SEV_CRITICAL_WARNING", "SEV_ERROR"),
    ("rule_key", '"WIDTH"', '"width"'),
    ("examples.uri", '"/width"\n      }\n    }', '"/width"\n      }\n    } uri { }'),
    ("examples.uri.link_text", '"manual"', '"Manual"'),
    ("examples.uri.url.scheme", "HTTPS", "HTTP"),
    ("examples.uri.url.host", "host.example", "host.test"),
    ("examples.uri.url.has_port", "host:", "port: 0 host:"),
    ("examples.uri.url.path", '"/width"', '"/"'),
    ("has_build_target", "rule_key:", 'build_target: "" rule_key:'),
    ("has_expects", "rule_key:", 'expects: "" rule_key:'),
    ("actual_value.has_int_val", "double_val:", "int_val: 0 double_val:"),
    ("actual_value.double_val", "187.5", "187.25"),
    ("actual_value.units", "MHz", "GHz"),
    ("threshold_value.int_val", "9223372036854775807", "9223372036854775806"),
    ("details.text", "%1 has %2", "%2 has %1"),
    ("arg", "\n    }\n  }\n  resolution {", "\n arg { } } }\n  resolution {"),
    ("arg.ref.type", "type: PORT", "type: ARRAY"),
    ("arg.ref.name", "clk", "CLK"),
    ("arg.ref.id", "id: -1", "id: 4294967"),
    ("arg.ref.url.scheme", "scheme: FILE", "scheme: DATA"),
    ("arg.ref.url.path", "/rtl/fifo.v", "/rtl/FIFO.v"),
    ("arg.ref.url.fragment", "L12", "L13"),
    ("arg.scalar.int_val", "-9007199254740993", "-9007199254740992"),
    ("arg.string_val", 'string_val: "na\\303\\257ve', 'string_val: "naive'),
    ("resolution.text", "narrower", "wider"),
    ("resolution.has_args", "  resolution {", "  resolution { args { }"),
    ("categories", "key: -1", "key: -2"),
]


def golden_vectors():
    """By name: the type, and the bytes in hexadecimal digits."""
    return {case.stem: (case.name.split(".")[0], case.read_text().split("\n")[1].removeprefix("# bytes: "))
            for case in sorted((SOURCE_DIR / "tests/library/vectors/cases").iterdir())}


def table(first_header):
    """The rows of the table of the docs that begins with that header, as dictionaries."""
    lines = (SOURCE_DIR / "docs/compatibility.md").read_text(encoding="utf-8").splitlines()
    rows = [[cell.strip().replace("`", "") for cell in line.strip("|").split("|")]
            if line.startswith("|") else [""] for line in lines]
    start = next(at for at, row in enumerate(rows) if row[0] == first_header)
    end = next(at for at in range(start, len(rows)) if rows[at] == [""])
    return [dict(zip(rows[start], row)) for row in rows[start + 2:end]]


def spaced(digits):
    return " ".join(re.findall("..", digits))


def sight(answer):
    """What a program sees of a string, in the docs' words."""
    word, *digits = answer.split()
    if word == "text":
        return " ".join(f"U+{ord(c):04X}" for c in bytes.fromhex(*digits).decode())
    return f"bytes {spaced(*digits)}" if word == "bytes" else "not read"


def enumerations_of_fields():
    """MESSAGE.FIELD of each field of the schema that is an enumeration, with its label."""
    text = SCHEMA.read_text(encoding="utf-8")
    names = "|".join(re.findall(r"^ *enum (\w+) \{", text, re.MULTILINE))
    message = ""
    for line in text.splitlines():
        if found := re.match(r"message (\w+)", line):
            message = found[1]
        elif found := re.match(rf" *(map<.*?\b|\w+ )(?:\w+\.)?(?:{names})>? (\w+) = \d+", line):
            yield f"{message}.{found[2]}", found[1].strip()


class Interop(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="interop test ")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name).resolve()
        cls.command = CLIENT.build(SCHEMA, cls.folder)

    def answers(self, command, operation, messages):
        """A program's answers for messages, each a type and its bytes."""
        questions = [f"{operation} {type_name} {data}" for type_name, data in messages]
        said = run(*command, input="".join(f"{question}\n" for question in questions))
        self.assertEqual(len(said.splitlines()), len(questions), said)
        return said.splitlines()

    def ask(self, operation, messages):
        """The client's answers."""
        return self.answers(self.command, operation, messages)

    def canonical(self, operation, messages):
        """The bytes that C++ writes for messages, in one order whatever the maps' was."""
        answers = self.answers([READER], operation, messages)
        return [answer.removeprefix("ok").strip() for answer in answers]

    def outcome(self, type_name, reply, whole, known):
        """What became of a message that the client read and wrote again, in the docs' words: one
        of them, or the bytes that it wrote."""
        word, *digits = reply.split()
        if word != "ok":
            return {"unreadable": "not read", "unwritable": "not written"}[word]
        written = "".join(digits)
        if written == whole:
            return "same bytes"
        read, = self.canonical("copy", [(type_name, written)])
        return {known: "lost", whole: "kept"}.get(read, spaced(written))

    def outcomes(self, messages):
        whole, known = self.canonical("copy", messages), self.canonical("known", messages)
        self.assertNotIn("unreadable", whole)
        types = [type_name for type_name, _ in messages]
        return list(map(self.outcome, types, self.ask("copy", messages), whole, known))

    def converse(self, *lies):
        """The exit status of the client, and what it says, after talking to the server: each
        is at the other's standard input and output."""
        with subprocess.Popen([SERVER, *lies], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as server:
            client = subprocess.run(
                [str(word) for word in [*self.command, "converse"]],
                stdin=server.stdout, stdout=server.stdin, stderr=subprocess.PIPE, text=True,
                timeout=300, check=False)
        self.assertEqual(server.returncode, 0)
        return client.returncode, client.stderr

    def require_documented_release(self):
        """The tables of the docs are those of one release of each runtime."""
        documented = next(row for row in table("Name") if row["Name"] == CLIENT.column)["Release"]
        if documented != CLIENT.version() and not ALL_TESTS:
            self.skipTest(f"the docs tell of {documented}, this is {CLIENT.version()}")
        self.assertEqual(CLIENT.version(), documented)

    def test_golden_vectors_are_written_as_they_were_read(self):
        self.require_documented_release()
        vectors = golden_vectors()
        self.assertTrue(vectors)
        others = {row["Vector"]: row[CLIENT.column] for row in table("Vector")}
        self.assertLessEqual(set(others), set(vectors))
        messages = list(vectors.values())
        self.assertEqual(self.canonical("copy", messages), [data for _, data in messages])
        found = self.outcomes(messages)
        for name, outcome in zip(vectors, found):
            with self.subTest(name):
                self.assertEqual(outcome, others.get(name, "same bytes"), vectors[name])
        same, kept = found.count("same bytes"), found.count("kept")
        print(f"{CLIENT.column} {CLIENT.version()}: {len(vectors)} vectors, {same} written byte for"
              f" byte, {kept} in another order, {len(vectors) - same - kept} otherwise")

    def test_nothing_of_a_golden_vector_is_unknown(self):
        vectors = golden_vectors()
        messages = list(vectors.values())
        for name, whole, known in zip(
                vectors, self.ask("copy", messages), self.ask("known", messages)):
            with self.subTest(name):
                self.assertEqual(known, whole)

    def test_what_it_drops_and_keeps_is_documented(self):
        self.require_documented_release()
        rows = table("What arrives")
        messages = [(row["Message"], row["Bytes"].replace(" ", "")) for row in rows]
        for row, outcome in zip(rows, self.outcomes(messages)):
            with self.subTest(row["What arrives"]):
                self.assertEqual(outcome, row[CLIENT.column], row["Bytes"])

    def test_unknown_fields_can_be_dropped(self):
        message = ("Link", "0a0161a00605")
        self.assertEqual(self.ask("known", [message]), ["ok 0a0161"])

    def test_what_a_program_sees_of_strings_that_are_not_utf8_is_documented(self):
        self.require_documented_release()
        rows = table("Bytes of a string")
        contents = [bytes.fromhex(row["Bytes of a string"]) for row in rows]
        links = [("Link", (bytes([0x0a, len(content)]) + content).hex()) for content in contents]
        for row, answer in zip(rows, self.ask("text", links)):
            with self.subTest(row["Bytes of a string"]):
                self.assertEqual(sight(answer), row[CLIENT.column])

    def test_the_docs_tell_of_each_field_that_is_an_enumeration(self):
        fields = dict(enumerations_of_fields())
        self.assertTrue(fields)
        self.assertLessEqual(set(fields.values()), {"optional", "required"}, fields)
        told = " ".join(row["What arrives"] for row in table("What arrives"))
        self.assertEqual([field for field in fields if f"An unlisted {field}" not in told], [])

    def test_the_generated_code_is_where_programs_look_for_it(self):
        self.assertTrue((self.folder / CLIENT.generated).is_file(), CLIENT.generated)

    def test_it_records_a_violation_on_the_server(self):
        self.assertEqual(self.converse(), (0, ""))

    def test_it_notices_each_field_that_the_server_answers_otherwise(self):
        status, said = self.converse(*(text for _, *lie in LIES for text in lie))
        noticed = re.findall(r"^([\w.]+): .*, not ", said, re.MULTILINE)
        self.assertEqual(sorted(noticed), sorted(fact for fact, *_ in LIES), said)
        self.assertEqual(status, 1)


if __name__ == "__main__":
    reasons = "; ".join(CLIENT.missing())
    if reasons and not ALL_TESTS:
        print(f"Skipped: {CLIENT.column}: {reasons}")
        sys.exit(SKIPPED)
    if reasons:
        sys.exit(f"All tests are to run, and {reasons}")
    unittest.main()
