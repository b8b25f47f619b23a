"""Users, sessions and the first administrator, with the real host."""

import concurrent.futures
import os
import pathlib
import pty
import stat
import subprocess
import tempfile
import threading
import time
import unittest

from host import BIN, PATIENCE, Host, run_host, wait_until
from rest import EventStream, RestClient
from tls import TlsPort

PASSWORD = "correct horse battery"
OTHER = "wrong donkey battery"
CODE_FILE = "first-administrator.code"
OPEN = ("--http", "0.0.0.0:0", "--insecure")


class Session:
    """A logged-in user: sends requests with the cookie and the token against cross-site requests."""

    def __init__(self, port, name, password=PASSWORD):
        self.rest = RestClient(port)
        answer = self.rest.post("/session", {"name": name, "password": password})
        self.status = answer.status
        if answer.status == 200:
            self.set_cookie = answer.headers["Set-Cookie"]
            self.cookie = self.set_cookie.split(";")[0]
            self.token = answer.json["crossSiteToken"]
            self.id = answer.json["id"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.rest.connection.close()

    def send(self, method, path, body=None):
        return self.rest.send(method, path, body, Cookie=self.cookie, X_CSRF_Token=self.token)


def add_user(sender, name, role="administrator", password=PASSWORD):
    return sender.send("POST", "/users", {"name": name, "role": role, "password": password})


class Users(unittest.TestCase):
    def start(self, *arguments, **options):
        return self.enterContext(Host(*arguments, modbus=False, **options))

    def client(self, host):
        return self.enterContext(RestClient(host.http_port))

    def log_in(self, host, name, password=PASSWORD):
        session = self.enterContext(Session(host.http_port, name, password))
        self.assertEqual(session.status, 200, name)
        return session

    def test_the_first_user_closes_the_service(self):
        host = self.start()
        rest = self.client(host)
        self.assertEqual(rest.get("/session").json["caller"], "local")
        self.assertEqual(add_user(rest, "bert", "viewer").status, 409)
        self.assertEqual(rest.get("/jobs").status, 200)

        self.assertEqual(add_user(rest, "anna").status, 201)

        self.assertEqual(rest.get("/jobs").status, 401)
        self.assertEqual(add_user(rest, "bert").status, 401)
        anna = self.log_in(host, "ANNA")
        self.assertEqual(anna.set_cookie.split("; ", 1)[1], "Path=/; Secure; HttpOnly; SameSite=Strict")
        self.assertEqual(anna.send("GET", "/session").json["user"], "anna")
        self.assertEqual(rest.send("POST", "/jobs/copy/save", Cookie=anna.cookie).status, 403)
        self.assertEqual(anna.send("POST", "/jobs/copy/save").status, 204)
        self.assertEqual(anna.send("DELETE", "/session").status, 204)
        self.assertEqual(anna.send("GET", "/session").status, 401)

    def test_a_session_over_https(self):
        host = self.start("--https", "127.0.0.1:0")
        add_user(self.client(host), "anna")
        port = TlsPort(host.ports["https"])
        rest = self.enterContext(RestClient(port))
        self.assertEqual(rest.get("/jobs").status, 401)
        self.assertEqual(self.enterContext(Session(port, "anna", OTHER)).status, 401)
        anna = self.enterContext(Session(port, "anna"))
        self.assertEqual(anna.set_cookie.split("; ", 1)[1], "Path=/; Secure; HttpOnly; SameSite=Strict")
        self.assertEqual(anna.send("GET", "/session").json["user"], "anna")
        self.assertEqual(rest.get("/jobs", Cookie=anna.cookie).status, 200)
        self.assertEqual(rest.post("/jobs/copy/save", Cookie=anna.cookie).status, 403, "without the token")
        self.assertEqual(anna.send("POST", "/jobs/copy/save").status, 204)
        logins = [entry["from"] for entry in anna.send("GET", "/audit?limit=1000").json["entries"] if entry["what"] == "login"]
        self.assertEqual(logins, ["https 127.0.0.1"] * 2)
        with EventStream(port, "/events", Cookie=anna.cookie) as events:
            self.assertEqual(anna.send("DELETE", "/session").status, 204)
            with self.assertRaisesRegex(AssertionError, "the stream has ended"):
                while True:
                    events.next()
        self.assertEqual(rest.get("/jobs", Cookie=anna.cookie).status, 401)
        self.assertEqual(self.client(host).get("/jobs", Cookie=anna.cookie).status, 401, "on the other port too")

    def test_a_role_bounds_a_session(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        self.assertEqual(add_user(anna, "bert", "viewer").status, 201)
        bert = self.log_in(host, "bert")
        self.assertEqual(bert.send("GET", "/jobs").status, 200)
        self.assertEqual(bert.send("POST", "/jobs/default/load").status, 403)
        self.assertEqual(bert.send("GET", "/users").status, 403)

        self.assertEqual(anna.send("PATCH", "/users/bert", {"role": "operator"}).status, 204)
        self.assertEqual(bert.send("GET", "/jobs").status, 401, "a change of the role ends the sessions")
        bert = self.log_in(host, "bert")
        self.assertEqual(bert.send("POST", "/jobs/default/load").status, 200)
        self.assertEqual(anna.send("DELETE", "/users/bert").status, 204)
        self.assertEqual(bert.send("GET", "/jobs").status, 401)

    def test_the_own_password_is_changed_with_the_old_one(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        change = {"password": "another horse battery", "oldPassword": OTHER}
        self.assertEqual(anna.send("PATCH", "/users/anna", change).status, 403)
        change["oldPassword"] = PASSWORD
        self.assertEqual(anna.send("PATCH", "/users/anna", change).status, 204)
        self.assertEqual(anna.send("GET", "/session").status, 401)
        self.assertEqual(self.enterContext(Session(host.http_port, "anna")).status, 401)
        self.log_in(host, "anna", "another horse battery")

    def test_two_administrators_change_each_other(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        add_user(anna, "bert")
        bert = self.log_in(host, "bert")
        sent = threading.Barrier(2)

        def demote(sender, name):
            sent.wait(PATIENCE)
            return sender.send("PATCH", "/users/" + name, {"role": "viewer"}).status

        with concurrent.futures.ThreadPoolExecutor() as pool:
            results = sorted(pool.map(demote, (anna, bert), ("bert", "anna")))
        self.assertEqual(results[0], 204)
        self.assertIn(results[1], (401, 403, 404))
        winner = anna if anna.send("GET", "/session").status == 200 else bert
        roles = sorted(user["role"] for user in winner.send("GET", "/users").json["users"])
        self.assertEqual(roles, ["administrator", "viewer"])

    def test_the_last_administrator_stays(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        for method, body in (("DELETE", None), ("PATCH", {"role": "engineer"}), ("PATCH", {"enabled": False})):
            refused = anna.send(method, "/users/anna", body)
            self.assertEqual(refused.status, 409)
            self.assertEqual(refused.json["detail"],
                             "No administrator would be left who can log in: give another user this role first.")
        self.assertEqual(anna.send("GET", "/session").status, 200)

    def test_a_cookie_of_another_host_is_refused(self):
        host, other = self.start(), self.start()
        for one in (host, other):
            add_user(self.client(one), "anna")
        foreign = self.log_in(other, "anna")
        for cookie in (foreign.cookie, "__Host-zucontrol=guess", "__Host-zucontrol="):
            self.assertEqual(self.client(host).get("/jobs", Cookie=cookie).status, 401)
            self.assertEqual(self.client(host).get("/health", Cookie=cookie).status, 200)

    def test_a_restart_keeps_the_users_and_ends_the_sessions(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                add_user(rest, "anna")
                with Session(host.http_port, "anna") as anna:
                    self.assertEqual(anna.status, 200)
            with Host(modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                self.assertEqual(rest.get("/jobs", Cookie=anna.cookie).status, 401)
                with Session(host.http_port, "anna") as again:
                    self.assertEqual(again.status, 200)

    def test_passwords_are_nowhere(self):
        host = self.start("--log", "info")
        rest = self.client(host)
        add_user(rest, "anna")
        anna = self.log_in(host, "anna")
        for name in ("anna", OTHER):
            rest.post("/session", {"name": name, "password": OTHER})
        rest.post("/session", '{"name": "anna", "password": "' + OTHER)
        rest.post("/session", {"name": "anna", "password": OTHER, "more": 1})
        texts = [anna.send("GET", path).text for path in ("/users", "/users/anna", "/sessions", "/problems")]
        self.assertEqual(stat.S_IMODE((host.data / "security.zpset").stat().st_mode), 0o600)
        files = [path.read_bytes().decode("latin-1") for path in host.data.rglob("*") if path.is_file()]
        for text in (*texts, *files, host.log()):
            for secret in (PASSWORD, OTHER, anna.token, anna.cookie.split("=")[1]):
                self.assertNotIn(secret, text)
        for text in texts:
            self.assertNotIn("argon2", text)

    def test_the_trail_names_logins_and_changes_of_users(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        self.client(host).post("/session", {"name": OTHER, "password": PASSWORD})
        add_user(anna, "bert", "viewer")
        anna.send("PATCH", "/users/bert", {"role": "engineer"})
        anna.send("DELETE", "/users/anna")

        entries = wait_until(lambda: (lambda found: len(found) >= 6 and found)(
            [(entry["who"], entry["what"], entry["result"]) for entry in anna.send("GET", "/audit?limit=1000").json["entries"]
             if "user" in entry["what"] or entry["what"] == "login"]), "the entries of the trail")
        self.assertEqual(entries, [
            ("local", "add user", "done"),
            ("user anna", "login", "done"),
            ("unknown user", "login", "refused: wrong name or password"),
            ("user anna", "add user", "done"),
            ("user anna", "change user", "done"),
            ("user anna", "remove user",
             "refused: No administrator would be left who can log in: give another user this role first.")])
        text = anna.send("GET", "/audit?limit=1000").text
        for secret in (PASSWORD, OTHER, anna.token):
            self.assertNotIn(secret, text)

    def test_the_login_notice_is_shown_before_the_login(self):
        with tempfile.TemporaryDirectory() as folder:
            file = pathlib.Path(folder) / "notice"
            file.write_text("Only for the staff of hall 3.\n\nHöhe 1.\n", encoding="utf-8")
            host = self.start("--login-notice", file)
            add_user(self.client(host), "anna")
            for path in ("/", "/session"):
                refused = self.client(host).get(path)
                self.assertEqual((refused.status, refused.json["notice"]), (401, "Only for the staff of hall 3.\n\nHöhe 1."))
            self.assertNotIn("notice", self.log_in(host, "anna").send("GET", "/session").json)

            file.write_text("x" * 2001, encoding="utf-8")
            status, _, error = run_host("--login-notice", file)
            self.assertEqual(status, 2)
            self.assertIn(f"option '--login-notice': the file '{file}' has more than 2000 bytes", error)

    def test_refused_changes_of_users_and_tokens_are_in_the_trail(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        statuses = [anna.send("POST", "/users", {"name": "bert"}).status, add_user(anna, " ").status, add_user(anna, "bert", "king").status,
                    anna.send("PATCH", "/users/anna", {"roll": "viewer"}).status,
                    anna.rest.send("DELETE", "/users/anna", Cookie=anna.cookie, X_CSRF_Token=anna.token, If_Match='"old"').status,
                    anna.send("POST", "/tokens", {"name": "line", "role": "king"}).status,
                    anna.send("POST", "/tokens", {"role": "viewer", "secret": PASSWORD}).status]
        self.assertEqual(statuses, [422, 422, 422, 422, 412, 422, 422])

        def entries():
            found = anna.send("GET", "/audit?limit=1000").json["entries"]
            return [entry for entry in found if entry["who"] == "user anna" and entry["what"] != "login"]

        wait_until(lambda: sum(entry["count"] for entry in entries()) == len(statuses), f"all entries in {entries()}")
        self.assertEqual([entry["what"] for entry in entries()],
                         ["add user"] * 3 + ["change user", "remove user"] + ["POST /tokens"] * 2)
        self.assertNotIn(PASSWORD, str(entries()))

    def test_guessers_have_to_wait_and_the_others_do_not(self):
        host = self.start()
        add_user(self.client(host), "anna")
        anna = self.log_in(host, "anna")
        slowest, ends = [0.0], threading.Event()

        def watch():
            with RestClient(host.http_port) as rest:
                while not ends.is_set():
                    begin = time.monotonic()
                    self.assertEqual(rest.get("/health").status, 200)
                    slowest[0] = max(slowest[0], time.monotonic() - begin)

        def guess(number):
            with RestClient(host.http_port) as rest:
                return [rest.post("/session", {"name": f"user {number}", "password": OTHER}).status for _ in range(100)]

        watcher = threading.Thread(target=watch)
        watcher.start()
        try:
            with concurrent.futures.ThreadPoolExecutor(20) as pool:
                statuses = [status for several in pool.map(guess, range(20)) for status in several]
            self.assertEqual(anna.send("GET", "/jobs").status, 200)
        finally:
            ends.set()
            watcher.join()
        self.assertEqual(len(statuses), 2000)
        self.assertEqual(set(statuses), {401, 429})
        self.assertLess(statuses.count(401), 20, "few passwords are checked")
        self.assertLess(slowest[0], 2.0 + float(os.environ.get("ZU_SLACK", "0")))
        self.log_in(host, "anna")  # has logged in from this address before

    def test_the_right_password_works_after_the_wait(self):
        host = self.start()
        rest = self.client(host)
        add_user(rest, "anna")
        statuses = [rest.post("/session", {"name": "anna", "password": OTHER}).status for _ in range(6)]
        self.assertEqual(statuses, [401] * 5 + [429])
        refused = rest.post("/session", {"name": "anna", "password": PASSWORD})
        self.assertIn((refused.status, refused.headers["Retry-After"]), [(429, "1")])

        def can_log_in():
            with Session(host.http_port, "anna") as session:
                return session.status == 200

        wait_until(can_log_in, "a login after the wait")


class FirstAdministrator(unittest.TestCase):
    def set_up(self, rest, code, name="anna"):
        return rest.post("/setup", {"code": code, "name": name, "password": PASSWORD})

    def test_the_code_is_in_a_file_when_there_is_no_terminal(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(*OPEN, modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                file = pathlib.Path(data) / CODE_FILE
                self.assertEqual(host.wait_for_log(CODE_FILE).split("the file ")[1], f"{file} for one hour")
                self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600)
                code = file.read_text().strip()
                self.assertNotIn(code, host.log())
                for path in ("/", "/jobs", "/session", "/users"):
                    self.assertEqual(rest.get(path).status, 401, path)
                self.assertEqual(rest.get("/health").status, 200)
                self.assertEqual(self.set_up(rest, "AAAA-AAAA-AAAA-AAAA").status, 403)
                made = self.set_up(rest, code)
                self.assertEqual((made.status, made.headers["Location"]), (201, "/users/anna"))
                self.assertFalse(file.exists())
                self.assertEqual(self.set_up(rest, code, "bert").status, 409)
                with Session(host.http_port, "anna") as anna:
                    self.assertEqual(anna.send("GET", "/session").json["role"], "administrator")
            with Host(*OPEN, modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                self.assertFalse(file.exists())
                self.assertEqual(self.set_up(rest, code, "bert").status, 409)

    def test_wrong_codes_have_to_wait(self):
        with Host(*OPEN, modbus=False) as host, RestClient(host.http_port) as rest:
            statuses = [self.set_up(rest, "AAAA-AAAA-AAAA-AAAA").status for _ in range(7)]
            self.assertEqual(statuses, [403] * 5 + [429] * 2)

    def test_a_new_code_helps_when_every_password_is_lost(self):
        with tempfile.TemporaryDirectory() as data:
            with Host(modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                add_user(rest, "anna", password="a password that is lost")
            with Host("--reset-administrator", modbus=False, data=data) as host, RestClient(host.http_port) as rest:
                code = (pathlib.Path(data) / CODE_FILE).read_text()
                self.assertEqual(rest.get("/jobs").status, 401)
                self.assertEqual(self.set_up(rest, code).status, 201)
                with Session(host.http_port, "anna") as anna:
                    self.assertEqual(len(anna.send("GET", "/users").json["users"]), 1)
            self.assertFalse((pathlib.Path(data) / CODE_FILE).exists())

    def test_no_code_is_made_that_nobody_needs(self):
        with Host(modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertFalse((host.data / CODE_FILE).exists())
            self.assertEqual(rest.get("/jobs").status, 200)
            refused = self.set_up(rest, "AAAA-AAAA-AAAA-AAAA")
            self.assertEqual(refused.json["detail"],
                             "There is no code, or it has ended: start the host with --reset-administrator for a new one.")

    def test_the_code_is_shown_on_a_terminal_and_not_in_the_log(self):
        with tempfile.TemporaryDirectory() as data:
            master, terminal = pty.openpty()
            process = subprocess.Popen(
                [str(BIN / "zucontrol-host"), *OPEN, "--data", data], stdout=terminal, stderr=subprocess.PIPE, text=True)
            os.close(terminal)
            try:
                shown = b""
                while b"ready" not in shown:
                    shown += os.read(master, 4096)
                lines = shown.decode().splitlines()
                code = next(line for line in lines if "code" in line).rsplit(": ", 1)[1]
                port = int(next(line for line in lines if line.startswith("listening http ")).rsplit(":", 1)[1])
                self.assertFalse((pathlib.Path(data) / CODE_FILE).exists())
                with RestClient(port) as rest:
                    self.assertEqual(self.set_up(rest, code).status, 201)
            finally:
                process.terminate()
                log = process.communicate(timeout=PATIENCE)[1]
                os.close(master)
            self.assertNotIn(code, log)


class DamagedUsers(unittest.TestCase):
    def test_nobody_is_let_in_and_production_goes_on(self):
        with tempfile.TemporaryDirectory() as data:
            (pathlib.Path(data) / "security.zpset").write_bytes(b"x" * 8192)
            with Host(data=data) as host, RestClient(host.http_port) as rest:
                host.wait_for_log("The users cannot be read, so nobody can log in")
                self.assertEqual(rest.get("/jobs").status, 401)
                self.assertEqual(rest.get("/health").status, 200)
                with Session(host.http_port, "anna") as anna:
                    self.assertEqual(anna.status, 401)
                self.assertGreater(host.modbus_port, 0)


if __name__ == "__main__":
    unittest.main()
