# SPDX-License-Identifier: Apache-2.0

"""Memory that clients cost: the server lives on under a limit of its address space, and closes
the connections of clients that ignore what it asks of them."""

import concurrent.futures
import random
import resource
import struct
import time
import unittest

import grpc
from servers import (HEALTH, MEBIBYTE, SERVICE, Server, ServerTest, connected, file, finding, protocol,
                     session)

ADDRESS_SPACE = 1536 * MEBIBYTE
LIMITS = ["--max-bytes", 64 * MEBIBYTE, "--max-session-bytes", 64 * MEBIBYTE,
          "--max-text-bytes", 8 * MEBIBYTE, "--max-rule-bytes", 2 * MEBIBYTE]
# Each repeated message of two bytes takes more than fifty in memory.
HOSTILE_ARGUMENTS = 524000


class MemoryTest(ServerTest):
    LIMITS = LIMITS
    PREFIX = ["prlimit", f"--as={ADDRESS_SPACE}"]

    def setUp(self):
        super().setUp()
        (self.folder / "files").mkdir()
        self.server = Server(self, "--files", "files", *self.LIMITS, prefix=self.PREFIX)
        self.client = self.large_channel()
        self.kept = self.client.start()
        self.client.find(self.kept, "mark")

    def tearDown(self):
        """Whatever was sent, the server works, and nothing that was recorded is lost."""
        self.assertEqual(self.client.found(self.kept), {1: "mark"})
        self.assertEqual(self.client.send(HEALTH, b""), b"\x08\x01")
        print(f"{self.id()}: {self.server.most_memory() // MEBIBYTE} MiB at most")

    def statuses(self, method, contents, clients=4):
        """Of requests that are all sent at once."""
        channels = [self.large_channel() for _ in range(clients)]
        calls = [channels[i % clients].future(method, content)
                 for i, content in enumerate(contents)]
        codes = {call.code().name for call in calls}
        for channel in channels:
            channel.channel.close()
        return codes

    def fill(self, session, text):
        """Records findings until the session is full, and returns their number."""
        for count in range(10000):
            status, reason = self.client.refusal("createViolation", finding(session, text))
            if status != "OK":
                self.assertEqual(status, "RESOURCE_EXHAUSTED")
                self.assertRegex(reason, r"takes \d+ bytes, more than \d+: ")
                return count
        self.fail("no limit was reached")


class Findings(MemoryTest):
    def test_of_a_long_rule(self):
        rule = protocol.RuleSpec(key="L", full_name="f")
        rule.examples.uri.add(link_text="x" * (MEBIBYTE - 1000))
        self.client.send("upsertRuleSpec", rule)
        for _ in range(50):
            self.client.send("createViolation", finding(self.kept, rule="L"))
        self.assertLess(self.server.most_memory(), 80 * MEBIBYTE)
        self.client.call("resetSession", name="", uuid=self.kept)
        self.client.find(self.kept, "mark")

    def test_of_the_worst_kind(self):
        other = self.client.start()
        hostile = finding(other)
        hostile.args.arg.extend([protocol.Arg()] * HOSTILE_ARGUMENTS)
        codes = self.statuses("createViolation", [hostile] * 12)
        self.assertEqual(codes, {"OK", "RESOURCE_EXHAUSTED"})
        self.statuses("getSessionResult", [session(other)] * 8)


class Sessions(MemoryTest):
    def test_with_long_descriptions(self):
        groups = b"\xa3\x06\xa4\x06" * 200000  # unknown ones, of two bytes each
        address = protocol.Resource.FromString(file("r.html").SerializeToString() + groups)
        content = protocol.Session(name="n", report_file=address)
        codes = self.statuses("startSession", [content] * 50)
        self.assertIn("RESOURCE_EXHAUSTED", codes)

    def test_whose_results_no_client_reads(self):
        other = self.client.start()
        self.fill(other, "x" * 900000)
        channels = [self.large_channel() for _ in range(8)]
        calls = [channel.leave_unread("getSessionResult", session(other))
                 for channel in channels for _ in range(7)]
        calls += [channel.leave_unread("getSession", protocol.GetSession(session_uuid=other))
                  for channel in channels]
        self.assertEqual(self.client.send(HEALTH, b""), b"\x08\x01")
        status = ("OK", None)
        while status == ("OK", None):  # until it is the last of them
            status = self.client.refusal("getSessionResult", session(other))
        self.assertEqual(status, (
            "RESOURCE_EXHAUSTED", "clients have not read what was answered: try again later"))
        self.assertLess(self.server.most_memory(), 1024 * MEBIBYTE)
        for call in calls:
            call.cancel()
        for channel in channels:
            channel.channel.close()
        while self.client.refusal("getVersion")[0] == "RESOURCE_EXHAUSTED":
            time.sleep(0.01)  # until the server knows that these clients are gone


class Lack(MemoryTest):
    def test_of_memory_is_answered(self):
        other = self.client.start()
        self.fill(other, "x" * 900000)
        for spare in (16, 96):  # too little to make the result, and to serialize it
            self.limit_address_space(self.server.memory("VmSize") + spare * MEBIBYTE)
            self.assertEqual(
                self.client.refusal("getSessionResult", session(other)),
                ("RESOURCE_EXHAUSTED", "the server has no memory left: try again later"), spare)
            self.limit_address_space(ADDRESS_SPACE)

    def limit_address_space(self, size):
        resource.prlimit(self.server.process.pid, resource.RLIMIT_AS, (size, ADDRESS_SPACE))


