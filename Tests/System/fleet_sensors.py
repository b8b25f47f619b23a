"""The sensors of a fleet: some are host processes, the others live many in a process."""

import json
import os
import pathlib
import queue
import shutil
import subprocess
import threading
import time
import urllib.request

from fleet_collector import GROUP, HOST_ID, KEEP_ALIVE
from host import BIN, PATIENCE, Host
from range_image import NAN, write_pcd
from rest import RestClient
from sparkplug import NODE

RATE = 2  # frames a second, each a message
# All that the sensor measures. In each frame ten metrics change: the counter, the number of points, and value and decision of
# the four others, because the part is seen in every second profile only.
OUTPUTS = {name: f"profile/{source}" for name, source in (
    ("frame", "stamp"), ("meanZ", "meanZ"), ("points", "points"), ("width", "width"), ("zMax", "zMax"), ("zMin", "zMin"))}
METRICS = 10
PAGE_BYTES, TICKS = os.sysconf("SC_PAGE_SIZE"), os.sysconf("SC_CLK_TCK")


def scene():
    """Rows that differ from each other; every second one is empty."""
    rows = []
    for number in range(24):
        row = [(0.001 * column - 0.02, 0.001 * number, 0.001 + 0.0001 * number + 0.00001 * column) for column in range(40)]
        missing = len(row) if number % 2 else 2 + number
        for column in range(missing):
            row[-1 - column] = (NAN, NAN, NAN)
        rows.append(row)
    return rows


def cpu_seconds(pid):
    """Of the process and its threads."""
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def memory_kib(pid):
    """(resident, of which not shared with files)."""
    pages = [int(field) for field in pathlib.Path(f"/proc/{pid}/statm").read_text().split()]
    return pages[1] * PAGE_BYTES // 1024, (pages[1] - pages[2]) * PAGE_BYTES // 1024


class Sensor:
    """What both kinds have: a name, a data folder that stays, the options, the port of its REST service."""

    def __init__(self, name, folder, options, endpoints):
        self.name = name
        self.starts = 0
        self.kills = 0
        self.http_port = None
        self.data = pathlib.Path(folder) / name
        store = self.data / "store"
        store.mkdir(parents=True)
        self.data.chmod(0o700)
        parameters = {"groupId": GROUP, "nodeId": name, "primaryHostId": HOST_ID, "keepAlive": KEEP_ALIVE, "period": 0,
                      "storeFolder": store}
        for place, (address, port) in enumerate(endpoints, 1):
            parameters[f"server{place}"] = f"{address}:{port}"
        self.options = list(options)
        for key, value in parameters.items():
            self.options += ["--param", f"SparkplugMqtt.{key}={value}"]

    def metrics(self):
        url = f"http://127.0.0.1:{self.http_port}{NODE}/metrics"
        with urllib.request.urlopen(url, timeout=PATIENCE) as answer:
            return json.load(answer)


class HostSensor(Sensor):
    """A process of zucontrol-host."""

    def begin(self):
        self.log = open(self.data / "log", "ab")
        self.host = Host(*self.options, modbus=False, wait=False, data=self.data, log=self.log.fileno())
        self.host.__enter__()
        self.starts += 1

    def wait(self):
        self.host.wait_until_ready()
        self.http_port = self.host.http_port

    def kill(self):
        self.kills += 1
        self.host.process.kill()
        self.end()

    def stop(self):
        return self.end() == 0

    def end(self):
        status = self.host.stop()
        self.log.close()
        return status

    def pids(self):
        return [self.host.process.pid]


