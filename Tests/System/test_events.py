"""The reports of changes on /events, against the real host."""

import socket
import unittest

from host import Host
from modbus import ModbusClient
from rest import EventStream, RestClient

MODBUS = "/controls/ModbusTcp"
ASSEMBLY = MODBUS + "/registerAssemblies/registerAssembly-0"
ASCII = "/controls/AsciiTcp"
CHANGED = 2
TREE_CHANGED = 4


def changed(path):
    return {"type": CHANGED, "path": path}


class ControlEvents(EventStream):
    """The reports of the protocols. Reports of the jobs are left out: they occur in between, when the host saves."""

    def __init__(self, host):
        super().__init__(host.http_port, "/events")

    def next(self):
        while True:
            event = super().next()
            if event["path"].startswith("/controls"):
                return event


class Events(unittest.TestCase):
    def test_each_change_is_told_with_its_path(self):
        with Host("--param", "AsciiTcp.port=0") as host, RestClient(host.http_port) as rest:
            with ControlEvents(host) as first, ControlEvents(host) as second:
                def expect(*paths):
                    for events in (first, second):
                        self.assertEqual([events.next() for _ in paths], [changed(path) for path in paths])

                self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": 4}}).status, 200)
                expect(MODBUS)
                block = {"type": "Decision", "outputId": 300, "dataSource": "profile/zMax"}
                self.assertEqual(rest.post(ASSEMBLY + "/commands/add", {"blocks": [block]}).status, 200)
                expect(ASSEMBLY)
                self.assertEqual(rest.post(ASCII + "/outputs/commands/remove", {"outputId": "zMax"}).status, 204)
                expect(ASCII + "/outputs")
                self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": 0}}).status, 422)
                expect(MODBUS)  # the update was begun and ended, although the change was refused
                self.assertEqual(rest.put("/controls/hardware/0/digital/1", {"pulseWidth": 7}).status, 200)
                expect("/controls/hardware/0/digital/1")
                with socket.create_server(("127.0.0.1", 0)) as taken:
                    start = {"enabled": True, "parameters": {"port": taken.getsockname()[1]}}
                    self.assertEqual(rest.put("/controls/%41sciiTcp", start).status, 503)
                    expect(ASCII)  # its parameters and its state have changed
                self.assertEqual(rest.put(ASCII, {"enabled": True, "parameters": {"port": 0}}).status, 200)
                expect(ASCII)

    def test_a_client_that_accepts_no_stream_gets_none(self):
        with Host() as host, RestClient(host.http_port) as rest:
            refused = rest.get("/events", Accept="application/hal+json")
            self.assertEqual((refused.status, refused.json["detail"]),
                             (406, "The resource at /events is a stream of the type text/event-stream."))

    def test_a_load_is_told_when_it_has_ended_and_in_no_other_way(self):
        with Host("--job", "line7") as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.post("/jobs/line7/save").status // 100, 2)
            with ControlEvents(host) as events:
                for _ in range(3):
                    self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": 5}}).status, 200)
                    self.assertEqual(events.next(), changed(MODBUS))
                    self.assertEqual(rest.post("/jobs/line7/load").status // 100, 2)
                    self.assertEqual(events.next(), {"type": TREE_CHANGED, "path": "/controls"})

    def test_a_load_that_a_plc_asks_for_is_told_too(self):
        with Host("--job", "line7") as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as client:
            self.assertEqual(rest.post("/jobs/line7/save").status // 100, 2)
            with ControlEvents(host) as events:
                client.write(0, [1, 5] + [ord(character) for character in "line7"] + [0])
                self.assertEqual(events.next(), {"type": TREE_CHANGED, "path": "/controls"})

    def test_the_ids_count_on_and_reads_are_no_news(self):
        with Host() as host, RestClient(host.http_port) as rest, ControlEvents(host) as events:
            for _ in range(3):
                rest.get(MODBUS)
                rest.put(MODBUS, {})
                self.assertEqual(events.next(), changed(MODBUS))

    def test_a_client_that_leaves_does_not_stop_the_others(self):
        with Host() as host, RestClient(host.http_port) as rest, ControlEvents(host) as stays:
            for _ in range(20):
                with ControlEvents(host):
                    rest.put(MODBUS, {})
                self.assertEqual(stays.next(), changed(MODBUS))

    def test_streams_end_with_the_host(self):
        with Host() as host:
            events = ControlEvents(host)
            self.assertEqual(host.stop(), 0)
            with events, self.assertRaisesRegex(AssertionError, "the stream has ended"):
                events.next()


if __name__ == "__main__":
    unittest.main()
