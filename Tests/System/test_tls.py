"""HTTPS: which certificates the host takes, which clients it takes, and what hostile clients get."""

import contextlib
import json
import pathlib
import re
import signal
import socket
import ssl
import subprocess
import tempfile
import threading
import time
import unittest

from host import PATIENCE, Host, run_host, wait_until
from rest import RestClient
from tls import Authority, authority_of, connect, context, get, openssl, subject

HTTPS = ("--https", "127.0.0.1:0")
HELLO = b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03"  # the beginning of a ClientHello
GET_HEALTH = b"GET /health HTTP/1.1\r\nHost: localhost\r\n\r\n"

# Findings of testssl that say nothing about the protocol, the ciphers, known weaknesses or the chain.
NOT_OF_THE_TRANSPORT = {
    "HSTS",  # browsers apply it to every port of a machine, and plain HTTP on localhost is meant to work
    "cert_revocation",  # the authority is the host's own: it has no list of revoked certificates
    "engine_problem",  # about the program openssl that testssl itself uses
    "sessionresumption_ticket",  # its client gives up at times; `test_a_session_is_resumed_by_its_ticket` looks instead
}


def curl(*words):
    return subprocess.run(["curl", "-s", "-S", "-m", str(PATIENCE), *map(str, words)], capture_output=True, text=True, check=False)


def s_client(port, *words, text=b""):
    """What `openssl s_client` prints; `text` is its input."""
    done = subprocess.run(["openssl", "s_client", "-connect", f"127.0.0.1:{port}", *words], input=text, capture_output=True,
                          timeout=PATIENCE, check=False)
    return (done.stdout + done.stderr).decode(errors="replace")


class OwnCertificate(unittest.TestCase):
    def test_a_client_with_the_authority_trusts_the_host(self):
        with Host(*HTTPS, modbus=False) as host:
            url = f"https://localhost:{host.ports['https']}/authority"
            fetched = curl("-k", url)
            self.assertEqual(fetched.stdout, authority_of(host).read_text())
            trusted = curl("--cacert", authority_of(host), "-D", "-", url)
            self.assertRegex(trusted.stdout, r"(?i)content-type: application/x-pem-file")
            self.assertEqual(curl("--cacert", authority_of(host), url.replace("localhost", "127.0.0.1")).returncode, 0)
            self.assertEqual(curl(url).returncode, 60, "without the authority")

    def test_the_host_prints_the_fingerprints_before_it_is_ready(self):
        with Host(*HTTPS, modbus=False, wait=False) as host:
            lines = []
            while "ready" not in lines:
                lines.append(host.lines.get(timeout=PATIENCE))
            host.ports["https"] = int(lines[1].rsplit(":", 1)[1])
            shown = openssl("x509", "-noout", "-fingerprint", "-sha256", "-in", authority_of(host)).stdout.split("=")[1].strip()
            self.assertEqual(lines[3], f"fingerprint authority SHA256:{shown}")
            with connect(host.ports["https"]) as client:
                pem = ssl.DER_cert_to_PEM_cert(client.getpeercert(binary_form=True))
            shown = openssl("x509", "-noout", "-fingerprint", "-sha256", input=pem).stdout.split("=")[1].strip()
            self.assertEqual(lines[2], f"fingerprint https SHA256:{shown}")

    def test_it_stays_from_start_to_start(self):
        with tempfile.TemporaryDirectory() as data:
            shown = set()
            for _ in range(2):
                with Host(*HTTPS, modbus=False, data=data) as host, connect(host.ports["https"], authority_of(host)) as client:
                    shown.add(client.getpeercert(binary_form=True))
            self.assertEqual(len(shown), 1)

    def test_a_start_killed_at_any_moment_leaves_nothing_half_done(self):
        with tempfile.TemporaryDirectory() as data:
            for number in range(8):
                with Host(*HTTPS, modbus=False, data=data, wait=False) as host:
                    host.expected_status = -signal.SIGKILL
                    folder = pathlib.Path(data) / "tls"
                    wait_until(lambda: folder.exists() and len(list(folder.iterdir())) >= number % 4, "the files")
                    host.process.kill()
                if number % 2 == 0:
                    (pathlib.Path(data) / "tls" / "host.pem").unlink(missing_ok=True)
            with Host(*HTTPS, modbus=False, data=data) as host:
                self.assertEqual(get(host.ports["https"], "/health", authority_of(host))[0], 200)

    def test_a_damaged_authority_is_told(self):
        with tempfile.TemporaryDirectory() as data:
            folder = pathlib.Path(data) / "tls"
            folder.mkdir()
            (folder / "authority-key.pem").write_text("nothing")
            status, output, error = run_host("--data", data, *HTTPS)
            self.assertEqual((status, output), (2, ""))
            self.assertIn("there is no certificate in it", error)
            self.assertIn(f"remove '{folder / 'authority-key.pem'}', and the host makes a new one", error)

    def test_without_it_there_is_no_authority_to_fetch(self):
        with Host(modbus=False) as host, RestClient(host.http_port) as rest:
            self.assertEqual(rest.get("/authority").status, 404)


