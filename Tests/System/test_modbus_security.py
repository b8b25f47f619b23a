"""PLCs that must show who they are: TLS with certificates on both sides, and the role in the certificate of the client."""

import contextlib
import re
import shlex
import signal
import socket
import ssl
import subprocess
import tempfile
import threading
import time
import unittest

from ascii_client import AsciiClient
from host import PATIENCE, Host, wait_until
from modbus import ModbusClient
from pages import free_port, section
from plant_certificates import Plant
from rest import RestClient
from test_ascii_attacks import CROSS_SITE_POST
from test_flood import HEALTH_SECONDS, Health, connect
from test_plc_access import COMMANDS, QUESTIONS, READ_ONLY, READS, WRITES, exception_of

MODBUS = "/controls/ModbusTcp"
ASCII = "/controls/AsciiTcp"
FLOOD_SECONDS = 3
ROLES = ("Viewer", "Operator", "Engineer", "Administrator")
ALL, NOTHING = [0] * len(READ_ONLY), [1] * len(READ_ONLY)  # the exception codes of READS + WRITES


class TlsModbusClient(ModbusClient):
    """A Modbus client over TLS. It has no certificate unless `name` gives one."""

    def __init__(self, port, plant, name=None, **options):
        super().__init__(port, **options)
        self.socket = wrap(self.socket, plant, name)


def context_of(plant, name=None):
    context = ssl.create_default_context(cafile=plant / "authority.pem")
    if name is not None:
        context.load_cert_chain(plant / f"{name}.pem", plant / f"{name}.key")
    return context


def wrap(plain, plant, name=None):
    return context_of(plant, name).wrap_socket(plain, server_hostname="127.0.0.1")


def ask(port, plant, name, line):
    """The answer to a line of the ASCII protocol over TLS."""
    with wrap(connect(port), plant, name) as client:
        client.sendall(line.encode() + b"\n")
        return client.makefile("r").readline().rstrip("\n")


def hello():
    """The first message of a TLS client."""
    incoming, outgoing = ssl.MemoryBIO(), ssl.MemoryBIO()
    client = ssl.create_default_context().wrap_bio(incoming, outgoing, server_hostname="127.0.0.1")
    with contextlib.suppress(ssl.SSLWantReadError):
        client.do_handshake()
    return outgoing.read()


def is_closed(client):
    """Waits for the end of a connection. An alert of TLS may come before it."""
    try:
        while client.recv(65536):
            pass
    except ConnectionError:
        pass
    return True


def wait_for_metrics(rest, path=MODBUS, **expected):
    def shown():
        metrics = rest.get(path + "/metrics").json
        return {key: metrics[key] for key in expected}

    wait_until(lambda: shown() == expected, f"{expected} in the metrics, which are {shown()}")


