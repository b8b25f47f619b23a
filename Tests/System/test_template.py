"""The template plug-in is built against the installed kit, both ways, and runs as its page says."""

import json
import os
import pathlib
import re
import shlex
import shutil
import socket
import subprocess
import tempfile
import unittest
import urllib.request

from host import PATIENCE, Host, wait_until
from installation import ROOT, hide_private_dependencies, install, package_folder, run
from pages import expect, section, session, session_host
from rest import RestClient


class Template(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.prefix = pathlib.Path(cls.folder.name) / "installed"
        install(cls.prefix)
        # Given to every compiler below: a plug-in's author has none of our private dependencies.
        cls.environment = dict(os.environ, CXXFLAGS=hide_private_dependencies(pathlib.Path(cls.folder.name) / "hidden"))

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def copy(self, name):
        copied = pathlib.Path(self.folder.name) / name
        shutil.copytree(ROOT / "Samples/Template", copied)
        return copied

    def expect_lines(self, plugins):
        with Host("--plugins", plugins, "--enable", "Template", "--start", "--param", "Template.port=0",
                  modbus=False, program=self.prefix / "bin/zucontrol-host") as host:
            with socket.create_connection(("127.0.0.1", host.ports["Template"]), timeout=PATIENCE) as sock:
                lines = sock.makefile("r")
                sock.sendall(b"start it\nstop\n")
                self.assertEqual(lines.readline(), "error the requests are start and stop\n")
                self.assertEqual(lines.readline(), "ok\n")
                request = urllib.request.Request(
                    f"http://127.0.0.1:{host.http_port}/controls/Template/outputs/commands/add",
                    data=json.dumps({"outputId": 7, "source": "profile/zMax"}).encode(), method="POST")
                urllib.request.urlopen(request, timeout=PATIENCE).close()

                def starts():  # refused until the stop has ended
                    sock.sendall(b"start\n")
                    return lines.readline() == "ok\n"
                wait_until(starts, "the start")
                with RestClient(host.http_port) as rest:
                    before = rest.get("/controls/Template").json["parameters"]
                    refused = rest.put("/controls/Template", {"parameters": {"address": "nonsense", "maxClients": 3}})
                    self.assertEqual(refused.status, 422)
                    self.assertEqual(rest.get("/controls/Template").json["parameters"], before)
                self.assertRegex(lines.readline(), r"^7=(0|10|25)\.000:1\n$")

    def expect_the_session_of_the_guide(self, plugins):
        arguments, steps = session("docs/plugin-guide.md", "4. Run it")
        self.assertEqual([command.split()[0] for command, _ in steps], ["curl", "nc"])
        arguments[arguments.index("--plugins") + 1] = plugins
        with session_host(arguments, {"Template": "9150"}, program=self.prefix / "bin/zucontrol-host") as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)

    def expect_the_offer_of_the_guide(self, source):
        fence = section("docs/plugin-guide.md", "12. Test and debug").split("```")[1]
        command, shown = fence.strip().split("\n", 1)
        command = command.replace("~/zucontrol", str(self.prefix))
        done = subprocess.run(shlex.split(command), cwd=source, capture_output=True, text=True, timeout=PATIENCE)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(re.sub(r":\d+$", ":40123", done.stdout.strip()), shown)

    def test_with_find_package(self):
        source = self.copy("with_cmake")
        run("cmake", "-S", source, "-B", source / "build", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            env=self.environment)
        run("cmake", "--build", source / "build")
        self.expect_lines(source / "build")
        self.expect_the_session_of_the_guide(source / "build")
        self.expect_the_offer_of_the_guide(source)

    def test_with_pkg_config(self):
        source = self.copy("with_make")
        run("make", "-C", source, "-j2", env=dict(self.environment, PKG_CONFIG_PATH=str(package_folder(self.prefix))))
        self.expect_lines(source)

    @unittest.skipUnless(shutil.which("clang++"), "needs clang++")
    def test_with_the_other_compiler(self):
        """A plug-in of clang runs in a host of GCC: the two agree on layouts, slots, exceptions and the standard library."""
        source = self.copy("with_clang")
        run("cmake", "-S", source, "-B", source / "build", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={self.prefix}",
            "-DCMAKE_CXX_COMPILER=clang++", env=self.environment)
        run("cmake", "--build", source / "build")
        self.assertIn(b"clang", (source / "build/template.so").read_bytes())
        run(self.prefix / "bin/zucontrol-host", "--check-plugin", source / "build/template.so")
        self.expect_lines(source / "build")

    def test_the_guide_shows_what_is_built(self):
        guide = (ROOT / "docs/plugin-guide.md").read_text()
        code = "".join(path.read_text() for folder in ("Samples/Template", "Plugins/Common", "Plugins/AsciiTcp", "Plugins/ModbusTcp")
                       for path in sorted((ROOT / folder).rglob("*.*")))
        samples = [fence.removeprefix("cpp\n") for fence in guide.split("```")[1::2] if fence.startswith("cpp\n")]
        self.assertTrue(samples)
        for sample in samples:
            self.assertIn(sample, code)


if __name__ == "__main__":
    unittest.main()