class UsersCertificate(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.folder = pathlib.Path(cls.scratch.name)
        cls.authority = Authority(cls.folder)
        cls.good = cls.authority.sign("good")

    @classmethod
    def tearDownClass(cls):
        cls.scratch.cleanup()

    def refusal(self, certificate, key):
        status, output, error = run_host(*HTTPS, "--certificate", certificate, "--key", key)
        self.assertEqual((status, output), (2, ""))
        return error.removeprefix("zucontrol-host: ").rstrip("\n")

    def test_a_start_with_a_bad_file_tells_what_is_wrong(self):
        other = self.authority.sign("other")
        ended = self.authority.sign("ended", days=-1)
        short = self.authority.sign("short", key=("rsa:1024",))
        empty = self.folder / "empty.pem"
        empty.write_text("")
        day = openssl("x509", "-noout", "-enddate", "-dateopt", "iso_8601", "-in", ended[0]).stdout.split("=")[1][:10]
        for certificate, key, text in (
                (ended[0], ended[1], f"the certificate {ended[0]} ended on {day}"),
                (self.good[0], other[1], f"the key {other[1]} does not belong to the certificate {self.good[0]}"),
                (short[0], short[1], f"the key {short[1]} is too short: RSA takes 2048 bits at least, an elliptic curve 256 bits"),
                (empty, self.good[1], f"{empty}: there is no certificate in it"),
                (self.good[0], empty, f"the key {empty} can be read or changed by every user: take that away with chmod o= {empty}"),
                (self.good[1], self.good[1], f"{self.good[1]}: there is no certificate in it"),
                ("nowhere.pem", self.good[1], "the certificate nowhere.pem cannot be read: No such file or directory")):
            self.assertEqual(self.refusal(certificate, key), text)

    def test_a_self_made_certificate_is_served_and_judged_by_the_client(self):
        files = self.folder / "self.pem", self.folder / "self.key"
        openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
                "-keyout", files[1], "-out", files[0])
        with Host(*HTTPS, "--certificate", files[0], "--key", files[1], modbus=False) as host:
            self.assertEqual(get(host.ports["https"], "/health", files[0])[0], 200)
            self.assertEqual(get(host.ports["https"], "/authority", files[0])[0], 404)
            with self.assertRaises(ssl.SSLCertVerificationError):
                connect(host.ports["https"], self.authority.file)
            self.assertIn("the peer does not trust the authority of our certificate", host.wait_for_log("TLS handshakes"))

    def test_the_signal_reads_it_again_and_connections_stay(self):
        certificate, key = self.folder / "host.pem", self.folder / "host.key"

        def install(files):
            certificate.write_bytes(files[0].read_bytes())
            key.write_bytes(files[1].read_bytes())
            key.chmod(0o600)

        install(self.good)
        with Host(*HTTPS, "--certificate", certificate, "--key", key, modbus=False) as host:
            port = host.ports["https"]
            with connect(port, self.authority.file) as first:
                self.assertEqual(subject(first), "good")
                install(self.authority.sign("better"))
                host.process.send_signal(signal.SIGHUP)
                host.wait_for_log("The certificate for HTTPS has been read again")
                with connect(port, self.authority.file) as second:
                    self.assertEqual(subject(second), "better")

                certificate.write_text("nothing")
                host.process.send_signal(signal.SIGHUP)
                line = host.wait_for_log("The certificate for HTTPS stays as it was")
                self.assertIn(f"{certificate}: there is no certificate in it", line)
                self.assertIn(" error ", line)
                with connect(port, self.authority.file) as third:
                    self.assertEqual(subject(third), "better")

                with RestClient(host.http_port) as rest:
                    lines = rest.get("/audit?limit=1000", Accept="application/x-ndjson").text.splitlines()
                notes = [note["result"] for note in map(json.loads, lines) if note["what"] == "certificate"]
                self.assertEqual(sorted(notes), ["done", f"refused: {certificate}: there is no certificate in it"])

                first.sendall(GET_HEALTH)
                self.assertTrue(first.recv(65536).startswith(b"HTTP/1.1 200 "), "the first connection is still there")


