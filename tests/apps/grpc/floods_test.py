# SPDX-License-Identifier: Apache-2.0

"""Memory that clients cost which ignore what the server asks of them."""

import concurrent.futures
import struct
import unittest

import grpc
from servers import ENDED_WELL, MEBIBYTE, SERVICE, Server, ServerTest, connected

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


FLOODS = {
    "requests without an argument": lambda: requests(lambda stream: b""),
    "an argument without an end": lambda: requests(
        lambda stream: frame(0, 0, stream, b"\0\0\0\xff\xff" + b"x")),
    "answers that are not read": lambda: requests(
        lambda stream: frame(0, END_STREAM, stream, ARGUMENT)),
    "canceled requests": lambda: requests(
        lambda stream: frame(0, END_STREAM, stream, ARGUMENT) + frame(RESET, 0, stream, b"\0\0\0\x08")),
    "header fields": long_headers,
}


class Floods(ServerTest):
    def flood(self, address, frames):
        """Until the server closes the connection or reads no more. Acknowledges no settings."""
        with connected(address, 5) as connection:
            try:
                connection.sendall(PREFACE + frame(SETTINGS, 0, 0))
                for each in frames:
                    connection.sendall(each)
                while connection.recv(4096):
                    pass
            except (BrokenPipeError, ConnectionResetError, TimeoutError):
                pass

    def test_take_limited_memory_and_lose_nothing_recorded(self):
        for name, frames in FLOODS.items():
            with self.subTest(name):
                self.check(frames)

    def check(self, frames):
        server = Server(self, "--max-bytes", 10 * MEBIBYTE, "--max-work-bytes", 54 * MEBIBYTE)
        client = self.channel(server.address)
        kept = client.start()
        client.find(kept, "mark")
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for flood in [pool.submit(self.flood, server.address, frames()) for _ in range(4)]:
                flood.result()
        self.assertEqual(self.found(client, kept), {1: "mark"})
        print(f"{server.most_memory() // MEBIBYTE} MiB at most")
        self.assertLess(server.most_memory(), 512 * MEBIBYTE)
        client.channel.close()
        self.assertEqual(server.stop(), ENDED_WELL)

    def found(self, client, session):
        """Once the server has freed what the flood took, and closes no more connections."""
        while True:
            try:
                return client.found(session)
            except grpc.RpcError as error:
                self.assertEqual(error.code(), grpc.StatusCode.UNAVAILABLE)


if __name__ == "__main__":
    unittest.main()
