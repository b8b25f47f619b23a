"""Every command that the pages show can be typed once the page's own line has installed the clients."""

import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
INSTALL = "scripts/install-dependencies clients"
PACKAGE_OF = {"curl": "curl", "jq": "jq", "mbpoll": "mbpoll", "mosquitto": "mosquitto", "mosquitto_pub": "mosquitto-clients",
              "nc": "netcat-openbsd", "python3": "python3-pymodbus python3-serial-asyncio", "sqlite3": "sqlite3"}
# Programs of a bare system, of the package set `build`, or of this tree.
THERE = {"./run", "journalctl", "sudo", "systemctl", "./test", "./bench", "cd", "cmake", "cp", "cut", "echo", "editor", "grep", "head", "printf", "sh", "sleep",
         "tr", INSTALL.split()[0],
         "zucontrol-host", "~/zucontrol/bin/zucontrol-host"}
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]


def packages(*sets):
    words = [str(ROOT / "scripts/install-dependencies"), "--list", *sets]
    return set(subprocess.run(words, check=True, capture_output=True, text=True).stdout.split())


def commands(page):
    """(line, program) for each program that a session of the page starts, in order; answers between them are left out."""
    known = "|".join(re.escape(name) for name in (*PACKAGE_OF, *sorted(THERE)))
    for block in re.findall(r"^```\n(.*?)^```", page.read_text(), re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            bare = re.sub(r"'[^']*'|\"[^\"]*\"|\s#.*", " QUOTED ", line)
            if re.match(rf"\(?({known})(\s|$)", bare):
                for part in re.split(r"[|;]|&&", bare):
                    yield line, part.strip(" ()").split()[0]


class Clients(unittest.TestCase):
    def test_the_set_holds_every_client_that_a_page_uses(self):
        used = {name for page in PAGES for _, name in commands(page)}
        self.assertEqual(used - THERE - set(PACKAGE_OF), set())
        self.assertEqual({package for name in used & set(PACKAGE_OF) for package in PACKAGE_OF[name].split()}, packages("clients"))

    def test_the_readme_installs_the_clients_before_it_uses_one(self):
        lines = list(commands(PAGES[0]))
        first = next(index for index, (_, name) in enumerate(lines) if name in PACKAGE_OF)
        self.assertIn((INSTALL, INSTALL.split()[0]), lines[:first])

    def test_the_tests_have_the_clients_too(self):
        self.assertLessEqual(packages("clients"), packages("test"))


if __name__ == "__main__":
    unittest.main()
