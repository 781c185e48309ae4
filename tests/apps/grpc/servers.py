# SPDX-License-Identifier: Apache-2.0

"""A rule server under test, and a client that sends it messages or bytes."""

import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile

import program_test

BUILD_DIR = pathlib.Path(os.environ["BUILD_DIR"])
SOURCE_DIR = pathlib.Path(os.environ["SOURCE_DIR"])
README = SOURCE_DIR / "apps/grpc/README.md"
RULECHECK = os.environ["RULECHECK"]
SERVE = [RULECHECK, "serve"]
SCHEMA = pathlib.Path(os.environ["SCHEMA"])
SERVICE = "vok.rulecheck.RuleCheckService"
HEALTH = "/grpc.health.v1.Health/Check"
ENDED_WELL = (0, "", "")
MEBIBYTE = 1 << 20

# Also for programs that are started.
os.environ["PYTHONPATH"] += os.pathsep + os.environ["MESSAGES_DIR"]
sys.path.append(os.environ["MESSAGES_DIR"])

import grpc  # noqa: E402
import RuleService_pb2 as protocol  # noqa: E402

# What each method takes and returns.
METHODS = {
    method.name: (getattr(protocol, method.input_type.name),
                  getattr(protocol, method.output_type.name))
    for method in protocol.DESCRIPTOR.services_by_name["RuleCheckService"].methods}


def file(path):
    return protocol.Resource(scheme=protocol.Resource.FILE, path=path)


def session(uuid):
    """The argument of methods that take the session's uuid only."""
    return protocol.Session(name="", uuid=uuid)


def finding(uuid, *texts, rule="W"):
    """The argument of createViolation."""
    arguments = [protocol.Arg(string_val=text) for text in texts]
    return protocol.CreateViolation(
        rule_key=rule, session_uuid=uuid, args=protocol.ArgList(arg=arguments))


def serialized(content):
    return content if isinstance(content, bytes) else content.SerializeToString()


def connected(address, timeout=None):
    """A socket."""
    if address.startswith("unix:"):
        connection = socket.socket(socket.AF_UNIX)
        connection.connect(address.removeprefix("unix:"))
        return connection
    host, port = address.rsplit(":", 1)
    return socket.create_connection((host, int(port)), timeout)


class Client:
    def __init__(self, channel):
        self.channel = channel

    def method(self, name):
        return self.channel.unary_unary(
            name if "/" in name else f"/{SERVICE}/{name}", request_serializer=serialized)

    def send(self, method, content, **options):
        """Sends a message or bytes to a method, and returns the bytes of the answer."""
        return self.method(method)(content, timeout=60, **options)

    def future(self, method, content=b"", timeout=120):
        return self.method(method).future(content, timeout=timeout)

    def leave_unread(self, method, content):
        """A call whose answer is not read."""
        return self.channel.unary_stream(
            f"/{SERVICE}/{method}", request_serializer=serialized)(content)

    def call(self, method, **fields):
        argument, answer = METHODS[method]
        return answer.FromString(self.send(method, argument(**fields)))

    def refusal(self, method, content=b"", **options):
        """The status that refuses a message or bytes, and its text."""
        try:
            self.send(method, content, **options)
        except grpc.RpcError as error:
            return error.code().name, error.details()
        return "OK", None

    def start(self, name="n", **fields):
        """Opens a session, with the rule "W" to break."""
        self.call("upsertRuleSpec", key="W", full_name="Widths")
        return self.call("startSession", name=name, **fields).uuid

    def find(self, session, mark):
        return protocol.Violation.FromString(
            self.send("createViolation", finding(session, mark))).id

    def found(self, session):
        """The marks of a session's violations by number."""
        result = self.call("getSessionResult", name="", uuid=session)
        violations = result.violations.hashmap
        assert result.violation_count == len(violations)
        return {number: violation.details.args.arg[0].string_val
                for number, violation in violations.items()}


class Server:
    """The program. Unless the test ends it, it must end well after the test."""

    def __init__(self, test, *options, environment=None, prefix=()):
        self.ended = False
        self.errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [*prefix, *SERVE, *map(str, options)], stdout=subprocess.PIPE, stderr=self.errors,
            text=True, cwd=test.folder, env={**os.environ, **(environment or {})})
        test.addCleanup(self.close, test)
        line = self.process.stdout.readline()
        test.assertRegex(line, r"\AListening on .+\n\Z", self.error_text())
        self.address = line.removeprefix("Listening on ").rstrip("\n")

    def error_text(self):
        self.errors.seek(0)
        return self.errors.read().decode()

    def send_signal(self, number):
        self.process.send_signal(number)

    def end(self):
        """What the program said at its end, in all: exit status, output and errors."""
        self.ended = True
        status = self.process.wait(timeout=60)
        return status, self.process.stdout.read(), self.error_text()

    def stop(self, number=signal.SIGTERM):
        self.send_signal(number)
        return self.end()

    def close(self, test):
        try:
            if not self.ended:
                test.assertEqual(self.stop(), ENDED_WELL)
        finally:
            self.kill()
            self.process.stdout.close()
            self.errors.close()

    def kill(self):
        self.ended = True
        self.process.kill()
        self.process.wait()

    def memory(self, kind):
        """In bytes."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="ascii")
        return int(re.search(rf"{kind}:\s+(\d+) kB", status)[1]) << 10

    def most_memory(self):
        return self.memory("VmHWM")


class ServerTest(program_test.ProgramTest):
    def channel(self, address, credentials=None, options=()):
        options = [("grpc.enable_retries", 0), ("grpc.use_local_subchannel_pool", 1), *options]
        channel = (grpc.insecure_channel(address, options) if credentials is None else
                   grpc.secure_channel(address, credentials, options))
        self.addCleanup(channel.close)
        return Client(channel)

    def large_channel(self):
        return self.channel(self.server.address, options=[
            ("grpc.max_receive_message_length", -1), ("grpc.max_send_message_length", -1)])

    def report(self, address, *options, lines=0):
        """Has rulecheck record so many lines of a Verilator that is not there."""
        self.write("m.v", "module m; endmodule\n")
        said = self.write("said", "".join(
            f"%Warning-WIDTH: m.v:{line}:1: text\n" for line in range(1, lines + 1)))
        return self.run_program(RULECHECK, "lint", "--verilator", self.verilator_saying(said),
                                "--server", address, *options, "m.v")

    def verilator_saying(self, path):
        """A program that says what the file has, and lists what it read as Verilator does."""
        program = self.write("verilator", f"""#!/bin/sh
cat '{path}' >&2
for last; do :; done
echo '/dev/null out : ' > "$last/V__ver.d"
""")
        program.chmod(0o755)
        return program

    def assert_lost(self, ended):
        """The client said that there is no connection, with exit status 3."""
        self.assertEqual((ended.returncode, ended.stdout), (3, ""))
        self.assertRegex(
            ended.stderr, r"\Arulecheck: no connection to the server: [^\n]+\n\Z")
