"""In a tree that another user has built, `run`, `scripts/build` and `cmake --install` stop with a clear message."""

import os
import pathlib
import pwd
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRESETS = """{"version": 4, "configurePresets": [
    {"name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/build/${presetName}"}]}"""
PROJECT = f"""cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES NONE)
include("{ROOT}/cmake/InstallCheck.cmake")
install(FILES CMakePresets.json DESTINATION share)
if(EXISTS "${{CMAKE_SOURCE_DIR}}/without-console")
    message(STATUS "The console is left out of the build: Node.js or npm is missing.")
endif()
"""
OLD_HOST = "#!/bin/sh\necho the old host\n"


def program(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)
    path.chmod(0o755)


def run(*words, **options):
    return subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=60, **options)


def run_as_another_user(*words):
    """Runs the command as the user "nobody" if the test runs as root.
    
    Otherwise runs it as the same user, without the write permissions that `lock` removes."""
    if os.geteuid() != 0:
        return run(*words)
    nobody = pwd.getpwnam("nobody")
    return run(*words, user=nobody.pw_uid, group=nobody.pw_gid, extra_groups=[])


class TreeOfAnotherUser(unittest.TestCase):
    """A small project with the real scripts, built once by this user."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.tree = pathlib.Path(scratch.name)
        self.tree.chmod(0o755)
        (self.tree / "CMakePresets.json").write_text(PRESETS)
        (self.tree / "CMakeLists.txt").write_text(PROJECT)
        (self.tree / "scripts").mkdir()
        shutil.copy(ROOT / "scripts/build", self.tree / "scripts")
        shutil.copy(ROOT / "run", self.tree)
        program(self.tree / "scripts/install-dependencies", "#!/bin/sh\n")
        done = run(self.tree / "scripts/build", "release")
        self.assertEqual((done.returncode, done.stderr), (0, "building build/release ...\n"))
        self.log = self.tree / "build/release.log"
        self.assertIn("Build files have been written", self.log.read_text())
        program(self.tree / "build/release/bin/zucontrol-host", OLD_HOST)

    def lock(self, *names):
        """Lets another user write everything below build except these files."""
        places = [self.tree / "build", *(self.tree / "build").rglob("*")]
        for place in places:
            place.chmod(place.stat().st_mode | 0o222)
        for name in names:
            place = self.tree / name
            before = place.stat().st_mode
            place.chmod(before & ~0o222)
            self.addCleanup(place.chmod, before)

    def expect_refusal(self, done, place):
        self.assertNotEqual(done.returncode, 0)
        self.assertEqual(done.stdout, "")
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        self.assertIn(f"{self.tree / place} belongs to {pwd.getpwuid(os.geteuid()).pw_name}", done.stderr)

    def test_a_folder_that_can_be_written_is_built(self):
        self.lock()
        self.log.write_text("")
        done = run_as_another_user(self.tree / "scripts/build", "release")
        self.assertEqual((done.returncode, done.stderr), (0, "building build/release ...\n"))
        self.assertIn("Build files have been written", self.log.read_text())

    def test_what_is_left_out_is_told(self):
        (self.tree / "without-console").touch()
        done = run(self.tree / "scripts/build", "release")
        self.assertEqual(done.returncode, 0)
        self.assertIn("\nThe console is left out of the build: Node.js or npm is missing.\n", done.stderr)

    def test_every_place_that_cannot_be_written_stops_the_build(self):
        for place in ("build", "build/release", "build/release.log", "build/release/CMakeFiles"):
            with self.subTest(place):
                self.lock(place)
                self.expect_refusal(run_as_another_user(self.tree / "scripts/build", "release"), place)

    def test_run_does_not_start_the_old_program(self):
        self.lock("build/release.log")
        self.expect_refusal(run_as_another_user(self.tree / "run"), "build/release.log")

    def test_an_installation_is_refused_before_it_has_begun(self):
        (self.tree / "build/release/install_manifest.txt").write_text("")
        for place in ("build/release", "build/release/install_manifest.txt"):
            with self.subTest(place):
                self.lock(place)
                prefix = self.tree / "build/installed"
                done = run_as_another_user("cmake", "--install", self.tree / "build/release", "--prefix", prefix)
                self.assertNotEqual(done.returncode, 0)
                said = " ".join(done.stderr.split())
                self.assertIn(f"This user cannot write {self.tree / place}.", said)
                self.assertEqual(said.count("CMake Error"), 1, done.stderr)
                self.assertFalse(prefix.exists())

    def test_an_installation_by_the_same_user_works(self):
        self.lock()
        done = run_as_another_user("cmake", "--install", self.tree / "build/release", "--prefix", self.tree / "build/here")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertTrue((self.tree / "build/here/share/CMakePresets.json").is_file())


if __name__ == "__main__":
    unittest.main()
