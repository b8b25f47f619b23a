"""A headless browser logs in and out with scripts in a page of the real host."""

import json
import unittest

from host import Host
from rest import RestClient
from webdriver import Browser

PASSWORD = "correct horse battery"


class Login(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host(modbus=False))
        with RestClient(self.host.http_port) as rest:
            user = {"name": "anna", "role": "administrator", "password": PASSWORD}
            self.assertEqual(rest.post("/users", user).status, 201)
        self.browser = self.enterContext(Browser())
        self.browser.open(f"http://localhost:{self.host.http_port}/health")

    def fetch(self, method, path, body=None, token=None):
        answer = self.browser.fetch(method, path, body, {} if token is None else {"X-CSRF-Token": token})
        self.assertNotIn("error", answer)
        return answer

    def log_in(self):
        answer = self.fetch("POST", "/session", {"name": "anna", "password": PASSWORD})
        self.assertEqual(answer["status"], 200, answer)
        return json.loads(answer["text"])["crossSiteToken"]

    def test_in_and_out(self):
        self.assertEqual(self.fetch("GET", "/session")["status"], 401)
        token = self.log_in()

        cookie, = self.browser.cookies()
        self.assertEqual((cookie["name"], cookie["path"], cookie["domain"]), ("__Host-zucontrol", "/", "localhost"))
        self.assertEqual((cookie["secure"], cookie["httpOnly"], cookie["sameSite"]), (True, True, "Strict"))
        self.assertNotIn("expiry", cookie)
        self.assertEqual(self.browser.run("return document.cookie"), "", "a script cannot read the cookie")
        shown = json.loads(self.fetch("GET", "/session")["text"])
        self.assertEqual((shown["user"], shown["role"], shown["crossSiteToken"]), ("anna", "administrator", token))

        self.assertEqual(self.fetch("DELETE", "/session", token=token)["status"], 204)
        self.assertEqual(self.browser.cookies(), [])
        self.assertEqual(self.fetch("GET", "/session")["status"], 401)

    def test_a_change_needs_the_token_of_the_session(self):
        token = self.log_in()
        self.assertEqual(self.fetch("POST", "/jobs/copy/save")["status"], 403)
        self.assertEqual(self.fetch("POST", "/jobs/copy/save", token="guess")["status"], 403)
        self.assertEqual(self.fetch("POST", "/jobs/copy/save", token=token)["status"], 204)

    def test_a_page_of_another_site_sends_no_cookie(self):
        token = self.log_in()
        with Host(modbus=False) as other:
            self.browser.open(f"http://127.0.0.1:{other.http_port}/health")  # another site than localhost
            url = f"http://localhost:{self.host.http_port}/jobs/copy/save"
            answer = self.browser.run("""
                await fetch(args[0], {method: "POST", mode: "no-cors", credentials: "include"});
                return "sent";""", url)
            self.assertEqual(answer, "sent")
            refused = self.browser.fetch("POST", url, None, {"X-CSRF-Token": token})
            self.assertIn("error", refused, "the browser asks first, and the host does not allow it")
        self.browser.open(f"http://localhost:{self.host.http_port}/health")
        jobs = json.loads(self.fetch("GET", "/jobs")["text"])["jobs"]
        self.assertEqual([job["name"] for job in jobs], ["default"])

    def test_a_session_that_another_browser_ends_is_over(self):
        token = self.log_in()
        with Browser() as second:
            second.open(f"http://localhost:{self.host.http_port}/health")
            answer = second.fetch("POST", "/session", {"name": "anna", "password": PASSWORD})
            own = json.loads(answer["text"])
            listed = json.loads(second.fetch("GET", "/sessions")["text"])["sessions"]
            self.assertEqual([one["isOwn"] for one in listed], [False, True])
            ended = second.fetch("DELETE", "/sessions/" + listed[0]["id"], None, {"X-CSRF-Token": own["crossSiteToken"]})
            self.assertEqual(ended["status"], 204)
        self.assertEqual(self.fetch("GET", "/jobs", token=token)["status"], 401)


if __name__ == "__main__":
    unittest.main()
