"""A change of a service's parameters is carried out completely or not at all, and disturbs no connected client."""

import signal
import socket
import tempfile
import unittest

from ascii_client import AsciiClient
from host import Host, wait_until
from modbus import ModbusClient
from rest import RestClient

SERVICES = ("ModbusTcp", "AsciiTcp")
BOTH = ("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0")


def occupied():
    sock = socket.create_server(("127.0.0.1", 0))
    return sock, sock.getsockname()[1]


class Parameters(unittest.TestCase):
    def parameters(self, rest, service):
        return rest.get(f"/controls/{service}").json["parameters"]

    def test_a_refused_change_leaves_no_trace(self):
        taken, port = occupied()
        with taken, tempfile.TemporaryDirectory() as data:
            with Host(*BOTH, data=data) as host, RestClient(host.http_port) as rest:
                for service in SERVICES:
                    before = self.parameters(rest, service)
                    for refused, status in (({"address": "nonsense", "maxClients": 3}, 422),
                                            ({"port": port, "maxClients": 3}, 503)):
                        answer = rest.put(f"/controls/{service}", {"parameters": refused})
                        self.assertEqual(answer.status, status, answer.text)
                        self.assertEqual(self.parameters(rest, service), before)
            with Host(*BOTH, data=data) as host:
                self.assertEqual(set(host.ports), {"http", *SERVICES})

    def test_of_two_bad_values_the_first_registered_is_told(self):
        with Host() as host, RestClient(host.http_port) as rest:
            for bad in ({"idleTimeout": 0, "maxClients": 0}, {"maxClients": 0, "idleTimeout": 0}):
                answer = rest.put("/controls/ModbusTcp", {"parameters": bad})
                self.assertEqual(answer.status, 422)
                self.assertEqual(answer.json["detail"], "Maximum Number of Clients was set to be less than its minimum.")

    def test_a_change_of_address_keeps_the_connected_clients(self):
        with Host(*BOTH) as host, RestClient(host.http_port) as rest, \
                ModbusClient(host.modbus_port) as plc, AsciiClient(host.ports["AsciiTcp"]) as client:
            plc.read(0, 1)
            client.ask("LIST")
            for address in ("nonsense", "127.0.0.2", "0.0.0.0", "127.0.0.1"):
                for service in SERVICES:
                    rest.put(f"/controls/{service}", {"parameters": {"address": address}})
                plc.read(0, 1)
                self.assertTrue(client.ask("LIST").startswith("OK "))

    def test_long_texts_are_refused_and_not_echoed(self):
        long = "x" * 100_000
        with Host(*BOTH) as host, RestClient(host.http_port) as rest:
            before = {service: self.parameters(rest, service) for service in SERVICES}
            changes = [("PUT", f"/controls/{service}", {"parameters": {"address": long}}) for service in SERVICES]
            changes += [
                ("POST", "/controls/AsciiTcp/outputs/commands/add", {"outputId": "a", "source": long}),
                ("POST", "/controls/AsciiTcp/outputs/commands/add", {"outputId": long, "source": "profile/zMax"}),
                ("POST", "/controls/AsciiTcp/commands/sendText", {"text": long}),
                ("POST", "/controls/ModbusTcp/registerAssemblies/registerAssembly-0/commands/add",
                 {"blocks": [{"type": "Measurement", "outputId": 500, "dataSource": long}]})]
            for method, path, body in changes:
                answer = rest.send(method, path, body)
                self.assertEqual(answer.status, 422, (path, answer.text[:300]))
                self.assertLess(len(answer.body), 1000, path)
            self.assertEqual({service: self.parameters(rest, service) for service in SERVICES}, before)

    def test_a_service_that_cannot_start_keeps_its_new_parameters(self):
        taken, port = occupied()
        with taken, Host() as host, RestClient(host.http_port) as rest:
            answer = rest.put("/controls/AsciiTcp", {"enabled": True, "parameters": {"port": port}})

            self.assertEqual(answer.status, 503)
            self.assertIn("The parameters of the request are kept.", answer.text)
            self.assertEqual(self.parameters(rest, "AsciiTcp")["port"], port)
            self.assertFalse(rest.get("/controls/AsciiTcp").json["enabled"])

    def test_parameters_that_a_failed_start_keeps_are_saved(self):
        taken, port = occupied()
        with taken, tempfile.TemporaryDirectory() as data:
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                def is_saved():
                    return not rest.get("/jobs").json["jobs"][0]["modified"]
                wait_until(is_saved)
                answer = rest.put("/controls/AsciiTcp", {"enabled": True, "parameters": {"port": port}})
                self.assertEqual(answer.status, 503)
                wait_until(is_saved)
                host.expected_status = host.stop(signal.SIGKILL)
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                self.assertEqual(self.parameters(rest, "AsciiTcp")["port"], port)


if __name__ == "__main__":
    unittest.main()
