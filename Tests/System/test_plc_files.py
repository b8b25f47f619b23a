"""The files for PLC programmers, each used: they show the values that the sensor has."""

import contextlib
import csv
import io
import json
import os
import pathlib
import queue
import re
import struct
import subprocess
import tempfile
import threading
import time
import unittest

from ascii_client import phase_of
from host import PATIENCE, Host, wait_until
from modbus import ModbusClient
from node import packages
from pages import expect, free_port, session, session_host
from rest import RestClient

PYTHON = "/usr/bin/python3"  # the distribution's own, which finds the distribution's pymodbus and jsonschema
ASSEMBLY = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0"
ORDERS = ("ABCD", "CDAB", "BADC", "DCBA")  # by the number of registerOrder
NUMBERS = {"INT": "h", "UINT": "H", "DINT": "i", "UDINT": "I", "LINT": "q", "ULINT": "Q", "REAL": "f", "LREAL": "d"}
HOSTILE = ["'; touch hacked; '", "$(touch hacked)", "`touch hacked`", "\"; touch hacked; \"", "a\ntouch hacked\n", "\"\"\"\nopen('hacked', 'w')\n",
           "=cmd|' /C touch hacked'!A0", "a\u2028require('fs').writeFileSync('hacked', '')", "\\", "größe/ширина 🙂"]

# Runs a flow in Node-RED without an editor. It prints a line for each message that a debug node gets, and presses the button
# of an inject node that a line of its input names.
NODE_RED = """
const RED = require("node-red"), path = require("path");
const [userDir, flowFile] = process.argv.slice(1);
RED.init(require("http").createServer(), {
    httpAdminRoot: false, httpNodeRoot: false, uiHost: "127.0.0.1", userDir, flowFile, credentialSecret: false,
    nodesDir: path.resolve("node_modules/node-red-contrib-modbus"),
    telemetry: {enabled: false, updateNotification: false},
    logging: {console: {level: "warn", metrics: false, audit: false}},
});
RED.hooks.add("onReceive.test", event => {
    const node = event.destination.node;
    if (node.type === "debug") {
        console.log("SEEN " + JSON.stringify({node: node.name, payload: event.msg.payload}));
    }
});
require("readline").createInterface({input: process.stdin}).on("line", name => RED.nodes.eachNode(node => {
    if (node.name === name) {
        RED.nodes.getNode(node.id).receive({});
    }
})).on("close", () => RED.stop().then(() => process.exit(0)));
RED.start();
"""


def as_sent(registers, order):
    """The registers with the bytes of each in this order."""
    return [register >> 8 | (register & 0xFF) << 8 for register in registers] if order in ("BADC", "DCBA") else registers


def read(plc, tag):
    """The registers of a tag, or its coil or input."""
    offset = int(tag["offset"])
    if tag["area"] == "registers":
        return plc.read(offset, int(tag["registers"]))
    return [plc.read_bit(offset, {"coils": 1, "discreteInputs": 2}[tag["area"]])]


def decode(registers, tag):
    """The value of a tag, by the line of the CSV file; None for an invalid one."""
    if tag["type"] == "BOOL":
        return registers[0]
    registers = as_sent(registers, tag["order"])
    if tag["type"] == "TEXT":
        return bytes(register & 0xFF for register in registers).split(b"\0")[0].decode()
    if tag["type"] == "BIT":
        return registers[0] >> int(tag["bit"]) & 1
    if tag["order"] in ("CDAB", "DCBA"):
        registers = registers[::-1]
    number, = struct.unpack(">" + NUMBERS[tag["type"]], struct.pack(f">{len(registers)}H", *registers))
    return None if str(number) == tag["invalid"] else round(number * float(tag["scale"]), 6)


def add(rest, *blocks):
    answer = rest.post(ASSEMBLY + "/commands/add", {"blocks": list(blocks)})
    if answer.status >= 300:
        raise AssertionError(answer.text)


def get(rest, name):
    answer = rest.get("/controls/ModbusTcp/plc?format=" + name)
    if answer.status != 200:
        raise AssertionError(answer.text)
    return answer


def tags_of(rest):
    return {line["name"]: line for line in csv.DictReader(io.StringIO(get(rest, "csv").body.decode(), newline=""))}


def values_of(rest, plc):
    """The value of each tag of the CSV file, read with Modbus."""
    return {name: decode(read(plc, tag), tag) for name, tag in tags_of(rest).items()}


