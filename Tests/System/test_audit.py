"""The trail: what the host notes, how it is read and checked, and that a full disk or a kill does not break it."""

import csv
import hashlib
import io
import json
import pathlib
import signal
import sqlite3
import subprocess
import tempfile
import unittest

from ascii_client import AsciiClient, ascii_host
from crash import crash_rounds
from host import BIN, PATIENCE, Host, wait_until
from rest import RestClient


def entries(rest, query=""):
    answer = rest.get("/audit?limit=1000" + query)
    assert answer.status == 200, answer.text
    return answer.json["entries"]


def wait_for(rest, what, query=""):
    """Waits for an entry of this name and returns the newest."""
    return wait_until(lambda: next((entry for entry in reversed(entries(rest, query)) if entry["what"] == what), None),
                      f"an entry '{what}'")


def check(file):
    """(status, output) of the offline check."""
    done = subprocess.run([BIN / "zucontrol-host", "--check-trail", file], capture_output=True, text=True, timeout=PATIENCE)
    return done.returncode, done.stdout + done.stderr


def rows(file):
    with sqlite3.connect(file) as connection:
        found = connection.execute("SELECT id, time, monotonic, who, origin, what, before, after, result, count, hash "
                                   "FROM trail ORDER BY id").fetchall()
    connection.close()
    return found


class Sources(unittest.TestCase):
    def test_a_change_over_rest_shows_who_and_what_differs(self):
        with Host() as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"idleTimeout": 77}}).status, 200)
            entry = wait_for(rest, "PUT /controls/ModbusTcp")
            self.assertEqual((entry["who"], entry["result"]), ("local", "200"))
            self.assertIn("127.0.0.1", entry["from"])
            self.assertEqual(json.loads(entry["before"]), {"parameters": {"idleTimeout": 60}})
            self.assertEqual(json.loads(entry["after"]), {"parameters": {"idleTimeout": 77}})
            host.wait_for_log(f"Trail {entry['id']}: local")

            self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"idleTimeout": -1}}).status, 422)
            refused = wait_until(lambda: [entry for entry in entries(rest) if entry["result"].startswith("422 ")])
            self.assertEqual(json.loads(refused[0]["after"]), {"parameters": {"idleTimeout": -1}})

    def test_hardware_and_enabling_and_jobs(self):
        with Host() as host, RestClient(host.http_port) as rest:
            rest.put("/controls/ModbusTcp", {"enabled": False})
            entry = wait_for(rest, "PUT /controls/ModbusTcp")
            self.assertEqual(json.loads(entry["after"])["enabled"], False)
            self.assertEqual(rest.post("/jobs/default/save").status, 204)
            wait_for(rest, "POST /jobs/default/save")
            self.assertEqual(rest.send("DELETE", "/jobs/none").status, 404)
            self.assertTrue(wait_for(rest, "DELETE /jobs/none")["result"].startswith("404 "))
            wait_for(rest, "enable ModbusTcp")

    def test_reading_leaves_no_entry(self):
        with Host() as host, RestClient(host.http_port) as rest:
            for path in ("/", "/controls", "/audit", "/controls/ModbusTcp"):
                self.assertEqual(rest.get(path).status, 200)
            rest.post("/jobs/default/save")
            wait_for(rest, "POST /jobs/default/save")
            self.assertEqual([entry["what"] for entry in entries(rest) if entry["what"].startswith("GET")], [])

    def test_commands_of_plcs_have_the_name_of_the_protocol_and_bursts_are_gathered(self):
        with ascii_host() as host, AsciiClient(host.ports["AsciiTcp"]) as client, RestClient(host.http_port) as rest:
            for _ in range(5):
                self.assertEqual(client.run("START"), "DONE")
                self.assertEqual(client.run("STOP"), "DONE")
            client.run("TRIGGER")
            starts = wait_until(lambda: (lambda found: found if sum(entry["count"] for entry in found) == 5 else None)(
                [entry for entry in entries(rest, "&who=AsciiTcp") if entry["what"] == "scan start"]))
            self.assertTrue(all(entry["result"] == "done" for entry in starts), starts)
            self.assertNotIn("software trigger", [entry["what"] for entry in entries(rest)])

    def test_starts_stops_hang_up_plug_ins_and_the_clock(self):
        with tempfile.TemporaryDirectory() as data:
            with Host("--param", "ModbusTcp.maxClients=3", data=data) as host, RestClient(host.http_port) as rest:
                host.process.send_signal(signal.SIGHUP)
                wait_for(rest, "hang-up signal")
                plugin = wait_for(rest, "plug-in modbustcp.so")
                digest = hashlib.sha256((BIN / "plugins/modbustcp.so").read_bytes()).hexdigest()
                self.assertEqual(json.loads(plugin["after"])["sha256"], digest)
                start = wait_for(rest, "start")
                self.assertIn("ModbusTcp.maxClients=3", json.loads(start["after"])["options"])
                self.assertIn("synchronised", json.loads(wait_for(rest, "clock")["after"]))
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                wait_until(lambda: [entry["what"] for entry in entries(rest)].count("start") == 2, "the second start")
                host.stop(signal.SIGKILL)
                host.expected_status = -signal.SIGKILL
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                wait_for(rest, "end without stop")
                names = [entry["what"] for entry in entries(rest) if entry["what"] in ("start", "stop", "end without stop")]
                self.assertEqual(names, ["start", "stop", "start", "end without stop", "start"])
            self.assertEqual(check(pathlib.Path(data) / "audit.zplog")[0], 0)


