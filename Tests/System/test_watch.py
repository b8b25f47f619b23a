"""What has died or stands still in the module is told within two seconds, and no longer than it lasts."""

import os
import threading
import time
import unittest

from host import BIN, Host, wait_until
from rest import RestClient

WITHIN = 2 + float(os.environ.get("ZU_SLACK", "0"))  # seconds; a sanitizer build is slower
AILING = "/controls/Ailing"


class Watch(unittest.TestCase):
    def begin(self, *arguments):
        self.host = Host("--plugins", BIN / "tests/ailing", "--enable", "Ailing", *arguments, modbus=False)
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
        """The faults; the status is what they say it is."""
        answer = self.rest.get("/health")
        self.assertEqual(answer.status, 200)
        self.assertEqual(answer.json["status"], "faulty" if answer.json["faults"] else "ok")
        return answer.json["faults"]

    def problems(self):
        return [problem["text"] for problem in self.rest.get("/problems").json["problems"]]

    def expect_told(self, sentence, after=0.0):
        """Told everywhere within two seconds from `after` seconds behind the fall on, and once in the log."""
        wait_until(lambda: self.health() == [sentence], f"'{sentence}' in /health: {self.health()}")
        self.assertIn(sentence, self.problems())
        self.assertLess(time.monotonic() - self.fell_ill - after, WITHIN)
        self.assertGreaterEqual(time.monotonic() - self.fell_ill, after)
        self.host.wait_for_log(sentence)
        said = [line for line in self.host.errors if line is not None and sentence in line]
        self.assertEqual(len(said), 2, said)  # for the user and for the developer

    def expect_over(self, sentence):
        wait_until(lambda: self.health() == [], "good health")
        self.assertNotIn(sentence, self.problems())
        self.host.wait_for_log("This is over: " + sentence)

    def test_a_dispatcher_has_died(self):
        sentence = "Ailing gets no more results, since it failed over one. Disable it and enable it again."
        self.begin("--start")
        self.fall_ill("results fail")
        self.expect_told(sentence)
        self.get_well()  # the thread is gone all the same
        self.expect_told(sentence)
        self.rest.put(AILING, {"enabled": False})
        self.rest.put(AILING, {"enabled": True})
        self.expect_over(sentence)

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
            self.answers.append(rest.get(AILING + "/metrics").status)

    def test_the_metrics_hang(self):
        sentence = "Ailing does not come to an end with its metrics; those of all protocols stand still."
        self.begin()
        self.fall_ill("metrics hang")
        self.answers = []
        readers = [threading.Thread(target=self.read_metrics) for _ in range(12)]  # as a monitoring system that goes on asking
        for reader in readers:
            reader.start()
        self.expect_told(sentence)
        for reader in readers:
            reader.join()
        self.assertEqual(set(self.answers) - {200, 504}, set())
        self.read_metrics()
        self.assertEqual(self.answers[-1], 504)
        self.get_well()
        self.expect_over(sentence)

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
