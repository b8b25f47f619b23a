"""The bill of materials names every dependency with its version and licence."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts/bill-of-materials"
ENVIRONMENT = dict(os.environ, SOURCE_DATE_EPOCH="1700000000")


def run(*words):
    return subprocess.run([str(word) for word in words], check=True, capture_output=True, text=True, timeout=120,
                          env=ENVIRONMENT).stdout


def related(document, kind):
    """The names of the packages that have this relation to the product."""
    names = {package["SPDXID"]: package["name"] for package in document["packages"]}
    ends = {relation[end] for relation in document["relationships"] if relation["relationshipType"] == kind
            for end in ("spdxElementId", "relatedSpdxElement")}
    return {names[end] for end in ends if end in names} - {"zucontrol"}


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

    def test_headers_alone_are_contained_and_those_of_a_loaded_library_are_not(self):
        with tempfile.TemporaryDirectory() as folder:
            build = pathlib.Path(folder)
            (build / "a.cpp").write_text("#include <nlohmann/json_fwd.hpp>\n#include <sys/syscall.h>\n#include <zlib.h>\n"
                                         "int main() { return zlibVersion() == nullptr; }\n")
            (build / "build.ninja").write_text("rule cpp\n command = g++ -MD -MF a.d a.cpp -o a -lz\n deps = gcc\n depfile = a.d\n"
                                               "build a: cpp a.cpp\n")
            run("ninja", "-C", build)
            document = json.loads(run(SCRIPT, "--build", build, build / "a"))
        contained = related(document, "STATIC_LINK")
        self.assertIn("nlohmann-json3-dev", contained)
        self.assertIn("zlib1g", related(document, "RUNTIME_DEPENDENCY_OF"))
        self.assertEqual(contained & {"zlib1g-dev", "linux-libc-dev", "libc6-dev"}, set())
        self.assertLessEqual({"zlib1g-dev", "linux-libc-dev", "libc6-dev"}, related(document, "BUILD_DEPENDENCY_OF"))

    def test_it_has_the_form_of_spdx_2_3(self):
        self.assertLessEqual({"spdxVersion", "dataLicense", "SPDXID", "name", "documentNamespace", "creationInfo"}, set(self.document))
        self.assertEqual(self.document["SPDXID"], "SPDXRef-DOCUMENT")
        self.assertRegex(self.document["documentNamespace"], r"^[a-z]+:[^#\s]+$")
        self.assertRegex(self.document["creationInfo"]["creators"][0], r"^Tool: \S+$")
        identities = {"SPDXRef-DOCUMENT"} | {package["SPDXID"] for package in self.document["packages"]}
        for relation in self.document["relationships"]:
            self.assertEqual(set(relation), {"spdxElementId", "relationshipType", "relatedSpdxElement"})
            self.assertLessEqual({relation["spdxElementId"], relation["relatedSpdxElement"]}, identities)
            self.assertIn(relation["relationshipType"], ("DESCRIBES", "BUILD_DEPENDENCY_OF", "RUNTIME_DEPENDENCY_OF", "STATIC_LINK"))
        for licence in self.document["hasExtractedLicensingInfos"]:
            self.assertRegex(licence["licenseId"], r"^LicenseRef-[A-Za-z0-9.-]+$")
            self.assertTrue(licence["extractedText"])
        for package in self.document["packages"]:
            self.assertLessEqual({"SPDXID", "name", "downloadLocation"}, set(package))
            self.assertIs(package["filesAnalyzed"], False)  # so no verification code is needed
            for reference in package.get("externalRefs", ()):
                self.assertEqual((reference["referenceCategory"], reference["referenceType"]), ("PACKAGE-MANAGER", "purl"))
                kind, name, version = re.fullmatch(r"pkg:(deb/debian|npm)/([A-Za-z0-9.~%/-]+)@([A-Za-z0-9.~:%-]+)(?:\?arch=\w+)?",
                                                   reference["referenceLocator"]).groups()
                self.assertEqual((urllib.parse.unquote(name), urllib.parse.unquote(version)),
                                 (package["name"], package["versionInfo"]), kind)

    def test_the_bill_of_the_packages_looks_at_every_program_that_they_have(self):
        rules = (ROOT / "packaging/debian/rules").read_text()
        installed = (ROOT / "packaging/debian/zucontrol-host.install").read_text()
        programs = re.findall(r"^usr/bin/(\S+)", installed, re.MULTILINE)
        self.assertEqual(programs, ["zucontrol-host", "zucontrolctl"])
        for program in (*programs, "libZu*.so", "plugins/*.so"):
            self.assertIn(f"$(BUILD)/bin/{program} ", rules)


if __name__ == "__main__":
    unittest.main()
