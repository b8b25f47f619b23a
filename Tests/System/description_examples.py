"""Answers of the real host to one request of each kind: the examples in the description of the REST service.

`python3 description_examples.py FILE` writes them (ZU_BIN names the folder of the host)."""

import contextlib
import json
import pathlib
import sys
import tempfile

from host import Host, wait_until
from rest import RestClient

FILE = pathlib.Path(__file__).resolve().parents[2] / "Host/Description/examples.json"
ARGUMENTS = ("--https", "127.0.0.1:0", "--start", "--still", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0")
PASSWORD = "correct horse battery"
MOST_ENTRIES = 2  # of a list in an example
MOST_BYTES = 6000  # of an example

COMMAND = "/controls/:protocol/commands/:command"
OUTPUTS = "/controls/:protocol/outputs"
ASSEMBLY = "/controls/:protocol/registerAssemblies/:registerAssembly"
OUTPUT = {"outputId": "top", "source": "profile/zMax"}
BLOCK = {"type": "MeasurementValue", "outputId": 300, "dataSource": "profile/zMax"}
KEYS = {":protocol": "ModbusTcp", ":registerAssembly": "registerAssembly-0", ":device": "0", ":rel": "controls", ":id": "scanner-0",
        ":source": "profile%2FzMax"}

# (method, route, keys beside KEYS, body), in the order in which they are sent to a host that is open to everybody.
REQUESTS = [
    ("POST", "/sensor/commands/:command", {":command": "align"}, None),
    ("GET", "/operations", {}, None),
    ("GET", "/operations/:number", {":number": "1"}, None),
    ("GET", "/operations/:number", {":number": "99"}, None),
    ("GET", "/", {}, None),
    ("GET", "/health", {}, None),
    ("GET", "/session", {}, None),
    ("GET", "/problems", {}, None),
    ("GET", "/log", {}, None),
    ("GET", "/routes", {}, None),
    ("GET", "/sensor", {}, None),
    ("GET", "/sensor/commands", {}, None),
    ("GET", "/sensor/commands/:command", {":command": "load"}, None),
    ("POST", "/sensor/commands/:command", {":command": "load"}, {"scanner": "scanner-0"}),
    ("GET", "/sensor/authority", {}, None),
    ("PUT", "/sensor/authority", {}, {"rest": 0}),
    ("PATCH", "/sensor/authority", {}, {"idleSeconds": 10}),
    ("PATCH", "/sensor/authority", {}, {"idleSeconds": 0}),
    ("GET", "/sensor/limits", {}, None),
    ("PUT", "/sensor/limits", {}, {"zMax": {"enabled": False}}),
    ("PATCH", "/sensor/limits", {}, {"zMax": {"enabled": False}}),
    ("GET", "/datasources", {}, None),
    ("GET", "/datasources/:source", {}, None),
    ("GET", "/profile", {}, None),
    ("GET", "/rangeimage", {}, None),
    ("GET", "/scanners", {}, None),
    ("GET", "/scanners/:id", {}, None),
    ("GET", "/jobs", {}, None),
    ("POST", "/jobs/:name/save", {":name": "spare"}, None),
    ("POST", "/jobs/:name/load", {":name": "spare"}, None),
    ("POST", "/jobs/:name/load", {":name": "nowhere"}, None),
    ("GET", "/jobs/:name/report", {":name": "spare"}, None),
    ("GET", "/controls", {}, None),
    ("GET", "/controls/:protocol", {}, None),
    ("GET", "/controls/:protocol", {":protocol": "nowhere"}, None),
    ("PUT", "/controls/:protocol", {}, {"parameters": {"maxClients": 4}}),
    ("PUT", "/controls/:protocol", {}, {"parameters": {"maxClients": 0}}),
    ("PATCH", "/controls/:protocol", {}, {"enabled": True}),
    ("GET", "/controls/:protocol/commands", {}, None),
    ("GET", COMMAND, {":protocol": "AsciiTcp", ":command": "sendText"}, None),
    ("POST", COMMAND, {":protocol": "AsciiTcp", ":command": "sendText"}, {"text": "shift ends"}),
    ("GET", "/controls/:protocol/metrics", {}, None),
    ("GET", "/controls/:protocol/plc", {}, None),
    ("GET", OUTPUTS, {":protocol": "AsciiTcp"}, None),
    ("GET", f"{OUTPUTS}/commands", {":protocol": "AsciiTcp"}, None),
    ("GET", f"{OUTPUTS}/commands/:command", {":protocol": "AsciiTcp", ":command": "add"}, None),
    ("POST", f"{OUTPUTS}/commands/:command", {":protocol": "AsciiTcp", ":command": "add"}, OUTPUT),
    ("POST", f"{OUTPUTS}/preview", {":protocol": "AsciiTcp"}, {"command": "remove", "arguments": {"outputId": "zMax"}}),
    ("GET", "/controls/:protocol/registerAssemblies", {}, None),
    ("GET", ASSEMBLY, {}, None),
    ("GET", f"{ASSEMBLY}/commands", {}, None),
    ("GET", f"{ASSEMBLY}/commands/:command", {":command": "add"}, None),
    ("POST", f"{ASSEMBLY}/commands/:command", {":command": "add"}, {"blocks": [BLOCK]}),
    ("POST", f"{ASSEMBLY}/preview", {}, {"command": "compact", "arguments": {"startingOutputId": 0}}),
    ("GET", "/controls/hardware", {}, None),
    ("GET", "/controls/hardware/:device", {}, None),
    ("GET", "/controls/hardware/metrics", {}, None),
    *((method, f"/controls/hardware/:device/{kind}", {}, None) for kind in ("digital", "analog", "marlet", "serial")
      for method in ("GET",)),
    *((method, f"/controls/hardware/:device/{kind}/:port", {":port": "0"}, {"enabled": False})
      for kind in ("digital", "analog", "marlet", "serial") for method in ("PUT", "PATCH")),
    ("GET", "/audit", {}, None),
    ("GET", "/users", {}, None),
]


def path_of(route, keys):
    """The path of a request; the schema of the document comes with it, where there is one."""
    return "/".join((KEYS | keys).get(part, part) for part in route.split("/"))


def shortened(value):
    """The value with short lists."""
    if isinstance(value, dict):
        return {key: shortened(inner) for key, inner in value.items()}
    if isinstance(value, list):
        return [shortened(inner) for inner in value[:MOST_ENTRIES]]
    return value


class Examples:
    """`answers["GET /sensor"]["200"]` is the document of an answer."""

    def __init__(self, host):
        self.host = host
        self.answers = {}

    def ask(self, rest, method, route, keys=None, body=None, **headers):
        answer = rest.send(method, path_of(route, keys or {}), body, **headers)
        if "json" in answer.type:
            self.answers.setdefault(f"{method} {route}", {})[str(answer.status)] = answer.json
        elif answer.status >= 400:
            raise AssertionError(f"{method} {route}: {answer.status} {answer.text}")
        return answer

    def ask_all(self, rest):
        for method, route, keys, body in REQUESTS:
            self.ask(rest, method, route, keys, body)
            if route == "/sensor/commands/:command":  # one operation after the other
                wait_until(lambda: rest.get("/sensor").json["operation"] is None, "the end of the operation")

    def ask_as_administrator(self, rest):
        """The requests that close the service to everybody without a login."""
        made = self.ask(rest, "POST", "/tokens", {}, {"name": "line 4", "role": "administrator"}).json["token"]
        bearer = {"Authorization": f"Bearer {made}"}
        self.ask(rest, "GET", "/tokens", **bearer)
        self.ask(rest, "GET", "/tokens/:name", {":name": "line%204"}, **bearer)
        self.ask(rest, "POST", "/tokens", {}, {"name": "reader", "role": "nobody"}, **bearer)
        self.ask(rest, "GET", "/sensor")
        rest.post("/users", {"name": "anna", "role": "administrator", "password": PASSWORD}, **bearer)
        opened = self.ask(rest, "POST", "/session", {}, {"name": "anna", "password": PASSWORD})
        cookie = {"Cookie": opened.headers["Set-Cookie"].split(";")[0]}
        self.ask(rest, "POST", "/session", {}, {"name": "anna", "password": "wrong donkey battery"})
        for route in ("/session", "/sessions", "/users"):
            self.ask(rest, "GET", route, **cookie)
        self.ask(rest, "GET", "/sessions/:id", {":id": opened.json["id"]}, **cookie)
        self.ask(rest, "GET", "/users/:name", {":name": "anna"}, **cookie)
        viewer = rest.post("/tokens", {"name": "viewer", "role": "viewer"}, **bearer).json["token"]
        self.ask(rest, "POST", "/jobs/:name/load", {":name": "spare"}, Authorization=f"Bearer {viewer}")


def collect():
    """The answers, of a host that is started and ended."""
    with contextlib.ExitStack() as stack:
        host = stack.enter_context(Host(*ARGUMENTS))
        rest = stack.enter_context(RestClient(host.http_port))
        wait_until(lambda: rest.get("/sensor").json["profiles"]["taken"] > 2, "the first profiles")
        examples = Examples(host)
        examples.ask_all(rest)
        examples.ask_as_administrator(rest)
    return examples.answers


def without_secrets(name, answer):
    """The same answer with other texts in place of tokens and of names of this machine."""
    texts = {"token": "zc_(the token, shown once)", "crossSiteToken": "(a text)", "hash": "(64 digits)"}
    for key in texts.keys() & answer.keys():
        answer[key] = texts[key]
    return answer


def main():
    kept = {}
    for name, answers in sorted(collect().items()):
        for status, answer in answers.items():
            example = without_secrets(name, shortened(answer))
            if len(json.dumps(example)) <= MOST_BYTES:
                kept.setdefault(name, {})[status] = example
    text = json.dumps(kept, indent=None, separators=(",", ":"), ensure_ascii=False)
    pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else FILE).write_text(text.replace('},"', '},\n"') + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
