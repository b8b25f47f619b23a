"""Kills the host while clients change its configuration as fast as they can, and checks the configuration after a restart."""

import http.client
import pathlib
import random
import signal
import sqlite3
import subprocess
import threading

from host import Host
from rest import RestClient

SAVE = "/jobs/default/save"
MOST = 80_000  # of the values: the bound of the parameter is above it


class Changer(threading.Thread):
    """Counts a parameter of one protocol up until the host is gone.

    `sent` is the last value that was sent, `durable` the last value that the host has confirmed as saved."""

    def __init__(self, port, protocol, chance):
        super().__init__()
        self.port = port
        self.path = "/controls/" + protocol
        self.chance = chance
        self.sent = 0
        self.durable = 0
        self.failure = None

    def run(self):
        try:
            with RestClient(self.port) as rest:
                while self.sent < MOST:
                    self.change(rest)
        except (OSError, http.client.HTTPException):
            pass  # killed
        except BaseException as failure:  # reported to the test by the joining thread
            self.failure = failure

    def change(self, rest):
        self.sent += 1
        answer = rest.put(self.path, {"parameters": {"idleTimeout": self.sent}})
        assert answer.status == 200, answer.text
        if self.sent == 1 or self.chance.random() < 0.2:
            answer = rest.post(SAVE)
            assert answer.status == 204, answer.text
            self.durable = self.sent


def check_integrity(data):
    """Checks each file as the killed host left it, with its journal."""
    for file in sorted(pathlib.Path(data).glob("*.zp*")):
        if file.name.endswith("-journal"):
            continue
        with sqlite3.connect(file) as connection:
            result = connection.execute("PRAGMA integrity_check").fetchall()
        connection.close()
        assert result == [("ok",)], (file, result)


def crash_once(data, chance):
    """Starts the host and the changing clients, kills the host at a random moment, and returns the clients."""
    host = Host(data=data, modbus=False)
    host.__enter__()
    changers = [Changer(host.http_port, protocol, random.Random(chance.random())) for protocol in ("ModbusTcp", "AsciiTcp")]
    try:
        for changer in changers:
            changer.start()
        try:
            host.process.wait(timeout=chance.uniform(0.02, 0.6))
            raise AssertionError("the host has ended by itself:\n" + host.log())
        except subprocess.TimeoutExpired:
            pass
    finally:
        host.stop(signal.SIGKILL)
        for changer in changers:
            changer.join()
    return changers


def check_after(data, changers):
    check_integrity(data)
    with Host(data=data, modbus=False) as host, RestClient(host.http_port) as rest:
        for changer in changers:
            if changer.failure is not None:
                raise changer.failure
            found = rest.get(changer.path).json["parameters"]["idleTimeout"]
            first = changer.durable == 0  # no value was confirmed: the value of the previous round may remain
            assert first or changer.durable <= found <= changer.sent, \
                f"{changer.path}: {found} found, {changer.durable} durable, {changer.sent} sent"
        assert rest.get("/problems").json["problems"] == [], rest.get("/problems").text


def crash_rounds(data, rounds, seed, tell=lambda text: None):
    """Returns the number of durable values in all, as proof that a loss was possible."""
    chance = random.Random(seed)
    durable = 0
    for number in range(1, rounds + 1):
        changers = crash_once(data, chance)
        check_after(data, changers)
        durable += sum(changer.durable for changer in changers)
        tell(f"round {number}: " + ", ".join(f"{changer.durable} of {changer.sent}" for changer in changers))
    return durable
