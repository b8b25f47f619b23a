"""Hostile job files and job names, and a stop that does not end: the host refuses, stays healthy and ends within its bounds."""

import os
import pathlib
import signal
import sqlite3
import subprocess
import tempfile
import threading
import time
import unittest

import hostile_jobs
from ascii_client import AsciiClient
from host import BIN, PATIENCE, Host, wait_until
from rest import RestClient

MEMORY_MIB = 256  # the most that the host may ever use
SLACK = float(os.environ.get("ZU_SLACK", "0"))
CHECKS_MEMORY = os.environ.get("ZU_MEMORY_MIB", "64") == "64"  # a sanitizer keeps what is freed, and a shadow of it
ENDLESS = {"slow check": hostile_jobs.slow_check, "hidden check": hostile_jobs.hidden_check,
           "endless rows": hostile_jobs.endless_rows, "endless schema": hostile_jobs.endless_schema}


def memory(process, key):
    """MiB."""
    text = pathlib.Path(f"/proc/{process.pid}/status").read_text(encoding="ascii")
    return next(int(line.split()[1]) for line in text.splitlines() if line.startswith(key)) / 1024


def peak_memory(process):
    return memory(process, "VmHWM:")


def resident_memory(process):
    return memory(process, "VmRSS:")


class Health:
    """Asks for /health again and again while the body of the `with` runs, and keeps the longest time of an answer."""

    def __init__(self, host):
        self.port = host.http_port
        self.longest = 0.0
        self.failure = None
        self.is_ending = threading.Event()
        self.thread = threading.Thread(target=self._ask)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.is_ending.set()
        self.thread.join()

    def _ask(self):
        try:
            with RestClient(self.port) as rest:
                while not self.is_ending.wait(0.02):
                    start = time.monotonic()
                    if rest.get("/health").status != 200:
                        raise AssertionError("the host is not healthy")
                    self.longest = max(self.longest, time.monotonic() - start)
        except Exception as failure:
            self.failure = failure


