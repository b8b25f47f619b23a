"""A build that cannot have Node.js, npm or the packages of the console says so, and its host has no console.

What such a host answers at "/ui/" is a test of ConsolePages."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ("ar", "as", "bash", "c++", "cmake", "env", "ld", "ninja", "ranlib", "sh")
PROJECT = f"""cmake_minimum_required(VERSION 3.25)
project(Small LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
include_directories("{ROOT}" "{ROOT}/Platform")
add_library(HostCode STATIC)
add_subdirectory("{ROOT}/Host/Console" console)
add_executable(count-files main.cpp)
target_link_libraries(count-files PRIVATE HostCode)
"""
MAIN = """#include "Host/Console/ConsoleFiles.h"
#include <cstdio>
int main() { std::printf("%zu files", ZuHost::ConsoleFiles::All().size()); }
"""


class WithoutNode(unittest.TestCase):
    """Builds the host's part for the console by itself, with a PATH of only a few programs."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.tree = pathlib.Path(scratch.name)
        self.programs = self.tree / "programs"
        self.programs.mkdir()
        for tool in TOOLS:
            (self.programs / tool).symlink_to(shutil.which(tool))
        (self.tree / "CMakeLists.txt").write_text(PROJECT)
        (self.tree / "main.cpp").write_text(MAIN)

    def program(self, path, text):
        path.parent.mkdir(exist_ok=True)
        path.write_text(f"#!/bin/sh\n{text}\n")
        path.chmod(0o755)

    def run_here(self, *words):
        done = subprocess.run(words, cwd=self.tree, env={"PATH": str(self.programs)}, capture_output=True, text=True, timeout=200)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def configure(self):
        return self.run_here("cmake", "-G", "Ninja", "-B", "build", "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF", ".")

    def test_a_missing_program_leaves_the_console_out(self):
        self.assertIn("-- The console is left out of the build: Node.js or npm is missing.\n", self.configure())
        self.run_here("cmake", "--build", "build")
        self.assertEqual(self.run_here("build/count-files"), "0 files")

    def test_the_reason_is_told(self):
        self.program(self.programs / "node", "echo 16.20.0")
        self.program(self.programs / "npm", "exit 1")
        self.assertIn("-- The console is left out of the build: Node.js 16.20.0 is older than 18.\n", self.configure())
        self.program(self.programs / "node", "echo 18.0.0")
        self.program(self.tree / "scripts/node-packages", "echo no registry >&2\necho more words >&2\nexit 1")
        self.assertIn("-- The console is left out of the build: npm cannot install its packages: no registry.\n", self.configure())


if __name__ == "__main__":
    unittest.main()
