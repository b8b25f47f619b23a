"""Jobs as an operator uses them: over REST, with the command-line tool of SQLite, and across a restart."""

import json
import pathlib
import random
import signal
import socket
import subprocess
import tempfile
import threading
import time
import unittest

from host import BIN, Host, run_host, wait_until
from modbus import ModbusClient
from rest import EventStream, RestClient

MODBUS = "/controls/ModbusTcp"
DOCUMENT = "controls/ModbusTcp/config.json"


def archive(file, *words):
    """The command-line tool of SQLite on an archive, in the folder of the file."""
    done = subprocess.run(["sqlite3", str(file), "-A", *words], cwd=file.parent, capture_output=True, text=True, timeout=60)
    if done.returncode != 0 or done.stderr:
        raise AssertionError(done.stderr)
    return done.stdout


def configuration(rest):
    """The whole configuration, as the resources show it."""
    found = {}
    for protocol in ("ModbusTcp", "AsciiTcp"):
        document = rest.get("/controls/" + protocol).json
        found[protocol] = document["parameters"]
        found[protocol + " runs"] = document["enabled"]
    found["blocks"] = rest.get(MODBUS + "/registerAssemblies/registerAssembly-0").json
    found["outputs"] = rest.get("/controls/AsciiTcp/outputs").json
    return found


