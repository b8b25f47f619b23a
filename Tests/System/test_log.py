"""The log on standard error: its reader may stall, and no client can flood or forge it."""

import collections
import fcntl
import os
import pathlib
import re
import signal
import tempfile
import threading
import time
import unittest

from ascii_client import AsciiClient
from host import PATIENCE, Host, wait_until
from modbus import ModbusClient
from rest import RestClient

STALLED = "The reader of the log on standard error does not keep up; lines of the log wait or are lost."


class StalledReader:
    """A pipe that is full. `resume` reads it from then on."""

    def __enter__(self):
        self.reader, self.writer = os.pipe()
        flags = fcntl.fcntl(self.writer, fcntl.F_GETFL)
        fcntl.fcntl(self.writer, fcntl.F_SETFL, flags | os.O_NONBLOCK)
        try:
            while True:
                os.write(self.writer, b"." * 4096)
        except BlockingIOError:
            fcntl.fcntl(self.writer, fcntl.F_SETFL, flags)
        self.thread = None
        self.text = b""
        return self

    def __exit__(self, *_):
        os.close(self.writer)
        if self.thread is not None:
            self.thread.join()
        os.close(self.reader)

    def resume(self):
        self.thread = threading.Thread(target=self._read)
        self.thread.start()

    def _read(self):
        while part := os.read(self.reader, 65536):
            self.text += part


class Log(unittest.TestCase):
    def test_a_reader_that_stalls_does_not_stop_control(self):
        with StalledReader() as pipe:
            with Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", "--start", log=pipe.writer) as host, \
                    RestClient(host.http_port) as rest:
                for limit in range(1, 9):
                    answer = rest.put("/controls/ModbusTcp", {"parameters": {"maxClients": limit}})
                    self.assertEqual(answer.status, 200, answer.text)
                with ModbusClient(host.modbus_port) as modbus:
                    modbus.read(0, 1)
                with AsciiClient(host.ports["AsciiTcp"]) as client:
                    self.assertNotIn("ERROR", client.ask("STOP"))
                    wait_until(lambda: "ERROR" not in client.ask("START"), "the end of the stop")
                wait_until(lambda: rest.get("/health").json["faults"] == [STALLED], "the fault in /health")
                self.assertIn(STALLED, [problem["text"] for problem in rest.get("/problems").json["problems"]])

                begin = time.monotonic()
                self.assertEqual(host.stop(), 0)
                self.assertLess(time.monotonic() - begin, PATIENCE / 2)

    def test_the_fault_ends_when_the_reader_goes_on_and_no_line_is_missing(self):
        with StalledReader() as pipe:
            with Host("--start", log=pipe.writer) as host, RestClient(host.http_port) as rest:
                wait_until(lambda: rest.get("/health").json["faults"] == [STALLED], "the fault in /health")
                pipe.resume()
                wait_until(lambda: rest.get("/health").json["faults"] == [], "the end of the fault")
                wait_until(lambda: f"This is over: {STALLED}".encode() in pipe.text, "the line about the end")
                self.assertIn(b"\n", pipe.text.lstrip(b"."))

    def test_a_signal_that_aborts_leaves_the_lines_ahead_of_it(self):
        host = Host("--start")
        with self.assertRaises(AssertionError):
            with host:
                host.process.send_signal(signal.SIGABRT)
                host.process.wait(PATIENCE)
                raise AssertionError("the host has ended")
        self.assertEqual(host.process.returncode, -signal.SIGABRT)
        self.assertTrue(any(re.search(r" info +\[", line) for line in host.errors if line is not None), host.log())

    def test_a_client_cannot_flood_the_log(self):
        with Host("--log", "error") as host, RestClient(host.http_port) as rest:
            for _ in range(200):
                self.add_twice(rest, "nonsense")
        texts = collections.Counter(line.split("[", 1)[1] for line in host.errors if line)
        self.assertGreater(len(texts), 0)
        self.assertLessEqual(max(texts.values()), 100, texts)
        self.assertRegex("\n".join(texts), r"\.\.\. [123]\d\d more in the last \d+ s, the first: .*nonsense")

    def test_a_client_cannot_forge_a_line_or_send_escapes_to_the_terminal(self):
        with Host() as host, RestClient(host.http_port) as rest:
            self.add_twice(rest, "x\n2026-01-01T00:00:00.000+00:00 info    [Forged] \x1b[31mall is well")
        self.assertFalse(any(re.match(r"\S+ info +\[Forged\]", line) for line in host.errors if line), host.log())
        self.assertNotIn("\x1b", host.log())
        self.assertIn("[Forged] \\x1b[31mall is well", host.log())

    def add_twice(self, rest, source):
        """The second output is refused with lines in the log that name the source."""
        entries = [{"outputId": name, "source": source} for name in ("a", "b")]
        self.assertEqual(rest.post("/controls/AsciiTcp/outputs/commands/addAll", {"map": entries}).status, 204)

    def test_times_carry_the_zone(self):
        with Host() as host:
            pass
        lines = [line for line in host.errors if line]
        self.assertGreater(len(lines), 0)
        for line in lines:
            self.assertRegex(line, r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d (info   |warning|error  ) \[")


class HangUp(unittest.TestCase):
    def status(self, host, token):
        with RestClient(host.http_port) as rest:
            return rest.get("/", Authorization=f"Bearer {token}").status

    def test_the_token_file_is_read_again_and_the_host_goes_on(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "token"
            file.touch(0o600)
            file.write_text("the-first-token-0\n")
            with Host("--token", file) as host:
                self.assertEqual(self.status(host, "the-first-token-0"), 200)
                file.write_text("another-token-011\n")
                host.process.send_signal(signal.SIGHUP)
                host.wait_for_log("The token file has been read again")
                self.assertEqual(self.status(host, "the-first-token-0"), 401)
                self.assertEqual(self.status(host, "another-token-011"), 200)

                file.write_text("short\n")
                host.process.send_signal(signal.SIGHUP)
                host.wait_for_log("The token stays as it was: ")
                self.assertEqual(self.status(host, "another-token-011"), 200)

    def test_without_a_token_file_the_host_goes_on(self):
        with Host() as host, RestClient(host.http_port) as rest:
            host.process.send_signal(signal.SIGHUP)
            host.wait_for_log("The hang-up signal concerns the services for PLCs alone")
            self.assertEqual(rest.get("/health").status, 200)


if __name__ == "__main__":
    unittest.main()
