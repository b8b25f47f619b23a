"""Discrete inputs, coils and mask writes, with the clients mbpoll and libmodbus."""

import struct
import threading
import unittest

from host import Host, wait_until
from libmodbus import Libmodbus, LibmodbusError
from modbus import ModbusClient
from pages import expect, session, session_host
from rest import RestClient
from test_plc_access import exception_of

PAGE = "docs/registers.md"
ADD = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/add"
DONE, FAILED = 2, 3
TEXT = 2  # the first register of a command's text
START, STOP, ALIGN, LOAD, TRIGGER = 1, 2, 3, 5, 6


def as_bits(registers):
    return [register >> bit & 1 for register in registers for bit in range(16)]


def wait_for_status(plc, expected):
    wait_until(lambda: plc.read_registers(66, 2) == [0, expected], f"the status {expected} of the command")


class Pages(unittest.TestCase):
    def test_the_sessions_of_the_page(self):
        for heading, count in (("Bits", 5), ("Coils", 3)):
            arguments, steps = session(PAGE, heading)
            self.assertEqual(len(steps), count)
            with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
                for command, shown in steps:
                    expect(as_here(command), shown)


class Inputs(unittest.TestCase):
    def test_inputs_are_the_bits_of_the_registers(self):
        with Host() as host, Libmodbus(host.modbus_port) as plc:
            for value, address in enumerate(range(TEXT, TEXT + 64), 0xA5C3):
                plc.write_register(address, value)
            registers = plc.read_registers(0, 125)
            self.assertEqual(plc.read_inputs(0, 2000), as_bits(registers))
            self.assertEqual(plc.read_inputs(16 * TEXT + 3, 700), as_bits(registers)[16 * TEXT + 3:][:700])

    def test_the_limits_of_inputs_and_coils(self):
        cases = ((2, 0, 2000, 0), (2, 0, 2001, 3), (2, 0, 0, 3), (2, 65535, 1, 0), (2, 65535, 2, 2),
                 (1, 0, 16, 0), (1, 15, 2, 2), (1, 0, 2001, 3), (1, 0, 0, 3), (5, 1, 1, 3), (5, 16, 0xFF00, 2), (5, 0, 0xFF00, 2),
                 (5, 7, 0xFF00, 2), (5, 15, 0, 0))
        with Host() as host, ModbusClient(host.modbus_port) as plc:
            for function, first, value, code in cases:
                self.assertEqual(exception_of(plc, struct.pack(">BHH", function, first, value)), code, (function, first, value))
            for count, code in ((16, 0), (1968, 2), (1969, 3), (0, 3)):
                octets = (count + 7) // 8
                self.assertEqual(exception_of(plc, struct.pack(">BHHB", 15, 0, count, octets) + bytes(octets)), code, count)
            self.assertEqual(plc.read(66, 2), [0, 0])  # no command was taken


class Coils(unittest.TestCase):
    def test_a_coil_runs_its_command(self):
        with Host() as host, Libmodbus(host.modbus_port) as plc:
            plc.write_coil(ALIGN, True)
            self.assertEqual(plc.read_coils(0, 16), [1, 0, 0, 1] + [0] * 12)
            with self.assertRaisesRegex(LibmodbusError, "busy"):
                plc.write_coil(START, True)
            plc.write_coil(ALIGN, False)  # takes nothing back
            wait_for_status(plc, DONE)
            self.assertEqual(plc.read_coils(0, 16), [0] * 16)
            wait_until(lambda: plc.read_registers(148, 1) == [2], "the alignment")

            for coil, state in ((START, 1), (STOP, 0)):
                plc.write_coils(0, [int(at == coil) for at in range(16)])
                wait_for_status(plc, DONE)
                wait_until(lambda: plc.read_registers(72, 1) == [state], f"the run state {state}")
            with self.assertRaisesRegex(LibmodbusError, "Illegal data value"):
                plc.write_coils(1, [1, 1])
            with self.assertRaisesRegex(LibmodbusError, "Illegal data address"):
                plc.write_coil(9, True)

    def test_a_job_is_loaded_by_the_name_in_the_registers(self):
        with Host() as host, Libmodbus(host.modbus_port) as plc:
            plc.write_coil(LOAD, True)
            wait_for_status(plc, FAILED)  # without a name
            for offset, character in enumerate("default\0".encode(), TEXT):
                plc.write_register(offset, character)
            self.assertEqual(plc.read_registers(66, 2), [0, FAILED])  # the name alone loads nothing
            plc.write_coil(LOAD, True)
            wait_for_status(plc, DONE)

    def test_the_state_bits_follow_the_sensor(self):
        with Host() as host, RestClient(host.http_port) as rest, Libmodbus(host.modbus_port) as plc:
            self.assertEqual(rest.post(ADD, {"blocks": [{"type": "StateBits", "outputId": 200}]}).status, 200)
            wait_until(lambda: plc.read_inputs(3200, 16) == as_bits([0b0000_0100_0001]), "a linked sensor that is ready")
            plc.write_coil(START, True)
            wait_until(lambda: plc.read_inputs(3200, 16) == as_bits([0b0010_0110_0010]), "a scan, the laser and the command's end")
            plc.write_coil(STOP, True)
            wait_until(lambda: plc.read_inputs(3200, 2) == [1, 0], "the end of the scan")


class MaskWrites(unittest.TestCase):
    def test_masters_that_change_bits_of_one_register_lose_no_change(self):
        rounds, faults = 200, []

        def master(port, bit):
            with Libmodbus(port) as plc:
                for turn in range(rounds):
                    plc.mask_write(TEXT, 0xFFFF ^ 1 << bit, (turn % 2 == 0) << bit)
                    if plc.read_registers(TEXT, 1)[0] >> bit & 1 != (turn % 2 == 0):
                        faults.append((bit, turn))

        with Host() as host, Libmodbus(host.modbus_port) as plc:
            plc.write_register(TEXT, 0x8000)
            masters = [threading.Thread(target=master, args=(host.modbus_port, bit)) for bit in range(6)]
            for thread in masters:
                thread.start()
            for thread in masters:
                thread.join()
            self.assertEqual(faults, [])
            self.assertEqual(plc.read_registers(TEXT, 1), [0x8000])
            plc.mask_write(TEXT, 0x00F2, 0x0025)
            self.assertEqual(plc.read_registers(TEXT, 1), [0x0005])
            with self.assertRaisesRegex(LibmodbusError, "Illegal data address"):
                plc.mask_write(66, 0, 1)


if __name__ == "__main__":
    unittest.main()
