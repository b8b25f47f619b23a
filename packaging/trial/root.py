"""A fresh Debian in memory. Packages are installed in it, and its systemd can be started."""

import os
import pathlib
import shutil
import subprocess
import time

CONTAINER = ("systemd-nspawn", "--quiet", "--register=no", "--keep-unit")
ENVIRONMENT = ("env", "-i", "HOME=/root", "LC_ALL=C.UTF-8", "DEBIAN_FRONTEND=noninteractive",
               "PATH=/usr/sbin:/usr/bin:/sbin:/bin")
APT_INSTALL = ("apt-get", "install", "-y", "-qq", "--no-install-recommends", "--allow-downgrades")
SIZE = "3g"
START_SECONDS = 180

# What changes with each package or by itself: the lists of dpkg and apt, the users, logs and caches.
ADMINISTRATION = ("new", "before", "dev", "proc", "run", "sys", "tmp", "var/cache", "var/lib/apt", "var/lib/dpkg",
                  "var/lib/systemd", "var/log", "etc/ld.so.cache", "etc/.pwd.lock",
                  *(f"etc/{name}{end}" for name in ("passwd", "group", "shadow", "gshadow", "subuid", "subgid") for end in ("", "-")))


class Failed(Exception):
    """A command failed, or a sentence about the packages is not true."""


def make_base(file, log):
    """Makes a Debian with systemd, a .tar.gz file, from the archives that this machine uses itself."""
    archives = subprocess.run(
        ["apt-get", "indextargets", "--format", "deb $(REPO_URI) $(RELEASE) $(COMPONENT)", "Created-By: Packages", "Origin: Debian"],
        check=True, capture_output=True, text=True).stdout
    new = file.with_name("new-" + file.name)
    subprocess.run(["mmdebstrap", "--variant=apt", "--include=systemd-sysv",
                    "--customize-hook=copy-in /etc/apt/apt.conf.d /etc/apt", "bookworm", new, *sorted(set(archives.splitlines()))],
                   check=True, stdout=log, stderr=log)
    new.rename(file)


class Root:
    """`with Root(...) as root:` is a system that is not started. `boot` starts it, on a network of its own that has only the
    loopback interface; before that, it uses the network of the machine. `packages` are folders of packages: those of
    `packages["new"]` are in /new of the system."""

    def __init__(self, folder, base, log, packages):
        self.path = pathlib.Path(folder)
        self.base = base
        self.log = log
        self.packages = packages
        self.container = None
        self.leader = None  # the process 1 of the started system

    def __enter__(self):
        self.path.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={SIZE},mode=755", "trial", self.path], check=True)
        subprocess.run(["tar", "-xz", "-C", self.path, "-f", self.base], check=True)
        for name, folder in self.packages.items():
            (self.path / name).mkdir()
            for package in pathlib.Path(folder).glob("*.deb"):
                shutil.copy(package, self.path / name)
        return self

    def __exit__(self, *_):
        self.halt()
        subprocess.run(["umount", self.path], check=True)

    def run(self, *words, check=True):
        """Runs a command in the system. Throws when its status is not 0, unless `check` is false."""
        if self.leader:
            inside = ("nsenter", f"--target={self.leader}", *"--mount --uts --ipc --net --pid --root --wd".split())
        else:
            inside = (*CONTAINER, f"--directory={self.path}", "--as-pid2")
        return self._run((*inside, *ENVIRONMENT, *words), words, check)

    def run_outside(self, *words, check=True):
        """Runs a program of the machine on the network of the started system."""
        return self._run(("nsenter", f"--target={self.leader}", "--net", *words), words, check)

    def succeeds(self, *words):
        return self.run(*words, check=False).returncode == 0

    def output(self, *words):
        return self.run(*words).stdout.strip()

    def download(self, *packages):
        """Gets what `install` needs from the network. The system is not started."""
        self.run("apt-get", "update", "-qq")
        self.run(*APT_INSTALL, "--download-only", *packages)

    def install(self, *packages):
        self.run(*APT_INSTALL, *packages)

    def has(self, path):
        return os.path.lexists(self.path / path.lstrip("/"))

    def files(self):
        """The paths of all files and folders, but those of the administration."""
        found = set()
        for folder, folders, files in os.walk(self.path):
            at = pathlib.Path(folder).relative_to(self.path)
            folders[:] = [name for name in folders if str(at / name) not in ADMINISTRATION]
            found |= {str(at / name) for name in (*folders, *files)}
        return found - set(ADMINISTRATION)

    def boot(self):
        self.container = subprocess.Popen([*CONTAINER, f"--directory={self.path}", "--boot", "--private-network"],
                                          stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log)
        deadline = time.monotonic() + START_SECONDS
        while not self._has_started():
            if self.container.poll() is not None or time.monotonic() > deadline:
                raise Failed("the system does not start")
            time.sleep(0.2)

    def halt(self):
        if not self.container:
            return
        self.container.terminate()  # the container shuts its system down in order
        try:
            self.container.wait(START_SECONDS)
        except subprocess.TimeoutExpired:
            self.container.kill()
            self.container.wait()
        self.container = self.leader = None

    def _has_started(self):
        self.leader = self._find_leader()
        if not self.leader:
            return False
        state = self.run("systemctl", "is-system-running", check=False).stdout.strip()
        return state in ("running", "degraded")  # degraded: a unit of Debian itself may lack a right in a container

    def _find_leader(self):
        for status in pathlib.Path("/proc").glob("[0-9]*/status"):
            try:
                fields = dict(line.split(":\t", 1) for line in status.read_text().splitlines() if ":\t" in line)
            except OSError:  # the process has ended
                continue
            if fields["PPid"] == str(self.container.pid) and fields["NSpid"].split()[-1] == "1":
                return fields["Pid"]
        return None

    def _run(self, command, words, check):
        print("+", *words, file=self.log, flush=True)
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                              timeout=900)
        self.log.write(done.stdout + done.stderr)
        self.log.flush()
        if check and done.returncode != 0:
            said = "\n".join((done.stdout + done.stderr).splitlines()[-20:])
            raise Failed(f"'{' '.join(map(str, words))}' ended with status {done.returncode}:\n{said}")
        return done