class Files(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name)

    def put_in(self, text):
        """Puts a document of ModbusTcp into the job, as a person does."""
        (self.data / DOCUMENT).parent.mkdir(parents=True, exist_ok=True)
        (self.data / DOCUMENT).write_text(text)
        archive(self.data / "default.zpjob", "-i", DOCUMENT)

    def test_a_person_extracts_edits_puts_back_and_loads(self):
        with Host(data=self.data) as host, RestClient(host.http_port) as rest:
            rest.post("/jobs/default/save")
            job = self.data / "default.zpjob"
            self.assertIn(DOCUMENT, archive(job, "-t").split())
            archive(job, "-x", DOCUMENT)
            document = json.loads((self.data / DOCUMENT).read_text())
            document["zu:control"]["parameters"]["maxClients"] = 3
            (self.data / DOCUMENT).write_text(json.dumps(document, indent=4))
            archive(job, "-i", DOCUMENT)  # -u skips files that were changed within a second

            answer = rest.post("/jobs/default/load")

            self.assertEqual(answer.status, 200, answer.text)
            self.assertEqual(answer.json["protocols"]["ModbusTcp"]["skipped"], [])
            self.assertEqual(rest.get(MODBUS).json["parameters"]["maxClients"], 3)

    def test_a_restart_keeps_the_configuration(self):
        chance = random.Random(seed := time.time_ns())
        print("seed", seed, flush=True)
        with Host("--param", "AsciiTcp.port=0", data=self.data) as host, RestClient(host.http_port) as rest:
            commands = MODBUS + "/registerAssemblies/registerAssembly-0/commands"
            for number in range(10):
                block = {"type": "Decision", "outputId": 300 + 7 * number, "dataSource": "profile/zMax",
                         "displayName": f"block {chance.randrange(1000)}"}
                self.assertEqual(rest.post(commands + "/add", {"blocks": [block]}).status // 100, 2)
            self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": chance.randint(1, 60)}}).status, 200)
            self.assertEqual(rest.put("/controls/AsciiTcp", {"enabled": True}).status, 200)
            self.assertEqual(rest.post("/controls/AsciiTcp/outputs/commands/remove", {"outputId": "zMax"}).status, 204)
            before = configuration(rest)
        with Host(data=self.data, modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertEqual(configuration(rest), before)
            self.assertIn("AsciiTcp", host.ports, "what was enabled is enabled again")

    def test_a_change_is_soon_in_the_file(self):
        with Host(data=self.data) as host, RestClient(host.http_port) as rest:
            def is_saved():
                return not rest.get("/jobs").json["jobs"][0]["modified"]
            wait_until(is_saved)
            self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": 5}}).status, 200)
            wait_until(is_saved)
            text = subprocess.run(["sqlite3", self.data / "default.zpjob",
                                   f"SELECT sqlar_uncompress(data, sz) FROM sqlar WHERE name = '{DOCUMENT}'"],
                                  capture_output=True, text=True, timeout=60).stdout
            self.assertEqual(json.loads(text)["zu:control"]["parameters"]["maxClients"], 5)

    def test_parameters_of_the_command_line_are_saved(self):
        with Host("--param", "ModbusTcp.maxClients=9", data=self.data):
            pass
        with Host(data=self.data, modbus=False) as host, RestClient(host.http_port) as rest:
            document = rest.get(MODBUS).json
            self.assertEqual((document["parameters"]["maxClients"], document["enabled"]), (9, True))

    def test_parameters_of_the_command_line_are_set_before_the_job_lets_the_protocol_run(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            with Host(data=self.data) as host, RestClient(host.http_port) as rest:
                self.assertEqual(rest.put(MODBUS, {"enabled": False}).status, 200)
                self.assertEqual(rest.put(MODBUS, {"parameters": {"port": taken.getsockname()[1]}}).status, 200)
                self.assertEqual(rest.post("/jobs/default/save").status, 204)
                archive(self.data / "default.zpjob", "-x", DOCUMENT)
                text = (self.data / DOCUMENT).read_text()
                (self.data / DOCUMENT).write_text(text.replace('"enabled":false', '"enabled":true'))
            archive(self.data / "default.zpjob", "-i", DOCUMENT)
            with Host("--param", "ModbusTcp.port=0", data=self.data, modbus=False) as host, RestClient(host.http_port) as rest:
                self.assertIn("ModbusTcp", host.ports)
                self.assertEqual(rest.get("/problems").json["problems"], [])

    def test_a_damaged_file_is_kept_and_told_and_the_host_goes_on(self):
        (self.data / "default.zpjob").write_bytes(b"no database" * 500)
        with Host(data=self.data) as host, RestClient(host.http_port) as rest:
            host.wait_for_log("The job 'default' cannot be loaded: The file 'default.zpjob' cannot be used")
            texts = [problem["text"] for problem in rest.get("/problems").json["problems"]]
            self.assertTrue(any("cannot be loaded" in text for text in texts), texts)
            wait_until((self.data / "default.zpjob.damaged-1").exists)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
        self.assertEqual((self.data / "default.zpjob.damaged-1").read_bytes(), b"no database" * 500)
        self.assertIn(DOCUMENT, archive(self.data / "default.zpjob", "-t").split())

    def test_what_runs_outlives_a_document_that_is_refused_and_a_kill(self):
        host = Host(data=self.data)
        host.__enter__()
        try:
            with RestClient(host.http_port) as rest:
                self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": 7}}).status, 200)
                self.assertEqual(rest.post("/jobs/default/save").status, 204)
                self.put_in('{"version":"2","zu:control":{"enabled":true}}')

                report = rest.post("/jobs/default/load").json["protocols"]["ModbusTcp"]

                self.assertEqual((report["source"], report["takenOver"], report["reset"], report["skipped"]),
                                 ("refused", [], [], ["enabled"]))
                wait_until(lambda: not rest.get("/jobs").json["jobs"][0]["modified"])
                self.assertIn("rejected/" + DOCUMENT, archive(self.data / "default.zpjob", "-t").split())
        finally:
            host.stop(signal.SIGKILL)
        with Host(data=self.data, modbus=False) as host, RestClient(host.http_port) as rest:
            document = rest.get(MODBUS).json
            self.assertEqual((document["parameters"]["maxClients"], document["enabled"]), (7, True))

    def test_a_parameter_of_the_command_line_enables_no_service_whose_document_is_refused(self):
        with Host(data=self.data):
            pass
        self.put_in('{"version":"2","zu:control":{"enabled":true}}')
        with Host("--param", "ModbusTcp.port=0", data=self.data, modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertFalse(rest.get(MODBUS).json["enabled"])

    def test_a_service_that_is_too_large_for_its_document_is_told_and_the_last_good_state_kept(self):
        outputs = "/controls/TestRegister/outputs"  # a service without a limit on its texts
        with Host("--plugins", BIN / "tests/numericmaps", modbus=False, data=self.data) as host, \
                RestClient(host.http_port) as rest:
            self.assertEqual(rest.post(outputs + "/commands/add", {"outputId": 140, "source": "s", "outputSize": 2}).status // 100, 2)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            kept = len(rest.get(outputs).json["map"])
            for number in range(18):
                entry = {"outputId": 100 + number, "source": f"{number} " + "x" * 1_000_000, "outputSize": 2}
                answer = rest.post(outputs + "/commands/add", entry)
                self.assertEqual(answer.status // 100, 2, answer.text[:300])

            answer = rest.post("/jobs/big/save")

            self.assertEqual(answer.status, 409, answer.text)
            self.assertIn("service TestRegister: The document", answer.json["detail"])
            self.assertIn("it is longer than 16777216 bytes", answer.json["detail"])
            texts = [problem["text"] for problem in rest.get("/problems").json["problems"]]
            self.assertTrue(any("The job 'default' cannot be saved: service TestRegister" in text for text in texts), texts)
            self.assertEqual([(job["name"], job["modified"]) for job in rest.get("/jobs").json["jobs"]],
                             [("default", True)])
            for number in range(18):
                self.assertEqual(rest.post(outputs + "/commands/remove", {"outputId": 100 + number}).status // 100, 2)
            self.assertEqual(rest.post("/jobs/big/save").status, 204)
            self.assertEqual(rest.get("/problems").json["problems"], [])
            self.assertEqual(len(rest.get(outputs).json["map"]), kept)

    def test_a_folder_that_cannot_be_made_is_refused(self):
        (self.data / "file").write_text("")
        status, output, error = run_host("--data", self.data / "file")
        self.assertEqual((status, output), (2, ""))
        self.assertIn("The data folder", error)


class Rest(unittest.TestCase):
    def test_a_session(self):
        with Host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.post("/jobs/spare/save").status, 204)
            listed = rest.get("/jobs").json["jobs"]
            self.assertEqual([(job["name"], job["loaded"]) for job in listed], [("default", True), ("spare", False)])
            file = rest.get("/jobs/spare")
            self.assertEqual((file.status, file.type), (200, "application/vnd.sqlite3"))
            self.assertEqual(rest.put("/jobs/sent", file.body).status, 201)
            self.assertEqual(rest.put("/jobs/sent", file.body[:-1000]).status, 400)
            self.assertEqual(rest.put("/jobs/default", file.body).status, 409)
            self.assertEqual(rest.put("/jobs/huge", bytes(1024 * 1024 + 1)).status, 413)
        with Host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.put("/jobs/sent", file.body).status, 201)
            self.assertEqual(rest.post("/jobs/sent/load").status, 200)
            self.assertEqual(rest.get("/jobs/sent/report").json["job"], "sent")
            self.assertEqual(rest.send("DELETE", "/jobs/sent").status, 409)
            self.assertEqual(rest.send("DELETE", "/jobs/default").status, 204)
            self.assertEqual(rest.post("/jobs/none/load").status, 404)
            self.assertEqual(rest.post("/jobs/..%2Fup/save").status, 422)

    def test_a_plc_loads_a_job(self):
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as client:
            self.assertEqual(rest.post("/jobs/line7/save").status, 204)
            client.write(0, [1, 5] + [ord(character) for character in "line7"] + [0])
            wait_until(lambda: client.read(66, 2) == [1, 2])
            self.assertEqual([job["name"] for job in rest.get("/jobs").json["jobs"] if job["loaded"]], ["line7"])
            client.write(0, [2, 5] + [ord(character) for character in "none"] + [0])
            wait_until(lambda: client.read(66, 2) == [2, 3])

    def test_nobody_reads_or_changes_what_is_being_loaded(self):
        """Clients read and change while two sides load jobs. Meant for the thread sanitizer, where it is built in."""
        with Host() as host, RestClient(host.http_port) as rest, ModbusClient(host.modbus_port) as plc:
            for name in ("left", "right"):
                self.assertEqual(rest.put(MODBUS, {"parameters": {"maxClients": len(name)}}).status, 200)
                self.assertEqual(rest.post(f"/jobs/{name}/save").status, 204)
            isEnding = threading.Event()
            failures = []

            def use(method, path, body, allowed):
                try:
                    with RestClient(host.http_port) as client:
                        while not isEnding.is_set():
                            answer = client.send(method, path, body)
                            if answer.status not in allowed:
                                raise AssertionError(f"{method} {path}: {answer.status} {answer.text}")
                except Exception as failure:
                    failures.append(failure)

            users = [threading.Thread(target=use, args=arguments) for arguments in (
                ("GET", "/controls", None, (200,)), ("GET", MODBUS, None, (200,)), ("GET", "/jobs", None, (200,)),
                ("PUT", MODBUS, {"parameters": {"idleTimeout": 50}}, (200,)), ("GET", "/jobs/left", None, (200,)),
                ("POST", "/jobs/spare/save", None, (204,)))]
            for user in users:
                user.start()
            for number in range(10):
                self.assertEqual(rest.post(f"/jobs/{('left', 'right')[number % 2]}/load").status, 200)
                plc.write(0, [number + 1, 5] + [ord(character) for character in "left"] + [0])
                wait_until(lambda: plc.read(66, 1) == [number + 1] and plc.read(67, 1)[0] in (2, 3))
            isEnding.set()
            for user in users:
                user.join()
            self.assertEqual(failures, [])

    def test_a_load_is_told_after_it_has_ended(self):
        with Host() as host, RestClient(host.http_port) as rest:
            rest.post("/jobs/default/save")
            with EventStream(host.http_port, "/events") as events:
                self.assertEqual(rest.post("/jobs/default/load").status, 200)
                self.assertEqual(events.next(), {"type": 4, "path": "/controls"})
                self.assertEqual(events.next(), {"type": 2, "path": "/jobs"})


if __name__ == "__main__":
    unittest.main()
