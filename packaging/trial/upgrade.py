"""An upgrade while hosts run, and an upgrade on a full disk."""

import subprocess

from service import Service
from trial import SERVICE

BY_HAND = "http://127.0.0.1:8081"


def trial(trial):
    with trial.root() as root:
        service = start_before(trial, root)
        start_by_hand(trial, root, service)
        fill_the_disk(trial, root, service)
        check_upgrade(trial, root, service)


def start_before(trial, root):
    service = Service(root)
    root.download(*trial.before.paths(*SERVICE))
    root.install(*trial.before.paths(*SERVICE))
    root.boot()
    trial.ok("systemd starts the service with the machine", service.waits_until(service.is_active))
    service.configure()
    service.systemctl("restart")
    service.change_max_clients(3)
    trial.ok(f"version {trial.before.version} runs, and a person has changed its job",
             service.rest("/")["version"] == trial.before.version and service.max_clients() == 3)
    return service


def start_by_hand(trial, root, service):
    """A second host, which belongs to no package's unit."""
    root.run("systemd-run", "--unit=by-hand", "--property=Type=notify", "zucontrol-host", "--data", "/tmp/by-hand",
             "--http", "127.0.0.1:8081")
    trial.ok("a host of another person runs beside it", service.rest("/", http=BY_HAND)["version"] == trial.before.version)


def fill_the_disk(trial, root, service):
    filler = root.path / "filler"
    free = subprocess.run(["df", "--output=avail", "--block-size=1", root.path], check=True, capture_output=True, text=True).stdout
    subprocess.run(["fallocate", f"--length={int(free.split()[-1]) - 1024 * 1024}", filler], check=True)
    done = root.run("dpkg", "--install", *trial.new.paths(*SERVICE), check=False)
    trial.ok("an upgrade on a full disk fails, and says why", done.returncode != 0 and "No space left on device" in done.stderr)
    trial.ok("the service goes on, with its job", service.is_active() and service.max_clients() == 3)
    filler.unlink()


def check_upgrade(trial, root, service):
    root.run("dpkg", "--install", *trial.new.paths(*SERVICE))
    trial.ok(f"with room, the upgrade to version {trial.new.version} ends", root.output("zucontrol-host", "--version").startswith(
        f"zucontrol-host {trial.new.version}\n"))
    trial.ok("the service has started again with it", service.is_active() and service.rest("/")["version"] == trial.new.version)
    trial.ok("it has the job as the person left it", service.max_clients() == 3 and service.height() == 25000)
    trial.ok("the configuration of the person is there", service.rest("/controls/ModbusTcp")["parameters"]["port"] == 502)
    trial.ok("the host of the other person goes on with its version", service.rest("/", http=BY_HAND)["version"] == trial.before.version)
    done = root.run("zucontrol-host", "--data", "/tmp/third", "--http", "127.0.0.1:8081", check=False)
    trial.ok("a host on a port that is taken ends with status 1, and names the port", done.returncode == 1 and "8081" in done.stderr)
