# SPDX-License-Identifier: Apache-2.0

"""What the methods answer, and that the server goes on after what it refuses."""

import signal
import threading
import time
import unittest

import grpc
from google.protobuf import text_format
from proxy import Proxy
from servers import HEALTH, MEBIBYTE, METHODS, Server, ServerTest, file, protocol, session

REFLECTION = "/grpc.reflection.v1alpha.ServerReflection/ServerReflectionInfo"
SESSION = 'name: "n" uuid: "s"'
FILE = 'data_file { scheme: FILE path: "r.pb" }'
FILES = 'report_file { scheme: FILE path: "r.html" } proto_file { scheme: FILE path: "s.pb" }'
FINDING = 'rule_key: "W" session_uuid: "s"'

# In the order of the calls: method, argument, answer without the time.
CALLS = [
    ("getVersion", '', 'major: 1 minor: 4 patch: 0'),
    ("exchangeToken", 'token: "secret"', 'code: 0 msg: "token accepted"'),
    ("upsertRuleSpec", 'key: "W" full_name: "Widths"', 'code: 0 msg: "rule stored"'),
    ("dumpRules", FILE, 'code: 0 msg: "1 rule written"'),
    ("loadRuleDataFile", FILE, 'code: 0 msg: "1 rule loaded, 0 rules skipped"'),
    ("startSession", f'{SESSION} description: "d" timestamp: 5 build_target: "t" {FILES}',
     f'{SESSION} description: "d" {FILES}'),
    ("getSession", 'session_uuid: "s"', f'{SESSION} description: "d" {FILES}'),
    ("createAffirmation", FINDING, 'id: 1 rule_key: "W" details { text: "Widths" }'),
    ("createViolation", f'{FINDING} severity: SEV_ERROR',
     'id: 2 rule_key: "W" details { text: "Widths" } severity: SEV_ERROR'),
    ("writeReport", 'name: "" uuid: "s"', 'code: 0 msg: "report written"'),
    ("resetSession", 'name: "" uuid: "s"', 'code: 0 msg: "session reset"'),
    ("getSessionResult", 'name: "another" uuid: "s"',
     f'session {{ {SESSION} description: "d" {FILES} }} violation_count: 0 waived_count: 0'
     ' affirmation_count: 0 violations { } waived_violations { } affirmations { }'),
    ("stopSession", 'name: "" uuid: "s"', 'code: 0 msg: "session stopped"'),
    ("stopServer", 'token: "secret"', 'code: 0 msg: "server stopped"'),
]


class Methods(ServerTest):
    def test_answer_with_the_body_of_the_response(self):
        server = Server(self, "--files", ".", environment={"RULE_SERVER_TOKEN": "secret"})
        client = self.channel(server.address)
        self.assertEqual({method for method, _, _ in CALLS}, METHODS.keys())
        for method, argument, expected in CALLS:
            with self.subTest(method):
                argument_type, answer_type = METHODS[method]
                content = text_format.Parse(argument, argument_type())
                answer = answer_type.FromString(client.send(method, content))
                for own in (answer, getattr(answer, "session", None)):
                    if isinstance(own, protocol.Session):
                        own.ClearField("timestamp")
                self.assertEqual(answer, text_format.Parse(expected, answer_type()))

    def test_answer_errors_with_statuses(self):
        for files, method, argument, expected in [
                ([], "getSession", 'session_uuid: "s"', ("NOT_FOUND", 'there is no session "s"')),
                ([], "dumpRules", FILE,
                 ("FAILED_PRECONDITION", "this server was given no directory for files")),
                (["--files", "."], "dumpRules", FILE.replace("r.pb", "../r.pb"),
                 ("FAILED_PRECONDITION",
                  "../r.pb: outside of the server's directory, or unreachable"))]:
            content = text_format.Parse(argument, METHODS[method][0]())
            client = self.channel(Server(self, *files).address)
            self.assertEqual(client.refusal(method, content), expected)


class RefusalsTest(ServerTest):
    def setUp(self):
        super().setUp()
        (self.folder / "files").mkdir()
        self.server = Server(self, "--files", "files", environment={"RULE_SERVER_TOKEN": "secret"})
        self.client = self.channel(self.server.address)

    def tearDown(self):
        """Whatever was refused, the server works."""
        own = self.client.start()
        self.assertEqual(self.client.find(own, "mark"), 1)
        self.assertEqual(self.client.found(own), {1: "mark"})


