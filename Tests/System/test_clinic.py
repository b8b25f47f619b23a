"""The host starts without plug-ins that would crash it, and reports them; and the check of one plug-in."""

import json
import os
import pathlib
import shutil
import tempfile
import unittest
import urllib.request

from host import BIN, PATIENCE, Host, run_host
from modbus import ModbusClient
from rest import RestClient


def problems(host):
    with urllib.request.urlopen(f"http://127.0.0.1:{host.http_port}/problems", timeout=PATIENCE) as answer:
        return json.load(answer)["problems"]


class Start(unittest.TestCase):
    def test_a_plug_in_that_dies_or_hangs_costs_a_problem_and_a_line_and_not_the_sensor(self):
        folders = [argument for trouble in ("abortinginitialiser", "hanginginitialiser", "throwingconstructor")
                   for argument in ("--plugins", BIN / "tests" / trouble)]
        with Host("--plugins", BIN / "plugins", *folders) as host, ModbusClient(host.modbus_port) as client:
            client.read(0, 1)
            found = [problem["text"] for problem in problems(host) if problem["source"] == "Plug-ins"]
            self.assertEqual(len(found), 3, found)
            for text, end in zip(found, ("ended the process with signal 6 (Aborted) while it was being loaded",
                                         "came to no end within 5000 ms while it was being loaded",
                                         "failed (no licence for this sensor) while it was being made")):
                self.assertTrue(text.endswith(end), text)
                host.wait_for_log(text)

    def test_the_second_of_two_plug_ins_with_one_number_is_left_out_and_both_are_named(self):
        with Host("--plugins", BIN / "plugins", "--plugins", BIN / "tests/takennumber") as host, \
                ModbusClient(host.modbus_port) as client:
            client.read(0, 1)
            sentence = (f"Plug-in {BIN}/tests/takennumber/takennumber.so was refused: its protocol Troubled has the number 1 "
                        f"of ModbusTcp in {BIN}/plugins/modbustcp.so")
            self.assertIn(sentence, [problem["text"] for problem in problems(host)])
            host.wait_for_log(sentence)
            with RestClient(host.http_port) as rest:
                self.assertEqual(rest.get("/controls/Troubled").status, 404)
                self.assertEqual(rest.get("/controls/ModbusTcp").status, 200)

    def test_a_plug_in_that_everyone_can_write_is_refused_and_one_of_a_group_is_a_problem(self):
        with tempfile.TemporaryDirectory() as folder:
            open_to_all = pathlib.Path(shutil.copy(BIN / "plugins/modbustcp.so", folder))
            of_group = pathlib.Path(shutil.copy(BIN / "plugins/asciitcp.so", folder))
            open_to_all.chmod(0o646)
            of_group.chmod(0o664)
            with Host("--plugins", folder, modbus=False) as host:
                found = [problem["text"] for problem in problems(host) if problem["source"] == "Plug-ins"]
                self.assertEqual(found, [
                    f"Plug-in {open_to_all} was refused: everyone can write {open_to_all}."
                    f" Take that right away with: chmod o-w {open_to_all}",
                    f"Plug-in {of_group} can be changed by the group of {of_group}."
                    f" If only its owner is to change it: chmod g-w {of_group}"])
                with urllib.request.urlopen(f"http://127.0.0.1:{host.http_port}/controls", timeout=PATIENCE) as answer:
                    controls = answer.read().decode()
                self.assertIn("AsciiTcp", controls)
                self.assertNotIn("ModbusTcp", controls)
            self.assertEqual(sum("The host runs as root" in line for line in host.errors if line), int(os.geteuid() == 0))

            status, _, errors = run_host("--check-plugin", open_to_all)
            self.assertEqual(status, 1)
            self.assertIn("everyone can write", errors)

    def test_a_file_that_is_no_plug_in_is_a_problem(self):
        with Host("--plugins", BIN / "plugins", "--plugins", BIN / "TestPlugins") as host:
            texts = " ".join(problem["text"] for problem in problems(host))
            for name in ("NoEntryPoints", "OtherAbi", "EmptyMaker", "ThrowingMaker", "MissingDependency"):
                self.assertIn(f"{name}.so was refused: ", texts)


class Check(unittest.TestCase):
    def test_a_sound_plug_in_tells_what_it_offers(self):
        status, output, error = run_host("--check-plugin", BIN / "plugins/modbustcp.so")
        self.assertEqual((status, error), (0, ""))
        self.assertIn("ModbusTcp (Modbus TCP), protocol number 1", output)

    def test_one_that_fails_tells_what_failed_in_a_sentence(self):
        status, output, error = run_host("--check-plugin", BIN / "tests/throwingresults/throwingresults.so")
        self.assertEqual((status, output), (1, ""))
        self.assertEqual(len(error.strip().splitlines()), 1)
        self.assertIn("failed (no appetite) while it was being fed with results", error)

    def test_a_plug_in_that_looks_up_hardware_in_its_start_is_sound(self):
        status, output, error = run_host("--check-plugin", BIN / "tests/neededhardware/neededhardware.so")
        self.assertEqual((status, error), (0, ""))
        self.assertIn("Troubled", output)

    def test_a_protocol_number_of_another_plug_in_in_the_folder_is_refused(self):
        checked = BIN / "tests/takennumber/takennumber.so"
        status, output, error = run_host("--check-plugin", checked)
        self.assertEqual((status, output), (1, ""))
        self.assertIn("its protocol Troubled has the number 1 of ModbusTcp in ", error)
        status, _, error = run_host("--check-plugin", checked, "--plugins", BIN / "samples")
        self.assertEqual((status, error), (0, ""))

    def test_a_kind_of_system_may_be_named(self):
        status, _, _ = run_host("--check-plugin", BIN / "plugins/modbustcp.so", "--deployment", "virtual-sensor")
        self.assertEqual(status, 0)


if __name__ == "__main__":
    unittest.main()