def expected_of(rest, values):
    """What the tags have to show, once the scan has stopped: from the documents of REST and the known part."""
    scanner = rest.get("/scanners").json["_embedded"]["item"][0]
    expected = {"System_runState": 0, "System_jobName": "default", "System_jobNameLength": 7,
                "System_problems": len(rest.get("/problems").json["problems"]),
                "Scanner_encoder": scanner["info"]["currentEncoderValue"], "Scanner_alignState": 0,
                "Scanner_laserOn": int(scanner["info"]["laserEnabled"]),
                "StateBits_ready": 1, "StateBits_running": 0, "StateBits_error": 0, "StateBits_linked": 1,
                "StateBits_readyInput": 1, "StateBits_runningInput": 0, "StateBits_linkedInput": 1,
                "ControlInput_anyCoil": 0, "ControlInput_startCoil": 0}
    for output, value in phase_of(values["profile_stamp_counter"]).items():
        expected |= {f"profile_{output}_value": float(value), f"profile_{output}_decision": 1}
    return expected | {"profile_zMax_valueAlone": expected["profile_zMax_value"], "profile_zMax_decisionAlone": 1}


@contextlib.contextmanager
def measured(*arguments, order="ABCD"):
    """A host that has measured and has stopped, with a block of every type."""
    arguments += ("--param", f"ModbusTcp.registerOrder={ORDERS.index(order)}")
    with Host("--rate", 200, *arguments) as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
        source = {"dataSource": "profile/zMax"}
        add(rest, {"type": "MeasurementValue", "outputId": 200} | source, {"type": "Decision", "outputId": 210} | source,
            {"type": "StateBits", "outputId": 220})
        plc.write(0, as_sent([1, 1, 0], order))
        wait_until(lambda: values_of(rest, plc)["profile_stamp_counter"] > 90, "measurements of the whole part")
        plc.write(0, as_sent([2, 2, 0], order))
        wait_until(lambda: plc.read(66, 2) == as_sent([2, 2], order) and plc.read(72, 1) == [0], "the end of the scan")
        yield host, rest, plc


@contextlib.contextmanager
def queued(order):
    """A host with a ResultQueue at register 300 that holds some results, all of them."""
    with Host("--still", "--rate", 50, "--param", "ModbusTcp.queueDepth=10000") as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
        add(rest, {"type": "ResultQueue", "outputId": 300, "dataSource": "profile/stamp,profile/zMax", "order": order})
        plc.write(0, [1, 1, 0])
        wait_until(lambda: as_sent(plc.read(302, 1), order)[0] >= 10, "results")
        plc.write(0, [2, 2, 0])
        wait_until(lambda: plc.read(66, 2) == [2, 2] and plc.read(72, 1) == [0], "the end of the scan")
        yield host, rest, plc


def numbers_from(first, count):
    """The numbers of so many results of a queue."""
    return [(first - 1 + place) % 65535 + 1 for place in range(count)]


def with_order(rest, order):
    answer = rest.send("PATCH", "/controls/ModbusTcp", {"parameters": {"registerOrder": order}})
    if answer.status != 200:
        raise AssertionError(answer.text)


