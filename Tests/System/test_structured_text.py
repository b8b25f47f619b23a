"""The Structured Text that the host makes: compiled, run on the registers of the host, and compared value by value."""

import contextlib
import math
import random
import re
import struct
import unittest
import urllib.parse

from ascii_client import AsciiClient
from host import BIN, Host, wait_until
from modbus import ModbusClient, ModbusException, unsigned
from pages import expect, section, session, session_host
from rest import RestClient
from structured_text import Refused
from structured_text.plc import Plc, as_shown, decode, encode, in_order, is_scaled

MODBUS = "/controls/ModbusTcp"
PAGE = "docs/registers.md"
DESCRIBED = "/controls/Described"
ORDERS = ("ABCD", "CDAB", "BADC", "DCBA")
START, STOP, LOAD = 1, 2, 5
JOB = "Gr\u00f6\u00dfe 'A'"
DOES_NOT_FIT = "The map of the device does not fit this program"
HAS_CHANGED = "The map of the device has changed: generate this file again"
NOT_READ = "No fingerprint: the registers have not been read"

REALS = (0.0, -0.0, 1.0, -2.5, 25.0, 0.3333333432674408, 3.4028234663852886e38, -3.4028234663852886e38, 1.1754943508222875e-38,
         1.1754942106924411e-38, 1.401298464324817e-45, -4.203895392974451e-45, math.nan, math.inf, -math.inf)
LREALS = (*REALS, 1 / 3, 1.7976931348623157e308, -2.2250738585072014e-308, 2.225073858507201e-308, 5e-324, -1.5e-323)
TEXTS = (b"", b"a", b"job 1", b"'$\"(**)", b"Gr\xc3\xb6\xc3\x9f", bytes((1, 9, 10, 13, 127, 128)), bytes((255, 254, 64, 32)), b"123456")


def generated(rest, service=MODBUS):
    answer = rest.get(service + "/plc?format=structured-text")
    if answer.status != 200:
        raise AssertionError(answer.text)
    return answer.text


def tags_of(rest, service=MODBUS):
    return [tag for tag in rest.get(service + "/plc?format=json").json["tags"] if tag["area"] == "registers"]


def place(rest, blocks, service=MODBUS):
    assembly, = rest.get(service + "/plc").json["layouts"]
    answer = rest.post(f"{service}/registerAssemblies/{assembly['id']}/commands/add", {"blocks": blocks})
    if answer.status != 200:
        raise AssertionError(answer.text)


def draw(tag, dice):
    """A value of the tag: an edge of its type, its mark, or any other."""
    kind = tag["type"]
    if kind == "BIT":
        return dice.random() < 0.5
    if kind == "TEXT":
        return dice.choice(TEXTS)[:tag["count"] * tag["charactersPerRegister"]]
    if kind == "RAW":
        return [dice.getrandbits(16) for _ in range(tag["count"])]
    if kind == "REAL":
        return dice.choice((*REALS, struct.unpack("f", dice.randbytes(4))[0]))
    if kind == "LREAL":
        return dice.choice((*LREALS, struct.unpack("d", dice.randbytes(8))[0]))
    bits = {"USINT": 8, "INT": 16, "UINT": 16, "DINT": 32, "UDINT": 32, "LINT": 64, "ULINT": 64}[kind]
    first = 0 if kind.startswith("U") else -(1 << (bits - 1))
    last = first + (1 << bits) - 1
    edges = [first, last, first + 1, last - 1, 0, 1, 0x12 if bits == 8 else 0x1234]
    return dice.choice([*edges, dice.randint(first, last), *([int(tag["invalid"])] if tag["invalid"] else [])])


def single(value):
    """The nearest REAL."""
    return struct.unpack("f", struct.pack("f", value))[0]


def writes(modbus, command):
    """False while an operation of the protocol runs."""
    try:
        modbus.write(0, command)
        return True
    except ModbusException:
        return False


def measured(client, name):
    """(value, decision) that the line protocol shows; None before the first."""
    _, _, value, decision = client.ask(f"GET {name}").split()
    return None if value == "none" else (float(value), int(decision))


