"""The real host under everything at once, for as many minutes as the command line says; see scripts/soak."""

import collections
import os
import pathlib
import re
import statistics
import sys
import tempfile
import threading
import time

from ascii_client import AsciiClient
from host import Host
from modbus import ModbusClient
from range_image import MISSING, measure, read_pcd, write_pcd
from rest import EventStream, RestClient
from test_replay import decode, small_scene

POLLERS, SUBSCRIBERS, STREAMS = 16, 8, 4
POLL_SECONDS = 0.05
CHANGE_SECONDS = 0.5
JOBS = ["soak-a", "soak-b"]
NAMES = ["zMax", "zMin", "width", "meanZ", "points"]  # in the order of the registers
MODBUS = "/controls/ModbusTcp"

# Errors that the host is expected to log during the run, and why.
NAMED_ERRORS = []

ERROR_LINE = re.compile(r"^\S+ \S+ error ")


class Soak:
    def __init__(self, host, expected):
        self.host = host
        self.expected = expected
        self.stopping = threading.Event()
        self.lock = threading.Lock()
        self.counts = collections.Counter()
        self.faults = []

    def count(self, what, amount=1):
        with self.lock:
            self.counts[what] += amount

    def fault(self, text):
        with self.lock:
            self.faults.append(text)

    def run_client(self, client):
        """Runs one client again and again until the end: a load may cost it its connection."""
        while not self.stopping.is_set():
            try:
                client()
            except (OSError, EOFError) as error:
                if not self.stopping.is_set():
                    self.count(f"{client.__name__}: {type(error).__name__}")
                    self.stopping.wait(0.1)
            except Exception as error:  # any exception is reported at the end
                self.fault(f"{client.__name__}: {type(error).__name__}: {error}")
                return

    def poller(self):
        with ModbusClient(self.host.modbus_port) as client:
            while not self.stopping.wait(POLL_SECONDS):
                self.check_registers(client.read(150, 35))

    def check_registers(self, registers):
        """Checks that one read returns one frame. A block that a load has just placed reads as zeros until the next frame."""
        counter, pairs = decode(registers)
        if counter == 0:
            self.count("reads without a frame")
            return
        self.count("reads")
        for pair, wanted in zip(pairs, self.expected[counter % len(self.expected)]):
            if pair not in (wanted, (0, 0)):
                self.fault(f"torn read: frame {counter} with {pairs}")
                return

    def subscriber(self):
        with AsciiClient(self.host.ports["AsciiTcp"]) as client:
            client.send("SUBSCRIBE\n")
            rest = b""
            while not self.stopping.is_set():
                data = client.socket.recv(1 << 18)
                if not data:
                    raise EOFError
                lines = (rest + data).split(b"\n")
                rest = lines.pop()
                self.count("lines", len(lines))
                if lines and lines[-1].startswith(b"DATA "):
                    self.check_line(lines[-1].decode())

    def check_line(self, line):
        words = line.split(" ")
        wanted = dict(zip(NAMES, self.expected[int(words[1]) % len(self.expected)]))
        for word in words[2:]:
            name, value, decision = re.fullmatch(r"(\w+)=([^:]+):(\d)", word).groups()
            number = MISSING if value == "invalid" else round(float(value) * 1000)
            if abs(number - wanted[name][0]) > 1:  # host and test round a half differently
                self.fault(f"torn line: {line}")
                return

    def stream(self):
        with EventStream(self.host.http_port, MODBUS + "/metrics") as events:
            while not self.stopping.is_set():
                if "requests" not in events.next():
                    self.fault("a report without its numbers")
                self.count("reports")

    def changer(self):
        with RestClient(self.host.http_port) as rest:
            for i in range(1 << 30):
                if self.stopping.wait(CHANGE_SECONDS):
                    return
                answers = [rest.put(MODBUS, {"parameters": {"maxClients": 20 + i % 10}}),
                           rest.post(f"/jobs/{JOBS[i % 2]}/load")]
                for answer in answers:
                    self.count(f"change: {answer.status}")
                    if answer.status not in (200, 204):
                        self.fault(f"change refused: {answer.status} {answer.text}")

    def resident_kib(self):
        status = (pathlib.Path("/proc") / str(self.host.process.pid) / "status").read_text()
        return int(re.search(r"VmRSS:\s*(\d+)", status).group(1))

    def fewest(self, kind):
        """The smallest number of descriptors ("fd") or threads ("task") within a second, because requests come and go."""
        folder = pathlib.Path("/proc") / str(self.host.process.pid) / kind
        counts = []
        for _ in range(20):
            counts.append(len(os.listdir(folder)))
            time.sleep(0.05)
        return min(counts)

    def check_log(self):
        for line in list(self.host.errors):
            if line and ERROR_LINE.match(line) and not any(name in line for name in NAMED_ERRORS):
                self.fault("error in the log: " + line)


def prepare_jobs(host):
    with RestClient(host.http_port) as rest:
        for i, job in enumerate(JOBS):
            assert rest.put(MODBUS, {"parameters": {"idleTimeout": 100 + i}}).status == 200
            assert rest.post(f"/jobs/{job}/save").status in (200, 204)


def check_flat(soak, samples):
    quarter = len(samples) // 4
    before, last = (statistics.mean(part) for part in (samples[-2 * quarter:-quarter], samples[-quarter:]))
    print(f"resident memory: {before:.0f} KiB, then {last:.0f} KiB in the last quarter ({100 * (last / before - 1):+.2f} %)")
    if abs(last / before - 1) > 0.02:
        soak.fault("resident memory is not flat")


def watch(soak, seconds):
    """Samples the memory once a second, and compares threads and descriptors with those after the first minute."""
    first = {}
    samples = []
    begin = time.monotonic()
    while time.monotonic() - begin < seconds:
        if not first and time.monotonic() - begin >= min(60, seconds / 4):
            first = {kind: soak.fewest(kind) for kind in ("fd", "task")}
        samples.append(soak.resident_kib())
        time.sleep(1)
    for kind, count in first.items():
        last = soak.fewest(kind)
        print(f"{kind}: {count} after the first minute, {last} at the end")
        if last > count:
            soak.fault(f"{kind}: {last - count} more than after the first minute")
    check_flat(soak, samples)


def main(minutes):
    with tempfile.TemporaryDirectory() as folder:
        scene = pathlib.Path(folder) / "scene.pcd"
        write_pcd(scene, small_scene())
        expected = [measure(row) for row in read_pcd(scene)]
        with Host("--start", "--rate", 1000, "--replay", scene, "--log", "warning", "--enable", "AsciiTcp",
                  "--param", "AsciiTcp.port=0", "--param", "ModbusTcp.maxClients=20") as host:
            prepare_jobs(host)
            soak = Soak(host, expected)
            clients = [soak.poller] * POLLERS + [soak.subscriber] * SUBSCRIBERS + [soak.stream] * STREAMS + [soak.changer]
            threads = [threading.Thread(target=soak.run_client, args=(client,), daemon=True) for client in clients]
            for thread in threads:
                thread.start()
            watch(soak, 60 * minutes)
            soak.stopping.set()
            for thread in threads:
                thread.join(30)
            soak.check_log()
    print(", ".join(f"{what}: {count}" for what, count in sorted(soak.counts.items())))
    for text, number in collections.Counter(soak.faults).most_common(20):
        print(f"FAULT ({number} times): {text}")
    print(f"{len(soak.faults)} faults in {minutes:g} minutes")
    return 1 if soak.faults else 0


if __name__ == "__main__":
    sys.exit(main(float(sys.argv[1]) if len(sys.argv) > 1 else 20))
