"""The description of the service under /openapi.json: true, valid, with true examples, and good enough to make a client from it."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import description_examples
import exchanges
import node
from host import Host
from rest import RestClient

FOLDER = "Tests/Node/openapi"
LIMIT_SECONDS = 300
EVERYWHERE = {"HEAD", "OPTIONS"}


def likeness(one, other):
    """The place of the first difference in the structure of two documents; None if they are alike. Null is like any value."""
    if one is None or other is None:
        return None
    if isinstance(one, dict) and isinstance(other, dict):
        if one.keys() != other.keys():
            return f"has {sorted(one.keys() ^ other.keys())}"
        found = ((key, likeness(one[key], other[key])) for key in one)
    elif isinstance(one, list) and isinstance(other, list):
        found = enumerate(likeness(*pair) for pair in zip(one, other))
    else:
        numbers = all(isinstance(value, (int, float)) and not isinstance(value, bool) for value in (one, other))
        return None if numbers or type(one) is type(other) else f"is {one!r}, not {other!r}"
    return next((f"{key} {difference}" for key, difference in found if difference is not None), None)


class OpenApi(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(cls.enterClassContext(tempfile.TemporaryDirectory()))
        cls.file = exchanges.fetch_description(cls.folder)
        cls.description = json.loads(cls.file.read_bytes())

    def run_tool(self, *words, folder=None):
        done = subprocess.run(words, cwd=folder or node.packages(FOLDER), capture_output=True, text=True, timeout=LIMIT_SECONDS,
                              env=os.environ | {"NO_PROXY": "*"})
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def test_it_names_what_the_host_answers(self):
        with Host("--https", "127.0.0.1:0", modbus=False) as host, RestClient(host.http_port) as rest:
            routes = {(route["method"], route["path"]): route for route in rest.get("/routes").json["routes"]}
            for path, operations in self.description["paths"].items():
                example = path.replace("{protocol}", "ModbusTcp").replace("{registerAssembly}", "registerAssembly-0") \
                    .replace("{device}", "0").replace("{", "").replace("}", "")
                allowed = set(rest.send("OPTIONS", example).headers["Allow"].split(", ")) - EVERYWHERE
                self.assertLessEqual({method.upper() for method in operations}, allowed, path)
                route = path.replace("{", ":").replace("}", "")
                for method, operation in operations.items():
                    named = routes.pop((method.upper(), route), None)
                    if named is not None:
                        self.assertEqual(operation["x-role"], named["role"], path)
            self.assertEqual(set(routes), set(), "requests that are not described")

    def test_it_has_a_tag(self):
        with Host(modbus=False) as host, RestClient(host.http_port) as rest:
            tag = rest.get("/openapi.json").headers["ETag"]
            self.assertEqual(rest.get("/openapi.json", If_None_Match=tag).status, 304)
            self.assertEqual(rest.get("/").json["_links"]["zu:description"], {"href": "/openapi.json"})

    def test_it_has_the_parameters_of_the_protocols(self):
        schemas = self.description["components"]["schemas"]
        clients = schemas["Control.ModbusTcp"]["properties"]["parameters"]["properties"]["maxClients"]
        self.assertEqual((clients["type"], clients["minimum"], clients["maximum"]), ("integer", 1, 512))
        self.assertIn("Control.AsciiTcp", schemas)
        self.assertIn("text", schemas["ControlCommand.AsciiTcp.sendText"]["properties"]["parameters"]["properties"])

    def test_the_linter_finds_nothing(self):
        words = self.run_tool("node_modules/.bin/spectral", "lint", "--fail-severity=warn", str(self.file))
        self.assertIn("No results", words)

    def test_the_examples_are_answers_of_the_host(self):
        answers = description_examples.collect()
        examples = json.loads(description_examples.FILE.read_text(encoding="utf-8"))
        for request, by_status in examples.items():
            for status, example in by_status.items():
                self.assertIn(status, answers.get(request, {}), request)
                self.assertIsNone(likeness(example, answers[request][status]), (request, status))

    def test_the_examples_fit_the_description(self):
        examples = json.loads(description_examples.FILE.read_text(encoding="utf-8"))
        self.assertGreater(len(examples), 40)
        found = []
        for request, by_status in examples.items():
            method, route = request.split(" ")
            path = route.replace(":protocol", "ModbusTcp")
            for status, example in by_status.items():
                media = "application/problem+json" if int(status) >= 400 else None
                found.append(self.exchange(method, path, int(status), example, media or self.type_of(method, route, status)))
        self.assertEqual(exchanges.differences(self.file, found), [])

    def type_of(self, method, route, status):
        template = "/".join("{" + part[1:] + "}" if part.startswith(":") else part for part in route.split("/"))
        content = self.description["paths"][template][method.lower()]["responses"][status]["content"]
        return "application/hal+json" if "application/hal+json" in content else "application/json"

    def exchange(self, method, path, status, document, media="application/hal+json"):
        return {"method": method, "path": path, "status": status, "type": media, "length": len(json.dumps(document)), "document": document,
                "headers": ["etag", "location", "www-authenticate", "allow"]}

    def test_each_kind_of_difference_is_found(self):
        health = {"status": "ok", "faults": [], "upTimeSec": 1}
        problem = {"title": "Not Found", "status": 404, "detail": "a", "code": -999}
        rows = [
            (self.exchange("GET", "/health", 200, health), None),
            (self.exchange("GET", "/health", 200, health | {"status": "good"}), "status: 'good' is not one of"),
            (self.exchange("GET", "/health", 200, health | {"more": 1}), "Additional properties are not allowed"),
            (self.exchange("GET", "/health", 200, {"status": "ok", "faults": []}), "'upTimeSec' is a required property"),
            (self.exchange("GET", "/health", 200, health, "text/html"), "the type text/html is not described"),
            (self.exchange("GET", "/health", 418, health), "the status 418 is not described"),
            (self.exchange("GET", "/nowhere", 404, problem, "application/problem+json"), None),
            (self.exchange("GET", "/nowhere", 200, health), "the status 200 is not one for a request that is not described"),
            (self.exchange("POST", "/health", 405, problem, "text/plain"), "no problem document"),
            (self.exchange("POST", "/health", 200, health), "the status 200 is not one for a request that is not described"),
            (self.exchange("GET", "/health", 401, problem, "application/problem+json") | {"headers": []}, "WWW-Authenticate is missing"),
            (self.exchange("DELETE", "/users/a", 204, health), "the answer has a body of"),
            (self.exchange("GET", "/events", 200, {"type": 3, "path": "/"}, "report") | {"report": True}, "3 is not one of [2, 4]"),
            (self.exchange("GET", "/controls/ModbusTcp", 200, {"id": "ModbusTcp"}), "not valid under any of the given schemas"),
            (self.exchange("PATCH", "/users/a", 204, None) | {"length": 0, "request": {"enabled": True}}, None),
            (self.exchange("PATCH", "/users/a", 204, None) | {"length": 0, "request": {"enabled": 1}}, "1 is not of type 'boolean'"),
        ]
        for exchange, expected in rows:
            found = exchanges.differences(self.file, [exchange])
            if expected is None:
                self.assertEqual(found, [])
            else:
                self.assertEqual(len(found), 1, exchange)
                self.assertIn(expected, found[0])

    def test_a_client_made_from_it_does_the_session(self):
        packages = node.packages(FOLDER)
        for name in ("session.ts", "tsconfig.json", "package.json"):
            shutil.copy(packages / name, self.folder)
        settings = json.loads((self.folder / "package.json").read_text(encoding="utf-8"))
        (self.folder / "package.json").write_text(json.dumps(settings | {"type": "module"}), encoding="utf-8")
        (self.folder / "node_modules").symlink_to(packages / "node_modules")
        tools = self.folder / "node_modules/.bin"
        self.run_tool(tools / "openapi-typescript", str(self.file), "-o", "description.d.ts", folder=self.folder)
        self.run_tool(tools / "tsc", "-p", ".", folder=self.folder)
        with Host("--start", "--still", "--enable", "AsciiTcp", "--param", "AsciiTcp.port=0") as host:
            words = self.run_tool("node", "session.js", str(host.http_port), folder=self.folder)
        self.assertIn("the session is done", words)


if __name__ == "__main__":
    unittest.main()
