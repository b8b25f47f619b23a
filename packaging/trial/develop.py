"""A plug-in of one's own: the template is built against libzucontrol-dev alone, and the host takes it."""

from trial import SERVICE

TEMPLATE = "/usr/share/doc/libzucontrol-dev/examples/Template"


def trial(trial):
    with trial.root() as root:
        development = ("g++", "make", "cmake", "pkg-config", *trial.new.paths("libzucontrol1", "libzucontrol-dev"))
        root.download(*development)
        root.install(*development)
        trial.ok("a compiler and libzucontrol-dev install, with no other package of ours than its library", not root.has("usr/bin/zucontrol-host"))
        root.run("sh", "-c", f"cp -r {TEMPLATE} /root/make && make -C /root/make")
        trial.ok("make and pkg-config build the template")
        root.run("sh", "-c", f"cp -r {TEMPLATE} /root/cmake && cd /root/cmake && cmake -B build && cmake --build build")
        trial.ok("cmake builds the template")
        root.install(*trial.new.paths(*SERVICE))
        for plugin in ("/root/make/template.so", "/root/cmake/build/template.so"):
            root.run("zucontrol-host", "--check-plugin", plugin)
            trial.ok(f"the host takes {plugin}")
