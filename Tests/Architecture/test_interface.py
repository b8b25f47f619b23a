"""The written interface separates the supported exports from the exports for tests only."""

import importlib.machinery
import importlib.util
import pathlib
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

sys.dont_write_bytecode = True
loader = importlib.machinery.SourceFileLoader("interface_dump", str(ROOT / "scripts/interface-dump"))
interface_dump = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
loader.exec_module(interface_dump)


def dump(name):
    return (ROOT / "Tests/Interface" / name).read_text(encoding="utf-8").splitlines()


class Interface(unittest.TestCase):
    def test_names_are_qualified_by_the_namespaces_around_them(self):
        self.assertLessEqual({"ZuControl::PersistControl", "ZuControl::Protocol::ControlDir", "ZuControl::Protocol::RouteKey",
                              "ZuControl::ControlProtocol::RegisterPlacement"}, interface_dump.internal_names())

    def test_a_symbol_is_internal_by_its_class_and_not_by_its_parameters(self):
        symbols = {
            "Zu::Plan::Make(int)": True,
            "Zu::Plan::Text[abi:cxx11]() const": True,
            "non-virtual thunk to Zu::Plan::~Plan()": True,
            "typeinfo for std::unique_ptr<Zu::Plan, std::default_delete<Zu::Plan> >": True,
            "vtable for Zu::Plan": True,
            "Zu::Map::Use(Zu::Plan const&)": False,
            "Zu::Planner::Make()": False,
            "Other::Zu::Plan::Make()": False,
        }
        promised, internal = interface_dump.split(list(symbols), {"Zu::Plan"})
        self.assertEqual(internal, [symbol for symbol, is_internal in symbols.items() if is_internal])
        self.assertEqual(promised, sorted(symbol for symbol, is_internal in symbols.items() if not is_internal))

    def test_no_dump_of_the_promised_interface_holds_an_internal_symbol(self):
        names = interface_dump.internal_names()
        for library in interface_dump.LIBRARIES:
            self.assertEqual(interface_dump.split(dump(f"{library}.txt"), names)[1], [])

    def test_the_dump_of_internal_symbols_holds_no_other(self):
        self.assertEqual(interface_dump.split(dump("ZuControl.internal.txt"), interface_dump.internal_names())[0], [])


if __name__ == "__main__":
    unittest.main()
