"""A PLC that polls more slowly than results come misses none: the block ResultQueue, with the client libmodbus."""

import contextlib
import struct
import tempfile
import time
import unittest

from host import PATIENCE, Host, wait_until
from libmodbus import Libmodbus, LibmodbusError
from modbus import ModbusClient, unsigned
from pages import expect, session, session_host
from rest import RestClient

PAGE = "docs/registers.md"
SERVICE = "/controls/ModbusTcp"
ASSEMBLY = SERVICE + "/registerAssemblies/registerAssembly-0"
FIRST = 300
NUMBER, WAITING, LOST, SESSION, DECISIONS, VALID, LOST_BEFORE, FRAME, VALUES = 1, 2, 3, 4, 5, 6, 7, 8, 16
SIZE = 48
START, STOP = 1, 2


def add_queue(rest, sources="profile/stamp,profile/zMax", first=FIRST):
    block = {"type": "ResultQueue", "outputId": first, "dataSource": sources}
    assert rest.post(ASSEMBLY + "/commands/add", {"blocks": [block]}).status == 200


@contextlib.contextmanager
def queue_host(*arguments, rate=50):
    with Host("--rate", rate, *arguments) as host, RestClient(host.http_port) as rest, Libmodbus(host.modbus_port) as plc:
        add_queue(rest)
        yield host, rest, plc


def frame_of(block):
    return unsigned(block[FRAME:FRAME + 4])


def scan_until(plc, count):
    """Scans until at least `count` results wait."""
    plc.write_coil(START, True)
    wait_until(lambda: plc.read_registers(FIRST + WAITING, 1)[0] >= count, f"{count} results")
    plc.write_coil(STOP, True)
    wait_until(lambda: plc.read_registers(72, 1) == [0], "the end of the scan")


def drain(plc, pause=0.0):
    """The frames of all results, each acknowledged after a pause."""
    frames = []
    block = plc.read_registers(FIRST, SIZE)
    while block[NUMBER]:
        frames.append(frame_of(block))
        time.sleep(pause)
        block = plc.write_and_read(FIRST, [block[NUMBER]], FIRST, SIZE)
    return frames


class Pages(unittest.TestCase):
    def test_the_session_of_the_page(self):
        arguments, steps = session(PAGE, "Miss no part")
        self.assertEqual(len(steps), 9)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)


