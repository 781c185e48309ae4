# SPDX-License-Identifier: Apache-2.0

"""Clients in other languages: what they read and write again, and how they talk to the server.

Each is a program with its language's own runtime, built from the installed RuleService.proto
and nothing else of the library. Its commands:

    copy     for each line TYPE HEX of its input, prints the message read and written again in
             hexadecimal digits, or "unreadable: WHY" or "unwritable: WHY"
    request  prints a request to record a violation
    answer   prints values from the answer of the rule server, which server.cpp runs

A client whose language is missing is skipped, except by tools/test --all.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

NAME = os.environ["CLIENT"]
SERVER = os.environ["SERVER"]
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
VECTORS = pathlib.Path(os.environ["VECTORS"])
HERE = pathlib.Path(__file__).resolve().parent
NODE_MODULES = HERE.parents[1] / "node_modules"
PYTHON = "/usr/bin/python3"  # Debian's, which has the runtime
JAR = "/usr/share/java/protobuf.jar"
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

# What the server has to know before a client reports a violation.
SETUP = ["""type: UPSERT_RULESPEC upsert_rulespec { rule_spec {
         key: "WIDTH" full_name: "Width of a bus" raw_msg: "%1 has %2: %3"
         categories { key: -1 value: "unsorted" } dynamic_categories { key: 7 value: true }
         examples { uri { link_text: "manual" url { scheme: HTTPS host: "host.example" } } } } }""",
         """type: START_SESSION start_session { name: "nightly" uuid: "s-1" }"""]

# What the answer holds, in the order of the clients' values().
ANSWER = "2 WIDTH 0 4 host.example 187.5 0 9223372036854775807 21 clk -1 -9007199254740993 naïve – ✓ 🙂 2 unsorted team α"


def golden_vectors():
    """By name: the type, and the bytes in hexadecimal digits."""
    return {case.stem: (case.name.split(".")[0], case.read_text().split("\n")[1].removeprefix("# bytes: "))
            for case in sorted(VECTORS.iterdir())}


def protoc(direction, type_name, content):
    return run("protoc", f"-I{SCHEMA.parent}", f"--{direction}=vok.rulecheck.{type_name}", SCHEMA.name,
               input=content)


def as_text(type_name, digits):
    """A message as C++ reads it. Maps are in the order of their keys."""
    return protoc("decode", type_name, bytes.fromhex(digits))


def delimited(data):
    return bytes([len(data) & 127 | 128, len(data) >> 7]) + data  # fewer than 16,384 bytes


def run(*command, **options):
    ended = subprocess.run([str(word) for word in command], capture_output=True, check=False, **options)
    if ended.returncode != 0:
        raise RuntimeError(f"{command} failed:\n{ended.stdout}{ended.stderr}")
    return ended.stdout


def generate(*options):
    """Runs the distribution's compiler, the one that its runtimes go with."""
    run("protoc", f"--proto_path={SCHEMA.parent}", *options, SCHEMA.name)


def python(folder, implementation):
    generate(f"--python_out={folder}")
    shutil.copy(HERE / "client.py", folder)
    command = ["env", f"PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION={implementation}", PYTHON, "-B"]
    used = "from google.protobuf.internal import api_implementation as a; print(a.Type())"
    assert run(*command, "-c", used).decode().strip() == implementation
    return [*command, folder / "client.py"]


def java(folder):
    generate(f"--java_out={folder}")
    run("javac", "-J-XX:TieredStopAtLevel=1", "-nowarn", "-proc:none", "-encoding", "UTF-8", "-cp", JAR,
        "-d", folder, HERE / "Client.java", *folder.rglob("*.java"))
    return ["java", "-XX:TieredStopAtLevel=1", "-cp", f"{folder}:{JAR}", "Client"]


def javascript(folder, runtime):
    (folder / "package.json").write_text('{"type": "module"}', encoding="utf-8")
    (folder / "node_modules").symlink_to(NODE_MODULES)
    shutil.copy(HERE / "client.mjs", folder)
    tools = NODE_MODULES / ".bin"
    if runtime == "es":
        generate(f"--plugin={tools / 'protoc-gen-es'}", "--es_opt=target=js", f"--es_out={folder}")
    else:
        run("node", tools / "pbjs", "--target", "static-module", "--wrap", "esm", "--es6",
            "--out", folder / "RuleService.js", SCHEMA)
    return ["node", folder / "client.mjs", runtime]


# What each client needs, and how it is built: the function returns the command that runs it.
PYTHON_NEEDS = ["/usr/lib/python3/dist-packages/google/protobuf"]
CLIENTS = {
    "python_cpp": (PYTHON_NEEDS, python, "cpp"),
    "python_pure": (PYTHON_NEEDS, python, "python"),
    "java": (["javac", "java", JAR], java),
    ES: (["node", NODE_MODULES / "@bufbuild/protobuf"], javascript, "es"),
    JS: (["node", NODE_MODULES / "protobufjs"], javascript, "protobufjs"),
    KEEPING: (["node", NODE_MODULES / "protobufjs"], javascript, "protobufjs_keeping"),
}
NEEDS, BUILD, *ARGUMENTS = CLIENTS[NAME]


class Interop(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory(prefix="interop test ")
        cls.addClassCleanup(folder.cleanup)
        cls.command = BUILD(pathlib.Path(folder.name).resolve(), *ARGUMENTS)

    def copies(self, messages):
        """What the client writes of messages, each a type and its bytes."""
        lines = "".join(f"{name} {data}\n" for name, data in messages)
        written = run(*self.command, "copy", input=lines.encode()).decode()
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
        requests = [protoc("encode", "Request", text.encode()) for text in SETUP]
        requests.append(run(*self.command, "request"))
        answer = run(SERVER, input=b"".join(map(delimited, requests)))
        self.assertEqual(run(*self.command, "answer", input=answer).decode().split(), ANSWER.split())


if __name__ == "__main__":
    missing = [str(need) for need in ["protoc", *NEEDS] if not shutil.which(need) and not os.path.exists(need)]
    if missing and not ALL_TESTS:
        print(f"Skipped: there is no {', '.join(missing)}")
        sys.exit(SKIPPED)
    if missing:
        sys.exit(f"All tests must run, but there is no {', '.join(missing)}; run npm ci in tests")
    unittest.main()
