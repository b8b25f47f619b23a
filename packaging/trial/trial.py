"""What the scenarios share: the packages, fresh systems, and the line that is printed for each thing that works."""

import subprocess

from root import Failed, Root, make_base

SERVICE = ("libzucontrol1", "zucontrol-host", "zucontrol-plugins")


class Packages:
    """The packages in a folder. `place` is the same folder in the systems of the trial."""

    def __init__(self, folder, place):
        self.folder = folder
        self.place = place
        self.names = {path.name.split("_")[0]: path.name for path in folder.glob("*.deb")}
        self.version = self.field("zucontrol-host", "Version")

    def field(self, name, field):
        return subprocess.run(["dpkg-deb", "-f", self.folder / self.names[name], field], check=True, capture_output=True,
                              text=True).stdout.strip()

    def paths(self, *names):
        """The paths of packages in a system."""
        return [f"{self.place}/{self.names[name]}" for name in names]


class Trial:
    def __init__(self, place, new, before):
        self.place = place
        self.new = Packages(new, "/new")
        self.before = Packages(before, "/before")
        self.base = place / "base.tar.gz"
        place.mkdir(parents=True, exist_ok=True)
        self.log = open(place / "trial.log", "w", encoding="utf-8")
        if not self.base.exists():
            print("making a Debian ...", flush=True)
            make_base(self.base, self.log)

    def root(self):
        return Root(self.place / "root", self.base, self.log, {"new": self.new.folder, "before": self.before.folder})

    def ok(self, sentence, holds=True):
        """Prints the sentence if it is true, else throws."""
        if not holds:
            raise Failed(f"it is not true that {sentence}")
        print(f"ok: {sentence}", flush=True)
        print(f"== ok: {sentence}", file=self.log, flush=True)
