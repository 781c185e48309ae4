# SPDX-License-Identifier: Apache-2.0

"""The programs of examples/, with good and with bad input."""

import os
import pathlib
import socket
import subprocess
import unittest

from program_test import ProgramTest

PROGRAMS = pathlib.Path(os.environ["PROGRAMS"])
SCHEMA = pathlib.Path(os.environ["SCHEMA"])


class RecipeTest(ProgramTest):
    def run_recipe(self, name, *words, given=b""):
        """Exit status, standard output and standard error output."""
        ended = subprocess.run([PROGRAMS / name, *map(str, words)], cwd=self.folder, input=given,
                               capture_output=True, check=False)
        return ended.returncode, ended.stdout, ended.stderr

    def encoded(self, kind, text):
        return subprocess.run(
            [os.environ["PROTOC"], "-I", SCHEMA.parent, f"--encode=vok.rulecheck.{kind}", SCHEMA],
            input=text.encode(), capture_output=True, check=True).stdout

    def result_file(self, name, text):
        path = self.folder / name
        path.write_bytes(self.encoded("SessionResult", text))
        return path


STOP = b"\x02\x08\x0f"  # a request of two bytes, STOP_SERVER


class SendFinding(RecipeTest):
    def test_a_request_goes_out_with_its_length_and_an_incomplete_one_does_not(self):
        status, out, answers = self.run_recipe("send_finding")
        self.assertEqual(status, 0)
        self.assertEqual(out[1:], self.encoded("Request", """
            type: CREATE_VIOLATION create_violation { rule_key: "WIDTH" session_uuid: "5f0c"
            severity: SEV_ERROR args { arg { string_val: "fifo.v:12" } } }"""))
        self.assertEqual(out[0], len(out) - 1)
        self.assertEqual(answers, b"recorded as 7\nno such session\nan unexpected answer\n")


