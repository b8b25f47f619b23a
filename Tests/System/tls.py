"""Certificates made with the program openssl, and clients that speak TLS to the host."""

import http.client
import pathlib
import socket
import ssl
import subprocess

from host import PATIENCE


BROKEN = (ConnectionError, ssl.SSLError)  # what a client sees when the host closes a connection, with or without TLS


class TlsPort(int):
    """The number of a port that takes TLS. Attacks get it in place of a plain port."""


def connect_to(port):
    """A connection to a port of the host; over TLS if it is a `TlsPort`."""
    plain = socket.create_connection(("127.0.0.1", int(port)), timeout=PATIENCE)
    if not isinstance(port, TlsPort):
        return plain
    try:
        return context().wrap_socket(plain)
    except BaseException:
        plain.close()
        raise


def end_sending(client):
    """The host reads the end of what the client sends; the client goes on to receive."""
    if not isinstance(client, ssl.SSLSocket):
        client.shutdown(socket.SHUT_WR)
        return
    client.settimeout(0)  # the end of TLS is sent; that of the host is not waited for
    try:
        client.unwrap()
    except ssl.SSLWantReadError:
        pass
    client.settimeout(PATIENCE)


def receive_all(client):
    """What the host sends until it ends its side."""
    parts = []
    try:
        while part := client.recv(65536):
            parts.append(part)
    except ssl.SSLZeroReturnError:
        pass  # the end, when this side has ended too
    return b"".join(parts)


def http_connection(port):
    """As `connect_to`, for HTTP."""
    if isinstance(port, TlsPort):
        return http.client.HTTPSConnection("127.0.0.1", int(port), timeout=PATIENCE, context=context())
    return http.client.HTTPConnection("127.0.0.1", port, timeout=PATIENCE)


def openssl(*words, **options):
    return subprocess.run(["openssl", *map(str, words)], capture_output=True, text=True, timeout=PATIENCE, check=True, **options)


class Authority:
    """An authority in a folder, which signs certificates: NAME.pem and NAME.key."""

    def __init__(self, folder, name="authority"):
        self.folder = pathlib.Path(folder)
        self.file = self.folder / f"{name}.pem"
        self.key = self.folder / f"{name}.key"
        openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", f"/CN={name}", "-days", "30",
                "-addext", "basicConstraints=critical,CA:TRUE", "-addext", "keyUsage=critical,keyCertSign",
                "-keyout", self.key, "-out", self.file)

    def sign(self, name, days=20, names="DNS:localhost,IP:127.0.0.1", key=("ec", "-pkeyopt", "ec_paramgen_curve:P-256")):
        """With negative days the certificate has ended. Returns the files of the certificate and the key."""
        files = self.folder / f"{name}.pem", self.folder / f"{name}.key"
        request = self.folder / f"{name}.csr"
        extensions = self.folder / f"{name}.ext"
        extensions.write_text(f"subjectAltName={names}\nbasicConstraints=critical,CA:FALSE\n")
        openssl("req", "-newkey", *key, "-nodes", "-subj", f"/CN={name}", "-keyout", files[1], "-out", request)
        openssl("x509", "-req", "-in", request, "-CA", self.file, "-CAkey", self.key, "-days", days, "-extfile", extensions, "-out", files[0])
        return files


def authority_of(host):
    """The file of the authority that the host has made for itself."""
    return host.data / "tls" / "authority.pem"


def context(authority=None, **options):
    """A client's context, which checks the host if there is an authority. Further words are attributes of the context."""
    made = ssl.create_default_context(cafile=authority) if authority else ssl._create_unverified_context()
    for name, value in options.items():
        setattr(made, name, value)
    return made


def connect(port, authority=None, **options):
    return context(authority, **options).wrap_socket(socket.create_connection(("127.0.0.1", port), timeout=PATIENCE),
                                                     server_hostname="localhost")


def get(port, path, authority=None, **headers):
    """(status, body) of a GET request on a connection of its own."""
    connection = http.client.HTTPSConnection("localhost", port, timeout=PATIENCE, context=context(authority))
    try:
        connection.request("GET", path, headers=headers)
        response = connection.getresponse()
        return response.status, response.read()
    finally:
        connection.close()


def subject(client):
    """The common name of the certificate that the host has shown to this client."""
    pem = ssl.DER_cert_to_PEM_cert(client.getpeercert(binary_form=True))
    return openssl("x509", "-noout", "-subject", "-nameopt", "multiline", input=pem).stdout.split("= ")[-1].strip()
