#!/usr/bin/env python3
"""How fast a protocol's document is given out, against a fixed string of its size from the same server.

usage: rest_load.py REST_SERVER [--seconds 2] [--rounds 5] [--connections 16] [--streams 64]

Runs wrk with keep-alive on both in turn, without and with open event streams, prints the rates and their ratio. Exit status 1 when the ratio is below 0.35, when an answer was an error, or when the streams change either rate by more than a tenth.
"""

import argparse
import http.client
import re
import statistics
import subprocess
import sys

GOAL = 0.35
STREAM_TOLERANCE = 0.1


def rate_of(url, arguments):
    """Requests per second that wrk gets answered."""
    shown = subprocess.run(["wrk", "-t1", f"-c{arguments.connections}", f"-d{arguments.seconds}s", url], capture_output=True,
                           text=True, check=True).stdout
    if "Non-2xx" in shown or "Socket errors" in shown:
        sys.exit("rest_load: errors among the answers:\n" + shown)
    return float(re.search(r"Requests/sec:\s+([\d.]+)", shown).group(1))


def rates(endpoint, arguments):
    """(document, fixed string), one right behind the other."""
    return rate_of(f"http://{endpoint}/controls/ModbusTcp", arguments), rate_of(f"http://{endpoint}/fixed", arguments)


def rates_with_streams(endpoint, arguments):
    streams = [open_stream(endpoint) for _ in range(arguments.streams)]
    try:
        return rates(endpoint, arguments)
    finally:
        for connection, _ in streams:
            connection.close()


def open_stream(endpoint):
    connection = http.client.HTTPConnection(endpoint, timeout=30)
    connection.request("GET", "/events", headers={"Accept": "text/event-stream"})
    answer = connection.getresponse()
    if answer.status != 200:
        sys.exit(f"rest_load: no stream: {answer.status}")
    return connection, answer  # both: a response that is dropped closes the connection


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("server")
    parser.add_argument("--seconds", type=int, default=2)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--connections", type=int, default=16)
    parser.add_argument("--streams", type=int, default=64)
    arguments = parser.parse_args()
    with subprocess.Popen([arguments.server], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True) as server:
        endpoint, size = server.stdout.readline().split()
        rates(endpoint, arguments)  # warm
        rounds = [(rates(endpoint, arguments), rates_with_streams(endpoint, arguments)) for _ in range(arguments.rounds)]
        server.stdin.close()
        if server.wait(timeout=30) != 0:
            sys.exit("rest_load: the server did not end well")
    # Compared within a round, since the machine is another one a minute later; then the median of the rounds.
    ratio = statistics.median(document / fixed for (document, fixed), _ in rounds)
    changes = [statistics.median(with_streams[which] / alone[which] - 1 for alone, with_streams in rounds) for which in (0, 1)]
    document, fixed = (statistics.median(alone[which] for alone, _ in rounds) for which in (0, 1))
    print(f"{size} bytes: document {document:.0f}/s, fixed string {fixed:.0f}/s, ratio {ratio:.2f} (goal {GOAL})")
    print(f"with {arguments.streams} streams: document {changes[0]:+.1%}, fixed string {changes[1]:+.1%}")
    if ratio < GOAL or any(abs(change) > STREAM_TOLERANCE for change in changes):
        sys.exit(1)


if __name__ == "__main__":
    main()
