"""Metrics of the real host: read, streamed, collected by Prometheus, and kept over a restart."""

import json
import os
import pathlib
import socket
import struct
import subprocess
import tempfile
import threading
import time
import unittest
import urllib.parse
import urllib.request

from host import PATIENCE, Host, wait_until
from modbus import ModbusClient as Client
from rest import EventStream, RestClient

PATH = "/controls/ModbusTcp/metrics"
STARTED = "Control metrics reporting started."
STOPPED = "Control metrics reporting stopped."
SLACK = PATIENCE / 30  # seconds; a sanitizer build is slower


def metrics_of(host):
    with RestClient(host.http_port) as rest:
        return rest.get(PATH).json


def count_in_log(host, text):
    return sum(text in line for line in list(host.errors) if line is not None)


def descriptors_and_threads(host):
    process = pathlib.Path("/proc") / str(host.process.pid)
    return len(os.listdir(process / "fd")), len(os.listdir(process / "task"))


class Streams(unittest.TestCase):
    def test_a_stream_reports_each_second_and_the_timer_stops_with_the_last_one(self):
        with Host() as host, Client(host.modbus_port) as client:
            with EventStream(host.http_port, PATH) as first:
                with EventStream(host.http_port, PATH) as second:
                    requests, moments = [], []
                    for _ in range(4):
                        client.read(0, 1)
                        requests.append(first.next()["requests"])
                        moments.append(time.monotonic())
                    second.next()
                self.assertEqual(requests, sorted(requests))
                self.assertGreaterEqual(requests[-1], 3)
                mean = (moments[-1] - moments[0]) / 3
                self.assertGreater(mean, 0.8)
                self.assertLess(mean, 1 + SLACK / 2)
                self.assertEqual(count_in_log(host, STOPPED), 0)
            host.wait_for_log(STOPPED)
            self.assertEqual(count_in_log(host, STARTED), 1)
            self.assertEqual(count_in_log(host, STOPPED), 1)

    def test_the_record_is_refreshed_without_a_stream(self):
        with Host() as host, Client(host.modbus_port) as client:
            for expected in range(1, 5):
                client.read(0, 1)
                begin = time.monotonic()
                wait_until(lambda: metrics_of(host)["requests"] == expected, "the request to be counted")
                self.assertLess(time.monotonic() - begin, 0.25 + SLACK / 2)
            self.assertEqual(count_in_log(host, STARTED), 0)

    def test_a_storm_of_streams_leaves_nothing_behind(self):
        interval = 2
        with Host("--keep-alive", interval) as host:
            metrics_of(host)
            before = wait_until(lambda: descriptors_and_threads(host), "the counts")

            asked = (f"GET {PATH} HTTP/1.1\r\nHost: 127.0.0.1:{host.http_port}\r\n"
                     "Accept: text/event-stream\r\n\r\n").encode()
            opened = []

            def storm():
                for i in range(10):
                    with socket.create_connection(("127.0.0.1", host.http_port), PATIENCE) as stream:
                        stream.sendall(asked)
                        if i % 4 < 2:  # the others do not even wait for the answer
                            opened.append(b" 200 " in stream.recv(4096))
                        if i % 2 == 0:  # a client that goes without closing: its connection is reset
                            stream.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))

            threads = [threading.Thread(target=storm) for _ in range(20)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
            self.assertEqual(opened, 120 * [True])
            self.assertGreater(count_in_log(host, STARTED), 0)

            deadline = time.monotonic() + 2 * interval + 1
            after = descriptors_and_threads(host)
            while time.monotonic() < deadline and (after[0] > before[0] or not self.is_quiet(host)):
                time.sleep(0.05)
                after = descriptors_and_threads(host)
            self.assertTrue(self.is_quiet(host), "a stream is left:\n" + host.log())
            self.assertLessEqual(after[0], before[0], "descriptors are left")
            self.assertLessEqual(after[1], before[1] + 1, "threads are left")  # once started, the thread of the report timer stays

    @staticmethod
    def is_quiet(host):
        return count_in_log(host, STARTED) == count_in_log(host, STOPPED)


class Kept(unittest.TestCase):
    def test_the_counts_of_the_lifetime_go_on_after_a_restart(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(data=data) as host, Client(host.modbus_port) as client:
                for _ in range(3):
                    client.read(0, 1)
            with Host(data=data) as host, Client(host.modbus_port) as client:
                client.read(0, 1)
                wait_until(lambda: metrics_of(host)["lifetime"]["requests"] == 4, "the fourth request")
                self.assertEqual(metrics_of(host)["requests"], 1)
                self.assertEqual(metrics_of(host)["lifetime"]["acceptedClients"], 2)


class Page(unittest.TestCase):
    EXPECTED = ["zucontrol_protocol_requests_total", "zucontrol_protocol_clients",
                "zucontrol_protocol_last_handling_seconds", "zucontrol_result_sets_total", "zucontrol_result_items_total",
                "zucontrol_dispatcher_batches_total", "zucontrol_dispatcher_batch_age_seconds_sum",
                "zucontrol_operations_total"]

    @staticmethod
    def host():
        return Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", "--start")

    def test_promtool_finds_nothing(self):
        with self.host() as host, RestClient(host.http_port) as rest:
            page = rest.get("/metrics")
            self.assertEqual(page.type, "text/plain; version=0.0.4; charset=utf-8")
            checked = subprocess.run(["promtool", "check", "metrics"], input=page.body, capture_output=True,
                                     timeout=PATIENCE)
            self.assertEqual((checked.returncode, checked.stdout, checked.stderr), (0, b"", b""))
            self.assertNotIn("127.0.0.1", page.text)  # the page must not show addresses of clients or listeners
            for protocol in ("AsciiTcp", "ModbusTcp"):
                self.assertIn(f'zucontrol_protocol_requests_total{{protocol="{protocol}"}} 0\n', page.text)

    def test_the_numbers_of_the_module_grow_with_what_it_does(self):
        with self.host() as host, RestClient(host.http_port) as rest, Client(host.modbus_port) as client:
            client.write(0, [1, 1])  # starts the scan, which runs already: it succeeds all the same

            def sample(name):
                lines = rest.get("/metrics").text.splitlines()
                return float(next(line.split(" ")[1] for line in lines if line.startswith(name)))

            wait_until(lambda: sample("zucontrol_result_sets_total") > 10)
            wait_until(lambda: sample('zucontrol_operations_total{result="succeeded"}') == 1)
            wait_until(lambda: sample('zucontrol_dispatcher_batches_total{protocol="ModbusTcp"}') > 10)
            batches = sample('zucontrol_dispatcher_batch_age_seconds_count{protocol="ModbusTcp"}')
            age = sample('zucontrol_dispatcher_batch_age_seconds_sum{protocol="ModbusTcp"}')
            self.assertGreater(age, 0)
            self.assertLess(age / batches, SLACK)

    def test_prometheus_collects_it_for_ten_seconds(self):
        with self.host() as host, tempfile.TemporaryDirectory() as folder:
            with socket.create_server(("127.0.0.1", 0)) as probe:
                address = "127.0.0.1:%d" % probe.getsockname()[1]
            config = pathlib.Path(folder) / "prometheus.yml"
            config.write_text("global: {scrape_interval: 1s}\n"
                              "scrape_configs:\n"
                              "- job_name: zucontrol\n"
                              f"  static_configs: [{{targets: ['127.0.0.1:{host.http_port}']}}]\n")
            with open(pathlib.Path(folder) / "log", "wb") as log:
                server = subprocess.Popen(["prometheus", f"--config.file={config}", f"--storage.tsdb.path={folder}/data",
                                           f"--web.listen-address={address}"], stdout=log, stderr=log)
            try:
                self.check_collected(address)
            finally:
                server.terminate()
                server.wait(timeout=PATIENCE)

    def check_collected(self, address):
        def ask(query):
            """The value of a query with one number as its result; None while there is none."""
            try:
                url = f"http://{address}/api/v1/query?query={urllib.parse.quote(query)}"
                with urllib.request.urlopen(url, timeout=PATIENCE) as answer:
                    result = json.load(answer)["data"]["result"]
            except OSError:
                return None
            return float(result[0]["value"][1]) if result else None

        wait_until(lambda: (ask("count_over_time(up[1m])") or 0) >= 10, "ten collections")
        self.assertEqual(ask("min_over_time(up[1m])"), 1)
        for name in self.EXPECTED:
            self.assertIsNotNone(ask(f"count({name})"), name)
        self.assertEqual(ask("count(zucontrol_protocol_requests_total)"), 2)
        self.assertGreater(ask("rate(zucontrol_result_sets_total[10s])"), 10)


if __name__ == "__main__":
    unittest.main()
