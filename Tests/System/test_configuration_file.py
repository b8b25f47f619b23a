"""The configuration file: what holds at the start, what a hang-up signal changes, and what is wrong with a bad file."""

import pathlib
import re
import signal
import tempfile
import unittest

from host import Host, run_host, wait_until
from rest import RestClient

ROOT = pathlib.Path(__file__).resolve().parents[2]


class ConfigurationFileCase(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)
        self.file = pathlib.Path(self.folder.name) / "zucontrol.toml"

    def write(self, *lines):
        self.file.write_text("\n".join(lines) + "\n", encoding="utf-8")

    def check(self, *arguments):
        return run_host("--check-config", "--config", self.file, *arguments)


class Start(ConfigurationFileCase):
    def test_the_host_has_what_the_file_says(self):
        self.write("job = 'line 3'", "still = true", "enable = ['ModbusTcp']",
                   "[param.ModbusTcp]", "port = 0", "maxClients = 3")
        with Host("--config", self.file, modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertIn("ModbusTcp", host.ports)
            self.assertEqual(rest.get("/controls/ModbusTcp").json["parameters"]["maxClients"], 3)
            self.assertEqual(rest.get("/sensor").json["job"], "line 3")

    def test_an_option_of_the_command_line_goes_before_the_file(self):
        self.write("job = 'line 3'")
        with Host("--config", self.file, "--job", "line 4", modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.get("/sensor").json["job"], "line 4")

    def test_a_faulty_file_ends_the_start_with_its_line(self):
        self.write("start = true", "raet = 10")
        status, output, errors = run_host("--config", self.file)
        self.assertEqual((status, output), (2, ""))
        self.assertEqual(errors, f"zucontrol-host: {self.file}, line 2: 'raet' is no key; the nearest one is 'rate'\n")


class Check(ConfigurationFileCase):
    def test_a_good_file_has_no_fault(self):
        self.write("rate = 10", "[param.ModbusTcp]", "port = 1502")
        self.assertEqual(self.check(), (0, f"{self.file} has no fault\n", ""))

    def test_each_fault_has_a_line(self):
        self.write("rate = 'fast'", "colour = 'red'", "start = 1")
        status, output, errors = self.check()
        self.assertEqual((status, output), (2, ""))
        self.assertEqual(errors.splitlines(), [
            f"zucontrol-host: {self.file}, line 1: 'rate': 'fast' is no number of profiles per second from 0 to 100000",
            f"zucontrol-host: {self.file}, line 2: 'colour' is no key",
            f"zucontrol-host: {self.file}, line 3: 'start' needs true or false"])

    def test_what_the_file_names_must_be_there(self):
        for line, text in (("token = '/nowhere/token'", "/nowhere/token"),
                           ("plugins = '/nowhere/plugins'", "there is no folder '/nowhere/plugins'"),
                           ("replay = '/nowhere/part.pcd'", "/nowhere/part.pcd"),
                           ("https = '127.0.0.1:0'\ncertificate = '/nowhere/c'\nkey = '/nowhere/k'", "/nowhere/"),
                           ("certificate = 'c'", "options '--certificate' and '--key' need each other")):
            with self.subTest(line):
                self.write(line)
                status, output, errors = self.check()
                self.assertEqual((status, output), (2, ""))
                self.assertIn(text, errors)

    def test_the_command_line_counts_as_well(self):
        self.write("still = true")
        status, output, errors = self.check("--http", "0.0.0.0:0")
        self.assertEqual((status, output), (2, ""))
        self.assertIn("--insecure", errors)

    def test_a_file_that_is_away_is_told(self):
        self.assertEqual(self.check(), (2, "", f"zucontrol-host: {self.file} cannot be read: No such file or directory\n"))


class Example(ConfigurationFileCase):
    ON_THE_COMMAND_LINE = {"check-config", "check-plugin", "check-trail", "config", "help", "man", "reset-administrator", "version"}

    def test_it_has_every_key_and_no_fault(self):
        text = (ROOT / "packaging/zucontrol.toml").read_text(encoding="utf-8")
        self.write(re.sub(r"^#(?=[a-z\[])", "", text, flags=re.MULTILINE))
        _, options, _ = run_host("--help")
        keys = set(re.findall(r"^  --([a-z-]+)", options, flags=re.MULTILINE)) - self.ON_THE_COMMAND_LINE - {"param"}
        self.assertEqual(set(re.findall(r"^([a-z-]+) =", self.file.read_text(encoding="utf-8"), flags=re.MULTILINE)),
                         keys | {"port", "address"})
        # With the parts that exclude each other taken out, and the files that are only examples.
        only_examples = r"^(replay|certificate|key|token|login-notice|plugins|plugin-keys) =.*$"
        self.write(re.sub(only_examples, "", self.file.read_text(encoding="utf-8"), flags=re.MULTILINE))
        self.assertEqual(self.check(), (0, f"{self.file} has no fault\n", ""))


class HangUp(ConfigurationFileCase):
    def start(self, *lines):
        self.write(*lines)
        return Host("--config", self.file)

    def hang_up(self, host, text):
        host.process.send_signal(signal.SIGHUP)
        host.wait_for_log(text)

    @staticmethod
    def problems(rest):
        return [problem["text"] for problem in rest.get("/problems").json["problems"]]

    def test_the_log_level_changes_at_once(self):
        with self.start("log = 'error'") as host:
            self.write("log = 'info'")
            self.hang_up(host, "The configuration has been read again")

    def test_the_rest_waits_for_the_next_start(self):
        with self.start("rate = 10", "[param.ModbusTcp]", "maxClients = 3") as host:
            self.write("rate = 20", "start = true", "[param.ModbusTcp]", "maxClients = 3")
            self.hang_up(host, f"The new value of 'rate' in {self.file} takes effect at the next start")
            host.wait_for_log(f"The new value of 'start' in {self.file} takes effect at the next start")
            self.assertNotIn("'param'", host.log())

    def test_a_broken_file_changes_nothing_and_is_a_problem_until_it_is_mended(self):
        with self.start("log = 'info'") as host, RestClient(host.http_port) as rest:
            self.write("log = 'error'", "raet = 10")
            sentence = (f"The configuration stays as it was: {self.file}, line 2: 'raet' is no key; the nearest one is "
                        "'rate'")
            self.hang_up(host, sentence)
            wait_until(lambda: sentence in self.problems(rest), "the problem")
            self.assertEqual(rest.get("/health").json["status"], "ok")

            self.write("log = 'info'")
            self.hang_up(host, "The configuration has been read again")
            wait_until(lambda: sentence not in self.problems(rest), "the end of the problem")

    def test_a_broken_token_file_is_a_problem_until_it_is_mended(self):
        token = pathlib.Path(self.folder.name) / "token"
        token.touch(0o600)
        token.write_text("the-first-token-0\n", encoding="utf-8")
        with Host("--token", token) as host, RestClient(host.http_port) as rest:
            def problems():
                answer = rest.get("/problems", Authorization="Bearer the-first-token-0")
                return [problem["text"] for problem in answer.json["problems"]]
            token.write_text("short\n", encoding="utf-8")
            self.hang_up(host, "The token stays as it was: ")
            wait_until(lambda: any(text.startswith("The token stays as it was: ") for text in problems()), "the problem")
            token.write_text("the-first-token-0\n", encoding="utf-8")
            self.hang_up(host, "The token file has been read again")
            wait_until(lambda: problems() == [], "the end of the problem")


if __name__ == "__main__":
    unittest.main()
