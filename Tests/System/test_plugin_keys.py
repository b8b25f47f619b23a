"""A host that asks plug-ins for a signature, with the tool that signs them."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

from host import BIN, PATIENCE, Host, run_host
from rest import RestClient

ROOT = pathlib.Path(__file__).resolve().parents[2]


def run(*words):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=PATIENCE)
    assert done.returncode == 0, done.stderr
    return done.stdout


class PluginKeys(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.key = self.folder / "plugin.key"
        self.keys = self.folder / "plugin-keys.pem"
        run("openssl", "genpkey", "-algorithm", "ed25519", "-out", self.key)
        run("openssl", "pkey", "-in", self.key, "-pubout", "-out", self.keys)
        self.plugins = self.folder / "plugins"
        self.plugins.mkdir()
        for name in ("modbustcp.so", "asciitcp.so"):
            shutil.copy(BIN / "plugins" / name, self.plugins)
        self.modbus = self.plugins / "modbustcp.so"
        self.ascii = self.plugins / "asciitcp.so"

    def sign(self, *plugins):
        self.assertEqual(run(ROOT / "scripts/sign-plugin", self.key, *plugins), "".join(f"{plugin}.sig\n" for plugin in plugins))

    def host(self, *arguments, **options):
        return Host("--plugins", self.plugins, "--plugin-keys", self.keys, *arguments, **options)

    def problems(self, host):
        with RestClient(host.http_port) as rest:
            return [problem["text"] for problem in rest.get("/problems").json["problems"]]

    def test_signed_plug_ins_run(self):
        self.sign(self.modbus, self.ascii)
        with self.host() as host:
            self.assertIn("ModbusTcp", host.ports)
            self.assertEqual(self.problems(host), [])

    def test_a_plug_in_without_signature_is_refused_and_the_others_run(self):
        self.sign(self.modbus)
        with self.host() as host:
            self.assertEqual(self.problems(host), [f"Plug-in {self.ascii} was refused: it has no signature asciitcp.so.sig, "
                                                   "and --plugin-keys asks for one"])
            with RestClient(host.http_port) as rest:
                self.assertEqual(rest.get("/controls/AsciiTcp").status, 404)
                found = [entry["result"] for entry in rest.get("/audit?what=plug-in%20asciitcp.so").json["entries"]]
                self.assertTrue(found and found[0].startswith("refused: "), found)

    def test_a_plug_in_that_was_changed_after_it_was_signed_is_refused(self):
        self.sign(self.modbus, self.ascii)
        with open(self.ascii, "r+b") as file:
            file.seek(-1, 2)
            last = file.read(1)
            file.seek(-1, 2)
            file.write(bytes([last[0] ^ 1]))
        with self.host() as host:
            self.assertEqual(self.problems(host), [f"Plug-in {self.ascii} was refused: its signature asciitcp.so.sig was made "
                                                   f"for another file, or by no key in {self.keys}"])

    def test_the_signature_of_another_key_is_refused(self):
        self.sign(self.modbus, self.ascii)
        run("openssl", "genpkey", "-algorithm", "ed25519", "-out", self.key)
        run("openssl", "pkey", "-in", self.key, "-pubout", "-out", self.keys)
        self.sign(self.modbus)
        with self.host() as host:
            self.assertEqual(len(self.problems(host)), 1)

    def test_the_check_of_a_plug_in_tells_it(self):
        self.sign(self.modbus)
        words = ("--plugins", self.plugins, "--plugin-keys", self.keys, "--check-plugin")
        status, shown, errors = run_host(*words, self.modbus)
        self.assertEqual((status, errors), (0, ""))
        self.assertIn(f"{self.modbus} is signed by key 1 in {self.keys}\n", shown)
        status, _, errors = run_host(*words, self.ascii)
        self.assertEqual((status, errors), (1, f"zucontrol-host: Plug-in {self.ascii} was refused: it has no signature "
                                               "asciitcp.so.sig, and --plugin-keys asks for one\n"))

    def test_a_file_without_keys_is_bad_input(self):
        self.keys.write_text("nonsense\n")
        status, _, errors = run_host("--plugin-keys", self.keys)
        self.assertEqual((status, errors),
                         (2, f"zucontrol-host: option '--plugin-keys': {self.keys}, line 1: this is no Ed25519 public key\n"))


if __name__ == "__main__":
    unittest.main()
