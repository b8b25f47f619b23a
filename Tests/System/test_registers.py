"""What the page of registers says of the server: how a PLC gets in, states, commands, device identification."""

import csv
import json
import re
import struct
import subprocess
import sys
import unittest

from host import Host, wait_until
from modbus import ModbusClient, ModbusException, unsigned
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


def decoded(kind, registers):
    """The value of the type in these registers, as the page writes it."""
    data = struct.pack(f">{len(registers)}H", *registers)
    if kind in ("STRING", "TEXT"):
        return data.decode()
    number = struct.unpack(">" + {"UINT": "H", "INT": "h", "UDINT": "I", "DINT": "i", "ULINT": "Q", "LINT": "q", "REAL": "f", "LREAL": "d"}[kind], data)[0]
    return f"{number:.6g}" if kind == "REAL" else str(number)


class Registers(unittest.TestCase):
    def test_others_can_compute_the_fingerprint_and_read_it(self):
        arguments, steps = session(PAGE, "Does the PLC fit the map?")
        recipe = re.search(r"^```python\n(.*?)^```", section(PAGE, "Does the PLC fit the map?"), re.MULTILINE | re.DOTALL)[1]
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            numbers = {"curl": json.loads(steps[0][1][0])[0], "mbpoll": int(steps[2][1][0], 16)}
            for command, shown in steps:
                expect(as_here(command), shown)
                if command.split()[0] in numbers and "-X" not in command:
                    done = subprocess.run([sys.executable, "-c", as_here(recipe)], capture_output=True, text=True, timeout=60, check=True)
                    self.assertEqual(done.stdout.split(), [str(numbers[command.split()[0]])] * 2)

    def test_a_newcomer_finds_the_byte_order(self):
        arguments, steps = session(PAGE, "The values are garbage")
        self.assertEqual(len(steps), 8)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)

    def test_the_values_of_the_test_block(self):
        rows = re.findall(r"^\| (\d+) \| (\w+)[^|]* \| ([^|]+) \| ((?:0x\w{4} ?)+) \|$", section(PAGE, "The values are garbage"), re.MULTILINE)
        self.assertEqual(len(rows), 9)
        path = "/controls/ModbusTcp"
        block = {"type": "OrderTest", "outputId": 300}
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
            self.assertEqual(rest.post(path + "/registerAssemblies/registerAssembly-0/commands/add", {"blocks": [block]}).status, 200)
            for address, kind, value, registers in rows:
                sent = [int(register, 16) for register in registers.split()]
                self.assertEqual(plc.read(int(address), len(sent)), sent)
                self.assertEqual(decoded(kind, sent), value)
                answer = rest.post(path + "/commands/orderTest", {"address": int(address), "type": kind, "shown": value})
                self.assertEqual((answer.status, answer.json["isRight"]), (200, True), answer.text)

    def test_the_blocks_describe_themselves_in_plc_files(self):
        path = "/controls/ModbusTcp"
        commands = path + "/registerAssemblies/registerAssembly-0/commands"
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
            for number, order in enumerate(("ABCD", "CDAB", "BADC", "DCBA")):
                blocks = [{"type": "OrderTest", "outputId": 300 + 100 * number, "order": order},
                          {"type": "MapFingerprint", "outputId": 330 + 100 * number, "order": order},
                          {"type": "MeasurementReal", "outputId": 340 + 100 * number, "dataSource": "profile/zMax", "order": order}]
                self.assertEqual(rest.post(commands + "/add", {"blocks": blocks}).status, 200)
            fingerprint = rest.get(path + "/plc").json["fingerprint"]
            rows = [row for row in csv.DictReader(rest.get(path + "/plc?format=csv").text.splitlines()) if int(row["offset"]) >= 300]
            self.assertEqual(len(rows), 4 * 11)
            for row in rows:
                registers = plc.read(int(row["offset"]), int(row["registers"]))
                if row["order"] in ("BADC", "DCBA"):
                    registers = [(register & 0xFF) << 8 | register >> 8 for register in registers]
                if row["order"] in ("CDAB", "DCBA") and row["type"] != "TEXT":
                    registers.reverse()
                if row["block"] == "OrderTest":
                    self.assertEqual("always " + decoded(row["type"], registers), row["comment"].lstrip("'"), row)
                elif row["block"] == "MapFingerprint":
                    self.assertEqual((row["type"], unsigned(registers)), ("UDINT", fingerprint), row)
                else:
                    self.assertEqual((row["type"], row["unit"], row["invalid"], unsigned(registers)), ("REAL", "mm", "NaN", 0x7FC00000), row)

    def test_the_order_test_refuses_in_words(self):
        path = "/controls/ModbusTcp/commands/orderTest"
        with Host() as host, RestClient(host.http_port) as rest:
            answer = rest.post(path, {"address": 300, "shown": "1"})
            self.assertIn("There is no block of the type OrderTest. Add one first.", answer.json["detail"])
            rest.post("/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/add", {"blocks": [{"type": "OrderTest", "outputId": 300}]})
            for question, text in (({"address": 5, "shown": "1"}, "do not lie in the OrderTest block, which takes the registers 300 to 323."),
                                   ({"address": 300, "shown": "abc"}, '"abc" is no value of the type UINT.'),
                                   ({"address": 300, "type": "QUAD", "shown": "1"}, "There is no type QUAD."),
                                   ({"address": 300, "shown": 17}, "")):
                answer = rest.post(path, question)
                self.assertIn(answer.status, (400, 422), question)
                self.assertIn(text, answer.json["detail"])

    def test_a_block_with_an_order_of_its_own(self):
        arguments, steps = session(PAGE, "Byte order")
        self.assertEqual(len(steps), 4)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)

    def test_a_job_keeps_the_order_of_a_block(self):
        path = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0"
        block = {"type": "MeasurementReal", "dataSource": "profile/zMax", "outputId": 300, "order": "DCBA"}
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
            self.assertEqual(rest.post(path + "/commands/add", {"blocks": [block]}).status, 200)
            fingerprint = rest.get("/controls/ModbusTcp/plc").json["fingerprint"]
            self.assertEqual(plc.read(300, 2), [0x0000, 0xC07F])
            self.assertEqual(rest.post("/jobs/other/save").status, 204)
            self.assertEqual(rest.post(path + "/commands/update", {"outputId": 300, "newParams": {"order": "default"}}).status, 200)
            self.assertEqual(plc.read(300, 2), [0x7FC0, 0x0000])
            self.assertNotEqual(rest.get("/controls/ModbusTcp/plc").json["fingerprint"], fingerprint)

            self.assertEqual(rest.post("/jobs/other/load").status, 200)

            self.assertEqual(rest.get("/controls/ModbusTcp/plc").json["fingerprint"], fingerprint)
            wait_until(lambda: plc.read(300, 2) == [0x0000, 0xC07F], "the order of the job")

    def test_a_preview_foresees_another_order(self):
        path = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0"
        change = {"outputId": 170, "newParams": {"order": "CDAB"}}
        with Host() as host, RestClient(host.http_port) as rest:
            foreseen = rest.post(path + "/preview", {"command": "update", "arguments": change}).json
            self.assertEqual(foreseen["renamed"], [{"outputId": 170, "order": {"from": "ABCD", "to": "CDAB"}}])
            self.assertEqual([(run["address"], run["count"]) for run in foreseen["addresses"]], [(170, 3)])
            rest.post(path + "/commands/update", change)
            self.assertEqual(rest.get("/controls/ModbusTcp/plc").json["fingerprint"], foreseen["fingerprint"])

            change["newParams"]["order"] = "BCDA"
            refused = rest.post(path + "/preview", {"command": "update", "arguments": change}).json["refused"]
            answer = rest.post(path + "/commands/update", change)
            self.assertEqual((answer.status, answer.json), (refused["status"], refused))
            self.assertIn("There is no order BCDA. The orders are ABCD, CDAB, BADC, DCBA and default.", refused["detail"])

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