class Protocol(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.host = Host(*HTTPS, modbus=False)
        cls.host.__enter__()
        cls.port = cls.host.ports["https"]

    @classmethod
    def tearDownClass(cls):
        cls.host.__exit__(None, None, None)

    def test_versions_below_1_2_are_refused(self):
        for version in ("-tls1", "-tls1_1"):
            printed = s_client(self.port, version, "-cipher", "ALL:@SECLEVEL=0")
            self.assertIn("alert protocol version", printed)
        for version, name in (("-tls1_2", "TLSv1.2"), ("-tls1_3", "TLSv1.3")):
            self.assertIn(f"New, {name}", s_client(self.port, version))

    def test_suites_without_aead_or_without_ecdhe_are_refused(self):
        for suite in ("ECDHE-ECDSA-AES256-SHA384", "ECDHE-ECDSA-AES128-SHA", "AES256-GCM-SHA384", "DHE-RSA-AES256-GCM-SHA384", "eNULL"):
            printed = s_client(self.port, "-tls1_2", "-cipher", suite + ":@SECLEVEL=0")
            self.assertIn("alert handshake failure", printed, suite)

    def test_renegotiation_is_refused(self):
        printed = s_client(self.port, "-tls1_2", text=b"R\n")
        self.assertIn("RENEGOTIATING", printed)
        self.assertIn("no renegotiation", printed)

    def test_a_session_is_resumed_by_its_ticket(self):
        with tempfile.TemporaryDirectory() as folder:
            for version in ("-tls1_2", "-tls1_3"):
                session = str(pathlib.Path(folder) / "session")
                request = b"GET /health HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n"
                self.assertIn("\nNew, ", s_client(self.port, version, "-sess_out", session, "-ign_eof", text=request))
                self.assertIn("\nReused, ", s_client(self.port, version, "-sess_in", session, "-ign_eof", text=request))

    def test_the_answer_ends_with_the_end_of_tls(self):
        strict = context()
        with socket.create_connection(("127.0.0.1", self.port), timeout=PATIENCE) as plain:
            with strict.wrap_socket(plain, suppress_ragged_eofs=False) as client:
                client.sendall(b"GET /health HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n")
                received = b""
                while part := client.recv(65536):
                    received += part
        self.assertTrue(received.endswith(b"}"), received)

    def test_plain_http_gets_a_plain_answer(self):
        printed = curl("-D", "-", f"http://127.0.0.1:{self.port}/health").stdout
        self.assertTrue(printed.startswith("HTTP/1.1 400 "), printed)
        self.assertIn("This port takes HTTPS only", printed)

    def test_the_testssl_scan_finds_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            report = pathlib.Path(folder) / "report.json"
            subprocess.run(["testssl", "--quiet", "--color", "0", "--warnings", "off", "--nodns=min", "--ip=one", "--jsonfile", report,
                            "--add-ca", authority_of(self.host), f"localhost:{self.port}"],
                           capture_output=True, timeout=900, check=False)  # its exit status says nothing
            findings = {one["id"]: one for one in json.loads(report.read_text())}
        bad = {name: (one["severity"], one["finding"]) for name, one in findings.items()
               if one["severity"] not in ("OK", "INFO") and name not in NOT_OF_THE_TRANSPORT}
        self.assertEqual(bad, {})
        self.assertEqual(findings["TLS1_1"]["finding"], "not offered")
        self.assertEqual(findings["cert_chain_of_trust"]["severity"], "OK")
        self.assertEqual(findings["heartbleed"]["severity"], "OK")


class Attacks(unittest.TestCase):
    def test_a_broken_handshake_is_closed(self):
        with Host(*HTTPS, modbus=False) as host:
            for bytes_sent in (b"", b"\x16", HELLO, HELLO + b"\xff" * 600, b"\x80\x2e\x01\x00\x02", b"\0" * 5000, b"\x15\x03\x03\x00\x02\x02\x28"):
                with socket.create_connection(("127.0.0.1", host.ports["https"]), timeout=PATIENCE) as client:
                    client.sendall(bytes_sent)
                    client.shutdown(socket.SHUT_WR)
                    with contextlib.suppress(ConnectionError):
                        while client.recv(65536):
                            pass
            self.assertEqual(get(host.ports["https"], "/health", authority_of(host))[0], 200)

    def test_a_slow_handshake_has_a_deadline(self):
        with Host(*HTTPS, modbus=False) as host:
            begin = time.monotonic()
            with socket.create_connection(("127.0.0.1", host.ports["https"]), timeout=PATIENCE) as client:
                with contextlib.suppress(ConnectionError):
                    for byte in HELLO * 100:
                        client.sendall(bytes([byte]))
                        client.settimeout(0.2)
                        with contextlib.suppress(TimeoutError):
                            if client.recv(1) == b"":
                                break
            seconds = time.monotonic() - begin
            self.assertGreater(seconds, 9)
            self.assertLess(seconds, 9 + PATIENCE / 2)

    def test_a_flood_of_handshakes_leaves_room_for_clients(self):
        """Threads begin handshakes, whole and half, as fast as they can, and keep the connections."""
        with Host(*HTTPS, "--log", "error", modbus=False) as host:
            port = host.ports["https"]
            ends = threading.Event()
            counts = [0, 0]

            def flood(number):
                with contextlib.ExitStack() as held:
                    while not ends.is_set() and counts[number] < 800:
                        with contextlib.suppress(OSError):
                            client = held.enter_context(socket.create_connection(("127.0.0.1", port), timeout=PATIENCE))
                            if number == 0:
                                client.sendall(HELLO)
                            else:
                                held.enter_context(context().wrap_socket(client))
                            counts[number] += 1

            threads = [threading.Thread(target=flood, args=(number,)) for number in range(2)]
            for thread in threads:
                thread.start()
            longest = 0
            for _ in range(20):
                begin = time.monotonic()
                self.assertEqual(get(port, "/health", authority_of(host))[0], 200)
                with RestClient(host.http_port) as rest:
                    self.assertEqual(rest.get("/health").status, 200)
                longest = max(longest, time.monotonic() - begin)
            ends.set()
            for thread in threads:
                thread.join()
        print(f"{counts[0]} half and {counts[1]} whole handshakes, /health within {longest:.2f} s", flush=True)
        self.assertLess(longest, 5)


class Insecure(unittest.TestCase):
    def test_plain_http_beyond_this_machine_is_a_problem(self):
        with tempfile.TemporaryDirectory() as folder:
            token = pathlib.Path(folder) / "token"
            token.write_text("0123456789abcdef\n")
            token.chmod(0o600)
            with Host("--http", "0.0.0.0:0", "--insecure", "--token", token, modbus=False) as host, RestClient(host.http_port) as rest:
                problems = rest.get("/problems", Authorization="Bearer 0123456789abcdef").json["problems"]
                texts = [problem["text"] for problem in problems]
                self.assertTrue(any(re.search(r"0\.0\.0\.0:\d+ is not encrypted \(--insecure\)", text) for text in texts), texts)
            with Host(*HTTPS, modbus=False) as host, RestClient(host.http_port) as rest:
                self.assertEqual(rest.get("/problems").json["problems"], [])


if __name__ == "__main__":
    unittest.main()
