"""The built programs, libraries and plug-ins search libraries beside themselves only, and a release build is hardened."""

import os
import re
import subprocess
import unittest

from host import BIN

IS_HARDENED = os.environ["ZU_HARDENED"] == "1"


def is_elf(path):
    with path.open("rb") as file:
        return file.read(4) == b"\x7fELF"


def readelf(*arguments):
    return subprocess.run(["readelf", "--wide", *map(str, arguments)], capture_output=True, text=True, check=True).stdout


class Hardening(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.files = [path for path in sorted(BIN.rglob("*")) if path.is_file() and not path.is_symlink() and is_elf(path)]
        cls.ours = [path for path in cls.files
                    if path.name == "zucontrol-host" or path.name.startswith("libZu") or path.parent == BIN / "plugins"]

    def test_no_file_searches_libraries_in_the_working_directory(self):
        self.assertGreaterEqual(len(self.ours), 6)
        found = {}
        for path in self.files:
            for paths in re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*)\]", readelf("-d", path)):
                bad = [folder for folder in paths.split(":") if not folder.startswith(("$ORIGIN", "/"))]
                if bad:
                    found[path.name] = paths
        self.assertEqual(found, {})

    def test_the_host_is_position_independent(self):
        self.assertRegex(readelf("-h", BIN / "zucontrol-host"), r"Type:\s+DYN")
        self.assertRegex(readelf("-d", BIN / "zucontrol-host"), r"FLAGS_1.*\bPIE\b")

    @unittest.skipUnless(IS_HARDENED, "this build is not hardened")
    def test_relocations_are_read_only_before_the_program_runs(self):
        for path in self.ours:
            self.assertIn("GNU_RELRO", readelf("-l", path), path)
            self.assertRegex(readelf("-d", path), r"FLAGS_1.*\bNOW\b", path)

    @unittest.skipUnless(IS_HARDENED, "this build is not hardened")
    def test_stacks_and_copies_are_checked(self):
        symbols = {path.name: readelf("--dyn-syms", path) for path in self.ours}
        for name, list_of_symbols in symbols.items():
            self.assertIn("__stack_chk_fail", list_of_symbols, name)
        fortified = [name for name, shown in symbols.items() if re.search(r" __(?!stack)\w+_chk\b", shown)]
        self.assertIn("zucontrol-host", fortified)
        self.assertTrue(any(name.startswith("libZuApi") for name in fortified), fortified)


if __name__ == "__main__":
    unittest.main()
