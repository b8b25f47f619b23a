"""The host tells a service manager what it does, and beats only while no part of the module is dead or hangs."""

import os
import pathlib
import queue
import signal
import socket
import tempfile
import threading
import time
import unittest
import unittest.mock

from host import BIN, PATIENCE, Host, wait_until
from rest import RestClient

WATCHDOG_USEC = 1_000_000
PERIOD = WATCHDOG_USEC / 2e6  # of the beats, seconds


class ServiceManager:
    """Takes the messages of a host that runs within `with`. A message is a dictionary."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        path = pathlib.Path(self.folder.name) / "notify"
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.socket.bind(str(path))
        self.messages = queue.Queue()
        self.reader = threading.Thread(target=self._read)
        self.reader.start()
        self.environment = unittest.mock.patch.dict(
            os.environ, {"NOTIFY_SOCKET": str(path), "WATCHDOG_USEC": str(WATCHDOG_USEC)})
        self.environment.start()
        return self

    def __exit__(self, *_):
        self.environment.stop()
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as last:
            last.sendto(b"", self.socket.getsockname())
        self.reader.join()
        self.socket.close()
        self.folder.cleanup()

    def _read(self):
        while text := self.socket.recv(65536).decode():
            self.messages.put(dict(line.split("=", 1) for line in text.splitlines()))

    def next(self, key):
        """The next message that has this key. Others before it are lost."""
        deadline = time.monotonic() + PATIENCE
        while True:
            message = self.messages.get(timeout=max(0.0, deadline - time.monotonic()))
            if key in message:
                return message

    def forget(self):
        while not self.messages.empty():
            self.messages.get()


class Service(unittest.TestCase):
    def setUp(self):
        self.manager = ServiceManager()
        self.manager.__enter__()
        self.addCleanup(self.manager.__exit__)

    def test_the_start_a_reload_and_the_stop_are_told(self):
        with Host() as host:
            ready = self.manager.next("READY")
            self.assertEqual(ready["READY"], "1")
            self.assertEqual(ready["STATUS"], f"Serves http on 127.0.0.1:{host.http_port}, "
                                              f"ModbusTcp on 127.0.0.1:{host.modbus_port}.")
            with RestClient(host.http_port) as rest:  # a service manager that believes it finds a host that listens
                self.assertEqual(rest.get("/health").status, 200)

            before = time.clock_gettime_ns(time.CLOCK_MONOTONIC) // 1000
            host.process.send_signal(signal.SIGHUP)
            reloading = self.manager.next("RELOADING")
            self.assertEqual(reloading["RELOADING"], "1")
            after = time.clock_gettime_ns(time.CLOCK_MONOTONIC) // 1000
            self.assertTrue(before <= int(reloading["MONOTONIC_USEC"]) <= after, reloading)
            self.assertEqual(self.manager.next("READY"), ready)

            host.process.send_signal(signal.SIGTERM)
            self.assertEqual(self.manager.next("STOPPING")["STOPPING"], "1")

    def test_a_host_that_cannot_start_is_never_ready(self):
        with Host() as other:
            self.manager.next("READY")
            port = other.http_port
            self.manager.forget()
            host = Host("--http", f"127.0.0.1:{port}", wait=False)
            host.expected_status = 1
            with host:
                host.process.wait(PATIENCE)
            seen = list(self.manager.messages.queue)
        self.assertFalse(any("READY" in message for message in seen), seen)

    def test_the_watchdog_is_fed_while_all_is_well(self):
        with Host("--start"):
            self.manager.next("WATCHDOG")
            begin = time.monotonic()
            for _ in range(4):
                self.manager.next("WATCHDOG")
            self.assertGreater(time.monotonic() - begin, 3 * PERIOD)

    def test_the_watchdog_is_not_fed_while_a_service_hangs(self):
        with Host("--plugins", BIN / "tests/ailing", "--enable", "Ailing", "--start", modbus=False) as host, \
                RestClient(host.http_port) as rest:
            self.manager.next("WATCHDOG")
            rest.put("/controls/Ailing", {"parameters": {"ailment": "results hang"}})
            fault = "Ailing does not come to an end with its results; newer ones wait for it."
            self.assertEqual(self.next_status(), fault)
            self.manager.forget()
            self.wait_for_looks(rest)
            seen = list(self.manager.messages.queue)
            rest.put("/controls/Ailing", {"parameters": {"ailment": ""}})
            self.assertEqual(self.next_status(), "Runs without faults.")
            self.manager.next("WATCHDOG")
        self.assertEqual(seen, [])

    def next_status(self):
        while "STATUS" not in (message := self.manager.next("STATUS")) or "READY" in message:
            pass
        return message["STATUS"]

    def wait_for_looks(self, rest):
        """Waits twice as long as a watchdog does."""
        age = rest.get("/health").json["upTimeSec"]
        wait_until(lambda: rest.get("/health").json["upTimeSec"] > age + 2 * WATCHDOG_USEC / 1e6, "the host to grow older")


if __name__ == "__main__":
    unittest.main()
