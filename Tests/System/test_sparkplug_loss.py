"""No frame of the Sparkplug edge node is lost: while the broker is away, while the primary host is away, and but for the last
second when the host program is killed."""

import os
import random
import signal
import tempfile
import time
import unittest

from host import wait_until
from rest import RestClient
from sparkplug import NODE, Broker, HostApplication, metrics, sparkplug_host

ROUNDS = int(os.environ.get("ZU_CRASH_ROUNDS", "4"))
RATE = 20  # frames a second


def frames(application):
    """Counters of the frames in live messages, in historical ones and in births, in the order of their arrival."""
    live, historical, births = [], [], []
    with application.lock:
        names = dict(application.known)
        for message in application.messages:
            for metric in message.metrics:
                name = metric.get("name") or names.get(metric.get("alias"))
                if name == "Outputs/frame" and metric["value"] is not None:
                    kept = births if message.kind == "DBIRTH" else historical if metric["historical"] else live
                    kept.append(int(metric["value"]))
    return live, historical, births


def arrived(*applications):
    return set().union(*(set(numbers) for application in applications for numbers in frames(application)))


class Loss(unittest.TestCase):
    def watch_frames(self, rest, application):
        """Makes the frame counter the only output."""
        self.assertEqual(rest.post(NODE + "/outputs/commands/removeAll").status // 100, 2)
        done = rest.post(NODE + "/outputs/commands/add", {"outputId": "frame", "source": "profile/stamp"})
        self.assertEqual(done.status // 100, 2, done.text)
        application.wait_for(lambda: application.types.get("Outputs/frame") is not None
                             and len([name for name in application.types if name.startswith("Outputs/")]) == 1, "the map")

    def check(self, *applications):
        for application in applications:
            self.assertEqual(application.breaches, [])
            live, historical, _ = frames(application)
            self.assertEqual(live, sorted(live))

    def all_historical_have_arrived(self, rest, application):
        wait_until(lambda: metrics(rest)["unsentSamples"] == 0, "the end of the history")
        sent = metrics(rest)["historicalMessages"]
        application.wait_for(lambda: frames(application)[0], "live data behind the history")
        return sent

    def test_no_frame_is_lost_while_the_broker_is_away(self):
        with Broker() as broker, HostApplication(broker.port) as before, \
                sparkplug_host("--rate", RATE, servers=[broker.port]) as host:
            with RestClient(host.http_port) as rest:
                before.wait_for(lambda: before.device_born, "the birth")
                self.watch_frames(rest, before)
                before.device_command({"Command/Start": True})
                before.wait_for(lambda: len(frames(before)[0]) > 20, "data")
                broker.stop(kill=True)
                wait_until(lambda: metrics(rest)["unsentSamples"] > 2 * RATE, "samples in the store")
                host.process.send_signal(signal.SIGSTOP)  # the application comes first, to see all that is sent
                broker.start()
                with HostApplication(broker.port) as after:
                    host.process.send_signal(signal.SIGCONT)
                    after.wait_for(lambda: after.device_born, "the birth")
                    self.all_historical_have_arrived(rest, after)
                    historical = frames(after)[1]
                    self.assertEqual(historical, sorted(historical))
                    self.assertGreaterEqual(len(historical), 2 * RATE)
                    seen = arrived(before, after)
                    self.assertEqual(set(range(1, max(seen))) - seen, set())
                    self.assertEqual(metrics(rest)["controlDrops"], 0)
                    self.check(before, after)

    def test_no_frame_is_lost_while_the_primary_host_is_away(self):
        with Broker() as broker, HostApplication(broker.port) as watcher, \
                sparkplug_host("--rate", RATE, servers=[broker.port], primaryHostId="scada") as host:
            with RestClient(host.http_port) as rest:
                with HostApplication(broker.port, state="scada") as before:
                    before.wait_for(lambda: before.device_born, "the birth")
                    self.watch_frames(rest, before)
                    before.device_command({"Command/Start": True})
                    before.wait_for(lambda: len(frames(before)[0]) > 20, "data")
                    before.die()
                wait_until(lambda: metrics(rest)["unsentSamples"] > 2 * RATE, "samples in the store")
                with HostApplication(broker.port, state="scada") as after:
                    after.wait_for(lambda: after.device_born, "the birth")
                    self.all_historical_have_arrived(rest, after)
                    seen = arrived(before, after)
                    self.assertEqual(set(range(1, max(seen))) - seen, set())
                    self.check(before, after, watcher)

    def test_no_frame_is_lost_on_a_server_that_falls_silent(self):
        """Its connections stay open, and what it was sent is lost."""
        with Broker() as silent, Broker() as other, HostApplication(silent.port) as before, \
                HostApplication(other.port) as after, sparkplug_host("--rate", RATE, servers=[silent.port, other.port]) as host:
            with RestClient(host.http_port) as rest:
                before.wait_for(lambda: before.device_born, "the birth")
                self.watch_frames(rest, before)
                before.device_command({"Command/Start": True})
                before.wait_for(lambda: len(frames(before)[0]) > 20, "data")
                silent.process.send_signal(signal.SIGSTOP)
                after.wait_for(lambda: after.device_born, "the birth on the other server")
                silent.stop(kill=True)
                wait_until(lambda: metrics(rest)["historicalMessages"] > 0, "the begin of the history")
                self.all_historical_have_arrived(rest, after)
                newest = max(frames(after)[0])
                after.wait_for(lambda: not set(range(newest)) - arrived(before, after), f"all frames before {newest}")
                self.assertEqual(metrics(rest)["controlDrops"], 0)
                self.check(before, after)

    def test_a_kill_loses_at_most_the_last_second(self):
        seed = int(os.environ.get("ZU_CRASH_SEED", time.time_ns()))
        print(f"seed {seed}", flush=True)
        chance = random.Random(seed)
        for _ in range(ROUNDS):
            with tempfile.TemporaryDirectory() as data, tempfile.TemporaryDirectory() as store, Broker() as broker:
                self.kill_once(chance.randrange(30, 90), data, store, broker)

    def kill_once(self, least, data, store, broker):
        """Scans while the broker is away, kills the host when at least so many frames wait, and counts what the next start
        sends."""
        with HostApplication(broker.port) as before, \
                sparkplug_host("--rate", RATE, servers=[broker.port], data=data, storeFolder=store) as host:
            host.expected_status = -9
            with RestClient(host.http_port) as rest:
                before.wait_for(lambda: before.device_born, "the birth")
                self.watch_frames(rest, before)
                rest.post("/jobs/default/save")
                before.device_command({"Command/Start": True})
                before.wait_for(lambda: frames(before)[0], "data")
                broker.stop(kill=True)
                stored = wait_until(lambda: (count := metrics(rest)["unsentSamples"]) > least and count, "samples")
                host.process.kill()
                host.process.wait()
        broker.start()
        with HostApplication(broker.port) as after:
            with sparkplug_host("--rate", RATE, servers=[broker.port], data=data, storeFolder=store) as host:
                with RestClient(host.http_port) as rest:
                    after.wait_for(lambda: len(after.history) >= stored - RATE, f"{stored} samples but the last second")
                    wait_until(lambda: metrics(rest)["unsentSamples"] == 0, "the end of the history")
            historical = frames(after)[1]
            self.assertEqual(historical, sorted(historical))
            seen = arrived(before) | set(historical)
            self.assertEqual(set(range(1, max(seen))) - seen, set())  # no gap before the last frame that was kept
            self.check(before, after)


if __name__ == "__main__":
    unittest.main()
