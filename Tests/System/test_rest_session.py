"""The session of the page on REST, run line by line: each command prints the lines that the page shows."""

import pathlib
import re
import socket
import subprocess
import unittest

from host import PATIENCE, Host, wait_until

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/rest.md"
COMMAND = re.compile(r"curl |mbpoll |echo |\(sleep ")


def session():
    """(command, lines shown behind it) of the page's session, in order."""
    section = PAGE.read_text().split("\n## A session\n")[1].split("\n## ")[0]
    steps = []
    for block in re.findall(r"^```\n(.*?)^```", section, re.MULTILINE | re.DOTALL):
        for line in block.splitlines():
            if COMMAND.match(line):
                steps.append((line, []))
            else:
                steps[-1][1].append(line)
    return steps


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


def run(command):
    """The lines that a command prints; of mbpoll those with registers."""
    done = subprocess.run(["bash", "-c", command], capture_output=True, text=True, timeout=PATIENCE)
    lines = [line for line in done.stdout.splitlines() if line]
    return [line for line in lines if line.startswith("[")] if command.startswith("mbpoll") else lines


class RestSession(unittest.TestCase):
    def test_the_session_of_the_page(self):
        steps = session()
        self.assertGreaterEqual(len(steps), 30)
        ports = {"1502": str(free_port()), "5025": str(free_port())}
        with Host("--start", "--enable", "ModbusTcp", "--param", f"ModbusTcp.port={ports['1502']}",
                  "--enable", "AsciiTcp", "--param", f"AsciiTcp.port={ports['5025']}", modbus=False) as host:
            ports["8080"] = str(host.http_port)

            def as_here(text):
                return re.sub(r"\b(1502|5025|8080)\b", lambda match: ports[match.group()], text)

            for command, shown in steps:
                command, shown = as_here(command), [as_here(line) for line in shown]
                if " -X " in command:  # a change is made once
                    self.assertEqual(run(command), shown, command)
                else:  # asks again until the operation has ended
                    wait_until(lambda: run(command) == shown, f"{command} to print {shown}, and not {run(command)}")


if __name__ == "__main__":
    unittest.main()
