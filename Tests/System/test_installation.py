"""`cmake --install` installs public headers that need none of the private dependencies, and versioned libraries."""

import concurrent.futures
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from installation import (PRIVATE_DEPENDENCIES, hide_private_dependencies, install, library_headers, package_folder, run)

C_LIBRARY = ("arpa/", "netinet/", "sys/", "dlfcn.h", "elf.h", "fcntl.h", "getopt.h", "ifaddrs.h", "malloc.h", "poll.h", "pthread.h",
             "semaphore.h", "unistd.h")
PUBLIC_DEPENDENCIES = ("nlohmann/",)


class Installation(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.prefix = cls.folder / "installed"
        install(cls.prefix)
        cls.headers = cls.prefix / "include/zucontrol"
        packages = dict(os.environ, PKG_CONFIG_PATH=str(package_folder(cls.prefix)))
        cls.flags = [hide_private_dependencies(cls.folder / "hidden"),
                     *run("pkg-config", "--cflags", "zucontrol", env=packages).split()]

    def compile(self, header):
        """The errors of a unit that includes this header alone."""
        words = ["c++", "-std=c++20", "-fsyntax-only", *self.flags, "-include", header, "-x", "c++", os.devnull]
        done = subprocess.run(words, capture_output=True, text=True, timeout=300)
        return "" if done.returncode == 0 else f"{header}:\n{done.stderr}"

    def test_each_library_that_we_include_is_public_private_or_the_c_library(self):
        known = C_LIBRARY + PUBLIC_DEPENDENCIES + PRIVATE_DEPENDENCIES
        self.assertEqual([name for name in library_headers() if not name.startswith(known)], [])

    def test_a_private_dependency_cannot_be_included(self):
        for name in sorted(library_headers()):
            if name.startswith(PRIVATE_DEPENDENCIES):
                self.assertIn(f"{name} is private to ZuControl", self.compile(name))

    def test_each_installed_header_compiles_by_itself_without_private_dependencies(self):
        headers = sorted(path.relative_to(self.headers).as_posix() for path in self.headers.rglob("*.h"))
        self.assertGreater(len(headers), 100)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            self.assertEqual("".join(pool.map(self.compile, headers)), "")

    def test_no_private_header_is_installed(self):
        for header in ("ZuControl/Persistence/ConfigurationDocument.h", "ZuControl/Protocol/ControlResource.h",
                       "ZuControl/Control/JsonNumber.h", "ZuRest/DocumentSinks.h",
                       "Plugins/Common/TcpConnection.h"):
            self.assertFalse((self.headers / header).exists(), header)

    def test_programs_ask_for_a_major_version_of_the_libraries(self):
        """A system that only runs the host needs no libZuControl.so without a number: that name is the linker's."""
        copied = self.folder / "without_linker_names"
        shutil.copytree(self.prefix, copied, symlinks=True)
        names = list((copied / "lib").rglob("libZu*.so"))
        self.assertEqual(len(names), 3)
        for name in names:
            self.assertRegex(os.readlink(name), r"^libZu\w+\.so\.\d+$")
            name.unlink()
        modbus = next(copied.rglob("modbustcp.so"))
        run(copied / "bin/zucontrol-host", "--check-plugin", modbus)


if __name__ == "__main__":
    unittest.main()
