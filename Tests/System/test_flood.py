"""Clients that send as much as they can, or hold what they have. Meanwhile /health is answered, and the memory of the host is bounded."""

import contextlib
import os
import pathlib
import tempfile
import threading
import time
import unittest

from host import Host
from rest import RestClient
from tls import BROKEN, TlsPort, connect_to as connect

PEAK_MIB = int(os.environ.get("ZU_PEAK_MIB", "256"))  # of the whole process
HEALTH_SECONDS = 1 + float(os.environ.get("ZU_SLACK", "0"))
MIB = 1024 * 1024

HEAD = "PUT /controls/ModbusTcp HTTP/1.1\r\nHost: localhost\r\n"
CHUNKED = (HEAD + "Transfer-Encoding: chunked\r\n\r\n").encode()


def status_on(client):
    """The status of the answer; 0 when the host closes the connection without one."""
    try:
        head = client.recv(65536)
    except BROKEN:
        head = b""
    return int(head[9:12]) if head else 0


def send(port, head, part, times):
    """Sends `head`, and `part` again and again until the host closes the connection. Returns the status of the answer."""
    with connect(port) as client:
        try:
            client.sendall(head)
            for _ in range(times):
                client.sendall(part)
        except BROKEN:
            pass
        return status_on(client)


def peak_memory(process):
    """MiB."""
    with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmHWM:")) // 1024


class Health:
    """`with Health(port) as health:` asks for /health on one new connection after the other and keeps the longest time."""

    def __init__(self, port):
        self.port = port
        self.longest = 0.0
        self.statuses = set()
        self.ends = threading.Event()
        self.thread = threading.Thread(target=self._ask)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ends.set()
        self.thread.join()

    def _ask(self):
        while not self.ends.is_set():
            begin = time.monotonic()
            with connect(self.port) as client:
                client.sendall(b"GET /health HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n")
                self.statuses.add(status_on(client))
            self.longest = max(self.longest, time.monotonic() - begin)


class Flood(unittest.TestCase):
    ARGUMENTS = ()

    @staticmethod
    def port_of(host):
        return host.http_port

    def attack(self, work):
        """Runs `work(port)` against a host of its own and returns its result."""
        with Host("--log", "error", *self.ARGUMENTS) as host:
            port = self.port_of(host)
            with Health(port) as health:
                begin = time.monotonic()
                result = work(port)
                seconds = time.monotonic() - begin
            peak = peak_memory(host.process)
        print(f"{self.id().split('.')[-1]}: {seconds:.1f} s, peak {peak} MiB, /health within {health.longest:.3f} s", flush=True)
        self.assertLess(peak, PEAK_MIB)
        self.assertLess(health.longest, HEALTH_SECONDS)
        self.assertEqual(health.statuses, {200})
        return result

    def test_trailers_without_end(self):
        part = b"a:\r\n" * (MIB // 4)
        self.assertEqual(self.attack(lambda port: send(port, CHUNKED + b"0\r\n", part, 40)), 431)

    def test_a_chunk_extension_without_end(self):
        part = b"x" * MIB
        self.assertEqual(self.attack(lambda port: send(port, CHUNKED + b"1;", part, 100)), 431)

    def test_many_chunks_with_long_extensions(self):
        part = b"1;" + b"x" * 16_000 + b"\r\n \r\n"
        self.assertEqual(self.attack(lambda port: send(port, CHUNKED, part, 10_000)), 413)

    def test_a_body_for_health(self):
        head = b"GET /health HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1048576\r\n\r\n"
        self.assertEqual(self.attack(lambda port: send(port, head, b" " * MIB, 1)), 413)

    def test_five_hundred_bodies_that_never_end(self):
        self.assertIn(503, self.attack(lambda port: self.hold_bodies(port, 500)))

    def test_strangers_that_hold_connections(self):
        self.assertEqual(self.attack(self.hold_connections), [200] * 20)

    @staticmethod
    def hold_connections(port):
        """Holds more idle connections than the host accepts, of each kind. Returns the statuses of clients that come then."""
        beginnings = [b"", b"GET /controls HT", CHUNKED, b"GET /health HTTP/1.1\r\nHost: localhost\r\n\r\n"]
        statuses = []
        with contextlib.ExitStack() as held:
            for number in range(1000):
                held.enter_context(connect(port)).sendall(beginnings[number % len(beginnings)])
                if number % 50 == 49:
                    with connect(port) as client:
                        client.sendall(b"GET /controls HTTP/1.1\r\nHost: localhost\r\n\r\n")
                        statuses.append(status_on(client))
        return statuses

    @staticmethod
    def hold_bodies(port, count):
        """Sends all but the last byte of many large bodies, and returns the statuses of the answers."""
        head = (HEAD + f"Content-Length: {MIB}\r\n\r\n").encode()
        with contextlib.ExitStack() as held:
            clients = [held.enter_context(connect(port)) for _ in range(count)]
            for client in clients:
                try:
                    client.sendall(head + b" " * (MIB - 1))
                except BROKEN:
                    pass
            return {status_on(client) for client in clients}


class FloodOverTls(Flood):
    """The same on the port of HTTPS."""
    ARGUMENTS = ("--https", "127.0.0.1:0")

    @staticmethod
    def port_of(host):
        return TlsPort(host.ports["https"])


class WrongTokens(unittest.TestCase):
    SECONDS = 3

    def test_they_are_slowed_counted_and_told_once(self):
        with tempfile.TemporaryDirectory() as folder:
            token = pathlib.Path(folder) / "token"
            token.touch(0o600)
            token.write_text("0123456789abcdef\n", encoding="ascii")
            with Host("--token", token) as host:
                guessed = self.guess(host.http_port)
                with RestClient(host.http_port) as rest:
                    page = rest.get("/metrics", Authorization="Bearer 0123456789abcdef").text
                lines = [line for line in host.errors if line and "wrong token" in line]
        print(f"{guessed} wrong tokens in {self.SECONDS} s", flush=True)
        self.assertIn(guessed, range(1, 11))
        self.assertIn(f"\nzucontrol_http_wrong_tokens_total {guessed}\n", page)
        self.assertEqual(len(lines), 1, lines)

    def guess(self, port):
        """Shows as many wrong tokens as the host answers for some seconds, and returns their number."""
        end = time.monotonic() + self.SECONDS
        guessed = 0
        while time.monotonic() < end:
            with RestClient(port) as rest:
                self.assertEqual(rest.get("/controls", Authorization=f"Bearer {guessed:016}").status, 401)
            guessed += 1
        return guessed


if __name__ == "__main__":
    unittest.main()
