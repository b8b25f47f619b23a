"""A plug-in throws an int from one of its operations: the host keeps running, reports it, and serves all others."""

import os
import pathlib
import tempfile
import unittest

from ascii_client import AsciiClient
from host import BIN, Host, wait_until
from modbus import ModbusClient
from rest import RestClient

AHEAD = "/controls/Ahead"
ASSEMBLY = AHEAD + "/registerAssemblies/registerAssembly-0"
LASTS = ". This lasts until the operation succeeds."


class Session:
    """`with Session(host) as session: session.scan()`

    The requests of clients to a host with the plug-in Ahead. Expects an answer to every request, but does not check the result."""

    def __init__(self, host):
        self.host = host
        self.rest = RestClient(host.http_port)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.rest.__exit__()

    def restart(self):
        self.rest.put(AHEAD, {"enabled": False})
        self.rest.put(AHEAD, {"enabled": True})

    def change(self):
        self.rest.put(AHEAD, {"parameters": {"level": 5}})

    def read(self):
        self.rest.get(AHEAD + "?schema=true")

    def read_metrics(self):
        """Reads the metrics over REST and through a client of another service. That client gets an answer, and is served after it."""
        self.rest.get(AHEAD + "/metrics")
        with AsciiClient(self.host.ports["AsciiTcp"]) as client:
            for request in (f"READ {AHEAD}/metrics", "READ /health"):
                answer = client.ask(request)
                assert answer is not None and answer.split()[0] in ("OK", "ERROR"), answer
            assert answer.startswith("OK "), answer

    def read_outputs(self):
        self.rest.get(AHEAD + "/outputs")

    def add_output(self):
        self.rest.post(AHEAD + "/outputs/commands/removeAll")
        self.rest.post(AHEAD + "/outputs/commands/add", {"source": "profile/zMax", "outputId": "z"})

    def read_assembly(self):
        self.rest.get(ASSEMBLY)

    def call_assembly(self):
        self.rest.post(ASSEMBLY + "/commands/remove", {"outputIdList": []})

    def act(self):
        self.rest.get(AHEAD + "/commands/act")
        self.rest.post(AHEAD + "/commands/act")

    def restore(self):
        self.rest.post(AHEAD + "/commands/restore")

    def save(self):
        self.rest.post("/jobs/default/save")

    def load(self):
        self.rest.post("/jobs/default/load")

    def scan(self):
        port = self.host.ports["AsciiTcp"]
        with AsciiClient(port) as client, AsciiClient(port) as listener:
            assert listener.ask("SUBSCRIBE") == "OK"
            assert client.run("START") == "DONE"
            assert listener.line().startswith("DATA ")
            assert client.run("STOP") == "DONE"

    def nothing(self):
        pass

    def problems(self):
        return [problem["text"] for problem in self.rest.get("/problems").json["problems"]]


def fails(operation):
    return f"Service Ahead failed in its operation {operation}{LASTS}"


NO_METRICS = "Ahead fails over its metrics; they stand still, and so may those of others."
NO_RESULTS = ("Ahead gets no more results, since it failed over one. Disable it and enable it again; if that does not help, "
              "restart the host.")

# The operation, the request that makes a running host call it, and the report of the host.
RUNNING = [
    ("Start", Session.restart, fails("Start")),
    ("Stop", Session.restart, fails("Stop")),
    ("RegisterControlScanResultsHandler", Session.restart, fails("RegisterControlScanResultsHandler")),
    ("DeregisterControlScanResultsHandler", Session.restart, fails("DeregisterControlScanResultsHandler")),
    ("Params", Session.read, fails("Params")),
    ("ParamsUpdate", Session.change, fails("ParamsUpdate")),
    ("ParamsVersion", Session.save, fails("ParamsVersion")),
    ("ResetParams", Session.load, fails("ResetParams")),
    ("EthernetProtocolId", Session.save, fails("EthernetProtocolId")),
    ("UpdateMetrics", Session.nothing, NO_METRICS),
    ("GetMetrics", Session.read_metrics, fails("GetMetrics")),
    ("HasProtocolOutput", Session.read_outputs, fails("HasProtocolOutput")),
    ("Outputs", Session.read_outputs, fails("Outputs")),
    ("IProtocolOutput::BeginLock", Session.read_outputs, fails("IProtocolOutput::BeginLock")),
    ("IProtocolOutput::OutputMap", Session.read_outputs, fails("IProtocolOutput::OutputMap")),
    ("IProtocolOutput::Clear", Session.load, fails("IProtocolOutput::Clear")),
    ("HasOutputsActionTarget", Session.read_outputs, fails("HasOutputsActionTarget")),
    ("OutputsActionTarget", Session.read_outputs, fails("OutputsActionTarget")),
    ("OutputsUpdate", Session.add_output, fails("OutputsUpdate")),
    ("DataSourceList", Session.add_output, fails("DataSourceList")),
    ("ActionTarget", Session.read, fails("ActionTarget")),
    ("IControlActionTarget::ListActions", Session.read, fails("ListActions")),
    ("IControlActionTarget::GetActionParams", Session.act, fails("GetActionParams")),
    ("IControlActionTarget::InvokeAction", Session.act, fails("InvokeAction")),
    ("HasRegisterAssemblyGroup", Session.read, fails("HasRegisterAssemblyGroup")),
    ("HasRegisterAssembly", Session.load, fails("HasRegisterAssembly")),
    ("RegisterAssemblyList", Session.read, fails("RegisterAssemblyList")),
    ("RegisterAssembly", Session.read_assembly, fails("RegisterAssembly")),
    ("IProtocolRegisterAssembly::BeginLock", Session.read_assembly, fails("IProtocolRegisterAssembly")),
    ("IProtocolRegisterAssembly::Attributes", Session.read_assembly, fails("IProtocolRegisterAssembly")),
    ("HasRegisterAssemblyActionTarget", Session.read_assembly, fails("HasRegisterAssemblyActionTarget")),
    ("RegisterAssemblyActionTarget", Session.read_assembly, fails("RegisterAssemblyActionTarget")),
    ("RegisterAssemblyUpdate", Session.call_assembly, fails("RegisterAssemblyUpdate")),
    ("ConfigureDefaultRegisterAssembly", Session.load, fails("ConfigureDefaultRegisterAssembly")),
    ("OnStartScan", Session.scan, fails("OnStartScan")),
    ("OnStopScan", Session.scan, fails("OnStopScan")),
    ("OnFactoryRestore", Session.restore, fails("OnFactoryRestore")),
    ("ProcessResultSets", Session.scan, NO_RESULTS),
    ("SavePersistDomain", Session.save, fails("SavePersistDomain")),
]

