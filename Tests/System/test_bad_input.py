"""Bad input gets a clear answer and does not affect other clients."""

import os
import pathlib
import socket
import struct
import tempfile
import unittest

from host import BIN, PATIENCE, Host, run_host, wait_until
from modbus import ModbusClient, ModbusException
from range_image import write_pcd


class Network(unittest.TestCase):
    def test_a_malformed_frame_closes_that_connection_only(self):
        with Host() as host, ModbusClient(host.modbus_port) as other:
            for frame in (struct.pack(">HHHB", 1, 7, 6, 1) + b"\x03\x00\x00\x00\x01",  # another protocol
                          struct.pack(">HHHB", 1, 0, 1, 1),  # no function
                          struct.pack(">HHHB", 1, 0, 300, 1) + b"\x03"):  # longer than a frame may be
                with socket.create_connection(("127.0.0.1", host.modbus_port), timeout=10) as bad:
                    bad.sendall(frame)
                    self.assertEqual(bad.recv(1), b"")
                self.assertEqual(other.read(9000, 2), [0, 0])

    def test_exception_codes(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            for pdu, code in ((b"\x07", 1),  # read exception status
                              (struct.pack(">BHH", 1, 16, 1), 2),
                              (struct.pack(">BHH", 3, 9999, 2), 2),
                              (struct.pack(">BHH", 3, 10000, 1), 2),
                              (struct.pack(">BHH", 3, 0, 126), 3),
                              (struct.pack(">BHH", 3, 0, 0), 3)):
                with self.assertRaises(ModbusException) as refused:
                    client.request(pdu)
                self.assertEqual(refused.exception.code, code, pdu)

    def test_half_a_frame_and_silence_costs_that_client_its_connection(self):
        with Host("--param", "ModbusTcp.idleTimeout=1") as host:
            with socket.create_connection(("127.0.0.1", host.modbus_port), timeout=30) as silent:
                silent.sendall(b"\x00\x01\x00\x00\x00")
                self.assertEqual(silent.recv(1), b"")
            with ModbusClient(host.modbus_port) as client:
                self.assertEqual(client.read(9000, 1), [0])

    def test_idle_clients_make_room_and_busy_ones_do_not(self):
        with Host("--param", "ModbusTcp.maxClients=2", "--param", "ModbusTcp.makeRoomAfter=1") as host:
            with ModbusClient(host.modbus_port) as busy, ModbusClient(host.modbus_port) as idle:
                idle.read(0, 1)
                busy.read(0, 1)

                def plc_is_served():
                    busy.read(0, 1)
                    try:
                        with ModbusClient(host.modbus_port) as plc:
                            return plc.read(0, 1) == [0]
                    except OSError:  # the idle client has been idle for less than a second
                        return False

                wait_until(plc_is_served, "the place of the idle client")
                busy.read(0, 1)
                with self.assertRaises(OSError):
                    idle.read(0, 1)

    def test_strangers_that_take_all_places_do_not_keep_another_machine_out(self):
        with Host("--param", "ModbusTcp.maxClients=4", "--param", "ModbusTcp.makeRoomAfter=600") as host:
            strangers = [ModbusClient(host.modbus_port) for _ in range(4)]
            for stranger in strangers:
                stranger.read(0, 1)
            with socket.create_connection(("127.0.0.1", host.modbus_port), timeout=PATIENCE) as fifth:
                self.assertEqual(fifth.recv(1), b"")  # each of the four is in use
            with ModbusClient(host.modbus_port, source="127.0.0.2") as plc:
                self.assertEqual(plc.read(0, 1), [0])
            for stranger in strangers:
                stranger.close()

    def test_a_master_whose_machine_vanishes_is_noticed(self):
        """The kernel asks a silent master after 30 s whether it is still there."""
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.read(0, 1)
            rows = [line.split() for line in pathlib.Path("/proc/net/tcp").read_text().splitlines()[1:]]
            ours = [row for row in rows if row[1].endswith(f":{host.modbus_port:04X}") and row[3] == "01"]
            self.assertEqual(len(ours), 1)
            timer, left = ours[0][5].split(":")
            self.assertEqual(timer, "02")  # keep-alive
            self.assertLessEqual(int(left, 16), 30 * os.sysconf("SC_CLK_TCK"))

    def test_a_busy_port_is_one_clear_line_and_the_host_goes_on(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = taken.getsockname()[1]
            with Host("--enable", "ModbusTcp", "--param", f"ModbusTcp.port={port}", modbus=False) as host:
                host.wait_for_log(str(port))
                self.assertNotIn("ModbusTcp", host.ports)


class Files(unittest.TestCase):
    def refused(self, *arguments):
        status, output, error = run_host(*arguments)
        self.assertEqual((status, output), (2, ""))
        self.assertEqual(len(error.strip().splitlines()), 1, error)
        return error

    def test_a_range_image_that_is_cut_short_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "cut.pcd"
            write_pcd(path, [[(0.0, 0.0, 0.0)] * 8] * 8)
            path.write_bytes(path.read_bytes()[:-1])
            self.assertIn(str(path), self.refused("--replay", path))

    def test_a_range_image_that_lies_about_its_size_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "lies.pcd"
            write_pcd(path, [[(0.0, 0.0, 0.0)] * 8] * 8)
            path.write_bytes(path.read_bytes().replace(b"HEIGHT 8", b"HEIGHT 4000000000"))
            self.assertIn(str(path), self.refused("--replay", path))

    def test_a_range_image_that_does_not_exist_is_refused(self):
        self.assertIn("nowhere.pcd", self.refused("--replay", "nowhere.pcd"))

    def test_a_plug_in_that_is_none_is_reported_and_skipped(self):
        with tempfile.TemporaryDirectory() as folder:
            broken = pathlib.Path(folder) / "broken.so"
            broken.write_bytes(b"\x7fELF but no more")
            with Host("--plugins", BIN / "plugins", "--plugins", folder) as host, ModbusClient(host.modbus_port) as client:
                host.wait_for_log("broken.so")
                client.read(0, 1)


class PlugIns(unittest.TestCase):
    def test_a_taken_type_name_is_reported_and_the_first_stays(self):
        with Host("--plugins", BIN / "plugins", "--plugins", BIN / "tests/takenname") as host:
            host.wait_for_log('Failed to load control protocol "ModbusTcp" ()')
            with ModbusClient(host.modbus_port) as client:
                client.read(0, 1)

    def test_a_factory_that_throws_costs_its_plug_in_and_not_the_sensor(self):
        with Host("--plugins", BIN / "plugins", "--plugins", BIN / "tests/throwingfactory") as host:
            host.wait_for_log("failed (no licence for this protocol) while it was being made")
            with ModbusClient(host.modbus_port) as client:
                client.read(0, 1)


class CommandLine(unittest.TestCase):
    def test_help_and_version(self):
        status, output, error = run_host("--help")
        self.assertEqual((status, error), (0, ""))
        for option in ("--job", "--plugins", "--deployment", "--replay", "--rate", "--start", "--enable", "--param", "--log"):
            self.assertIn(option, output)
        status, output, error = run_host("--version")
        self.assertEqual((status, error), (0, ""))
        self.assertRegex(output, r"\d+\.\d+")

    def test_bad_options_are_one_clear_line(self):
        for arguments, part in ((["--nonsense"], "nonsense"), (["--rate", "fast"], "fast"), (["--deployment", "moon"], "moon"),
                                (["--log", "loud"], "loud"), (["--param", "x"], "x"), (["extra"], "extra"),
                                (["--param", "ModbusTcp.port=70000"], "port"), (["--param", "ModbusTcp.colour=1"], "colour"),
                                (["--enable", "Nobody"], "Nobody"), (["--job", "../up"], "../up"), (["--plugins", "nowhere"], "nowhere")):
            with self.subTest(arguments):
                status, output, error = run_host(*arguments)
                self.assertEqual((status, output), (2, ""))
                self.assertIn(part, error.strip().splitlines()[-1])

    def test_both_signals_stop_in_order(self):
        import signal
        for sent in (signal.SIGTERM, signal.SIGINT):
            with Host("--start", "--rate", 1000) as host:
                self.assertEqual(host.stop(sent), 0)


if __name__ == "__main__":
    unittest.main()