class Reading(unittest.TestCase):
    def test_pages_tables_and_lines(self):
        with Host() as host, RestClient(host.http_port) as rest:
            for number in range(1, 6):
                rest.put("/controls/ModbusTcp", {"parameters": {"idleTimeout": number}})
                rest.post("/jobs/default/save")
            wait_for(rest, "POST /jobs/default/save")
            walked, path = [], "/audit?limit=3"
            while path:
                page = rest.get(path).json
                walked += page["entries"]
                path = page["_links"].get("next", {}).get("href")
            self.assertEqual([entry["id"] for entry in walked], list(range(1, len(walked) + 1)))
            self.assertGreater(len(walked), 5)

            table = rest.get("/audit?limit=4", Accept="text/csv")
            self.assertTrue(table.type.startswith("text/csv"), table.type)
            self.assertEqual([row["what"] for row in csv.DictReader(io.StringIO(table.text))],
                             [entry["what"] for entry in walked[:4]])
            lines = rest.get("/audit?limit=4", Accept="application/x-ndjson")
            self.assertEqual([json.loads(line) for line in lines.text.splitlines()], walked[:4])
            self.assertIn('rel="next"', lines.headers["Link"])
            self.assertEqual(rest.get("/audit?limit=1001").status, 422)
            self.assertEqual(rest.get("/audit?whom=x").status, 422)
            self.assertEqual(rest.post("/audit", {}).status, 405)


