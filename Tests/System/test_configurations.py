"""A restart restores every configuration from its job, as far as its entries can be added in the order of the file."""

import collections
import copy
import json
import os
import pathlib
import random
import sqlite3
import tempfile
import time
import unittest
import zlib

from host import BIN, Host
from rest import RestClient

COUNT = int(os.environ.get("ZU_CONFIGURATIONS", "1000"))
CHANGES = 12  # from one configuration to the next

MODBUS, ASCII, NUMERIC, REGISTER = PROTOCOLS = ("ModbusTcp", "AsciiTcp", "TestNumeric", "TestRegister")
MAPPED = (ASCII, NUMERIC, REGISTER)
BLOCKS = "/controls/ModbusTcp/registerAssemblies/registerAssembly-0"
LOSS = "Error adding connections for service {}. Connections may require manual configuration."
SIZES = {"Stamp": 20, "MeasurementValue": 2, "Decision": 1, "Measurement": 3}


def start(data, *arguments):
    return Host("--plugins", BIN / "plugins", "--plugins", BIN / "tests/numericmaps", "--log", "error", *arguments,
                modbus=False, data=data)


def outputs_of(protocol):
    return f"/controls/{protocol}/outputs"


def documents_of(job):
    """The text of each protocol's document in a job file, by protocol."""
    archive = sqlite3.connect(":memory:")
    archive.deserialize(job)
    found = {}
    for name, size, content in archive.execute("SELECT name, sz, data FROM sqlar WHERE name LIKE 'controls/%/config.json'"):
        found[name.split("/")[1]] = (content if len(content) == size else zlib.decompress(content)).decode()
    archive.close()
    return found


def edited(job, protocol, change):
    """The job file with the settings of one protocol as `change` leaves them."""
    archive = sqlite3.connect(":memory:")
    archive.deserialize(job)
    document = json.loads(documents_of(job)[protocol])
    change(document["zu:control"])
    text = json.dumps(document).encode()
    archive.execute("UPDATE sqlar SET sz = ?, data = ? WHERE name = ?", (len(text), text, f"controls/{protocol}/config.json"))
    archive.commit()
    file = archive.serialize()
    archive.close()
    return file


class Desk:
    """The whole configuration, read and changed as a client does."""

    def __init__(self, test, rest):
        self.test = test
        self.rest = rest
        self.lines = {}  # the user lines of the last load, by protocol

    def tree(self):
        """Parameters, enabled state, outputs and blocks of every protocol."""
        return self.rest.get("/controls").json

    def map(self, protocol):
        return self.rest.get(outputs_of(protocol)).json["map"]

    def blocks(self):
        return self.rest.get(BLOCKS).json["blocks"]

    def save(self, job):
        """Saves the loaded configuration as a job of this name, and returns its documents."""
        answer = self.rest.post(f"/jobs/{job}/save")
        self.test.assertEqual(answer.status, 204, answer.text)
        return documents_of(self.rest.get(f"/jobs/{job}").body)

    def load(self, job):
        """Loads a job. Returns, by protocol, the parts that were not applied as they are in the file."""
        return self.skipped(self.rest.post(f"/jobs/{job}/load"))

    def loaded_at_start(self, job):
        return self.skipped(self.rest.get(f"/jobs/{job}/report"))

    def skipped(self, answer):
        self.test.assertEqual(answer.status, 200, answer.text)
        report = answer.json
        self.test.assertEqual(report["faults"], [])
        self.test.assertLessEqual(set(PROTOCOLS), set(report["protocols"]))  # the host has others as well
        for protocol in report["protocols"].values():
            self.test.assertEqual((protocol["source"], protocol["reset"]), ("job", []))
        self.lines = {name: report["protocols"][name]["lines"] for name in PROTOCOLS}
        return {name: protocol["skipped"] for name, protocol in report["protocols"].items() if protocol["skipped"]}

    def call(self, path, command, arguments):
        """Whether the host executed the change. A refusal must be one of the documented answers."""
        answer = self.rest.post(f"{path}/commands/{command}", arguments)
        self.test.assertIn(answer.status, (200, 204, 404, 409, 422), (path, command, arguments, answer.text))
        return answer.status < 300

    def put(self, protocol, change):
        answer = self.rest.put(f"/controls/{protocol}", change)
        self.test.assertEqual(answer.status, 200, answer.text)
        return True

    def added_in_order(self, protocol, entries):
        """Adds `entries` to an empty map, up to the first refused entry. Returns the map and whether an entry was refused."""
        self.test.assertTrue(self.call(outputs_of(protocol), "removeAll", {}))
        for entry in entries:
            if not self.call(outputs_of(protocol), "add", entry):
                return self.map(protocol), True
        return self.map(protocol), False


