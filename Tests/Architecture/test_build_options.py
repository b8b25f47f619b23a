"""The build options switch targets on and off. The test only configures; it compiles nothing."""

import json
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def configure(*options):
    """{source, from the root: its compiler command} of a build with these options, without generated sources."""
    with tempfile.TemporaryDirectory() as build:
        words = ["cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", *options]
        done = subprocess.run(words, capture_output=True, text=True, timeout=300, cwd=ROOT)
        if done.returncode != 0:
            raise AssertionError(f"configuring with {options} failed:\n{done.stdout}{done.stderr}")
        commands = json.loads((pathlib.Path(build) / "compile_commands.json").read_text())
    return {pathlib.Path(entry["file"]).relative_to(ROOT).as_posix(): entry["command"] for entry in commands
            if pathlib.Path(entry["file"]).is_relative_to(ROOT)}


def top_folders(commands):
    return {file.split("/")[0] for file in commands}


class BuildOptions(unittest.TestCase):
    def test_a_plain_build_has_host_and_tests_and_does_not_stop_at_a_warning(self):
        commands = configure()
        self.assertLessEqual({"Platform", "ZuApi", "ZuControl", "Plugins", "Host", "Tests"}, top_folders(commands))
        self.assertEqual([file for file, command in commands.items() if "-Werror" in command], [])
        self.assertEqual([file for file, command in commands.items() if "-Wconversion" not in command], [])

    def test_a_preset_stops_at_a_warning(self):
        commands = configure("--preset", "debug")
        self.assertEqual([file for file, command in commands.items() if "-Werror" not in command], [])

    def test_the_release_preset_hardens_all_of_the_code(self):
        commands = configure("--preset", "release")
        for flag in ("-D_FORTIFY_SOURCE=2", "-fstack-protector-strong", "-fstack-clash-protection"):
            self.assertEqual([file for file, command in commands.items() if flag not in command], [], flag)

    def test_the_libraries_alone_need_nothing_of_the_host_or_the_tests(self):
        not_needed = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("CLI11", "CURL", "SQLite3", "GTest", "Python3")]
        commands = configure("-DZU_BUILD_HOST=OFF", "-DZU_BUILD_CTL=OFF", "-DZU_BUILD_SPARKPLUG=OFF", "-DZU_BUILD_TESTS=OFF", *not_needed)
        self.assertIn("ZuControl/Control/ControlModule.cpp", commands)
        self.assertIn("Plugins/ModbusTcp/ModbusTcpProtocol.cpp", commands)
        self.assertEqual([file for file in commands if file.startswith(("Ctl/", "Host/")) or file.endswith("Test.cpp")], [])

    def test_without_the_host_the_tests_of_the_libraries_are_built(self):
        commands = configure("-DZU_BUILD_HOST=OFF", "-DZU_BUILD_TESTS=ON")
        folders = {"/".join(file.split("/")[:2]) for file in commands if file.startswith("Tests/")}
        self.assertLessEqual({"Tests/Platform", "Tests/ZuApi", "Tests/ZuControl", "Tests/Plugins"}, folders)
        self.assertTrue(folders.isdisjoint({"Tests/Host", "Tests/System"}))
        self.assertNotIn("Host", top_folders(commands))


if __name__ == "__main__":
    unittest.main()
