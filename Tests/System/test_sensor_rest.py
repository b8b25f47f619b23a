"""The sensor is run and watched over REST, beside a PLC, also with bad input."""

import contextlib
import http.client
import json
import math
import os
import pathlib
import re
import socket
import struct
import tempfile
import threading
import time
import unittest
import urllib.parse

from host import PATIENCE, Host, wait_until
from modbus import ModbusClient
from range_image import read_pcd, write_pcd
from rest import EventStream, RestClient, check_hal
from test_replay import small_scene

FAILED = 3  # the status of a command
MOST_STREAMS = 64
SPARE_MIB = max(0, int(os.environ.get("ZU_MEMORY_MIB", "64")) - 64)  # a sanitizer keeps what was freed
HEADER = struct.Struct("<4sIQQqIIff")
BYTES = "application/octet-stream"


@contextlib.contextmanager
def sensor(*arguments, **options):
    with Host(*arguments, **options) as host, RestClient(host.http_port) as rest:
        yield host, rest


def run(rest, command, **parameters):
    """The ended operation of a command."""
    answer = rest.post(f"/sensor/commands/{command}", parameters)
    if answer.status != 202:
        raise AssertionError(f"{command}: {answer.status} {answer.text}")
    place = answer.headers["Location"]
    return wait_until(lambda: (one := rest.get(place).json)["result"] != "running" and one, f"the end of {place}")


def pipelined(port, paths):
    """The answers to POST requests that go out in one write."""
    answers = []
    with socket.create_connection(("127.0.0.1", port), timeout=PATIENCE) as client:
        client.sendall("".join(f"POST {path} HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n\r\n" for path in paths).encode())
        file = client.makefile("rb")
        for _ in paths:
            status = int(file.readline().split()[1])
            headers = dict(line.decode().rstrip().lower().split(": ", 1) for line in iter(file.readline, b"\r\n"))
            file.read(int(headers.get("content-length", 0)))
            answers.append({"status": status, "headers": headers})
    return answers


def peak_mib(host):
    """The largest resident memory of the host so far."""
    text = pathlib.Path(f"/proc/{host.process.pid}/status").read_text()
    return int(re.search(r"VmHWM:\s+(\d+)", text)[1]) / 1024


