"""MQTT servers for a fleet: several that know nothing of each other, or a cluster. Each can be killed and cut off."""

import json
import os
import shutil
import signal
import subprocess
import tempfile
import time

from host import wait_until
from node import packages
from sparkplug import Broker, free_port

COUNT = 3
# mosquitto drops messages with QoS 0 for a subscriber behind which more than this number wait; 0: never. The collector
# must get all of them.
LINES = ("allow_anonymous true", "max_queued_messages 0")


def run(*words):
    return subprocess.run(words, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0


def can_make_networks():
    return os.geteuid() == 0 and shutil.which("ip") and run("unshare", "--net", "true")


class Namespace:
    """A network of its own for one server, joined to ours by a pair of virtual interfaces. Ours is to be a namespace that
    ends with this process."""

    def __init__(self, number):
        self.address = f"10.213.{number}.2"
        self.holder = subprocess.Popen(["unshare", "--net", "sleep", "infinity"])
        own, ours = f"/proc/{self.holder.pid}/ns/net", "/proc/self/ns/net"
        wait_until(lambda: os.readlink(own) != os.readlink(ours), "the namespace")
        self.prefix = ("nsenter", "-t", str(self.holder.pid), "-n")
        name = f"server{number}"
        for words in (("ip", "link", "add", name, "type", "veth", "peer", "name", "plant", "netns", str(self.holder.pid)),
                      ("ip", "addr", "add", f"10.213.{number}.1/30", "dev", name),
                      ("ip", "link", "set", name, "up"),
                      (*self.prefix, "ip", "addr", "add", f"{self.address}/30", "dev", "plant"),
                      (*self.prefix, "ip", "link", "set", "plant", "up")):
            subprocess.run(words, check=True)

    def set_link(self, state):
        subprocess.run([*self.prefix, "ip", "link", "set", "plant", state], check=True)

    def close(self):
        self.holder.kill()
        self.holder.wait()


class Server:
    """One of the servers: `start`, `kill`, `cut`, `mend`. A server that is cut off takes and sends nothing, and its
    connections stay open."""

    def __init__(self, broker, namespace=None):
        self.broker = broker
        self.namespace = namespace
        self.endpoint = (broker.address, broker.port)
        self.is_up = True

    @property
    def pid(self):
        return self.broker.process.pid if self.broker.process else None

    def kill(self):
        self.is_up = False
        self.broker.stop(kill=True)

    def start(self):
        self.broker.start()
        self.is_up = True

    def cut(self):
        self.is_up = False
        if self.namespace:
            self.namespace.set_link("down")
        else:
            self.broker.process.send_signal(signal.SIGSTOP)

    def mend(self):
        if self.namespace:
            self.namespace.set_link("up")
        else:
            self.broker.process.send_signal(signal.SIGCONT)
        self.is_up = True


class Servers:
    """`with Servers() as servers:` runs `COUNT` times mosquitto, each in a network of its own if `in_networks`."""

    kind = "servers"
    of_cut = "its network interface goes down"

    def __init__(self, in_networks=False, ports=()):
        self.in_networks = in_networks
        self.ports = ports
        if not in_networks:
            self.of_cut = "the process is stopped, since this user can make no network namespaces"
        self.list = []
        self.opened = []

    def __enter__(self):
        try:
            for number in range(COUNT):
                self.list.append(self.open(number))
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for server in self.list:
            if server.pid is not None:
                server.broker.process.send_signal(signal.SIGCONT)
        while self.opened:
            self.opened.pop().__exit__(None, None, None)
        for server in self.list:
            if server.namespace:
                server.namespace.close()

    def open(self, number):
        port = self.ports[number] if self.ports else None
        if not self.in_networks:
            broker = Broker(*LINES, port=port)
            self.opened.append(broker.__enter__())
            return Server(broker)
        namespace = Namespace(number)
        try:
            broker = Broker(*LINES, port=port, address=namespace.address, prefix=namespace.prefix)
            self.opened.append(broker.__enter__())
            return Server(broker, namespace)
        except BaseException:
            namespace.close()
            raise

    def processes(self):
        return [server.pid for server in self.list if server.pid is not None]


class Redis:
    """`with Redis() as redis:` runs redis-server on a free port, without a file."""

    def __enter__(self):
        self.port = free_port()
        self.folder = tempfile.TemporaryDirectory()
        self.process = subprocess.Popen(["redis-server", "--port", str(self.port), "--bind", "127.0.0.1", "--save", "",
                                         "--appendonly", "no", "--dir", self.folder.name], stdout=subprocess.DEVNULL)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.folder.cleanup()


class AedesNode(Broker):
    """One process of the cluster, in the manners of `Broker`."""

    def __init__(self, redis_port, port=None):
        super().__init__(port=port)
        self.redis_port = redis_port

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.start()
        return self

    def start(self):
        settings = {"port": self.port, "redis": self.redis_port}
        self.process = subprocess.Popen(["node", "server.js", json.dumps(settings)], stdout=subprocess.DEVNULL,
                                        cwd=packages("Tests/Node/aedes-cluster"))
        wait_until(lambda: self.is_listening() or self.process.poll() is not None, "a process of the cluster")
        if self.process.poll() is not None:
            raise AssertionError("a process of the cluster does not start")


class Cluster(Servers):
    """`with Cluster() as servers:` runs `COUNT` processes of aedes on one Redis."""

    kind = "cluster"

    def __enter__(self):
        if shutil.which("redis-server") is None:
            raise FileNotFoundError("the cluster needs redis-server: apt-get install redis-server")
        packages("Tests/Node/aedes-cluster")
        self.redis = Redis()
        self.opened.append(self.redis.__enter__())
        return super().__enter__()

    def open(self, number):
        node = AedesNode(self.redis.port, self.ports[number] if self.ports else None)
        self.opened.append(node.__enter__())
        return Server(node)

    def processes(self):
        return [*super().processes(), self.redis.process.pid]


def serve(kind, ports):
    """Runs the servers until an interrupt."""
    with (Cluster if kind == "cluster" else Servers)(ports=ports) as servers:
        print("listening " + " ".join("{}:{}".format(*server.endpoint) for server in servers.list), flush=True)
        while True:
            time.sleep(1)
