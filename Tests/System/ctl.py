"""Runs zucontrolctl against the real host, and servers that are no hosts."""

import contextlib
import http.client
import http.server
import json
import os
import pathlib
import resource
import shlex
import signal
import socket
import subprocess
import tempfile
import threading

from host import BIN, PATIENCE

PROGRAM = BIN / "zucontrolctl"

# The exit statuses of docs/command-line.md.
FINE, REFUSED, USAGE, UNREACHABLE, NOT_AUTHORISED, NOT_A_SENSOR, NOT_TRUSTED, LOCAL_FILE, UNWELL, BUSY = range(10)


class Done:
    def __init__(self, process):
        self.status = process.returncode
        self.output = process.stdout
        self.errors = process.stderr

    @property
    def json(self):
        return json.loads(self.output)


class Ctl:
    """`Ctl(folder, port).run("status")` runs the program with a home of its own, against the host at a port."""

    def __init__(self, folder, port=None, *options, scheme="http"):
        self.home = pathlib.Path(folder)
        self.options = [*map(str, options)]
        if port is not None:
            self.options += ["--host", f"{scheme}://localhost:{int(port)}"]

    def run(self, *words, environment=None, shell=None, limit=None):
        """`shell` is a command line around the program, which stands at "{}". `limit`: no file gets longer than so many bytes."""
        def begin():
            if limit is not None:
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # a write beyond the limit fails
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        variables = {name: value for name, value in os.environ.items() if name not in ("NO_COLOR", "XDG_CONFIG_HOME")}
        variables |= {"HOME": str(self.home)} | (environment or {})
        command = [str(PROGRAM), *self.options, *map(str, words)]
        if shell is not None:
            command = ["bash", "-c", shell.format(shlex.join(command))]
        done = subprocess.run(command, capture_output=True, text=True, timeout=PATIENCE, cwd=self.home, env=variables,
                              stdin=subprocess.DEVNULL, start_new_session=True,  # no terminal
                              preexec_fn=begin, restore_signals=limit is None)
        return Done(done)

    def json(self, *words):
        """The document of a command that has to succeed."""
        done = self.run(*words, "--json")
        if done.status != FINE:
            raise AssertionError(f"{words}: {done.status} {done.errors}")
        return done.json


def secret_file(folder, name, text, mode=0o600):
    file = pathlib.Path(folder) / name
    file.write_text(text + "\n", encoding="utf-8")
    file.chmod(mode)
    return file


class Answers(http.server.BaseHTTPRequestHandler):
    """Answers each request with the server's `answer`: status, type, body."""

    def do_GET(self):
        self.server.seen.append((self.path, dict(self.headers)))
        status, kind, body = self.server.answer
        self.send_response(status)
        self.send_header("Content-Type", kind)
        if status == 302:
            self.send_header("Location", "http://127.0.0.1:1/")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def other_server(status=200, kind="text/html", body=b"<html>another server</html>"):
    """An HTTP server that is no host. Its `seen` has the requests."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Answers)
    server.answer = (status, kind, body)
    server.seen = []
    with _served(server):
        yield server


class Documents(http.server.BaseHTTPRequestHandler):
    """Answers each request with the document of its method and path."""

    def answer(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        document = self.server.documents[self.command, self.path]
        status = document.get("status", 200) if isinstance(document, dict) else 200
        body = json.dumps(document).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/problem+json" if status == 503 else "application/hal+json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        with contextlib.suppress(ConnectionError):  # the client may end a long answer
            self.wfile.write(body)

    do_GET = do_POST = answer

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def document_server(documents):
    """A server that answers `documents[method, path]`, with the status that a problem document has, and is well. Gives its port."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Documents)
    server.documents = {("GET", "/health"): {"faults": [], "upTimeSec": 1}} | documents
    with _served(server):
        yield server.server_port


class Forwards(http.server.BaseHTTPRequestHandler):
    """Hands each request on to the server's `port`, and closes without an answer to the request that `fails`."""

    protocol_version = "HTTP/1.1"

    def forward(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        if self.server.fails(self.command, self.path, body):
            self.close_connection = True
            return
        with contextlib.closing(http.client.HTTPConnection("127.0.0.1", self.server.port, timeout=PATIENCE)) as host:
            host.request(self.command, self.path, body, {name: value for name, value in self.headers.items() if name != "Host"})
            answer = host.getresponse()
            content = answer.read()
        self.send_response(answer.status)
        for name, value in answer.getheaders():
            if name.lower() not in ("content-length", "transfer-encoding", "connection", "date"):
                self.send_header(name, value)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        self.wfile.write(content)

    do_GET = do_POST = do_PUT = do_PATCH = do_DELETE = forward

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def _served(server):
    thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.05})
    thread.start()
    try:
        yield server
    finally:
        server.shutdown()
        thread.join()
        server.server_close()


@contextlib.contextmanager
def failing_network(port, fails):
    """Stands before the host at `port`. A request for which `fails(method, path, body)` is true gets lost. Gives its port."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Forwards)
    server.daemon_threads = True
    server.port, server.fails = port, fails
    with _served(server):
        yield server.server_port


@contextlib.contextmanager
def mute_server():
    """Accepts connections and never answers. Gives its port."""
    with socket.create_server(("127.0.0.1", 0), backlog=16) as listener:
        yield listener.getsockname()[1]


@contextlib.contextmanager
def talking_server(greeting):
    """Sends `greeting` to each client and closes. Gives its port."""
    listener = socket.create_server(("127.0.0.1", 0))

    def serve():
        while True:
            try:
                client, _ = listener.accept()
            except OSError:
                return
            with client:
                client.recv(4096)
                client.sendall(greeting)

    thread = threading.Thread(target=serve)
    thread.start()
    try:
        yield listener.getsockname()[1]
    finally:
        listener.shutdown(socket.SHUT_RDWR)
        listener.close()
        thread.join()


def scratch(test):
    return pathlib.Path(test.enterContext(tempfile.TemporaryDirectory()))
