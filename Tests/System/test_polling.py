"""A PLC that connects for each poll reads the newest values, as one that stays connected does."""

import time
import unittest

from host import Host, wait_until
from modbus import ModbusClient, unsigned

READY, RUNNING = 0, 1
DONE = 2
FRAMES_LATE = 60  # at 100 profiles a second, on a slow machine


def poll(port, first, count):
    with ModbusClient(port) as client:
        return client.read(first, count)


def frame(registers):
    return unsigned(registers[12:16])


class Polling(unittest.TestCase):
    def test_each_poll_reads_the_newest_result(self):
        with Host("--start", "--rate", "100") as host:
            wait_until(lambda: frame(poll(host.modbus_port, 150, 20)) > 0, "the first result")
            for _ in range(3):
                time.sleep(1.5)  # the pace of the master
                with ModbusClient(host.modbus_port) as client:
                    first = frame(client.read(150, 20))
                    wait_until(lambda: frame(client.read(150, 20)) > first + 1, "the next results")
                    self.assertLess(frame(client.read(150, 20)) - first, FRAMES_LATE)

    def test_each_poll_reads_the_state_of_now(self):
        with Host() as host:
            for request, (command, state) in enumerate([(1, RUNNING), (2, READY)] * 2, 1):
                with ModbusClient(host.modbus_port) as client:
                    client.write(0, [request, command])
                    wait_until(lambda: client.read(66, 2) == [request, DONE], "the end of the command")
                time.sleep(0.2)  # state is at most 100 ms old
                self.assertEqual(poll(host.modbus_port, 72, 1), [state])

    def test_a_measurement_is_missing_before_the_first_frame_of_a_scan(self):
        missing = [0x8000, 0, 0]
        with Host() as host:
            self.assertEqual(poll(host.modbus_port, 170, 15), missing * 5)


if __name__ == "__main__":
    unittest.main()
