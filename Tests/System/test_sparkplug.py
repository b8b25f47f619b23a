"""The Sparkplug edge node, against the real host program, a real broker and a host application of the tests."""

import contextlib
import datetime
import json
import os
import pathlib
import re
import signal
import socket
import ssl
import struct
import subprocess
import tempfile
import threading
import time
import unittest

from host import BIN, PATIENCE, wait_until
from node import packages
from pages import ROOT, expect, section, session
from range_image import write_pcd
from rest import RestClient
from sparkplug import (NODE, Broker, HostApplication, MqttClient, encode, free_port, make_authority, make_certificate,
                       metrics, plain_property, sparkplug_host)
from test_replay import small_scene

CLOCK = BIN / "tests/ShiftedClock.so"
OUTPUTS = ["meanZ", "points", "width", "zMax", "zMin"]


def problems(rest):
    return [problem["text"] for problem in rest.get("/problems").json["problems"]]


def wait_for_problem(rest, text):
    wait_until(lambda: any(text in problem for problem in problems(rest)), f"{text} among {problems(rest)}")


class Sparkplug(unittest.TestCase):
    """A host application runs beside each test with a broker, and finds no breach of the rules."""

    def setUp(self):
        HostApplication.made.clear()
        Broker.made.clear()

    def tearDown(self):
        watched = {application.port for application in HostApplication.made}
        self.assertEqual(set(Broker.made) - watched, set(), "brokers without a host application")
        for application in HostApplication.made:
            self.check(application)

    def check(self, application):
        self.assertEqual(application.breaches, [])

    def wait_for_birth(self, application, count=1):
        application.wait_for(lambda: len(application.of_kind("DBIRTH")) >= count, f"birth {count}")


