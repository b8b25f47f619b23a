"""A fresh system: the packages are installed, run as a service, removed and purged."""

import pathlib
import re

from service import Service
from trial import SERVICE

ALL = (*SERVICE, "zucontrol-doc")
EXPOSURE_LIMIT = 1.5  # of systemd-analyze security


def trial(trial):
    with trial.root() as root:
        root.download(*trial.new.paths(*ALL))
        root.boot()
        files = root.files()
        root.install(*trial.new.paths(*ALL))
        trial.ok("the packages install in a system that runs")
        check_files(trial, root)
        check_service(trial, root)
        check_faults(trial, root)
        check_removal(trial, root, files)


def check_files(trial, root):
    commit = re.search(r"commit ([0-9a-f]{40})", root.output("zgrep", "commit", "/usr/share/doc/zucontrol-host/changelog.gz"))[1]
    version = root.output("zucontrol-host", "--version").splitlines()
    trial.ok("zucontrol-host tells its version, commit and ABI",
             version[:2] == [f"zucontrol-host {trial.new.version}", f"commit {commit}"] and len(version) == 3)
    trial.ok("zucontrolctl tells the same version", root.output("zucontrolctl", "--version") == f"zucontrolctl {trial.new.version}")
    trial.ok("the service has a user of its own", root.succeeds("id", "zucontrol"))
    trial.ok("the service starts with the machine", root.output("systemctl", "is-enabled", "zucontrol") == "enabled")
    root.run("systemd-analyze", "verify", "--man=no", "zucontrol.service")
    trial.ok("systemd understands the unit")
    said = root.output("systemd-analyze", "security", "--offline=true", "zucontrol.service").splitlines()[-1]
    trial.ok(f"systemd-analyze security says at most {EXPOSURE_LIMIT}: {said.lstrip('→ ')}",
             float(re.search(r"zucontrol.service: ([\d.]+)", said)[1]) <= EXPOSURE_LIMIT)
    trial.ok("the bill of materials and the man pages are there",
             root.has("usr/share/doc/zucontrol-host/sbom.spdx.json") and root.has("usr/share/man/man8/zucontrol-host.8.gz")
             and root.has("usr/share/man/man1/zucontrolctl.1.gz"))


def check_service(trial, root):
    service = Service(root)
    trial.ok("systemd has started the service", service.waits_until(service.is_active))
    trial.ok("REST answers as the service of this version", service.rest("/")["version"] == trial.new.version)
    root.run("zucontrolctl", "call", "sensor/start")
    root.run("zucontrolctl", "enable", "ModbusTcp")
    trial.ok("after two commands of zucontrolctl, mbpoll reads a height from port 1502", service.waits_until(lambda: service.height(1502)))
    service.configure()
    root.run("zucontrol-host", "--check-config")
    service.systemctl("restart")
    trial.ok("with a configuration of a person it starts again", service.is_active())
    process = pathlib.Path(f"/proc/{host_pid(service)}/status").read_text()
    trial.ok("it runs as its user, with CAP_NET_BIND_SERVICE (bit 10) alone",
             f"\nUid:\t{root.output('id', '-u', 'zucontrol')}\t" in process and "\nCapPrm:\t0000000000000400\n" in process)
    trial.ok("mbpoll reads the height of the part, 25 mm, from port 502", service.waits_until(lambda: service.height() == 25000))
    trial.ok("the journal has entries with the fields of the service and of the function",
             service.journal("ZU_SERVICE=ModbusTcp") and any("ZU_FUNCTION" in entry for entry in service.journal("PRIORITY=6")))
    service.systemctl("reload")
    trial.ok("it reads its configuration again, and goes on", service.is_active() and service.height() == 25000)


def check_faults(trial, root):
    service = Service(root)
    first = service.shows("MainPID")
    root.run("systemctl", "kill", "--signal=KILL", "zucontrol")
    trial.ok("systemd starts a killed host again",
             service.waits_until(lambda: service.shows("MainPID") not in ("0", first) and service.is_active()))
    trial.ok("the new host has the job", service.height() == 25000)
    file = root.path / "etc/zucontrol/zucontrol.toml"
    good = file.read_text()
    file.write_text("raet = 1\n" + good)
    root.run("systemctl", "restart", "zucontrol", check=False)
    trial.ok("a host with a bad configuration stays stopped, with status 2",
             service.waits_until(lambda: service.shows("ActiveState") == "failed") and service.shows("ExecMainStatus") == "2")
    trial.ok("the journal names the line of the file and the nearest key", service.says("zucontrol.toml, line 1: 'raet' is no key; the nearest one is 'rate'"))
    file.write_text(good)
    service.systemctl("restart")
    trial.ok("with the good configuration it starts again", service.is_active())


def check_removal(trial, root, files):
    state = root.path / "var/lib/zucontrol"
    (state / "mine.zpjob").write_text("of a person")
    (root.path / "etc/zucontrol/mine.toml").write_text("# of a person")
    root.run("apt-get", "remove", "-y", "-qq", *ALL)
    trial.ok("the packages are removed, and the service has ended",
             not root.has("usr/bin/zucontrol-host") and not root.succeeds("systemctl", "is-active", "zucontrol"))
    trial.ok("the jobs and the configuration are there",
             {"default.zpjob", "mine.zpjob"} <= {path.name for path in state.iterdir()} and root.has("etc/zucontrol/zucontrol.toml"))
    root.run("dpkg", "--purge", *ALL)
    root.run("apt-get", "autoremove", "-y", "-qq", "--purge")  # the libraries of Debian that came along
    left = sorted(root.files() - files)
    print("left after the purge:", *left, file=trial.log)
    trial.ok("a purge leaves the jobs and a file of a person, and nothing else",
             left == ["etc/zucontrol", "etc/zucontrol/mine.toml", "var/lib/zucontrol", "var/lib/zucontrol/default.zpjob",
                      "var/lib/zucontrol/mine.zpjob"])


def host_pid(service):
    """The process of the host, as the machine numbers it."""
    inside = service.shows("MainPID")
    for status in pathlib.Path("/proc").glob("[0-9]*/status"):
        text = status.read_text()
        if text.startswith("Name:\tzucontrol-host\n") and re.search(rf"^NSpid:.*\t{inside}$", text, re.MULTILINE):
            return status.parent.name
    raise LookupError(f"there is no process {inside}")
