"""Starts the real host program and stops it again."""

import os
import pathlib
import queue
import signal
import subprocess
import tempfile
import threading
import time

BIN = pathlib.Path(os.environ["ZU_BIN"])
PATIENCE = float(os.environ.get("ZU_PATIENCE", "30"))  # seconds; a sanitizer build needs more


class Host:
    """`with Host("--start") as host:` runs zucontrol-host with REST and Modbus TCP on free ports until it is ready.

    Without `data` the jobs are in a temporary folder, which is deleted at the end. With `log`, the host writes its log to
    that file descriptor, which the host object does not read. `environment` adds variables to its environment."""

    def __init__(self, *arguments, modbus=True, wait=True, program=BIN / "zucontrol-host", data=None, log=None,
                 environment=None):
        self.log_descriptor = log
        self.environment = {**os.environ, **(environment or {})}
        self.scratch = tempfile.TemporaryDirectory() if data is None else None
        self.data = pathlib.Path(data or self.scratch.name)
        self.arguments = [str(program), "--http", "127.0.0.1:0", "--data", str(self.data)]
        if modbus:
            self.arguments += ["--enable", "ModbusTcp", "--param", "ModbusTcp.port=0"]
        self.arguments += [str(argument) for argument in arguments]
        self.wait = wait
        self.expected_status = 0  # of the end of the `with`
        self.ports = {}
        self.lines = queue.Queue()
        self.errors = []

    def __enter__(self):
        self.process = subprocess.Popen(
            self.arguments, stdout=subprocess.PIPE, text=True, bufsize=1, env=self.environment,
            stderr=subprocess.PIPE if self.log_descriptor is None else self.log_descriptor)
        streams = [(self.process.stdout, self.lines.put), (self.process.stderr, self.errors.append)]
        self.readers = [threading.Thread(target=self._read, args=stream) for stream in streams if stream[0] is not None]
        for reader in self.readers:
            reader.start()
        try:
            if self.wait:
                self.wait_until_ready()
        except BaseException:
            self.stop()
            raise
        return self

    def __exit__(self, kind, *_):
        status = self.stop()
        if kind is None and status != self.expected_status:
            raise AssertionError(f"the host ended with status {status}:\n" + self.log())

    @staticmethod
    def _read(stream, keep):
        for line in stream:
            keep(line.rstrip("\n"))
        keep(None)

    def wait_until_ready(self):
        """Reads `listening KIND ADDRESS:PORT` lines until `ready`."""
        deadline = time.monotonic() + PATIENCE
        while True:
            line = self.lines.get(timeout=max(0.0, deadline - time.monotonic()))
            if line is None:
                raise AssertionError("the host ended before it was ready:\n" + self.log())
            if line == "ready":
                return
            words = line.split()
            if len(words) == 3 and words[0] == "listening":
                self.ports[words[1]] = int(words[2].rsplit(":", 1)[1])

    @property
    def http_port(self):
        return self.ports["http"]

    @property
    def modbus_port(self):
        return self.ports["ModbusTcp"]

    def log(self):
        return "\n".join(line for line in self.errors if line is not None)

    def wait_for_log(self, text):
        """Waits until a line of the log contains `text`, and returns that line."""
        def find():
            return next((line for line in list(self.errors) if line is not None and text in line), None)
        return wait_until(find, f"'{text}' in the log:\n" + self.log())

    def stop(self, sent=signal.SIGTERM):
        if self.process.poll() is None:
            self.process.send_signal(sent)
        try:
            status = self.process.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        for reader in self.readers:
            reader.join()
        self.process.stdout.close()
        if self.process.stderr is not None:
            self.process.stderr.close()
        if self.scratch is not None:
            self.scratch.cleanup()
        return status


def run_host(*arguments):
    """Runs the host to its end and returns (status, standard output, standard error)."""
    with tempfile.TemporaryDirectory() as data:
        words = [str(BIN / "zucontrol-host"), "--http", "127.0.0.1:0", "--data", data, *map(str, arguments)]
        done = subprocess.run(words, capture_output=True, text=True, timeout=PATIENCE)
    return done.returncode, done.stdout, done.stderr


def wait_until(condition, what="the condition"):
    """Polls until `condition()` returns a true value, with a bound, and returns that value."""
    deadline = time.monotonic() + PATIENCE
    while time.monotonic() < deadline:
        result = condition()
        if result:
            return result
        time.sleep(0.005)
    raise AssertionError(f"waited in vain for {what}")
