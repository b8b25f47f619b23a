"""scripts/tidy checks a changed header through a source that includes it."""

import importlib.machinery
import importlib.util
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("tidy", str(ROOT / "scripts/tidy"))
tidy = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
loader.exec_module(tidy)

COMPILED = ["Platform/ZuApi/AsyncTimer.cpp", "ZuControl/Control/ControlModule.cpp", "Tests/Platform/ZuApi/AsyncTimerTest.cpp"]


class Tidy(unittest.TestCase):
    def check(self, files, sources):
        self.assertEqual(tidy.sources_for(files, COMPILED), sources)

    def test_a_source_is_checked_itself(self):
        self.check(["Tests/Platform/ZuApi/AsyncTimerTest.cpp"], ["Tests/Platform/ZuApi/AsyncTimerTest.cpp"])

    def test_a_header_is_checked_through_its_source(self):
        self.check(["Platform/ZuApi/AsyncTimer.h"], ["Platform/ZuApi/AsyncTimer.cpp"])

    def test_a_header_without_a_source_is_checked_through_one_that_includes_it(self):
        self.check(["ZuControl/Control/IControlInstance.h"], ["ZuControl/Control/ControlModule.cpp"])

    def test_a_header_that_only_headers_include_is_checked_through_them(self):
        self.check(["ZuControl/Control/ControlVitals.h"], ["ZuControl/Control/ControlModule.cpp"])

    def test_a_source_is_checked_once(self):
        self.check(["Platform/ZuApi/AsyncTimer.h", "Platform/ZuApi/AsyncTimer.cpp"], ["Platform/ZuApi/AsyncTimer.cpp"])

    def test_what_is_not_compiled_is_left_out(self):
        self.check(["README.md", "Platform/ZuApi/Gone.cpp", "Platform/ZuApi/Gone.h"], [])


if __name__ == "__main__":
    unittest.main()
