"""The lists of networks that may connect to the services for PLCs, and those that may write."""

import socket
import struct
import tempfile
import unittest

from ascii_client import AsciiClient
from host import PATIENCE, Host, wait_until
from modbus import ModbusClient, ModbusException
from rest import RestClient

MODBUS = "/controls/ModbusTcp"
ASCII = "/controls/AsciiTcp"
READER, WRITER, STRANGER = "127.0.0.2", "127.0.0.3", "127.0.1.1"
COMMANDS = ("START", "STOP", "ALIGN", "CLEARALIGN", "LOAD default", "TRIGGER", "DOUT 0 1", "AOUT 0 12", "SERIAL 0 text")
QUESTIONS = ("GET zMax", "LIST", "SUBSCRIBE", "UNSUBSCRIBE", "READ /controls#/nothing", "STATUS", "HELP")
MAY_ONLY_READ = "ERROR -998 This client may only read"


def both(*arguments, **options):
    return Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", *arguments, **options)


def lists(**parameters):
    return {"parameters": parameters}


def ask(port, source, request):
    """The answer to a line from this address; None when the service closes the connection."""
    with socket.create_connection(("127.0.0.1", port), timeout=PATIENCE, source_address=(source, 0)) as client:
        try:
            client.sendall(request.encode() + b"\n")
            return client.makefile("r").readline().rstrip("\n") or None
        except ConnectionError:
            return None


def is_served(port, source):
    try:
        with ModbusClient(port, source=source) as plc:
            return plc.read(0, 1) == [0]
    except ConnectionError:
        return False


def wait_for_metrics(rest, **expected):
    """The metrics are shown once a second."""
    def shown():
        metrics = rest.get(MODBUS + "/metrics").json
        return {key: metrics[key] for key in expected}

    wait_until(lambda: shown() == expected, f"{expected} in the metrics, which are {shown()}")


def exception_of(plc, pdu):
    try:
        plc.request(pdu)
        return 0
    except ModbusException as refused:
        return refused.code


WRITES = (struct.pack(">BHH", 6, 0, 1), struct.pack(">BHHBH", 16, 0, 1, 2, 1), struct.pack(">BHHHHBH", 23, 0, 1, 0, 1, 2, 1),
          struct.pack(">BHHH", 22, 2, 0, 1), struct.pack(">BHH", 5, 4, 0xFF00), struct.pack(">BHHBB", 15, 4, 1, 1, 0))
READS = (struct.pack(">BHH", 3, 0, 1), struct.pack(">BHH", 4, 0, 1), struct.pack(">BBBB", 43, 14, 1, 0),
         struct.pack(">BHH", 1, 0, 16), struct.pack(">BHH", 2, 0, 16))
READ_ONLY = [0] * len(READS) + [1] * len(WRITES)  # the exception codes of READS + WRITES


class Lists(unittest.TestCase):
    def test_modbus_serves_the_listed_networks_only(self):
        with both("--param", "ModbusTcp.allowedClients=127.0.0.0/24, fd00::/8") as host, RestClient(host.http_port) as rest:
            self.assertEqual([is_served(host.modbus_port, source) for source in (READER, WRITER, STRANGER)], [True, True, False])
            wait_for_metrics(rest, deniedClients=1, acceptedClients=2)
            host.wait_for_log("Modbus TCP closes a connection of 127.0.1.1: it may not connect (1 since the last such line)")

    def test_modbus_lets_the_listed_networks_write_only(self):
        with both("--param", "ModbusTcp.writers=127.0.0.3") as host, RestClient(host.http_port) as rest:
            with ModbusClient(host.modbus_port, source=READER) as reader, ModbusClient(host.modbus_port, source=WRITER) as writer:
                self.assertEqual([exception_of(reader, pdu) for pdu in READS + WRITES], READ_ONLY)
                self.assertEqual([exception_of(writer, pdu) for pdu in READS], [0] * len(READS))
                self.assertEqual(reader.read(66, 2), [0, 0])  # no command was taken
                writer.write(0, [7, 0])
                self.assertEqual(writer.read(66, 2), [7, 2])
            wait_for_metrics(rest, deniedRequests=6, exceptions={"1": 6, "2": 0, "3": 0, "6": 0}, commands=1)

    def test_a_read_only_service_takes_no_command_of_anybody(self):
        with both("--param", "ModbusTcp.readOnly=true", "--param", "AsciiTcp.readOnly=true", "--param",
                  "AsciiTcp.writers=127.0.0.3") as host:
            with ModbusClient(host.modbus_port, source=WRITER) as plc:
                self.assertEqual([exception_of(plc, pdu) for pdu in READS + WRITES], READ_ONLY)
            self.assertEqual(ask(host.ports["AsciiTcp"], WRITER, "START"), MAY_ONLY_READ)

    def test_ascii_has_the_same_lists(self):
        with both("--param", "AsciiTcp.allowedClients=127.0.0.0/24", "--param", "AsciiTcp.writers=127.0.0.3/32") as host:
            port = host.ports["AsciiTcp"]
            self.assertIsNone(ask(port, STRANGER, "STATUS"))
            for request in QUESTIONS:
                self.assertTrue(ask(port, READER, request).startswith("OK"), request)
            self.assertEqual({ask(port, READER, request) for request in COMMANDS}, {MAY_ONLY_READ})
            self.assertEqual(ask(port, WRITER, "DOUT 0 1"), "OK")
            self.assertEqual(ask(port, WRITER, "START"), "OK")

    def test_a_change_applies_to_connected_clients(self):
        with both() as host, RestClient(host.http_port) as rest:
            with ModbusClient(host.modbus_port, source=READER) as reader, ModbusClient(host.modbus_port, source=WRITER) as writer:
                self.assertEqual([exception_of(plc, WRITES[0]) for plc in (reader, writer)], [0, 0])
                wait_until(lambda: reader.read(67, 1) == [2], "the end of the command")
                self.assertEqual(rest.put(MODBUS, lists(writers=WRITER)).status, 200)
                self.assertEqual([exception_of(plc, WRITES[0]) for plc in (reader, writer)], [1, 0])
                self.assertEqual(rest.put(MODBUS, lists(allowedClients=WRITER)).status, 200)
                self.assertEqual(exception_of(writer, READS[0]), 0)
                with self.assertRaises(ConnectionError):
                    reader.read(0, 1)

    def test_a_faulty_list_is_refused_and_changes_nothing(self):
        with both() as host, RestClient(host.http_port) as rest:
            before = rest.get(MODBUS).json["parameters"]
            for change in (lists(allowedClients="127.0.0.2, plc-7"), lists(writers="10.0.0.1/8"), lists(allowedClients=","),
                           lists(writers="x" * 2049), lists(readOnly=1), lists(allowedClients=["127.0.0.2"])):
                self.assertIn(rest.put(MODBUS, change).status, (400, 422), change)
            self.assertEqual(rest.get(MODBUS).json["parameters"], before)
            self.assertTrue(is_served(host.modbus_port, STRANGER))
            self.assertEqual(rest.put(MODBUS, lists(writers="10.0.0.1/8")).json["detail"],
                             'writers: "10.0.0.1/8" is an address within a network: behind the prefix all bits of a network are 0')


