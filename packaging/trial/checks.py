"""What Debian's own programs say about the packages."""

import re
import subprocess


def trial(trial):
    check_lintian(trial)
    check_piuparts(trial)


def check_lintian(trial):
    files = sorted(str(path) for path in trial.new.folder.glob("*.deb"))
    said = subprocess.run(["lintian", "--allow-root", "--show-overrides", "--fail-on", "error,warning", *files],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    print(said.stdout, end="", flush=True)
    tags = [line for line in said.stdout.splitlines() if re.match("[EW]: ", line)]
    trial.ok("lintian has no error and no warning that an override does not explain", said.returncode == 0 and not tags)


def check_piuparts(trial):
    """The jobs that a host leaves behind are not its matter: it starts no host."""
    files = [str(trial.new.folder / trial.new.names[name]) for name in ("libzucontrol1", "zucontrol-plugins", "zucontrol-host")]
    done = subprocess.run(["piuparts", "--basetgz", str(trial.base), "--distribution", "bookworm", "--keep-sources-list",
                           "--no-upgrade-test", "--warn-on-debsums-errors", *files],
                          stdout=trial.log, stderr=subprocess.STDOUT)
    trial.ok("piuparts installs, removes and purges the packages, and finds nothing left", done.returncode == 0)