class ByteStream:
    """The messages of a binary stream: (kind, frame, rows, columns, x0, spacing, numbers)."""

    def __init__(self, port, path):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=30)
        self.socket.sendall(f"GET {path} HTTP/1.1\r\nHost: localhost\r\nAccept: {BYTES}\r\n\r\n".encode())
        self.file = self.socket.makefile("rb")
        self.status = int(self.file.readline().split()[1])
        self.headers = dict(line.decode().rstrip().lower().split(": ", 1) for line in iter(self.file.readline, b"\r\n"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.file.close()
        self.socket.close()

    def next(self):
        chunk = self.file.read(int(self.file.readline(), 16))
        self.file.readline()
        kind, size, frame, _, _, rows, columns, x0, spacing = HEADER.unpack_from(chunk)
        if size != len(chunk):
            raise AssertionError(f"a message of {size} bytes in a chunk of {len(chunk)}")
        numbers = struct.unpack_from(f"<{(size - HEADER.size) // 4}f", chunk, HEADER.size)
        return kind, frame, rows, columns, x0, spacing, numbers


class Commands(unittest.TestCase):
    def test_a_client_runs_the_sensor(self):
        with sensor() as (host, rest):
            self.assertEqual(rest.get("/sensor").json["state"], "ready")
            with EventStream(host.http_port, "/events") as events:
                started = run(rest, "start")
                self.assertEqual((started["what"], started["result"], started["who"]), ("scan start", "done", "local"))
                self.assertEqual(events.next(), {"path": "/operations/1", "type": 2})
            self.assertEqual(rest.get("/sensor").json["state"], "running")
            wait_until(lambda: rest.get("/sensor").json["profiles"]["taken"] > 0, "a profile")
            self.assertEqual(run(rest, "trigger")["result"], "done")
            self.assertEqual(run(rest, "align")["result"], "done")
            self.assertEqual(rest.get("/sensor").json["alignment"], "aligned")
            self.assertEqual(run(rest, "clearAlignment")["result"], "done")
            self.assertEqual(run(rest, "load", job="default")["result"], "done")
            self.assertEqual(run(rest, "stop")["result"], "done")
            check_hal(self, rest.get("/sensor").json, "/sensor")
            names = [one["what"] for one in rest.get("/operations").json["operations"]]
            self.assertEqual(names, ["scan stop", "job load", "removal of the alignment", "alignment", "software trigger", "scan start"])
            trail = [entry["what"] for entry in rest.get("/audit?limit=1000").json["entries"]]
            self.assertIn("POST /sensor/commands/start", trail)
            self.assertIn("scan start", trail)
            metrics = rest.get("/metrics").text
            self.assertIn("zucontrol_sensor_running 0\n", metrics)
            self.assertIn('zucontrol_analog_output_amperes{output="0"} 0.004', metrics)

    def test_operations_of_a_plc_and_of_rest_exclude_each_other(self):
        with sensor() as (host, rest), ModbusClient(host.modbus_port) as plc:
            place = rest.post("/sensor/commands/align").headers["Location"]
            plc.write(0, [1, 1])
            self.assertEqual(plc.read(66, 2), [1, FAILED])
            busy = rest.post("/sensor/commands/stop")
            self.assertEqual((busy.status, busy.headers["Retry-After"]), (503, "1"))
            wait_until(lambda: rest.get(place).json["result"] == "done", "the alignment")

            plc.write(0, [2, 3])
            self.assertEqual(rest.post("/sensor/commands/start").status, 503)
            self.assertEqual(rest.get("/sensor").json["operation"]["protocol"], "ModbusTcp")
            wait_until(lambda: rest.get("/operations").json["operations"][0]["who"] == "ModbusTcp", "the operation of the PLC")

    def test_the_authority_is_kept_over_a_restart(self):
        with tempfile.TemporaryDirectory() as data:
            with sensor(data=data) as (host, rest), ModbusClient(host.modbus_port) as plc:
                self.assertEqual(rest.put("/sensor/authority", {"rest": 1, "idleSeconds": 1000}).status, 200)
                self.assertEqual(run(rest, "start")["result"], "done")
                plc.write(0, [1, 2])
                wait_until(lambda: rest.get("/sensor").json["authority"]["holder"] == "ModbusTcp", "the authority of the PLC")
                refused = rest.post("/sensor/commands/start")
                self.assertEqual((refused.status, refused.json["code"]), (409, -1000))
                self.assertIn("ModbusTcp has sent a command", refused.json["detail"])
            with sensor(data=data) as (host, rest):
                self.assertEqual(rest.get("/sensor/authority").json["idleSeconds"], 1000)
                self.assertEqual(rest.put("/sensor/authority", {"rest": 2}).json["rest"], 2)
                self.assertEqual(rest.post("/sensor/commands/start").status, 409)
                self.assertEqual(rest.put("/sensor/authority", {"rest": 7}).status, 422)

    def test_limits_decide_and_belong_to_the_job(self):
        with sensor("--start", "--still") as (host, rest):
            self.assertEqual(rest.post("/jobs/plain/save").status, 204)
            limits = {"zMax": {"enabled": True, "minimum": 0, "maximum": 24}}
            self.assertEqual(rest.put("/sensor/limits", limits).json["zMax"]["maximum"], 24)
            source = "/datasources/" + urllib.parse.quote("profile/zMax", safe="")
            wait_until(lambda: rest.get(source).json["decision"] == 0, "the decision")
            self.assertEqual(rest.put("/sensor/limits", {"zMax": {"minimum": 25}}).status, 422)
            self.assertEqual(rest.post("/jobs/limited/save").status, 204)

            report = rest.post("/jobs/plain/load").json
            self.assertEqual((report["sensor"]["source"], report["sensor"]["takenOver"]), ("job", ["parameters"]))
            self.assertFalse(rest.get("/sensor/limits").json["zMax"]["enabled"])
            wait_until(lambda: rest.get(source).json["decision"] == 1, "the decision of the other job")
            self.assertEqual(rest.post("/jobs/limited/load").status, 200)
            self.assertEqual(rest.get("/sensor/limits").json["zMax"], limits["zMax"])

    def test_bad_commands_are_refused(self):
        with sensor() as (host, rest):
            for command, body, status in (("fly", {}, 404), ("start", {"x": 1}, 422), ("align", {"scanner": "no"}, 422),
                                          ("align", {"scanner": 1}, 422), ("load", {}, 422), ("load", {"job": ""}, 422),
                                          ("start", [], 422), ("start", "{", 400)):
                with self.subTest(command=command, body=body):
                    self.assertEqual(rest.post(f"/sensor/commands/{command}", body).status, status)
            self.assertEqual(rest.get("/operations").json["operations"], [])
            self.assertEqual(rest.get("/operations/1").status, 404)
            failed = run(rest, "load", job="nowhere")
            self.assertEqual((failed["result"], failed["status"]), ("failed", -999))
            failed = run(rest, "trigger")
            self.assertEqual((failed["result"], failed["text"]), ("failed", "The sensor takes a trigger only while it scans"))


    def test_a_command_while_the_scan_stops_is_refused_for_now(self):
        with sensor("--start", "--rate", 5, modbus=False) as (host, rest):
            refused = 0
            for _ in range(200):  # the end of the stop is a race: once is enough
                stopped, started = pipelined(host.http_port, ["/sensor/commands/stop", "/sensor/commands/start"])
                self.assertEqual(stopped["status"], 202)
                self.assertIn(started["status"], (202, 503))
                if started["status"] == 503:
                    self.assertEqual(started["headers"]["retry-after"], "1")
                    refused += 1
                wait_until(lambda: rest.get("/sensor").json["operation"] is None, "the end of the operations")
                if refused:
                    break
                wait_until(lambda: rest.get("/sensor").json["state"] == "running", "the scan")
            self.assertGreater(refused, 0)
            self.assertEqual(rest.get("/sensor").json["state"], "ready")
            self.assertEqual(run(rest, "start")["result"], "done")

    def test_commands_do_not_hold_up_a_host_that_stops(self):
        with sensor("--start", modbus=False) as (host, _):
            statuses, sent = set(), threading.Event()

            def command():
                with contextlib.suppress(OSError, http.client.HTTPException), RestClient(host.http_port) as other:
                    while True:
                        statuses.add(other.post("/sensor/commands/align").status)
                        sent.set()

            thread = threading.Thread(target=command)
            thread.start()
            self.assertTrue(sent.wait(PATIENCE))
            begin = time.monotonic()
            self.assertEqual(host.stop(), 0)
            self.assertLess(time.monotonic() - begin, 20)  # a stop that hangs ends after 30 s
            thread.join(PATIENCE)
            self.assertFalse(thread.is_alive())
            self.assertLessEqual(statuses, {202, 503})


class Uploads(unittest.TestCase):
    SIZE = 100_000_000

    def upload(self, host, head, body):
        """The answer to an upload, and how many bytes of the body the host has taken before it closed the connection."""
        with socket.create_connection(("127.0.0.1", host.http_port), timeout=PATIENCE) as client:
            client.sendall(f"PUT /jobs/big HTTP/1.1\r\nHost: localhost\r\n{head}\r\n\r\n".encode())
            taken = 0
            with contextlib.suppress(ConnectionError):
                while taken < self.SIZE:
                    client.sendall(body)
                    taken += len(body)
            answer = b""
            with contextlib.suppress(ConnectionError):
                while data := client.recv(65536):
                    answer += data
            return answer, taken

    def test_an_upload_of_100_megabytes_is_refused_and_kept_nowhere(self):
        block = bytes(1 << 20)
        with sensor(modbus=False) as (host, rest):
            self.assertEqual(rest.get("/jobs").status, 200)
            before = peak_mib(host)
            for head, body in ((f"Content-Length: {self.SIZE}", block),
                               ("Transfer-Encoding: chunked", b"%x\r\n" % len(block) + block + b"\r\n")):
                with self.subTest(head=head):
                    answer, taken = self.upload(host, head, body)
                    self.assertLess(taken, self.SIZE)  # the connection is closed, as the page on REST says
                    if answer:  # a reset may overtake the answer
                        self.assertTrue(answer.startswith(b"HTTP/1.1 413 "), answer[:80])
            with socket.create_connection(("127.0.0.1", host.http_port), timeout=PATIENCE) as client:  # waits for the answer
                client.sendall(f"PUT /jobs/big HTTP/1.1\r\nHost: localhost\r\nContent-Length: {self.SIZE}\r\n\r\n".encode())
                answer = client.makefile("rb").read()
                self.assertTrue(answer.startswith(b"HTTP/1.1 413 "), answer[:80])
                self.assertIn(b"\r\nconnection: close\r\n", answer.lower())
            self.assertLess(peak_mib(host) - before, 8 + SPARE_MIB)
            self.assertEqual(rest.get("/jobs").status, 200)  # a connection that was open before
            self.assertNotIn("big", rest.get("/jobs").text)
            self.assertEqual([path.name for path in host.data.rglob("*") if path.stat().st_size > 1 << 20], [])


class Live(unittest.TestCase):
    def test_sources_show_value_and_destinations(self):
        with sensor("--start", "--still", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0") as (host, rest):
            source = "/datasources/" + urllib.parse.quote("profile/zMax", safe="")
            shown = wait_until(lambda: (one := rest.get(source).json)["value"] is not None and one, "a value")
            self.assertEqual((shown["value"], shown["unit"], shown["type"], shown["decision"]), (25.0, "mm", "Measurement", 1))
            places = [(one["protocol"], one["outputId"], one["registerAssembly"], one["enabled"]) for one in shown["destinations"]]
            self.assertIn(("ModbusTcp", 170, "registerAssembly-0", True), places)
            self.assertIn(("AsciiTcp", "zMax", None, True), places)
            self.assertIsNone(self.delivered(rest, source)["AsciiTcp"])  # it has no client
            everything = rest.get("/datasources").json
            self.assertEqual([one["id"] for one in everything["dataSources"]],
                             ["profile/stamp", "profile/zMax", "profile/zMin", "profile/width", "profile/meanZ", "profile/points"])
            check_hal(self, everything, "/datasources")
            self.assertEqual(rest.get("/datasources/nothing").status, 404)
            with ModbusClient(host.modbus_port) as plc:  # the same number; a new client's registers wait for the next result
                wait_until(lambda: plc.read(170, 2) == [0, 25000], "the value in the registers")
                last = self.delivered(rest, source)["ModbusTcp"]
                self.assertEqual((last["value"], last["decision"]), (25.0, 1))
                stamp = self.delivered(rest, "/datasources/profile%2Fstamp")["ModbusTcp"]
                self.assertEqual(stamp["stamp"]["encoder"], 10 * stamp["frame"])
                self.assertGreater(stamp["frame"], last["frame"] - 1)

    def test_what_was_delivered_last_stays_and_grows_old(self):
        with sensor("--start", "--still") as (host, rest):
            source = "/datasources/profile%2FzMax"
            with ModbusClient(host.modbus_port):
                wait_until(lambda: self.delivered(rest, source)["ModbusTcp"], "a delivery")
            run(rest, "stop")
            last = wait_until(lambda: (one := self.delivered(rest, source)["ModbusTcp"])["ageSec"] > 0.5 and one, "the end of the results")
            newest = rest.get(source).json
            self.assertEqual([last[key] for key in ("frame", "value", "decision")], [newest[key] for key in ("frame", "value", "decision")])

    @staticmethod
    def delivered(rest, source):
        """What was delivered of the source last, by service."""
        return {one["protocol"]: one["delivered"] for one in rest.get(source).json["destinations"]}

    def test_a_source_is_a_stream_of_new_values(self):
        with sensor("--start", "--still", modbus=False) as (host, rest):
            with EventStream(host.http_port, "/datasources/profile%2FzMax?rate=20") as events:
                frames = [events.next() for _ in range(5)]
            self.assertEqual({one["value"] for one in frames}, {25.0})
            self.assertEqual(sorted({one["frame"] for one in frames}), [one["frame"] for one in frames])

    def test_the_profile_is_a_document_and_a_stream(self):
        with sensor("--still", modbus=False) as (host, rest):
            empty = rest.get("/profile")
            self.assertEqual((empty.status, empty.json["x"], empty.json["frame"]), (200, [], None))
            self.assertEqual(rest.get("/rangeimage").json["z"], [])
            run(rest, "start")
            shown = wait_until(lambda: (one := rest.get("/profile").json)["x"] and one, "a profile")
            self.assertEqual((max(shown["z"]), min(shown["z"]), shown["x"][0], shown["x"][-1]), (25.0, 10.0, -30.0, 30.0))
            self.assertEqual(len(rest.get("/profile?points=10").json["x"]), 10)
            with ByteStream(host.http_port, "/profile?points=40") as stream:
                self.assertEqual((stream.status, stream.headers["transfer-encoding"]), (200, "chunked"))
                kind, first, rows, count, _, _, numbers = stream.next()
                self.assertEqual((kind, rows, len(numbers)), (b"ZUPR", 1, 2 * count))
                self.assertLessEqual(count, 40)
                self.assertEqual((numbers[0], max(numbers[count:])), (-30.0, 25.0))
                self.assertGreater(stream.next()[1], first)

    def test_the_range_image_comes_row_by_row(self):
        with sensor("--start", "--still", modbus=False) as (host, rest):
            grid = wait_until(lambda: (one := rest.get("/rangeimage?rows=3&columns=60").json)["rows"] == 3 and one, "three rows")
            self.assertEqual((grid["columns"], grid["x0"], grid["spacing"]), (60, -29.5, 1.0))
            self.assertEqual((len(grid["z"][0]), grid["z"][0][0], grid["z"][0][15]), (60, 10.0, 25.0))
            self.assertIsNone(grid["z"][0][30])  # the slot
            self.assertEqual(grid["frames"], list(range(grid["frames"][0], grid["frames"][0] + 3)))
            with ByteStream(host.http_port, "/rangeimage?rows=250&columns=60") as stream:
                kind, newest, rows, columns, x0, spacing, numbers = stream.next()
                self.assertEqual((kind, columns, x0, spacing, len(numbers)), (b"ZURI", 60, -29.5, 1.0, rows * 60))
                self.assertLessEqual(rows, 250)
                self.assertTrue(math.isnan(numbers[30]))
                for _ in range(10):  # no row comes twice; a loaded machine misses profiles, whose numbers are left out
                    _, frame, rows, *_ = stream.next()
                    self.assertGreaterEqual(frame - rows, newest)
                    newest = frame

    def test_a_replayed_range_image_is_shown_row_by_row(self):
        columns = 20
        with tempfile.NamedTemporaryFile(suffix=".pcd") as file:
            write_pcd(file.name, small_scene())
            scene = read_pcd(file.name)
            points = [[(x * 1000, z * 1000) for x, _, z in row if not math.isnan(z)] for row in scene]
            first, last = (edge(x for row in points for x, _ in row) for edge in (min, max))

            def check(frame, x0, spacing, heights):
                """The heights are those of the row that the number of the profile names, the highest one in each column."""
                self.assertAlmostEqual(x0, first + spacing / 2, 3)
                self.assertAlmostEqual(spacing, (last - first) / columns, 3)
                row = points[frame % len(points)]
                for column, height in enumerate(heights):
                    begin, end = first + column * spacing, first + (column + 1) * spacing
                    inside = [z for x, z in row if begin + 1e-3 < x < end - 1e-3]  # of those on an edge either column may have one
                    near = [z for x, z in row if begin - 1e-3 < x < end + 1e-3]
                    if height is None or math.isnan(height):
                        self.assertEqual(inside, [], f"frame {frame}, column {column}")
                    else:
                        self.assertTrue(any(abs(z - height) < 1e-4 for z in near), f"frame {frame}, column {column}")
                        self.assertGreaterEqual(height, max(inside, default=-math.inf) - 1e-4)

            with sensor("--start", "--rate", 100, "--replay", file.name, modbus=False) as (host, rest):
                path = f"/rangeimage?rows=30&columns={columns}"
                grid = wait_until(lambda: (one := rest.get(path).json)["rows"] == 30 and one, "thirty rows")
                for frame, heights in zip(grid["frames"], grid["z"], strict=True):
                    check(frame, grid["x0"], grid["spacing"], heights)
                self.assertTrue(any(height is not None for heights in grid["z"] for height in heights))
                with ByteStream(host.http_port, path) as stream:
                    for _ in range(10):
                        kind, frame, rows, count, x0, spacing, numbers = stream.next()
                        self.assertEqual((kind, count, len(numbers)), (b"ZURI", columns, rows * columns))
                        check(frame, x0, spacing, numbers[-columns:])  # the newest row has the number of the message

    def test_bad_rates_and_sizes_are_refused_and_large_ones_clamped(self):
        with sensor("--start", modbus=False) as (host, rest):
            for path, accept in (("/datasources/profile%2FzMax", "text/event-stream"), ("/profile", BYTES), ("/rangeimage", BYTES)):
                for rate in ("0", "-1", "0.05", "nan", "x", "", "1x"):
                    with self.subTest(path=path, rate=rate):
                        self.assertEqual(rest.get(f"{path}?rate={rate}", Accept=accept).status, 422)
            for query in ("/profile?points=1", "/profile?points=-5", "/profile?nothing=1", "/rangeimage?rows=0",
                          "/rangeimage?columns=1", "/rangeimage?rows=x"):
                with self.subTest(query=query):
                    self.assertEqual(rest.get(query).status, 422)
            self.assertEqual(rest.get("/rangeimage?rows=1000000&columns=1000000").json["columns"], 1024)
            with ByteStream(host.http_port, "/profile?rate=1000000") as stream:
                self.assertEqual(stream.next()[0], b"ZUPR")
                begin, count = time.monotonic(), 0
                while time.monotonic() < begin + 1:
                    stream.next()
                    count += 1
                self.assertLessEqual(count, 30)
            self.assertEqual(rest.get("/datasources", Accept="text/event-stream").status, 404)
            self.assertEqual(rest.get("/datasources/nothing", Accept="text/event-stream").status, 404)

    def test_viewers_are_bounded_and_pages_that_never_read_hold_nothing_up(self):
        with sensor("--start", modbus=False) as (host, rest), contextlib.ExitStack() as stack:
            viewers = [stack.enter_context(ByteStream(host.http_port, "/rangeimage?rows=256&columns=240&rate=1")) for _ in range(200)]
            statuses = [viewer.status for viewer in viewers]
            self.assertEqual(statuses.count(200), MOST_STREAMS)
            self.assertEqual(statuses.count(503), 200 - MOST_STREAMS)
            self.assertEqual(viewers[-1].headers["retry-after"], "1")
            taken = rest.get("/sensor").json["profiles"]["taken"]  # the viewers do not read: their sockets fill
            wait_until(lambda: rest.get("/sensor").json["profiles"]["taken"] > taken + 100, "further profiles")
            self.assertEqual(rest.get("/health").status, 200)
            last = [viewer for viewer in viewers if viewer.status == 200][-1]
            for _ in range(3):
                self.assertEqual(last.next()[0], b"ZURI")
            for viewer in viewers:
                viewer.socket.shutdown(socket.SHUT_RDWR)
            def is_free():
                with ByteStream(host.http_port, "/profile") as stream:
                    return stream.status == 200
            wait_until(is_free, "a place for a viewer")

    def test_the_host_stops_at_once_beside_streams(self):
        with Host("--start", modbus=False) as host, contextlib.ExitStack() as stack:
            for _ in range(8):
                self.assertEqual(stack.enter_context(ByteStream(host.http_port, "/rangeimage")).next()[0], b"ZURI")
            begin = time.monotonic()
            self.assertEqual(host.stop(), 0)
            self.assertLess(time.monotonic() - begin, 20)  # a stop that hangs ends after 30 s

    def test_a_stream_tells_that_it_lives(self):
        with sensor(modbus=False) as (host, rest), ByteStream(host.http_port, "/profile") as stream:
            kind, _, rows, count, *_ = stream.next()  # the sensor does not scan
            self.assertEqual((kind, rows, count), (b"ZUPR", 0, 0))


if __name__ == "__main__":
    unittest.main()
