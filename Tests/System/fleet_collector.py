"""The primary host application of a fleet: on all servers at once, it counts frames, births and deaths, and complains."""

import collections
import queue
import threading
import time

from sparkplug import MqttClient, NodeRules, decode, encode, state_message

GROUP = "fleet"
HOST_ID = "plant"
FRAME = "Outputs/frame"
KEEP_ALIVE = 5          # seconds, of the connections to the servers
LONGEST_SILENCE = 8     # seconds without an answer to a ping: the connection is lost
FIXED_HEADER = 2        # bytes of a short MQTT message before its topic, and the length of the topic
TOPIC_LENGTH = 2


class Session:
    """A node on a server, from its birth to its death."""

    def __init__(self, server, bd_seq, born):
        self.server = server
        self.bd_seq = bd_seq
        self.born = born
        self.died = None
        self.is_out_of_sight = False  # the collector lost its connection to the server meanwhile

    def is_alive(self):
        return self.died is None and not self.is_out_of_sight


class FleetRules(NodeRules):
    """The rules for one node on one server, and the order of its frames."""

    def __init__(self, record):
        super().__init__()
        self.record = record
        self.breaches = record.breaches
        self.has_seen_birth = False
        self.last_live = self.last_historical = None

    def follow(self, parts, data, qos, retained):
        if parts[2] != "NBIRTH" and not self.has_seen_birth:
            return None  # the birth came before the collector
        return super().follow(parts, data, qos, retained)

    def take_nbirth(self, message):
        before = self.bd_seq if self.has_seen_birth else None
        super().take_nbirth(message)
        self.has_seen_birth = True
        if before != self.bd_seq:
            self.last_historical = None  # what may not have arrived begins anew with each connection

    def take_dbirth(self, message):
        super().take_dbirth(message)
        frame = self.values.get(FRAME, {}).get("value")
        self.last_live = None if frame is None else int(frame)

    def take_ddata(self, message):
        super().take_ddata(message)
        for metric in message.metrics:
            if self.known.get(metric.get("alias")) == FRAME and metric["value"] is not None:
                self.take_frame(metric, message)
        self.history.clear()
        self.record.metrics += len(message.metrics)

    def take_frame(self, metric, message):
        place = (metric["timestamp"], int(metric["value"]))
        if metric["historical"]:
            self.complain(self.last_historical is not None and place <= self.last_historical, "historical data not in order",
                          message)
            self.last_historical = place
            self.record.historical += 1
        else:
            self.complain(self.last_live is not None and place[1] <= self.last_live,
                          "live data not in order, or older than the birth and not marked as historical", message)
            self.last_live = place[1]
            self.record.live += 1
        self.record.frames.add(place)

    def forget(self):
        self.has_seen_birth = False
        self.last_seq = None
        self.node_born = self.device_born = False


class NodeRecord:
    """Everything that has arrived from one node."""

    def __init__(self, name):
        self.name = name
        self.breaches = []
        self.frames = set()   # (time of the scan, number), each once
        self.sessions = []    # in the order of their births
        self.rules = {}       # by server
        self.births = []      # times
        self.live = self.historical = self.metrics = self.data_bytes = self.data_messages = self.birth_bytes = 0
        self.strange_deaths = []

    def rules_at(self, server):
        if server not in self.rules:
            self.rules[server] = FleetRules(self)
        return self.rules[server]

    def session(self):
        return self.sessions[-1] if self.sessions else None

    def is_born_at(self):
        """The server of its session; none while it has none."""
        session = self.session()
        return session.server if session and session.is_alive() and self.rules_at(session.server).device_born else None

    def note_birth(self, server, now):
        bd_seq = self.rules_at(server).bd_seq
        self.births.append(now)
        last = self.session()
        if last and last.is_alive() and (last.server, last.bd_seq) == (server, bd_seq):
            return  # born again within its session
        if last:
            step = (bd_seq - last.bd_seq) % 256
            if not 0 < step < 128:
                self.breaches.append(f"bdSeq {bd_seq} after {last.bd_seq}")
        self.sessions.append(Session(server, bd_seq, now))

    def note_death(self, server, bd_seq, now):
        for session in reversed(self.sessions):
            if (session.server, session.bd_seq) == (server, bd_seq):
                if session.died is not None:
                    self.breaches.append(f"two deaths with bdSeq {bd_seq}")
                session.died = now
                return
        self.strange_deaths.append(now)  # of a connection that was never born: it waited for the host