class Queue(unittest.TestCase):
    def test_a_slow_poller_misses_no_part(self):
        with queue_host("--param", "ModbusTcp.queueDepth=1000") as (_, _, plc):
            plc.write_coil(START, True)
            frames, sessions, numbers = [], set(), []
            deadline = time.monotonic() + PATIENCE
            while len(frames) < 100 and time.monotonic() < deadline:
                time.sleep(0.25)  # the pace of the PLC: a dozen results come meanwhile
                for _ in range(15):
                    block = plc.read_registers(FIRST, SIZE)
                    if block[NUMBER] == 0:
                        break
                    self.assertEqual(block[LOST_BEFORE], 0)
                    frames.append(frame_of(block))
                    sessions.add(block[SESSION])
                    numbers.append(block[NUMBER])
                    plc.write_register(FIRST, block[NUMBER])
            plc.write_coil(STOP, True)
            wait_until(lambda: plc.read_registers(72, 1) == [0], "the end of the scan")
            frames += drain(plc)
            self.assertGreaterEqual(len(frames), 100)
            self.assertEqual(frames, list(range(len(frames))))
            self.assertEqual(len(sessions), 1)
            self.assertEqual({(after - before) % 65535 for before, after in zip(numbers, numbers[1:])}, {1})
            self.assertEqual(plc.read_registers(FIRST + NUMBER, 3), [0, 0, 0])

    def test_a_plc_that_loses_answers_and_connections_misses_no_part_and_gets_none_twice(self):
        with queue_host() as (host, _, plc):
            scan_until(plc, 20)
            waiting = plc.read_registers(FIRST + WAITING, 1)[0]
            processed, last = [], None
            for turn in range(2 * waiting):
                with ModbusClient(host.modbus_port) as other:
                    block = other.read(FIRST, SIZE)
                    if block[NUMBER] == 0:
                        break
                    result = block[NUMBER], block[SESSION]
                    if result != last:
                        processed.append(frame_of(block))
                        last = result
                    request = struct.pack(">HHHBBHH", 9, 0, 6, 1, 6, FIRST, block[NUMBER])
                    if turn % 3 == 0:
                        other.socket.sendall(request[:7])  # the connection ends within the request
                    elif turn % 3 == 1:
                        other.socket.sendall(request)  # the answer is not read
                    else:
                        other.write_one(FIRST, block[NUMBER])
                        other.write_one(FIRST, block[NUMBER])  # again: changes nothing
            self.assertEqual(plc.read_registers(FIRST + NUMBER, 2), [0, 0])
            self.assertEqual(processed, list(range(waiting)))

    def test_two_readers_have_a_queue_each(self):
        with queue_host() as (host, rest, plc):
            add_queue(rest, first=400)
            scan_until(plc, 10)
            count = plc.read_registers(FIRST + WAITING, 1)[0]
            self.assertEqual(drain(plc), list(range(count)))
            with Libmodbus(host.modbus_port) as other:
                self.assertEqual(other.read_registers(400 + WAITING, 1), [count])
                self.assertEqual(frame_of(other.read_registers(400, SIZE)), 0)

    def test_readers_of_one_queue_are_refused_each_others_numbers(self):
        with queue_host() as (host, _, plc):
            scan_until(plc, 5)
            number = plc.read_registers(FIRST + NUMBER, 1)[0]
            with Libmodbus(host.modbus_port) as other:
                other.write_register(FIRST, number)
                plc.write_register(FIRST, number)  # as a repetition: takes no second result
                second = other.read_registers(FIRST + NUMBER, 1)[0]
                other.write_register(FIRST, second)
                with self.assertRaisesRegex(LibmodbusError, "Illegal data value"):
                    plc.write_register(FIRST, number)

    def test_a_full_queue_keeps_the_oldest_and_tells_what_is_lost(self):
        with queue_host("--param", "ModbusTcp.queueDepth=5", rate=200) as (host, rest, plc):
            plc.write_coil(START, True)
            wait_until(lambda: plc.read_registers(FIRST + LOST, 1)[0] >= 10, "lost results")
            host.wait_for_log("The result queue at register 300 is full: new results are lost until the PLC has read more")
            plc.write_coil(STOP, True)
            wait_until(lambda: plc.read_registers(72, 1) == [0], "the end of the scan")
            lost = plc.read_registers(FIRST + LOST, 1)[0]
            wait_until(lambda: rest.get(SERVICE + "/metrics").json["queueOverflows"] == lost, "the metric of lost results")
            self.assertEqual(rest.get(SERVICE + "/metrics").json["queuedResults"], 5)

            def told():
                return [problem["text"] for problem in rest.get("/problems").json["problems"]]

            text = "Modbus TCP has lost results: the PLC reads the result queue at register 300 too slowly"
            wait_until(lambda: text in told(), "the problem")
            self.assertEqual(drain(plc), [0, 1, 2, 3, 4])
            wait_until(lambda: text not in told(), "the end of the problem")
            scan_until(plc, 1)
            self.assertEqual(plc.read_registers(FIRST + LOST_BEFORE, 1), [lost])

    def test_a_change_of_the_map_keeps_the_results_and_other_sources_lose_them(self):
        with queue_host() as (host, rest, plc):
            scan_until(plc, 10)
            before = plc.read_registers(FIRST, SIZE)

            def update(new):
                return rest.post(ASSEMBLY + "/commands/update", {"outputId": FIRST, "newParams": new}).status

            self.assertEqual(rest.put(SERVICE, {"parameters": {"registerOrder": 1}}).status, 200)
            self.assertEqual(plc.read_registers(FIRST, FRAME), before[:FRAME])
            self.assertEqual(rest.put(SERVICE, {"parameters": {"registerOrder": 0}}).status, 200)
            self.assertEqual(update({"displayName": "parts"}), 200)
            self.assertEqual(plc.read_registers(FIRST, SIZE), before)
            plc.write_coil(START, True)  # another scan
            wait_until(lambda: plc.read_registers(FIRST + WAITING, 1)[0] > before[WAITING], "results of another scan")
            plc.write_coil(STOP, True)
            wait_until(lambda: plc.read_registers(72, 1) == [0], "the end of the scan")
            waiting = plc.read_registers(FIRST + WAITING, 1)[0]
            self.assertEqual(frame_of(plc.read_registers(FIRST, SIZE)), 0)

            self.assertEqual(update({"dataSource": "profile/width"}), 200)
            wait_until(lambda: plc.read_registers(FIRST + NUMBER, 3) == [0, 0, waiting], "the loss")
            self.assertNotEqual(plc.read_registers(FIRST + SESSION, 1), before[SESSION:SESSION + 1])
            host.wait_for_log(f"A change of the result queue at register 300 has lost {waiting} results that the PLC had not read")

    def test_a_list_that_is_too_long_is_refused(self):
        with queue_host() as (_, rest, plc):
            names = ",".join(["profile/zMax"] * 17)
            refused = rest.post(ASSEMBLY + "/commands/update", {"outputId": FIRST, "newParams": {"dataSource": names}})
            self.assertEqual((refused.status, refused.json["detail"]), (422, "A list of data sources has at most 16 places."))
            rest.post(ASSEMBLY + "/commands/add", {"blocks": [{"type": "DecisionBits", "outputId": 400, "dataSource": names}]})
            with self.assertRaisesRegex(LibmodbusError, "Illegal data address"):
                plc.write_register(400, 1)

    def test_another_session_tells_a_restart_of_the_host(self):
        sessions = []
        with tempfile.TemporaryDirectory() as data:
            with Host("--rate", 50, data=data) as host, RestClient(host.http_port) as rest, Libmodbus(host.modbus_port) as plc:
                add_queue(rest)
                scan_until(plc, 3)
                sessions.append(plc.read_registers(FIRST + SESSION, 1)[0])
            for _ in range(2):
                with Host(data=data) as host, Libmodbus(host.modbus_port) as plc:  # the map is that of the saved job
                    self.assertEqual(plc.read_registers(FIRST, 4), [0, 0, 0, 0])
                    sessions.append(plc.read_registers(FIRST + SESSION, 1)[0])
        self.assertNotIn(0, sessions)
        self.assertGreater(len(set(sessions)), 1, "two restarts have the session of before")

    def test_decision_bits_and_inputs_show_the_newest_result(self):
        with Host("--rate", 200) as host, RestClient(host.http_port) as rest, Libmodbus(host.modbus_port) as plc:
            block = {"type": "DecisionBits", "outputId": 400, "dataSource": "profile/zMax,profile/zMin,,profile/width,profile/none"}
            self.assertEqual(rest.post(ASSEMBLY + "/commands/add", {"blocks": [block]}).status, 200)
            self.assertEqual(plc.read_registers(400, 2), [0, 0])
            plc.write_coil(START, True)
            wait_until(lambda: plc.read_registers(401, 1) == [0b01011], "valid decisions")
            plc.write_coil(STOP, True)
            wait_until(lambda: plc.read_registers(72, 1) == [0], "the end of the scan")
            decisions, valid = plc.read_registers(400, 2)
            single = [plc.read_registers(first + 2, 1)[0] for first in (170, 173, 176)]
            self.assertEqual([decisions >> bit & 1 for bit in (0, 1, 3)], single)
            self.assertEqual(plc.read_inputs(6400, 32), [word >> bit & 1 for word in (decisions, valid) for bit in range(16)])


if __name__ == "__main__":
    unittest.main()