class Births(Sparkplug):
    def test_a_node_is_born_with_all_its_metrics(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]):
                self.wait_for_birth(application)
                node, device = application.of_kind("NBIRTH")[0], application.of_kind("DBIRTH")[0]
                self.assertEqual((node.seq, device.seq), (0, 1))
                self.assertEqual([metric["name"] for metric in node.metrics], ["bdSeq", "Node Control/Rebirth"])
                names = [metric["name"] for metric in device.metrics]
                for output in OUTPUTS:
                    self.assertIn("Outputs/" + output, names)
                    self.assertIn("Decisions/" + output, names)
                value = next(metric for metric in device.metrics if metric["name"] == "Outputs/zMax")
                self.assertTrue(value["null"])  # no scan yet
                self.assertEqual(value["properties"]["Quality"], {1: 3, 3: 0})
                self.assertEqual(application.value("Command/Start"), False)
            application.wait_for(lambda: application.of_kind("NDEATH"), "the death")
            self.assertEqual(application.of_kind("NDEATH")[0].metrics[0]["value"], application.bd_seq)
            self.assertEqual([message.kind for message in application.messages][-2:], ["DDEATH", "NDEATH"])
            self.check(application)

    def test_a_killed_host_dies_by_its_will_and_counts_on(self):
        with Broker() as broker, HostApplication(broker.port) as application, tempfile.TemporaryDirectory() as data:
            with sparkplug_host(servers=[broker.port], data=data) as host:
                self.wait_for_birth(application)
                first = application.bd_seq
                with RestClient(host.http_port) as rest:  # the number is saved within a second
                    rest.post("/jobs/default/save")
                host.process.kill()
                host.expected_status = -9
                application.wait_for(lambda: application.of_kind("NDEATH"), "the will")
                self.assertFalse(application.node_born)
                self.assertEqual(application.of_kind("NDEATH")[0].qos, 1)
            with sparkplug_host(servers=[broker.port], data=data):
                self.wait_for_birth(application, 2)
                self.assertEqual(application.bd_seq, (first + 1) % 256)
            self.check(application)

    def test_a_kill_right_after_the_connection_does_not_repeat_its_number(self):
        with tempfile.TemporaryDirectory() as data:
            numbers = []
            for _ in range(3):
                with Broker() as broker, HostApplication(broker.port) as application:
                    with sparkplug_host(servers=[broker.port], data=data) as host:
                        host.expected_status = -9
                        application.wait_for(lambda: application.bd_seq is not None, "the birth")
                        host.process.kill()
                    numbers.append(application.bd_seq)
            self.assertEqual(numbers, [0, 1, 2])

    def test_a_rebirth_on_request_and_one_a_second_in_a_flood(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                first = application.bd_seq
                application.rebirth()
                self.wait_for_birth(application, 2)
                self.assertEqual(application.bd_seq, first)
                began = time.monotonic()
                for _ in range(500):
                    application.rebirth()
                wait_until(lambda: metrics(rest)["rebirthRequests"] == 501, "all requests")
                wait_for_problem(rest, "ask Sparkplug MQTT for a rebirth at least once a second")
                self.wait_for_birth(application, 3)
                births = len(application.of_kind("NBIRTH"))
                self.assertLessEqual(births - 2, time.monotonic() - began + 1)
            self.check(application)

    def test_a_changed_map_gives_a_birth(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--start", servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                rest.post(NODE + "/outputs/commands/remove", {"outputId": "zMin"})
                done = rest.post(NODE + "/outputs/commands/add", {"outputId": "deepest", "source": "profile/zMin"})
                self.assertEqual(done.status, 204, done.text)
                application.wait_for(lambda: "Outputs/deepest" in application.types, "the new metric")
                application.wait_for(lambda: application.value("Outputs/deepest") is not None, "its value")
                rest.post(NODE + "/outputs/commands/removeAll")
                application.wait_for(lambda: "Outputs/zMax" not in application.types, "the empty map")
            self.check(application)

    def test_outputs_have_their_unit_and_limits_and_new_limits_give_a_birth(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--start", "--still", servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                first = application.of_kind("DBIRTH")[0]
                properties = {metric["name"]: metric.get("properties", {}) for metric in first.metrics}
                self.assertEqual(set(properties["Outputs/zMax"]), {"Quality", "engUnit"})
                self.assertEqual(set(properties["Outputs/points"]), {"Quality"})  # a number has no unit
                self.assertEqual(properties["Decisions/zMax"], {})
                births = len(application.of_kind("DBIRTH"))
                limits = {"zMax": {"enabled": True, "minimum": 1, "maximum": 24.5}}
                self.assertEqual(rest.put("/sensor/limits", limits).status, 200)
                self.wait_for_birth(application, births + 1)
                shown = next(metric for metric in application.of_kind("DBIRTH")[-1].metrics if metric["name"] == "Outputs/zMax")
                self.assertEqual({key: plain_property(value)["value"] for key, value in shown["properties"].items()},
                                 {"Quality": shown["properties"]["Quality"][3], "engUnit": "mm", "engLow": 1.0, "engHigh": 24.5})
                self.assertEqual(rest.put("/sensor/limits", {"zMax": {"enabled": False}}).status, 200)
                self.wait_for_birth(application, births + 2)
                shown = next(metric for metric in application.of_kind("DBIRTH")[-1].metrics if metric["name"] == "Outputs/zMax")
                self.assertEqual(set(shown["properties"]), {"Quality", "engUnit"})
            self.check(application)

    def test_the_data_sources_name_the_topic_while_the_node_runs(self):
        def topics(rest):
            places = rest.get("/datasources/profile%2FzMax").json["destinations"]
            return [place["topic"] for place in places if place["protocol"] == "SparkplugMqtt"]

        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--start", servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                self.assertEqual(topics(rest), ["spBv1.0/ZuControl/DDATA/node/sensor"])
                application.wait_for(lambda: topics(rest)[0] in application.topics, "data under this topic")
                self.assertEqual(rest.put(NODE, {"enabled": False}).status, 200)
                self.assertEqual(topics(rest), [None])

    def test_the_fingerprint_of_the_map_is_a_metric(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                before = rest.get(NODE + "/plc").json["fingerprint"]
                self.assertEqual(application.value("State/Fingerprint"), before)
                rest.post(NODE + "/outputs/commands/remove", {"outputId": "zMin"})
                application.wait_for(lambda: application.value("State/Fingerprint") not in (None, before), "another one")
                self.assertEqual(application.value("State/Fingerprint"), rest.get(NODE + "/plc").json["fingerprint"])
            self.check(application)

    def test_changes_of_the_map_have_a_preview(self):
        with sparkplug_host(servers=[free_port()]) as host, RestClient(host.http_port) as rest:
            before = rest.get(NODE + "/outputs").json
            steps = [{"command": "remove", "arguments": {"outputId": "zMin"}},
                     {"command": "add", "arguments": {"outputId": "deepest", "source": "profile/zMin"}}]
            shown = rest.post(NODE + "/outputs/preview", steps)
            self.assertEqual(shown.status, 200, shown.text)
            self.assertEqual(rest.get(NODE + "/outputs").json, before)
            for step in steps:
                self.assertEqual(rest.post(f"{NODE}/outputs/commands/{step['command']}", step["arguments"]).status // 100, 2)
            self.assertEqual(rest.get(NODE + "/plc").json["fingerprint"], shown.json["fingerprint"])


class Data(Sparkplug):
    def test_values_come_by_exception_with_the_time_of_the_scan(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--start", "--rate", 100, servers=[broker.port]):
                application.wait_for(lambda: len(application.of_kind("DDATA")) > 20, "data")
            outputs = {alias: name for alias, name in application.known.items() if name.startswith("Outputs/")}
            last = {}
            for message in application.of_kind("DDATA"):
                stamps = {metric["timestamp"] for metric in message.metrics}
                self.assertEqual(len(stamps), 1)  # one frame a message
                for metric in message.metrics:
                    if metric["alias"] in outputs and not metric["historical"]:
                        self.assertNotEqual(metric["value"], last.get(metric["alias"]), message)
                        last[metric["alias"]] = metric["value"]
            self.check(application)

    def test_a_still_part_gives_one_message(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--still", "--start", servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                application.wait_for(lambda: application.value("Outputs/zMax") == 25, "the value")
                application.wait_for(lambda: application.value("State/Run State") == "running", "the state")
                before = len(application.of_kind("DDATA"))
                frames = rest.get(NODE + "/metrics").json  # a round trip behind several frames
                self.assertEqual(frames["controlDrops"], 0)
                application.rebirth()
                self.wait_for_birth(application, 2)
                self.assertEqual(application.value("Outputs/zMax"), 25)
                self.assertLessEqual(len(application.of_kind("DDATA")) - before, 1)
            self.check(application)

    def test_dead_band_and_period_hold_values_back(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--start", "--rate", 200, servers=[broker.port], period=300, deadBand=5):
                application.wait_for(lambda: len(application.of_kind("DDATA")) > 8, "data")
            heights = {alias: name for alias, name in application.known.items() if name == "Outputs/zMax"}
            stamps, last = [], None
            for message in application.of_kind("DDATA"):
                outputs = [metric for metric in message.metrics if metric["alias"] in application.known
                           and application.known[metric["alias"]].startswith("Outputs/") and not metric["historical"]]
                if outputs:
                    stamps.append(outputs[0]["timestamp"])
                for metric in outputs:
                    if metric["alias"] in heights:
                        self.assertTrue(last is None or abs(metric["value"] - last) > 5)
                        last = metric["value"]
            self.assertGreater(len(stamps), 2)
            # A frame that waits for the end of the period may be a little older than that moment.
            self.assertTrue(all(later - earlier > 200 for earlier, later in zip(stamps, stamps[1:])), stamps)
            self.check(application)


class Commands(Sparkplug):
    def run_command(self, application, number, status, **values):
        application.device_command({"Command/Request Id": number, **values})
        application.wait_for(lambda: application.value("Result/Request Id") == number
                             and application.value("Result/Status") == status, f"the end of {values}")

    def test_each_command_ends_with_its_result(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--job", "line7", servers=[broker.port]):
                self.wait_for_birth(application)
                self.run_command(application, 1, 2, **{"Command/Start": True})
                application.wait_for(lambda: application.value("State/Run State") == "running", "the state")
                self.run_command(application, 2, 2, **{"Command/Trigger": True})
                self.run_command(application, 3, 2, **{"Command/Stop": True})
                self.run_command(application, 4, 2, **{"Command/Align": True})
                self.run_command(application, 5, 2, **{"Command/Clear Alignment": True})
                self.run_command(application, 6, 3, **{"Command/Load Job": "nowhere"})
                self.assertEqual(application.value("Result/Command"), "Command/Load Job")
                self.assertEqual(application.value("Result/Text"), "The operation failed")
                application.wait_for(lambda: application.value("State/Job") == "line7", "the job")
            self.check(application)

    def test_a_job_that_a_host_loads_takes_the_node_along(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host("--job", "line7", servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                self.assertEqual(rest.post("/jobs/spare/save").status // 100, 2)
                application.device_command({"Command/Request Id": 9, "Command/Load Job": "spare"})
                application.wait_for(lambda: application.value("State/Job") == "spare", "the new job")
                application.wait_for(lambda: application.node_born, "the node")
            self.check(application)

    def test_wrong_commands_are_refused_with_a_reason(self):
        cases = [({"Command/Dance": True}, "There is no writable metric Command/Dance"),
                 ({"Command/Start": 1}, "Command/Start takes no value of this type"),
                 ({"Command/Start": "yes"}, "Command/Start takes no value of this type"),
                 ({"Command/Load Job": True}, "Command/Load Job takes no value of this type"),
                 ({"Command/Load Job": ""}, "A load needs the name of a job"),
                 ({"Command/Load Job": "j" * 64}, "The name of a job has at most 63 bytes"),
                 ({"Command/Start": True, "Command/Stop": True}, "A message has one command at most"),
                 ({"Outputs/zMax": 5.0}, "There is no writable metric Outputs/zMax")]
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                for number, (values, text) in enumerate(cases, 1):
                    self.run_command(application, number, 3, **values)
                    self.assertEqual(application.value("Result/Text"), text)
                bad = [b"\xff", b"\x12\x05", b"GET / HTTP/1.1", encode({"n" * 300: True}), b"\x18\x00" * 40000]
                for payload in bad:
                    application.command("spBv1.0/ZuControl/DCMD/node/sensor", payload)
                    application.command("spBv1.0/ZuControl/NCMD/node", payload)
                wait_until(lambda: metrics(rest)["badMessages"] == 2 * len(bad), "all bad messages")
                wait_for_problem(rest, "Sparkplug MQTT has received messages that it cannot read")
                self.run_command(application, 99, 2, **{"Command/Start": True})
            self.check(application)

    def test_a_command_while_another_runs_is_refused(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]):
                self.wait_for_birth(application)
                application.device_command({"Command/Request Id": 1, "Command/Align": True})
                application.device_command({"Command/Request Id": 2, "Command/Start": True})
                application.wait_for(lambda: application.value("Result/Request Id") == 1
                                     and application.value("Result/Status") == 2, "the end of the alignment")
                texts = [metric["value"] for message in application.of_kind("DDATA") for metric in message.metrics
                         if application.known.get(metric["alias"]) == "Result/Text"]
                self.assertIn("A command of a host is still running", texts)
            self.check(application)


class PrimaryHost(Sparkplug):
    def test_the_node_waits_for_its_primary_host(self):
        with Broker() as broker, HostApplication(broker.port) as watcher:
            with sparkplug_host(servers=[broker.port], primaryHostId="scada") as host, RestClient(host.http_port) as rest:
                wait_until(lambda: metrics(rest)["session"] == "waiting for the primary host", "the wait")
                with HostApplication(broker.port, state="other"):
                    self.assertEqual(watcher.of_kind("NBIRTH"), [])
                with HostApplication(broker.port, state="scada") as application:
                    self.wait_for_birth(application)
                    application.die()
                    watcher.wait_for(lambda: watcher.of_kind("NDEATH"), "the death")
                births = len(watcher.of_kind("NBIRTH"))
                with HostApplication(broker.port, state="scada") as application:
                    self.wait_for_birth(watcher, births + 1)
                    self.check(application)
            self.check(watcher)

    def test_the_node_walks_to_the_server_with_its_primary_host(self):
        with Broker() as first, Broker() as second:
            with HostApplication(first.port, state="scada") as one, HostApplication(second.port, state="scada") as two:
                with sparkplug_host(servers=[first.port, second.port], primaryHostId="scada"):
                    self.wait_for_birth(one)
                    one.die()
                    self.wait_for_birth(two)
                    self.check(one)
                    self.check(two)


class Servers(Sparkplug):
    def test_servers_that_are_no_brokers_are_left_behind(self):
        """Nothing listens; accepts and says nothing; closes at once; speaks another protocol."""
        silent = socket.create_server(("127.0.0.1", 0))
        closing = socket.create_server(("127.0.0.1", 0))
        speaking = socket.create_server(("127.0.0.1", 0))

        def answer(server, data):
            while True:
                try:
                    client, _ = server.accept()
                except OSError:
                    return
                with client:
                    if data:
                        client.recv(4096)
                        client.sendall(data)

        threads = [threading.Thread(target=answer, args=(closing, b"")),
                   threading.Thread(target=answer, args=(speaking, b"HTTP/1.1 400 Bad Request\r\n\r\n"))]
        for thread in threads:
            thread.start()
        try:
            with Broker() as broker, HostApplication(broker.port) as application:
                servers = [free_port(), closing.getsockname()[1], speaking.getsockname()[1], silent.getsockname()[1],
                           broker.port]
                with sparkplug_host(servers=servers) as host, RestClient(host.http_port) as rest:
                    self.wait_for_birth(application)
                    self.assertEqual(metrics(rest)["server"], f"127.0.0.1:{broker.port}")
                    wait_until(lambda: not any("Sparkplug" in text for text in problems(rest)), "no problem")
                self.check(application)
        finally:
            for server in (silent, closing, speaking):
                server.shutdown(socket.SHUT_RDWR)
                server.close()
            for thread in threads:
                thread.join()

    def test_a_server_that_cannot_be_reached_is_a_problem_until_it_is_there(self):
        broker = Broker()
        with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
            wait_for_problem(rest, f"Sparkplug MQTT has no session: 127.0.0.1:{broker.port}: Connection refused")
            host.process.send_signal(signal.SIGSTOP)  # the application comes first, to see all that is sent
            with broker, HostApplication(broker.port) as application:
                host.process.send_signal(signal.SIGCONT)
                self.wait_for_birth(application)
                wait_until(lambda: not any("Sparkplug" in text for text in problems(rest)), "the end of the problem")

    def test_a_password_that_is_wrong_is_a_problem_and_is_never_shown(self):
        with tempfile.TemporaryDirectory() as folder:
            passwords = folder + "/passwords"
            subprocess.run(["mosquitto_passwd", "-b", "-c", passwords, "sensor", "sesame7"], check=True)
            subprocess.run(["mosquitto_passwd", "-b", passwords, "plant", "press5"], check=True)
            with Broker("allow_anonymous false", f"password_file {passwords}") as broker, \
                    HostApplication(broker.port, login=("plant", "press5")) as application:
                with sparkplug_host(servers=[broker.port], user="sensor") as host, RestClient(host.http_port) as rest:
                    self.assertEqual(metrics(rest)["password"], "not set")
                    wait_for_problem(rest, "the server does not authorise this client")
                    self.assertEqual(application.messages, [])
                    self.assertEqual(rest.post(NODE + "/commands/setPassword", {"password": "sesame7"}).status // 100, 2)
                    wait_until(lambda: metrics(rest)["session"] == "born", "the session")
                    self.wait_for_birth(application)
                    self.assertEqual(metrics(rest)["password"], "set")
                    for path in (NODE, NODE + "?schema=true", NODE + "/commands/setPassword", NODE + "/metrics", "/jobs"):
                        self.assertNotIn("sesame7", rest.get(path).text)
                    rest.post("/jobs/default/save")
                    self.assertNotIn("sesame7", host.log())
                    job = (host.data / "default.zpjob").read_bytes()
                    self.assertNotIn(b"sesame7", job)

    def test_tls_checks_both_certificates(self):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("authority", "other"):
                make_authority(folder, name)
            make_certificate(folder, "authority", "server", "IP:127.0.0.1,DNS:localhost")
            make_certificate(folder, "authority", "elsewhere", "DNS:elsewhere.example")
            make_certificate(folder, "authority", "sensor", "DNS:sensor")
            own = {"useTls": "true", "authorityFile": folder + "/authority.pem",
                   "certificateFile": folder + "/sensor.pem", "keyFile": folder + "/sensor.key"}

            def tls_broker(certificate):
                return Broker("allow_anonymous true", f"cafile {folder}/authority.pem", f"certfile {folder}/{certificate}.pem",
                              f"keyfile {folder}/{certificate}.key", "require_certificate true")

            watching = ssl.create_default_context(cafile=folder + "/authority.pem")
            watching.load_cert_chain(folder + "/sensor.pem", folder + "/sensor.key")
            watching.check_hostname = False  # one of the servers has another name

            def expect(broker, told, **changed):
                with HostApplication(broker.port, context=watching) as application, \
                        sparkplug_host(servers=[broker.port], **{**own, **changed}) as host:
                    with RestClient(host.http_port) as rest:
                        if told is None:
                            wait_until(lambda: metrics(rest)["session"] == "born", "the session")
                            self.wait_for_birth(application)
                        else:
                            wait_for_problem(rest, told)
                            self.assertEqual(metrics(rest)["births"], 0)
                            self.assertEqual(application.messages, [])

            with tls_broker("server") as broker:
                expect(broker, None)
                expect(broker, "Sparkplug MQTT has no session", authorityFile=folder + "/other.pem")
                expect(broker, "Sparkplug MQTT has no session", certificateFile="", keyFile="")
                expect(broker, "Sparkplug MQTT has no session", useTls="false")
            with tls_broker("elsewhere") as broker:
                expect(broker, "Sparkplug MQTT has no session")

    def test_with_the_servers_settings_of_the_page_a_sensor_speaks_for_itself_only(self):
        blocks = re.findall(r"^```\n(.*?)^```", section("docs/fleet.md", "A certificate for each sensor"), re.M | re.S)
        with tempfile.TemporaryDirectory() as folder:
            make_authority(folder, "authority")
            make_certificate(folder, "authority", "server", "IP:127.0.0.1,DNS:localhost")
            for name in ("s001", "plant"):
                make_certificate(folder, "authority", name, "DNS:" + name)
            (pathlib.Path(folder) / "plant.acl").write_text(blocks[1])
            settings = [re.sub(r"\b(\w+\.(?:pem|key|acl))$", folder + r"/\1", line) for line in blocks[0].splitlines()[1:]]
            context = ssl.create_default_context(cafile=folder + "/authority.pem")
            context.load_cert_chain(folder + "/plant.pem", folder + "/plant.key")
            own = {"useTls": "true", "authorityFile": folder + "/authority.pem", "groupId": "line7", "nodeId": "s001",
                   "certificateFile": folder + "/s001.pem", "keyFile": folder + "/s001.key", "primaryHostId": "plant"}
            with Broker(*settings) as broker, HostApplication(broker.port, "plant", context) as application:
                with sparkplug_host(servers=[broker.port], **own) as host, RestClient(host.http_port) as rest:
                    self.wait_for_birth(application)
                    application.device_command({"Command/Start": True}, "line7/DCMD/s001/sensor")
                    application.wait_for(lambda: application.value("State/Run State") == "running", "the scan")
                    for name in ("s002", "s001"):
                        births = metrics(rest)["births"]
                        self.assertEqual(rest.put(NODE, {"parameters": {"nodeId": name}}).status, 200)
                        wait_until(lambda: metrics(rest)["births"] > births, "births under the name " + name)
                    self.wait_for_birth(application, 2)
                self.assertFalse([topic for topic in application.topics if "s002" in topic])
                self.assert_cannot_command(broker, folder, application)

    def assert_cannot_command(self, broker, folder, application):
        """A command that the sensor itself publishes does not arrive; one of the plant behind it does."""
        context = ssl.create_default_context(cafile=folder + "/authority.pem")
        context.load_cert_chain(folder + "/s001.pem", folder + "/s001.key")
        intruder = MqttClient(broker.port, "intruder", lambda *_: None, context=context)
        intruder.publish("spBv1.0/line7/NCMD/s003", b"intruder", retain=True)  # the answer says nothing about the right
        intruder.close()
        application.command("spBv1.0/line7/NCMD/s003", b"plant")
        application.wait_for(lambda: b"plant" in application.commands, "the plant's command")
        self.assertEqual(application.commands.count(b"intruder"), 0)

    def test_a_server_that_says_nothing_or_takes_no_connection_is_named(self):
        """What the server answers to the request for a connection, and the sentence that it leads to."""
        cases = [(b"", "the server does not answer"),
                 (b"\x20\x02\x00\x01", "the server does not speak MQTT 3.1.1"),
                 (b"\x20\x02\x00\x02", "the server refuses the client's name"),
                 (b"\x20\x02\x00\x03", "the server is not available")]
        answers = [b""]

        def serve(server, kept):
            while True:
                try:
                    client = kept.enter_context(server.accept()[0])
                except OSError:
                    return
                client.recv(4096)
                client.sendall(answers[-1])

        with socket.create_server(("127.0.0.1", 0)) as server, contextlib.ExitStack() as kept:
            thread = threading.Thread(target=serve, args=(server, kept))
            thread.start()
            try:
                with sparkplug_host(servers=[server.getsockname()[1]]) as host, RestClient(host.http_port) as rest:
                    for answer, sentence in cases:
                        answers.append(answer)
                        wait_for_problem(rest, sentence)
            finally:
                server.shutdown(socket.SHUT_RDWR)
                thread.join()

    @unittest.skipUnless(CLOCK.exists(), "no clock to preload beside a sanitizer")
    def test_a_clock_that_jumps_is_told_with_both_times(self):
        with Broker() as broker, HostApplication(broker.port) as application, tempfile.NamedTemporaryFile() as shift:
            shift.write(struct.pack("q", -20))
            shift.flush()
            with sparkplug_host("--start", servers=[broker.port], environment={"LD_PRELOAD": str(CLOCK), "ZU_CLOCK_SHIFT": shift.name}) \
                    as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                self.assertEqual([text for text in problems(rest) if "clock" in text], [])
                shift.seek(0)
                shift.write(struct.pack("q", 20))
                shift.flush()
                wait_for_problem(rest, "The timestamps of Sparkplug MQTT on one side of it are wrong")
                told = next(text for text in problems(rest) if "clock has jumped" in text)
                before, after = (datetime.datetime.fromisoformat(time) for time in re.findall(r"\d{4}-\S*Z", told)[:2])
                self.assertIn((after - before).total_seconds(), (39, 40, 41))
                wait_until(lambda: metrics(rest)["clockJumps"] == 1, "the count")
                newest = max(metric["timestamp"] for metric in application.of_kind("DBIRTH")[0].metrics)
                application.wait_for(lambda: any(metric["timestamp"] > newest + 30_000 for message in application.of_kind("DDATA")
                                                 for metric in message.metrics), "the new time in data")
                self.assertEqual(metrics(rest)["lostSessions"], 0)

    @unittest.skipUnless(os.geteuid() == 0, "only root can make a small disk")
    def test_a_full_disk_under_the_store_is_a_problem_until_there_is_room(self):
        with tempfile.TemporaryDirectory() as disk:
            if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=256k", "tmpfs", disk], check=False).returncode:
                self.skipTest("this root can make no small disk")
            try:
                filler = pathlib.Path(disk) / "filler"
                with sparkplug_host("--start", "--rate", 50, servers=[free_port()], storeFolder=disk) as host:
                    with RestClient(host.http_port) as rest:
                        wait_until(lambda: metrics(rest)["unsentSamples"] > 0, "a store in use")
                        filler.write_bytes(bytes(1 << 10))
                        with contextlib.suppress(OSError), filler.open("ab", buffering=0) as file:
                            while file.write(bytes(4096)):
                                pass
                        wait_for_problem(rest, "The store of Sparkplug MQTT fails: " + disk)
                        filler.unlink()
                        wait_until(lambda: not any("The store" in text for text in problems(rest)), "room again")
            finally:
                subprocess.run(["umount", disk], check=True)

    def test_two_nodes_with_one_name_are_told_and_do_not_fight(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                wait_until(lambda: metrics(rest)["session"] == "born", "the first node")
                with sparkplug_host(servers=[broker.port]) as second, RestClient(second.http_port) as other:
                    def is_told():
                        texts = problems(rest) + problems(other)
                        return any("the same group id and edge node id" in text for text in texts)

                    wait_until(is_told, "the problem")
                    self.assertLess(metrics(rest)["births"] + metrics(other)["births"], 20)
            self.assertGreaterEqual(len(application.of_kind("NDEATH")), 3)  # each loss is the will of a node


class Parameters(Sparkplug):
    def test_ids_that_are_no_ids_are_refused(self):
        with Broker() as broker, HostApplication(broker.port), \
                sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
            before = rest.get(NODE).text
            for wrong in ({"groupId": "a+b"}, {"nodeId": "a/b"}, {"deviceId": "#"}, {"groupId": ""}, {"nodeId": "x" * 129},
                          {"primaryHostId": "a/b"}, {"server1": "host:port"}, {"server2": "a b"}, {"keepAlive": 4},
                          {"deadBand": -1}, {"storeSize": 0}, {"server1": ""}):
                refused = rest.put(NODE, {"parameters": wrong})
                self.assertEqual(refused.status, 422, (wrong, refused.text))
            self.assertEqual(rest.get(NODE).text, before)

    def test_a_new_name_begins_a_new_node(self):
        with Broker() as broker, HostApplication(broker.port) as application:
            with sparkplug_host(servers=[broker.port]) as host, RestClient(host.http_port) as rest:
                self.wait_for_birth(application)
                self.assertEqual(rest.put(NODE, {"parameters": {"nodeId": "line 2"}}).status, 200)
                self.wait_for_birth(application, 2)
            self.check(application)


VALUE_FIELDS = ("intValue", "longValue", "floatValue", "doubleValue", "booleanValue", "stringValue")
TYPE_NAMES = {3: "Int32", 4: "Int64", 8: "UInt64", 10: "Double", 11: "Boolean", 12: "String"}


def decode_with_npm(messages):
    """The messages as the package sparkplug-payload decodes them."""
    lines = "".join(message.data.hex() + "\n" for message in messages)
    done = subprocess.run(["node", "decode.js"], cwd=packages("Tests/Node/sparkplug-payload"), input=lines, text=True,
                          capture_output=True, timeout=PATIENCE, check=False)
    if done.returncode:
        raise AssertionError(done.stderr)
    return [json.loads(line) for line in done.stdout.splitlines()]


class ForeignDecoder(Sparkplug):
    """A decoder that others have written reads in each message what ours reads."""

    def messages(self):
        """Births, data with and without values, results of commands, historical data and deaths."""
        scene = tempfile.NamedTemporaryFile(suffix=".pcd")
        self.addCleanup(scene.close)
        write_pcd(scene.name, small_scene())
        with Broker() as broker, HostApplication(broker.port) as application, contextlib.ExitStack() as later:
            with sparkplug_host("--rate", 50, "--replay", scene.name, servers=[broker.port]) as host:
                self.wait_for_birth(application)
                with RestClient(host.http_port) as rest:
                    rest.put("/sensor/limits", {"zMin": {"enabled": True, "minimum": -1, "maximum": 0.5}})
                self.wait_for_birth(application, 2)
                application.device_command({"Command/Request Id": 4294967295, "Command/Start": True})
                application.wait_for(lambda: application.value("Result/Status") == 2, "the scan")
                application.wait_for(lambda: len(application.of_kind("DDATA")) > 60, "data")
                broker.stop(kill=True)
                with RestClient(host.http_port) as rest:
                    wait_until(lambda: metrics(rest)["unsentSamples"] > 5, "samples in the store")
                host.process.send_signal(signal.SIGSTOP)  # the application comes first
                broker.start()
                second = later.enter_context(HostApplication(broker.port))
                host.process.send_signal(signal.SIGCONT)
                second.wait_for(lambda: second.history, "historical data")
            second.wait_for(lambda: second.of_kind("NDEATH"), "the death")
            self.check(second)
            return application.messages + second.messages

    def compare(self, ours, theirs):
        self.assertEqual(theirs["payload"].get("timestamp"), ours.payload.get("timestamp"))
        self.assertEqual(theirs["payload"].get("seq"), ours.seq)
        fields = theirs["fields"].get("metrics", [])
        self.assertEqual(len(fields), len(ours.metrics))
        for metric, field, given in zip(ours.metrics, fields, theirs["payload"].get("metrics", [])):
            values = [field[name] for name in VALUE_FIELDS if name in field]
            self.assertEqual(values, [] if metric["null"] else [metric["value"]], (metric, field))
            for our_name, their_name in (("name", "name"), ("alias", "alias"), ("timestamp", "timestamp")):
                self.assertEqual(given.get(their_name), metric.get(our_name), (metric, given))
            self.assertEqual(bool(given.get("isHistorical")), metric["historical"])
            properties = {key: plain_property(value) for key, value in metric.get("properties", {}).items()}
            self.assertEqual(given.get("properties", {}), properties, (metric, given))
            if "type" in metric:
                self.assertEqual(given["type"], TYPE_NAMES[metric["type"]])
                self.assertEqual(given["value"], metric["value"], (metric, given))

    def test_it_reads_what_ours_reads(self):
        messages = self.messages()
        self.assertEqual({message.kind for message in messages}, {"NBIRTH", "DBIRTH", "DDATA", "DDEATH", "NDEATH"})
        for ours, theirs in zip(messages, decode_with_npm(messages), strict=True):
            self.compare(ours, theirs)
        all_metrics = [metric for message in messages for metric in message.metrics]
        self.assertEqual({metric["type"] for metric in all_metrics if "type" in metric}, {4, 8, 10, 11, 12})
        self.assertTrue(any(metric["historical"] for metric in all_metrics))
        self.assertTrue(any(metric["null"] for metric in all_metrics if "type" not in metric))
        self.assertIn(4294967295, [metric["value"] for metric in all_metrics])
        keys = set().union(*(metric.get("properties", {}) for metric in all_metrics))
        self.assertEqual(keys, {"Quality", "engUnit", "engLow", "engHigh"})


class Page(unittest.TestCase):
    def test_the_session_of_the_page(self):
        _, steps = session("docs/sparkplug.md", "A session")
        steps += session("docs/sparkplug.md", "Parameters")[1]
        self.assertEqual(len(steps), 4)
        with Broker() as broker, HostApplication(broker.port) as application, \
                sparkplug_host("--still", "--start", servers=[broker.port]) as host:
            for command, shown in steps:
                def as_here(text):
                    return text.replace("1883", str(broker.port)).replace(":8080", f":{host.http_port}")

                expect(as_here(command), [as_here(line) for line in shown])
        self.assertEqual(application.breaches, [])

    def test_each_test_in_the_table_of_rules_is_there(self):
        table = section("docs/sparkplug.md", "The rules of the standard")
        self.assertEqual(len(re.findall(r"^\| `", table, re.MULTILINE)), 223)
        sources = [path for folder in ("Tests/Plugins/SparkplugMqtt", "Tests/System") for path in (ROOT / folder).glob("*")]
        texts = {path.stem: path.read_text() for path in sources if path.suffix in (".cpp", ".py")}
        units = "".join(text for name, text in texts.items() if name.endswith("Test"))
        for name in set(re.findall(r"`((?:\w+\.)+\w+)`", table)):
            parts = name.split(".")
            if len(parts) == 3:
                self.assertRegex(texts[parts[0]], rf"class {parts[1]}\(")
                self.assertIn(f"def {parts[2]}(self", texts[parts[0]], name)
            else:
                self.assertRegex(units, rf"TEST(_F)?\({parts[0]}, {parts[1]}\)")


if __name__ == "__main__":
    unittest.main()
