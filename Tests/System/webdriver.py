"""A headless browser, driven by the WebDriver protocol over plain HTTP."""

import http.client
import json
import re
import shutil
import subprocess
import tempfile

from host import PATIENCE

ARGUMENTS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--disable-dev-shm-usage", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync"]
STARTED = re.compile(r"started successfully on port (\d+)")


class Browser:
    """`with Browser() as browser: browser.open("http://localhost:8080/health")`

    `arguments` are further ones for Chromium."""

    def __init__(self, *arguments):
        self.arguments = arguments
        self.session = None

    def __enter__(self):
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        try:
            self.port = self._wait_for_port()
            options = {"binary": shutil.which("chromium"),
                       "args": [*ARGUMENTS, f"--user-data-dir={self.profile.name}", *self.arguments]}
            capabilities = {"alwaysMatch": {"goog:chromeOptions": options, "acceptInsecureCerts": False}}
            self.session = self._send("POST", "/session", {"capabilities": capabilities})["sessionId"]
            self._send("POST", self._path("/timeouts"), {"script": int(PATIENCE * 1000), "pageLoad": int(PATIENCE * 1000)})
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        try:
            if self.session is not None:
                self._send("DELETE", self._path(""))
        finally:
            self.driver.terminate()
            self.driver.wait(timeout=PATIENCE)
            self.driver.stdout.close()
            self.profile.cleanup()

    def _wait_for_port(self):
        for line in self.driver.stdout:
            if found := STARTED.search(line):
                return int(found[1])
        raise AssertionError("chromedriver has ended")

    def _path(self, rest):
        return f"/session/{self.session}{rest}"

    def _send(self, method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=PATIENCE)
        try:
            connection.request(method, path, None if body is None else json.dumps(body), {"Content-Type": "application/json"})
            response = connection.getresponse()
            value = json.loads(response.read())["value"]
        finally:
            connection.close()
        if response.status != 200:
            raise AssertionError(f"{method} {path}: {value}")
        return value

    def open(self, url):
        self._send("POST", self._path("/url"), {"url": url})

    def run(self, script, *arguments):
        """Runs the body of an asynchronous function in the page and returns its result."""
        return self._send("POST", self._path("/execute/async"), {
            "script": "const done = arguments[arguments.length - 1];"
                      "(async (...args) => {" + script + "})(...[...arguments].slice(0, -1))"
                      ".then(done, error => done({error: String(error)}));",
            "args": list(arguments)})

    def fetch(self, method, path, body=None, headers=None):
        """Sends a request from a script in the page. Returns the status and the text of the answer."""
        return self.run("""
            const [method, path, body, headers] = args;
            const answer = await fetch(path, {method, headers, body: body === null ? undefined : JSON.stringify(body)});
            return {status: answer.status, text: await answer.text()};""", method, path, body, headers or {})

    def cookies(self):
        """The cookies of the page's site, also those that scripts cannot read."""
        return self._send("GET", self._path("/cookie"))
