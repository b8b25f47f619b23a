"""A broker, a decoder of Sparkplug payloads, and a host application that complains about every breach of the rules."""

import json
import pathlib
import queue
import shutil
import socket
import struct
import subprocess
import tempfile
import threading
import time

from host import PATIENCE, Host, wait_until

MOSQUITTO = shutil.which("mosquitto") or "/usr/sbin/mosquitto"
NODE = "/controls/SparkplugMqtt"
TYPES = {3: "int32", 4: "int64", 7: "uint32", 8: "uint64", 10: "double", 11: "boolean", 12: "string"}


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


class Broker:
    """`with Broker() as broker:` runs mosquitto on a port of its own. `stop` and `start` keep the port. `lines` are
    further lines of its configuration; a listener of one's own makes `port` a parameter. `prefix` are the words of a
    command that runs it elsewhere, in a network namespace for example, where `address` is its own."""

    made = []  # the ports of all, for a test that wants to look whether each is watched

    def __init__(self, *lines, port=None, address="127.0.0.1", prefix=()):
        self.port = port or free_port()
        self.made.append(self.port)
        self.address = address
        self.prefix = prefix
        self.lines = lines or ("allow_anonymous true",)
        self.process = None

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.start()
        return self

    def __exit__(self, *_):
        self.stop()
        self.folder.cleanup()

    def start(self):
        config = pathlib.Path(self.folder.name) / "mosquitto.conf"
        config.write_text("\n".join([f"listener {self.port} {self.address}", "persistence false", "user root", *self.lines, ""]))
        self.process = subprocess.Popen([*self.prefix, MOSQUITTO, "-c", str(config)], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        wait_until(lambda: self.is_listening() or self.process.poll() is not None, "the broker")
        if self.process.poll() is not None:
            raise AssertionError("the broker does not start")

    def is_listening(self):
        try:
            socket.create_connection((self.address, self.port), timeout=1).close()
            return True
        except OSError:
            return False

    def stop(self, kill=False):
        if self.process is not None:
            (self.process.kill if kill else self.process.terminate)()
            self.process.wait()
            self.process = None


# --- The payload: fields by their numbers.

def varint(data, place):
    number, shift = 0, 0
    while True:
        byte = data[place]
        number |= (byte & 127) << shift
        place, shift = place + 1, shift + 7
        if byte < 128:
            return number, place


def fields(data):
    place = 0
    while place < len(data):
        tag, place = varint(data, place)
        kind = tag & 7
        if kind == 0:
            value, place = varint(data, place)
        elif kind == 1:
            value, place = data[place:place + 8], place + 8
        elif kind == 5:
            value, place = data[place:place + 4], place + 4
        elif kind == 2:
            length, place = varint(data, place)
            value, place = data[place:place + length], place + length
            if len(value) != length:
                raise ValueError("a field is cut off")
        else:
            raise ValueError(f"no wire type: {kind}")
        yield tag >> 3, value


def decode_properties(data):
    keys, values = [], []
    for number, value in fields(data):
        if number == 1:
            keys.append(value.decode())
        elif number == 2:
            values.append(dict(fields(value)))
    if len(keys) != len(values):
        raise ValueError("keys and values of properties differ in number")
    return dict(zip(keys, values))


PROPERTY_VALUES = {3: ("Int32", int), 10: ("Double", lambda data: struct.unpack("<d", data)[0]), 12: ("String", bytes.decode)}


def plain_property(raw):
    """{"type": "Double", "value": 1.5} of a property as `decode_properties` has it; fails for a field of another type."""
    field = {3: 3, 10: 6, 12: 8}[raw[1]]
    name, convert = PROPERTY_VALUES[raw[1]]
    if set(raw) != {1, field}:
        raise ValueError(f"the fields of a property do not fit its type: {raw}")
    return {"type": name, "value": convert(raw[field])}


def decode_metric(data):
    metric = {"historical": False, "null": False, "value": None}
    for number, value in fields(data):
        if number == 1:
            metric["name"] = value.decode()
        elif number == 2:
            metric["alias"] = value
        elif number == 3:
            metric["timestamp"] = value
        elif number == 4:
            metric["type"] = value
        elif number == 5:
            metric["historical"] = bool(value)
        elif number == 7:
            metric["null"] = bool(value)
        elif number == 9:
            metric["properties"] = decode_properties(value)
        elif number in (10, 11):
            metric["value"] = value
        elif number == 12:
            metric["value"] = struct.unpack("<f", value)[0]
        elif number == 13:
            metric["value"] = struct.unpack("<d", value)[0]
        elif number == 14:
            metric["value"] = bool(value)
        elif number == 15:
            metric["value"] = value.decode()
    return metric


def decode(data):
    payload = {"metrics": []}
    for number, value in fields(data):
        if number == 1:
            payload["timestamp"] = value
        elif number == 2:
            payload["metrics"].append(decode_metric(value))
        elif number == 3:
            payload["seq"] = value
    return payload


def as_varint(number):
    data = b""
    while number > 127:
        data, number = data + bytes([number & 127 | 128]), number >> 7
    return data + bytes([number])


def text_field(number, data):
    return as_varint(number << 3 | 2) + as_varint(len(data)) + data


def encode_command(**metrics):
    """A payload with these metrics; blanks in names are underscores, and "/" a double underscore."""
    return encode({name.replace("__", "/").replace("_", " "): value for name, value in metrics.items()})


def encode(metrics):
    payload = b"\x08" + as_varint(int(time.time() * 1000))
    for name, value in metrics.items():
        if isinstance(value, bool):
            encoded = b"\x20\x0b\x70" + bytes([value])
        elif isinstance(value, int):
            encoded = b"\x20\x07\x50" + as_varint(value)
        elif isinstance(value, float):
            encoded = b"\x20\x0a\x69" + struct.pack("<d", value)
        else:
            encoded = b"\x20\x0c" + text_field(15, value.encode())
        payload += text_field(2, text_field(1, name.encode()) + encoded)
    return payload


# --- MQTT 3.1.1, as far as a host application needs it.

class MqttClient:
    """A connection. `take` is called with (topic, payload, qos, retained) on a thread of the client."""

    def __init__(self, port, name, take, will=None, context=None, address="127.0.0.1", patience=PATIENCE, keep_alive=60,
                 login=None):
        self.take = take
        self.patience = patience
        self.heard = time.monotonic()  # when the broker sent anything
        self.answers = queue.Queue()
        self.socket = socket.create_connection((address, port), timeout=patience)
        if context is not None:
            self.socket = context.wrap_socket(self.socket, server_hostname="localhost")
        flags, body = 2, self.text(name)
        if will is not None:
            topic, payload = will
            flags |= 4 | 8 | 32  # QoS 1, retained
            body += self.text(topic) + struct.pack(">H", len(payload)) + payload
        if login is not None:
            flags |= 64 | 128
            body += b"".join(self.text(text) for text in login)
        self.lock = threading.Lock()
        self.send(0x10, self.text("MQTT") + bytes([4, flags]) + struct.pack(">H", keep_alive) + body)
        self.socket.settimeout(None)
        self.thread = threading.Thread(target=self.read, daemon=True)
        self.thread.start()
        self.answers.get(timeout=patience)

    @staticmethod
    def text(text):
        return struct.pack(">H", len(text.encode())) + text.encode()

    def send(self, kind, body):
        with self.lock:
            self.socket.sendall(bytes([kind]) + as_varint(len(body)) + body)

    def subscribe(self, *topics):
        self.send(0x82, struct.pack(">H", 1) + b"".join(self.text(topic) + b"\x01" for topic in topics))
        self.answers.get(timeout=self.patience)

    def ping(self):
        self.send(0xC0, b"")

    def publish(self, topic, payload, retain=False):
        """With QoS 0; a retained message with QoS 1, whose answer is waited for."""
        if retain:
            self.send(0x33, self.text(topic) + struct.pack(">H", 7) + payload)
            self.answers.get(timeout=self.patience)
        else:
            self.send(0x30, self.text(topic) + payload)

    def close(self, orderly=True):
        try:
            if orderly:
                self.send(0xE0, b"")
            self.socket.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass
        self.thread.join(PATIENCE)
        self.socket.close()

    def read(self):
        stream = self.socket.makefile("rb")
        while True:
            try:
                head = stream.read(1)
                if not head:
                    return
                length, shift = 0, 0
                while True:
                    byte = stream.read(1)[0]
                    length |= (byte & 127) << shift
                    shift += 7
                    if byte < 128:
                        break
                body = stream.read(length)
            except (OSError, IndexError, ValueError):
                return
            self.heard = time.monotonic()
            kind = head[0] >> 4
            if kind in (2, 4, 9):
                self.answers.put(body)
            elif kind == 3:
                size = struct.unpack(">H", body[:2])[0]
                qos = head[0] >> 1 & 3
                if qos:
                    self.send(0x40, body[2 + size:4 + size])
                self.take(body[2:2 + size].decode(), body[2 + size + (2 if qos else 0):], qos, bool(head[0] & 1))


class Message:
    def __init__(self, kind, data, qos):
        payload = decode(data)
        self.kind = kind
        self.qos = qos
        self.data = data
        self.payload = payload
        self.metrics = payload["metrics"]
        self.seq = payload.get("seq")

    def __repr__(self):
        return f"{self.kind} {self.payload}"


class NodeRules:
    """Follows the messages of one node and its device, knows the values of their metrics, and keeps each breach of the
    standard's rules in `breaches`."""

    def __init__(self):
        self.breaches = []
        self.messages = []  # all, in order
        self.known = {}     # of the node and its device: alias -> name
        self.types = {}     # name -> type
        self.values = {}    # name -> last live metric
        self.history = []   # historical metrics with their names
        self.last_seq = None
        self.bd_seq = None
        self.node_born = self.device_born = False

    def follow(self, parts, data, qos, retained):
        """Takes a message of the node; `parts` are those of its topic. Returns it; none if it cannot be read."""
        kind = parts[2]
        try:
            message = Message(kind, data, qos)
        except (ValueError, IndexError, UnicodeDecodeError) as error:
            self.breaches.append(f"{kind} cannot be read: {error}")
            return None
        self.check_form(message, parts, qos, retained)
        getattr(self, "take_" + kind.lower())(message)
        return message

    def complain(self, condition, text, message):
        if condition:
            self.breaches.append(f"{text}: {message}")

    def check_form(self, message, parts, qos, retained):
        kind = message.kind
        self.complain(kind[0] == "N" and len(parts) != 4 or kind[0] == "D" and len(parts) != 5, "a wrong topic", parts)
        self.complain(retained, "a retained message", message)
        self.complain(kind != "NDEATH" and qos != 0, "a QoS other than 0", message)
        now = time.time() * 1000
        if kind != "NDEATH":
            self.complain(abs(message.payload.get("timestamp", 0) - now) > 60_000, "no timestamp in UTC", message)
            self.complain(message.seq is None or not 0 <= message.seq <= 255, "no sequence number", message)
        for metric in message.metrics:
            self.complain("timestamp" not in metric, "a metric without timestamp", message)
            self.complain(metric["null"] and metric["value"] is not None, "a null with a value", message)

    def check_seq(self, message):
        expected = 0 if message.kind == "NBIRTH" else (self.last_seq + 1) % 256 if self.last_seq is not None else None
        self.complain(expected is not None and message.seq != expected, f"expected sequence number {expected}", message)
        self.last_seq = message.seq

    def check_birth(self, message):
        for metric in message.metrics:
            self.complain(not metric.get("name"), "a metric of a birth without name", message)
            self.complain(metric.get("type") not in TYPES, "a metric of a birth without type", message)
            self.complain(metric["value"] is None and not metric["null"], "a metric of a birth without value", message)
        names = [metric.get("name", "").lower() for metric in message.metrics]
        self.complain(len(set(names)) != len(names), "two metrics with one name", message)

    def learn(self, message):
        for metric in message.metrics:
            name = metric.get("name")
            self.types[name] = metric.get("type")
            self.values[name] = metric
            if "alias" in metric:
                self.complain(metric["alias"] in self.known, "two metrics with one alias", message)
                self.known[metric["alias"]] = name

    def take_nbirth(self, message):
        self.check_seq(message)
        self.check_birth(message)
        metrics = {metric.get("name"): metric for metric in message.metrics}
        self.complain("bdSeq" not in metrics or metrics["bdSeq"].get("type") != 4, "no bdSeq", message)
        rebirth = metrics.get("Node Control/Rebirth", {})
        self.complain(rebirth.get("type") != 11 or rebirth.get("value") is not False or "alias" in rebirth,
                      "no Node Control/Rebirth that is false", message)
        self.bd_seq = metrics.get("bdSeq", {}).get("value")
        self.node_born, self.device_born = True, False
        self.known, self.types, self.values = {}, {}, {}
        self.learn(message)

    def take_dbirth(self, message):
        self.check_seq(message)
        self.check_birth(message)
        self.complain(not self.node_born, "a device before its node", message)
        self.device_born = True
        self.learn(message)

    def take_ddata(self, message):
        self.check_seq(message)
        self.complain(not self.device_born, "data before the birth", message)
        self.complain(not message.metrics, "data without metrics", message)
        self.complain(len({metric["historical"] for metric in message.metrics}) > 1, "live and historical in one", message)
        for metric in message.metrics:
            self.complain("name" in metric or metric.get("alias") not in self.known, "not by a known alias", message)
            self.complain("type" in metric, "data with a type", message)
            name = self.known.get(metric.get("alias"))
            if metric["historical"]:
                self.history.append({**metric, "name": name})
                continue
            before = self.values.get(name, {})
            self.complain(metric["timestamp"] < before.get("timestamp", 0) and name.startswith("State/"), "not in order",
                          message)
            self.values[name] = metric

    def take_ndata(self, message):
        self.breaches.append(f"the node has no data: {message}")

    def take_ddeath(self, message):
        self.check_seq(message)
        self.complain(not self.device_born, "a death before the birth", message)
        self.device_born = False

    def take_ndeath(self, message):
        names = [metric.get("name") for metric in message.metrics]
        self.complain(names != ["bdSeq"] or message.metrics[0].get("type") != 4, "not bdSeq alone", message)
        self.complain(message.seq is not None, "a sequence number", message)
        if message.metrics and message.metrics[0]["value"] == self.bd_seq:
            self.node_born = self.device_born = False
            self.last_seq = None


def state_message(host_id, online, stamp):
    """Topic and payload by which a host application tells its state; `stamp` is the time of its connection."""
    return f"spBv1.0/STATE/{host_id}", json.dumps({"online": online, "timestamp": stamp}).encode()


class HostApplication(NodeRules):
    """A host on a broker: takes the messages of a node. With `state` it tells its STATE under that id. `login` is a user and
    a password."""

    made = []  # all, for a test that wants to look at the breaches of each

    def __init__(self, port, state=None, context=None, login=None):
        super().__init__()
        self.login = login
        self.context = context
        self.state = state
        self.topics = set()
        self.commands = []  # payloads of all hosts
        self.lock = threading.RLock()
        self.stamp = int(time.time() * 1000)
        self.port = port
        self.made.append(self)

    def __enter__(self):
        will = None
        if self.state is not None:
            will = self.state_message(False)
        self.client = MqttClient(self.port, f"host{id(self)}", self.take, will, self.context, login=self.login)
        self.client.subscribe("spBv1.0/#")
        if self.state is not None:
            self.client.publish(*self.state_message(True), retain=True)
        return self

    def __exit__(self, *_):
        self.client.close(orderly=True)

    def die(self):
        """Ends the connection without a word: the broker publishes the will."""
        self.client.close(orderly=False)

    def state_message(self, online):
        return state_message(self.state, online, self.stamp)

    def command(self, topic, payload):
        self.client.publish(topic, payload)

    def rebirth(self, node="ZuControl/NCMD/node"):
        self.command("spBv1.0/" + node, encode({"Node Control/Rebirth": True}))

    def device_command(self, metrics, device="ZuControl/DCMD/node/sensor"):
        self.command("spBv1.0/" + device, encode(metrics))

    def of_kind(self, kind):
        with self.lock:
            return [message for message in self.messages if message.kind == kind]

    def value(self, name):
        with self.lock:
            return self.values.get(name, {}).get("value")

    def wait_for(self, condition, what):
        return wait_until(condition, f"{what}; breaches: {self.breaches}; last: {self.messages[-3:]}")

    def take(self, topic, data, qos, retained):
        parts = topic.split("/")
        self.topics.add(topic)
        if parts[1] == "STATE":
            return
        if parts[2] in ("NCMD", "DCMD"):
            self.commands.append(data)
            return
        with self.lock:
            message = self.follow(parts, data, qos, retained)
            if message is not None:
                self.messages.append(message)


def run_openssl(*arguments):
    subprocess.run(["openssl", *arguments], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def make_authority(folder, name):
    """NAME.pem and NAME.key, an authority of certificates."""
    run_openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
                "-subj", f"/CN={name}", "-keyout", f"{folder}/{name}.key", "-out", f"{folder}/{name}.pem")


def make_certificate(folder, authority, name, names):
    """NAME.pem and NAME.key, signed by the authority, for these names."""
    extension = pathlib.Path(folder) / f"{name}.ext"
    extension.write_text(f"subjectAltName={names}\n")
    run_openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj", f"/CN={name}",
                "-keyout", f"{folder}/{name}.key", "-out", f"{folder}/{name}.csr")
    run_openssl("x509", "-req", "-in", f"{folder}/{name}.csr", "-CA", f"{folder}/{authority}.pem", "-CAkey",
                f"{folder}/{authority}.key", "-CAcreateserial", "-days", "2", "-extfile", str(extension), "-out",
                f"{folder}/{name}.pem")


def metrics(rest):
    return rest.get(NODE + "/metrics").json


def sparkplug_host(*arguments, servers=(), data=None, environment=None, **parameters):
    """A host with the service on; `servers` are ports of this machine or addresses."""
    words = ["--enable", "SparkplugMqtt"]
    for number, server in enumerate(servers, 1):
        address = f"127.0.0.1:{server}" if isinstance(server, int) else server
        words += ["--param", f"SparkplugMqtt.server{number}={address}"]
    for key, value in {"period": 0, "keepAlive": 5, **parameters}.items():
        words += ["--param", f"SparkplugMqtt.{key}={value}"]
    return Host(*words, *arguments, modbus=False, data=data, environment=environment)
