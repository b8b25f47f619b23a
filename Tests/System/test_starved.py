"""A host without free descriptors, and clients that send a byte now and then: other clients are served, and the host recovers."""

import os
import pathlib
import resource
import socket
import struct
import time
import unittest
import urllib.request

from host import PATIENCE, Host, wait_until
from modbus import ModbusClient

BOTH = ("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", "--param", "ModbusTcp.maxClients=100",
        "--param", "AsciiTcp.maxClients=100", "--allow-core-dumps")  # so that another user than root may count descriptors


def descriptors(host):
    return len(list(pathlib.Path(f"/proc/{host.process.pid}/fd").iterdir()))


def processor_seconds(host):
    words = pathlib.Path(f"/proc/{host.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(words[11]) + int(words[12])) / os.sysconf("SC_CLK_TCK")


def read_modbus(host):
    with ModbusClient(host.modbus_port, timeout=PATIENCE) as client:
        return client.read(9000, 2) == [0, 0]


def read_http(host):
    with urllib.request.urlopen(f"http://127.0.0.1:{host.http_port}/health", timeout=PATIENCE) as answer:
        return answer.status == 200


def read_ascii(host):
    with socket.create_connection(("127.0.0.1", host.ports["AsciiTcp"]), timeout=PATIENCE) as client:
        client.sendall(b"STATUS\n")
        return client.makefile("rb").readline().startswith(b"OK ")


READERS = (read_modbus, read_http, read_ascii)


class Starved(unittest.TestCase):
    @unittest.skipIf(os.environ.get("ZU_CHECKS_TYPES") == "1", "the sanitizer that checks types opens a pipe for each look")
    def test_descriptors_that_are_used_up_cost_new_clients_and_nothing_else(self):
        with Host(*BOTH) as host, ModbusClient(host.modbus_port, timeout=PATIENCE) as first:
            first.read(9000, 2)
            limit = descriptors(host) + 8
            resource.prlimit(host.process.pid, resource.RLIMIT_NOFILE, (limit, limit))
            crowd = [socket.create_connection(("127.0.0.1", port), timeout=PATIENCE)
                     for port in host.ports.values() for _ in range(12)]
            wait_until(lambda: descriptors(host) == limit, "the host to run out of descriptors")

            before = processor_seconds(host)
            began = time.monotonic()
            while time.monotonic() - began < 1:  # connected clients are served, and no thread busy-waits for a descriptor
                self.assertEqual(first.read(9000, 2), [0, 0])
                time.sleep(0.01)
            self.assertLess(processor_seconds(host) - before, 0.7)

            for client in crowd:
                client.close()
            for reader in READERS:
                self.assertTrue(reader(host), reader)

    def test_a_client_that_sends_a_byte_now_and_then_holds_up_nobody(self):
        requests = {"http": b"GET /health HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n",
                    "ModbusTcp": struct.pack(">HHHBBHH", 1, 0, 6, 1, 3, 9000, 2),
                    "AsciiTcp": b"STATUS\n"}
        with Host(*BOTH) as host:
            slow = {name: socket.create_connection(("127.0.0.1", host.ports[name]), timeout=PATIENCE) for name in requests}
            for place in range(max(map(len, requests.values()))):
                for name, request in requests.items():
                    slow[name].sendall(request[place:place + 1])
                self.assertTrue(READERS[place % len(READERS)](host))
            for name, begin in (("http", b"HTTP/1.1 200"), ("ModbusTcp", b"\x00\x01\x00\x00"), ("AsciiTcp", b"OK ")):
                self.assertTrue(slow[name].recv(4096).startswith(begin), name)
                slow[name].close()


if __name__ == "__main__":
    unittest.main()
