"""A REST client on one connection, and a check for valid HAL documents. The module exchanges.py gets each exchange."""

import json
import re

import exchanges
from tls import http_connection


class Answer:
    def __init__(self, response, body):
        self.status = response.status
        self.headers = response.headers
        self.type = response.headers.get("Content-Type", "")
        self.body = body

    @property
    def text(self):
        return self.body.decode()

    @property
    def json(self):
        return json.loads(self.text)


class RestClient:
    """`with RestClient(host.http_port) as rest: rest.get("/controls").json`"""

    def __init__(self, port):
        self.connection = http_connection(port)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.connection.close()

    def send(self, method, path, body=None, **headers):
        """A body that is no text is sent as JSON."""
        if body is not None and not isinstance(body, (str, bytes)):
            body = json.dumps(body)
        self.connection.request(method, path, body, {name.replace("_", "-"): value for name, value in headers.items()})
        response = self.connection.getresponse()
        answer = Answer(response, response.read())
        exchanges.note(method, path, body, answer)
        return answer

    def get(self, path, **headers):
        return self.send("GET", path, **headers)

    def put(self, path, body, **headers):
        return self.send("PUT", path, body, **headers)

    def post(self, path, body=None, **headers):
        return self.send("POST", path, body, **headers)


class EventStream:
    """`with EventStream(host.http_port, "/events") as events: events.next()` gives the reports of a stream, one after the other."""

    def __init__(self, port, path, **headers):
        self.path = path
        self.connection = http_connection(port)
        self.connection.request("GET", path, headers={"Accept": "text/event-stream"} | headers)
        self.response = self.connection.getresponse()
        if self.response.status != 200:
            raise AssertionError(f"no stream at {path}: {self.response.status}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.response.close()
        self.connection.close()

    def next(self):
        """The next report; comments and ids are passed over."""
        while True:
            line = self.response.readline()
            if not line:
                raise AssertionError("the stream has ended")
            if line.startswith(b"data: "):
                report = json.loads(line[6:])
                exchanges.note_report(self.path, report)
                return report


def references(relations):
    """(key, one link or embedded document) of `_links` or `_embedded`."""
    for key, value in relations.items():
        for one in value if isinstance(value, list) else [value]:
            yield key, one


def check_hal(test, document, path):
    """Asserts that a document and its embedded documents are valid HAL, and that the link `self` of the document is `path`."""
    test.assertIsInstance(document, dict, path)
    links = document["_links"]
    test.assertEqual(links["self"]["href"], path)
    prefixes = {curie["name"] for curie in links.get("curies", [])}
    for key, link in references(links):
        test.assertIsInstance(link["href"], str, (path, key))
        test.assertEqual("{" in link["href"], link.get("templated", False), (path, key, link))
    for key in [*links, *document.get("_embedded", {})]:
        if ":" in key:
            test.assertIn(key.split(":")[0], prefixes, f"{key} in {path} has no curie")
    for key, inner in references(document.get("_embedded", {})):
        check_hal(test, inner, inner["_links"]["self"]["href"])


def expand(template, values):
    """A URI template of the simple kinds that the host writes, {name} and {+name}; None when a value is missing."""
    names = re.findall(r"\{\+?(\w+)\}", template)
    if any(name not in values for name in names):
        return None
    return re.sub(r"\{\+?(\w+)\}", lambda match: values[match.group(1)], template)
