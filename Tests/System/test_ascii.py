"""The line protocol, against the real host: values, operations, and errors of clients."""

import json
import random
import re
import socket
import tempfile
import time
import unittest

from ascii_client import OUTPUTS, PHASES, AsciiClient, ascii_host, data_line
from host import PATIENCE, wait_until
from modbus import ModbusClient
from pages import expect, session, session_host
from rest import RestClient

ASCII = "/controls/AsciiTcp"
TOO_LONG = "ERROR -997 A request has at most 1024 bytes"


def connect(host, **options):
    return AsciiClient(host.ports["AsciiTcp"], **options)


def metrics(rest):
    return rest.get(ASCII + "/metrics").json


def is_refused(port):
    """Whether the port refuses clients: no program listens, or the connection is closed at once."""
    try:
        with socket.create_connection(("127.0.0.1", port), timeout=PATIENCE) as client:
            return client.recv(1) == b""
    except OSError:
        return True


class Pages(unittest.TestCase):
    def test_the_session_of_the_page(self):
        self.run_session("docs/ascii.md", "A session with nc", 9)

    def test_the_session_of_the_readme(self):
        self.run_session("README.md", "A session with a script", 2)

    def run_session(self, page, heading, count):
        arguments, steps = session(page, heading)
        self.assertEqual(len(steps), count)
        with session_host(arguments, {"AsciiTcp": "5025"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)


class Values(unittest.TestCase):
    def test_every_value_of_every_frame_is_exact(self):
        with ascii_host("--rate", 500) as host, connect(host) as client:
            self.assertEqual(client.ask("SUBSCRIBE"), "OK")
            self.assertEqual(client.ask("START"), "OK")
            lines = []
            while len(lines) < 450:
                line = client.line()
                if line != "DONE":
                    lines.append(line)
            self.assertEqual(lines, [data_line(frame) for frame in range(450)])
            client.send("UNSUBSCRIBE\n")
            while client.line() != "OK":
                pass
            self.assertEqual(client.ask("LIST"), "OK 5 " + " ".join(OUTPUTS))

    def test_get_gives_values_of_the_part(self):
        with ascii_host("--start", "--rate", 500) as host, connect(host) as client:
            for name in OUTPUTS:
                seen = set()

                def has_all():
                    seen.add(client.ask(f"GET {name}"))
                    return seen >= {f"OK {name} {phase[name]} 1" for phase in PHASES}

                wait_until(has_all, f"every value of {name}")
                self.assertLessEqual(seen - {f"OK {name} none 0"}, {f"OK {name} {phase[name]} 1" for phase in PHASES})

    def test_a_name_has_no_value_before_the_first_result(self):
        with ascii_host() as host, connect(host) as client:
            self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            self.assertEqual(client.ask("GET depth"), "ERROR -999 There is no output of this name")

    def test_a_slow_reader_costs_its_own_lines_and_is_reported(self):
        with ascii_host("--start", "--rate", 20000) as host, RestClient(host.http_port) as rest:
            with connect(host, receive_buffer=4096) as slow, connect(host) as other:
                self.assertEqual(slow.ask("SUBSCRIBE"), "OK")
                wait_until(lambda: other.ask("GET zMax").startswith("OK zMax ") and metrics(rest)["controlDrops"] > 0,
                           "a dropped line")
                wait_until(lambda: "Control drops detected for ASCII over TCP protocol." in
                           [problem["text"] for problem in rest.get("/problems").json["problems"]], "the problem")
                lines = [slow.line() for _ in range(100)]
                frames = [int(line.split(" ")[1]) for line in lines]
                self.assertEqual(lines, [data_line(frame) for frame in frames])  # whole
                self.assertEqual(frames, sorted(set(frames)))  # in order, with gaps where the client was too slow
                wait_until(lambda: metrics(rest)["clients"] == 2, "the number of clients")
            with connect(host) as client:
                self.assertEqual(client.run("STOP"), "DONE")
                self.assertEqual(client.run("START"), "DONE")
                self.assertEqual(client.run("STOP"), "DONE")
            wait_until(lambda: rest.get("/problems").json["problems"] == [], "the problem to go until the next drop")


class Operations(unittest.TestCase):
    def test_start_and_stop(self):
        with ascii_host() as host, connect(host) as client:
            self.assertEqual(client.status()["operation"], "none")
            self.assertEqual(client.run("START"), "DONE")
            wait_until(lambda: client.status()["state"] == "running", "the run state")
            self.assertEqual(client.run("TRIGGER"), "DONE")
            self.assertEqual(client.run("STOP"), "DONE")
            wait_until(lambda: client.status()["state"] == "ready", "the run state")
            self.assertEqual(client.run("TRIGGER"), "FAILED")
            self.assertEqual(client.status()["operation"], "failed")

    def test_an_alignment_takes_its_time_and_keeps_others_out(self):
        with ascii_host() as host, connect(host) as client, connect(host) as other:
            self.assertEqual(client.ask("ALIGN"), "OK")
            self.assertEqual(other.ask("START"),
                             "ERROR -976 An operation that a client of this service began is still running")
            self.assertEqual(other.status()["operation"], "running")
            self.assertEqual(client.line(), "DONE")
            self.assertEqual(other.run("CLEARALIGN"), "DONE")

    def test_a_job_that_does_not_exist_fails(self):
        with ascii_host("--job", "line7") as host, connect(host) as client:
            self.assertEqual(client.run("LOAD nowhere"), "FAILED")
            self.assertEqual(client.ask("LOAD"), "ERROR -997 LOAD needs the name of a job")
            wait_until(lambda: client.status()["job"] == "line7", "the name of the job")


class Jobs(unittest.TestCase):
    def test_a_client_loads_a_job_and_keeps_its_connection(self):
        with ascii_host("--job", "line7") as host, RestClient(host.http_port) as rest, connect(host) as client:
            self.assertEqual(rest.post("/jobs/spare/save").status // 100, 2)  # a copy of what is loaded
            rest.post(ASCII + "/outputs/commands/remove", {"outputId": "points"})
            rest.put(ASCII, {"parameters": {"decimals": 1}})
            self.assertEqual(client.ask("LIST"), "OK 4 meanZ width zMax zMin")

            self.assertEqual(client.run("LOAD spare"), "DONE")
            self.assertEqual(client.ask("LIST"), "OK 5 meanZ points width zMax zMin")
            wait_until(lambda: client.status()["job"] == "spare", "the name of the job")
            self.assertEqual(rest.get(ASCII).json["parameters"]["decimals"], 3)

            self.assertEqual(client.run("LOAD line7"), "DONE")  # its changes were saved before
            self.assertEqual(client.ask("LIST"), "OK 4 meanZ width zMax zMin")
            self.assertEqual(rest.get(ASCII).json["parameters"]["decimals"], 1)

    def test_an_empty_map_comes_back_empty(self):
        with ascii_host("--job", "empty") as host, RestClient(host.http_port) as rest, connect(host) as client:
            self.assertEqual(rest.post("/jobs/full/save").status // 100, 2)
            rest.post(ASCII + "/outputs/commands/removeAll")
            self.assertEqual(client.run("LOAD full"), "DONE")
            self.assertEqual(client.ask("LIST"), "OK 5 meanZ points width zMax zMin")
            self.assertEqual(client.run("LOAD empty"), "DONE")
            self.assertEqual(client.ask("LIST"), "OK 0")

    def test_the_last_text_outlives_a_restart_whatever_the_job(self):
        with tempfile.TemporaryDirectory() as data:
            with ascii_host("--job", "first", data=data) as host, RestClient(host.http_port) as rest:
                rest.post(ASCII + "/commands/sendText", {"text": "shift ends"})
            with ascii_host("--job", "second", data=data) as host, RestClient(host.http_port) as rest:
                wait_until(lambda: metrics(rest)["lastText"] == "shift ends", "the text")


class Sensor(unittest.TestCase):
    def test_outputs_are_driven_and_come_back_in_the_stamp(self):
        with ascii_host("--start", "--enable", "ModbusTcp", "--param", "ModbusTcp.port=0") as host:
            with connect(host) as client, ModbusClient(host.modbus_port) as plc:
                for request, inputs in (("DOUT 0 1", 1), ("DOUT 1 1", 3), ("DOUT 0 0", 2), ("DOUT 1 0", 0)):
                    self.assertEqual(client.ask(request), "OK")
                    wait_until(lambda: plc.read(166, 1) == [inputs], f"the inputs behind {request}")
            with connect(host) as client:
                self.assertEqual(client.ask("AOUT 1 12.5"), "OK")
                self.assertEqual(client.ask("SERIAL 0 part 7 is good"), "OK")
                host.wait_for_log("part 7 is good")

    def test_what_an_output_does_not_take_is_refused(self):
        with ascii_host() as host, connect(host) as client:
            self.assertEqual(client.ask("DOUT 2 1"), "ERROR -999 There is no such output")
            self.assertRegex(client.ask("AOUT 0 25"), "^ERROR -997 ")
            self.assertEqual(client.ask("AOUT 0 much"), "ERROR -997 AOUT needs the index of an output and a current in mA")
            self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")

    def test_resources_are_read(self):
        with ascii_host() as host, RestClient(host.http_port) as rest, connect(host) as client:
            self.assertEqual(client.ask("READ /controls/AsciiTcp#/enabled"), "OK true")
            self.assertEqual(client.ask("READ /controls/AsciiTcp#/parameters/address"), 'OK "127.0.0.1"')
            self.assertEqual(client.ask("READ /controls/AsciiTcp#/nothing"), "OK null")
            self.assertEqual(json.loads(client.ask("READ /controls/AsciiTcp/outputs#/map")[3:]),
                             rest.get(ASCII + "/outputs").json["map"])
            self.assertRegex(client.ask("READ /nowhere"), "^ERROR -999 ")
            client.send("READ /controls/AsciiTcp#/enabled\nLIST\n")
            client.end_sending()
            self.assertEqual([client.line() for _ in range(3)], ["OK true", "OK 5 meanZ points width zMax zMin", None])


class Configuration(unittest.TestCase):
    def test_a_changed_map_is_seen_within_a_second(self):
        with ascii_host("--start", "--rate", 500) as host, RestClient(host.http_port) as rest, connect(host) as client:
            def change(command, arguments, request, answers):
                began = time.monotonic()
                done = rest.post(f"{ASCII}/outputs/commands/{command}", arguments)
                self.assertEqual(done.status, 204, done.text)
                wait_until(lambda: client.ask(request) in answers, answers)
                self.assertLess(time.monotonic() - began, 1)

            change("remove", {"outputId": "zMax"}, "GET zMax", ["ERROR -999 There is no output of this name"])
            change("add", {"outputId": "largest z", "source": "profile/zMax"}, "GET largest z",
                   [f"OK largest%20z {phase['zMax']} 1" for phase in PHASES])
            change("updateId", {"map": [{"outputId": "points"}, {"outputId": "Points"}]}, "LIST",
                   ["OK 5 Points largest%20z meanZ width zMin"])
            change("removeAll", {}, "LIST", ["OK 0"])
            change("addAll", {"map": [{"source": "profile/width"}, {"outputId": "frame", "source": "profile/stamp"}]},
                   "LIST", ["OK 2 frame profile/width"])
            client.send("SUBSCRIBE\n")
            self.assertEqual(client.line(), "OK")
            wait_until(lambda: re.fullmatch(r"DATA (\d+) frame=\1\.000:1 profile/width=[26]0\.000:1", client.line()),
                       "a line of the new outputs")

    def test_digits_and_bounds(self):
        with ascii_host("--start") as host, RestClient(host.http_port) as rest, connect(host) as client:
            self.assertEqual(rest.put(ASCII, {"parameters": {"decimals": 0}}).status, 200)
            wait_until(lambda: re.fullmatch(r"OK width [26]0 1", client.ask("GET width")), "a value without digits")
            before = rest.get(ASCII).text
            for wrong in ({"decimals": 10}, {"maxClients": 0}, {"idleTimeout": 0}):
                self.assertEqual(rest.put(ASCII, {"parameters": wrong}).status, 422)
            self.assertEqual(rest.get(ASCII).text, before)

    def test_another_port_is_bound_anew_and_a_busy_one_changes_nothing(self):
        with ascii_host() as host, RestClient(host.http_port) as rest, connect(host) as client:
            client.ask("LIST")  # after the answer the server has accepted the client
            with socket.create_server(("127.0.0.1", 0)) as taken:
                busy = taken.getsockname()[1]
                refused = rest.put(ASCII, {"parameters": {"port": busy}})
                self.assertEqual((refused.status, refused.json["detail"]), (
                    503, f"ASCII over TCP cannot listen on 127.0.0.1:{busy}: Address already in use"))
            self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            with connect(host) as again:
                self.assertEqual(again.ask("GET zMax"), "OK zMax none 0")
            self.assertEqual(rest.put(ASCII, {"parameters": {"port": busy}}).status, 200)
            wait_until(lambda: metrics(rest)["listening"] == f"127.0.0.1:{busy}", "the new place")
            with AsciiClient(busy) as moved:
                self.assertEqual(moved.ask("GET zMax"), "OK zMax none 0")
            self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            self.assertTrue(is_refused(host.ports["AsciiTcp"]))

    def test_a_text_reaches_every_client(self):
        with ascii_host() as host, RestClient(host.http_port) as rest, connect(host) as first, connect(host) as second:
            first.ask("HELP")
            second.ask("HELP")
            command = ASCII + "/commands/sendText"
            self.assertEqual(rest.post(command, {"text": "shift ends"}).json, {"clients": 2})
            self.assertEqual((first.line(), second.line()), ("TEXT shift ends", "TEXT shift ends"))
            self.assertEqual(rest.post(command, {"text": "flat", "parameters": {"text": "inner"}}).json, {"clients": 2})
            self.assertEqual(first.line(), "TEXT inner")
            for wrong in ({}, {"text": ""}, {"text": "a\nb"}, {"text": "x" * 257}):
                refused = rest.post(command, wrong)
                self.assertEqual((refused.status, refused.json["detail"]),
                                 (422, "A text has 1 to 256 bytes and no control character"))
            self.assertEqual(rest.post(command, {"text": 7}).status, 400)
            wait_until(lambda: metrics(rest)["lastText"] == "inner", "the text")
            self.assertEqual(rest.post(ASCII + "/commands/disconnectAll").json, {"clients": 2})
            self.assertEqual((second.line(), second.line()), ("TEXT inner", None))
            self.assertEqual(rest.post(ASCII + "/commands/sendtext", {"text": "a"}).status, 404)
            self.assertEqual(rest.put(command, {"text": "a"}).status, 405)


class Strangers(unittest.TestCase):
    def test_a_line_that_is_too_long_is_refused_once(self):
        with ascii_host() as host, connect(host) as client:
            for length in (1025, 4096, 1_000_000):
                client.send("A" * length + "\n")
                self.assertEqual(client.line(), TOO_LONG)
                self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            self.assertEqual(client.ask("GET " + "A" * 1020), "ERROR -999 There is no output of this name")

    def test_half_closed_clients_get_all_their_answers(self):
        with ascii_host() as host:
            for _ in range(100):
                with connect(host) as client:
                    client.send("GET zMax\nLIST\nSTA")
                    client.end_sending()
                    self.assertEqual([client.line() for _ in range(3)],
                                     ["OK zMax none 0", "OK 5 meanZ points width zMax zMin", None])
            with connect(host) as client:
                client.send("START\n")
                client.end_sending()
                self.assertEqual([client.line() for _ in range(3)], ["OK", "DONE", None])

    def test_idle_clients_make_room_and_subscribers_do_not(self):
        with ascii_host("--param", "AsciiTcp.maxClients=2", "--param", "AsciiTcp.makeRoomAfter=1") as host, \
                connect(host) as subscriber, connect(host) as idle:
            self.assertEqual(subscriber.ask("SUBSCRIBE"), "OK")
            self.assertEqual(idle.ask("GET zMax"), "OK zMax none 0")

            def is_served():
                try:
                    with connect(host) as client:
                        return client.ask("GET zMax") == "OK zMax none 0"
                except OSError:
                    return False

            wait_until(is_served, "the place of the idle client")
            self.assertIsNone(idle.line())
            self.assertEqual(subscriber.ask("GET zMax"), "OK zMax none 0")

    def test_a_hundred_clients_beyond_the_cap_are_turned_away_while_all_others_are_in_use(self):
        with ascii_host("--param", "AsciiTcp.maxClients=4", "--param", "AsciiTcp.makeRoomAfter=600") as host, RestClient(host.http_port) as rest:
            kept = [connect(host) for _ in range(4)]
            for client in kept:
                self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            for _ in range(100):
                self.assertTrue(is_refused(host.ports["AsciiTcp"]))
            wait_until(lambda: (metrics(rest)["rejectedClients"], metrics(rest)["clients"]) == (100, 4), "the counts")
            for client in kept:
                self.assertEqual(client.ask("GET zMax"), "OK zMax none 0")
            kept.pop().__exit__()

            def is_served():
                with connect(host) as next_one:
                    next_one.send("GET zMax\n")
                    try:
                        return next_one.line() == "OK zMax none 0"
                    except OSError:
                        return False

            wait_until(is_served, "the place that has become free")
            for client in kept:
                client.__exit__()

    def test_a_silent_client_is_dropped_and_a_subscriber_is_not(self):
        with ascii_host("--param", "AsciiTcp.idleTimeout=1") as host, connect(host) as subscriber:
            self.assertEqual(subscriber.ask("SUBSCRIBE"), "OK")
            with connect(host) as silent:
                silent.send("LIS")
                self.assertIsNone(silent.line())
            self.assertEqual(subscriber.ask("GET zMax"), "OK zMax none 0")

    def test_ten_thousand_lines_of_noise_change_nothing(self):
        seed = random.randrange(1 << 32)
        noise = random.Random(seed)
        words = [b"GET", b"SUBSCRIBE", b"UNSUBSCRIBE", b"LIST", b"STATUS", b"HELP", b"zMax", b" ", b"\t", b"\r", b"\x00", b"\xff",
                 b"%", b"%41", b"=", b"\x1b[A", b"{}", b"-1", b"LOAD"]
        with ascii_host() as host, RestClient(host.http_port) as rest, self.subTest(seed=seed):
            for _ in range(10):
                with connect(host) as client:
                    lines = [b"".join(noise.choices(words, k=noise.randrange(6))) for _ in range(1000)]
                    lines = [line for line in lines if not line.strip(b" \t\r").startswith((b"LOAD ", b"LOAD\t", b"SUBSCRIBE"))]
                    client.send(b"\n".join(lines) + b"\nLIST\n")
                    client.end_sending()
                    answers = [client.line() for _ in range(len(lines) + 1)]
                    self.assertTrue(all(re.match(r"OK|ERROR -\d+ .", answer) for answer in answers))
                    self.assertEqual(answers[-1], "OK 5 meanZ points width zMax zMin")
                    self.assertIsNone(client.line())
            self.assertEqual(rest.get(ASCII).json["status"], 0)


if __name__ == "__main__":
    unittest.main()