class HostileFiles(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name)

    def check(self, host, health):
        self.assertIsNone(health.failure)
        self.assertLess(health.longest, 1 + SLACK)
        if CHECKS_MEMORY:
            self.assertLess(peak_memory(host.process), MEMORY_MIB)

    def test_an_endless_file_is_refused_as_an_upload(self):
        with Host() as host, RestClient(host.http_port) as rest, Health(host) as health:
            for name, make in ENDLESS.items():
                with self.subTest(name):
                    start = time.monotonic()
                    answer = rest.put("/jobs/hostile", make())
                    print(f"{name}: {time.monotonic() - start:.2f} s", flush=True)
                    self.assertEqual(answer.status, 400, answer.text)
                    self.assertIn("What was sent is no job: ", answer.text)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            self.check(host, health)

    def test_an_endless_file_in_the_folder_is_not_loaded_and_can_be_deleted(self):
        with Host("--enable", "AsciiTcp", "--param", "AsciiTcp.port=0", data=self.data) as host:
            with RestClient(host.http_port) as rest, AsciiClient(host.ports["AsciiTcp"]) as plc, Health(host) as health:
                for name, make in ENDLESS.items():
                    with self.subTest(name):
                        (self.data / "hostile.zpjob").write_bytes(make())
                        self.assertEqual(rest.post("/jobs/hostile/load").status, 400)
                        self.assertEqual(plc.run("LOAD hostile"), "FAILED")
                        self.assertEqual(rest.send("DELETE", "/jobs/hostile").status, 204)
                self.check(host, health)

    def test_rows_that_claim_more_than_they_hold_cost_nothing(self):
        sent = hostile_jobs.claims()
        with Host() as host, RestClient(host.http_port) as rest, Health(host) as health:
            start = time.monotonic()
            answer = rest.put("/jobs/hostile", sent)
            seconds = time.monotonic() - start
            print(f"{len(sent)} bytes: {seconds:.2f} s, {peak_memory(host.process):.0f} MiB", flush=True)
            self.assertEqual(answer.status, 400, answer.text)
            self.assertLess(seconds, 5 + SLACK)
            self.check(host, health)

    def test_documents_that_unpack_a_thousandfold_stay_within_the_bounds(self):
        size = 16 * 1024 * 1024 - 16 * 1024  # four of them leave room for the documents of the host
        blank = b"{}" + b" " * (size - 2)
        crowd = b"[" + b"[]," * (size // 3 - 2) + b"[]]"
        with Host(data=self.data) as host, RestClient(host.http_port) as rest, Health(host) as health:
            before = resident_memory(host.process)
            for name, sent, status in (("too much", hostile_jobs.bomb(*[blank] * 5), 400),
                                       ("crowded", hostile_jobs.bomb(crowd, crowd, crowd), 400),
                                       ("the most", hostile_jobs.bomb(*[blank] * 4), 201)):
                with self.subTest(name):
                    answer = rest.put("/jobs/large", sent)
                    print(f"{name}: {len(sent)} bytes, {peak_memory(host.process):.0f} MiB", flush=True)
                    self.assertEqual(answer.status, status, answer.text)
            clients = [threading.Thread(target=self.upload, args=(host, hostile_jobs.bomb(*[blank] * 4))) for _ in range(8)]
            for client in clients:
                client.start()
            for client in clients:
                client.join()
            with RestClient(host.http_port) as late:  # the host has closed the first connection if the uploads took a minute
                self.assertEqual(late.post("/jobs/large/load").status, 200)
            print(f"loaded: {peak_memory(host.process):.0f} MiB, then {resident_memory(host.process):.0f} MiB", flush=True)
            self.check(host, health)
            if CHECKS_MEMORY:
                self.assertLess(resident_memory(host.process), before + 32, "a load gives its memory back")

    def upload(self, host, sent):
        with RestClient(host.http_port) as rest:
            rest.put("/jobs/large", sent)

    def test_a_host_starts_with_an_endless_file_and_keeps_it(self):
        for name, make in ENDLESS.items():
            with self.subTest(name):
                (self.data / "default.zpjob").write_bytes(make())
                with Host(data=self.data) as host, RestClient(host.http_port) as rest:
                    texts = [problem["text"] for problem in rest.get("/problems").json["problems"]]
                    self.assertTrue(any("The job 'default' cannot be loaded" in text for text in texts), texts)
                kept = sorted(self.data.glob("*.damaged-*"))
                self.assertEqual([file.read_bytes() for file in kept], [make()])
                kept[0].unlink()

    def test_a_damaged_file_is_kept_five_times(self):
        for number in range(8):
            (self.data / "default.zpjob").write_bytes(f"damaged {number}".encode() * 100)
            with Host(data=self.data):
                pass
        kept = sorted(self.data.glob("default.zpjob.damaged-*"))
        self.assertEqual([file.name[-1] for file in kept], ["4", "5", "6", "7", "8"])
        self.assertEqual(kept[-1].read_bytes(), b"damaged 7" * 100)

    def test_copies_are_refused_beyond_a_thousand_jobs(self):
        for number in range(999):
            (self.data / f"{number}.zpjob").write_bytes(b"")
        with Host(data=self.data) as host, RestClient(host.http_port) as rest:
            answer = rest.post("/jobs/copy/save")
            self.assertEqual(answer.status, 409, answer.text)
            self.assertIn("delete a job", answer.json["detail"])
            self.assertEqual(rest.put("/jobs/sent", rest.get("/jobs/default").body).status, 409)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            self.assertEqual(rest.send("DELETE", "/jobs/0").status, 204)
            self.assertEqual(rest.post("/jobs/copy/save").status, 204)


class Names(unittest.TestCase):
    def test_the_loaded_job_is_kept_from_a_client_that_writes_the_suffix_twice(self):
        with Host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            before = rest.get("/jobs/default").body
            self.assertEqual(rest.send("DELETE", "/jobs/default.zpjob").status, 409)
            self.assertEqual(rest.send("DELETE", "/jobs/default.zpjob.zpjob").status, 422)
            self.assertEqual(rest.put("/jobs/default.zpjob.zpjob", before).status, 422)
            self.assertEqual(rest.get("/jobs/default").body, before)

    def test_names_that_show_as_others_are_refused(self):
        with Host() as host, RestClient(host.http_port) as rest:
            for name in ("a%E2%80%AEb", "a%E2%80%8Bb", "%EF%BB%BFa", "a%C2%AD", "a%ED%A0%80", "a%ED%A0%BD%ED%B8%80", "a%C2%85"):
                with self.subTest(name):
                    self.assertIn(rest.post(f"/jobs/{name}/save").status, (400, 422))
            self.assertEqual([job["name"] for job in rest.get("/jobs").json["jobs"]], ["default"])


class Stop(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name)

    def start_until_the_token_is_read(self, *arguments):
        """Starts the host with a pipe as the file of its token. Returns the process and the pipe, which the host reads."""
        pipe = self.data / "token"
        os.mkfifo(pipe, 0o600)
        process = subprocess.Popen([str(BIN / "zucontrol-host"), "--http", "127.0.0.1:0", "--data", str(self.data / "data"),
                                    "--token", str(pipe), *arguments],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process, open(pipe, "w", encoding="ascii")  # returns when the host has opened the other end

    def test_a_stop_whose_last_save_fails_tells_so(self):
        host = Host(data=self.data)
        host.__enter__()
        with RestClient(host.http_port) as rest:
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            with sqlite3.connect(self.data / "default.zpjob", isolation_level=None) as other:
                other.execute("BEGIN EXCLUSIVE")
                self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"maxClients": 9}}).status, 200)
                self.assertEqual(host.stop(), 1)
            other.close()
        self.assertIn("zucontrol-host: The job 'default' cannot be saved: The file 'default.zpjob' cannot be used: database is locked", host.log())

    def test_a_signal_during_the_start_ends_the_start(self):
        process, pipe = self.start_until_the_token_is_read()
        process.send_signal(signal.SIGTERM)
        with pipe:
            pipe.write("0123456789abcdef")
        self.assertEqual(process.wait(PATIENCE), 0)
        self.assertNotIn("ready", process.stdout.read())

    @unittest.skipIf(os.environ.get("ZU_HOLDS_SIGNALS") == "1", "the thread sanitizer holds back the signal of the limit")
    def test_a_start_that_hangs_ends_behind_a_signal_with_a_line_that_says_where(self):
        process, pipe = self.start_until_the_token_is_read("--stop-limit", "1")
        with pipe:
            process.send_signal(signal.SIGTERM)
            try:
                status = process.wait(PATIENCE)
            finally:
                process.kill()
        self.assertEqual(status, 1)
        self.assertEqual(process.stderr.read(), "zucontrol-host: the stop has not ended within its limit: it hangs while reading "
                                                "the files of the command line\n")

    def test_a_stop_that_hangs_is_given_up_with_a_line_that_says_where(self):
        host = Host("--stop-limit", "1", data=self.data)
        host.__enter__()
        with RestClient(host.http_port) as rest:
            self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"maxClients": 7}}).status, 200)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            with sqlite3.connect(self.data / "default.zpjob", isolation_level=None) as other:
                other.execute("BEGIN EXCLUSIVE")  # for longer than the limit
                self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"maxClients": 9}}).status, 200)
                self.assertEqual(host.stop(), 1)
            other.close()
        self.assertIn("zucontrol-host: the stop has not ended within its limit: it hangs while saving the job", host.log())


if __name__ == "__main__":
    unittest.main()
