"""If another program has the port of a service, the host tries again to start it, and it stays enabled in its job."""

import json
import pathlib
import signal
import socket
import sqlite3
import tempfile
import time
import unittest
import zlib

from host import BIN, Host, wait_until
from modbus import ModbusClient
from rest import EventStream, RestClient

MODBUS = "/controls/ModbusTcp"
RUNNING = 0
FAILED_TO_START = 4


def saved_enabled(file, service="ModbusTcp"):
    """The configuration of the service in the job file."""
    with sqlite3.connect(f"file:{file}?mode=ro", uri=True) as archive:
        data, size = archive.execute(
            "SELECT data, sz FROM sqlar WHERE name = ?", (f"controls/{service}/config.json",)).fetchone()
    archive.close()
    return json.loads(data if len(data) == size else zlib.decompress(data))["zu:control"]["enabled"]


def sentences(rest):
    return [problem["text"] for problem in rest.get("/problems").json["problems"] if problem["source"] == "Services"]


def state(rest):
    document = rest.get(MODBUS).json
    return document["enabled"], document["status"]


class StartRetry(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name)
        self.job = self.data / "default.zpjob"
        self.taken = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(self.taken.close)
        self.port = self.taken.getsockname()[1]

    def host(self, *arguments):
        return Host(*arguments, data=self.data, modbus=False)

    def write_job(self, **settings):
        """Leaves a job in the data folder that enables the service on the occupied port."""
        with self.host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.put(MODBUS, {"parameters": {"port": self.port, **settings}}).status, 200)
        with sqlite3.connect(self.job) as archive:
            name = "controls/ModbusTcp/config.json"
            data, size = archive.execute("SELECT data, sz FROM sqlar WHERE name = ?", (name,)).fetchone()
            document = json.loads(data if len(data) == size else zlib.decompress(data))
            document["zu:control"]["enabled"] = True
            data = json.dumps(document).encode()
            archive.execute("UPDATE sqlar SET data = ?, sz = ? WHERE name = ?", (data, len(data), name))
        archive.close()

    def expect_wanted(self, rest):
        self.assertEqual(state(rest), (False, FAILED_TO_START))
        [sentence] = sentences(rest)
        self.assertRegex(sentence, r"^Service ModbusTcp could not be started \(.*Address already in use.*\)\. "
                                   r"The host tries again within (1 second|\d+ seconds)\.$")

    def wait_until_saved(self, rest):
        wait_until(lambda: not rest.get("/jobs").json["jobs"][0]["modified"])

    def test_a_service_whose_port_is_taken_comes_up_by_itself_when_it_is_free(self):
        self.write_job()
        with self.host() as host, RestClient(host.http_port) as rest:
            self.expect_wanted(rest)
            self.wait_until_saved(rest)
            with EventStream(host.http_port, "/events") as events:
                self.taken.close()
                wait_until(lambda: state(rest) == (True, RUNNING), "the service")
                self.assertEqual(events.next()["path"], MODBUS)
            with ModbusClient(self.port) as client:
                self.assertEqual(client.read(9000, 2), [0, 0])
            self.assertEqual(rest.get("/problems").json["problems"], [])
            self.assertFalse(rest.get("/jobs").json["jobs"][0]["modified"], "an attempt is no change")

    def test_a_kill_and_restarts_do_not_switch_the_service_off(self):
        self.write_job()
        for sent in (signal.SIGTERM, signal.SIGKILL, signal.SIGTERM):
            with self.host() as host, RestClient(host.http_port) as rest:
                self.expect_wanted(rest)
                self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": sent + 1}}).status, 200)
                self.assertEqual(rest.post("/jobs/default/save").status, 204)
                self.expect_wanted(rest)
                host.stop(sent)
                host.process.returncode = 0
            self.assertTrue(saved_enabled(self.job))
        self.taken.close()
        with self.host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(host.ports["ModbusTcp"], self.port)
            self.assertEqual(state(rest), (True, RUNNING))
            self.assertEqual(rest.get(MODBUS).json["parameters"]["maxClients"], signal.SIGTERM + 1)

    def test_what_enable_asks_for_is_tried_again_and_saved(self):
        arguments = ("--enable", "ModbusTcp", "--param", f"ModbusTcp.port={self.port}")
        with self.host(*arguments) as host, RestClient(host.http_port) as rest:
            self.expect_wanted(rest)
            self.assertEqual(rest.post("/jobs/copy/save").status, 204)
        self.assertTrue(saved_enabled(self.job))
        self.assertTrue(saved_enabled(self.data / "copy.zpjob"))
        with self.host() as host, RestClient(host.http_port) as rest:
            self.expect_wanted(rest)
            self.taken.close()
            wait_until(lambda: state(rest) == (True, RUNNING), "the service")

    def test_a_request_that_switches_the_service_off_ends_it(self):
        self.write_job()
        with self.host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.put(MODBUS, {"enabled": False, "parameters": {"port": "none"}}).status // 100, 4)
            self.expect_wanted(rest)
            self.assertEqual(rest.put(MODBUS, {"enabled": False}).status, 200)
            self.assertEqual(sentences(rest), [])
            self.wait_until_saved(rest)
            self.assertFalse(saved_enabled(self.job))
        self.taken.close()
        with self.host() as host, RestClient(host.http_port) as rest:
            self.assertNotIn("ModbusTcp", host.ports)

    def test_a_request_that_cannot_start_the_service_ends_it(self):
        self.write_job()
        with self.host() as host, RestClient(host.http_port) as rest:
            self.assertGreaterEqual(rest.put(MODBUS, {"enabled": True}).status, 400)
            self.assertEqual(sentences(rest), [])
            self.wait_until_saved(rest)
            self.assertFalse(saved_enabled(self.job))
            self.taken.close()
            self.assertEqual(rest.put(MODBUS, {"enabled": True}).status, 200)
            self.assertEqual(state(rest), (True, RUNNING))

    def test_a_load_tells_why_a_service_does_not_run_and_tries_again(self):
        self.write_job()
        with self.host("--job", "other") as host, RestClient(host.http_port) as rest:
            self.assertEqual(sentences(rest), [])
            answer = rest.post("/jobs/default/load")
            self.assertEqual(answer.status, 200, answer.text)
            protocol = answer.json["protocols"]["ModbusTcp"]
            self.assertEqual(protocol["skipped"], ["enabled"])
            self.assertIn("Address already in use", protocol["lines"][-1])
            self.expect_wanted(rest)
            self.assertEqual(rest.post("/jobs/other/load").status, 200)
            self.assertEqual(sentences(rest), [])
            self.assertTrue(saved_enabled(self.job))
            self.assertFalse(saved_enabled(self.data / "other.zpjob"))

    def ailing_host(self, ailment):
        return self.host("--plugins", BIN / "tests/ailing", "--enable", "Ailing", "--param", f"Ailing.ailment={ailment}")

    def test_a_service_that_fails_for_ever_holds_up_nobody_until_it_is_mended(self):
        with self.ailing_host("service fails") as host, RestClient(host.http_port) as rest:
            def is_tried_for_the_third_time():
                return sentences(rest) == ["Service Ailing could not be started (not well). "
                                           "The host tries again within 4 seconds."]
            wait_until(is_tried_for_the_third_time, "the third failure")
            self.assertFalse(rest.get("/controls/Ailing").json["enabled"])
            self.assertEqual(rest.put("/controls/Ailing", {"parameters": {"ailment": ""}}).status, 200)
            wait_until(lambda: rest.get("/controls/Ailing").json["enabled"], "the service")
            self.assertEqual(sentences(rest), [])

    def test_a_stop_waits_for_the_attempt_that_runs_and_saves_that_the_service_is_to_run(self):
        with self.ailing_host("service fails late") as host:
            def has_begun_again():
                return sum("The service is about to fail" in (line or "") for line in list(host.errors)) >= 2
            wait_until(has_begun_again, "the second start")
            began = time.monotonic()
            self.assertEqual(host.stop(), 0)
            self.assertLess(time.monotonic() - began, 10)
        self.assertTrue(saved_enabled(self.job, "Ailing"))
