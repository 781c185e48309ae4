# SPDX-License-Identifier: Apache-2.0

"""A connection that a test can break."""

import math
import socket
import threading


class Proxy:
    """Between a client and a server: changes what the client sends, and breaks after some
    bytes of it."""

    def __init__(self, test, address, length=math.inf, change=lambda sent: sent):
        self.listener = socket.create_server(("127.0.0.1", 0))
        test.addCleanup(self.listener.close)
        self.address = "127.0.0.1:%d" % self.listener.getsockname()[1]
        host, port = address.rsplit(":", 1)
        self.server = (host, int(port))
        self.length = length
        self.change = change
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
            while carried < self.length and (content := client.recv(65536)):
                server.sendall(self.change(content))
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