class Chain(unittest.TestCase):
    def test_the_hashes_can_be_checked_without_the_host(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(data=data):
                pass
            file = pathlib.Path(data) / "audit.zplog"
            before = "0" * 64
            for row in rows(file):
                fields = "".join(f"{len(str(field).encode())}:{field}," for field in row[:10])
                before = hashlib.sha256((before + fields).encode()).hexdigest()
                self.assertEqual(row[10], before)
            self.assertEqual(check(file), (0, f"{file} is whole: {len(rows(file))} entries, from 1 to {len(rows(file))}; "
                                              f"the last hash is {before}\n"))

    def test_a_change_of_the_file_shows(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(data=data):
                pass
            file = pathlib.Path(data) / "audit.zplog"
            with sqlite3.connect(file) as connection:
                connection.execute("UPDATE trail SET who = 'nobody' WHERE id = 2")
            connection.close()
            self.assertEqual(check(file), (1, f"zucontrol-host: {file} is not whole: Entry 2 was changed, or the entry before it\n"))
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                sentence = wait_until(lambda: rest.get("/health").json["faults"])[0]
                self.assertTrue(sentence.startswith("The trail in 'audit.zplog' was changed by another program"), sentence)
        self.assertEqual(check("/nowhere"), (1, "zucontrol-host: There is no file '/nowhere'\n"))

    def test_it_is_whole_after_kills_at_any_moment(self):
        with tempfile.TemporaryDirectory() as data:
            crash_rounds(data, 6, 4711)
            status, text = check(pathlib.Path(data) / "audit.zplog")
            self.assertEqual(status, 0, text)
            self.assertGreaterEqual(sum(row[5] == "end without stop" for row in rows(pathlib.Path(data) / "audit.zplog")), 5)


class Faults(unittest.TestCase):
    def test_production_goes_on_when_the_trail_cannot_be_written(self):
        with tempfile.TemporaryDirectory() as data:
            file = pathlib.Path(data) / "audit.zplog"
            file.mkdir()
            with Host("--log", "error", data=data) as host, RestClient(host.http_port) as rest:
                self.assertEqual(rest.put("/controls/ModbusTcp", {"parameters": {"idleTimeout": 77}}).status, 200)
                host.wait_for_log("Trail, not on the disk: local")

                def problems():
                    return [problem["text"] for problem in rest.get("/problems").json["problems"]]
                wait_until(lambda: any(text.startswith("The trail cannot be written") for text in problems()))
                file.rmdir()
                wait_until(lambda: problems() == [])
                entry = wait_for(rest, "trail interrupted")
                self.assertEqual(json.loads(entry["after"])["inLogOnly"], 0)
                wait_for(rest, "PUT /controls/ModbusTcp")
            self.assertEqual(check(file)[0], 0)

    def test_a_damaged_file_is_kept_and_a_new_one_begins(self):
        with tempfile.TemporaryDirectory() as data:
            file = pathlib.Path(data) / "audit.zplog"
            file.write_bytes(b"x" * 5000)
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                wait_for(rest, "trail replaced")
            self.assertEqual((pathlib.Path(data) / "audit.zplog.damaged-1").read_bytes(), b"x" * 5000)
            self.assertEqual(check(file)[0], 0)


class Process(unittest.TestCase):
    @staticmethod
    def status_of(host):
        text = pathlib.Path(f"/proc/{host.process.pid}/status").read_text(encoding="ascii")
        return dict(line.split(":\t", 1) for line in text.splitlines() if ":\t" in line)

    @staticmethod
    def core_limit(host):
        text = pathlib.Path(f"/proc/{host.process.pid}/limits").read_text(encoding="ascii")
        return next(line for line in text.splitlines() if line.startswith("Max core file size")).split()[4]

    def test_it_gives_up_privileges_and_core_dumps_and_keeps_its_files_to_itself(self):
        with tempfile.TemporaryDirectory() as folder:
            data = pathlib.Path(folder) / "data"
            with Host(data=data) as host:
                self.assertEqual(self.status_of(host)["NoNewPrivs"], "1")
                self.assertEqual(self.status_of(host)["Umask"], "0077")
                self.assertEqual(self.core_limit(host), "0")
            self.assertEqual(data.stat().st_mode & 0o777, 0o700)
            modes = {path.name: path.stat().st_mode & 0o777 for path in data.iterdir()}
            self.assertEqual(set(modes.values()), {0o600}, modes)
            self.assertLessEqual({"audit.zplog", "settings.zpset"}, set(modes))
            self.assertNotIn("Other users can reach", host.log())

    def test_a_developer_can_have_core_dumps(self):
        with Host("--allow-core-dumps") as host:
            with open("/proc/self/limits", encoding="ascii") as own:
                mine = next(line for line in own if line.startswith("Max core file size")).split()[4]
            self.assertEqual(self.core_limit(host), mine)

    def test_a_folder_that_others_can_reach_is_a_warning_and_the_settings_become_private(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(data=data):
                pass
            pathlib.Path(data).chmod(0o755)
            settings = pathlib.Path(data) / "settings.zpset"
            settings.chmod(0o644)
            with Host(data=data) as host:
                host.wait_for_log(f"Other users can reach the data folder '{data}'. To keep them out: chmod 700 {data}")
            self.assertEqual(settings.stat().st_mode & 0o777, 0o600)


if __name__ == "__main__":
    unittest.main()