class Trail(unittest.TestCase):
    """What the trail shows of the clients of both services."""

    @staticmethod
    def entries(rest, query="", count=1):
        """Waits for so many entries of a client that is a PLC: (who, from, what, result)."""
        def found():
            entries = rest.get("/audit?limit=1000" + query).json["entries"]
            return [(entry["who"], entry["from"], entry["what"], entry["result"]) for entry in entries if "127." in entry["from"]]

        wait_until(lambda: len(found()) >= count, f"{count} entries")
        return found()

    def test_a_command_has_the_address_and_the_role_of_its_client(self):
        with both() as host, RestClient(host.http_port) as rest:
            with ModbusClient(host.modbus_port, source=WRITER) as plc:
                plc.write(0, [7, 1])  # start
                wait_until(lambda: plc.read(66, 2) == [7, 2], "the end of the start")
            self.assertEqual(ask(host.ports["AsciiTcp"], READER, "STOP"), "OK")
            self.assertEqual(self.entries(rest, count=2),
                             [("ModbusTcp", "ModbusTcp 127.0.0.3 as operator", "scan start", "done"),
                              ("AsciiTcp", "AsciiTcp 127.0.0.2 as operator", "scan stop", "done")])
            self.assertEqual(len(self.entries(rest, "&from=127.0.0.2")), 1)

    def test_refused_clients_and_requests_are_noted_and_gathered(self):
        arguments = ("ModbusTcp.allowedClients=127.0.0.0/24", "ModbusTcp.writers=127.0.0.3", "AsciiTcp.writers=127.0.0.3")
        with tempfile.TemporaryDirectory() as data:
            with both(*(word for one in arguments for word in ("--param", one)), data=data) as host:
                with RestClient(host.http_port) as rest:
                    for _ in range(30):
                        self.assertFalse(is_served(host.modbus_port, STRANGER))
                    with ModbusClient(host.modbus_port, source=READER) as plc:
                        self.assertEqual([exception_of(plc, WRITES[0]) for _ in range(20)], [1] * 20)
                    self.assertEqual(ask(host.ports["AsciiTcp"], READER, "LOAD default"), MAY_ONLY_READ)
                    no_role = "refused: the client's role does not allow it"
                    first = [("ModbusTcp", "ModbusTcp 127.0.1.1", "connection", "refused: it may not connect"),
                             ("ModbusTcp", "ModbusTcp 127.0.0.2 as viewer", "function 6", no_role),
                             ("AsciiTcp", "AsciiTcp 127.0.0.2 as viewer", "LOAD", no_role)]
                    self.assertEqual(self.entries(rest, count=3), first)
            with Host(data=data, modbus=False) as host, RestClient(host.http_port) as rest:  # the stop has told the numbers
                rest_of_bursts = {(source, what) for _, source, what, _ in self.entries(rest, count=5)[3:]}
                self.assertEqual(rest_of_bursts, {("ModbusTcp 127.0.1.1", "29 more refusals"),
                                                  ("ModbusTcp 127.0.0.2 as viewer", "19 more refusals")})


class Exposure(unittest.TestCase):
    def test_a_service_open_to_a_network_is_a_problem_while_it_is(self):
        with both("--param", "ModbusTcp.address=0.0.0.0") as host, RestClient(host.http_port) as rest:
            def told():
                return [problem["text"] for problem in rest.get("/problems").json["problems"]]

            text = (f"Modbus TCP at 0.0.0.0:{host.modbus_port} serves every machine that reaches it: list the networks of its "
                    "clients in allowedClients, ask them for certificates (security), or let it listen on 127.0.0.1")
            self.assertEqual(told(), [text])
            for change, expected in ((lists(allowedClients="127.0.0.0/8"), []), (lists(allowedClients=""), [text]),
                                     ({"enabled": False}, [])):
                self.assertEqual(rest.put(MODBUS, change).status, 200)
                self.assertEqual(told(), expected, change)


if __name__ == "__main__":
    unittest.main()
