"""Ten thousand malformed or hostile requests. After them the real host runs, with its memory and configuration as before.

The requests are drawn from a list of kinds with a generator of fixed seed, so that a failure can be reproduced. ZU_SEED sets another seed.
"""

import collections
import json
import os
import random
import socket
import unittest

from host import Host
from modbus import ModbusClient
from rest import RestClient
from tls import BROKEN, TlsPort, connect_to, end_sending, receive_all

REQUESTS = 10_000
REQUESTS_OVER_TLS = 3_000  # each with a handshake
SEED = int(os.environ.get("ZU_SEED", "20261121"))
MEMORY_BOUND = int(os.environ.get("ZU_MEMORY_MIB", "64")) * 1024  # KiB that the host may grow; sanitizers keep what is freed
MOST_OPEN = 100  # slow clients at a time

MODBUS = "/controls/ModbusTcp"
ASSEMBLY = MODBUS + "/registerAssemblies/registerAssembly-0"
COMMANDS = [f"{ASSEMBLY}/commands/{command}" for command in ("add", "remove", "update")]
PARAMETERS = ("port", "address", "maxClients", "registerOrder", "idleTimeout", "makeRoomAfter", "allowedClients", "writers", "readOnly", "security",
              "certificateFile", "keyFile", "authorityFile", "revocationFile", "roles")
TEXTS = ("address", "allowedClients", "writers", "certificateFile", "keyFile", "authorityFile", "revocationFile", "roles")


def request(method, path, body=b"", *headers):
    """The bytes of a request that is well formed as HTTP."""
    lines = [f"{method} {path} HTTP/1.1", "Host: localhost", "Connection: close", *headers]
    if body:
        lines.append(f"Content-Length: {len(body)}")
    return "\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + body


def change(dice, body):
    """A body sent to something that can be changed or called."""
    method, path = dice.choice([("PUT", MODBUS), ("PATCH", MODBUS), *[("POST", command) for command in COMMANDS]])
    return request(method, path, body if isinstance(body, bytes) else body.encode())


def update(body):
    return request("PUT", MODBUS, json.dumps(body).encode())


# Each kind takes a generator and gives the bytes of one request.

def bad_json(dice):
    whole = b'{"enabled": true, "parameters": {"port": 0, "address": "127.0.0.1"}}'
    return change(dice, dice.choice([
        whole[:dice.randrange(1, len(whole) - 1)],
        whole.replace(b'"', b"'"),
        whole + b"}",
        whole + b" " + whole,
        b"\xef\xbb\xbf" + whole[:-1],
        whole.replace(b"127", b"\xff\xfe"),
        whole.replace(b"127", b"\\ud800"),
        whole.replace(b"true", dice.choice([b"True", b"tru", b"nil", b"undefined", b"NaN", b"Infinity"])),
        whole[:20] + b"\0" + whole[20:],
        b"/* */" + whole,
        whole.replace(b"}}", b"},}"),
        dice.randbytes(dice.randrange(1, 200)) + b"{"]))


def deep_nesting(dice):
    depth = dice.choice([65, 66, 100, 1000, 10_000])
    opening, closing = dice.choice([("[", "]"), ('{"parameters":', "}"), ('[{"a":', "}]")])
    return change(dice, opening * depth + dice.choice(["", "1"]) + closing * dice.choice([0, depth, depth - 1]))


def huge_numbers(dice):
    number = dice.choice(["1e999", "-1e999", "9" * dice.randrange(20, 400), "-" + "9" * dice.randrange(20, 400), "1e400000",
                          "18446744073709551616", "-9223372036854775809", "4294967296", "65536", "-1"])
    return request("PUT", MODBUS, f'{{"parameters": {{"port": {number}}}}}'.encode())


def wrong_types(dice):
    key = dice.choice(PARAMETERS)
    value = dice.choice([None, [], {}, [1], {"a": 1}, [[]], *([5, True] if key in TEXTS else ["5", "true"])])
    return update(dice.choice([{"parameters": {key: value}}, {"enabled": 1 if value is True else value},
                               {"enabled": True, "parameters": 7 if value == {} else value}]))


def out_of_bounds(dice):
    return update({"parameters": dice.choice([
        {"port": dice.choice([-1, 65536, 2 ** 31, -2 ** 63, 2 ** 64 - 1])}, {"maxClients": dice.choice([0, 513, -5])},
        {"registerOrder": dice.choice([4, -1, 255])}, {"security": dice.choice([3, -1, 255])}, {"idleTimeout": dice.choice([0, 86401, 2 ** 40])}])})


def unknown_keys(dice):
    key = dice.choice(["nothing", "", "__proto__", "_links", "port ", "Port", "a" * 1000, "\u0000", "\ud83d\ude00", "parameters.port"])
    return update(dice.choice([{key: dice.randrange(10)}, {"enabled": True, key: {}}, {"parameters": {key: [None]}}]))