# The operations that a starting host calls, with a job that enables Ahead. A failure in the first ones keeps the plug-in out.
AT_START = [(operation, "throwing.so") for operation in
            ("Make", "Create", "constructor", "AddParamsInternalUpdateEventHandler", "Params", "EthernetProtocolId")]
AT_START += [(operation, fails(operation)) for operation in
             ("Start", "RegisterControlScanResultsHandler", "ResetParams", "LoadPersistDomain",
              "ConfigureDefaultRegisterAssembly")]
AT_START += [("UpdateMetrics", NO_METRICS), ("GetMetrics", fails("GetMetrics"))]


class Throwing(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.data = pathlib.Path(scratch.name) / "data"
        self.file = pathlib.Path(scratch.name) / "operation"
        os.environ["ZU_TEST_THROWING_FILE"] = str(self.file)
        self.addCleanup(os.environ.pop, "ZU_TEST_THROWING_FILE")
        self.throw_in("")

    def throw_in(self, operation):
        self.file.write_text(operation + "\n")

    def start(self, *arguments):
        return Host("--plugins", BIN / "tests/throwing", "--plugins", BIN / "tests/ailing", "--plugins", BIN / "plugins", "--enable",
                    "AsciiTcp", "--param", "AsciiTcp.port=0", *arguments, data=self.data)

    def check_told(self, session, sentence):
        wait_until(lambda: any(sentence in text for text in session.problems()), f"'{sentence}' in {session.problems()}")

    def check_others(self, session):
        """Expects that all other protocols exist and are served."""
        with ModbusClient(session.host.modbus_port) as client:
            self.assertEqual(len(client.read(0, 2)), 2)
        self.assertEqual(session.rest.get("/controls").status, 200)
        self.assertEqual(session.rest.get("/controls/ModbusTcp").status, 200)
        metrics = session.rest.get("/metrics")
        self.assertEqual(metrics.status, 200)
        self.assertIn('protocol="ModbusTcp"', metrics.text)
        for enabled in (True, False):
            answer = session.rest.put("/controls/Ailing", {"enabled": enabled})
            self.assertEqual((answer.status, answer.json["enabled"]), (200, enabled), answer.text)

    def check_running(self, operation, use, sentence):
        with self.start("--enable", "Ahead") as host, Session(host) as session:
            session.save()
            self.assertEqual(session.problems(), [])
            self.throw_in(operation)
            use(session)
            self.check_told(session, sentence)
            self.check_others(session)
            self.throw_in("")
            if operation != "Stop":  # a service that could not be stopped keeps its state
                use(session)
                session.restart()  # results come again only then
                wait_until(lambda: session.problems() == [], f"an end of {session.problems()}")
            self.throw_in(operation)
            self.check_stop(host)

    def check_stop(self, host):
        """The status is 1 when the operation keeps the service from being saved, and 0 otherwise."""
        host.expected_status = host.stop()
        lines = [line for line in host.errors if line is not None and line.startswith("zucontrol-host: ")]
        self.assertEqual(host.expected_status, len(lines), host.log())
        for line in lines:
            self.assertIn("The job 'default' cannot be saved: ", line)

    def check_start(self, operation, sentence):
        self.throw_in(operation)
        with self.start() as host, Session(host) as session:
            self.check_told(session, sentence)
            self.check_others(session)
            self.check_stop(host)

    def test_starting_a_new_job_with_InitPersistDomain(self):
        self.check_start("InitPersistDomain", fails("InitPersistDomain"))

    def test_stopping_with_a_handler_that_cannot_be_removed(self):
        for operation in ("RemoveProtocolStatusUpdateEventHandler", "RemoveParamsInternalUpdateEventHandler"):
            with self.start("--enable", "Ahead") as host:
                self.throw_in(operation)
                self.assertEqual(host.stop(), 0)
                host.wait_for_log("Exception thrown in destructor")
            self.throw_in("")


def add_tests():
    """A test for each operation, so that a failure names it."""
    for operation, use, sentence in RUNNING:
        def test_running(self, given=(operation, use, sentence)):
            self.check_running(*given)
        setattr(Throwing, "test_running_with_" + operation.replace("::", "_"), test_running)
    for operation, sentence in AT_START:
        def test_starting(self, given=(operation, sentence)):
            with self.start("--enable", "Ahead") as host, Session(host) as session:
                session.save()
            self.check_start(*given)
        setattr(Throwing, "test_starting_with_" + operation, test_starting)


add_tests()

if __name__ == "__main__":
    unittest.main()
