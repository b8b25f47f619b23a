"""Every command of zucontrolctl against the real host."""

import contextlib
import json
import os
import pathlib
import pty
import re
import shlex
import signal
import socket
import stat
import subprocess
import termios
import threading
import time
import unittest

from ctl import (BUSY, FINE, LOCAL_FILE, NOT_A_SENSOR, NOT_AUTHORISED, NOT_TRUSTED, PROGRAM, REFUSED, UNREACHABLE, UNWELL, USAGE, Ctl,
                 document_server, failing_network, mute_server, other_server, scratch, secret_file, talking_server)
from host import BIN, PATIENCE, Host, wait_until
from pages import section, session_host
from rest import RestClient

ROOT = pathlib.Path(__file__).resolve().parents[2]
PASSWORD = "correct horse battery"
PASSPHRASE = "a passphrase for the backup"
END = f"{time.gmtime().tm_year + 2}-01-31T12:00:00Z"  # of a token


class Test(unittest.TestCase):
    def setUp(self):
        self.folder = scratch(self)

    def start(self, *arguments, **options):
        return self.enterContext(Host(*arguments, **options))

    def ctl(self, host, *options):
        return Ctl(self.folder, host.http_port, *options)

    def check(self, done, status, text=""):
        self.assertEqual(done.status, status, done.errors + done.output)
        self.assertIn(text, done.errors if status else done.output)

    def refused(self, ctl, status, text, *words):
        """The command ends with this status, with the text for people and for programs."""
        self.check(ctl.run(*words), status, text)
        done = ctl.run(*words, "--json")
        self.assertEqual(done.status, status, done.errors)
        document = json.loads(done.errors)
        self.assertEqual(document["exitStatus"], status)
        self.assertIn(text, document["error"])


