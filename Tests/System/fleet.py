"""A fleet of simulated sensors on several MQTT servers, and what may go wrong with them; see scripts/fleet."""

import argparse
import contextlib
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

from fleet_collector import FRAME, KEEP_ALIVE, Collector
from fleet_sensors import METRICS, RATE, Fleet, load
from fleet_servers import COUNT, Cluster, Servers, can_make_networks, serve

OWN_NETWORK = "ZU_FLEET_NETWORK"  # set in the process that has a network namespace of its own
MOST_FAULTS = 30                  # sentences in the output
WILL_SECONDS = {"servers": 5, "cluster": 30}  # how late wills may come after a server was lost


class Run:
    """One run: the events in their order, and the checks at the end."""

    def __init__(self, options, servers, fleet, collector, out=sys.stdout):
        self.servers, self.fleet, self.collector, self.out = servers, fleet, collector, out
        self.seconds = 60 * options.minutes
        self.unit = max(2.0, self.seconds / 20)
        self.patience = 60 + fleet_seconds(options.sensors)
        self.began = time.monotonic()
        self.windows = []  # (begin, end) of each event: births and deaths belong into one
        self.faults = []
        self.figures = {"servers": servers.kind, "sensors": options.sensors, "minutes": options.minutes,
                        "born again seconds": {}}

    def tell(self, text):
        print(f"[{time.monotonic() - self.began:5.0f} s] {text}", file=self.out, flush=True)

    def fault(self, text):
        self.faults.append(text)

    def wait(self, condition, what, seconds=None):
        """Waits for the condition. It is a fault if it does not come true in time."""
        until = time.monotonic() + (seconds or self.patience)
        while time.monotonic() < until:
            if condition():
                return True
            time.sleep(0.05)
        self.fault(f"in vain: {what}")
        return False

    @contextlib.contextmanager
    def event(self, name, late_wills=False):
        """From the begin to the moment when all sensors are born again and the wills have come."""
        self.tell(name)
        begin = time.monotonic()
        try:
            yield begin
        finally:
            settle = WILL_SECONDS[self.servers.kind] if late_wills else 2
            time.sleep(settle)
            self.windows.append((name, begin, time.monotonic()))

    def wait_for_births(self, name, names, since):
        """Until each of the sensors was born after `since`, and lives."""
        def all_born():
            with self.collector.lock:
                records = [self.collector.records[one] for one in names]
                return all(record.births and record.births[-1] > since and record.is_born_at() is not None
                           for record in records)

        if self.wait(all_born, f"{name}: the births of all sensors"):
            seconds = time.monotonic() - since
            self.figures["born again seconds"][name] = round(seconds, 2)
            self.tell(f"    {len(names)} sensors are born again after {seconds:.1f} s")
        else:
            self.fault(f"{name}: without a birth: {self.collector.unborn()[:10]}")

    def names(self):
        return [sensor.name for sensor in self.fleet.sensors]

    def names_at(self, server):
        place = "{}:{}".format(*server.endpoint)
        return [sensor.name for sensor in self.fleet.sensors if sensor.metrics()["server"] == place]

    # The events.

    def first_start(self):
        with self.event(f"{len(self.fleet.sensors)} sensors start: {len(self.fleet.hosts)} host processes, "
                        f"{len(self.fleet.members)} sensors in {len(self.fleet.groups)} processes"):
            begin = time.monotonic()
            self.fleet.start()
            self.wait_for_births("first start", self.names(), begin)

    def steady(self):
        seconds = 4 * self.unit
        self.tell(f"nothing happens for {seconds:.0f} s")
        messages, bytes_in = self.collector.messages, self.collector.bytes
        began = time.monotonic()
        hosts = [(pid, 1) for pid, count in self.fleet.processes() if count == 1]
        groups = [(pid, count) for pid, count in self.fleet.processes() if count > 1]
        taken = {}

        def measure_groups(duration):
            taken["group"] = self.load_of(groups, lambda rest: taken.update(servers=load(
                self.servers.processes(), duration)), duration)

        taken["host"] = self.load_of(hosts, measure_groups, seconds)
        passed = time.monotonic() - began
        rate = (self.collector.messages - messages) / passed
        self.figures["messages a second"] = round(rate, 1)
        self.figures["bytes a second"] = round((self.collector.bytes - bytes_in) / passed)
        self.figures["a sensor"] = {
            kind: {"CPU percent": round(100 * cpu / count, 2), "resident KiB": resident // count,
                   "private KiB": private // count}
            for kind, count, (cpu, resident, private) in (("as a host process", len(hosts), taken["host"]),
                                                         ("among many", sum(count for _, count in groups), taken["group"]))
            if count}
        cpu, resident, _ = taken["servers"]
        self.figures["servers, all together"] = {"CPU percent": round(100 * cpu, 1), "resident KiB": resident}
        self.tell(f"    {rate:.0f} messages a second")
        expected = RATE * len(self.fleet.sensors)
        if rate < 0.9 * expected:
            self.fault(f"{rate:.0f} messages a second came in the quiet time instead of {expected}")

    @staticmethod
    def load_of(processes, wait, seconds):
        if not processes:
            wait(seconds)
            return 0, 0, 0
        return load([pid for pid, _ in processes], seconds, wait)

    def server_is_killed(self):
        server = self.servers.list[1]
        there = self.names_at(server)
        with self.event(f"server 2 is killed, with {len(there)} sensors on it", late_wills=True) as begin:
            server.kill()
            self.wait_for_births("server killed", there, begin)
            self.sleep_until(begin + max(5, 2 * self.unit))
            server.start()
            self.tell("    server 2 is back")
            self.wait(lambda: len(self.collector.connected) == len(self.collector.connections) / 2, "the collector on it")

    def server_is_cut_off(self):
        server = self.servers.list[2]
        there = self.names_at(server)
        with self.event(f"server 3 is cut off, with {len(there)} sensors on it: {self.servers.of_cut}",
                        late_wills=True) as begin:
            server.cut()
            self.wait_for_births("server cut off", there, begin)
            self.sleep_until(begin + max(3 * KEEP_ALIVE, 3 * self.unit))
            server.mend()
            self.tell("    server 3 is back")
            self.wait(lambda: len(self.collector.connected) == len(self.collector.connections) / 2, "the collector on it")

    def primary_host_leaves(self):
        with self.event("the primary host goes away") as begin:
            self.collector.leave()
            self.wait(lambda: len(self.collector.unborn()) == len(self.fleet.sensors), "all sensors wait for the host",
                      4 * KEEP_ALIVE + self.patience)
            self.sleep_until(begin + max(5, 2 * self.unit))
            back = time.monotonic()
            self.collector.come_back()
            self.tell("    it is back")
            self.wait_for_births("primary host back", self.names(), back)

    def restart_one_by_one(self):
        count = min(len(self.fleet.sensors), max(2, len(self.fleet.sensors) // 10))
        chosen = [sensor for pair in zip(self.fleet.hosts, self.fleet.members) for sensor in pair][:count]
        with self.event(f"{len(chosen)} sensors restart, one by one"):
            for sensor in chosen:
                begin = time.monotonic()
                self.fleet.restart(sensor)
                self.wait(lambda: self.collector.records[sensor.name].births[-1] > begin
                          and self.collector.records[sensor.name].is_born_at() is not None,
                          f"the birth of {sensor.name}")

    def restart_all(self):
        with self.event("all sensors lose their power at once", late_wills=True):
            self.fleet.kill_all()
            self.tell("    the power is back")
            begin = time.monotonic()
            self.fleet.start()
            started = time.monotonic() - begin
            self.wait_for_births("power back", self.names(), begin)
            self.figures["start of all programs seconds"] = round(started, 2)

    def quiet_end(self):
        self.tell(f"nothing happens for {2 * self.unit:.0f} s")
        time.sleep(2 * self.unit)

    def finish(self):
        """The scans stop, and everything that was scanned arrives."""
        with self.event("the scans stop"):
            for name in self.names():
                self.collector.send(name, "DCMD", {"Command/Request Id": 1, "Command/Stop": True})
            self.wait(lambda: all(self.is_idle(name) for name in self.names()), "the end of all scans")
            self.wait(lambda: all(sensor.metrics()["unsentSamples"] == 0 for sensor in self.fleet.sensors),
                      "the end of the history")
            begin = time.monotonic()
            for name in self.names():
                self.collector.send(name, "NCMD", {"Node Control/Rebirth": True})
            self.wait_for_births("rebirth on request", self.names(), begin)
            for sensor in self.fleet.sensors:
                self.check_last_frame(sensor)
        with self.event("all sensors end"):
            self.fleet.stop_all()
            self.wait(lambda: len(self.collector.unborn()) == len(self.fleet.sensors), "all deaths")

    def is_idle(self, name):
        with self.collector.lock:
            record = self.collector.records[name]
            server = record.is_born_at()
            return server is not None and record.rules_at(server).values["State/Run State"]["value"] == "ready"

    def check_last_frame(self, sensor):
        record = self.collector.records[sensor.name]
        with self.collector.lock:
            server = record.is_born_at()
            last = record.rules_at(server).values[FRAME]["value"] if server is not None else None
            arrived = max(record.frames)[1] if record.frames else None
        if last is not None and last != arrived:
            self.fault(f"{sensor.name}: the last frame has the number {last:.0f}, the last that arrived {arrived}")
        drops = sensor.metrics()["controlDrops"]
        if drops:
            self.fault(f"{sensor.name}: counts {drops} lost samples")

    def sleep_until(self, moment):
        time.sleep(max(0.0, moment - time.monotonic()))

    def events(self):
        self.first_start()
        self.steady()
        self.server_is_killed()
        self.server_is_cut_off()
        self.primary_host_leaves()
        self.restart_one_by_one()
        self.restart_all()
        self.quiet_end()
        self.finish()

    # The end.

    def check(self):
        with self.collector.lock:
            for sensor in self.fleet.sensors:
                record = self.collector.records[sensor.name]
                self.faults += [f"{record.name}: {text}" for text in record.breaches]
                self.check_frames(sensor, record)
                self.check_lives(record)
            self.faults += [f"a message of a stranger: {topic}" for topic in self.collector.unknown]
        self.faults += self.fleet.faults

    def check_frames(self, sensor, record):
        begins, before = 0, None
        for _, number in sorted(record.frames):
            if number == 0:
                begins += 1
            elif before is None or number != before + 1:
                self.fault(f"{record.name}: frame {number} came after {before}")
            before = number
        if begins != sensor.starts:
            self.fault(f"{record.name}: its frames begin {begins} times; it was started {sensor.starts} times")

    def check_lives(self, record):
        for session in record.sessions:
            if session.died is None and not session.is_out_of_sight:
                self.fault(f"{record.name}: no death with bdSeq {session.bd_seq}")
        moments = [("birth", moment) for moment in record.births]
        moments += [("death", session.died) for session in record.sessions if session.died is not None]
        for kind, moment in moments:
            if not any(begin <= moment <= end for _, begin, end in self.windows):
                self.fault(f"{record.name}: a {kind} at {moment - self.began:.1f} s, when nothing happened")

    def summary(self):
        collector, figures = self.collector, self.figures
        messages, metrics, size = (collector.total(what) for what in ("data_messages", "metrics", "data_bytes"))
        frames = sum(len(record.frames) for record in collector.records.values())
        sessions = [session for record in collector.records.values() for session in record.sessions]
        figures |= {
            "frames": frames, "frames that came twice or more": collector.total("live") + collector.total("historical") - frames,
            "live": collector.total("live"), "historical": collector.total("historical"),
            "metrics a data message": round(metrics / max(messages, 1), 2),
            "bytes a data message": round(size / max(messages, 1), 1),
            "bytes a metric": round(size / max(metrics, 1), 2),
            "bytes of the two births": round(collector.total("birth_bytes") / max(1, sum(
                len(record.births) for record in collector.records.values()))),
            "most messages in a second": max(collector.per_second.values(), default=0),
            "births": sum(len(record.births) for record in collector.records.values()), "sessions": len(sessions),
            "deaths": sum(session.died is not None for session in sessions),
            "sessions whose end no connection could show": sum(session.is_out_of_sight for session in sessions),
            "seconds": round(time.monotonic() - self.began), "faults": len(self.faults)}
        return figures


def fleet_seconds(sensors):
    """How long the programs of the fleet may take to start on a busy machine with two cores."""
    return sensors * 0.5


def rows(figures, head=""):
    for name, value in figures.items():
        if isinstance(value, dict):
            yield from rows(value, f"{head}{name}: ")
        else:
            yield head + name, value


def run_fleet(options, out=sys.stdout):
    """Runs the fleet and returns the exit status."""
    in_networks = os.environ.get(OWN_NETWORK) == "1"
    kind = Cluster if options.cluster else Servers
    with tempfile.TemporaryDirectory() as folder, kind(in_networks=in_networks and not options.cluster) as servers:
        endpoints = [server.endpoint for server in servers.list]
        fleet = Fleet(options.sensors, endpoints, folder)
        with Collector(endpoints, [sensor.name for sensor in fleet.sensors], options.cluster) as collector, fleet:
            run = Run(options, servers, fleet, collector, out)
            run.tell(f"{len(endpoints)} servers: " + ", ".join("{}:{}".format(*endpoint) for endpoint in endpoints))
            run.events()
            run.check()
    figures = run.summary()
    for name, value in rows(figures):
        print(f"{name:60} {value}", file=out)
    if options.json:
        pathlib.Path(options.json).write_text(json.dumps(figures, indent=2) + "\n")
    for text in run.faults[:MOST_FAULTS]:
        print("FAULT: " + text[:500], file=out)
    if len(run.faults) > MOST_FAULTS:
        print(f"... and {len(run.faults) - MOST_FAULTS} more", file=out)
    print(f"{len(run.faults)} faults", file=out)
    return 1 if run.faults else 0


def own_network(words):
    """Begins anew in a network namespace of its own, where it can make the networks of the servers."""
    os.environ[OWN_NETWORK] = "1"
    os.execvp("unshare", ["unshare", "--net", sys.executable, "-B", os.path.abspath(__file__), *words])


def parse(words):
    parser = argparse.ArgumentParser(prog="scripts/fleet", description="Sensors in numbers, on several MQTT servers.")
    commands = parser.add_subparsers(dest="command", required=True)
    for name, text in (("servers", "run three mosquitto side by side until Ctrl-C"),
                       ("cluster", "run three processes of aedes on one Redis until Ctrl-C")):
        command = commands.add_parser(name, help=text, description=text)
        command.add_argument("--port", type=int, default=1883, help="of the first one; the next follow; 0: free ones (1883)")
    run = commands.add_parser(
        "run", help="run sensors, disturb them, and check that nothing is lost",
        description=f"Runs sensors that send {RATE} messages a second with {METRICS} metrics each. A server is killed "
                    "and comes back, one is cut off, the primary host goes away and returns, sensors restart one by one and "
                    "all at once. Ends with status 0 if every frame arrived, in order, late ones marked as historical, and "
                    "births and deaths agree with what happened; otherwise with status 1 and a sentence for each fault.")
    run.add_argument("--sensors", type=int, default=20, metavar="N")
    run.add_argument("--minutes", type=float, default=2, metavar="M", help="about; events take the time that they need")
    where = run.add_mutually_exclusive_group()
    where.add_argument("--servers", action="store_true", help="on servers side by side (the default)")
    where.add_argument("--cluster", action="store_true", help="on a cluster")
    run.add_argument("--json", metavar="FILE", help="write the figures there, too")
    options = parser.parse_args(words)
    if options.command == "run" and (options.sensors < 1 or not 0 < options.minutes <= 1440):
        parser.error("--sensors is 1 or more, --minutes more than 0 and at most 1440")
    return options


def main(words):
    options = parse(words)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        if options.command != "run":
            serve(options.command, [options.port and options.port + place for place in range(COUNT)])
        if OWN_NETWORK not in os.environ and not options.cluster and can_make_networks():
            own_network(words)
        if os.environ.get(OWN_NETWORK) == "1":
            subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
        return run_fleet(options)
    except KeyboardInterrupt:
        print("interrupted; all processes have ended", flush=True)
        return 130
    except FileNotFoundError as error:
        print(f"fleet: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
