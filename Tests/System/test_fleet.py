"""A small fleet on several servers: see scripts/fleet."""

import os
import pathlib
import queue
import re
import signal
import struct
import subprocess
import tempfile
import time
import unittest

from fleet import Run, parse
from fleet_collector import Collector
from host import PATIENCE, wait_until
from pages import ROOT
from sparkplug import MqttClient, as_varint, text_field

FLEET = ROOT / "scripts" / "fleet"


def start_fleet(*words, **options):
    preset = pathlib.Path(os.environ["ZU_BIN"]).parent.name
    return subprocess.Popen([FLEET, *words], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                            env=os.environ | {"ZU_PRESET": preset}, **options)


class Fleet(unittest.TestCase):
    def test_nothing_is_lost_in_a_minute_with_ten_sensors(self):
        with tempfile.TemporaryDirectory() as folder:
            figures = pathlib.Path(folder) / "figures.json"
            with start_fleet("run", "--sensors", "10", "--minutes", "1", "--json", str(figures)) as run:
                output = run.communicate(timeout=10 * PATIENCE)[0]
            self.assertEqual(run.returncode, 0, output)
            self.assertIn('"faults": 0', figures.read_text())

    def test_an_interrupt_ends_all_processes(self):
        with start_fleet("run", "--sensors", "6", "--minutes", "5", start_new_session=True) as run:
            for line in run.stdout:
                if "nothing happens" in line:
                    break
            os.killpg(run.pid, signal.SIGINT)
            output = run.communicate(timeout=4 * PATIENCE)[0]
            self.assertEqual(run.returncode, 130, output)
            self.assertIn("interrupted", output)
            wait_until(lambda: not self.members(run.pid), "the end of the last process")

    @staticmethod
    def members(session):
        """The processes of the session, but for the dead."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*/stat"):
            try:
                state, _, _, owner = entry.read_text().rpartition(")")[2].split()[:4]
            except OSError:
                continue
            if int(owner) == session and state != "Z":
                found.append(entry)
        return found

    def test_servers_run_side_by_side_until_an_interrupt(self):
        with start_fleet("servers", "--port", "0") as servers:
            line = servers.stdout.readline()
            self.assertRegex(line, r"^listening( 127\.0\.0\.1:\d+){3}\n$")
            servers.send_signal(signal.SIGINT)
            self.assertIn("interrupted", servers.communicate(timeout=PATIENCE)[0])
            self.assertEqual(servers.returncode, 130)

    def test_a_cluster_keeps_a_message_for_the_clients_of_all_its_processes(self):
        with start_fleet("cluster", "--port", "0") as servers:
            try:
                line = servers.stdout.readline()
                first, _, third = (int(port) for port in re.findall(r":(\d+)", line))
                publisher = MqttClient(first, "first", lambda *_: None)
                publisher.publish("kept", b"text", retain=True)
                publisher.close()
                taken = queue.Queue()
                reader = MqttClient(third, "third", lambda *message: taken.put(message))
                reader.subscribe("kept")
                self.assertEqual(taken.get(timeout=PATIENCE)[:2], ("kept", b"text"))
                reader.close()
            finally:
                servers.send_signal(signal.SIGINT)
                servers.communicate(timeout=PATIENCE)
            self.assertEqual(servers.returncode, 130)

    def test_the_help_and_wrong_words(self):
        for words, status, text in ((["--help"], 0, "usage: scripts/fleet servers"), (["run", "--help"], 0, "--sensors N"),
                                    (["run", "--sensors", "0"], 2, "--sensors is 1 or more"), (["dance"], 2, "invalid choice"),
                                    (["run", "--servers", "--cluster"], 2, "not allowed with")):
            with start_fleet(*words) as fleet:
                output = fleet.communicate(timeout=PATIENCE)[0]
            self.assertEqual(fleet.returncode, status, output)
            self.assertIn(text, output)


def metric(name=None, alias=None, kind=None, bits=b"", stamp=1000, historical=False):
    data = text_field(1, name.encode()) if name else b""
    data += b"" if alias is None else b"\x10" + as_varint(alias)
    data += b"\x18" + as_varint(stamp)
    data += b"" if kind is None else b"\x20" + bytes([kind])
    data += b"\x28\x01" if historical else b""
    return text_field(2, data + bits)


def payload(*metrics, seq=None):
    return b"\x08" + as_varint(int(time.time() * 1000)) + b"".join(metrics) + (b"" if seq is None else b"\x18" + bytes([seq]))


def double(value):
    return b"\x69" + struct.pack("<d", value)


class Complaints(unittest.TestCase):
    """The collector and the checks find what they are there for."""

    def setUp(self):
        self.collector = Collector([("127.0.0.1", 1)], ["s0"])
        self.record = self.collector.records["s0"]
        self.seq = 0

    def tell(self, kind, *metrics, seq=True):
        topic = f"spBv1.0/fleet/{kind}/s0" + ("/sensor" if kind[0] == "D" else "")
        if kind == "NBIRTH":
            self.seq = 0
        data = payload(*metrics, seq=self.seq if seq else None)
        self.seq += 1 if seq else 0
        self.collector.take(0, topic, time.monotonic(), data, 1 if kind == "NDEATH" else 0, False)

    def bear(self, bd_seq=1, frame=0):
        self.tell("NBIRTH", metric("bdSeq", kind=4, bits=b"\x58" + as_varint(bd_seq)),
                  metric("Node Control/Rebirth", kind=11, bits=b"\x70\x00"))
        self.tell("DBIRTH", metric("Outputs/frame", alias=7, kind=10, bits=double(frame)))

    def send(self, frame, historical=False):
        self.tell("DDATA", metric(alias=7, bits=double(frame), stamp=1000 + frame, historical=historical))

    def die(self, bd_seq=1):
        self.tell("NDEATH", metric("bdSeq", kind=4, bits=b"\x58" + as_varint(bd_seq)), seq=False)

    def faults(self, starts=1, windows=((0, 1e12),)):
        run = Run(parse(["run", "--sensors", "1"]), Empty, None, self.collector)
        run.windows = [("", *window) for window in windows]
        run.check_frames(Empty(starts), self.record)
        run.check_lives(self.record)
        return [*self.record.breaches, *run.faults]

    def expect(self, text, **options):
        self.assertRegex(" | ".join(self.faults(**options)), text)

    def test_a_good_life_gives_none(self):
        self.bear()
        for frame in (1, 2, 3):
            self.send(frame)
        self.send(0, historical=True)
        self.die()
        self.assertEqual(self.faults(), [])

    def test_a_lost_frame(self):
        self.bear()
        self.send(0, historical=True)
        self.send(2)
        self.die()
        self.expect("s0: frame 2 came after 0")

    def test_a_late_frame_without_its_mark(self):
        self.bear(frame=5)
        self.send(3)
        self.expect("not marked as historical")

    def test_data_out_of_order(self):
        self.bear()
        self.send(2)
        self.send(1)
        self.expect("live data not in order")
        self.send(2, historical=True)
        self.send(1, historical=True)
        self.expect("historical data not in order")

    def test_a_death_that_does_not_come_and_one_that_comes_twice(self):
        self.bear()
        self.expect("no death with bdSeq 1")
        self.die()
        self.die()
        self.expect("two deaths with bdSeq 1")

    def test_a_number_of_a_birth_that_comes_again(self):
        self.bear()
        self.die()
        self.bear()
        self.expect("bdSeq 1 after 1")

    def test_a_birth_when_nothing_happened(self):
        self.bear()
        self.die()
        self.expect("a birth at .* when nothing happened", windows=((0, 1),))

    def test_a_start_of_which_no_frame_came(self):
        self.bear()
        self.send(0, historical=True)
        self.expect("begin 1 times; it was started 2 times", starts=2)

    def test_a_missing_sequence_number(self):
        self.bear()
        self.seq += 1
        self.send(1)
        self.expect("expected sequence number 2")


class Empty:
    """Stands for a sensor, of which the check uses the number of starts, and for servers."""

    kind = "servers"

    def __init__(self, starts):
        self.starts = starts


if __name__ == "__main__":
    unittest.main()