def wrong_arguments(dice):
    return request("POST", dice.choice(COMMANDS), json.dumps(dice.choice([
        5, "text", None, True, [], [[]], {"blocks": 5}, {"blocks": [5]}, {"blocks": {"type": "Stamp"}}, {"blocks": [{"type": 7}]},
        {"blocks": [{"type": "NoSuchType", "outputId": 400}]}, {"outputIdList": [5]}, {"outputIdList": "all"},
        {"outputIdList": [{"outputId": dice.choice([9000, 65534])}]}, {"outputId": "5"}, {"outputId": 9000, "newParams": 3},
        {"autoShift": "yes"}, {"newParams": []}])).encode())


def paths(dice):
    dots = dice.choice(["..", "%2e%2e", "%252e%252e", ".%2E", "%c0%ae%c0%ae", "..%00", "..;"])
    slash = dice.choice(["/", "%2f", "%5c", "%252f", "//", "/./"])
    path = dice.choice([
        "/controls/" + slash.join([dots] * dice.randrange(1, 8) + ["etc", "passwd"]), "/" + "a/" * dice.randrange(1, 2000),
        "/controls/%", "/controls/%z", "/controls/%4", "/controls/%00", "/controls/ModbusTcp%00", "/controls/%ff%fe", "/%2fcontrols",
        "/controls/ModbusTcp%2foutputs", "/controls/ModbusTcp/", "//controls", "/controls?" + "&" * dice.randrange(5000),
        "/controls/" + "%41" * dice.randrange(1, 3000), "/controls/hardware/99999999999999999999", "/scanners/-1",
        "/controls/modbustcp", "/relations/<script>", "/relations/%3Cscript%3E", "/jobs/..%2f..%2fetc%2fpasswd"])
    return request(dice.choice(["GET", "HEAD", "PUT", "POST", "DELETE", "OPTIONS"]), path, dice.choice([b"", b"[]"]))


def methods(dice):
    method = dice.choice(["DELETE", "TRACE", "CONNECT", "PROPFIND", "get", "BREW", "G" * 500, "GET GET", "", "G\x01T", "\xe9"])
    return request(method, dice.choice(["/controls", MODBUS + "/registerAssemblies", "*", "/", "localhost:80"]))


def no_http(dice):
    return dice.choice([
        dice.randbytes(dice.randrange(1, 300)) + b"\r\n\r\n",
        b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + dice.randbytes(100),
        b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n",
        b"GET /controls\r\n\r\n",
        b"GET /controls HTTP/9.9\r\n\r\n",
        b"GET /controls HTTP/1.1\nHost: localhost\n\n",
        b"GET /controls HTTP/1.1\r\n\r\n",
        b"GET /controls HTTP/1.1\r\nHost: a\r\nHost: b\r\n\r\n",
        b"GET /controls HTTP/1.1\r\nHost: localhost\r\n folded: yes\r\nno colon\r\n\r\n",
        b"GET /controls HTTP/1.1\r\nHost: localhost\r\nX\0: 1\r\n\r\n",
        b"\r\n" * dice.randrange(1, 50),
        b"\0" * dice.randrange(1, 500)])


def smuggled(dice):
    hidden = b"PUT /controls/ModbusTcp HTTP/1.1\r\nHost: localhost\r\nContent-Length: 18\r\n\r\n{\"enabled\": false}"
    headers = dice.choice([
        b"Content-Length: 4\r\nTransfer-Encoding: chunked", b"Transfer-Encoding: chunked\r\nContent-Length: 4",
        b"Content-Length: 4\r\nContent-Length: 5", b"Content-Length: 4, 5", b"Content-Length: -4", b"Content-Length: 0x4",
        b"Content-Length: 99999999999999999999", b"Content-Length : 4", b"Transfer-Encoding: xchunked\r\nContent-Length: 4"])
    if headers.endswith(b"xchunked\r\nContent-Length: 4"):
        hidden = b"[1]\n"  # an unknown coding: Content-Length determines the end of the body
    return b"PUT /controls/ModbusTcp HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n" + headers + b"\r\n\r\n" + hidden


def foreign(dice):
    name = dice.choice(["evil.example", "localhost.evil.example", "10.0.0.1", "[::]", "", "null", "a" * 1000])
    lines = dice.choice([f"Host: {name}", f"Host: localhost\r\nOrigin: http://{name}", "Host: localhost\r\nOrigin: null"])
    return f"PUT {MODBUS} HTTP/1.1\r\n{lines}\r\nContent-Length: 18\r\n\r\n{{\"enabled\": false}}".encode()


def large_headers(dice):
    return request("GET", "/controls", b"", *dice.choice([
        ["X: " + "x" * dice.randrange(16_000, 40_000)], ["X: 1"] * dice.randrange(2000, 5000), ["X" * 20_000 + ": 1"],
        ["If-Match: " + '"a",' * dice.randrange(1, 3000)], ["Accept: " + "text/event-stream," * 800]]))