class NodeRed:
    """Node-RED with a flow. Iterating gives the messages of its debug nodes."""

    def __init__(self, flow):
        self.folder = tempfile.TemporaryDirectory()
        file = pathlib.Path(self.folder.name) / "flows.json"
        file.write_bytes(flow)
        self.process = subprocess.Popen(
            ["node", "-e", NODE_RED, self.folder.name, str(file)], cwd=packages("Tests/Node/node-red"), text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.seen = queue.Queue()
        self.other = []
        self.reader = threading.Thread(target=self.read)
        self.reader.start()

    def read(self):
        for line in self.process.stdout:
            self.seen.put(json.loads(line[5:])) if line.startswith("SEEN ") else self.other.append(line)
        self.seen.put(None)

    def next(self, wanted):
        """The payload of the first message for which `wanted(node, payload)` is true."""
        deadline = time.monotonic() + PATIENCE + 30
        while True:
            try:
                message = self.seen.get(timeout=max(0.0, deadline - time.monotonic()))
            except queue.Empty:
                message = None
            if message is None:
                raise AssertionError("no such message: " + "".join(self.other))
            if wanted(message["node"], message["payload"]):
                return message["payload"]

    def press(self, name):
        self.process.stdin.write(name + "\n")
        self.process.stdin.flush()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        try:
            self.process.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.reader.join()
        self.process.stdout.close()
        self.folder.cleanup()


class PlcFiles(unittest.TestCase):
    maxDiff = None

    def check(self, rest, plc):
        """Expects that each value is what the sensor has. The states that a PLC reads may be 100 ms old."""
        def differences():
            values = values_of(rest, plc)
            expected = expected_of(rest, values)
            return [(name, values[name], expected[name]) for name in expected if values[name] != expected[name]]
        with contextlib.suppress(AssertionError):
            wait_until(lambda: not differences())
        self.assertEqual(differences(), [])

    def run_python(self, code, *arguments, folder=None):
        done = subprocess.run([PYTHON, "-W", "ignore", "-", *map(str, arguments)], input=code, capture_output=True, text=True,
                              timeout=PATIENCE + 60, cwd=folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    @staticmethod
    def command_program(rest):
        """The Python module with a program in place of its own, which starts the scan."""
        module, _, _ = get(rest, "python").body.decode().partition('if __name__')
        return module + "client = ModbusTcpClient('127.0.0.1', port=int(sys.argv[1])); client.connect()\n" \
                        "command(client, 258, 1)\nwhile answer(client) != (258, 2): pass\nclient.close()\n"

    def test_the_csv_file_leads_to_each_value_in_each_order(self):
        with measured() as (_, rest, plc):
            for order, name in enumerate(ORDERS):
                with self.subTest(order=name):
                    with_order(rest, order)
                    wait_until(lambda: values_of(rest, plc)["profile_stamp_counter"] is not None)
                    tags = tags_of(rest)
                    self.assertEqual({tag["order"] for tag in tags.values()}, {name})
                    for tag in tags.values():
                        offset = int(tag["offset"])
                        first = {"registers": 400001, "coils": 1, "discreteInputs": 100001}[tag["area"]]
                        self.assertEqual((tag["number"], tag["table"]), (str(offset + 1), f"{first + offset:06}"))
                    values = values_of(rest, plc)
                    self.assertEqual(values["System_jobName"], "default")
                    if order == 0:
                        self.check(rest, plc)
                        before = values_of(rest, plc)
                    else:  # the change of the order has blanked the results
                        plain = [name for name in values if name.startswith(("System_job", "Scanner_al", "StateBits", "ControlO"))]
                        self.assertEqual([values[name] for name in plain], [before[name] for name in plain])
                        self.assertLess(values["System_upTime"], 1_000_000)

    def test_results_in_the_other_orders_of_the_service_are_decoded_too(self):
        for name in ORDERS[1:]:
            with self.subTest(name), measured(order=name) as (host, rest, plc):
                self.assertEqual({tag["order"] for tag in tags_of(rest).values()}, {name})
                self.assertEqual(get(rest, "json").json["order"], name)
                self.check(rest, plc)
                printed = self.run_python(get(rest, "python").body.decode(), "127.0.0.1", host.modbus_port)
                self.assertIn("\nSystem_jobName default\n", printed)
                value = values_of(rest, plc)["profile_zMax_value"]
                self.assertIn(f"\nprofile_zMax_value {value}\n", printed)
                self.run_python(self.command_program(rest), host.modbus_port)

    def test_the_json_file_is_valid_and_says_the_same_as_the_csv_file(self):
        with measured() as (_, rest, _):
            document, schema = get(rest, "json"), get(rest, "json-schema")
            self.assertEqual(document.type, "application/json")
            self.assertEqual(schema.type, "application/schema+json")
            check = "import json, sys, jsonschema\nvalidator = jsonschema.Draft202012Validator\n" \
                    "schema, *documents = json.load(sys.stdin)\nvalidator.check_schema(schema)\n" \
                    "print([validator(schema).is_valid(document) for document in documents])"
            wrong = document.json
            wrong["tags"][0]["offset"] = "0"
            done = subprocess.run([PYTHON, "-c", check], input=json.dumps([schema.json, document.json, wrong]), capture_output=True,
                                  text=True, timeout=PATIENCE, check=True)
            self.assertEqual(done.stdout.strip(), "[True, False]")
            of_csv = [(tag["name"], int(tag["offset"]), int(tag["registers"]), tag["type"]) for tag in tags_of(rest).values()]
            self.assertEqual([(tag["name"], tag["offset"], tag["count"], tag["type"]) for tag in document.json["tags"]], of_csv)
            self.assertEqual(document.json["fingerprint"], rest.get("/controls/ModbusTcp/plc").json["fingerprint"])

    def test_the_lines_of_mbpoll_run(self):
        with measured() as (host, rest, plc):
            done = subprocess.run(["sh", "-s", "127.0.0.1", str(host.modbus_port)], input=get(rest, "shell").body.decode(),
                                  capture_output=True, text=True, timeout=PATIENCE + 60)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            shown = {}
            for address, value in re.findall(r"^\[(\d+)\]:\s+(\S+)", done.stdout, re.MULTILINE):
                shown.setdefault(address, value)  # the coils come after the registers with their numbers
            compared = 0
            for name, tag in tags_of(rest).items():
                if tag["type"] in ("UINT", "DINT") and name not in ("System_upTime",):
                    number = decode(plc.read(int(tag["offset"]), int(tag["registers"])), tag | {"scale": "1", "invalid": ""})
                    self.assertEqual(int(shown[tag["offset"]]), number, name)
                    compared += 1
            self.assertGreater(compared, 15)

    def test_the_lines_of_mbpoll_show_coils_and_inputs(self):
        with measured() as (host, rest, plc):
            lines = dict(re.findall(r"^# (\w+): BOOL .*\n(mbpoll .*)$", get(rest, "shell").body.decode(), re.MULTILINE))
            tags = {name: tag for name, tag in tags_of(rest).items() if tag["type"] == "BOOL"}
            self.assertEqual(set(lines), set(tags))
            self.assertEqual({tag["area"] for tag in tags.values()}, {"coils", "discreteInputs"})
            script = f"host=127.0.0.1 port={host.modbus_port}\n" + "\n".join(lines.values()) + "\n"
            done = subprocess.run(["sh"], input=script, capture_output=True, text=True, timeout=PATIENCE + 60)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            shown = re.findall(r"^\[(\d+)\]:\s+(\d)$", done.stdout, re.MULTILINE)
            self.assertEqual(shown, [(tags[name]["offset"], str(read(plc, tags[name])[0])) for name in lines])
            self.assertIn("1", [value for _, value in shown])

    def test_the_python_module_reads_the_values_and_starts_the_scan(self):
        with measured() as (host, rest, plc):
            module = get(rest, "python").body.decode()
            printed = self.run_python(module, "127.0.0.1", host.modbus_port)
            values = values_of(rest, plc)
            shown = dict(line.split(" ", 1) for line in printed.splitlines() if " " in line)
            expected = expected_of(rest, values)
            self.assertEqual({name: float(shown[name]) for name in expected if name.startswith("profile")},
                             {name: value for name, value in expected.items() if name.startswith("profile")})
            self.assertEqual(shown["System_jobName"], "default")
            with tempfile.TemporaryDirectory() as folder:
                (pathlib.Path(folder) / "tags.py").write_text(module, encoding="utf-8")
                program = "import sys; sys.path.insert(0, '.'); import tags\n" \
                          "client = tags.ModbusTcpClient('127.0.0.1', port=int(sys.argv[1])); client.connect()\n" \
                          "tags.command(client, 7, 1)\n" \
                          "while tags.answer(client) != (7, 2): pass\n" \
                          "while tags.read(client).System_runState != 1: pass\n" \
                          "try: tags.ask(client, 'registers', 9999, 2)\n" \
                          "except tags.Refused: print('refused')\n" \
                          "values = tags.read(client); print(values.System_runState, values.StateBits_running)\n" \
                          "print(values.StateBits_runningInput, values.ControlInput_stopCoil)\n" \
                          "for name in ('ControlInput_anyCoil', 'System_runState', 'System_upTime', 'nothing'):\n" \
                          "    try: tags.write(client, name, 1)\n" \
                          "    except tags.Refused: print('no', name)\n" \
                          "tags.write(client, 'ControlInput_stopCoil', True)\n" \
                          "while tags.read(client).StateBits_runningInput: pass\n" \
                          "print(tags.read(client).System_runState); client.close()"
                self.assertEqual(self.run_python(program, host.modbus_port, folder=folder),
                                 "refused\n1 True\nTrue False\nno ControlInput_anyCoil\nno System_runState\nno System_upTime\n"
                                 "no nothing\n0\n")

    def test_the_python_module_takes_each_result_of_a_queue(self):
        program = "client = ModbusTcpClient('127.0.0.1', port=int(sys.argv[1])); client.connect()\n" \
                  "values = read(client)\n" \
                  "while values.ResultQueue_number:\n" \
                  "    print(values.ResultQueue_number, values.profile_zMax_queued)\n" \
                  "    write(client, 'ResultQueue_acknowledged', values.ResultQueue_number)\n" \
                  "    values = read(client)\n" \
                  "client.close()\n"
        for order in ORDERS:
            with self.subTest(order), queued(order) as (host, rest, plc):
                waiting = as_sent(plc.read(302, 1), order)[0]
                module, _, _ = get(rest, "python").body.decode().partition("if __name__")
                printed = self.run_python(module + program, host.modbus_port).split("\n")[:-1]
                self.assertEqual(printed, [f"{number} 25.0" for number in numbers_from(int(printed[0].split()[0]), len(printed))])
                self.assertGreaterEqual(len(printed), waiting)

    def test_the_json_file_leads_to_each_result_of_a_queue(self):
        for order in ORDERS:
            with self.subTest(order), queued(order) as (_, rest, plc):
                tags = {tag["name"]: tag for tag in get(rest, "json").json["tags"]}
                roles = {tag["role"]: tag["name"] for tag in tags.values()}
                lines = tags_of(rest)

                def value(name):
                    return decode(read(plc, lines[name]), lines[name])

                numbers, waiting = [], value("ResultQueue_waiting")
                while number := int(value(roles["queueNumber"])):
                    self.assertEqual(value(roles["queueLostBefore"]), 0)
                    numbers.append(number)
                    acknowledge = tags[roles["queueAcknowledge"]]
                    self.assertTrue(acknowledge["writable"])
                    plc.write_one(acknowledge["offset"], as_sent([number], acknowledge["order"])[0])
                self.assertEqual(numbers, numbers_from(numbers[0], len(numbers)))
                self.assertGreaterEqual(len(numbers), waiting)

    def test_the_python_module_marks_missing_values(self):
        with Host() as host, RestClient(host.http_port) as rest:
            printed = self.run_python(get(rest, "python").body.decode(), "127.0.0.1", host.modbus_port)
            self.assertIn("profile_zMax_value None\n", printed)

    def test_a_flow_of_node_red_shows_the_values_and_starts_the_scan(self):
        port = free_port()
        with Host("--enable", "ModbusTcp", "--param", f"ModbusTcp.port={port}", "--rate", 200, modbus=False) as host, \
                RestClient(host.http_port) as rest:
            add(rest, *({"type": "Decision", "dataSource": source} for source in HOSTILE))
            flow = get(rest, "node-red")
            self.assertEqual(flow.type, "application/json")
            with NodeRed(flow.body) as red:
                values = red.next(lambda node, payload: node == "show")
                self.assertEqual((values["System_runState"], values["System_jobName"]), (0, "default"))
                self.assertIsNone(values["profile_zMax_value"])
                self.assertEqual(set(values), set(tags_of(rest)))
                red.press("start the scan")
                red.next(lambda node, payload: node == "written")
                wait_until(lambda: rest.get("/scanners").json["_embedded"]["item"][0]["info"]["laserEnabled"], "the scan")
                values = red.next(lambda node, payload: node == "show" and payload["profile_zMax_value"] is not None)
                self.assertEqual((values["System_runState"], values["ControlOutput_status"]), (1, 2))
                self.assertEqual(values["profile_width_value"], float(phase_of(values["profile_stamp_counter"])["width"]))
                self.assertNotEqual(values["ControlOutput_requestId"], 0)
                self.assertIs(values["ControlInput_startCoil"], False)
                red.press("write the coil")
                red.next(lambda node, payload: node == "written")
                red.next(lambda node, payload: node == "show" and payload["ControlOutput_requestId"] == 0)
                self.assertFalse(os.path.exists(os.path.join(red.folder.name, "hacked")))
        self.assertFalse((packages("Tests/Node/node-red") / "hacked").exists())

    def test_hostile_names_of_sources_run_nothing(self):
        with Host() as host, RestClient(host.http_port) as rest, tempfile.TemporaryDirectory() as folder:
            add(rest, *({"type": "Measurement", "dataSource": source, "displayName": source} for source in HOSTILE))
            done = subprocess.run(["sh", "-s", "127.0.0.1", str(host.modbus_port)], input=get(rest, "shell").body.decode(), cwd=folder,
                                  capture_output=True, text=True, timeout=PATIENCE + 60)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            module = get(rest, "python").body.decode()
            printed = self.run_python(module + "\nimport json; print('SOURCES', json.dumps(list(SOURCES.values())))",
                                      "127.0.0.1", host.modbus_port, folder=folder)
            sources = json.loads(printed.split("SOURCES ")[1])
            self.assertEqual(set(HOSTILE) - set(sources), set())
            self.assertEqual(set(HOSTILE) - {tag["source"] for tag in get(rest, "json").json["tags"]}, set())
            lines = list(csv.reader(io.StringIO(get(rest, "csv").body.decode(), newline="")))
            self.assertEqual({len(line) for line in lines}, {17})
            self.assertEqual([cell for line in lines[1:] for cell in line[12:] if cell[:1] in ("=", "+", "-", "@")], [])
            self.assertEqual(os.listdir(folder), [])

    def test_names_stay_when_other_blocks_come_go_and_move(self):
        with Host() as host, RestClient(host.http_port) as rest:
            place = lambda tags: {name: (tag["source"], tag["block"], tag["type"]) for name, tag in tags.items()}
            before = place(tags_of(rest))
            add(rest, {"type": "Decision", "dataSource": "profile/zMax", "outputId": 300},
                {"type": "Measurement", "dataSource": "Größe", "outputId": 310}, {"type": "StateBits", "outputId": 320})
            after = place(tags_of(rest))
            self.assertEqual(before.items() - after.items(), set())
            self.assertEqual(len(after), len(before) + 29)
            self.assertEqual(rest.post(ASSEMBLY + "/commands/remove", {"outputIdList": [{"outputId": 170}]}).status // 100, 2)
            self.assertEqual(rest.post(ASSEMBLY + "/commands/compact", {"startingOutputId": 0}).status // 100, 2)
            moved = place(tags_of(rest))
            self.assertEqual(after.items() - moved.items(),
                             {(name, after[name]) for name in ("profile_zMax_value", "profile_zMax_decision")})
            self.assertNotEqual(get(rest, "csv").headers["ETag"], "")

    def test_ten_thousand_registers(self):
        with Host() as host, RestClient(host.http_port) as rest:
            add(rest, *({"type": "Decision", "dataSource": f"tool{i}/ok", "outputId": i} for i in range(185, 10_000)))
            begin = time.monotonic()
            files = {name: get(rest, name).body for name in ("csv", "json", "node-red", "python", "shell")}
            self.assertLess(time.monotonic() - begin, PATIENCE)
            for name, body in files.items():
                self.assertLess(len(body), 16_000_000, name)
            self.assertEqual(len(json.loads(files["json"])["tags"]), 9_815 + 30 + 7)  # with the coils
            printed = self.run_python(files["python"].decode(), "127.0.0.1", host.modbus_port)
            self.assertEqual(len(printed.splitlines()), 9_815 + 30 + 7)  # with the coils

    def test_what_is_no_format_is_refused_with_the_list(self):
        with Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0") as host, RestClient(host.http_port) as rest:
            refused = rest.get("/controls/ModbusTcp/plc?format=xml")
            self.assertEqual(refused.status, 406)
            for name in ("csv", "json", "json-schema", "node-red", "python", "shell"):
                self.assertRegex(refused.json["detail"], rf"\b{name}\b")
            without = rest.get("/controls/AsciiTcp/plc?format=csv")
            self.assertEqual((without.status, without.json["detail"]), (404, "The service AsciiTcp has no registers."))
            self.assertEqual(rest.get("/controls/Nothing/plc?format=csv").status, 404)
            head = rest.send("HEAD", "/controls/ModbusTcp/plc?format=csv")
            self.assertEqual((head.status, head.body), (200, b""))
            self.assertEqual(rest.get("/controls/ModbusTcp/plc?format=csv", If_None_Match=head.headers["ETag"]).status, 304)
            self.assertEqual(rest.get("/controls/ModbusTcp/plc").type, "application/hal+json")

    def test_the_page_leads_to_a_checked_value(self):
        arguments, steps = session("docs/registers.md", "Files for the PLC program")
        self.assertGreater(len(steps), 5)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            for command, shown in steps:
                expect(as_here(command).replace("python3", PYTHON + " -W ignore"), shown)


if __name__ == "__main__":
    unittest.main()