class Values(unittest.TestCase):
    def check_tag(self, plc, tag, expected):
        shown = plc.value(tag)
        self.assertEqual(shown, expected, tag)
        if isinstance(expected, float):
            self.assertEqual(math.copysign(1, shown), math.copysign(1, expected), tag)
        if is_scaled(tag) and expected is not None:
            self.assertEqual(plc.get(f"map.{tag['name']}.value"), single(single(expected) / tag["divisor"]), tag)

    def test_every_type_in_every_order(self):
        """The test makes up the registers: each type plain, with a mark, with a scale and with both."""
        dice = random.Random(1)
        with Host("--plugins", BIN / "tests/described", "--enable", "Described", modbus=False) as host, RestClient(host.http_port) as rest:
            place(rest, [{"type": f"All_{order}", "outputId": 1000 + 200 * i} for i, order in enumerate(ORDERS)], DESCRIBED)
            plc, tags = Plc(generated(rest, DESCRIBED), "Described"), tags_of(rest, DESCRIBED)
            fingerprint = rest.get(DESCRIBED + "/plc").json["fingerprint"]
        self.assertEqual({tag["order"] for tag in tags}, set(ORDERS))
        self.assertEqual({tag["type"] for tag in tags},
                         {"USINT", "INT", "UINT", "DINT", "UDINT", "LINT", "ULINT", "REAL", "LREAL", "BIT", "TEXT", "RAW"})
        for _ in range(30):
            registers, values = {}, {}
            for tag in tags:
                value = fingerprint if tag["role"] == "fingerprint" else draw(tag, dice)
                values[tag["name"]] = value
                registers |= enumerate(encode(tag, value), tag["offset"])
            plc.show(registers)
            self.assertEqual((plc.get("decode.fits"), plc.get("decode.problem")), (True, ""))
            for tag in tags:
                decoded = decode(tag, registers)
                if decoded is not None:
                    self.assertEqual(decoded, values[tag["name"]].split(b"\0")[0] if tag["type"] == "TEXT" else values[tag["name"]])
                self.check_tag(plc, tag, as_shown(decoded))

    def test_the_map_shows_what_the_host_measures(self):
        with Host("--still", "--start", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0") as host, \
                RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            plc, tags = Plc(generated(rest), "ModbusTcp"), tags_of(rest)
            with AsciiClient(host.ports["AsciiTcp"]) as client:
                answers = {name: wait_until(lambda: measured(client, name), name) for name in ("zMax", "zMin", "width", "meanZ", "points")}
            wait_until(lambda: modbus.read(172, 1) == [1], "a measurement")
            registers = plc.read(modbus)
            plc.show(registers)
            for tag in tags:
                self.check_tag(plc, tag, as_shown(decode(tag, registers)))
            self.assertTrue(plc.get("decode.fits"))
            for name, (value, decision) in answers.items():
                self.assertEqual(plc.get(f"map.profile_{name}_value.value"), single(value))
                self.assertEqual(plc.get(f"map.profile_{name}_decision.value"), decision)
            scanner = rest.get("/scanners").json["_embedded"]["item"][0]
            self.assertEqual(plc.get("map.Scanner_laserOn"), scanner["info"]["laserEnabled"])
            self.assertEqual(plc.get("map.System_jobName"), "default")
            self.assertEqual(plc.get("map.System_runState"), 1)

    def test_a_value_that_is_missing_is_not_valid(self):
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            plc = Plc(generated(rest), "ModbusTcp")
            plc.show(plc.read(modbus))
            self.assertFalse(plc.get("map.profile_zMax_value.valid"))
            self.assertEqual(plc.get("map.profile_zMax_value.number"), -(1 << 31))
            self.assertEqual(plc.get("map.profile_zMax_value.value"), 0.0)

    def test_each_order_of_the_service(self):
        images = []
        for order, name in enumerate(ORDERS):
            with self.subTest(name), Host("--still", "--start", "--param", f"ModbusTcp.registerOrder={order}") as host, \
                    RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
                plc = Plc(generated(rest), "ModbusTcp")
                wait_until(lambda: modbus.read(172, 1) in ([1], [0x0100]), "a measurement")
                images.append(in_order(modbus.read(170, 2), name))
                plc.show(plc.read(modbus))
                self.assertEqual((plc.get("map.profile_zMax_value.value"), plc.get("map.System_jobName")), (25.0, "default"))
        self.assertEqual(images, 4 * [[0, 25000]])

    def test_blocks_with_orders_of_their_own(self):
        with Host("--still", "--start") as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            for place_of_order, order in enumerate(ORDERS):
                for number, kind in enumerate(("Measurement", "MeasurementReal", "Stamp")):
                    source = "profile/stamp" if kind == "Stamp" else "profile/zMax"
                    place(rest, [{"type": kind, "outputId": 1000 + 100 * place_of_order + 20 * number, "dataSource": source, "order": order}])
            plc, tags = Plc(generated(rest), "ModbusTcp"), tags_of(rest)
            wait_until(lambda: modbus.read(1302, 1) == [0x0100], "a measurement")
            registers = plc.read(modbus)
            plc.show(registers)
            for tag in tags:
                self.check_tag(plc, tag, as_shown(decode(tag, registers)))
            reals = [tag for tag in tags if tag["type"] == "REAL"]
            self.assertEqual([tag["order"] for tag in reals], list(ORDERS))
            self.assertEqual([plc.value(tag) for tag in reals], 4 * [25.0])
            scaled = [tag for tag in tags if tag["source"] == "profile/zMax" and tag["type"] == "DINT"]
            self.assertEqual([plc.value(tag) for tag in scaled], 5 * [25000])

    def test_a_map_of_many_blocks(self):
        count = 1000
        with Host("--still", "--start") as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            place(rest, [{"type": "Measurement", "outputId": 1000 + 3 * i, "dataSource": "profile/zMax"} for i in range(count)])
            plc, tags = Plc(generated(rest), "ModbusTcp"), tags_of(rest)
            self.assertGreater(len(tags), 2 * count)
            wait_until(lambda: modbus.read(1002 + 3 * (count - 1), 1) == [1], "a measurement")
            registers = plc.read(modbus)
            plc.show(registers)
            for tag in tags:
                self.check_tag(plc, tag, as_shown(decode(tag, registers)))

    def test_hostile_names_of_sources(self):
        sources = ["x*) END_VAR (*", "(*", "*)", "{pragma}", "'$", "a//b", "H\u00f6he \u20ac", "a\r\nEND_PROGRAM", "END_IF", "array", "1", "_",
                   "a__b", "a" * 200, "A" * 200, "a_b", "A_B", "a/b", "\u202e", "\x00\x07", "{prefix}%s", "int_to", "ModbusTcp", "value"]
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            placed = 0
            for number, source in enumerate(sources):
                block = {"type": "Measurement", "outputId": 1000 + 3 * number, "dataSource": source}
                assembly = rest.get(MODBUS + "/plc").json["layouts"][0]["id"]
                answer = rest.post(f"{MODBUS}/registerAssemblies/{assembly}/commands/add", {"blocks": [block]})
                placed += answer.status == 200
            self.assertGreater(placed, 15)
            plc, tags = Plc(generated(rest), "ModbusTcp"), tags_of(rest)
            registers = plc.read(modbus)
            plc.show(registers)
            for tag in tags:
                self.check_tag(plc, tag, as_shown(decode(tag, registers)))


class Fingerprint(unittest.TestCase):
    def test_a_changed_map_stops_the_program_with_a_sentence(self):
        with Host("--plugins", BIN / "tests/described", "--enable", "Described", modbus=False) as host, RestClient(host.http_port) as rest:
            place(rest, [{"type": "All_CDAB", "outputId": 0}], DESCRIBED)
            old = Plc(generated(rest, DESCRIBED), "Described")
            tags = {tag["name"]: tag for tag in tags_of(rest, DESCRIBED)}
            before = rest.get(DESCRIBED + "/plc").json["fingerprint"]
            place(rest, [{"type": "All_CDAB", "outputId": 100}], DESCRIBED)
            after = rest.get(DESCRIBED + "/plc").json["fingerprint"]
        self.assertNotEqual(before, after)

        def image(fingerprint):
            shown = dict(enumerate(encode(tags["All_CDAB_fingerprint"], fingerprint), tags["All_CDAB_fingerprint"]["offset"]))
            return shown | dict(enumerate(encode(tags["All_CDAB_real"], 2.5), tags["All_CDAB_real"]["offset"]))

        self.assertEqual((old.get("decode.fits"), old.get("map.All_CDAB_real.valid")), (False, False))
        for fingerprint, fits, problem in ((0, False, NOT_READ), (before, True, ""), (after, False, HAS_CHANGED), (before, True, "")):
            old.show(image(fingerprint))
            self.assertEqual((old.get("decode.fits"), old.get("decode.problem")), (fits, problem))
            self.assertEqual(old.get("map.All_CDAB_real"), {"VALUE": 2.5 * fits, "VALID": fits})

    def test_a_map_without_it_says_that_nothing_is_checked(self):
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            plc = Plc(generated(rest), "ModbusTcp")
            plc.show(plc.read(modbus))
        self.assertEqual((plc.get("decode.fits"), plc.get("decode.problem")),
                         (True, "Not checked: the map of the device has no block MapFingerprint"))


class Commands(unittest.TestCase):
    """The function block of commands in the cycles of a PLC, against the real host."""

    def run_host(self, *arguments):
        self.host = self.enterContext(Host(*arguments))
        self.rest = self.enterContext(RestClient(self.host.http_port))
        self.modbus = self.enterContext(ModbusClient(self.host.modbus_port))
        self.plc = Plc(generated(self.rest), "ModbusTcp")

    def cycle(self, seconds=0.01):
        """Reads, calls the program and writes, as the programmer's own blocks for Modbus do."""
        plc = self.plc
        plc.show(plc.read(self.modbus), seconds)
        if not plc.get("run.write"):
            plc.set("isWritten", False)
            plc.set("isRefused", False)
        elif not plc.get("isWritten") and not plc.get("isRefused"):
            try:
                self.modbus.write(plc.words[0], plc.get("words"))
                plc.set("isWritten", True)
            except ModbusException:
                plc.set("isRefused", True)

    def state(self):
        return tuple(self.plc.get(f"run.{name}") for name in ("busy", "done", "error"))

    def run_command(self, command, text=""):
        """The outputs at the end; then a cycle with execute FALSE, after which the block is idle."""
        self.assertEqual(self.state(), (False, False, False))
        self.plc.set("command", command)
        self.plc.set("text", text)
        self.plc.set("execute", True)
        self.cycle()
        self.assertEqual(self.state(), (True, False, False))

        def ended():
            self.cycle()
            return not self.plc.get("run.busy")

        wait_until(ended, "the end of the command")
        found = self.state()[1:], self.plc.get("run.problem")
        self.assertFalse(self.plc.get("run.write"))
        self.cycle()
        self.assertEqual(self.state()[1:], found[0])  # until execute is FALSE
        self.plc.set("execute", False)
        self.cycle()
        self.assertEqual(self.state(), (False, False, False))
        return found

    DONE = (True, False), ""
    FAILED = (False, True), "The device could not carry out the command"

    def test_commands_are_done_and_fail(self):
        self.run_host()
        self.assertEqual(self.rest.post(f"/jobs/{urllib.parse.quote(JOB)}/save").status // 100, 2)
        self.assertEqual(self.run_command(START), self.DONE)
        wait_until(lambda: self.plc.read(self.modbus)[72] == 1, "the scan")
        self.assertEqual(self.plc.get("run.requestId"), 1000)
        self.assertEqual(self.run_command(STOP), self.DONE)
        self.assertEqual(self.run_command(START), self.DONE)  # again: it has another request id
        self.assertEqual(self.run_command(STOP), self.DONE)
        self.assertEqual(self.plc.get("run.requestId"), 1003)
        self.assertEqual(self.run_command(LOAD, "no such job"), self.FAILED)
        self.assertEqual(self.run_command(99), self.FAILED)
        self.assertEqual(self.run_command(LOAD, JOB.encode().decode("latin-1")), self.DONE)
        wait_until(self.shows_the_job, "the name of the job")  # states are up to 100 ms old

    def shows_the_job(self):
        self.cycle()
        return self.plc.get("map.System_jobName").encode("latin-1").decode() == JOB

    def test_a_plc_that_starts_anew_repeats_no_request_id(self):
        self.run_host()
        self.assertEqual(self.run_command(START), self.DONE)
        self.assertEqual(self.run_command(STOP), self.DONE)
        self.plc = Plc(generated(self.rest), "ModbusTcp")
        self.plc.set("firstId", 1001)
        self.assertEqual(self.run_command(STOP), self.DONE)
        self.assertEqual(self.plc.get("run.requestId"), 1002)  # 1001 would be the command of before
        self.plc.set("lastId", 1002)
        self.assertEqual(self.run_command(START), self.DONE)
        self.assertEqual(self.plc.get("run.requestId"), 1001)  # from the start of the range
        self.plc.set("firstId", 1002)
        self.assertEqual(self.run_command_that_does_not_begin(), "Two request ids at least are needed")

    def run_command_that_does_not_begin(self):
        self.plc.set("execute", True)
        self.cycle()
        self.assertEqual(self.state(), (False, False, True))
        problem = self.plc.get("run.problem")
        self.plc.set("execute", False)
        self.cycle()
        return problem

    def test_a_write_that_the_host_refuses(self):
        self.run_host("--param", "ModbusTcp.readOnly=true")
        self.assertEqual(self.run_command(START), ((False, True), "The device has refused the write"))

    def test_no_answer_in_time(self):
        self.run_host()
        self.plc.set("execute", True)
        self.plc.set("command", START)
        for seconds in (0.01, 0.01, 9.9):
            self.plc.cycle(seconds)  # the registers stay as they are
            self.assertEqual(self.state(), (True, False, False))
        self.plc.cycle(0.2)
        self.assertEqual(self.state(), (False, False, True))
        self.assertEqual(self.plc.get("run.problem"), "The device has not answered in time")
        self.assertFalse(self.plc.get("run.write"))

    def test_the_answer_to_another_master_is_none(self):
        self.run_host()
        self.plc.set("command", STOP)
        self.plc.set("execute", True)
        while not self.plc.get("isWritten"):
            self.cycle()
        with ModbusClient(self.host.modbus_port) as other:
            wait_until(lambda: writes(other, [2000, STOP]), "the end of the operation")
        for _ in range(3):
            self.cycle()
            self.assertEqual(self.state(), (True, False, False))

    def test_the_write_of_the_last_command_ends_before_the_next_begins(self):
        self.run_host()
        self.plc.set("isWritten", True)
        self.plc.set("execute", True)
        for _ in range(3):
            self.plc.cycle()
            self.assertEqual((self.state(), self.plc.get("run.write")), ((True, False, False), False))
        self.plc.set("isWritten", False)
        self.plc.cycle()
        self.assertTrue(self.plc.get("run.write"))

    def test_a_command_in_each_order(self):
        self.run_host()
        assembly = self.rest.get(MODBUS + "/plc").json["layouts"][0]["id"]
        for order in ORDERS:
            with self.subTest(order):
                for address in (0, 66):
                    answer = self.rest.post(f"{MODBUS}/registerAssemblies/{assembly}/commands/update",
                                            {"outputId": address, "newParams": {"order": order}})
                    self.assertEqual(answer.status, 200, answer.text)
                self.plc = Plc(generated(self.rest), "ModbusTcp")
                self.assertEqual(self.run_command(START), self.DONE)
                self.assertEqual(self.run_command(STOP), self.DONE)
                self.assertEqual(self.run_command(LOAD, "no such job"), self.FAILED)
                self.host.wait_for_log("There is no job 'no such job'")

    def test_every_order_and_a_map_that_does_not_fit(self):
        with Host("--plugins", BIN / "tests/described", "--enable", "Described", modbus=False) as host, RestClient(host.http_port) as rest:
            for order in ORDERS:
                with self.subTest(order):
                    assembly, = rest.get(DESCRIBED + "/plc").json["layouts"]
                    rest.post(f"{DESCRIBED}/registerAssemblies/{assembly['id']}/commands/remove", {"outputIdList": [{"outputId": 500}]})
                    place(rest, [{"type": f"All_{order}", "outputId": 500}], DESCRIBED)
                    self.check_order(order, Plc(generated(rest, DESCRIBED), "Described"), rest)

    def check_order(self, order, plc, rest):
        tags = {tag["role"]: tag for tag in tags_of(rest, DESCRIBED)}
        number = rest.get(DESCRIBED + "/plc").json["fingerprint"]

        def image(fingerprint, **values):
            shown = dict(enumerate(encode(tags["fingerprint"], fingerprint), tags["fingerprint"]["offset"]))
            for role, value in values.items():
                shown |= enumerate(encode(tags[role], value), tags[role]["offset"])
            return shown

        plc.set("command", 5)
        plc.set("text", "ab\xc3")
        plc.set("execute", True)
        plc.show(image(number))
        plc.show(image(number))
        self.assertTrue(plc.get("run.write"))
        bytes_order = {"CDAB": "ABCD", "DCBA": "BADC"}.get(order, order)
        self.assertEqual(in_order(plc.get("words"), bytes_order), [1000, 5, ord("a"), ord("b"), 0xC3, 0, 0, 0])
        plc.set("isWritten", True)
        plc.show(image(number))
        plc.show(image(number, answerRequestId=1000, answerStatus=1))
        self.assertEqual([plc.get(f"run.{name}") for name in ("busy", "done", "error")], [True, False, False])
        plc.show(image(number, answerRequestId=1000, answerStatus=2))
        self.assertEqual([plc.get(f"run.{name}") for name in ("busy", "done", "error")], [False, True, False])
        plc.set("execute", False)
        plc.show(image(number))
        plc.set("execute", True)
        plc.show(image(number))
        plc.show(image(number + 1 if number < 0xFFFFFFFF else 1))
        self.assertEqual((plc.get("run.error"), plc.get("run.problem")), (True, DOES_NOT_FIT))
        plc.set("execute", False)
        plc.cycle()
        plc.set("execute", True)
        plc.cycle()
        self.assertEqual((plc.get("run.error"), plc.get("run.problem")), (True, DOES_NOT_FIT))


PROGRAM_WITH_QUEUE = """
PROGRAM Main
VAR
  registers : {0}_Registers;
  map : {0}_Map;
  decode : {0}_Decode;
  take : {0}_Queue;
  takes : BOOL := TRUE;
  isWritten, isRefused : BOOL;
END_VAR
decode(registers := registers, map := map);
take(takes := takes, CALL);
END_PROGRAM
"""
QUEUE = 300


@contextlib.contextmanager
def queue_plc(depth=10000, order="default"):
    """A host with a queue, and a PLC with the call that the comment in the generated file shows."""
    with Host("--still", "--rate", 50, "--param", f"ModbusTcp.queueDepth={depth}") as host, RestClient(host.http_port) as rest, \
            ModbusClient(host.modbus_port) as modbus:
        place(rest, [{"type": "MapFingerprint", "outputId": 290},
                     {"type": "ResultQueue", "outputId": QUEUE, "dataSource": "profile/stamp,profile/zMax", "order": order}])
        source = generated(rest)
        call, = re.findall(r"The queue at register 300: take\((.*?)\);", source, re.DOTALL)
        yield rest, modbus, Plc(source, "ModbusTcp", PROGRAM_WITH_QUEUE.replace("CALL", call))


def scan_until(modbus, is_enough):
    """Scans until `is_enough`, which takes the registers of the queue, and waits for the end of the scan."""
    wait_until(lambda: writes(modbus, [1000, START]), "the start")
    wait_until(lambda: is_enough(modbus.read(QUEUE, 48)), "results")
    wait_until(lambda: writes(modbus, [1001, STOP]), "the stop")
    wait_until(lambda: modbus.read(66, 2) == [1001, 2] and modbus.read(72, 1) == [0], "the end of the scan")


def step(plc, modbus):
    """A cycle of the PLC, with the write that it wants. The number of a new result, else None."""
    plc.show(plc.read(modbus))
    number = plc.get("map.ResultQueue_number") if plc.get("take.isNew") else None
    wants = plc.get("take.write")
    if wants and not plc.get("isWritten") and not plc.get("isRefused"):
        try:
            modbus.write_one(QUEUE, plc.get("take.number"))
            plc.set("isWritten", True)
        except ModbusException:
            plc.set("isRefused", True)
    elif not wants:
        plc.set("isWritten", False)
        plc.set("isRefused", False)
    return number


def take(plc, modbus):
    """The number of the next result, with the flags that are set."""
    while (number := step(plc, modbus)) is None:
        pass
    return number, {name for name in ("overflow", "missed", "restarted") if plc.get("take." + name)}


def after(number, count=1):
    """The number of the result so many results later."""
    return (number - 1 + count) % 65535 + 1


class Queue(unittest.TestCase):
    def test_each_result_is_taken_once_in_each_order(self):
        for order in ORDERS:
            with self.subTest(order), queue_plc(order=order) as (_, modbus, plc):
                scan_until(modbus, lambda queue: max(queue[2] & 0xFF, queue[2] >> 8) > 10)
                plc.show(plc.read(modbus))
                waiting = plc.get("map.ResultQueue_waiting")
                self.assertGreater(waiting, 10)
                taken = [plc.get("map.ResultQueue_number")]
                self.assertTrue(plc.get("take.isNew"))
                while plc.get("map.ResultQueue_number") != 0:
                    number = step(plc, modbus)
                    taken += [] if number is None else [number]
                    if number is not None:
                        self.assertEqual([plc.get("take." + name) for name in ("overflow", "missed", "restarted", "lost")],
                                         [False, False, False, 0])
                        self.assertEqual(plc.get("map.profile_zMax_queued.value"), 25.0)
                    plc.cycle()  # the same registers once more
                    self.assertFalse(plc.get("take.isNew"))
                self.assertEqual(taken, [after(taken[0], count) for count in range(len(taken))])
                self.assertGreaterEqual(len(taken), waiting)

    def test_lost_results_are_told_with_the_next_one(self):
        with queue_plc(depth=3) as (_, modbus, plc):
            scan_until(modbus, lambda queue: queue[3] > 0)
            lost = modbus.read(QUEUE + 3, 1)[0]
            first = modbus.read(QUEUE + 1, 1)[0]
            self.assertEqual([take(plc, modbus) for _ in range(3)], [(after(first, count), set()) for count in range(3)])
            wait_until(lambda: step(plc, modbus) is None and modbus.read(QUEUE + 1, 1) == [0], "an empty queue")
            scan_until(modbus, lambda queue: queue[1] != 0)
            _, flags = take(plc, modbus)
            self.assertEqual((flags, plc.get("take.lost")), ({"overflow"}, lost))

    def test_another_master_and_other_sources(self):
        with queue_plc() as (rest, modbus, plc):
            scan_until(modbus, lambda queue: queue[2] > 5)
            first, flags = take(plc, modbus)
            self.assertEqual(flags, set())
            wait_until(lambda: step(plc, modbus) is None and plc.get("isWritten"), "the acknowledgement")
            modbus.write_one(QUEUE, modbus.read(QUEUE + 1, 1)[0])  # another master takes the second
            self.assertEqual(take(plc, modbus), (after(first, 2), {"missed"}))
            self.assertEqual(take(plc, modbus), (after(first, 3), set()))
            rest.post(f"{MODBUS}/registerAssemblies/registerAssembly-0/commands/update",
                      {"outputId": QUEUE, "newParams": {"dataSource": "profile/stamp"}})
            scan_until(modbus, lambda queue: queue[2] > 0)
            plc.show(plc.read(modbus))
            self.assertEqual((plc.get("decode.fits"), plc.get("take.isNew")), (False, False))  # the map does not fit
            rest.post(f"{MODBUS}/registerAssemblies/registerAssembly-0/commands/update",
                      {"outputId": QUEUE, "newParams": {"dataSource": "profile/stamp,profile/zMax"}})
            scan_until(modbus, lambda queue: queue[2] > 0)
            self.assertEqual(take(plc, modbus)[1], {"restarted", "overflow"})  # with it went results that waited

    def test_a_refused_write_is_repeated_and_a_queue_can_wait(self):
        with queue_plc() as (_, modbus, plc):
            scan_until(modbus, lambda queue: queue[2] > 2)
            plc.set("takes", False)
            for _ in range(3):
                self.assertIsNone(step(plc, modbus))
            plc.set("takes", True)
            plc.show(plc.read(modbus))
            self.assertTrue(plc.get("take.isNew"))
            first = plc.get("map.ResultQueue_number")
            plc.cycle()
            self.assertEqual((plc.get("take.write"), plc.get("take.isNew")), (True, False))
            plc.set("isRefused", True)  # without an answer the PLC does not know whether the number has arrived
            plc.cycle()
            self.assertFalse(plc.get("take.write"))
            modbus.write_one(QUEUE, plc.get("take.number"))
            plc.set("isRefused", False)
            plc.cycle()
            self.assertTrue(plc.get("take.write"))
            self.assertEqual(take(plc, modbus), (after(first), set()))


class Page(unittest.TestCase):
    """The steps of the page, in their order."""

    def check(self, plc, table):
        for name, value in re.findall(r"^\| `(.+)` \| (.+) \|$", table, re.MULTILINE):
            shown = plc.get(name)
            if isinstance(shown, str):
                shown = f"'{shown}'"
            self.assertEqual({True: "TRUE", False: "FALSE"}[shown] if isinstance(shown, bool) else str(shown), value, name)

    def test_the_steps_lead_to_a_checked_value(self):
        text = section(PAGE, "Structured Text").split("\n### ")[0]
        arguments, steps = session(PAGE, "Structured Text")
        program, = re.findall(r"^```iecst\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
        right, moved, again = re.findall(r"^\| variable .*?\n\n", text, re.MULTILINE | re.DOTALL)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here, RestClient(int(as_here("8080"))) as rest, \
                ModbusClient(int(as_here("1502"))) as modbus:
            for command, shown in steps[:-1]:
                expect(as_here(command), shown)
            plc = Plc(generated(rest), "ModbusTcp", program)
            wait_until(lambda: modbus.read(172, 1) == [1] and modbus.read(185, 2) != [0, 0], "the values")
            plc.show(plc.read(modbus))
            self.assertIn(f"registers {plc.first} to {plc.last} into `registers`", text)
            self.check(plc, right)
            expect(as_here(steps[-1][0]), steps[-1][1])
            number = rest.get(MODBUS + "/plc").json["fingerprint"]
            wait_until(lambda: unsigned(modbus.read(185, 2)) == number and modbus.read(202, 1) == [1], "the changed map")
            plc.show(plc.read(modbus))
            self.check(plc, moved)
            plc = Plc(generated(rest), "ModbusTcp", program)
            plc.show(plc.read(modbus))
            self.check(plc, again)

    def test_the_program_with_a_command(self):
        text = section(PAGE, "Structured Text").split("\n### Commands")[1].split("\n### ")[0]
        program, = re.findall(r"^```iecst\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
        table, = re.findall(r"^\| variable .*?\n\n", text, re.MULTILINE | re.DOTALL)
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as modbus:
            plc = Plc(generated(rest), "ModbusTcp", program)
            self.assertIn(f"registers {plc.words[0]} to {plc.words[1]} with function 16", text.replace("\n", " "))
            plc.set("start", True)

            def runs():
                plc.show(plc.read(modbus))
                if plc.get("startScan.write") and not plc.get("isWritten"):
                    modbus.write(plc.words[0], plc.get("words"))
                plc.set("isWritten", plc.get("startScan.write"))
                return plc.get("startScan.done") and plc.get("map.System_runState") == 1

            wait_until(runs, "the scan")
            self.check(plc, table)


    def test_the_program_with_a_queue(self):
        text = section(PAGE, "Structured Text").split("\n### Results of a queue")[1]
        program, = re.findall(r"^```iecst\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
        table, = re.findall(r"^\| variable .*?\n\n", text, re.MULTILINE | re.DOTALL)
        with queue_plc() as (rest, modbus, _):
            plc = Plc(generated(rest), "ModbusTcp", program)
            scan_until(modbus, lambda queue: queue[2] > 0)
            take(plc, modbus)
            plc.cycle()
            self.check(plc, table)


class Strictness(unittest.TestCase):
    """A file that is damaged does not compile: the interpreter does look."""

    def test_a_damaged_file_is_refused(self):
        with Host() as host, RestClient(host.http_port) as rest:
            source = generated(rest)
        for good, bad in (("END_STRUCT;", "END_STRUCT"), ("registers[66]", "registers[999]"), ("bits32 : DWORD", "bits32 : DINT"),
                          ("WORD_TO_UINT(", "WORD_TO_INT("), (" *)\n", " (*\n"), ("clock : TON", "clock : TOF")):
            with self.subTest(bad):
                self.assertIn(good, source)
                with self.assertRaises(Refused):
                    Plc(source.replace(good, bad), "ModbusTcp")


if __name__ == "__main__":
    unittest.main()
