"""The sessions that the pages show: how the host is started, the commands, and the lines that they print."""

import contextlib
import pathlib
import re
import shlex
import socket
import subprocess
import time

from host import PATIENCE, Host, wait_until

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMAND = re.compile(r"curl |mbpoll |nc |printf |echo |\(sleep ")
OF_THE_PART = re.compile(r"\b25(000|\.000)\b")  # the largest height of the simulated part
RATE = 1000  # profiles per second
BLOCK_SECONDS = 200 / RATE  # if the conveyor moves, every profile of the part passes in this time


def section(page, heading):
    return (ROOT / page).read_text().split(f"\n## {heading}\n")[1].split("\n## ")[0]


def session(page, heading):
    """(arguments of the host, [(command, lines shown behind it)]) of the session under this heading, in order.

    A block with a language, such as a program, is none of the session."""
    arguments, steps = [], []
    for language, block in re.findall(r"^```(\w*)\n(.*?)^```", section(page, heading), re.MULTILINE | re.DOTALL):
        for line in block.splitlines() if not language else ():
            started = re.match(r"(?:\S*/)?(?:run|zucontrol-host) (.*)", line)
            if started:
                arguments = shlex.split(started[1])
            elif COMMAND.match(line):
                steps.append((line, []))
            elif steps:
                steps[-1][1].append(line)
    return arguments, steps


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


@contextlib.contextmanager
def session_host(arguments, ports, **options):
    """The host as the page starts it, on free ports. `ports`: of each protocol the port that the page shows.

    Yields a function that puts the ports of this host into a text of the page."""
    here = {shown: str(free_port()) for shown in ports.values()}
    settings = [word for name, shown in ports.items() for word in ("--param", f"{name}.port={here[shown]}")]
    with Host(*arguments, *settings, "--rate", RATE, modbus=False, **options) as host:
        here["8080"] = str(host.http_port)
        shown_port = re.compile(r"\b(" + "|".join(here) + r")\b")
        yield lambda text: shown_port.sub(lambda match: here[match.group()], text)


def run(command):
    """The lines that a command prints, without empty ones; of mbpoll those with registers."""
    done = subprocess.run(["bash", "-c", command], capture_output=True, text=True, timeout=PATIENCE)
    lines = [line for line in done.stdout.splitlines() if line]
    if done.returncode != 0 and not lines:
        raise AssertionError(f"{command} failed: {done.stderr}")
    return [line for line in lines if line.startswith("[")] if command.startswith("mbpoll") else lines


def without_moments(lines):
    """The lines, with values that change over time replaced by fixed texts."""
    return [re.sub(r"(^DATA|uptime=)( ?)\d+", r"\1\2N", line) for line in lines]


def expect(command, shown):
    """Runs the command and expects the lines that the page shows.

    A change is made once. Anything else is asked again until an operation has ended. A measurement of the part keeps
    its value from then on."""
    shown = without_moments(shown)
    printed = without_moments(run(command))
    if not shown or " -X " in command:
        if printed != shown:
            raise AssertionError(f"{command} prints {printed} in place of {shown}")
        return
    if printed != shown:
        wait_until(lambda: without_moments(run(command)) == shown, f"{command} to print {shown} in place of {printed}")
    deadline = time.monotonic() + 2 * BLOCK_SECONDS
    while OF_THE_PART.search(" ".join(shown)) and time.monotonic() < deadline:
        again = without_moments(run(command))
        if again != shown:
            raise AssertionError(f"{command} printed {shown}, and then {again}")
