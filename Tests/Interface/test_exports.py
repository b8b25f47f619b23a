"""The dynamic symbols of libZuControl.so: its exports for code that derives from its interfaces, and its imports from a platform."""

import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIBRARY = pathlib.Path(os.environ["ZU_BIN"]) / "libZuControl.so"
CLASS = re.compile(r"^class ZUCONTROL_API (I[A-Z]\w+)", re.MULTILINE)
NAMESPACE = re.compile(r"^\} // namespace ([\w:]+)$", re.MULTILINE)


def symbols(which):
    """The names of the dynamic symbols of the library: `--defined-only` or `--undefined-only`."""
    words = [os.environ.get("ZU_NM", "nm"), "--dynamic", "--demangle", "--format=posix", which, str(LIBRARY)]
    lines = subprocess.run(words, check=True, capture_output=True, text=True).stdout.splitlines()
    return {re.sub(r" [A-Za-z]( +[0-9a-f]+)*\s*$", "", line) for line in lines}


def interfaces():
    """The qualified name of each interface that the headers declare."""
    for header in sorted(ROOT.glob("ZuControl/**/*.h")):
        text = header.read_text()
        for name in CLASS.findall(text):
            yield NAMESPACE.findall(text)[-1] + "::" + name


class Exports(unittest.TestCase):
    def test_every_interface_comes_with_constructor_destructor_and_virtual_table(self):
        defined = symbols("--defined-only")
        names = list(interfaces())
        self.assertEqual(len(names), 25)
        expected = set()
        for name in names:
            short = name.rsplit("::", 1)[1]
            expected |= {f"{name}::{short}()", f"{name}::~{short}()", f"vtable for {name}", f"typeinfo for {name}"}
        self.assertEqual(expected - defined, set())

    def test_the_assembly_is_built_with_four_functions_of_the_platform(self):
        used = {name.split("(")[0] for name in symbols("--undefined-only")}
        self.assertEqual({name for name in used if name.startswith("xwAssembly_")},
                         {"xwAssembly_AddDependency", "xwAssembly_ConstructInternal", "xwAssembly_Finalize",
                          "xwAssembly_VRelease"})
        self.assertIn("wVersion_Parse", used)


if __name__ == "__main__":
    unittest.main()
