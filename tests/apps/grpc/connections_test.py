# SPDX-License-Identifier: Apache-2.0

"""Connections of clients that do nothing, and how many the server takes."""

import concurrent.futures
import contextlib
import os
import resource
import time
import unittest

from servers import Server, ServerTest, connected

LIMITS = [64, 1024, 2048]


def descriptors(server):
    return len(os.listdir(f"/proc/{server.process.pid}/fd"))


class Silent(ServerTest):
    """More connections than the server may have descriptors."""

    @classmethod
    def setUpClass(cls):
        hard = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
        resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))

    def test_leave_descriptors_to_the_server_and_give_way_to_others(self):
        for limit in LIMITS:
            for address in ["127.0.0.1:0", f"unix:{self.folder}/{limit}"]:
                with self.subTest(address, limit=limit):
                    self.check(limit, address)

    def check(self, limit, address):
        server = Server(self, "--listen", address, prefix=["prlimit", f"--nofile=40:{limit}"])
        with contextlib.ExitStack() as stack:
            for _ in range(limit + 6):
                stack.enter_context(connected(server.address))
            self.wait_for(lambda: descriptors(server) > min(limit - 30, 990))
            self.assertLessEqual(descriptors(server), min(limit - 24, 1020))
            self.assert_answered(server)
        self.assert_answered(server)
        self.wait_for(lambda: descriptors(server) < 20)

    def wait_for(self, condition):
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)

    def assert_answered(self, server):
        client = self.channel(server.address)
        self.assertIsNone(client.future("getVersion", timeout=5).exception())
        client.channel.close()


PREFACE = b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + b"\0\0\0\4\0\0\0\0\0"


class Idle(ServerTest):
    def test_connections_are_closed(self):
        server = Server(self, "--idle-seconds", 12)
        cases = {
            "sends nothing": (b"", 9, 12),
            "begins a handshake": (PREFACE[:10], 12, 30),
            "requests nothing": (PREFACE, 12, 30),
        }

        def seconds(content):
            begin = time.monotonic()
            with connected(server.address, 100) as connection:
                connection.sendall(content)
                try:
                    while connection.recv(4096):
                        pass
                except ConnectionResetError:
                    pass
                except TimeoutError:
                    return 1000
            return time.monotonic() - begin

        with concurrent.futures.ThreadPoolExecutor() as pool:
            open_for = pool.map(seconds, [content for content, _, _ in cases.values()])
            for (name, (_, shortest, longest)), time_open in zip(cases.items(), open_for):
                with self.subTest(name):
                    self.assertGreater(time_open, shortest)
                    self.assertLess(time_open, longest)


class Busy(ServerTest):
    def test_connections_do_not_give_way(self):
        server = Server(self, prefix=["prlimit", "--nofile=40:64"])
        connections = [connected(server.address) for _ in range(31)]
        for connection in connections:
            self.addCleanup(connection.close)
            connection.sendall(PREFACE)
            self.assertTrue(connection.recv(1))
        client = self.channel(server.address)
        call = client.future("getVersion", timeout=2)
        self.assertEqual(call.code().name, "DEADLINE_EXCEEDED")
        connections[0].close()
        self.assertEqual(client.refusal("getVersion"), ("OK", None))


if __name__ == "__main__":
    unittest.main()
