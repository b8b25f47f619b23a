"""The bill of materials names every dependency with its version and licence."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts/bill-of-materials"
ENVIRONMENT = dict(os.environ, SOURCE_DATE_EPOCH="1700000000")


def run(*words):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True, text=True, timeout=120,
                          env=ENVIRONMENT).stdout


class BillOfMaterials(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        # A program of the system stands for ours: this test also runs where no host is built.
        cls.text = run(SCRIPT, "--version", "1.2.3", "--commit", "abc", "/bin/ls")
        cls.document = json.loads(cls.text)
        cls.packages = {package["name"]: package for package in cls.document["packages"]}

    def test_it_says_what_it_describes(self):
        self.assertEqual(self.document["spdxVersion"], "SPDX-2.3")
        self.assertEqual(self.document["dataLicense"], "CC0-1.0")
        self.assertEqual(self.document["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        self.assertEqual(self.packages["zucontrol"]["versionInfo"], "1.2.3")
        self.assertIn("abc", self.document["documentNamespace"])

    def test_each_package_of_the_build_is_there_as_dpkg_knows_it(self):
        for name in run(ROOT / "scripts/install-dependencies", "--list", "build").split():
            done = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", name], capture_output=True, text=True)
            if done.returncode == 0 and done.stdout:
                self.assertEqual(self.packages[name]["versionInfo"], done.stdout)

    def test_each_package_of_the_lock_file_is_there(self):
        lock = json.loads((ROOT / "Console/package-lock.json").read_text())
        versions = {(path.rpartition("node_modules/")[2], entry["version"], entry["license"])
                    for path, entry in lock["packages"].items() if path}
        listed = {(package["name"], package["versionInfo"], package["licenseDeclared"]) for package in self.document["packages"]}
        self.assertEqual(versions - listed, set())
        self.assertGreater(len(versions), 2)

    def test_a_library_that_a_program_loads_is_there(self):
        self.assertIn("libc6", self.packages)
        self.assertIn({"spdxElementId": "SPDXRef-deb-libc6", "relationshipType": "RUNTIME_DEPENDENCY_OF",
                       "relatedSpdxElement": "SPDXRef-zucontrol"}, self.document["relationships"])

    def test_each_package_has_an_identity_a_version_and_a_licence(self):
        identities = [package["SPDXID"] for package in self.document["packages"]]
        self.assertEqual(len(identities), len(set(identities)))
        related = {relation[end] for relation in self.document["relationships"]
                   for end in ("spdxElementId", "relatedSpdxElement")}
        references = {licence["licenseId"] for licence in self.document["hasExtractedLicensingInfos"]}
        for package in self.document["packages"]:
            self.assertRegex(package["SPDXID"], r"^SPDXRef-[A-Za-z0-9.-]+$")
            self.assertIn(package["SPDXID"], related)
            self.assertTrue(package["versionInfo"])
            licence = package["licenseDeclared"]
            self.assertNotEqual(licence, "NOASSERTION", package["name"])
            self.assertEqual(set(re.findall(r"LicenseRef-[A-Za-z0-9.-]+", licence)) - references, set())

    def test_two_runs_are_equal(self):
        self.assertEqual(run(SCRIPT, "--version", "1.2.3", "--commit", "abc", "/bin/ls"), self.text)

    def test_the_bill_of_the_package_is_that_of_each_program_in_it(self):
        rules = (ROOT / "packaging/debian/rules").read_text()
        programs = {name for file in (ROOT / "packaging/debian").glob("*.install")
                    for name in re.findall(r"^usr/bin/(\S+)", file.read_text(), re.MULTILINE)}
        self.assertIn("zucontrol-host", programs)
        self.assertEqual({name for name in programs if f"$(BUILD)/bin/{name} " not in rules}, set())

    def refused(self, program, reason, **environment):
        done = subprocess.run([str(SCRIPT), str(program)], capture_output=True, text=True, timeout=120, env=ENVIRONMENT | environment)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn(reason, done.stderr)

    def test_a_file_that_is_no_program_is_refused(self):
        self.refused("/etc/hostname", "bill-of-materials: ldd has failed: ")
        self.refused("/no/such/program", "bill-of-materials: ldd has failed: ")

    def test_a_library_of_no_package_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            library = pathlib.Path(folder) / "libselinux.so.1"  # one that ls needs
            shutil.copy(os.path.realpath(re.search(r"libselinux.so.1 => (\S+)", run("ldd", "/bin/ls"))[1]), library)
            self.refused("/bin/ls", f"no package has the library '{library}'", LD_LIBRARY_PATH=folder)


if __name__ == "__main__":
    unittest.main()
