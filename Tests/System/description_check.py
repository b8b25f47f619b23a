"""Compares exchanges with a host with its description (OpenAPI 3.1).

`description_check.py DESCRIPTION EXCHANGES` prints a line for each difference; both are JSON files. The exchanges are those that
exchanges.py writes. Each kind of exchange is looked at once: the same request, status, type and shapes of the bodies. A body that was
refused is not looked at."""

import json
import re
import sys
import urllib.parse

import jsonschema

VALIDATOR = jsonschema.Draft202012Validator
PROBLEM = "application/problem+json"
ALWAYS = ["400", "401", "403", "404", "408", "413", "431", "500", "501", "503", "504", "505"]  # for what is not described


def closed(schema):
    """The schema, with no members but those that it names. The description is open, so that a client takes a later service too."""
    if not isinstance(schema, dict):
        return schema
    result = dict(schema)
    for key in ("items", "additionalProperties"):
        if key in schema:
            result[key] = closed(schema[key])
    for key in ("anyOf", "oneOf", "allOf"):
        if key in schema:
            result[key] = [closed(one) for one in schema[key]]
    if "properties" in schema:
        result["properties"] = {name: closed(one) for name, one in schema["properties"].items()}
        result.setdefault("additionalProperties", False)
    return result


def shape(value):
    """What documents of the same kind have in common."""
    if isinstance(value, dict):
        return tuple(sorted((key, shape(inner)) for key, inner in value.items()))
    if isinstance(value, list):
        return ("list", *sorted({shape(inner) for inner in value}, key=repr))
    return type(value).__name__


def segments_of(path):
    return [urllib.parse.unquote(segment, errors="replace") for segment in path.split("/")[1:]] if path != "/" else []


class Description:
    def __init__(self, document):
        self.components = {name: closed(schema) for name, schema in document["components"]["schemas"].items()}
        self.open_components = document["components"]["schemas"]
        self.responses = document["components"]["responses"]
        # A literal comes before a key, as in the router of the host.
        self.paths = sorted(((segments_of(path), path, methods) for path, methods in document["paths"].items()),
                            key=lambda one: [(part.startswith("{"), part) for part in one[0]])
        self.protocols = {name.split(".", 1)[1] for name in self.components if name.startswith("Control.")}
        self.validators = {}
        self.seen = set()

    def find(self, path):
        """(template, operations by method, values of the keys) of a path; None if it is not described."""
        segments = segments_of(path)
        for parts, template, methods in self.paths:
            keys = [(part[1:-1], segment) for part, segment in zip(parts, segments) if part.startswith("{")]
            if len(parts) == len(segments) and all(own == one or own.startswith("{") for own, one in zip(parts, segments)):
                return template, methods, dict(keys)
        return None

    def validator(self, schema):
        key = json.dumps(schema, sort_keys=True)
        if key not in self.validators:
            self.validators[key] = VALIDATOR({**closed(schema), "components": {"schemas": self.components}})
        return self.validators[key]

    def fault_in(self, schema, document):
        fault = jsonschema.exceptions.best_match(self.validator(schema).iter_errors(document))
        if fault is None:
            return None
        return f"{'/'.join(map(str, fault.absolute_path)) or 'the document'}: {fault.message[:300]}"

    def fault_in_request(self, operation, exchange):
        """The host takes more than it promises: it ignores unknown members of most bodies."""
        content = operation.get("requestBody", {}).get("content", {})
        if "request" not in exchange or "application/json" not in content:
            return None
        validator = VALIDATOR({**content["application/json"]["schema"], "components": {"schemas": self.open_components}})
        fault = jsonschema.exceptions.best_match(validator.iter_errors(exchange["request"]))
        return f"the request was accepted, but {fault.message[:300]}" if fault is not None else None

    def fault(self, exchange):
        """A sentence on the first difference; None if the exchange is as described."""
        method, path, status = exchange["method"], exchange["path"], str(exchange["status"])
        path = re.sub(r"^https?://[^/]*", "", path).split("?")[0]
        found = self.find(path) if path.startswith("/") else None
        kind = (found and found[0], method, status, exchange["type"], shape(exchange.get("document", exchange["length"] > 0)),
                shape(exchange.get("request")))
        if kind in self.seen:
            return None
        self.seen.add(kind)
        if found is None:
            return self.fault_in_refusal(exchange, ALWAYS + ["405"] if method != "OPTIONS" else ALWAYS + ["204"])
        template, methods, keys = found
        if self.has_foreign_protocol(template, keys, exchange):
            return None
        if method == "OPTIONS":
            return self.fault_in_refusal(exchange, ALWAYS + ["204"])
        operation = methods.get("get" if method == "HEAD" else method.lower())
        if operation is None:
            return self.fault_in_refusal(exchange, ALWAYS + ["405", "422"])
        if exchange.get("report"):
            stream = operation["responses"]["200"]["content"]["text/event-stream"]
            return self.fault_in(stream["x-report"], exchange["document"])
        response = operation["responses"].get(status)
        if response is None:
            return f"the status {status} is not described"
        if "$ref" in response:
            response = self.responses[response["$ref"].rsplit("/", 1)[1]]
        return self.fault_in_answer(response, exchange) or self.fault_in_request(operation, exchange)

    def has_foreign_protocol(self, template, keys, exchange):
        """Whether the answer is of a protocol that the host with the description does not have: a test has loaded its own plug-in."""
        if template == "/controls":
            items = exchange.get("document", {}).get("_embedded", {}).get("item", [])
            return any(item.get("id") not in self.protocols for item in items)
        return keys.get("protocol", "hardware") not in self.protocols | {"hardware"}

    def fault_in_refusal(self, exchange, statuses):
        if str(exchange["status"]) not in statuses:
            return f"the status {exchange['status']} is not one for a request that is not described"
        if exchange["length"] == 0 or exchange["status"] == 204:
            return None
        if exchange["type"] != PROBLEM:
            return f"the refusal is {exchange['type']} and no problem document"
        return self.fault_in({"$ref": "#/components/schemas/Problem"}, exchange["document"])

    def fault_in_answer(self, response, exchange):
        for name, header in response.get("headers", {}).items():
            if header.get("required") and name.lower() not in exchange["headers"]:
                return f"the header {name} is missing"
        content = response.get("content")
        if exchange["method"] == "HEAD":
            return None
        if content is None:
            return f"the answer has a body of {exchange['length']} bytes" if exchange["length"] else None
        if exchange["type"] not in content:
            return f"the type {exchange['type']} is not described"
        if "document" not in exchange:
            return None
        return self.fault_in(content[exchange["type"]]["schema"], exchange["document"])


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        description = Description(json.load(file))
    with open(sys.argv[2], encoding="utf-8") as file:
        exchanges = json.load(file)
    for exchange in exchanges:
        fault = description.fault(exchange)
        if fault is not None:
            print(f"{exchange['method']} {exchange['path']} {exchange['status']}: {fault}")
    print(f"{len(exchanges)} exchanges of {len(description.seen)} kinds", file=sys.stderr)


if __name__ == "__main__":
    main()
