"""Back to the version before, with a job, settings and tokens of a newer version: each is refused with a sentence, and kept."""

import contextlib
import json
import sqlite3
import zlib

from service import Service
from trial import SERVICE

JOB = "var/lib/zucontrol/default.zpjob"
SETTINGS = "var/lib/zucontrol/settings.zpset"
SECURITY = "var/lib/zucontrol/security.zpset"
SERVICE_DOCUMENT = "controls/ModbusTcp/config.json"


def trial(trial):
    with trial.root() as root:
        service = Service(root)
        root.download(*trial.new.paths(*SERVICE))
        root.install(*trial.new.paths(*SERVICE))
        root.boot()
        service.configure()
        service.systemctl("restart")
        service.change_max_clients(3)
        service.systemctl("stop")
        check_job_and_settings(trial, root, service)
        check_tokens(trial, root, service)


def check_job_and_settings(trial, root, service):
    make_newer(root.path / JOB, SERVICE_DOCUMENT)
    settings = make_newer(root.path / SETTINGS, "sensor/authority.json")
    root.run("dpkg", "--install", *trial.before.paths(*SERVICE))
    service.systemctl("start")
    trial.ok(f"version {trial.before.version} installs over the newer one, and runs with its files",
             service.rest("/")["version"] == trial.before.version)
    report = service.rest("/jobs/default/report")
    trial.ok("the report of the load says that the document of the newer version is refused",
             report["protocols"]["ModbusTcp"]["source"] == "refused")
    trial.ok("the journal has a sentence about it",
             service.says("Unsupported configuration file version for service ModbusTcp."))
    trial.ok("the journal has a sentence about the control authority, and what follows from it", service.says(
        "The control authority cannot be read (The document has another version): REST may not run the sensor"))
    service.systemctl("stop")
    trial.ok("the newer document of the job is kept beside that of this version",
             documents(root.path / JOB)["rejected/" + SERVICE_DOCUMENT]["version"] == "2"
             and documents(root.path / JOB)[SERVICE_DOCUMENT]["version"] == "1")
    trial.ok("the newer control authority is kept", documents(root.path / SETTINGS)["sensor/authority.json"] == settings)


def check_tokens(trial, root, service):
    service.systemctl("start")
    service.rest("/tokens", "POST", {"name": "line 7", "role": "viewer"})
    service.systemctl("stop")
    newer = documents(root.path / SECURITY)["security/tokens"]
    newer["tokens"][0]["role"] = "a role of a newer version"
    write(root.path / SECURITY, "security/tokens", newer)
    service.systemctl("start")
    trial.ok("the journal has a sentence about tokens of a newer version",
             service.says("The tokens of programs cannot be read, so none is accepted"))
    trial.ok("REST stays closed, and Modbus goes on", service.status("/problems") == "401" and service.status("/health") == "200"
             and service.waits_until(lambda: service.height() == 25000))
    service.systemctl("stop")
    trial.ok("the newer tokens are kept", documents(root.path / SECURITY)["security/tokens"] == newer)


def documents(file):
    """{name: document} of an archive of the host"""
    with contextlib.closing(sqlite3.connect(file)) as archive:
        rows = archive.execute("SELECT name, data, sz FROM sqlar").fetchall()
    return {name: json.loads(data if len(data) == size else zlib.decompress(data)) for name, data, size in rows}


def write(file, name, document):
    text = json.dumps(document).encode()
    with contextlib.closing(sqlite3.connect(file)) as archive, archive:
        archive.execute("UPDATE sqlar SET data = ?, sz = ? WHERE name = ?", (text, len(text), name))


def make_newer(file, name):
    """Gives a document the version 2, and returns it."""
    document = {**documents(file)[name], "version": "2"}
    write(file, name, document)
    return document
