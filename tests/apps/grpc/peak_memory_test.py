# SPDX-License-Identifier: Apache-2.0

"""The most memory that clients can have the server take with its default limits."""

import time
import unittest

import memory_test
from servers import MEBIBYTE, file, finding, protocol, session


class DefaultLimits(memory_test.MemoryTest):
    LIMITS = []
    PREFIX = []

    def tearDown(self):
        print(f"{self.id()}: {self.server.most_memory() // MEBIBYTE} MiB at most")
        self.assertLess(self.server.most_memory(), 3.5 * 1024 * MEBIBYTE)

    def repeat(self, method, content, most=2000):
        """Until a limit is reached."""
        for _ in range(most):
            status, _ = self.client.refusal(method, content)
            if status != "OK":
                self.assertEqual(status, "RESOURCE_EXHAUSTED")
                return

    def started(self, text, **fields):
        """A session with a finding of a million bytes, and that finding."""
        uuid = self.client.start(**fields)
        return uuid, finding(uuid, text * 1000000)

    def leave_unread(self, *uuids):
        calls = [self.large_channel().leave_unread("getSessionResult", session(uuid))
                 for uuid in uuids]
        time.sleep(10)  # until the server has answered all of them
        return calls

    def test_of_rules(self):
        strings = protocol.StringList(msg=["x"] * 5000)  # which take most for their length
        for i in range(5000):
            self.repeat("upsertRuleSpec", protocol.RuleSpec(
                key=str(i), full_name="f", session_names=strings), 1)

    def test_of_answers(self):
        # A page, for which each byte becomes six; results below the limit of unread bytes, and
        # the longest ones.
        page, long_text = self.started('"', report_file=file("r.html"), proto_file=file("s.json"))
        self.repeat("createViolation", long_text, 60)
        self.assertEqual(self.client.refusal("writeReport", session(page))[0], "OK")
        short, long_text = self.started("x")
        self.repeat("createViolation", long_text, 60)
        long = []
        for _ in range(2):
            uuid, long_text = self.started("x")
            self.repeat("createViolation", long_text)
            long.append(uuid)
        calls = self.leave_unread(*[short] * 4, *long * 8)
        for call in calls:
            call.cancel()
        calls = self.leave_unread(*[short] * 4)
        self.assertEqual(self.client.refusal("writeReport", session(page))[0], "OK")


if __name__ == "__main__":
    unittest.main()