class Files(MemoryTest):
    def test_in_all_formats(self):
        # What HTML, JSON and the text format escape.
        for text in ["\x01", "\"", "\u2028"]:
            for proto in ["s.pb", "s.txt", "s.json"]:
                self.client.call("upsertRuleSpec", key="W", full_name="f")
                other = self.client.start(report_file=file("r.html"), proto_file=file(proto))
                for _ in range(6):
                    self.client.find(other, text * (MEBIBYTE // len(text.encode()) - 1000))
                status = self.client.refusal("writeReport", session(other))
                self.assertEqual(status, ("OK", None), (text, proto))
                self.client.refusal("resetSession", session(other))


class Sequences(MemoryTest):
    def test_at_random(self):
        random.seed(1)
        for _ in range(100):
            name, content = self.request(random.choice(["s", "t", "u"]))
            self.statuses(name, [content] * random.choice([1, 1, 1, 8]), clients=1)

    @staticmethod
    def request(uuid):
        long = random.choice(["x", "\x01", "<"]) * random.choice([1, 1000, 300000])
        bodies = {
            "startSession": protocol.Session(
                name="n", uuid=uuid, description=long, report_file=file("r.html"),
                proto_file=file(random.choice(["p.pb", "p.json"]))),
            "upsertRuleSpec": protocol.RuleSpec(
                key="R", full_name="f", raw_msg=long, examples=protocol.Links(
                    uri=[protocol.Link(link_text="l")] * random.choice([0, 10000]))),
            "createViolation": finding(uuid, long, rule="R"),
            "createAffirmation": protocol.CreateAffirmation(
                rule_key="R", session_uuid=uuid, args=protocol.ArgList(
                    arg=[protocol.Arg()] * random.choice([0, 50000]))),
            "dumpRules": protocol.DumpRules(data_file=file("d.pb")),
            "loadRuleDataFile": protocol.LoadRuleDataFile(
                data_file=file(random.choice(["d.pb", "p.pb"]))),
        }
        for method in ["getSessionResult", "writeReport", "resetSession"]:
            bodies[method] = session(uuid)
        return random.choice(list(bodies.items()))


STREAMS = 20000
HEADERS, RESET, SETTINGS, CONTINUATION = 1, 3, 4, 9
END_STREAM, END_HEADERS = 1, 4
PREFACE = b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"


def frame(kind, flags, stream, content=b""):
    return struct.pack(">I", len(content))[1:] + struct.pack(">BBI", kind, flags, stream) + content


def text(value):
    return bytes([len(value)]) + value


# The first request has the connection remember the fields that the others repeat.
FIRST = (b"\x83\x86\x44" + text(f"/{SERVICE}/getVersion".encode()) + b"\x41" + text(b"host") +
         b"\x40" + text(b"te") + text(b"trailers") + b"\x5f" + text(b"application/grpc"))
NEXT = b"\x83\x86\xc1\xc0\xbf\xbe"
ARGUMENT = b"\0\0\0\0\0"
FIELDS = (b"\0" + text(b"k") + text(b"v")) * 3200


def requests(end):
    """Of which each one ends with the frames that end makes of the number of its stream."""
    for stream in range(1, 2 * STREAMS, 2):
        yield frame(HEADERS, END_HEADERS, stream, FIRST if stream == 1 else NEXT) + end(stream)


def long_headers():
    for stream in range(1, 40, 2):
        yield frame(HEADERS, 0, stream, FIRST if stream == 1 else NEXT)
        for _ in range(250):
            yield frame(CONTINUATION, 0, stream, FIELDS)
        yield frame(CONTINUATION, END_HEADERS, stream)


class Floods(MemoryTest):
    LIMITS = ["--max-bytes", 10 * MEBIBYTE, "--max-work-bytes", 54 * MEBIBYTE]
    PREFIX = []

    def tearDown(self):
        """Once the server has freed what the flood took, and closes no more connections."""
        while True:
            try:
                return super().tearDown()
            except grpc.RpcError as error:
                self.assertEqual(error.code(), grpc.StatusCode.UNAVAILABLE)

    def flood(self, frames):
        """Until the server closes the connection or reads no more. Acknowledges no settings."""
        with connected(self.server.address, 5) as connection:
            try:
                connection.sendall(PREFACE + frame(SETTINGS, 0, 0))
                for each in frames:
                    connection.sendall(each)
                while connection.recv(4096):
                    pass
            except (BrokenPipeError, ConnectionResetError, TimeoutError):
                pass

    def check(self, frames):
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for flood in [pool.submit(self.flood, frames()) for _ in range(4)]:
                flood.result()
        self.assertLess(self.server.most_memory(), 512 * MEBIBYTE)

    def test_of_requests_without_an_argument(self):
        self.check(lambda: requests(lambda stream: b""))

    def test_of_arguments_without_an_end(self):
        self.check(lambda: requests(lambda stream: frame(0, 0, stream, b"\0\0\0\xff\xff" + b"x")))

    def test_of_answers_that_are_not_read(self):
        self.check(lambda: requests(lambda stream: frame(0, END_STREAM, stream, ARGUMENT)))

    def test_of_canceled_requests(self):
        self.check(lambda: requests(lambda stream: frame(0, END_STREAM, stream, ARGUMENT)
                                    + frame(RESET, 0, stream, b"\0\0\0\x08")))

    def test_of_header_fields(self):
        self.check(long_headers)


if __name__ == "__main__":
    unittest.main()