def large_bodies(dice):
    size = dice.choice([1024 * 1024 + 1, 1024 * 1024 * 1024, 2 ** 63])
    return dice.choice([
        f"PUT {MODBUS} HTTP/1.1\r\nHost: localhost\r\nContent-Length: {size}\r\n\r\n".encode() + b" " * dice.randrange(100_000),
        f"PUT {MODBUS} HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n".encode() + b"fffff\r\n" + b" " * 100_000,
        f"PUT {MODBUS} HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n".encode() + b"ffffffffffffffff\r\n",
        f"PUT {MODBUS} HTTP/1.1\r\nHost: localhost\r\nTransfer-Encoding: chunked\r\n\r\n".encode() + b"zz\r\n\r\n"])


def whole_bodies(dice):
    return change(dice, b"[" + b" " * dice.randrange(1_000_000) + dice.choice([b"", b"]"]))


KINDS = [bad_json, deep_nesting, huge_numbers, wrong_types, out_of_bounds, unknown_keys, wrong_arguments, paths, methods, no_http,
         smuggled, foreign, large_headers]
RARE_KINDS = [large_bodies, whole_bodies]  # they take their time


class Attacker:
    """Sends requests as broken or hostile clients do."""

    def __init__(self, port, dice):
        self.port = port
        self.dice = dice
        self.open = collections.deque()  # clients that never complete their requests
        self.statuses = collections.Counter()

    def connect(self):
        return connect_to(self.port)

    def send(self, text):
        self.dice.choices([self.ask, self.ask_and_close_half, self.stop_half_way, self.leave_at_once], [85, 5, 5, 5])[0](text)

    def ask(self, text, ends=True):
        """The whole request; the client waits for the answer."""
        with self.connect() as client:
            try:
                client.sendall(text)
                if ends:
                    end_sending(client)  # so that the host does not wait for the rest of an incomplete request
                answer = receive_all(client)
            except BROKEN:
                answer = b""
        self.statuses[answer[9:12].decode("latin-1")] += 1

    def ask_and_close_half(self, text):
        with self.connect() as client:
            try:
                client.sendall(text)
                client.shutdown(socket.SHUT_RD)
                client.shutdown(socket.SHUT_WR)
            except OSError:
                pass  # closed by the other side already

    def stop_half_way(self, text):
        """Sends half a request. Its connection stays open until there are too many connections."""
        client = self.connect()
        try:
            client.sendall(text[:self.dice.randrange(1, max(2, min(len(text) // 2, 10_000)))])
        except BROKEN:
            pass
        self.open.append(client)
        if len(self.open) > MOST_OPEN:
            self.open.popleft().close()

    def leave_at_once(self, text):
        """Closes the connection with a reset, perhaps while the host sends the answer."""
        with self.connect() as client:
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
            try:
                client.sendall(text)
            except BROKEN:
                pass

    def end(self):
        while self.open:
            self.open.popleft().close()


def resident_memory(process):
    """KiB."""
    with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:"))


class Hostile(unittest.TestCase):
    def test_ten_thousand_hostile_requests_change_nothing(self):
        with Host("--log", "error") as host:
            self.attack_and_compare(host, host.http_port, REQUESTS)

    def test_hostile_requests_over_tls_change_nothing(self):
        with Host("--log", "error", "--https", "127.0.0.1:0") as host:
            self.attack_and_compare(host, TlsPort(host.ports["https"]), REQUESTS_OVER_TLS)

    def attack_and_compare(self, host, port, requests):
        dice = random.Random(SEED)
        with RestClient(host.http_port) as rest:
            before = rest.get("/controls").text
        attacker = Attacker(port, dice)
        self.attack(attacker, requests // 10)  # after it all one-time allocations are done
        memory = resident_memory(host.process)
        self.attack(attacker, requests - requests // 10)
        grown = resident_memory(host.process) - memory
        attacker.end()

        with RestClient(host.http_port) as rest:
            self.assertEqual(rest.get("/controls").text, before)
            self.assertEqual(rest.get("/health").json["status"], "ok")
        with ModbusClient(host.modbus_port) as client:
            self.assertEqual(client.read(9000, 1), [0])
        self.assertLess(grown, MEMORY_BOUND)
        self.assertEqual(attacker.statuses["500"], 0, [line for line in host.errors if line and "Request" in line])
        for status in ("200", "400", "403", "404", "405", "409", "413", "422", "431"):  # each occurred, so the kinds are effective
            self.assertGreater(attacker.statuses[status], 0, attacker.statuses)

    def attack(self, attacker, count):
        for number in range(count):
            kind = attacker.dice.choice(RARE_KINDS if number % 100 == 0 else KINDS)
            attacker.send(kind(attacker.dice))


if __name__ == "__main__":
    unittest.main()
