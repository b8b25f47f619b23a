"""The host reports dead and blocked parts of the module within two seconds, for as long as the fault lasts."""

import os
import tempfile
import threading
import time
import unittest

from host import BIN, Host, wait_until
from rest import EventStream, RestClient

WITHIN = 2 + float(os.environ.get("ZU_SLACK", "0"))  # seconds; a sanitizer build is slower
AILING = "/controls/Ailing"
DEAD = ("Ailing gets no more results, since it failed over one. Disable it and enable it again; if that does not help, "
        "restart the host.")
HANGING = "Ailing does not come to an end with its metrics; those of all services stand still."


def without_links(document):
    return {key: value for key, value in document.items() if key != "_links"}


class Watch(unittest.TestCase):
    def begin(self, *arguments, data=None):
        self.host = Host("--plugins", BIN / "tests/ailing", "--enable", "Ailing", *arguments, modbus=False, data=data)
        self.host.__enter__()
        self.addCleanup(self.host.__exit__, None)
        self.rest = RestClient(self.host.http_port)
        self.addCleanup(self.rest.__exit__)
        self.assertEqual(self.health(), [])

    def fall_ill(self, ailment):
        answer = self.rest.put(AILING, {"parameters": {"ailment": ailment}})
        self.assertEqual(answer.status, 200, answer.text)
        self.fell_ill = time.monotonic()

    def get_well(self):
        self.fall_ill("")

    def health(self):
        """The faults. Expects the status that belongs to them."""
        answer = self.rest.get("/health")
        self.assertEqual(answer.status, 200)
        self.assertEqual(answer.json["status"], "faulty" if answer.json["faults"] else "ok")
        return answer.json["faults"]

    def problems(self):
        return [problem["text"] for problem in self.rest.get("/problems").json["problems"]]

    def expect_told(self, sentence, after=0.0):
        """Expects the fault in all reports within two seconds, counted from `after` seconds after it began, and once in the log."""
        wait_until(lambda: self.health() == [sentence], f"'{sentence}' in /health: {self.health()}")
        self.assertIn(sentence, self.problems())
        self.assertLess(time.monotonic() - self.fell_ill - after, WITHIN)
        self.assertGreaterEqual(time.monotonic() - self.fell_ill, after)
        self.host.wait_for_log(sentence)
        said = [line for line in self.host.errors if line is not None and sentence in line]
        self.assertEqual(len(said), 2, said)  # for the user and for the developer

    def expect_stays(self, sentence):
        """Waits for at least two more checks of the host, and expects only these faults."""
        up_time = self.rest.get("/health").json["upTimeSec"]
        wait_until(lambda: self.rest.get("/health").json["upTimeSec"] > up_time + 1, "the host to grow older")
        self.assertEqual(self.health(), [sentence] if sentence else [])

    def expect_over(self, sentence):
        wait_until(lambda: self.health() == [], "good health")
        self.assertNotIn(sentence, self.problems())
        self.host.wait_for_log("This is over: " + sentence)

    def test_a_dispatcher_has_died(self):
        self.begin("--start")
        self.fall_ill("results fail")
        self.expect_told(DEAD)
        self.get_well()  # the thread has ended nevertheless
        self.expect_told(DEAD)
        self.rest.put(AILING, {"enabled": False})
        self.rest.put(AILING, {"enabled": True})
        self.expect_over(DEAD)

    def test_a_dispatcher_has_died_with_a_problem_on_record(self):
        with tempfile.TemporaryDirectory() as data:
            self.begin("--start", data=data)
            self.fall_ill("start failed")
            wait_until(lambda: self.problems() == ["Ailing service failed to start."], "the problem on record")
            self.fall_ill("results fail")
            self.expect_told(DEAD)
            self.get_well()
            for _ in range(2):  # by the rules of the module this does not help
                self.rest.put(AILING, {"enabled": False})
                self.rest.put(AILING, {"enabled": True})
                self.expect_stays(DEAD)
            self.host.stop()

            self.begin("--start", data=data)  # and this does
            self.expect_stays(None)
            self.host.stop()  # before the folder of its job is deleted

    def test_a_handler_hangs(self):
        sentence = "Ailing does not come to an end with its results; newer ones wait for it."
        self.begin("--start")
        self.fall_ill("results hang")
        self.expect_told(sentence)
        self.get_well()
        self.expect_over(sentence)

    def test_an_operation_does_not_end(self):
        sentence = "The scan start that Ailing asked for has not ended within 1 second; every other operation is refused meanwhile."
        self.begin("--operation-limit", 1)
        self.fall_ill("start hangs")
        self.expect_told(sentence, after=1.0)
        self.get_well()
        self.expect_over(sentence)

    def test_the_metrics_fail(self):
        sentence = "Ailing fails over its metrics; they stand still, and so may those of others."
        self.begin()
        self.fall_ill("metrics fail")
        self.expect_told(sentence)
        self.get_well()
        self.expect_over(sentence)

    def read_metrics(self):
        with RestClient(self.host.http_port) as rest:
            answer = rest.get(AILING + "/metrics")
            self.answers.append((answer.status, without_links(answer.json)))

    def test_the_metrics_hang(self):
        self.begin()
        self.fall_ill("metrics hang")
        self.expect_told(HANGING)
        self.answers = []
        readers = [threading.Thread(target=self.read_metrics) for _ in range(12)]  # more than the host has workers
        for reader in readers:
            reader.start()
        for reader in readers:
            reader.join()
        self.assertEqual(self.answers, 12 * [(200, {"controlDrops": 0})])
        self.get_well()
        self.expect_over(HANGING)

    def test_a_host_starts_while_the_metrics_of_the_first_service_hang(self):
        self.host = Host("--plugins", BIN / "tests/ailing", "--plugins", BIN / "plugins",
                         "--enable", "Ailing", "--param", "Ailing.ailment=metrics hang",
                         "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0")
        self.host.__enter__()
        self.addCleanup(self.host.__exit__, None)
        self.rest = RestClient(self.host.http_port)
        self.addCleanup(self.rest.__exit__)
        self.addCleanup(self.get_well)  # first: the host waits at its end for the update that runs
        wait_until(lambda: self.health() == [HANGING], "the fault")
        services = {"Ailing": None, "AsciiTcp": "127.0.0.1:%d", "ModbusTcp": "127.0.0.1:%d"}

        for service, address in services.items():
            begin = time.monotonic()
            metrics = self.rest.get(f"/controls/{service}/metrics")
            self.assertLess(time.monotonic() - begin, WITHIN / 4)
            self.assertEqual((metrics.status, metrics.json["controlDrops"]), (200, 0))
            self.assertEqual(metrics.json.get("listening"), address and address % self.host.ports[service])
            with EventStream(self.host.http_port, f"/controls/{service}/metrics") as stream:
                self.assertEqual([stream.next()["controlDrops"], stream.next()["controlDrops"]], [0, 0])

        page = self.rest.get("/metrics").text
        for service in services:
            self.assertIn(f'zucontrol_metrics_readable{{protocol="{service}"}} 1\n', page)
        age = next(line for line in page.splitlines() if line.startswith("zucontrol_metrics_age_seconds "))
        self.assertGreater(float(age.split(" ")[1]), 1.0)
        for service in ("AsciiTcp", "ModbusTcp"):
            self.assertIn(f'zucontrol_protocol_control_drops_total{{protocol="{service}"}} 0\n', page)

    def test_a_host_with_faults_stops_in_order(self):
        self.begin("--start")
        self.fall_ill("results fail")
        wait_until(self.health, "a fault")
        self.fall_ill("metrics fail")
        wait_until(lambda: len(self.health()) == 2, "two faults")
        self.assertEqual(self.host.stop(), 0)

    def test_nothing_is_told_of_a_sensor_that_is_well(self):
        self.begin("--start", "--operation-limit", 1)


        def has_looked_often():
            self.assertEqual((self.health(), self.problems()), ([], []))
            return self.rest.get("/health").json["upTimeSec"] >= 3

        wait_until(has_looked_often, "the host to grow older")


if __name__ == "__main__":
    unittest.main()
