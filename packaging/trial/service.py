"""The service of a system that is started, as the people of a plant reach it."""

import json
import time

HTTP = "http://127.0.0.1:8080"
CONFIGURATION = """
enable = ["ModbusTcp"]
still = true
start = true
[param.ModbusTcp]
port = 502
"""
PATIENCE = 120  # seconds


class Service:
    def __init__(self, root):
        self.root = root

    def configure(self):
        """As a person does it. The next start serves Modbus on its own port."""
        (self.root.path / "etc/zucontrol/zucontrol.toml").write_text(CONFIGURATION)

    def systemctl(self, command):
        self.root.run("systemctl", command, "zucontrol")

    def shows(self, name):
        """A property of the unit."""
        return self.root.output("systemctl", "show", "--value", f"--property={name}", "zucontrol")

    def is_active(self):
        return self.root.succeeds("systemctl", "is-active", "zucontrol")

    def waits_until(self, holds):
        """Whether it holds within the limit."""
        deadline = time.monotonic() + PATIENCE
        while not holds():
            if time.monotonic() > deadline:
                return False
            time.sleep(0.2)
        return True

    def journal(self, *matches):
        """The entries of the service as dictionaries."""
        self.root.run("journalctl", "--sync")
        lines = self.root.output("journalctl", "--unit=zucontrol", "--output=json", *matches).splitlines()
        return [json.loads(line) for line in lines]

    def says(self, text):
        """Whether the journal has an entry with this text."""
        return any(text in str(entry["MESSAGE"]) for entry in self.journal())

    def rest(self, path, method="GET", body=None, http=HTTP):
        """The document that the host answers with."""
        words = ["curl", "-sS", "--fail-with-body", "--max-time", "60", "-X", method, http + path]
        if body is not None:
            words += ["-H", "Content-Type: application/json", "-d", json.dumps(body)]
        text = self.root.run_outside(*words).stdout
        return json.loads(text) if text else None

    def status(self, path):
        """The HTTP status of a request."""
        return self.root.run_outside("curl", "-s", "-o", "/dev/null", "-w", "%{http_code}", HTTP + path).stdout

    def height(self, port=502):
        """The height of the part in micrometres, which mbpoll reads."""
        words = f"mbpoll -0 -1 -p {port} -t 4:int -B -r 170 -c 1 127.0.0.1".split()
        lines = self.root.run_outside(*words, check=False).stdout.splitlines()
        return next((int(line.split()[-1]) for line in lines if line.startswith("[170]:")), None)

    def max_clients(self):
        return self.rest("/controls/ModbusTcp")["parameters"]["maxClients"]

    def change_max_clients(self, number):
        """As a person changes a job, and saves it."""
        self.rest("/controls/ModbusTcp", "PUT", {"parameters": {"maxClients": number}})
        self.rest("/jobs/default/save", "POST")