class Connection:
    """A client of one server that connects again and again. Each server has two: one that watches, and one whose end ends
    the life of the primary host."""

    def __init__(self, collector, number, endpoint, is_host):
        self.collector = collector
        self.number = number
        self.endpoint = endpoint
        self.is_host = is_host
        self.wanted = threading.Event()
        self.wanted.set()
        self.client = None
        self.thread = threading.Thread(target=self.run, daemon=True)
        self.thread.start()

    def run(self):
        while not self.collector.stopping.is_set():
            try:
                if self.wanted.wait(0.2):
                    self.live_once()
            except Exception:  # whatever the server did, the next attempt comes
                pass
            self.collector.stopping.wait(0.3)

    def live_once(self):
        collector = self.collector
        self.stamp = int(time.time() * 1000)  # the will has the time of the message before it
        will = state_message(HOST_ID, False, self.stamp) if self.is_host else None
        name = f"{'host' if self.is_host else 'watch'}-{self.number}"
        client = MqttClient(self.endpoint[1], name, self.take, will, address=self.endpoint[0], patience=LONGEST_SILENCE,
                            keep_alive=KEEP_ALIVE)
        try:
            client.subscribe(will[0] if self.is_host else f"spBv1.0/{GROUP}/#")
            self.client = client
            if self.is_host:
                self.tell_state()
            else:
                collector.inbox.put((self.number, "connected", time.monotonic(), None, 0, False))
            self.watch_over(client)
        finally:
            self.client = None
            client.close(orderly=False)
            if not self.is_host:
                collector.inbox.put((self.number, "lost", time.monotonic(), None, 0, False))

    def watch_over(self, client):
        stopping = self.collector.stopping
        while client.thread.is_alive() and self.wanted.is_set() and not stopping.wait(1):
            if time.monotonic() - client.heard > LONGEST_SILENCE:
                return
            client.ping()

    def tell_state(self):
        client = self.client
        if client is not None:
            client.publish(*state_message(HOST_ID, True, self.stamp), retain=True)

    def take(self, topic, data, qos, retained):
        if not self.is_host:
            self.collector.inbox.put((self.number, topic, time.monotonic(), data, qos, retained))
        elif b'"online": false' in data and self.client is not None:
            # The late will of an earlier connection, which a cluster keeps as the last word. The answer is waited for by
            # the thread that reads, so another one sends.
            threading.Thread(target=self.tell_state, daemon=True).start()


class Collector:
    """`with Collector(endpoints, nodes) as collector:` watches the nodes on all servers, or on one process of a cluster at a
    time. Messages are counted on a thread of their own."""

    def __init__(self, endpoints, nodes, is_cluster=False):
        self.endpoints = endpoints
        self.is_cluster = is_cluster
        self.records = {name: NodeRecord(name) for name in nodes}
        self.inbox = queue.Queue()
        self.lock = threading.RLock()
        self.stopping = threading.Event()
        self.messages = 0
        self.bytes = 0
        self.per_second = collections.Counter()
        self.connected = set()
        self.unknown = set()

    def __enter__(self):
        endpoints = [self.endpoints] if self.is_cluster else [[endpoint] for endpoint in self.endpoints]
        kinds = ClusterConnection if self.is_cluster else SingleConnection
        self.connections = [kinds(self, number, places, is_host) for number, places in enumerate(endpoints)
                            for is_host in (False, True)]
        self.counter = threading.Thread(target=self.count, daemon=True)
        self.counter.start()
        return self

    def __exit__(self, *_):
        self.stopping.set()
        for connection in self.connections:
            connection.thread.join(2 * LONGEST_SILENCE)
        self.inbox.put(None)
        self.counter.join()

    def leave(self):
        """The primary host goes away: its connections end without a word."""
        for connection in self.connections:
            if connection.is_host:
                connection.wanted.clear()
                if connection.client:
                    connection.client.close(orderly=False)

    def come_back(self):
        for connection in self.connections:
            connection.wanted.set()

    def send(self, node, kind, metrics):
        """Publishes a command on the server where the node is."""
        with self.lock:
            server = self.records[node].is_born_at()
        topic = f"spBv1.0/{GROUP}/{kind}/{node}" + ("/sensor" if kind == "DCMD" else "")
        for connection in self.connections:
            client = connection.client
            if connection.number == server and connection.is_host and client:
                client.publish(topic, encode(metrics))

    # The counting.

    def count(self):
        while (entry := self.inbox.get()) is not None:
            server, topic, now, data, qos, retained = entry
            with self.lock:
                if data is None:
                    self.note_connection(server, topic == "connected")
                else:
                    self.take(server, topic, now, data, qos, retained)

    def note_connection(self, server, is_connected):
        (self.connected.add if is_connected else self.connected.discard)(server)
        for record in self.records.values():
            if server in record.rules:
                record.rules[server].forget()
            for session in record.sessions:
                if session.server == server and session.is_alive():
                    session.is_out_of_sight = True

    def take(self, server, topic, now, data, qos, retained):
        parts = topic.split("/")
        kind, node = parts[2], parts[3]
        if kind in ("NCMD", "DCMD"):
            return
        if node not in self.records:
            self.unknown.add(topic)
            return
        record = self.records[node]
        size = FIXED_HEADER + TOPIC_LENGTH + len(topic) + len(data)
        self.messages += 1
        self.bytes += size
        self.per_second[int(now)] += 1
        if kind == "NDEATH":
            record.note_death(server, decode(data)["metrics"][0]["value"], now)
        record.rules_at(server).follow(parts, data, qos, retained)
        if kind == "NBIRTH":
            record.note_birth(server, now)
        if kind in ("NBIRTH", "DBIRTH"):
            record.birth_bytes += size
        if kind == "DDATA":
            record.data_messages += 1
            record.data_bytes += size

    def unborn(self):
        with self.lock:
            return [name for name, record in self.records.items() if record.is_born_at() is None]

    def total(self, what):
        with self.lock:
            return sum(getattr(record, what) for record in self.records.values())


class SingleConnection(Connection):
    def __init__(self, collector, number, places, is_host):
        super().__init__(collector, number, places[0], is_host)


class ClusterConnection(Connection):
    """Walks to the next process of the cluster with each attempt."""

    def __init__(self, collector, number, places, is_host):
        self.places = collections.deque(places)
        super().__init__(collector, number, places[0], is_host)

    def live_once(self):
        self.endpoint = self.places[0]
        self.places.rotate(-1)
        super().live_once()
