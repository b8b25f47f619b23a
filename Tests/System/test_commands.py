"""The command session of the README, run with mbpoll, and its effects on the registers that a PLC reads."""

import re
import subprocess
import unittest

from host import PATIENCE, Host, wait_until
from modbus import ModbusClient, ModbusException, signed, text, unsigned
from rest import RestClient
from pages import expect, session, session_host

NONE, IN_PROGRESS, DONE, FAILED = 0, 1, 2, 3


def register_lines(text):
    """The register values in the output of mbpoll."""
    return {int(at): int(value) for at, value in re.findall(r"^\[(\d+)\]:\s+(-?\d+)", text, re.MULTILINE)}


def run_mbpoll(words):
    done = subprocess.run(words, capture_output=True, text=True, timeout=PATIENCE)
    if done.returncode != 0:
        raise AssertionError(f"{words} failed: {done.stdout} {done.stderr}")
    return register_lines(done.stdout)


def mbpoll(port, *arguments):
    """Runs mbpoll once with addresses that count from 0 and returns the register values that it prints."""
    return run_mbpoll(["mbpoll", "-0", "-1", "-o", "10", "-p", str(port), *map(str, arguments)])


def characters(name):
    return [ord(character) for character in name] + [0]


class CommandSession(unittest.TestCase):
    def test_the_session_of_the_readme(self):
        arguments, steps = session("README.md", "A session with a PLC")
        self.assertGreaterEqual(len(steps), 8)
        with session_host(arguments, {"ModbusTcp": "1502"}) as as_here:
            for command, shown in steps:
                expect(as_here(command), shown)

    def test_start_read_stop_with_mbpoll(self):
        with Host() as host:
            port = host.modbus_port
            self.assertEqual(mbpoll(port, "-t", "4", "-r", 66, "-c", 2, "127.0.0.1"), {66: 0, 67: NONE})

            mbpoll(port, "-t", "4", "-r", 0, "127.0.0.1", 1, 1)
            wait_until(lambda: mbpoll(port, "-t", "4", "-r", 66, "-c", 2, "127.0.0.1") == {66: 1, 67: DONE}, "the start to be done")

            wait_until(lambda: mbpoll(port, "-t", "4:int", "-B", "-r", 182, "-c", 1, "127.0.0.1")[182] > 0, "a number of points")
            values = mbpoll(port, "-t", "4:int", "-B", "-r", 170, "-c", 1, "127.0.0.1")
            self.assertGreater(values[170], 0)

            mbpoll(port, "-t", "4", "-r", 0, "127.0.0.1", 2, 2)
            wait_until(lambda: mbpoll(port, "-t", "4", "-r", 66, "-c", 2, "127.0.0.1") == {66: 2, 67: DONE}, "the stop to be done")

    def test_an_alignment_is_seen_in_progress_and_then_done(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [7, 3])
            self.assertEqual(client.read(66, 2), [7, IN_PROGRESS])
            wait_until(lambda: client.read(66, 2) == [7, DONE], "the alignment to be done")

    def test_nothing_is_taken_while_an_operation_runs(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [7, 3])
            with self.assertRaises(ModbusException) as refused:
                client.write(0, [8, 1])
            self.assertEqual(refused.exception.code, 6)
            wait_until(lambda: client.read(66, 2) == [7, DONE], "the alignment to be done")

    def test_a_job_that_does_not_exist_fails(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [3, 5] + characters("nowhere"))
            wait_until(lambda: client.read(66, 2) == [3, FAILED], "the load to fail")

    def test_an_empty_job_name_and_an_unknown_command_fail(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [4, 5, 0])
            self.assertEqual(client.read(66, 2), [4, FAILED])
            client.write(0, [5, 9])
            self.assertEqual(client.read(66, 2), [5, FAILED])

    def test_a_request_id_alone_repeats_the_last_command(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [1, 5] + characters("nowhere"))
            wait_until(lambda: client.read(66, 2) == [1, FAILED], "the load to fail")
            client.write_one(0, 2)
            wait_until(lambda: client.read(66, 2) == [2, FAILED], "the load to fail again")

    def test_single_writes_with_the_command_last_run_it_once(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [4, 6])
            wait_until(lambda: client.read(66, 2) == [4, FAILED], "the trigger to be refused")
            client.write_one(1, 0)
            self.assertEqual(client.read(66, 2), [4, DONE])
            client.write_one(0, 5)
            self.assertEqual(client.read(66, 2), [5, DONE])  # command 0, not the trigger
            client.write_one(1, 1)
            wait_until(lambda: client.read(66, 2) == [5, DONE] and client.read(72, 1) == [1], "the start")

    def test_a_second_master_with_the_request_of_another_reads_the_status_of_the_other(self):
        with Host() as host, ModbusClient(host.modbus_port) as first, ModbusClient(host.modbus_port) as second:
            first.write(0, [7, 6])
            wait_until(lambda: first.read(66, 2) == [7, FAILED], "the trigger to be refused")
            first.write(0, [8, 1])
            wait_until(lambda: first.read(66, 2) == [8, DONE], "the start")
            second.write(0, [8, 1])
            self.assertEqual(second.read(66, 2), [8, DONE])
            second.write(0, [2008, 1])
            wait_until(lambda: second.read(66, 2) == [2008, DONE], "the start of the second master")
            wait_until(lambda: self.taken_commands(host) == 3, "one command of the second master")

    @staticmethod
    def taken_commands(host):
        with RestClient(host.http_port) as rest:
            return rest.get("/controls/ModbusTcp/metrics").json["commands"]

    def test_a_trigger_is_refused_when_stopped_and_gives_a_frame_when_scanning(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            client.write(0, [1, 6])
            wait_until(lambda: client.read(66, 2) == [1, FAILED], "the trigger to be refused")
            client.write(0, [2, 1])
            wait_until(lambda: client.read(66, 2) == [2, DONE], "the start")
            client.write(0, [3, 6])
            wait_until(lambda: client.read(66, 2) == [3, DONE], "the trigger")

    def test_a_write_outside_the_command_block_writes_nothing(self):
        with Host() as host, ModbusClient(host.modbus_port) as client:
            for start, values in ((65, [1, 2]), (66, [1]), (9999, [1]), (9999, [1, 1])):
                with self.assertRaises(ModbusException) as refused:
                    client.write(start, values)
                self.assertEqual(refused.exception.code, 2)
            self.assertEqual(client.read(65, 1), [0])


class State(unittest.TestCase):
    def test_the_system_block_tells_up_time_state_and_job(self):
        with Host("--job", "line7") as host, ModbusClient(host.modbus_port) as client:
            wait_until(lambda: client.read(73, 1)[0] > 0, "a job name")
            self.assertEqual(text(client.read(74, client.read(73, 1)[0])), "line7")
            self.assertEqual(client.read(72, 1), [0])
            before = unsigned(client.read(68, 4))
            wait_until(lambda: unsigned(client.read(68, 4)) >= before + 2, "the up-time to grow")
            client.write(0, [1, 1])
            wait_until(lambda: client.read(72, 1) == [1], "the run state")

    def test_the_scanner_block_shows_encoder_and_laser(self):
        with Host("--start") as host, ModbusClient(host.modbus_port) as client:
            wait_until(lambda: client.read(149, 1) == [1], "the laser")
            first = wait_until(lambda: signed(client.read(140, 4)), "an encoder value")
            wait_until(lambda: signed(client.read(140, 4)) > first, "the encoder to move")
            self.assertEqual(client.read(148, 1), [0])


if __name__ == "__main__":
    unittest.main()