class Arguments(RefusalsTest):
    def test_that_are_malformed(self):
        malformed = {
            "bytes that are no message": b"\xff" * 20,
            "a length past the end": b"\x0a\x7f",
            "a length of 50,000,000": b"\x0a\x80\xe1\xeb\x17\x61",
            "a tag without value": b"\x08",
            "nested groups": b"\xa3\x06" * 1000,
        }
        for method in METHODS:
            for name, content in malformed.items():
                with self.subTest(name, method=method):
                    self.assertEqual(
                        self.client.refusal(method, content),
                        ("INVALID_ARGUMENT", "malformed bytes"))
        self.assertLess(self.server.most_memory(), 200 * MEBIBYTE)

    def test_that_lack_a_required_field(self):
        for method, (argument, _) in METHODS.items():
            missing = argument().FindInitializationErrors()
            with self.subTest(method):
                status = self.client.refusal(method)
                if missing:
                    self.assertEqual(
                        status, ("INVALID_ARGUMENT", "missing " + ", ".join(missing)))
                else:
                    self.assertNotEqual(status[0], "INTERNAL")

    def test_that_lack_so_many_that_the_text_is_cut(self):
        # 150,000 references without type.
        content = b"\x0a\x01W\x1a\xc0\xcf\x24" + b"\x0a\x02\x0a\x00" * 150000
        status, text = self.client.refusal("createViolation", content)
        self.assertEqual(status, "INVALID_ARGUMENT")
        self.assertRegex(text, r"\Amissing args\.arg\[0\]\.ref\.type, .*\.\.\.\Z")
        self.assertEqual(len(text), 1003)

    def test_that_are_longer_than_a_mebibyte(self):
        for method, (argument, _) in METHODS.items():
            for size, refused in [(MEBIBYTE, False), (MEBIBYTE + 1, True)]:
                content = argument_of_size(argument, size)
                self.assertEqual(len(content), size)
                with self.subTest(method, size=size):
                    refused = refused or "token" in argument.DESCRIPTOR.fields_by_name
                    status, text = self.client.refusal(method, content)
                    too_long = status == "RESOURCE_EXHAUSTED" and (
                        "larger than max" in text or "too long" in text)
                    self.assertEqual(too_long, refused, text)

    def test_that_are_compressed(self):
        for compression in [grpc.Compression.Gzip, grpc.Compression.Deflate]:
            status, text = self.client.refusal(
                "exchangeToken", b"\x0a\x80\x40" + b"t" * 8192, compression=compression)
            self.assertEqual(status, "UNIMPLEMENTED", text)

    def test_for_methods_that_do_not_exist(self):
        for method in ["/vok.rulecheck.RuleCheckService/getRuleSpecs", "/nothing.Here/getVersion"]:
            self.assertEqual(self.client.refusal(method)[0], "UNIMPLEMENTED", method)


def argument_of_size(argument, size):
    """An argument with an unknown field of as many bytes as are missing."""
    message = argument()
    for field in message.FindInitializationErrors():
        setattr(message, field, "x")
    head = message.SerializeToString() + b"\xa2\x7d"
    length = size - len(head) - 3
    return head + bytes([length & 127 | 128, length >> 7 & 127 | 128, length >> 14]) + b"u" * length


class Frames(RefusalsTest):
    """What a client sends is changed on its way, as clients make no such frames."""

    def test_that_are_malformed(self):
        argument = protocol.ExchangeToken(token="secret").SerializeToString()
        good = b"\0" + len(argument).to_bytes(4, "big") + argument
        malformed = ("INVALID_ARGUMENT", "malformed bytes")
        missing = ("INVALID_ARGUMENT", "missing token")
        cases = {
            good: ("OK", None),
            b"\0\0\0\0\x09" + argument: malformed,
            b"\0\0\x10\0\0" + argument: malformed,
            b"\0\xff\xff\xff\xff" + argument: malformed,
            b"\0\0\0\0\x07" + argument: malformed,
            b"\0\0\0\0\0" + argument: missing,
            b"\2" + good[1:]: missing,
            b"\xff" + good[1:]: missing,
        }
        for frame, expected in cases.items():
            with self.subTest(frame):
                proxy = Proxy(self, self.server.address, change=lambda sent, new=frame:
                              sent.replace(good, new))
                client = self.channel(proxy.address)
                self.assertEqual(client.refusal("exchangeToken", argument), expected)
                client.channel.close()


