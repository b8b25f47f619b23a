"""The messages on the page for operators are those of the program."""

import pathlib
import re
import tempfile
import unittest

from host import Host, run_host
from rest import RestClient

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs/operations.md").read_text()
SOURCES = "\n".join(path.read_text() for folder in ("Host", "Plugins", "Platform", "ZuControl")
                    for path in sorted((ROOT / folder).rglob("*.cpp")))


class Operations(unittest.TestCase):
    def test_the_page_lists_the_options_of_the_program(self):
        status, shown, _ = run_host("--help")
        self.assertEqual(status, 0)
        rows = "\n".join(line for line in PAGE.splitlines() if line.startswith("| `--"))
        self.assertEqual(set(re.findall(r"`(--[a-z-]+)", rows)), set(re.findall(r"^ *(--[a-z-]+)", shown, re.MULTILINE)))

    def test_the_state_survives_in_the_data_folder_and_a_new_folder_starts_clean(self):
        self.assertIn("### Start clean", PAGE)
        with tempfile.TemporaryDirectory() as data:
            with Host("--param", "ModbusTcp.maxClients=3", data=data):
                pass
            with Host(modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                self.assertIn("ModbusTcp", host.ports)
                self.assertEqual(rest.get("/controls/ModbusTcp").json["parameters"]["maxClients"], 3)
            with Host("--job", "other", modbus=False, data=data) as host:
                self.assertNotIn("ModbusTcp", host.ports)
            self.assertLessEqual({"default.zpjob", "other.zpjob"}, {path.name for path in pathlib.Path(data).iterdir()})
        with Host(modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertNotIn("ModbusTcp", host.ports)
            self.assertEqual(rest.get("/controls/ModbusTcp").json["parameters"]["maxClients"], 16)

    def test_each_problem_of_the_page_is_one_that_the_program_tells(self):
        section = PAGE[PAGE.index("| problem |"):PAGE.index("After a load")]
        sentences = [sentence for row in section.strip().splitlines()[2:] for sentence in re.findall(r'"([^"]+)"', row.split("|")[1])]
        self.assertGreater(len(sentences), 8)
        for sentence in sentences:
            for part in sentence.split("..."):
                if len(part.strip(" '().")) > 4:
                    self.assertTrue(part.strip(" '().") in SOURCES, part)


if __name__ == "__main__":
    unittest.main()