@contextlib.contextmanager
def tunnel(arguments, port, **options):
    """A program that listens on `port` and talks TLS on behalf of its clients."""
    with subprocess.Popen([str(word) for word in arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, **options) as process:
        try:
            def listens():
                with open("/proc/net/tcp", encoding="ascii") as table:
                    return any(line.split()[1].endswith(f":{port:04X}") and line.split()[3] == "0A" for line in list(table)[1:])

            wait_until(listens, f"{arguments[0]} on port {port}")
            yield port
        finally:
            process.kill()


def socat(plant, name, target):
    port = free_port()
    return tunnel(["socat", f"TCP-LISTEN:{port},bind=127.0.0.1,fork,reuseaddr",
                   f"OPENSSL:127.0.0.1:{target},cafile={plant / 'authority.pem'},cert={plant / (name + '.pem')},"
                   f"key={plant / (name + '.key')}"], port)


def stunnel(plant, name, target):
    port = free_port()
    settings = plant / f"stunnel-{name}.conf"
    settings.write_text(f"foreground = yes\npid =\nclient = yes\n[modbus]\naccept = 127.0.0.1:{port}\n"
                        f"connect = 127.0.0.1:{target}\ncert = {plant / (name + '.pem')}\nkey = {plant / (name + '.key')}\n"
                        f"CAfile = {plant / 'authority.pem'}\nverifyChain = yes\n", encoding="utf-8")
    return tunnel(["stunnel", settings], port)


def mbpoll(port, *arguments):
    """What mbpoll prints, in one poll."""
    done = subprocess.run(["mbpoll", "-m", "tcp", "-p", str(port), "-0", "-1", *map(str, arguments)], capture_output=True,
                          text=True, timeout=PATIENCE)
    return done.stdout + done.stderr


class WithPlant(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.plant = cls.enterClassContext(Plant())
        for role in ROLES:
            cls.plant.certify(role.lower(), role=role)
        cls.plant.certify("nobody")
        cls.plant.certify("boss", role="Boss")

    def secure_host(self, *arguments, security=2, **more):
        return Host(*self.plant.parameters("ModbusTcp", security, **more), *arguments)


class Roles(WithPlant):
    def test_each_role_may_use_its_functions(self):
        expected = {"viewer": READ_ONLY, "operator": ALL, "engineer": ALL, "administrator": ALL, "nobody": NOTHING, "boss": NOTHING}
        with self.secure_host() as host:
            for name, exceptions in expected.items():
                with TlsModbusClient(host.modbus_port, self.plant, name) as plc:
                    found = [self.settled(plc, pdu) for pdu in READS + WRITES]
                self.assertEqual(found, exceptions, name)

    @staticmethod
    def settled(plc, pdu):
        """The exception code; waits while a command runs."""
        def code():
            found = exception_of(plc, pdu)
            return None if found == 6 else (found,)
        return wait_until(code, "the end of a command")[0]

    def test_unknown_texts_get_roles_by_a_table(self):
        with self.secure_host(roles="Boss=viewer") as host, RestClient(host.http_port) as rest:
            with TlsModbusClient(host.modbus_port, self.plant, "boss") as plc:
                self.assertEqual([exception_of(plc, pdu) for pdu in READS + WRITES], READ_ONLY)
                wait_for_metrics(rest, deniedRequests=len(WRITES))
                self.assertEqual(rest.put(MODBUS, {"parameters": {"roles": "Boss=operator"}}).status, 200)
                self.assertEqual(exception_of(plc, WRITES[0]), 0)
                answer = rest.put(MODBUS, {"parameters": {"roles": "Boss=chief"}})
                self.assertEqual((answer.status, answer.json["detail"]),
                                 (422, 'roles: "Boss=chief" is no entry such as Maintenance=engineer: the roles are viewer, operator, '
                                       "engineer and administrator"))

    def test_the_lists_apply_beside_the_roles(self):
        with self.secure_host(writers="127.0.0.3", allowedClients="127.0.0.0/24") as host:
            with TlsModbusClient(host.modbus_port, self.plant, "engineer", source="127.0.0.2") as plc:
                self.assertEqual([exception_of(plc, pdu) for pdu in READS + WRITES], READ_ONLY)
            with TlsModbusClient(host.modbus_port, self.plant, "engineer", source="127.0.0.3") as plc:
                self.assertEqual(exception_of(plc, WRITES[0]), 0)
            with self.assertRaises(OSError):
                TlsModbusClient(host.modbus_port, self.plant, "engineer", source="127.0.1.1")

    def test_ascii_has_the_same_roles(self):
        arguments = self.plant.parameters("AsciiTcp")
        with Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", *arguments, modbus=False) as host:
            port = host.ports["AsciiTcp"]
            for request in QUESTIONS:
                self.assertTrue(ask(port, self.plant, "viewer", request).startswith("OK"), request)
                self.assertEqual(ask(port, self.plant, "nobody", request), "ERROR -998 This client has no role")
            for request in COMMANDS:
                self.assertEqual(ask(port, self.plant, "viewer", request), "ERROR -998 This client may only read", request)
                self.assertEqual(ask(port, self.plant, "boss", request), "ERROR -998 This client has no role", request)
            self.assertEqual(ask(port, self.plant, "operator", "DOUT 0 1"), "OK")


class Mbpoll(WithPlant):
    def poll_with_each_role(self, tunnel_of):
        with self.secure_host() as host:
            for name in ("viewer", "operator", "engineer", "administrator", "nobody"):
                with tunnel_of(self.plant, name, host.modbus_port) as port:
                    read = mbpoll(port, "-r", 66, "-c", 1, "127.0.0.1")
                    written = mbpoll(port, "-r", 0, "127.0.0.1", 1, 0)
                self.assertEqual("[66]:" in read, name != "nobody", read)
                self.assertEqual("Written 2 references." in written, name not in ("viewer", "nobody"), written)
                self.assertEqual("Illegal function" in read + written, name in ("viewer", "nobody"), read + written)

    def test_through_socat(self):
        self.poll_with_each_role(socat)

    def test_through_stunnel(self):
        self.poll_with_each_role(stunnel)


class Certificates(WithPlant):
    def test_clients_that_do_not_show_who_they_are_are_refused(self):
        self.plant.make_authority("stranger")
        self.plant.certify("foreign", role="Engineer", authority="stranger")
        self.plant.certify("ended", role="Engineer", days=-1)
        self.plant.certify("selfmade", role="Engineer", authority=None)
        self.plant.certify("server", role="Engineer", usage="serverAuth")
        refused = (None, "foreign", "ended", "selfmade", "server")
        with self.secure_host() as host, RestClient(host.http_port) as rest:
            for name in refused:
                with self.assertRaises(OSError, msg=name):  # with TLS 1.3 at the first read
                    with TlsModbusClient(host.modbus_port, self.plant, name) as plc:
                        plc.read(0, 1)
            wait_for_metrics(rest, failedHandshakes=len(refused), droppedClients=len(refused), requests=0, clients=0)
            host.wait_for_log("the TLS handshake failed: the peer shows no certificate (1 since the last such line)")
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as plc:
                self.assertEqual(plc.read(0, 1), [0])

    def test_a_server_certificate_alone_asks_nothing_of_clients(self):
        with self.secure_host(security=1) as host, TlsModbusClient(host.modbus_port, self.plant) as plc:
            self.assertEqual([exception_of(plc, pdu) for pdu in READS + WRITES[:1]], [0] * (len(READS) + 1))

    def test_old_versions_are_refused(self):
        with self.secure_host() as host:
            context = context_of(self.plant, "viewer")
            context.minimum_version = ssl.TLSVersion.TLSv1
            context.maximum_version = ssl.TLSVersion.TLSv1_1
            context.set_ciphers("ALL:@SECLEVEL=0")
            with connect(host.modbus_port) as plain, self.assertRaises(ssl.SSLError):
                context.wrap_socket(plain, server_hostname="127.0.0.1")

    def test_a_certificate_that_cannot_be_used_is_refused_with_a_sentence(self):
        with self.secure_host() as host, RestClient(host.http_port) as rest:
            before = rest.get(MODBUS).json["parameters"]
            self.plant.certify("old", usage="serverAuth", days=-1)
            for change, text in (({"certificateFile": "/nowhere.pem"}, "the certificate /nowhere.pem cannot be read: No such file or directory"),
                                 ({"keyFile": ""}, "a certificate and its key are needed, each in a file"),
                                 ({"keyFile": str(self.plant / "viewer.key")}, "does not belong to the certificate"),
                                 ({"certificateFile": str(self.plant / "old.pem"), "keyFile": str(self.plant / "old.key")}, "ended on"),
                                 ({"authorityFile": ""}, "authorities")):
                answer = rest.put(MODBUS, {"parameters": change})
                self.assertEqual(answer.status, 422, change)
                self.assertIn("Modbus TCP cannot use TLS: ", answer.json["detail"])
                self.assertIn(text, answer.json["detail"])
            self.assertEqual(rest.get(MODBUS).json["parameters"], before)
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as plc:
                self.assertEqual(plc.read(0, 1), [0])

    def test_a_renewed_certificate_is_read_with_the_next_change_and_drops_nobody(self):
        def serial(client):
            return client.socket.getpeercert()["serialNumber"]

        with self.secure_host() as host, RestClient(host.http_port) as rest:
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as first:
                self.plant.certify("sensor", usage="serverAuth", names="IP:127.0.0.1")
                self.assertEqual(rest.put(MODBUS, {"parameters": {}}).status, 200)
                with TlsModbusClient(host.modbus_port, self.plant, "viewer") as second:
                    self.assertNotEqual(serial(first), serial(second))
                    self.assertEqual(first.read(0, 1) + second.read(0, 1), [0, 0])

    def test_the_signal_reads_the_certificates_again_and_drops_nobody(self):
        def serial(client):
            return client.socket.getpeercert()["serialNumber"]

        def problems(rest):
            return [one["text"] for one in rest.get("/problems").json["problems"] if "certificate" in one["text"]]

        names = {"usage": "serverAuth", "names": "IP:127.0.0.1,DNS:localhost"}
        self.addCleanup(self.plant.certify, "sensor", **names)
        with self.secure_host() as host, RestClient(host.http_port) as rest, \
                TlsModbusClient(host.modbus_port, self.plant, "viewer") as first:
            (self.plant / "sensor.pem").write_text("nothing", encoding="utf-8")
            host.process.send_signal(signal.SIGHUP)
            sentence = wait_until(lambda: problems(rest), "the problem")[0]
            self.assertIn("The certificate of Modbus TCP stays as it was: Modbus TCP cannot use TLS: ", sentence)
            self.assertIn("there is no certificate in it", sentence)
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as second:
                self.assertEqual(serial(first), serial(second))

            self.plant.certify("sensor", **names)
            host.process.send_signal(signal.SIGHUP)
            host.wait_for_log("Modbus TCP has read its certificate again")
            wait_until(lambda: not problems(rest), "the end of the problem")
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as third:
                self.assertNotEqual(serial(first), serial(third))
                self.assertEqual(first.read(0, 1) + third.read(0, 1), [0, 0])

    def test_a_revoked_client_is_refused(self):
        self.plant.certify("lost", role="Engineer")
        self.plant.revoke("lost")
        with self.secure_host(revocationFile=self.plant / "revoked.pem") as host, RestClient(host.http_port) as rest:
            with self.assertRaises(OSError), TlsModbusClient(host.modbus_port, self.plant, "lost") as plc:
                plc.read(0, 1)
            host.wait_for_log("the TLS handshake failed: the certificate of CN=lost is revoked")
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as plc:
                self.assertEqual(plc.read(0, 1), [0])
                self.plant.revoke("lost", "viewer")
                host.process.send_signal(signal.SIGHUP)
                host.wait_for_log("Modbus TCP has read its certificate again")
                self.assertEqual(plc.read(0, 1), [0])  # the connection stays
                with self.assertRaises(OSError), TlsModbusClient(host.modbus_port, self.plant, "viewer") as again:
                    again.read(0, 1)
            answer = rest.put(MODBUS, {"parameters": {"revocationFile": str(self.plant / "viewer.pem")}})
            self.assertEqual(answer.status, 422)
            self.assertIn("there is no list of revoked certificates in it", answer.json["detail"])

    def test_the_trail_shows_the_roles_and_the_refused_clients(self):
        with self.secure_host() as host, RestClient(host.http_port) as rest:
            with TlsModbusClient(host.modbus_port, self.plant, "engineer") as plc:
                plc.write(0, [7, 1])
            with TlsModbusClient(host.modbus_port, self.plant, "nobody", source="127.0.0.2") as plc:
                self.assertEqual(exception_of(plc, READS[0]), 1)
            with self.assertRaises(OSError), TlsModbusClient(host.modbus_port, self.plant, source="127.0.0.3") as plc:
                plc.read(0, 1)

            def entries():
                found = rest.get("/audit?limit=1000&who=ModbusTcp").json["entries"]
                return {(entry["from"], entry["what"], entry["result"]) for entry in found}

            wait_until(lambda: len(entries()) >= 3, "three entries")
            self.assertEqual(entries(), {
                ("ModbusTcp 127.0.0.1 as engineer", "scan start", "done"),
                ("ModbusTcp 127.0.0.2", "function 3", "refused: the client has no role"),
                ("ModbusTcp 127.0.0.3", "connection", "refused: the TLS handshake failed: the peer shows no certificate")})

    def test_the_private_key_is_in_no_document(self):
        key = (self.plant / "sensor.key").read_text().splitlines()[1]
        with self.secure_host() as host, RestClient(host.http_port) as rest:
            for path in (MODBUS, MODBUS + "?schema=true", MODBUS + "/metrics", "/problems"):
                self.assertNotIn(key, rest.get(path).text)
            self.assertEqual(rest.get(MODBUS).json["parameters"]["keyFile"], str(self.plant / "sensor.key"))
            self.assertNotIn(key, host.log())


class Attacks(WithPlant):
    def test_plain_clients_truncated_and_slow_handshakes_are_closed(self):
        first = hello()
        beginnings = [b"\0\1\0\0\0\6\1\3\0\0\0\1", CROSS_SITE_POST, first[:1], first[:5], first[:-1], first + b"\0" * 512,
                      b"\x16\x03\x01\xff\xff" + b"\0" * 512]
        with self.secure_host("--param", "ModbusTcp.idleTimeout=1") as host, RestClient(host.http_port) as rest:
            for beginning in beginnings:
                with connect(host.modbus_port) as client:
                    client.sendall(beginning)
                    self.assertTrue(is_closed(client), beginning)  # at once, or after the deadline
                with connect(host.modbus_port) as client:
                    with contextlib.suppress(OSError):  # the service may have closed already
                        client.sendall(beginning)
                        client.shutdown(socket.SHUT_WR)
                    self.assertTrue(is_closed(client), beginning)
            with connect(host.modbus_port) as client:  # a byte now and then does not extend the deadline
                begin = time.monotonic()
                with contextlib.suppress(ConnectionError):
                    for byte in first:
                        client.sendall(bytes([byte]))
                        time.sleep(0.05)
                self.assertTrue(is_closed(client))
                self.assertLess(time.monotonic() - begin, 5 + HEALTH_SECONDS)
            wait_for_metrics(rest, failedHandshakes=2 * len(beginnings) + 1, clients=0, requests=0)

    def test_a_flood_of_handshakes_keeps_within_its_places_and_leaves_other_services_alone(self):
        arguments = ("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", "--param", "ModbusTcp.maxClients=4", "--param",
                     "ModbusTcp.makeRoomAfter=1", "--param", "AsciiTcp.idleTimeout=60", "--log", "error")
        with self.secure_host(*arguments) as host, RestClient(host.http_port) as rest, Health(host.http_port) as health:
            ends = threading.Event()
            attackers = [threading.Thread(target=self.attack, args=(host.modbus_port, ends, half)) for half in (0, 1, 1)]
            for attacker in attackers:
                attacker.start()
            try:
                longest = 0.0
                most = 0
                end = time.monotonic() + FLOOD_SECONDS
                with AsciiClient(host.ports["AsciiTcp"]) as plc:
                    while time.monotonic() < end:
                        begin = time.monotonic()
                        self.assertTrue(plc.ask("STATUS").startswith("OK"))
                        longest = max(longest, time.monotonic() - begin)
                        most = max(most, rest.get(MODBUS + "/metrics").json["clients"])
                # another address has its share of the places
                with TlsModbusClient(host.modbus_port, self.plant, "viewer", source="127.0.0.2", timeout=PATIENCE) as plc:
                    self.assertEqual(plc.read(0, 1), [0])
            finally:
                ends.set()
                for attacker in attackers:
                    attacker.join()
        print(f"the plain PLC was answered within {longest:.3f} s, at most {most} clients, /health within {health.longest:.3f} s",
              flush=True)
        self.assertLess(longest, HEALTH_SECONDS)
        self.assertLess(health.longest, HEALTH_SECONDS)
        self.assertLessEqual(most, 4)

    @staticmethod
    def attack(port, ends, half):
        """Begins one handshake after the other; half of them never end."""
        message = hello()
        held = []
        while not ends.is_set():
            with contextlib.suppress(OSError):
                client = connect(port)
                held.append(client)
                client.sendall(message[:100] if half else message)
            while len(held) > 50:
                held.pop(0).close()
        for client in held:
            client.close()

    def test_a_web_page_runs_nothing_over_tls(self):
        arguments = self.plant.parameters("AsciiTcp", security=1)
        with Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", *arguments, modbus=False) as host, \
                RestClient(host.http_port) as rest:
            with wrap(connect(host.ports["AsciiTcp"]), self.plant) as page:
                page.sendall(CROSS_SITE_POST)
                self.assertTrue(is_closed(page))
            with wrap(connect(host.ports["AsciiTcp"]), self.plant) as inner, self.assertRaises(OSError):
                inner.sendall(hello())
                if inner.recv(1) == b"":
                    raise ConnectionError("closed")
            wait_for_metrics(rest, ASCII, droppedClients=2, requests=0)
            self.assertIn("operation=none", ask(host.ports["AsciiTcp"], self.plant, None, "STATUS"))

    def test_connections_that_are_reset_delay_nobody(self):
        with self.secure_host("--log", "error") as host:
            for _ in range(300):
                with contextlib.suppress(OSError):
                    client = TlsModbusClient(host.modbus_port, self.plant, "viewer")
                    client.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
                    client.socket.sendall(b"\0\1\0\0\0\6\1\3\0\0\0\x7d" * 50)
                    client.close()
            with TlsModbusClient(host.modbus_port, self.plant, "viewer") as plc:
                begin = time.monotonic()
                self.assertEqual(plc.read(0, 1), [0])
                self.assertLess(time.monotonic() - begin, HEALTH_SECONDS)


class Page(unittest.TestCase):
    """The set-up that docs/security.md shows."""

    def test_the_commands_of_the_page_set_up_a_service_with_certificates(self):
        text = section("docs/security.md", "Protocols of PLCs").split("### Set it up in ten minutes")[1].split("\n### ")[0]
        make, start, read = re.findall(r"^```\n(.*?)^```", text, re.MULTILINE | re.DOTALL)
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["bash", "-euc", make], cwd=folder, check=True, capture_output=True, timeout=PATIENCE)
            options = start.replace("$PWD", folder).replace("\\\n", " ").replace("=802", "=0").replace("=0.0.0.0", "=127.0.0.1")
            with Host(*shlex.split(options)[1:], modbus=False) as host:
                bridge, poll, *shown = read.splitlines()
                port = free_port()
                bridge = bridge.removesuffix(" &").replace("1503", str(port)).replace(":802", f":{host.modbus_port}")
                with tunnel(shlex.split(bridge), port, cwd=folder):
                    printed = subprocess.run(shlex.split(poll.replace("1503", str(port))), capture_output=True, text=True,
                                             timeout=PATIENCE).stdout
                with RestClient(host.http_port) as rest:
                    self.assertEqual(rest.put(MODBUS, '{"parameters":{}}').status, 200)
        self.assertEqual([line for line in printed.splitlines() if line.startswith("[")], shown)


class Exposure(WithPlant):
    def test_a_network_is_no_problem_when_clients_show_certificates(self):
        with self.secure_host("--param", "ModbusTcp.address=0.0.0.0") as host, RestClient(host.http_port) as rest:
            def problems():
                return [problem["text"] for problem in rest.get("/problems").json["problems"]]

            self.assertEqual(problems(), [])
            self.assertEqual(rest.put(MODBUS, {"parameters": {"security": 1}}).status, 200)
            self.assertEqual(len(problems()), 1)
            self.assertIn("serves every machine that reaches it", problems()[0])


if __name__ == "__main__":
    unittest.main()