class RandomClient:
    """Changes the configuration by random requests of a client. Some of them are refused."""

    def __init__(self, desk, seed):
        self.desk = desk
        self.chance = random.Random(seed)
        self.done = collections.Counter()
        self.changes = [self.parameters, self.enabled, self.add, self.add, self.add_all, self.remove, self.update_id, self.tidy,
                        self.add_blocks, self.add_blocks, self.update_block, self.remove_block, self.compact]

    def change(self):
        change = self.chance.choice(self.changes)
        if change():
            self.done[change.__name__] += 1

    def text(self):
        pieces = ["a", "Z", '"', "\\", "/", "\n", "\x01", "\x7f", "ä", "€", "😀", " ", "%s", "0"]
        return "".join(self.chance.choices(pieces, k=self.chance.randrange(8)))

    def source(self):
        return self.chance.choice(["profile/zMax", "profile/width", *(f"source {number}" for number in range(40)), self.text()])

    def output_id(self, protocol):
        if protocol == ASCII:
            return self.text() + str(self.chance.randrange(30))
        near_the_end = self.chance.randrange(12) == 0
        if protocol == NUMERIC:
            return self.chance.randrange(65528, 65536) if near_the_end else self.chance.randrange(16)
        return self.chance.randrange(145, 155) if near_the_end else self.chance.randrange(98, 150)

    def entry(self, protocol):
        entry = {"outputId": self.output_id(protocol), "source": self.source(), "autoShift": self.chance.randrange(3) == 0}
        if protocol == ASCII:
            del entry["autoShift"]  # the ids of this map lie in no row
        if protocol == REGISTER:
            entry.update(outputSize=self.chance.randrange(9), dataOffset=self.chance.randrange(9), dataLength=self.chance.randrange(9))
        return entry

    def parameters(self):
        if self.chance.randrange(2):
            return self.desk.put(MODBUS, {"parameters": {
                "maxClients": self.chance.randint(1, 512), "idleTimeout": self.chance.randint(1, 86400),
                "registerOrder": self.chance.randrange(4), "address": self.chance.choice(["127.0.0.1", "127.0.0.2", "::1"])}})
        return self.desk.put(ASCII, {"parameters": {
            "maxClients": self.chance.randint(1, 512), "idleTimeout": self.chance.randint(1, 86400),
            "decimals": self.chance.randint(0, 9), "address": self.chance.choice(["127.0.0.1", "127.0.0.2"])}})

    def enabled(self):
        return self.desk.put(self.chance.choice(PROTOCOLS), {"enabled": self.chance.randrange(2) == 0})

    def add(self):
        protocol = self.chance.choice(MAPPED)
        return self.desk.call(outputs_of(protocol), "add", self.entry(protocol))

    def add_all(self):
        protocol = self.chance.choice(MAPPED)
        entries = [self.entry(protocol) for _ in range(self.chance.randrange(1, 5))]
        for entry in entries:
            entry.pop("autoShift", None)
        return self.desk.call(outputs_of(protocol), "addAll", {"map": entries})

    def remove(self):
        protocol = self.chance.choice(MAPPED)
        there = self.desk.map(protocol)
        return there != [] and self.desk.call(outputs_of(protocol), "remove", {"outputId": self.chance.choice(there)["outputId"]})

    def update_id(self):
        protocol = self.chance.choice(MAPPED)
        there = self.desk.map(protocol)
        if not there:
            return False
        move = {"map": [{"outputId": self.chance.choice(there)["outputId"]}, {"outputId": self.output_id(protocol)}]}
        if protocol != ASCII:
            move["autoShift"] = self.chance.randrange(2) == 0
        return self.desk.call(outputs_of(protocol), "updateId", move)

    def tidy(self):
        protocol = self.chance.choice(MAPPED)
        command = "compactId" if self.chance.randrange(3) and protocol != ASCII else "removeAll"
        return self.desk.call(outputs_of(protocol), command, {})

    def block(self):
        block = {"type": self.chance.choice(list(SIZES)), "dataSource": self.source() or "profile/zMax", "scannerId": self.text()}
        if self.chance.randrange(2):
            block["displayName"] = self.text()
        if self.chance.randrange(3):
            block["outputId"] = self.chance.choice([self.chance.randrange(400), self.chance.randrange(9980, 10010)])
        return block

    def add_blocks(self):
        blocks = [self.block() for _ in range(self.chance.randrange(1, 3))]
        return self.desk.call(BLOCKS, "add", {"blocks": blocks, "autoShift": self.chance.randrange(3) == 0})

    def update_block(self):
        block = self.chance.choice(self.desk.blocks())
        new = {"displayName": self.text(), "scannerId": self.text()}
        if "dataSource" in block:
            new["dataSource"] = self.source()
        if self.chance.randrange(2):
            new["outputId"] = self.chance.randrange(400)
        return self.desk.call(BLOCKS, "update", {"outputId": block["outputId"], "newParams": new,
                                                 "autoShift": self.chance.randrange(2) == 0})

    def remove_block(self):
        there = self.desk.blocks()
        gone = self.chance.sample(there, min(len(there), self.chance.randrange(1, 4)))
        return self.desk.call(BLOCKS, "remove", {"outputIdList": [{"outputId": block["outputId"]} for block in gone]})

    def compact(self):
        return self.desk.call(BLOCKS, "compact", {"startingOutputId": self.chance.choice([0, 0, 1, 250, 9000])})