class Tokens(RefusalsTest):
    @staticmethod
    def attempt(client, token):
        return client.future("exchangeToken", protocol.ExchangeToken(token=token))

    def test_that_wait_are_few(self):
        self.attempt(self.client, "guess").exception()
        clients = [self.channel(self.server.address) for _ in range(20)]
        guesses = [self.attempt(client, "guess") for client in clients for _ in range(16)]
        codes = {guess.code().name for guess in guesses}
        self.assertEqual(codes, {"UNAUTHENTICATED", "RESOURCE_EXHAUSTED"})
        for client in clients:
            client.channel.close()
        self.assertEqual(self.client.call("exchangeToken", token="secret").code, 0)

    def test_take_a_second_after_a_guess_and_nothing_else_does(self):
        self.assertEqual(self.attempt(self.client, "first").code().name, "UNAUTHENTICATED")
        begin = time.monotonic()
        guesses = [self.attempt(self.client, str(i)) for i in range(40)]
        other = self.channel(self.server.address)
        right = self.attempt(other, "secret")
        for _ in range(100):
            other.call("getVersion")
        self.assertLess(time.monotonic() - begin, 1)
        self.assertIsNone(right.exception())
        self.assertGreater(time.monotonic() - begin, 1)
        self.assertLess(time.monotonic() - begin, 2)
        other.channel.close()
        for guess in guesses:
            self.assertEqual(guess.code().name, "UNAUTHENTICATED")
        # A connection has 16 requests at once.
        self.assertGreater(time.monotonic() - begin, 3)


class Signals(RefusalsTest):
    def test_of_a_closed_pipe_do_not_end_the_server(self):
        self.server.send_signal(signal.SIGPIPE)

    def test_of_a_file_that_gets_too_long(self):
        server = Server(self, "--files", "files", prefix=["prlimit", "--fsize=1000"])
        client = self.channel(server.address)
        own = client.start(report_file=file("report.html"))
        self.assertEqual(client.refusal("writeReport", session(own))[0], "FAILED_PRECONDITION")
        self.assertEqual(client.found(own), {})


class Services(RefusalsTest):
    def test_tell_of_health(self):
        for service in [b"", b"vok.rulecheck.RuleCheckService"]:
            request = b"\x0a" + bytes([len(service)]) + service
            self.assertEqual(self.client.send(HEALTH, request), b"\x08\x01", service)
        self.assertEqual(self.client.refusal(HEALTH, b"\x0a\x01x")[0], "NOT_FOUND")

    def test_tell_of_themselves(self):
        ask = self.client.channel.stream_stream(REFLECTION)
        listed, described = ask(iter([
            b"\x3a\x00", b"\x22\x1evok.rulecheck.RuleCheckService"]), timeout=60)
        for name in [b"vok.rulecheck.RuleCheckService", b"grpc.health.v1.Health",
                     b"grpc.reflection.v1alpha.ServerReflection"]:
            self.assertIn(name, listed)
        self.assertIn(protocol.DESCRIPTOR.serialized_pb, described)

    def test_of_reflection_have_few_threads(self):
        clients = [self.channel(self.server.address) for _ in range(4)]
        ends = threading.Event()
        self.addCleanup(ends.set)

        def ask():
            yield b"\x3a\x00"
            ends.wait()

        calls = [client.channel.stream_stream(REFLECTION)(ask(), timeout=60)
                 for client in clients for _ in range(16)]
        statuses = []
        for call in calls:
            try:
                next(call)
                statuses.append("OK")
            except grpc.RpcError as error:
                statuses.append(error.code().name)
        self.assertEqual(set(statuses), {"OK", "RESOURCE_EXHAUSTED"})
        self.assertLessEqual(statuses.count("OK"), 8)
        for call in calls:
            call.cancel()


if __name__ == "__main__":
    unittest.main()
