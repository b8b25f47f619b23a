"""Clients that mean harm, on the port of the line protocol."""

import socket
import unittest

from ascii_client import AsciiClient, ascii_host
from host import PATIENCE, wait_until
from rest import RestClient

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
                with socket.create_connection(("127.0.0.1", host.ports["AsciiTcp"]), timeout=PATIENCE) as page:
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


if __name__ == "__main__":
    unittest.main()
