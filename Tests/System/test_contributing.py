"""The commands of CONTRIBUTING.md name existing presets, targets, tests, fuzzers, goals and sets of packages."""

import pathlib
import re
import shlex
import shutil
import unittest

from installation import BUILD, ROOT, run

PAGE = (ROOT / "CONTRIBUTING.md").read_text(encoding="utf-8")


def commands():
    """All lines of the page's blocks of commands."""
    blocks = re.findall(r"^```\n(.*?)^```", PAGE, re.MULTILINE | re.DOTALL)
    return [line for block in blocks for line in block.splitlines()]


def presets():
    return set(re.findall(r'^  "(\w+)"', run("cmake", "--list-presets", cwd=ROOT), re.MULTILINE))


def first_words(text):
    return {line.split()[0] for line in text.splitlines() if line.strip()}


class Contributing(unittest.TestCase):
    def check_preset_of(self, path):
        self.assertIn(pathlib.PurePosixPath(path).parts[1], presets())

    def check_cmake(self, words):
        if words[1] == "--preset":
            self.assertIn(words[2], presets())
        else:
            self.assertEqual([words[1], words[3]], ["--build", "--target"])
            self.check_preset_of(words[2])
            self.assertIn(f"{words[4]}: phony", run("cmake", "--build", BUILD, "--target", "help").splitlines())

    def check_unit_tests(self, words):
        self.check_preset_of(words[0])
        listed = run(BUILD / "bin" / pathlib.PurePosixPath(words[0]).name, words[1], "--gtest_list_tests")
        self.assertIn("\n  ", listed, f"{words[1]} finds no test")

    def check_ctest(self, words):
        self.assertEqual([words[1], words[3]], ["--test-dir", "-R"])
        self.check_preset_of(words[2])
        listed = run("ctest", "--test-dir", BUILD, "-N", "-R", words[4])
        self.assertGreater(int(re.search(r"Total Tests: (\d+)", listed)[1]), 0, f"-R {words[4]} finds no test")

    def check_script(self, words):
        if words[0] == "./test":
            self.assertLessEqual(set(words[2:]), presets())
        elif words[0] == "./fuzz" and words[1] != "--list":
            self.assertIn(words[1], run(ROOT / "fuzz", "--list").split())
        elif words[0] == "./bench" and words[1] != "--list":
            self.assertIn(words[-1], first_words(run(ROOT / "bench", "--list")))
        elif words[0] == "scripts/install-dependencies":
            known = set(re.findall(r"^    (\w+)\) echo", (ROOT / words[0]).read_text(), re.MULTILINE))
            self.assertLessEqual(set(words[1:]), known)
        self.assertTrue(shutil.which(ROOT / words[0]), f"{words[0]} cannot be run")

    def test_each_command_names_what_is_there(self):
        self.assertGreater(len(commands()), 15)
        for command in commands():
            words = shlex.split(command)
            with self.subTest(command):
                if words[0] == "cmake":
                    self.check_cmake(words)
                elif words[0] == "ctest":
                    self.check_ctest(words)
                elif words[0] == "clang-format":
                    self.assertIn(command, (ROOT / ".ci/run").read_text().splitlines())
                elif words[0].startswith("build/"):
                    self.check_unit_tests(words)
                else:
                    self.check_script(words)

    def test_scripts_explain_themselves(self):
        for script in ("test", "fuzz", "bench", "coverage", "scripts/interface-dump", "scripts/tidy"):
            self.assertIn("usage:", run(ROOT / script, "--help"))

    def test_the_table_of_options_is_that_of_the_build(self):
        named = set(re.findall(r"^\| `(ZU_\w+)`", PAGE, re.MULTILINE))
        self.assertEqual(named, set(re.findall(r"^option\((ZU_\w+)", (ROOT / "CMakeLists.txt").read_text(), re.MULTILINE)))


if __name__ == "__main__":
    unittest.main()