class Configurations(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name)

    def begin(self):
        return start(self.data, "--param", "ModbusTcp.port=0", "--param", "AsciiTcp.port=0")

    def test_random_ones_come_back_after_a_restart(self):
        seed = time.time_ns()
        print("seed", seed, flush=True)
        kept = {}
        with self.begin() as host, RestClient(host.http_port) as rest:
            desk = Desk(self, rest)
            client = RandomClient(desk, seed)
            for number in range(COUNT):
                for _ in range(CHANGES):
                    client.change()
                kept[f"job{number}"] = (desk.tree(), desk.save(f"job{number}"))
        print(dict(client.done), flush=True)
        self.assertEqual(set(client.done), {change.__name__ for change in client.changes})

        lost = collections.Counter()
        with start(self.data) as host, RestClient(host.http_port) as rest:
            desk = Desk(self, rest)
            with self.subTest(job="default", seed=seed):  # as it was when the host stopped
                self.check(desk, "default", desk.loaded_at_start("default"), *kept[f"job{COUNT - 1}"])
            for name, (tree, documents) in kept.items():
                with self.subTest(job=name, seed=seed):
                    lost.update(self.check(desk, name, desk.load(name), tree, documents))
        print("not as it was:", dict(lost), flush=True)
        self.assertLess(sum(lost.values()), COUNT, "hardly anything comes back as it was")

    def check(self, desk, name, skipped, tree, documents):
        """Checks that a load has restored the job. Returns the protocols with a map that cannot be added in the order of the file."""
        loaded_tree = desk.tree()
        loaded = desk.save(name)
        self.assertLessEqual(set(PROTOCOLS), set(loaded))
        differing = [protocol for protocol in PROTOCOLS if loaded[protocol] != documents[protocol]]
        self.assertEqual(list(skipped), sorted(differing))
        told = {protocol: [] for protocol in PROTOCOLS}
        expected_tree = tree if not differing else copy.deepcopy(tree)
        for protocol in differing:
            self.assertEqual(skipped[protocol], ["outputs"])
            expected = json.loads(documents[protocol])
            wanted = expected["zu:control"]["outputs"]["map"]
            added, is_refused = desk.added_in_order(protocol, wanted)
            told[protocol] = [LOSS.format(protocol)] if is_refused else []
            self.assertNotEqual(added, wanted, "what can be added comes back")
            expected["zu:control"]["outputs"]["map"] = added
            self.assertEqual(json.loads(loaded[protocol]), expected)
            for item in expected_tree["_embedded"]["item"]:
                if item["id"] == protocol:
                    item["_embedded"]["zu:datasources"]["map"] = added
        self.assertEqual(loaded_tree, expected_tree)
        self.assertEqual({protocol: lines[-1:] for protocol, lines in desk.lines.items()}, told)  # the map itself may say more
        return differing

    def loaded(self, protocol, change):
        """Loads a job with edited settings of one protocol. Returns the skipped parts and the settings after the load."""
        with self.begin() as host, RestClient(host.http_port) as rest:
            desk = Desk(self, rest)
            desk.save("edited")
            answer = rest.put("/jobs/edited", edited(rest.get("/jobs/edited").body, protocol, change))
            self.assertEqual(answer.status, 204, answer.text)
            skipped = desk.load("edited")
            return skipped, json.loads(desk.save("edited")[protocol])["zu:control"]

    def loaded_map(self, protocol, entries):
        """Loads a job with these entries. Returns whether all were applied as they are, and the map after the load."""
        def change(settings):
            settings["outputs"]["map"] = entries
        skipped, settings = self.loaded(protocol, change)
        return skipped == {}, settings["outputs"]["map"]

    def test_a_list_beyond_the_range_comes_back_up_to_its_end(self):
        entries = [{"source": "a", "outputSize": 90}, {"source": "b", "outputSize": 90}, {"source": "c", "outputSize": 2}]
        with self.begin() as host, RestClient(host.http_port) as rest:
            desk = Desk(self, rest)
            self.assertTrue(desk.call(outputs_of(REGISTER), "addAll", {"map": entries}))
            self.assertEqual([entry["outputId"] for entry in desk.map(REGISTER)], [100, 145, 190])
            rest.put("/controls/" + REGISTER, {"enabled": True})
        with self.begin() as host, RestClient(host.http_port) as rest:
            self.assertEqual([entry["outputId"] for entry in Desk(self, rest).map(REGISTER)], [100])
            self.assertTrue(rest.get("/controls/" + REGISTER).json["enabled"])  # runs with the entries that were applied

    def test_an_entry_without_an_id_has_that_of_the_one_before(self):
        self.assertEqual(self.loaded_map(ASCII, [{"outputId": "a", "source": "one"}, {"source": "two"}, {"outputId": "c", "source": "three"}]),
                         (False, [{"outputId": "a", "source": "one"}]))

    def test_an_entry_without_a_source_has_that_of_the_one_before(self):
        self.assertEqual(self.loaded_map(NUMERIC, [{"outputId": 1, "source": "one"}, {"outputId": 2}]),
                         (False, [{"outputId": 1, "source": "one"}]))

    def test_leave_to_shift_sticks(self):
        entries = [{"outputId": 5, "source": "a", "autoShift": True}, {"outputId": 5, "source": "b"}]
        self.assertEqual(self.loaded_map(NUMERIC, entries), (False, [{"outputId": 5, "source": "b"}, {"outputId": 6, "source": "a"}]))

    def test_an_id_that_means_none_is_refused(self):
        self.assertEqual(self.loaded_map(NUMERIC, [{"outputId": 65534, "source": "a"}, {"outputId": 65535, "source": "b"}]),
                         (False, [{"outputId": 65534, "source": "a"}]))

    def test_an_assembly_without_blocks_comes_back_empty(self):
        def change(settings):
            settings["registerAssemblyList"][0]["blocks"] = []
        skipped, settings = self.loaded(MODBUS, change)
        self.assertEqual(skipped, {})
        self.assertEqual(settings["registerAssemblyList"][0]["blocks"], [])

    def test_a_block_that_is_refused_costs_no_other(self):
        first = {"type": "Decision", "outputId": 0, "dataSource": "one", "displayName": "mine", "scannerId": "s", "order": ""}
        second = {"type": "Decision", "outputId": 7, "dataSource": "two", "displayName": "Decision", "scannerId": "", "order": ""}
        def change(settings):
            settings["registerAssemblyList"][0]["blocks"] = [
                first, dict(first, displayName="in its place"), {"type": "Unknown", "outputId": 5},
                {"type": "Decision", "outputId": 7, "dataSource": "two"}]  # absent members get their defaults, not values of `first`
        skipped, settings = self.loaded(MODBUS, change)
        self.assertEqual(skipped, {MODBUS: ["registerAssemblyList"]})
        self.assertEqual(settings["registerAssemblyList"][0]["blocks"], [first, second])


if __name__ == "__main__":
    unittest.main()
