"""The unit of the service is valid, and lets the host do little else than its work."""

import configparser
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNIT = ROOT / "packaging/zucontrol.service"
WORST_EXPOSURE = 15  # tenths; 0 is best, 100 is worst


class Settings(configparser.RawConfigParser):
    optionxform = staticmethod(str)  # names as they are written


def settings():
    unit = Settings(strict=False, interpolation=None)
    unit.read(UNIT)
    return unit


def analyze(*words):
    return subprocess.run(["systemd-analyze", *map(str, words)], capture_output=True, text=True, timeout=60)


class ServiceUnit(unittest.TestCase):
    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd-analyze is not installed")
    def test_systemd_understands_it(self):
        with tempfile.TemporaryDirectory() as folder:
            unit = pathlib.Path(folder) / UNIT.name
            # The program need not be installed here.
            unit.write_text(UNIT.read_text().replace("ExecStart=/usr/bin/zucontrol-host ", "ExecStart=/bin/true "))
            done = analyze("verify", "--man=no", unit)
        said = [line for line in (done.stdout + done.stderr).splitlines()
                if not re.search(r"Unknown key.* '(RestartSteps|RestartMaxDelaySec)' in section", line)]
        self.assertEqual((done.returncode, said), (0, []))

    @unittest.skipUnless(shutil.which("systemd-analyze"), "systemd-analyze is not installed")
    def test_its_exposure_is_low(self):
        done = analyze("security", "--offline=true", "--no-pager", f"--threshold={WORST_EXPOSURE}", UNIT)
        level = re.search(r"Overall exposure level for zucontrol.service: (\d+\.\d)", done.stdout)
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertLessEqual(float(level[1]), WORST_EXPOSURE / 10)

    def test_it_is_started_again_ever_later_but_not_after_bad_input(self):
        service = settings()["Service"]
        self.assertEqual((service["Restart"], service["RestartPreventExitStatus"]), ("on-failure", "2"))
        self.assertLess(int(service["RestartSec"]), int(service["RestartMaxDelaySec"]))
        self.assertEqual(settings()["Unit"]["StartLimitIntervalSec"], "0")  # it is never given up

    def test_the_service_manager_waits_longer_than_the_host(self):
        service = settings()["Service"]
        options = (ROOT / "Host/CommandLine/Options.h").read_text()
        own_limit = int(re.search(r"stopLimitSeconds = (\d+);", options)[1])
        self.assertGreater(int(service["TimeoutStopSec"]), own_limit)

    def test_it_has_one_capability_and_a_user_of_its_own(self):
        service = settings()["Service"]
        self.assertEqual((service["AmbientCapabilities"], service["CapabilityBoundingSet"]), 2 * ("CAP_NET_BIND_SERVICE",))
        users = (ROOT / "packaging/debian/zucontrol-host.sysusers").read_text().split()
        self.assertEqual(users[:2], ["u", service["User"]])


if __name__ == "__main__":
    unittest.main()
