"""How the server ends, and what its clients see."""

import concurrent.futures
import signal
import socket
import threading
import unittest

import grpc
from servers import (
    ENDED_WELL, GRPC_LINT_CLIENT, RULE_SERVER, SERVICE, Server, ServerTest, protocol)


class Servers(ServerTest):
    def test_end_with_a_signal(self):
        for number in [signal.SIGTERM, signal.SIGINT]:
            self.assertEqual(Server(self).stop(number), ENDED_WELL)

    def test_end_although_a_client_is_connected(self):
        server = Server(self)
        client = self.channel(server.address)
        client.start()
        self.assertEqual(server.stop(), ENDED_WELL)
        self.assertEqual(client.refusal("getVersion")[0], "UNAVAILABLE")

    def test_end_with_the_token(self):
        path = self.write("token", "from a file\n")
        for options, environment, token in [
                ([], {"RULE_SERVER_TOKEN": "of the environment"}, "of the environment"),
                (["--token-file", path], {"RULE_SERVER_TOKEN": "another"}, "from a file")]:
            server = Server(self, *options, environment=environment)
            client = self.channel(server.address)
            for wrong in ["", "wrong", token + "\n"]:
                content = protocol.ExchangeToken(token=wrong).SerializeToString()
                self.assertEqual(client.refusal("stopServer", content)[0], "UNAUTHENTICATED")
            self.assertEqual(client.call("stopServer", token=token).msg, "server stopped")
            client.channel.close()
            self.assertEqual(server.end(), ENDED_WELL)

    def test_without_token_are_not_ended_by_clients(self):
        server = Server(self, environment={"RULE_SERVER_TOKEN": ""})
        client = self.channel(server.address)
        for token in ["", "secret"]:
            content = protocol.ExchangeToken(token=token).SerializeToString()
            self.assertEqual(client.refusal("stopServer", content)[0], "UNAUTHENTICATED")
        client.channel.close()
        self.assertEqual(server.stop(), ENDED_WELL)

    def test_answer_what_they_have_begun_and_begin_nothing_more(self):
        server = Server(self)
        starter = self.channel(server.address)
        clients = [self.channel(server.address) for _ in range(3)]
        sessions = [self.session_with_report(starter, f"{i}.html") for i in range(30)]
        calls = [clients[i % 3].channel.unary_unary(f"/{SERVICE}/writeReport").future(
            protocol.Session(name="", uuid=session).SerializeToString(), timeout=60)
                 for i, session in enumerate(sessions)]
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

    @staticmethod
    def session_with_report(client, path):
        session = client.start(
            report_file=protocol.Resource(scheme=protocol.Resource.FILE, path=path))
        for mark in "abc":
            client.find(session, mark * 300000)
        return session

    def test_do_not_wait_for_clients_that_watch(self):
        server = Server(self)
        watch = self.channel(server.address).channel.unary_stream("/grpc.health.v1.Health/Watch")
        states = watch(b"")
        self.assertEqual(next(states), b"\x08\x01")
        self.assertEqual(server.stop(), ENDED_WELL)
        self.assertEqual(next(states), b"\x08\x02")
        with self.assertRaises(grpc.RpcError):
            next(states)

    def test_share_no_address(self):
        server = Server(self)
        self.assert_refused(
            self.run_program("timeout", "60", RULE_SERVER, "--listen", server.address),
            f"rule_server: {server.address}: cannot listen there, or not with that certificate")
        self.assertEqual(server.stop(), ENDED_WELL)


def done(call):
    """A future of the standard library's for a call."""
    future = concurrent.futures.Future()
    call.add_done_callback(future.set_result)
    return future


class Sockets(ServerTest):
    def test_of_the_file_system(self):
        address = f"unix:{self.folder}/socket"
        server = Server(self, "--listen", address)
        self.assertEqual(server.address, address)
        client = self.channel(address)
        self.assertEqual(client.found(client.start()), {})
        self.assertEqual(server.stop(), ENDED_WELL)


class Cable:
    """Stands between a client and a server, and breaks after some bytes to the server."""

    def __init__(self, test, address, length):
        self.listener = socket.create_server(("127.0.0.1", 0))
        test.addCleanup(self.listener.close)
        self.address = "127.0.0.1:%d" % self.listener.getsockname()[1]
        host, port = address.rsplit(":", 1)
        self.server = (host, int(port))
        self.length = length
        self.connections = 0
        threading.Thread(target=self.carry, daemon=True).start()

    def carry(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            self.connections += 1
            server = socket.create_connection(self.server)
            threading.Thread(target=self.back, args=(server, client), daemon=True).start()
            carried = 0
            while carried < self.length and (content := client.recv(1024)):
                server.sendall(content)
                carried += len(content)
            for end in (client, server):
                end.shutdown(socket.SHUT_RDWR)

    @staticmethod
    def back(server, client):
        try:
            while content := server.recv(1024):
                client.sendall(content)
        except OSError:
            pass


class LintClient(ServerTest):
    def report(self, address):
        self.write("m.v", "module m; endmodule\n")
        said = self.write("said", "".join(
            f"%Warning-WIDTH: 0/m.v:{line}:1: text\n" for line in range(1, 1001)))
        self.write("verilator", f"#!/bin/sh\ncat '{said}' >&2\n").chmod(0o755)
        return self.run_program(
            GRPC_LINT_CLIENT, "m.v", "--verilator", "./verilator", "--server", address)

    def test_tells_of_a_server_that_is_not_there(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            address = "127.0.0.1:%d" % listener.getsockname()[1]
        for each in [address, f"unix:{self.folder}/none"]:
            self.assert_lost(self.report(each))

    def test_tells_of_a_connection_that_breaks_and_sends_nothing_twice(self):
        server = Server(self)
        cable = Cable(self, server.address, 60000)
        self.assert_lost(self.report(cable.address))
        self.assertEqual(cable.connections, 1)
        self.assertEqual(server.stop(), ENDED_WELL)

    def test_tells_what_the_server_refuses(self):
        server = Server(self)
        (self.folder / "report.html").mkdir()
        ended = self.report(server.address)
        self.assertEqual((ended.returncode, ended.stdout), (2, ""))
        self.assertEqual(
            ended.stderr,
            "grpc_lint_client: the server answered: ./report.html: not a regular file\n")

    def assert_lost(self, ended):
        self.assertEqual((ended.returncode, ended.stdout), (3, ""))
        self.assertRegex(
            ended.stderr, r"\Agrpc_lint_client: no connection to the server: [^\n]+\n\Z")


if __name__ == "__main__":
    unittest.main()
