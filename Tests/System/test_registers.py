"""What the page of registers says of the server: how a PLC gets in, states, commands, device identification."""

import json
import re
import subprocess
import sys
import unittest

from host import Host, wait_until
from modbus import ModbusClient, ModbusException
from pages import expect, section, session, session_host
from rest import RestClient

PAGE = "docs/registers.md"
FAILED = 3


def identify(client, access, first):
    """The objects that function 43/14 answers, by id."""
    answer = client.request(bytes((43, 14, access, first)))
    objects, at = {}, 7
    for _ in range(answer[6]):
        number, length = answer[at:at + 2]
        objects[number] = answer[at + 2:at + 2 + length].decode()
        at += 2 + length
    return objects


class Registers(unittest.TestCase):
    def test_others_can_compute_the_fingerprint(self):
        arguments, steps = session(PAGE, "Does the PLC fit the map?")
        recipe = re.search(r"^```python\n(.*?)^```", section(PAGE, "Does the PLC fit the map?"), re.MULTILINE | re.DOTALL)[1]
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            (command, shown), = steps
            expect(as_here(command), shown)
            done = subprocess.run([sys.executable, "-c", as_here(recipe)], capture_output=True, text=True, timeout=60, check=True)
        number = json.loads(shown[0])[0]
        self.assertEqual(done.stdout.split(), [str(number)] * 2)

    def test_a_plc_on_another_machine_gets_in(self):
        arguments, _ = session(PAGE, "Connect a PLC")
        here = "127.0.0.2"  # stands in for every address of the sensor: a test listens on no other
        with session_host([word.replace("0.0.0.0", here) for word in arguments], {"ModbusTcp": "1502"}) as as_here:
            with ModbusClient(int(as_here("1502")), address=here) as plc:
                plc.read(0, 1)

    def test_the_states_of_the_sensor(self):
        text = section(PAGE, "Blocks, register by register")
        self.assertIn("0 not aligned, 1 being aligned, 2 aligned", text)
        self.assertIn("always reports 1, linked", text)
        with Host() as host, ModbusClient(host.modbus_port) as plc:
            wait_until(lambda: plc.read(138, 1) == [1], "the link status")
            self.assertEqual(plc.read(148, 1), [0])
            plc.write(0, [1, 3])
            wait_until(lambda: plc.read(148, 1) == [1], "the alignment to begin")
            wait_until(lambda: plc.read(148, 1) == [2], "the alignment to end")

    def test_an_unknown_command_fails(self):
        self.assertIn("| another id | nothing; the status is 3, failed |", section(PAGE, "Blocks, register by register"))
        with Host() as host, ModbusClient(host.modbus_port) as plc:
            for request, command in ((1, 7), (2, 99), (3, 255)):
                plc.write(0, [request, command])
                self.assertEqual(plc.read(66, 2), [request, FAILED])

    def test_the_device_identification(self):
        rows = re.findall(r"^\| (\d+) \| [^|]+ \| `(.+)` \|$", section(PAGE, "Device identification"), re.MULTILINE)
        shown = {int(number): text for number, text in rows}
        self.assertEqual(len(shown), 9)
        with Host() as host, ModbusClient(host.modbus_port) as plc:
            wait_until(lambda: identify(plc, 4, 132) == {132: shown[132]}, "the name of the job")
            self.assertEqual(identify(plc, 1, 0), {number: shown[number] for number in (0, 1, 2)})
            self.assertEqual(identify(plc, 2, 0), {number: shown[number] for number in (0, 1, 2, 4)})
            self.assertEqual(identify(plc, 3, 0), shown)
            self.assertEqual(identify(plc, 4, 4), {4: shown[4]})
            with self.assertRaises(ModbusException) as refusal:
                identify(plc, 4, 3)
            self.assertEqual(refusal.exception.code, 2)

    def test_the_device_identification_follows_the_map(self):
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
            def is_told(blocks):
                told = identify(plc, 3, 0x80)
                fingerprint = rest.get("/controls/ModbusTcp/plc").json["fingerprint"]
                return (told[129], told[130]) == (str(blocks), f"{fingerprint:08X}")

            self.assertTrue(is_told(10))
            before = identify(plc, 4, 130)
            added = {"blocks": [{"type": "Decision", "outputId": 300, "dataSource": "profile/zMax"}]}
            rest.post("/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/add", added)
            self.assertTrue(is_told(11))
            self.assertNotEqual(identify(plc, 4, 130), before)
            self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"registerOrder": 1}}).status, 200)
            self.assertTrue(is_told(11))


if __name__ == "__main__":
    unittest.main()
