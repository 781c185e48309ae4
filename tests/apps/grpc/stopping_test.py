# SPDX-License-Identifier: Apache-2.0

"""How the server ends, and what its clients see."""

import concurrent.futures
import fcntl
import os
import signal
import socket
import subprocess
import tempfile
import time
import unittest

import grpc
from proxy import Proxy
from servers import ENDED_WELL, SERVE, Server, ServerTest, file, protocol, session


class Servers(ServerTest):
    def test_end_with_a_signal(self):
        self.assertEqual(Server(self).stop(signal.SIGINT), ENDED_WELL)

    def test_end_although_clients_are_connected_and_watch(self):
        server = Server(self)
        client = self.channel(server.address)
        client.start()
        watch = self.channel(server.address).channel.unary_stream("/grpc.health.v1.Health/Watch")
        states = watch(b"")
        self.assertEqual(next(states), b"\x08\x01")
        self.assertEqual(server.stop(), ENDED_WELL)
        self.assertEqual(next(states), b"\x08\x02")
        with self.assertRaises(grpc.RpcError):
            next(states)
        self.assertEqual(client.refusal("getVersion")[0], "UNAVAILABLE")

    def test_end_with_the_token_alone(self):
        path = self.write("token", "from a file\n")
        for options, variable, token in [
                ([], "", None),
                ([], "of the environment", "of the environment"),
                (["--token-file", path], "another", "from a file")]:
            server = Server(self, *options, environment={"RULE_SERVER_TOKEN": variable})
            client = self.channel(server.address)
            for wrong in ["", f"{token}\n"]:
                content = protocol.ExchangeToken(token=wrong)
                self.assertEqual(client.refusal("stopServer", content)[0], "UNAUTHENTICATED")
            if token:
                self.assertEqual(client.call("stopServer", token=token).msg, "server stopped")
                client.channel.close()
                self.assertEqual(server.end(), ENDED_WELL)

    def test_answer_what_they_have_begun_and_begin_nothing_more(self):
        server = Server(self, "--files", ".")
        starter = self.channel(server.address)
        clients = [self.channel(server.address) for _ in range(3)]
        sessions = [self.session_with_report(starter, f"{i}.html") for i in range(30)]
        calls = [clients[i % 3].future("writeReport", session(uuid))
                 for i, uuid in enumerate(sessions)]
        concurrent.futures.wait([done(call) for call in calls], return_when="FIRST_COMPLETED")
        finished = sum(call.done() for call in calls)
        server.send_signal(signal.SIGTERM)
        answered = [call.code() == grpc.StatusCode.OK for call in calls]
        starter.channel.close()
        self.assertEqual(server.end(), ENDED_WELL)
        written = [(self.folder / f"{i}.html").exists() for i in range(30)]
        self.assertEqual(answered, written)
        self.assertLessEqual(
            {call.code() for call in calls},
            {grpc.StatusCode.OK, grpc.StatusCode.UNAVAILABLE, grpc.StatusCode.CANCELLED})
        self.assertGreater(sum(answered), finished)
        page = (self.folder / f"{answered.index(True)}.html").read_text(encoding="utf-8")
        self.assertTrue(page.endswith("</html>\n"))
        print(finished, "of 30 requests were answered before the signal,",
              sum(answered) - finished, "after it")

    def test_end_within_the_grace_period_although_long_requests_wait(self):
        sockets = tempfile.TemporaryDirectory()
        self.addCleanup(sockets.cleanup)
        server = Server(self, "--files", ".", "--listen", f"unix:{sockets.name}/socket")
        folder = os.open(sockets.name, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)  # which delays the removal of the socket
        client = self.channel(server.address)
        uuid = client.start(report_file=file("r.html"))
        for _ in range(50):
            client.find(uuid, "<" * 1000000)
        calls = [self.channel(server.address).future("writeReport", session(uuid))
                 for _ in range(50)]
        concurrent.futures.wait([done(call) for call in calls], return_when="FIRST_COMPLETED")
        start = time.monotonic()
        self.assertEqual(server.stop(), ENDED_WELL)
        took = time.monotonic() - start
        written = sum(call.code() == grpc.StatusCode.OK for call in calls)
        print(f"ended after {took:.1f} s, with {written} of {len(calls)} reports written")
        self.assertLess(took, 12)

    @staticmethod
    def session_with_report(client, path):
        uuid = client.start(report_file=file(path))
        for mark in "abc":
            client.find(uuid, mark * 300000)
        return uuid

    def test_share_no_address(self):
        server = Server(self)
        self.assert_refused(
            self.run_program("timeout", "60", *SERVE, "--listen", server.address),
            f"rulecheck: {server.address}: cannot listen there: Address already in use")


