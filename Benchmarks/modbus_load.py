#!/usr/bin/env python3
"""Many Modbus clients that poll as fast as they can, beside a sensor that must not notice.

usage: modbus_load.py HOST_PROGRAM [--clients 16] [--seconds 60] [--rate 1000] [--nice 10]

Starts the host with the simulated part, polls registers 150 to 184 from all clients in one process, checks each answer (one frame, values
that belong together) and prints how many of the due frames were published. Exit status 1 when a read failed or was torn, or when
less than 99 % of the due frames were published.
"""

import argparse
import collections
import os
import pathlib
import selectors
import struct
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "Tests" / "System"))
from modbus import ModbusClient, unsigned  # noqa: E402

REQUEST = struct.pack(">HHHBBHH", 1, 0, 6, 1, 3, 150, 35)
ANSWER_SIZE = 9 + 2 * 35


class Poller:
    """One client: a request is out at any time."""

    def __init__(self, port):
        self.socket = ModbusClient(port).socket
        self.socket.setblocking(False)
        self.answer = b""
        self.reads = 0

    def ask(self):
        self.socket.send(REQUEST)

    def receive(self):
        """The registers of a complete answer, None while there is more to come."""
        part = self.socket.recv(ANSWER_SIZE - len(self.answer))
        if not part:
            raise ConnectionError("the server closed the connection")
        self.answer += part
        if len(self.answer) < ANSWER_SIZE:
            return None
        registers, self.answer = struct.unpack(">35H", self.answer[9:]), b""
        self.reads += 1
        return registers


def frame_of(registers):
    return unsigned(registers[12:16])


def start_host(program, rate, clients):
    process = subprocess.Popen(
        [program, "--http", "127.0.0.1:0", "--log", "error", "--start", "--rate", str(rate), "--enable", "ModbusTcp",
         "--param", "ModbusTcp.port=0", "--param", f"ModbusTcp.maxClients={clients}"], stdout=subprocess.PIPE, text=True)
    port = None
    for line in process.stdout:
        if line.startswith("listening ModbusTcp"):
            port = int(line.rsplit(":", 1)[1])
        if line.strip() == "ready":
            return process, port
    raise SystemExit("the host did not become ready")


def poll(port, clients, seconds):
    """Polls for the given time. Returns (first frame, last frame, elapsed, answers by frame, reads)."""
    selector = selectors.DefaultSelector()
    pollers = [Poller(port) for _ in range(clients)]
    with ModbusClient(port) as probe:
        while not any(probe.read(150, 35)):
            pass
        began, first = time.monotonic(), frame_of(probe.read(150, 35))
        answers = collections.defaultdict(set)
        for poller in pollers:
            selector.register(poller.socket, selectors.EVENT_READ, poller)
            poller.ask()
        while time.monotonic() - began < seconds:
            for key, _ in selector.select(1.0):
                registers = key.data.receive()
                if registers is not None:
                    answers[frame_of(registers)].add(registers)
                    key.data.ask()
        last, elapsed = frame_of(probe.read(150, 35)), time.monotonic() - began
    return first, last, elapsed, answers, sum(poller.reads for poller in pollers)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--clients", type=int, default=16)
    parser.add_argument("--seconds", type=float, default=60)
    parser.add_argument("--rate", type=float, default=1000)
    parser.add_argument("--nice", type=int, default=10)
    options = parser.parse_args()

    process, port = start_host(options.program, options.rate, options.clients + 1)  # and the probe
    try:
        os.nice(options.nice)
        first, last, elapsed, answers, reads = poll(port, options.clients, options.seconds)
    finally:
        process.terminate()
        status = process.wait()

    due = elapsed * options.rate
    published = last - first
    torn = sum(len(different) - 1 for different in answers.values())
    print(f"clients            {options.clients}")
    print(f"reads              {reads} ({reads / elapsed:.0f} a second), none failed")
    print(f"frames due         {due:.0f}")
    print(f"frames published   {published} ({100 * published / due:.2f} %)")
    print(f"frames seen        {len(answers)}")
    print(f"torn reads         {torn}")
    print(f"host's exit status {status}")
    return 0 if torn == 0 and published >= 0.99 * due and status == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
