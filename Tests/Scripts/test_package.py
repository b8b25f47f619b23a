"""The packages: their version has one place, and a purge leaves the work of people."""

import pathlib
import re
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DEBIAN = ROOT / "packaging/debian"


def run(*words):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=60)


class Package(unittest.TestCase):
    def test_the_script_tells_its_options(self):
        done = run(ROOT / "scripts/package", "--help")
        self.assertEqual(done.returncode, 0)
        for option in ("--test", "--as VERSION", "--output FOLDER", "--preset PRESET"):
            self.assertIn(option, done.stdout)

    def test_an_unknown_option_and_a_missing_value_are_refused(self):
        for words, said in ((["--nonsense"], "'--nonsense' is no option"), (["--as"], "--as needs a version"),
                            (["--output"], "--output needs a folder"), (["--preset"], "--preset needs a preset")):
            done = run(ROOT / "scripts/package", *words)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn(said, done.stderr)

    def test_a_trial_asks_for_two_folders_and_known_scenarios(self):
        for words in ([], ["a"], ["a", "b", "nonsense"]):
            done = run(ROOT / "scripts/package-trial", *words)
            self.assertEqual(done.returncode, 2)
            self.assertIn("usage: scripts/package-trial FOLDER FOLDER_BEFORE [SCENARIO...]", done.stderr)

    def test_a_trial_runs_every_scenario(self):
        scenarios = {path.stem for path in (ROOT / "packaging/trial").glob("*.py") if "\ndef trial(trial)" in path.read_text()}
        listed = re.search(r"^SCENARIOS = \((.*)\)$", (ROOT / "scripts/package-trial").read_text(), re.MULTILINE)[1]
        self.assertEqual(set(re.findall(r'"(\w+)"', listed)), scenarios)
        self.assertGreater(len(scenarios), 3)

    def test_a_sentence_that_is_not_true_ends_a_trial(self):
        done = run("python3", "-B", "-c", f"import sys; sys.path.insert(0, '{ROOT}/packaging/trial')\n"
                   "import trial\nnew = trial.Trial.__new__(trial.Trial)\nnew.log = open('/dev/null', 'w')\n"
                   "new.ok('it installs', True)\nnew.ok('it starts', [])\nprint('not reached')")
        self.assertEqual((done.returncode, done.stdout), (1, "ok: it installs\n"))
        self.assertIn("Failed: it is not true that it starts", done.stderr)

    def test_a_folder_of_another_kind_is_not_built_in(self):
        with tempfile.TemporaryDirectory() as folder:
            link = pathlib.Path(folder) / "link"
            link.symlink_to(folder)
            done = run("bash", "-c", f"sed -n '/^work=/,/another user/p' {ROOT}/scripts/package | "
                       f"ZU_PACKAGE_FOLDER={link} bash -c 'fail() {{ echo \"$1\" >&2; exit 1; }}; eval \"$(cat)\"'")
            self.assertEqual((done.returncode, done.stderr), (1, f"'{link}' belongs to another user\n"))

    def test_the_version_has_one_place(self):
        version = re.search(r"^project\(ZuControl VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)[1]
        self.assertFalse((DEBIAN / "changelog").exists())  # scripts/package writes it
        for path in DEBIAN.rglob("*"):
            if path.is_file() and not path.name.endswith(".symbols"):
                self.assertNotIn(version, path.read_text(), path)

    def test_the_symbols_are_those_of_the_interface(self):
        done = run(ROOT / "scripts/package-symbols", "--check")
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_each_package_installs_something(self):
        names = re.findall(r"^Package: (\S+)", (DEBIAN / "control").read_text(), re.MULTILINE)
        self.assertEqual(names, ["libzucontrol1", "libzucontrol-dev", "zucontrol-host", "zucontrol-plugins", "zucontrol-doc"])
        for name in names:
            self.assertTrue((DEBIAN / f"{name}.install").exists() or (DEBIAN / f"{name}.docs").exists(), name)

    def test_a_build_needs_the_packages_of_the_set_build(self):
        listed = set(run(ROOT / "scripts/install-dependencies", "--list", "build").stdout.split())
        depends = set(re.findall(r"^ ([a-z0-9.+-]+)", re.search(r"Build-Depends:\n(.*?)\nStandards", (DEBIAN / "control").read_text(),
                                                                re.DOTALL)[1], re.MULTILINE))
        # g++ is in every build, the dictionary is for tests, and npm runs ahead of the build.
        self.assertEqual(listed - depends, {"g++", "cracklib-runtime", "npm"})

    def test_a_purge_leaves_jobs_and_what_people_have_put_beside_them(self):
        with tempfile.TemporaryDirectory() as folder:
            state = pathlib.Path(folder) / "state"
            (state / "tls").mkdir(parents=True)
            kept = {"default.zpjob", "line 7.zpjob", "notes.txt"}
            for name in (*kept, "tls/authority.pem", "settings.zpset", "security.zpset", "security.zpset-journal", "audit.zplog",
                         "first-administrator.code", "default.zpjob.damaged-1", "default.zpjob-journal", ".new-archive"):
                (state / name).touch()
            script = pathlib.Path(folder) / "postrm"
            script.write_text((DEBIAN / "zucontrol-host.postrm").read_text().replace("/var/lib/zucontrol", str(state)))

            self.assertEqual(run("sh", script, "remove").returncode, 0)
            self.assertTrue((state / "settings.zpset").exists())
            done = run("sh", script, "purge")
            self.assertEqual(done.returncode, 0)
            self.assertIn(f"the jobs in {state} are kept", done.stderr)
            self.assertEqual({path.name for path in state.iterdir()}, kept)

            for name in kept:
                (state / name).unlink()
            self.assertEqual(run("sh", script, "purge").stderr, "")
            self.assertFalse(state.exists())
            self.assertEqual(run("sh", script, "purge").returncode, 0)


if __name__ == "__main__":
    unittest.main()