def done(call):
    """A future of the standard library's for a call."""
    future = concurrent.futures.Future()
    call.add_done_callback(future.set_result)
    return future


class Sockets(ServerTest):
    def setUp(self):
        super().setUp()
        self.path = self.folder / "socket"
        self.address = f"unix:{self.path}"

    def server(self):
        server = Server(self, "--listen", self.address)
        self.assertEqual(server.address, self.address)
        return server

    def assert_works(self):
        client = self.channel(self.address)
        self.assertEqual(client.found(client.start()), {})
        client.channel.close()

    def assert_not_taken(self, reason):
        self.assert_refused(
            self.run_program("timeout", "60", *SERVE, "--listen", self.address),
            f"rulecheck: {self.address}: cannot listen there: {reason}")

    def test_are_removed_in_the_end(self):
        self.assertEqual(self.server().stop(), ENDED_WELL)
        self.assertFalse(self.path.exists())

    def test_are_not_taken_from_a_server(self):
        self.server()
        self.assert_not_taken("Address already in use")
        self.assert_works()

    def test_are_taken_from_a_server_that_was_killed(self):
        self.server().kill()
        self.assertTrue(self.path.is_socket())
        self.server()
        self.assert_works()

    def test_do_not_replace_files(self):
        self.path.write_text("a file", encoding="utf-8")
        self.assert_not_taken("a file that is not a socket is there")
        self.assertEqual(self.path.read_text(encoding="utf-8"), "a file")

    def test_of_successors_are_not_removed(self):
        server = self.server()
        self.path.unlink()
        self.server()
        self.assertEqual(server.stop(), ENDED_WELL)
        self.assert_works()

    def test_are_not_taken_while_the_folder_is_locked(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        fcntl.flock(folder, fcntl.LOCK_EX)
        self.assert_not_taken("the folder cannot be locked: Resource temporarily unavailable")

    def test_are_taken_by_one_of_many_that_start_at_once(self):
        self.server().kill()
        starting = [subprocess.Popen(
            [*SERVE, "--listen", self.address], stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, text=True, cwd=self.folder) for _ in range(8)]
        lines = [(server.stdout.readline(), server) for server in starting]
        listening = [server for line, server in lines if line]
        self.assertEqual(len(listening), 1)
        self.assert_works()
        listening[0].terminate()
        for server in starting:
            _, errors = server.communicate(timeout=60)
            self.assertEqual((server.returncode, errors), (0, "") if server in listening else (
                2, f"rulecheck: {self.address}: cannot listen there: Address already in use\n"))


class LintClient(ServerTest):
    def test_tells_of_a_server_that_is_not_there(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            address = "127.0.0.1:%d" % listener.getsockname()[1]
        for each in [address, f"unix:{self.folder}/none"]:
            self.assert_lost(self.report(each))

    def test_tells_of_a_connection_that_breaks_and_sends_nothing_twice(self):
        server = Server(self, "--files", ".")
        proxy = Proxy(self, server.address, length=60000)
        self.assert_lost(self.report(proxy.address, lines=1000))
        self.assertEqual(proxy.connections, 1)

    def test_tells_what_the_server_refuses(self):
        server = Server(self, "--files", ".")
        (self.folder / "report.html").mkdir()
        ended = self.report(server.address, "--server-output", ".")
        self.assert_refused(
            ended, "rulecheck: the server answered: ./report.html: not a regular file")


if __name__ == "__main__":
    unittest.main()
