"""A recorded range image, replayed, read over Modbus TCP: every value is that of the row that the frame counter names."""

import os
import pathlib
import tempfile
import unittest

from host import Host, wait_until
from modbus import ModbusClient, signed, unsigned
from range_image import NAN, measure, read_pcd, write_pcd

READS = int(os.environ.get("ZU_READS", "3000"))


def small_scene():
    """Rows that all differ, with missing points, one row without any, negative heights and values that round."""
    rows = []
    for number in range(23):
        row = [(0.001 * column - 0.02, 0.001 * number, 0.0001234 * (number + 1) * (column % 7) - 0.0007) for column in range(40)]
        row[number] = (NAN, NAN, NAN)
        rows.append(row)
    rows.append([(NAN, NAN, NAN)] * 40)
    return rows


def decode(registers):
    """Frame counter and the five (value, decision) pairs of the registers 150 to 184."""
    counter = unsigned(registers[12:16])
    measurements = [(signed(registers[at:at + 2]), registers[at + 2]) for at in range(20, 35, 3)]
    return counter, measurements


class Replay(unittest.TestCase):
    def check_scene(self, path, reads, frames):
        expected = [measure(row) for row in read_pcd(path)]
        with Host("--start", "--rate", 1000, "--replay", path) as host, ModbusClient(host.modbus_port) as client:
            # Before the first frame the values hold the mark for a missing one; the file's rows have different heights.
            wait_until(lambda: unsigned(client.read(150, 35)[12:16]) > 0, "the first result")
            seen = set()
            for _ in range(reads):
                registers = client.read(150, 35)
                counter, measurements = decode(registers)
                self.assertEqual(measurements, expected[counter % len(expected)], f"frame {counter}")
                self.assertEqual(registers[16:20], [0, 0, 0, 0])
                seen.add(counter)
            while len(seen) < frames:  # each read is checked; only their number is not fixed
                counter, measurements = decode(client.read(150, 35))
                self.assertEqual(measurements, expected[counter % len(expected)], f"frame {counter}")
                seen.add(counter)

    def test_every_read_is_one_frame_of_the_file(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "scene.pcd"
            write_pcd(path, small_scene())
            self.check_scene(path, READS, 500)

    @unittest.skipUnless(os.environ.get("ZU_SCENE"), "ZU_SCENE names no range image")
    def test_a_range_image_of_choice(self):
        self.check_scene(os.environ["ZU_SCENE"], 10000, 2000)

    def test_both_read_functions_give_the_same_image(self):
        with Host("--start", "--rate", 0) as host, ModbusClient(host.modbus_port) as client:
            self.assertEqual(client.read(186, 100, function=3), [0] * 100)
            self.assertEqual(client.read(186, 100, function=4), [0] * 100)
            wait_until(lambda: any(client.read(150, 16, function=4)), "a result over function 4")


if __name__ == "__main__":
    unittest.main()
