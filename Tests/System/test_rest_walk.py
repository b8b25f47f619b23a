"""A client that starts at the root finds every resource of the real host, and each document is valid."""

import unittest

from host import Host
from rest import RestClient, check_hal, expand, references

MODBUS = "/controls/ModbusTcp"
ASSEMBLY = MODBUS + "/registerAssemblies/registerAssembly-0"


class Walk(unittest.TestCase):
    def setUp(self):
        self.values = {}  # the values for templates
        self.seen = {}
        self.templates = set()
        self.relations = set()

    def visit(self, rest, path):
        if path in self.seen:
            return
        answer = rest.get(path, Accept="application/hal+json") if path != "/events" else None
        self.seen[path] = answer
        if answer is None:
            return
        self.assertEqual(answer.status, 200, f"{path}: {answer.body}")
        if answer.type.startswith("application/hal+json"):
            check_hal(self, answer.json, path)
            self.follow(rest, answer.json)

    def follow(self, rest, document):
        if "id" in document and document["_links"]["self"]["href"].count("/") == 2:
            self.values.setdefault("protocol", document["id"])
        for key, inner in references(document.get("_embedded", {})):
            self.relations.add(key)
            self.assertNotIn("problem", inner)
            if key == "zu:registerAssembly":
                self.values.setdefault("registerAssembly", inner["id"])
            self.visit(rest, inner["_links"]["self"]["href"])
            self.follow(rest, inner)
        for key, link in references(document["_links"]):
            self.relations.add(key)
            if link.get("templated"):
                self.templates.add(link["href"])
            else:
                self.visit(rest, link["href"])

    def test_from_the_root_to_every_resource(self):
        with Host() as host, RestClient(host.http_port) as rest:
            self.visit(rest, "/controls/ModbusTcp")  # the values for the templates
            self.visit(rest, "/")
            self.values |= {"rel": "controls", "path": "/controls/ModbusTcp", "name": "default"}
            for template in sorted(self.templates):
                path = expand(template, self.values)
                self.assertIsNotNone(path, template)
                answer = rest.get(path, Accept="application/hal+json")
                if "/outputs" in path:  # Modbus TCP has no output map
                    self.assertEqual(answer.status, 404)
                    continue
                if answer.status == 405:  # a resource that can only be called
                    self.assertIn("POST", answer.headers["Allow"], path)
                else:
                    self.assertEqual(answer.status, 200, f"{path}: {answer.body}")
                self.seen[path] = answer

            commands = [f"{ASSEMBLY}/commands/{command}" for command in ("add", "remove", "compact", "update")]
            for path in ("/", "/health", "/problems", "/audit", "/events", "/scanners", "/scanners/scanner-0", "/relations", "/controls",
                         MODBUS, ASSEMBLY, MODBUS + "/registerAssemblies", MODBUS + "/commands", ASSEMBLY + "/commands", *commands,
                         "/controls/hardware", "/scanners/0", "/scanners/1", "/jobs", "/jobs/default", "/jobs/default/load"):
                self.assertIn(path, self.seen)
            for relation in sorted(self.relations - {"self", "item", "curies", "next", "last"}):
                self.assertTrue(relation.startswith("zu:"), relation)
                page = rest.get("/relations/" + relation[3:])
                self.assertEqual(page.status, 200, relation)
                self.assertIn(f"<code>{relation}</code>", page.text)


if __name__ == "__main__":
    unittest.main()