class Group:
    """A process with many sensors."""

    def __init__(self, plugins):
        self.plugins = plugins
        self.sensors = []
        self.process = None

    def open(self):
        self.process = subprocess.Popen([BIN / "fleet-sensors", self.plugins], stdin=subprocess.PIPE, text=True, bufsize=1,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.answers = queue.Queue()
        self.reader = threading.Thread(target=self.read, args=(self.process.stdout, self.answers))
        self.reader.start()

    @staticmethod
    def read(stream, answers):
        for line in stream:
            answers.put(line.split())
        answers.put(None)

    def ask(self, *words):
        self.process.stdin.write(" ".join(str(word) for word in words) + "\n")

    def answer(self, name, wanted):
        """Answers come in the order of the requests."""
        words = self.answers.get(timeout=4 * PATIENCE)
        if words is None or words[:2] != [name, wanted]:
            raise AssertionError(f"instead of '{name} {wanted}' came {words}")
        return words[2:]

    def close(self, kill=False):
        if self.process is None:
            return True
        if kill:
            self.process.kill()
        try:
            self.process.stdin.close()
        except OSError:
            pass
        try:
            status = self.process.wait(timeout=8 * PATIENCE)
        except subprocess.TimeoutExpired:
            self.process.kill()
            status = self.process.wait()
        self.reader.join()
        self.process.stdout.close()
        self.process = None
        return status == 0


class GroupSensor(Sensor):
    """A sensor in a group."""

    def __init__(self, group, *arguments):
        super().__init__(*arguments)
        self.group = group
        group.sensors.append(self)

    def begin(self):
        if self.group.process is None:
            self.group.open()
        self.group.ask("start", self.name, "--http", "127.0.0.1:0", "--data", self.data, *self.options)
        self.starts += 1

    def wait(self):
        self.http_port = int(self.group.answer(self.name, "listening")[0].rsplit(":", 1)[1])

    def stop(self):
        self.group.ask("stop", self.name)
        self.group.answer(self.name, "stopped")
        return True


class Fleet:
    """`with Fleet(count, endpoints, folder) as fleet:` makes the sensors; `start` starts them all."""

    def __init__(self, count, endpoints, folder, groups=4):
        self.folder = pathlib.Path(folder)
        plugins = self.folder / "plugins"
        plugins.mkdir()
        shutil.copy(BIN / "plugins/sparkplugmqtt.so", plugins)
        write_pcd(self.folder / "scene.pcd", scene())
        options = ["--plugins", plugins, "--replay", self.folder / "scene.pcd", "--rate", RATE, "--log", "warning",
                   "--enable", "SparkplugMqtt"]
        host_count = min(count, max(4, count // 10))
        self.groups = [Group(plugins) for _ in range(min(groups, 1 + (count - host_count) // 25))]
        self.hosts, self.members = [], []
        for number in range(count):
            places = endpoints[number % len(endpoints):] + endpoints[:number % len(endpoints)]
            arguments = (f"s{number:03}", self.folder, [*options, "--start"], places)
            if number < host_count:
                self.hosts.append(HostSensor(*arguments))
            else:
                self.members.append(GroupSensor(self.groups[number % len(self.groups)], *arguments))
        self.sensors = [*self.hosts, *self.members]
        self.running = set()
        self.faults = []
        self.make_job(options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop_all()

    def make_job(self, options):
        """Each sensor begins with the same job: the map of outputs."""
        with Host(*options, modbus=False) as host, RestClient(host.http_port) as rest:
            rest.post(NODE + "/outputs/commands/removeAll")
            for name, source in OUTPUTS.items():
                done = rest.post(NODE + "/outputs/commands/add", {"outputId": name, "source": source})
                if done.status // 100 != 2:
                    raise AssertionError(f"the output {name} is refused: {done.text}")
            if rest.post("/jobs/default/save").status // 100 != 2:
                raise AssertionError("the job is not saved")
            job = (host.data / "default.zpjob").read_bytes()
        for sensor in self.sensors:
            (sensor.data / "default.zpjob").write_bytes(job)

    def start(self, sensors=None):
        sensors = list(sensors or self.sensors)
        for sensor in sensors:
            sensor.begin()
            self.running.add(sensor)
        for sensor in sensors:
            sensor.wait()

    def restart(self, sensor):
        """Ends a sensor in order, and starts it again."""
        self.running.discard(sensor)
        if not sensor.stop():
            self.faults.append(f"{sensor.name} did not stop in order")
        self.start([sensor])

    def kill_all(self):
        """As a power cut does."""
        for sensor in self.hosts:
            sensor.host.process.kill()
        for group in self.groups:
            group.process.kill()
        for sensor in self.hosts:
            sensor.kill()
        for group in self.groups:
            group.close(kill=True)
        for sensor in self.members:
            sensor.kills += 1
        self.running.clear()

    def stop_all(self):
        """In order. Returns when no process is left."""
        running, self.running = self.running, set()
        threads = [threading.Thread(target=self.stop_host, args=(sensor,)) for sensor in self.hosts if sensor in running]
        threads += [threading.Thread(target=self.stop_group, args=(group,)) for group in self.groups]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    def stop_host(self, sensor):
        if not sensor.stop():
            self.faults.append(f"{sensor.name} did not stop in order")

    def stop_group(self, group):
        if not group.close():
            self.faults.append("a process of many sensors did not stop in order")

    def processes(self):
        """(pid, number of sensors) of each process."""
        return [(sensor.pids()[0], 1) for sensor in self.hosts] + \
               [(group.process.pid, len(group.sensors)) for group in self.groups]


def load(processes, seconds, wait=time.sleep):
    """What the processes take while `seconds` pass: (CPU seconds a second, resident KiB, private KiB)."""
    before = sum(cpu_seconds(pid) for pid in processes)
    began = time.monotonic()
    wait(seconds)
    used = sum(cpu_seconds(pid) for pid in processes) - before
    resident, private = map(sum, zip(*(memory_kib(pid) for pid in processes)))
    return used / (time.monotonic() - began), resident, private
