"""Clients that mean harm, on the port of the line protocol: a web page, and connections that are reset at once."""

import os
import socket
import struct
import time
import unittest

from ascii_client import AsciiClient, ascii_host
from host import wait_until
from rest import RestClient
from test_flood import HEALTH_SECONDS, PEAK_MIB, Health, connect, peak_memory

CONNECTS = int(os.environ.get("ZU_CONNECTS", "10000"))
ANSWER_SECONDS = 2 + float(os.environ.get("ZU_SLACK", "0"))
RESET = struct.pack("ii", 1, 0)  # a linger time of 0: close sends a reset

COMMANDS = "START\nDOUT 0 1\nSUBSCRIBE\n"
CROSS_SITE_POST = ("POST / HTTP/1.1\r\nHost: 127.0.0.1:5025\r\nConnection: keep-alive\r\nContent-Length: 25\r\n"
                   "Content-Type: text/plain\r\nOrigin: https://example.com\r\n\r\n" + COMMANDS).encode()


class WebPage(unittest.TestCase):
    def test_a_web_page_runs_nothing(self):
        attacks = (CROSS_SITE_POST,
                   b"host: sensor\r\n" + COMMANDS.encode(),
                   b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + COMMANDS.encode(),
                   b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\n" + COMMANDS.encode())
        with ascii_host() as host, RestClient(host.http_port) as rest:
            for attack in attacks:
                with connect(host.ports["AsciiTcp"]) as page:
                    page.sendall(attack)
                    self.assertEqual(self.answer(page), b"", attack)
            with AsciiClient(host.ports["AsciiTcp"]) as client:
                status = client.status()
                self.assertEqual((status["state"], status["operation"]), ("ready", "none"))

            def is_counted():
                metrics = rest.get("/controls/AsciiTcp/metrics").json
                return (metrics["requests"], metrics["droppedClients"]) == (1, len(attacks))

            wait_until(is_counted, "one request, and the connections that were closed")

    @staticmethod
    def answer(page):
        try:
            return page.recv(65536)
        except ConnectionError:
            return b""


class Resets(unittest.TestCase):
    def test_requests_of_connections_that_were_reset_do_not_delay_others(self):
        with ascii_host("--log", "error") as host:
            port = host.ports["AsciiTcp"]
            with Health(host.http_port) as health:
                begin = time.monotonic()
                for _ in range(CONNECTS):
                    self.ask_and_reset(port)
                attacked = time.monotonic() - begin
                with AsciiClient(port) as client:
                    begin = time.monotonic()
                    answer = client.ask("DOUT 0 1")
                    waited = time.monotonic() - begin
            peak = peak_memory(host.process)
        print(f"{CONNECTS} resets in {attacked:.1f} s, then DOUT answered in {waited:.3f} s, peak {peak} MiB, "
              f"/health within {health.longest:.3f} s", flush=True)
        self.assertEqual(answer, "OK")
        self.assertLess(waited, ANSWER_SECONDS)
        self.assertLess(peak, PEAK_MIB)
        self.assertLess(health.longest, HEALTH_SECONDS)

    @staticmethod
    def ask_and_reset(port):
        """The answer to LIST shows that the service has READ as well, which comes in the same segment."""
        with connect(port) as client:
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, RESET)
            try:
                client.sendall(b"LIST\nREAD /controls\n")
                client.recv(1)
            except ConnectionError:
                pass  # turned away


if __name__ == "__main__":
    unittest.main()