class ReadRequests(RecipeTest):
    MEBIBYTE = 1 << 20

    def request_of(self, size):
        """A framed request that takes so many bytes, more than 2^14, without its length."""
        body = b"\x08\x0f\xa2\x06"
        rest = size - len(body) - 3
        body += bytes([rest & 127 | 128, rest >> 7 & 127 | 128, rest >> 14]) + bytes(rest)
        self.assertEqual(len(body), size)
        return bytes([size & 127 | 128, size >> 7 & 127 | 128, size >> 14]) + body

    def test_streams(self):
        stops = b"STOP_SERVER\n"
        sent = self.run_recipe("send_finding")[1]
        for about, stream, expected in (
                ("no request", b"", b"the end\n"),
                ("one", sent, b"CREATE_VIOLATION\nthe end\n"),
                ("several", STOP + sent + STOP,
                 stops + b"CREATE_VIOLATION\n" + stops + b"the end\n"),
                ("one as long as the limit", self.request_of(self.MEBIBYTE) + STOP,
                 2 * stops + b"the end\n"),
                ("one that is longer", STOP + self.request_of(self.MEBIBYTE + 1) + STOP,
                 stops + b"a bad request\n"),
                ("a length of 2^31 - 1", b"\xff\xff\xff\xff\x07", b"a bad request\n"),
                ("a length of 2^32", b"\x80\x80\x80\x80\x10" + STOP, b"a bad request\n"),
                ("a length of 2^64 - 1", 9 * b"\xff" + b"\x01", b"a bad request\n"),
                ("a length of eleven bytes", 10 * b"\x80" + b"\x01", b"a bad request\n"),
                ("a length that ends early", STOP + b"\x80", stops + b"a bad request\n"),
                ("a request that ends early", STOP + STOP[:-1], stops + b"a bad request\n"),
                ("an empty request, which lacks its type", STOP + b"\x00",
                 stops + b"a bad request\n"),
                ("one that lacks its token", b"\x04\x08\x0f\x22\x00", b"a bad request\n"),
                ("malformed bytes", b"\x02\x08\x80" + STOP, b"a bad request\n")):
            with self.subTest(about):
                status, out, error = self.run_recipe("read_requests", given=stream)
                self.assertEqual((out, error), (expected, b""))
                self.assertEqual(status, 0 if expected.endswith(b"the end\n") else 1)

    def test_a_socket_is_answered_before_the_next_request_comes(self):
        ours, theirs = socket.socketpair()
        with ours, subprocess.Popen([PROGRAMS / "read_requests"], stdin=theirs,
                                    stdout=subprocess.PIPE) as program:
            theirs.close()
            for piece in (STOP, STOP):
                ours.sendall(piece[:1])
                ours.sendall(piece[1:])
                self.assertEqual(program.stdout.readline(), b"STOP_SERVER\n")
            ours.shutdown(socket.SHUT_WR)
            self.assertEqual(program.stdout.read(), b"the end\n")

    def test_what_cannot_be_read_is_not_taken_for_an_end(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        ended = subprocess.run([PROGRAMS / "read_requests"], stdin=folder, check=False,
                               capture_output=True)
        self.assertEqual((ended.returncode, ended.stdout), (1, b"a bad request\n"))


class ParseOnArena(RecipeTest):
    TEXT = 'session { name: "%s" } violations { %s }'
    FINDING = "hashmap { key: %d value { id: 1 severity: %s } }"

    def file_of_many(self):
        errors = " ".join(self.FINDING % (key, "SEV_ERROR") for key in range(20000))
        return self.result_file("many.pb", self.TEXT % ("many", errors))

    def test_one_result_after_the_other(self):
        few = self.result_file("few.pb", self.TEXT % ("few", self.FINDING % (1, "SEV_ERROR")
                                                      + self.FINDING % (2, "SEV_FATAL")))
        self.assertEqual(self.run_recipe("parse_on_arena", few, self.file_of_many(), few),
                         (0, b"few: 1 errors\nmany: 20000 errors\nfew: 1 errors\n", b""))

    @unittest.skipIf(os.environ["SANITIZED"] == "1", "a sanitizer keeps what is freed for a while")
    def test_memory_is_used_again(self):
        many = self.file_of_many()
        with subprocess.Popen([PROGRAMS / "parse_on_arena", *[many] * 100],
                              stdout=subprocess.DEVNULL) as program:
            _, status, usage = os.wait4(program.pid, 0)
            program.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(program.returncode, 0)
        self.assertLess(usage.ru_maxrss, 100 * 1024)  # in KiB

    def test_bad_input(self):
        good = self.result_file("good.pb", 'session { name: "good" }')
        for about, content in (("incomplete", b""), ("malformed", b"\x0a\x7f")):
            with self.subTest(about):
                path = self.folder / about
                path.write_bytes(content)
                self.assertEqual(self.run_recipe("parse_on_arena", good, path),
                                 (1, b"good: 0 errors\nno result\n", b""))


class MessageText(RecipeTest):
    def test_messages(self):
        two = 'args { arg { string_val: "<a>" } arg { ref { type: PORT name: "b %1" } } }'
        for message, html in (
                (f'text: "%1 < %2" {two}', "&lt;a&gt; &lt; b %1"),
                (f'text: "%2%2" {two}', "b %1b %1 (&lt;a&gt;)"),
                (f'text: "none" {two}', "none (&lt;a&gt;, b %1)"),
                (f'text: "100%% %0 %01 %3 %12 % %x %" {two}',
                 "100% %0 %01 %3 %12 % %x % (&lt;a&gt;, b %1)"),
                ('text: "%99999999999999999999999"', "%99999999999999999999999"),
                ('text: "%1"', "%1"),
                ('text: ""', "")):
            with self.subTest(message):
                self.assertEqual(self.run_recipe("message_text", message),
                                 (0, html.encode() + b"\n", b""))

    def test_links_are_made_safe(self):
        for link, html in (
                ("", "<empty>"),
                ('link_text: "R&D <b>\'x\'"', "R&amp;D &lt;b&gt;&#39;x&#39;"),
                ('link_text: "a" url { scheme: HTTPS host: "h" path: "/\\"><script>" }',
                 '<a href="https://h/&quot;&gt;&lt;script&gt;">a</a>'),
                ('link_text: "a" url { scheme: FILE path: "/b" }', '<a href="file:///b">a</a>'),
                ('link_text: "a" url { scheme: HTTP host: "h" }', '<a href="http://h">a</a>'),
                ('link_text: "a" url { scheme: MAILTO host: "javascript:alert(1)" }', "a"),
                ('link_text: "a" url { scheme: FTP host: "javascript:alert(1)" }', "a"),
                ('link_text: "a" url { scheme: IRC host: "javascript:alert(1)" }', "a"),
                ('link_text: "a" url { scheme: DATA media_type: "text/html" data: "<script>" }', "a"),
                ('link_text: "a" url { scheme: DATA media_type: "image/svg+xml" data: "d" }', "a")):
            with self.subTest(link):
                message = f'text: "%1" args {{ arg {{ uri {{ {link} }} }} }}'
                self.assertEqual(self.run_recipe("message_text", message),
                                 (0, html.encode() + b"\n", b""))

    def test_places_by_the_thousand_do_not_make_it_grow_without_end(self):
        message = 'text: "%s" args { arg { string_val: "%s" } }' % ("%1" * 30000, "x" * 60000)
        status, out, _ = self.run_recipe("message_text", message)
        self.assertEqual(status, 0)
        self.assertLess(len(out), 1200000)

    def test_bad_input(self):
        for message in ("text", "args { }"):
            status, out, _ = self.run_recipe("message_text", message)
            self.assertEqual((status, out), (1, b"no message\n"))


if __name__ == "__main__":
    unittest.main()
