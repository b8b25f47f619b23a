"""The smallest plug-in of the README equals the sample that is built, and it runs."""

import pathlib
import unittest

from host import BIN, Host

ROOT = pathlib.Path(__file__).resolve().parents[2]


class Sample(unittest.TestCase):
    def test_the_readme_shows_what_is_built(self):
        self.assertIn((ROOT / "Samples/Example/Example.cpp").read_text(), (ROOT / "README.md").read_text())

    def test_it_runs(self):
        with Host("--plugins", BIN / "samples", "--enable", "Example", "--start", modbus=False) as host:
            host.wait_for_log('"Example"')
            self.assertNotIn("cannot be started", host.log())


if __name__ == "__main__":
    unittest.main()
