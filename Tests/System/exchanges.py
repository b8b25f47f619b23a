"""Keeps the exchanges of the REST clients of a test module, and compares them with the description of the host at its end.

The module rest.py reports each exchange. A difference fails the module, as an error of its tearDownModule. The description is
that of a host of its own: those of the tests may be closed, may have ended, and must see no request that a test does not send."""

import collections
import json
import pathlib
import subprocess
import tempfile
import unittest

import host

PYTHON = "/usr/bin/python3"  # the distribution's own, which finds the distribution's jsonschema
CHECK = pathlib.Path(__file__).with_name("description_check.py")
MOST_OF_A_KIND = 50  # different answers with one status to one request

kept = collections.defaultdict(dict)  # by method, path, status and type: the headers of the answers by the bodies of request and answer


def note(method, path, request, answer):
    """Keeps an exchange; `request` is the body of the request. Called for each one, so it does not look into the bodies."""
    answers = kept[method, path, answer.status, answer.type.split(";")[0]]
    if len(answers) < MOST_OF_A_KIND:
        answers.setdefault((request, answer.body), sorted(name.lower() for name in answer.headers))


def note_report(path, document):
    """Keeps a report of a stream of events."""
    answers = kept["GET", path, 200, "report"]
    if len(answers) < MOST_OF_A_KIND:
        answers.setdefault((None, json.dumps(document).encode()), [])


def listed():
    """The exchanges as description_check.py reads them."""
    for (method, path, status, media), answers in kept.items():
        for (request, body), headers in answers.items():
            exchange = {"method": method, "path": path, "status": status, "type": media, "headers": headers, "length": len(body)}
            if media == "report" or ((media == "application/json" or media.endswith("+json")) and body):
                exchange["document"] = json.loads(body)
            if isinstance(request, str) and request and status < 300:
                exchange["request"] = json.loads(request)
            if media == "report":
                exchange["report"] = True
            yield exchange


def fetch_description(folder):
    """The file with the description of a host with all its resources."""
    import rest  # imports this module
    with host.Host("--https", "127.0.0.1:0", modbus=False) as described, rest.RestClient(described.http_port) as client:
        answer = client.get("/openapi.json")
        assert answer.status == 200, answer.text
    file = pathlib.Path(folder) / "openapi.json"
    file.write_bytes(answer.body)
    return file


def differences(description, exchanges):
    """The lines of description_check.py."""
    with tempfile.NamedTemporaryFile("w", suffix=".json", encoding="utf-8") as file:
        json.dump(exchanges, file)
        file.flush()
        done = subprocess.run([PYTHON, CHECK, description, file.name], capture_output=True, text=True, timeout=300)
    if done.returncode != 0:
        raise AssertionError(done.stderr)
    return done.stdout.splitlines()


def check():
    exchanges = list(listed())
    kept.clear()
    if not exchanges:
        return
    with tempfile.TemporaryDirectory() as folder:
        found = differences(fetch_description(folder), exchanges)
    kept.clear()
    if found:
        raise AssertionError("exchanges are not as /openapi.json describes them:\n" + "\n".join(found))


unittest.addModuleCleanup(check)