class OpenSensor(Test):
    """Without users and tokens."""

    def setUp(self):
        super().setUp()
        self.host = self.start("--start", "--still")
        self.tool = self.ctl(self.host)

    def test_status(self):
        wait_until(lambda: self.tool.json("status")["sensor"]["profiles"]["rateHz"] > 0, "profiles")
        status = self.tool.json("status")
        self.assertEqual((status["health"]["status"], status["sensor"]["state"], status["caller"]["caller"]), ("ok", "running", "local"))
        done = self.tool.run("status")
        self.check(done, FINE, "job       default\n")
        self.assertIn("caller    local, administrator\n", done.output)
        self.assertNotIn("\033", done.output)

    def test_services_are_listed_enabled_and_disabled(self):
        self.check(self.tool.run("services"), FINE, "ModbusTcp")
        self.check(self.tool.run("disable", "ModbusTcp"), FINE, "ModbusTcp: stopped\n")
        states = {service["id"]: service["state"] for service in self.tool.json("services")}
        self.assertEqual(states["ModbusTcp"], "stopped")
        self.assertEqual(self.tool.json("enable", "ModbusTcp")["state"], "running")
        self.refused(self.tool, REFUSED, "", "enable", "NoSuchService")

    def test_a_service_that_cannot_be_started_is_an_error_with_the_reason(self):
        with socket.create_server(("127.0.0.1", 0)) as taken:
            port = taken.getsockname()[1]
            self.check(self.tool.run("set", f"AsciiTcp.port={port}"), FINE, f"AsciiTcp.port = {port}\n")
            done = self.tool.run("enable", "AsciiTcp")
            self.assertIn(done.status, (REFUSED, BUSY), done.errors)
            self.assertIn(str(port), done.errors)

    def test_get(self):
        self.assertEqual(json.loads(self.tool.run("get", "/controls/ModbusTcp").output)["id"], "ModbusTcp")
        self.check(self.tool.run("get", "/metrics"), FINE, "# TYPE zucontrol_")
        self.refused(self.tool, REFUSED, "/nothing", "get", "/nothing")
        self.refused(self.tool, USAGE, "is no path", "get", "controls")

    def test_a_stream_is_no_document(self):
        self.refused(self.tool, USAGE, "/events is a stream without an end: see zucontrolctl watch", "get", "/events")

    def test_a_name_of_dots_addresses_no_other_document(self):
        for name in (".", ".."):
            self.refused(self.tool, REFUSED, f"'{name}' cannot be the name of a job", "jobs", "delete", name)
            self.refused(self.tool, REFUSED, f"'{name}' cannot be the name of a job", "jobs", "download", name, "file")

    def test_bytes_that_no_request_has_are_an_error_of_the_command_line(self):
        self.refused(self.tool, USAGE, "The request has bytes that are no UTF-8", "set", os.fsdecode(b"AsciiTcp.address=\xff"))
        self.refused(self.tool, USAGE, "The path has characters that no path has", "get", "/controls/\x01")

    def test_set(self):
        self.check(self.tool.run("set", "ModbusTcp.maxClients=4", "AsciiTcp.decimals=2", "ModbusTcp.readOnly=true"), FINE,
                   "ModbusTcp.maxClients = 4\n")
        changed = self.tool.json("set", "ModbusTcp.writers=10.0.0.0/8")
        self.assertEqual((changed["ModbusTcp"]["maxClients"], changed["ModbusTcp"]["readOnly"], changed["ModbusTcp"]["writers"]),
                         (4, True, "10.0.0.0/8"))
        self.refused(self.tool, REFUSED, "less than its minimum", "set", "ModbusTcp.maxClients=0")
        self.refused(self.tool, REFUSED, "has no parameter 'maxClient'; it has address,", "set", "ModbusTcp.maxClient=1")
        self.refused(self.tool, USAGE, "maxClients: 'many' is not a number", "set", "AsciiTcp.decimals=1", "ModbusTcp.maxClients=many")
        self.refused(self.tool, USAGE, "not of the form TYPE.KEY=VALUE", "set", "maxClients=1")
        self.assertEqual(self.tool.json("get", "/controls/AsciiTcp")["parameters"]["decimals"], 2, "a wrong value has changed another one")

    def test_call(self):
        self.check(self.tool.run("call", "sensor/"), FINE, "clearAlignment")
        self.check(self.tool.run("call", "sensor/stop"), FINE, "scan stop: done")
        self.assertEqual(self.tool.json("status")["sensor"]["state"], "ready")
        self.assertEqual(self.tool.json("call", "sensor/start")["result"], "done")
        self.assertIn(self.tool.json("call", "sensor/trigger", "scanner=scanner-0", "--no-wait")["result"], ("running", "done"))
        self.refused(self.tool, REFUSED, "There is no job 'none'", "call", "sensor/load", "job=none")
        self.refused(self.tool, USAGE, "the command takes", "call", "sensor/load", "name=none")
        self.refused(self.tool, USAGE, "is no document in JSON", "call", "sensor/load", "{job}")
        self.refused(self.tool, USAGE, "is no command", "call", "start")

        block = {"blocks": [{"type": "MeasurementValue", "outputId": 300, "dataSource": "profile/zMax"}]}
        self.check(self.tool.run("call", "ModbusTcp/registerAssembly-0/add", json.dumps(block)), FINE)
        self.assertIn(300, [entry["outputId"] for entry in self.tool.json("map")["ModbusTcp"]])
        self.tool.json("enable", "AsciiTcp")
        self.check(self.tool.run("call", "AsciiTcp/sendText", "text=shift ends"), FINE, '{"clients":0}')
        self.check(self.tool.run("call", "AsciiTcp/outputs/remove", "outputId=zMax"), FINE, "done")

    def test_sources_and_map(self):
        wait_until(lambda: any(source.get("value") == 25 for source in self.tool.json("sources")), "a value")
        self.assertRegex(self.tool.run("sources").output, r"profile/zMax +25 +mm +good +ModbusTcp 170\n")
        wait_until(lambda: self.tool.json("map")["ModbusTcp"][5]["value"] == "25", "a value")
        self.assertRegex(self.tool.run("map").output, r"170 +3 +Measurement +profile/zMax +25 +mm +good\n")
        self.assertRegex(self.tool.run("map").output, r"68 +72 +System +- +running, job default +-\n")
        self.assertRegex(self.tool.run("map", "AsciiTcp").output, r"zMax +- +- +profile/zMax +25 +mm +good\n")
        self.refused(self.tool, REFUSED, "", "map", "NoSuchService")
        self.tool.json("disable", "ModbusTcp")
        self.check(self.tool.run("map"), FINE, "No service is enabled")

    def test_watch(self):
        values = self.tool.run("watch", "values", "profile/zMax", "--rate", "20", "--count", "3")
        self.check(values, FINE, "profile/zMax  25 mm  good\n")
        self.assertEqual(len(values.output.splitlines()), 3)
        lines = self.tool.run("watch", "values", "profile/zMax", "--rate", "20", "--count", "2", "--json").output.splitlines()
        self.assertEqual([json.loads(line)["value"] for line in lines], [25, 25])
        live = self.tool.run("watch", "live", "--rate", "20", "--count", "2")
        self.assertEqual(live.output.count("running, job default"), 2)
        self.assertEqual(len(self.tool.run("watch", "live", "--count", "1", "--json").output.splitlines()), 1)
        self.refused(self.tool, REFUSED, "", "watch", "values", "profile/none", "--count", "1")
        self.refused(self.tool, USAGE, "--rate: '21' is no number from 0.1 to 20", "watch", "live", "--rate", "21")

    def test_watch_shows_events(self):
        stop = threading.Event()

        def change():
            with RestClient(self.host.http_port) as rest:
                while not stop.wait(0.05):
                    rest.put("/controls/AsciiTcp", {"parameters": {"decimals": 1}})

        changer = threading.Thread(target=change)
        changer.start()
        try:
            self.check(self.tool.run("watch", "events", "--count", "1"), FINE, " has changed\n")
            self.assertIn("path", self.tool.json("watch", "events", "--count", "1"))
        finally:
            stop.set()
            changer.join()

    def test_watch_ends_when_its_reader_has_gone(self):
        for words in (("values", "profile/zMax"), ("values", "profile/zMax", "--json"), ("live",), ("live", "--json")):
            process = subprocess.Popen([str(PROGRAM), *self.tool.options, "watch", *words, "--rate", "20"],
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            self.assertTrue(process.stdout.readline())
            process.stdout.close()
            try:
                self.assertEqual(process.wait(PATIENCE), LOCAL_FILE, words)
            finally:
                process.kill()
                process.wait()
            self.assertIn("Standard output cannot be written", process.stderr.read())
            process.stderr.close()

    def test_a_closed_output_gets_no_connection(self):
        for words in (("watch", "values", "profile/zMax", "--count", "2"), ("status",), ("jobs", "download", "default", "job")):
            self.check(self.tool.run(*words, shell="{} >&-"), LOCAL_FILE, "Standard output cannot be written")

    def test_watch_tells_that_the_sensor_has_ended(self):
        process = subprocess.Popen([str(PROGRAM), *self.tool.options, "watch", "values", "profile/zMax", "--rate", "20"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.assertIn("25 mm", process.stdout.readline())
        self.host.stop()
        _, errors = process.communicate(timeout=PATIENCE)
        self.assertIn(process.returncode, (REFUSED, UNREACHABLE), errors)
        self.assertTrue(errors)

    def test_jobs(self):
        self.assertRegex(self.tool.run("jobs", "list").output, r"default +\d+ +loaded")
        self.check(self.tool.run("jobs", "save"), FINE, "default is saved\n")
        self.check(self.tool.run("jobs", "copy", "default", "line 7"), FINE, "default is copied to line 7\n")
        self.check(self.tool.run("jobs", "copy", "line 7", "line 8"), FINE, "line 7 is copied to line 8\n")
        self.check(self.tool.run("jobs", "load", "line 7"), FINE, "line 7 is loaded\n")
        self.assertEqual({job["name"]: job["loaded"] for job in self.tool.json("jobs", "list")},
                         {"default": False, "line 7": True, "line 8": False})
        self.check(self.tool.run("jobs", "download", "line 8"), FINE, "line 8 is in line 8.zpjob\n")
        file = self.folder / "line 8.zpjob"
        self.assertTrue(file.read_bytes().startswith(b"SQLite format 3"))
        self.refused(self.tool, LOCAL_FILE, "is there already", "jobs", "download", "line 8")
        self.check(self.tool.run("jobs", "download", "line 8", "--force"), FINE)
        self.check(self.tool.run("jobs", "delete", "line 8"), FINE)
        self.check(self.tool.run("jobs", "upload", file), FINE, "line 8 is uploaded\n")
        self.check(self.tool.run("jobs", "upload", file, "line 9"), FINE)
        self.assertEqual(len(self.tool.json("jobs", "list")), 4)
        self.refused(self.tool, REFUSED, "", "jobs", "delete", "line 7")
        self.refused(self.tool, REFUSED, "", "jobs", "load", "none")
        self.refused(self.tool, REFUSED, "", "jobs", "upload", secret_file(self.folder, "bad.zpjob", "no archive"))
        self.refused(self.tool, LOCAL_FILE, "No such file", "jobs", "upload", "none.zpjob")

    def test_a_load_tells_what_was_not_taken_over(self):
        self.tool.json("jobs", "save", "other")
        self.tool.run("jobs", "download", "other")
        subprocess.run(["sqlite3", "other.zpjob", "delete from sqlar where name like '%AsciiTcp%'"], cwd=self.folder, check=True)
        self.check(self.tool.run("jobs", "upload", "other.zpjob", "less"), FINE)
        report = self.tool.json("jobs", "load", "less")
        self.assertEqual(report["protocols"]["AsciiTcp"]["source"], "none")
        self.check(self.tool.run("jobs", "load", "less"), FINE, "less is loaded\n")

    def test_problems(self):
        self.check(self.tool.run("problems"), FINE, "There is no problem.\n")
        with socket.create_server(("127.0.0.1", 0)) as taken:
            self.tool.run("set", f"AsciiTcp.port={taken.getsockname()[1]}")
            self.tool.run("enable", "AsciiTcp")
            wait_until(lambda: self.tool.json("problems"), "a problem")
            self.assertRegex(self.tool.run("problems").output, r"^20\d\d-.*  (error|warning)  ")
            self.refused(self.tool, UNWELL, "has found a fault", "doctor")

    def test_metrics(self):
        self.assertRegex(self.tool.run("metrics").output, r"zucontrol_sensor_running +1\n")
        metrics = self.tool.json("metrics", "zucontrol_protocol_clients")
        self.assertIn({"name": "zucontrol_protocol_clients", "labels": 'protocol="ModbusTcp"', "value": "0"}, metrics)

    def test_doctor(self):
        wait_until(lambda: self.tool.run("doctor").status == FINE, "a sensor that is well")
        checks = {finding["check"]: finding for finding in self.tool.json("doctor")}
        self.assertLessEqual({"connection", "health", "certificate", "access", "version", "clock", "sensor", "service ModbusTcp", "disk",
                              "problems", "log"}, checks.keys())
        self.assertEqual(checks["access"]["grade"], "warning")
        self.assertIn("make a token", checks["access"]["advice"])
        self.assertEqual(checks["clock"]["grade"], "ok")
        self.assertIn("docs/operations.md", json.dumps(self.tool.json("doctor")) + "docs/operations.md")

    def test_help_names_each_command_and_status(self):
        text = self.tool.run("--help").output
        for command in ("status", "services", "enable", "disable", "get", "set", "call", "watch", "sources", "map", "jobs", "problems",
                        "metrics", "users", "tokens", "doctor", "backup", "restore", "support", "completion"):
            self.assertRegex(text, rf"\n  {command} ")
        page = (ROOT / "docs/command-line.md").read_text(encoding="utf-8")
        for number, meaning in re.findall(r"^  (\d)  (.+)$", text, re.MULTILINE):
            self.assertIn(f"| {number} | {meaning} |", page)
        self.check(self.tool.run("--version"), FINE, "zucontrolctl 1.")

    def test_the_configuration_names_sensors(self):
        folder = self.folder / ".config/zucontrol"
        folder.mkdir(parents=True)
        file = secret_file(folder, "sensors.toml", f"default = 'a'\n[sensors.a]\nurl = 'http://127.0.0.1:{self.host.http_port}'\n"
                                                   "[sensors.away]\nurl = 'http://127.0.0.1:1'\n")
        named = Ctl(self.folder)
        self.assertEqual(named.json("status")["sensor"]["job"], "default")
        self.refused(named, UNREACHABLE, "cannot be reached", "status", "--sensor", "away")
        self.refused(named, USAGE, "There is no sensor 'b'", "status", "--sensor", "b")
        self.refused(named, USAGE, "exclude each other", "status", "--sensor", "a", "--host", "localhost")
        self.refused(named, LOCAL_FILE, "'none.toml' cannot be read: No such file", "status", "--config", "none.toml")
        file.chmod(0o640)
        self.refused(named, LOCAL_FILE, "others can read it: chmod 600", "status")
        file.chmod(0o600)
        file.write_text("default = 'a'\nsensor = 1\n", encoding="utf-8")
        self.refused(named, LOCAL_FILE, "line 2: 'sensor' is not known", "status")

    def test_colours_and_bars_are_for_terminals(self):
        job = self.folder / "line7.zpjob"
        self.tool.run("jobs", "download", "default", job)

        def on_terminal(*words, **variables):
            """What a terminal gets."""
            main, other = pty.openpty()
            environment = {name: value for name, value in os.environ.items() if name != "NO_COLOR"} | {"TERM": "xterm"} | variables
            process = subprocess.Popen([str(PROGRAM), *self.tool.options, *map(str, words)], stdin=other, stdout=other, stderr=other,
                                       env=environment)
            os.close(other)
            seen = b""
            try:
                while part := os.read(main, 65536):
                    seen += part
            except OSError:
                pass  # the end of a terminal
            os.close(main)
            self.assertEqual(process.wait(PATIENCE), FINE, seen)
            return seen.decode()

        self.assertIn("\033[32m", on_terminal("status"))
        self.assertNotIn("\033", on_terminal("status", NO_COLOR="1"))
        self.assertNotIn("\033", on_terminal("status", "--no-color"))
        self.assertNotIn("\033", on_terminal("status", TERM="dumb"))
        self.assertIn("line7 [##############################] 100 %", on_terminal("jobs", "upload", job))
        self.assertNotIn("#", on_terminal("jobs", "upload", job, "--json"))


class Completion(Test):
    def complete(self, shell, *words):
        """The words that the shell proposes behind `words`; the last one is the beginning of a word."""
        script = self.folder / "script"
        script.write_text(Ctl(self.folder).run("completion", shell).output, encoding="utf-8")
        count = len(words)
        if shell == "bash":
            lines = 'source "$1"; shift; COMP_WORDS=(zucontrolctl "$@"); COMP_CWORD=$#; _zucontrolctl; printf "%s\\n" "${COMPREPLY[@]}"'
            command = ["bash", "--norc", "-c", lines, "bash", script, *words]
        else:
            lines = ('compdef() { :; }; compadd() { shift; print -l -- "$@" }; _files() { print FILES }; source "$1"; shift; '
                     'words=(zucontrolctl "$@"); CURRENT=$((${#words})); _zucontrolctl')
            command = ["zsh", "-f", "-c", lines, "zsh", script, *words]
        done = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE, cwd=self.folder)
        self.assertEqual((done.returncode, done.stderr), (0, ""), (shell, count))
        return set(done.stdout.split())

    def test_commands_options_and_choices_are_completed(self):
        secret_file(self.folder, "job-file", "")
        for shell in ("bash", "zsh"):
            self.assertLessEqual({"status", "jobs"} if shell == "zsh" else {"status"}, self.complete(shell, "st" if shell == "bash" else ""))
            self.assertLessEqual({"list", "load", "upload"}, self.complete(shell, "jobs", ""))
            self.assertLessEqual({"load"}, self.complete(shell, "--host", "jobs", "jobs", "lo" if shell == "bash" else ""))
            self.assertLessEqual({"viewer", "--end", "--save", "--json"}, self.complete(shell, "tokens", "add", "x", ""))
            self.assertEqual(self.complete(shell, "users", "change", "x", "--role", ""),
                             {"viewer", "operator", "engineer", "administrator"})
            self.assertEqual(self.complete(shell, "status", "--host", ""), set())
            self.assertLessEqual({"FILES" if shell == "zsh" else "job-file"}, self.complete(shell, "jobs", "upload", ""))
            self.assertLessEqual({"FILES" if shell == "zsh" else "job-file"}, self.complete(shell, "status", "--token-file", ""))

    def test_another_shell_is_refused(self):
        self.refused(Ctl(self.folder), USAGE, "SHELL", "completion", "fish")


class Page(Test):
    def test_the_session_of_the_page(self):
        def shown(text):
            """Without the widths of columns, which ports change, and numbers of profiles."""
            return re.sub(r" *$", "", re.sub(r"profile \d+", "profile N", re.sub(r" +", " ", text)), flags=re.MULTILINE)

        steps = []
        for line in "\n".join(re.findall(r"^```\n(.*?)^```", section("docs/command-line.md", "A session"), re.MULTILINE | re.DOTALL)).split("\n"):
            if line.startswith("zucontrolctl "):
                steps.append((line, []))
            elif steps and line:
                steps[-1][1].append(line)
        self.assertGreater(len(steps), 8)
        with session_host(["--start", "--still", "--enable", "ModbusTcp"], {"ModbusTcp": "1502", "AsciiTcp": "5025"}) as here:
            tool = Ctl(self.folder, here("8080"))
            for command, lines in steps:
                expected = shown(here("\n".join(lines)))

                def run(words=tuple(shlex.split(command)[1:])):
                    done = tool.run(*words)
                    return shown(done.output + done.errors).strip("\n")

                got = run()
                if command.startswith("zucontrolctl map"):
                    wait_until(lambda: run() == expected, f"{command}: {got}")
                else:
                    self.assertEqual(got, expected, command)


class ManPages(Test):
    def test_the_man_pages_have_each_option_of_the_help(self):
        for program in ("zucontrolctl", "zucontrol-host"):
            page = subprocess.run([BIN / program, "--man"], capture_output=True, text=True, timeout=PATIENCE, check=True).stdout
            text = subprocess.run([BIN / program, "--help"], capture_output=True, text=True, timeout=PATIENCE, check=True).stdout
            shown = subprocess.run(["mandoc", "-T", "utf8"], input=page, capture_output=True, text=True, timeout=PATIENCE, check=True).stdout
            shown = re.sub(".\b", "", shown)  # bold letters are struck twice
            options = set(re.findall(r"^ +(--[a-z-]+)", text, re.MULTILINE))
            self.assertGreater(len(options), 10)
            for option in options:
                self.assertRegex(shown, rf"\n +{option}\b", program)
            checked = subprocess.run(["mandoc", "-T", "lint", "-W", "error"], input=page, capture_output=True, text=True, timeout=PATIENCE)
            self.assertEqual((checked.returncode, checked.stdout), (0, ""), program)

    def test_the_man_page_has_the_texts_of_the_help_of_each_command(self):
        page = subprocess.run([PROGRAM, "--man"], capture_output=True, text=True, timeout=PATIENCE, check=True).stdout.replace("\\-", "-")
        commands = re.findall(r"^\.SS \\fB(.+?)\\fR", page, re.MULTILINE)
        self.assertGreater(len(commands), 30)
        for command in commands:
            text = " ".join(subprocess.run([PROGRAM, *command.split(), "--help"], capture_output=True, text=True, timeout=PATIENCE,
                                           check=True).stdout.split())
            section = page.split(f".SS \\fB{command}\\fR")[1].split("\n.S")[0]
            sentences = [line for line in section.split("\n")[1:] if not line.startswith((".", "\\f"))]
            self.assertTrue(sentences, command)
            for sentence in sentences:
                self.assertIn(sentence.removesuffix("."), text, command)


class ClosedSensor(Test):
    """With a token, users and HTTPS."""

    def setUp(self):
        super().setUp()
        self.token = "a-token-of-the-plant-0123456789"
        self.file = secret_file(self.folder, "token", self.token)
        self.host = self.start("--https", "127.0.0.1:0", "--token", self.file, "--still", modbus=False)
        self.tool = self.ctl(self.host, "--token-file", self.file)

    def test_a_caller_without_a_token_is_refused(self):
        self.refused(self.ctl(self.host), NOT_AUTHORISED, "Give --token-file or --user", "status")
        self.refused(self.ctl(self.host, "--token-file", secret_file(self.folder, "wrong", "x" * 30)), NOT_AUTHORISED, "", "status")
        self.assertEqual(self.tool.json("status")["caller"]["role"], "administrator")

    def test_a_token_file_that_others_can_read_is_refused(self):
        for mode in (0o640, 0o604):
            self.file.chmod(mode)
            self.refused(self.tool, LOCAL_FILE, "others can read it: chmod 600", "status")
        self.refused(self.ctl(self.host, "--token-file", "none"), LOCAL_FILE, "No such file", "status")

    def test_a_secret_goes_to_no_other_machine_without_encryption(self):
        away = Ctl(self.folder, None, "--token-file", self.file, "--host", "http://192.0.2.1:8080", "--timeout", "1")
        self.refused(away, USAGE, "would travel without encryption", "status")
        self.assertEqual(away.run("status", "--insecure").status, UNREACHABLE)

    def test_https_with_an_authority_or_a_fingerprint(self):
        port = self.host.ports["https"]
        tool = Ctl(self.folder, port, "--token-file", self.file, scheme="https")
        self.refused(tool, NOT_TRUSTED, "is not trusted: give --authority or --fingerprint", "status")
        authority = self.folder / "authority.pem"
        authority.write_bytes(self.host.data.joinpath("tls/authority.pem").read_bytes())
        self.assertEqual(tool.json("status", "--authority", authority)["health"]["status"], "ok")
        host = fingerprint_of(self.host.data / "tls/host.pem")
        for fingerprint in (host, fingerprint_of(authority), host.removeprefix("SHA256:").replace(":", "").lower()):
            self.assertEqual(tool.json("status", "--fingerprint", fingerprint)["health"]["status"], "ok")
        wrong = "SHA256:" + ":".join(["00"] * 32)
        self.refused(tool, NOT_TRUSTED, "is not trusted", "status", "--fingerprint", wrong)
        self.refused(tool, USAGE, "is no fingerprint", "status", "--fingerprint", "SHA256:00")
        self.refused(tool, NOT_TRUSTED, "", "status", "--authority", self.file)
        certificate = next(finding for finding in tool.json("doctor", "--authority", authority) if finding["check"] == "certificate")
        self.assertEqual(certificate["grade"], "ok")
        self.assertIn("valid until", certificate["text"])
        self.refused(Ctl(self.folder, self.host.http_port, scheme="https"), NOT_A_SENSOR, "does not speak TLS", "status")

    def test_users(self):
        password = secret_file(self.folder, "password", PASSWORD)
        self.check(self.tool.run("users", "add", "anna", "administrator", "--new-password-file", password), FINE, "anna is added")
        self.check(self.tool.run("users", "add", "bert", "viewer", "--new-password-file", password), FINE)
        self.assertRegex(self.tool.run("users", "list").output, r"bert +viewer +yes +20\d\d-\S+ +-\n")
        self.refused(self.tool, USAGE, "Say what to change", "users", "change", "bert")
        self.check(self.tool.run("users", "change", "bert", "--role", "operator", "--enabled", "no"), FINE, "bert is changed")
        users = {user["name"]: (user["role"], user["enabled"]) for user in self.tool.json("users", "list")}
        self.assertEqual(users, {"anna": ("administrator", True), "bert": ("operator", False)})

        anna = self.ctl(self.host, "--user", "anna", "--password-file", password)
        self.assertEqual(anna.json("status")["caller"]["role"], "administrator")
        self.assertEqual(len(anna.json("get", "/sessions")["sessions"]), 1, "a command leaves its session")
        new = secret_file(self.folder, "new", "another horse battery")
        self.check(anna.run("users", "change", "anna", "--new-password-file", new, "--old-password-file", password), FINE)
        self.refused(anna, NOT_AUTHORISED, "", "status")
        self.refused(self.tool, USAGE, "no terminal to ask for", "users", "add", "carl", "viewer")
        self.refused(self.ctl(self.host, "--user", "anna"), USAGE, "no terminal to ask for the password of anna", "status")
        self.check(self.tool.run("users", "delete", "bert"), FINE)
        self.refused(self.tool, REFUSED, "", "users", "delete", "bert")

    def test_tokens(self):
        made = self.tool.run("tokens", "add", "line 4", "viewer", "--end", END)
        self.check(made, FINE, "zc_")
        self.assertIn("does not show this token again", made.errors)
        self.check(self.tool.run("tokens", "add", "line 5", "operator", "--save", "line5"), FINE, "is in line5\n")
        self.assertEqual(stat.S_IMODE((self.folder / "line5").stat().st_mode), 0o600)
        tokens = {token["name"]: (token["role"], token["end"]) for token in self.tool.json("tokens", "list")}
        self.assertEqual(tokens, {"line 4": ("viewer", END), "line 5": ("operator", None)})
        self.assertRegex(self.tool.run("tokens", "list").output, rf"line 4 +viewer +{END} ")
        viewer = self.ctl(self.host, "--token-file", secret_file(self.folder, "line4", made.output.strip()))
        self.assertEqual(viewer.json("status")["caller"]["role"], "viewer")
        self.refused(viewer, NOT_AUTHORISED, "This needs the role engineer", "set", "AsciiTcp.decimals=1")
        self.assertIn("not examined", json.dumps(viewer.json("doctor")))
        self.check(self.tool.run("tokens", "revoke", "line 4"), FINE)
        self.refused(viewer, NOT_AUTHORISED, "", "status")
        self.refused(self.tool, USAGE, "ROLE", "tokens", "add", "x", "king")

    def test_a_token_is_not_lost_with_its_file(self):
        host = self.start("--still", modbus=False)
        tool = self.ctl(host)
        secret_file(self.folder, "there", "text")
        self.refused(tool, LOCAL_FILE, "is there already", "tokens", "add", "line 4", "administrator", "--save", "there")
        self.assertEqual(tool.json("tokens", "list"), [])
        done = tool.run("tokens", "add", "line 4", "administrator", "--save", "line4", limit=1)
        self.check(done, LOCAL_FILE, "'line4' cannot be written: File too large")
        token = secret_file(self.folder, "token", done.output.strip())
        self.assertEqual(self.ctl(host, "--token-file", token).json("tokens", "list")[0]["name"], "line 4")

    def test_a_bundle_has_no_secrets(self):
        password = secret_file(self.folder, "password", PASSWORD)
        self.tool.run("users", "add", "anna", "administrator", "--new-password-file", password)
        made = self.tool.run("tokens", "add", "line 4", "viewer").output.strip()
        self.tool.run("set", "SparkplugMqtt.server2=//anna:secret-of-the-broker@10.0.0.7:1883")
        self.tool.run("get", "/jobs", "--token-file", secret_file(self.folder, "wrong", "zc_wrong-token-in-the-log"))
        self.check(self.tool.run("support", "bundle.json"), FINE, "read it before you send it")
        text = (self.folder / "bundle.json").read_text(encoding="utf-8")
        bundle = json.loads(text)
        for secret in (self.token, PASSWORD, made, made.removeprefix("zc_"), "secret-of-the-broker", "wrong-token-in-the-log", "PRIVATE KEY"):
            self.assertNotIn(secret, text)
        self.assertEqual({service["id"] for service in bundle["services"]} & {"AsciiTcp", "ModbusTcp"}, {"AsciiTcp", "ModbusTcp"})
        self.assertLessEqual({"/", "/health", "/problems", "/log", "/sensor", "/metrics"}, bundle["documents"].keys())
        self.assertIn("zucontrol_", bundle["documents"]["/metrics"])
        self.assertEqual(stat.S_IMODE((self.folder / "bundle.json").stat().st_mode), 0o600)
        self.refused(self.tool, LOCAL_FILE, "is there already", "support", "bundle.json")

    def test_the_first_administrator(self):
        host = self.start("--http", "0.0.0.0:0", "--insecure", modbus=False)
        code = wait_until(lambda: next(iter(host.data.glob("first-administrator.code")), None), "the code").read_text().strip()
        password = secret_file(self.folder, "password", PASSWORD)
        tool = self.ctl(host)
        self.refused(tool, NOT_AUTHORISED, "", "users", "setup", "WRON-GCOD-EXXX-XXXX", "anna", "--new-password-file", password)
        self.check(tool.run("users", "setup", code, "anna", "--new-password-file", password), FINE, "anna is the first administrator")
        self.assertEqual(self.ctl(host, "--user", "anna", "--password-file", password).json("status")["caller"]["role"], "administrator")


def fingerprint_of(file):
    done = subprocess.run(["openssl", "x509", "-in", file, "-noout", "-fingerprint", "-sha256"], capture_output=True, text=True, check=True)
    return "SHA256:" + done.stdout.strip().split("=")[1]


class Backup(Test):
    def setUp(self):
        super().setUp()
        self.passphrase = secret_file(self.folder, "passphrase", PASSPHRASE)
        self.password = secret_file(self.folder, "password", PASSWORD)

    def make(self, tool, name="backup"):
        self.check(tool.run("backup", name, "--passphrase-file", self.passphrase), FINE, f"The backup is in {name}\n")
        return self.folder / name

    def test_a_backup_goes_onto_a_replacement(self):
        first = self.start("--still", modbus=False)
        tool = self.ctl(first)
        tool.json("set", "AsciiTcp.decimals=1")
        tool.json("jobs", "save", "line7")
        tool.json("set", "AsciiTcp.decimals=2")
        with RestClient(first.http_port) as rest:
            self.assertEqual(rest.put("/sensor/authority", {"rest": 1, "idleSeconds": 7}).status, 200)
        self.check(tool.run("tokens", "add", "line 4", "administrator", "--save", "line4"), FINE)
        tool = self.ctl(first, "--token-file", "line4")
        self.check(tool.run("users", "add", "anna", "administrator", "--new-password-file", self.password), FINE)
        self.check(tool.run("users", "add", "bert", "viewer", "--new-password-file", self.password), FINE)
        self.check(tool.run("users", "change", "bert", "--enabled", "no"), FINE)
        file = self.make(tool)
        sealed = file.read_bytes()
        for text in (b"decimals", b"anna", b"SQLite", PASSPHRASE.encode()):
            self.assertNotIn(text, sealed)
        self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600)
        content = tool.json("restore", file, "--check", "--passphrase-file", self.passphrase)
        self.assertEqual((content["jobs"], content["loaded"]), (["default", "line7"], "default"))
        self.check(tool.run("restore", file, "--check", "--passphrase-file", self.passphrase), FINE, "private keys")

        second = self.start("--still", modbus=False)
        replacement = self.ctl(second)
        done = replacement.run("restore", file, "--passphrase-file", self.passphrase, "--secrets", "secrets.json")
        self.check(done, FINE, "The new passwords and tokens are in secrets.json\n")
        self.assertIn("Not carried:", done.output)
        secrets = json.loads((self.folder / "secrets.json").read_text(encoding="utf-8"))
        self.assertEqual(stat.S_IMODE((self.folder / "secrets.json").stat().st_mode), 0o600)
        self.refused(replacement, NOT_AUTHORISED, "", "status")
        replacement = self.ctl(second, "--token-file", secret_file(self.folder, "new4", secrets["tokens"]["line 4"]))
        self.assertEqual({job["name"]: job["loaded"] for job in replacement.json("jobs", "list")}, {"default": True, "line7": False})
        self.assertEqual(replacement.json("get", "/controls/AsciiTcp")["parameters"]["decimals"], 2)
        authority = replacement.json("get", "/sensor/authority")
        self.assertEqual((authority["rest"], authority["idleSeconds"]), (1, 7))
        self.assertEqual([token["name"] for token in replacement.json("tokens", "list")], ["line 4"])
        users = {user["name"]: (user["role"], user["enabled"]) for user in replacement.json("users", "list")}
        self.assertEqual(users, {"anna": ("administrator", True), "bert": ("viewer", False)})
        anna = self.ctl(second, "--user", "anna", "--password-file", secret_file(self.folder, "annas", secrets["users"]["anna"]))
        self.assertEqual(anna.json("status")["caller"]["role"], "administrator")
        replacement.json("jobs", "load", "line7")
        self.assertEqual(replacement.json("get", "/controls/AsciiTcp")["parameters"]["decimals"], 1)

        # Once more, onto the same device: users and tokens are there already.
        again = replacement.run("restore", file, "--passphrase-file", self.passphrase, "--secrets", "more.json", "--json")
        self.assertEqual(again.status, REFUSED, again.errors)
        results = {step["step"]: step["result"] for step in again.json["steps"]}
        self.assertEqual((results["job line7"], results["load job default"], results["user anna"]), ("done", "done", "failed"))
        self.assertEqual([token["name"] for token in replacement.json("tokens", "list")], ["line 4"])

    def test_a_restore_that_loses_the_sensor_keeps_the_secrets_that_it_has_made(self):
        first = self.start("--still", modbus=False)
        self.check(self.ctl(first).run("tokens", "add", "line 4", "administrator", "--save", "line4"), FINE)
        tool = self.ctl(first, "--token-file", "line4")
        for name in ("anna", "bert"):
            self.check(tool.run("users", "add", name, "administrator", "--new-password-file", self.password), FINE)
        file = self.make(tool)

        second = self.start("--still", modbus=False)
        with failing_network(second.http_port, lambda method, path, body: (method, path) == ("POST", "/users") and b"bert" in body) as port:
            done = Ctl(self.folder, port).run("restore", file, "--passphrase-file", self.passphrase, "--secrets", "secrets.json")
        self.check(done, UNREACHABLE, "cannot be reached")
        secrets = json.loads((self.folder / "secrets.json").read_text(encoding="utf-8"))
        self.assertEqual((list(secrets["tokens"]), list(secrets["users"])), (["line 4"], ["anna"]))
        replacement = self.ctl(second, "--token-file", secret_file(self.folder, "new4", secrets["tokens"]["line 4"]))
        self.assertEqual([token["name"] for token in replacement.json("tokens", "list")], ["line 4"])
        self.assertEqual([user["name"] for user in replacement.json("users", "list")], ["anna"])

    def test_secrets_without_room_on_the_disk_are_shown(self):
        first = self.start("--still", modbus=False)
        self.check(self.ctl(first).run("tokens", "add", "line 4", "administrator", "--save", "line4"), FINE)
        file = self.make(self.ctl(first, "--token-file", "line4"))
        second = self.start("--still", modbus=False)
        done = self.ctl(second).run("restore", file, "--passphrase-file", self.passphrase, "--secrets", "secrets.json", limit=10)
        self.check(done, LOCAL_FILE, "'secrets.json' cannot be written: File too large")
        secrets = json.loads(done.output[done.output.index("{"):])
        replacement = self.ctl(second, "--token-file", secret_file(self.folder, "new4", secrets["tokens"]["line 4"]))
        self.assertEqual([token["name"] for token in replacement.json("tokens", "list")], ["line 4"])

    def test_a_backup_without_room_on_the_disk_leaves_nothing(self):
        tool = self.ctl(self.start("--still", modbus=False))
        before = sorted(os.listdir(self.folder))
        done = tool.run("backup", "backup", "--passphrase-file", self.passphrase, limit=1000)
        self.check(done, LOCAL_FILE, "'backup' cannot be written: File too large")
        self.assertEqual(sorted(os.listdir(self.folder)), before)

    def test_a_backup_takes_the_place_of_no_link(self):
        tool = self.ctl(self.start("--still", modbus=False))
        (self.folder / "link").symlink_to(self.folder / "away")
        words = ("backup", "link", "--passphrase-file", self.passphrase)
        self.refused(tool, LOCAL_FILE, "'link' is there already", *words)
        self.refused(tool, LOCAL_FILE, "'link' is a link, a folder or a device", *words, "--force")
        self.assertTrue((self.folder / "link").is_symlink())

    def test_without_secrets_users_and_tokens_are_left_out(self):
        host = self.start("--still", modbus=False)
        tool = self.ctl(host)
        file = self.make(tool)
        self.check(tool.run("restore", file, "--passphrase-file", self.passphrase), FINE, "--secrets FILE makes them")
        self.check(tool.run("restore", file, "--passphrase-file", self.passphrase, "--secrets", "none.json"), FINE)
        self.assertEqual(json.loads((self.folder / "none.json").read_text()), {"tokens": {}, "users": {}})
        self.assertEqual(tool.json("tokens", "list"), [])

    def test_a_lower_role_makes_a_backup_without_users(self):
        host = self.start("--still", modbus=False)
        self.check(self.ctl(host).run("tokens", "add", "a", "engineer", "--save", "engineer"), FINE)
        document = self.ctl(host, "--token-file", "engineer").json("backup", "b", "--passphrase-file", self.passphrase)
        self.assertEqual([sentence.split(":")[0] for sentence in document["missing"]], ["users", "tokens", "certificate of the authority"])

    def test_bad_backups_change_nothing(self):
        host = self.start("--still", modbus=False)
        tool = self.ctl(host)
        file = self.make(tool)
        bytes_of_it = file.read_bytes()
        wrong = secret_file(self.folder, "wrong", "another passphrase")
        broken = {"cut": bytes_of_it[:-1], "changed": bytes_of_it[:-40] + b"x" + bytes_of_it[-39:], "empty": b"", "other": b"x" * 500}
        for name, content in broken.items():
            (self.folder / name).write_bytes(content)
            self.refused(tool, LOCAL_FILE, "", "restore", name, "--passphrase-file", self.passphrase)
        newer = bytes_of_it.replace(b"ZuControl backup 1", b"ZuControl backup 2", 1)
        (self.folder / "newer").write_bytes(newer)
        self.refused(tool, LOCAL_FILE, "made by a newer version", "restore", "newer", "--passphrase-file", self.passphrase)
        self.refused(tool, LOCAL_FILE, "The passphrase is wrong", "restore", file, "--passphrase-file", wrong)
        self.refused(tool, LOCAL_FILE, "is there already", "restore", file, "--passphrase-file", wrong, "--secrets", "newer")
        self.passphrase.chmod(0o644)
        self.refused(tool, LOCAL_FILE, "others can read it", "restore", file, "--passphrase-file", self.passphrase)
        self.refused(tool, LOCAL_FILE, "is there already", "backup", file, "--passphrase-file", wrong)
        self.assertEqual([job["name"] for job in tool.json("jobs", "list")], ["default"])


class Password(Test):
    def type(self, typed, question, *words):
        """Types this behind the question of a command. Returns the status, and all that the terminal shows."""
        child, terminal = pty.fork()
        if child == 0:
            os.execv(PROGRAM, [str(PROGRAM), "--host", "http://127.0.0.1:1", *words])

        def find_end():
            process, status = os.waitpid(child, os.WNOHANG)
            return (process, status) if process else None

        ended, shown = None, b""
        try:
            while question not in shown:
                shown += os.read(terminal, 1000)
            wait_until(lambda: not termios.tcgetattr(terminal)[3] & termios.ECHO, "a hidden password")
            os.write(terminal, typed)
            ended = wait_until(find_end, "the end of the command")
            self.assertTrue(termios.tcgetattr(terminal)[3] & termios.ECHO)
            with contextlib.suppress(OSError):  # the end of a terminal
                shown += os.read(terminal, 1000)
        finally:
            if ended is None:
                os.kill(child, signal.SIGKILL)
                os.waitpid(child, 0)
            os.close(terminal)
        return os.waitstatus_to_exitcode(ended[1]), shown.decode()

    def test_a_terminal_shows_again_what_is_typed_after_ctrl_c(self):
        status, shown = self.type(b"secret\x03", b"password of anna: ", "--user", "anna", "status")
        self.assertEqual(status, -signal.SIGINT)
        self.assertNotIn("secret", shown)

    def test_an_empty_passphrase_is_refused(self):
        status, shown = self.type(b"\n", b"New passphrase of the backup: ", "backup", str(self.folder / "backup"))
        self.assertEqual(status, USAGE, shown)
        self.assertIn("Nothing was typed", shown)


class OtherServers(Test):
    OPERATION = {"_links": {"self": {"href": "/operations/7"}}, "what": "align", "result": "running", "seconds": 1, "text": ""}

    def test_the_end_of_an_operation_is_waited_for_as_long_as_the_caller_wants(self):
        with document_server({("GET", "/sensor/commands/align"): {"parameters": {}}, ("POST", "/sensor/commands/align"): self.OPERATION,
                              ("GET", "/operations/7"): self.OPERATION}) as port:
            tool = Ctl(self.folder, port)
            self.refused(tool, UNREACHABLE, "align has not ended within 0.1 s. Its end will be shown by: zucontrolctl get /operations/7",
                         "call", "sensor/align", "--wait", "0.1")
            done = tool.run("call", "sensor/align", "--wait", "2.5")
            self.check(done, UNREACHABLE, "align is running. Ctrl+C ends the waiting, not the operation\n")
            self.check(tool.run("call", "sensor/align", "--no-wait"), FINE, "align: running after 1 s\n")
            self.refused(tool, USAGE, "--wait: 'x' is no number from 0 to 86400", "call", "sensor/align", "--wait", "x")

    def test_the_answer_of_a_service_is_no_operation(self):
        ask = "/controls/Asker/commands/ask"
        for answer in ({"result": 5}, {"result": "running"}, {"result": "failed"}):
            with document_server({("GET", ask): {"parameters": {}}, ("POST", ask): answer}) as port:
                self.assertEqual(Ctl(self.folder, port).json("call", "Asker/ask"), answer)
                self.check(Ctl(self.folder, port).run("call", "Asker/ask"), FINE, json.dumps(answer, separators=(",", ":")) + "\n")

    def test_the_doctor_goes_on_after_a_busy_answer(self):
        documents = {"/": {"version": "1.0.0"}, "/session": {"caller": "anna", "role": "viewer"}, "/controls": {"_embedded": {"item": []}},
                     "/sensor": {"status": 503, "detail": "Too many requests run."}, "/problems": {"problems": []}, "/jobs": {"jobs": []},
                     "/log": {"lines": []}}
        with document_server({("GET", path): document for path, document in documents.items()}) as port:
            output = Ctl(self.folder, port).run("doctor").output
        self.assertIn("warning  sensor: not examined: Too many requests run.\n    The sensor is busy: run the doctor again.\n", output)
        self.assertIn("ok  log: no errors among the last lines\n", output)

    def test_documents_of_other_types_are_refused(self):
        commands = (("status",), ("services",), ("map",), ("jobs", "list"), ("problems",), ("sources",), ("users", "list"), ("tokens", "list"),
                    ("watch", "live", "--count", "1"), ("call", "sensor/"))
        paths = ("/", "/sensor", "/problems", "/session", "/controls", "/datasources", "/jobs", "/users", "/sensor/commands")
        for document in (None, "text", [[]], {"jobs": 1, "users": {"a": None}, "dataSources": "x"}):
            documents = {("GET", path): document for path in paths}
            documents["GET", "/tokens"] = {"_embedded": {"item": [document]}}
            with document_server(documents) as port:
                for command in commands:
                    self.check(Ctl(self.folder, port).run(*command), NOT_A_SENSOR, "other documents than a ZuControl host")

    def test_no_text_of_the_server_controls_the_terminal(self):
        text = "a\0\x1b[31m\r\x7f\u009b\u202eb"
        shown = "a\\x00\\x1b[31m\\x0d\\x7f\\x9b\\u202eb"
        documents = {"/jobs": {"jobs": [{"name": text, "bytes": 1, "loaded": False, "modified": False}]},
                     "/problems": {"problems": [{"severity": text, "source": text, "text": text, "since": text}]},
                     "/users": {"users": [{"name": text, "role": text, "enabled": True, "created": text, "lastLogin": None}]},
                     "/sensor/commands": {"_embedded": {"item": [{"id": text, "parameters": {text: text}}]}},
                     "/sensor": {"status": 503, "detail": text[2:]}}
        with document_server({("GET", path): document for path, document in documents.items()}) as port:
            tool = Ctl(self.folder, port)
            for command in (("jobs", "list"), ("problems",), ("users", "list"), ("call", "sensor/")):
                output = tool.run(*command).output
                self.assertIn(shown, output)
                self.assertEqual(output, "".join(letter for letter in output if letter.isprintable() or letter == "\n"))
            self.check(tool.run("get", "/sensor"), BUSY, shown[5:])

    def test_a_long_document_is_refused(self):
        with document_server({("GET", "/jobs"): {"jobs": ["x" * 1000] * 17000}}) as port:
            self.refused(Ctl(self.folder, port), NOT_A_SENSOR, "The answer of the server is longer than 16 MiB", "jobs", "list")

    def test_a_server_that_is_away(self):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            port = listener.getsockname()[1]
        self.refused(Ctl(self.folder, port), UNREACHABLE, "cannot be reached", "status")
        self.refused(Ctl(self.folder), UNREACHABLE, "cannot be reached", "status", "--host", "no-such-host.invalid")

    def test_a_server_that_never_answers(self):
        with mute_server() as port:
            self.refused(Ctl(self.folder, port, "--timeout", "1"), UNREACHABLE, "does not answer within 1 seconds", "status")
            self.refused(Ctl(self.folder, port, "--timeout", "1"), UNREACHABLE, "does not answer within 1 seconds", "watch", "events")

    def test_another_server_gets_no_token(self):
        token = secret_file(self.folder, "token", "a-token-of-the-plant-0123456789")
        answers = [(200, "text/html", b"<html></html>"), (404, "text/html", b"nothing"), (200, "application/json", b"{}"),
                   (200, "application/json", b"[" * 100000 + b"]" * 100000), (302, "text/html", b""),
                   (200, "application/hal+json", b'{"faults":[]}'), (200, "application/json", b"not JSON")]
        for answer in answers:
            with other_server(*answer) as server:
                tool = Ctl(self.folder, server.server_address[1], "--token-file", token)
                for command in (("status",), ("get", "/"), ("jobs", "list")):
                    self.refused(tool, NOT_A_SENSOR, "is another server than a ZuControl host", *command)
                self.assertEqual([path for path, headers in server.seen if path != "/health" or "Authorization" in headers], [])

    def test_a_server_that_only_begins_like_a_host(self):
        with other_server(200, "application/json", b'{"faults":[],"upTimeSec":1,"status":"ok"}') as server:
            for command in (("status",), ("services",), ("jobs", "list"), ("map",), ("metrics",), ("problems",), ("doctor",)):
                done = Ctl(self.folder, server.server_address[1]).run(*command)
                self.assertIn(done.status, (NOT_A_SENSOR, FINE) if command == ("metrics",) else (NOT_A_SENSOR,), (command, done.errors))

    def test_a_server_that_speaks_no_http(self):
        with talking_server(b"SSH-2.0-OpenSSH_9.2\r\n") as port:
            self.assertIn(Ctl(self.folder, port).run("status").status, (NOT_A_SENSOR, UNREACHABLE))
        with talking_server(b"") as port:
            self.refused(Ctl(self.folder, port), UNREACHABLE, "", "status")

    def test_wrong_command_lines(self):
        tool = Ctl(self.folder)
        for words in ((), ("nothing",), ("jobs",), ("get",), ("status", "--no-such-option"), ("status", "--host", "a", "--host", "b")):
            self.check(tool.run(*words), USAGE, "Try --help")
        self.refused(tool, USAGE, "is no address of a sensor", "status", "--host", "ftp://x")
        self.refused(tool, USAGE, "--timeout: '0' is no number from 1", "status", "--timeout", "0")
        done = subprocess.run(f"'{PROGRAM}' --help > /dev/full", shell=True, capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual(done.returncode, LOCAL_FILE, done.stderr)


if __name__ == "__main__":
    unittest.main()
