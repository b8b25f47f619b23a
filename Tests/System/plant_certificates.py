"""A small authority of a plant, with certificates for the sensor and its PLCs, made with the openssl command."""

import pathlib
import subprocess
import tempfile

ROLE_EXTENSION = "1.3.6.1.4.1.50316.802.1"


def openssl(*arguments, **options):
    return subprocess.run(["openssl", *map(str, arguments)], check=True, capture_output=True, text=True, **options)


class Plant:
    """`with Plant() as plant: plant.certify("plc-7", role="Operator")`: files NAME.pem, NAME.key and authority.pem in a folder."""

    def __enter__(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.scratch.name)
        self.make_authority("authority")
        self.certify("sensor", usage="serverAuth", names="IP:127.0.0.1,DNS:localhost")
        return self

    def __exit__(self, *_):
        self.scratch.cleanup()

    def __truediv__(self, name):
        return self.folder / name

    def make_authority(self, name):
        openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", 30,
                "-subj", f"/CN={name}", "-keyout", self / f"{name}.key", "-out", self / f"{name}.pem")

    def certify(self, name, role=None, authority="authority", usage="clientAuth", names=None, days=30):
        """Makes NAME.pem and NAME.key. A negative number of days: the certificate has ended. Without authority: self-made."""
        lines = ["basicConstraints=critical,CA:FALSE", f"extendedKeyUsage={usage}"]
        lines += [f"subjectAltName={names}"] if names else []
        lines += [f"{ROLE_EXTENSION}=ASN1:UTF8String:{role}"] if role is not None else []
        extensions = self / "extensions"
        extensions.write_text("\n".join(lines) + "\n", encoding="utf-8")
        openssl("req", "-new", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-subj", f"/CN={name}",
                "-keyout", self / f"{name}.key", "-out", self / "request")
        signer = ["-CA", self / f"{authority}.pem", "-CAkey", self / f"{authority}.key", "-CAcreateserial"] if authority else \
                 ["-key", self / f"{name}.key"]
        openssl("x509", "-req", "-in", self / "request", *signer, "-days", days, "-extfile", extensions,
                "-out", self / f"{name}.pem")
        return name

    def revoke(self, *names):
        """Makes revoked.pem, the list of the authority with these certificates."""
        (self / "index").write_text("", encoding="ascii")
        settings = self / "ca.cnf"
        settings.write_text(f"[ca]\ndefault_ca = plant\n[plant]\ndatabase = {self / 'index'}\ncertificate = {self / 'authority.pem'}\n"
                            f"private_key = {self / 'authority.key'}\ndefault_md = sha256\n", encoding="utf-8")
        for name in names:
            openssl("ca", "-config", settings, "-revoke", self / f"{name}.pem")
        openssl("ca", "-config", settings, "-gencrl", "-crldays", 30, "-out", self / "revoked.pem")

    def parameters(self, protocol, security=2, **more):
        """The options of a host whose protocol has TLS with the sensor's certificate."""
        settings = {"security": security, "certificateFile": self / "sensor.pem", "keyFile": self / "sensor.key",
                    "authorityFile": self / "authority.pem", **more}
        return [word for key, value in settings.items() for word in ("--param", f"{protocol}.{key}={value}")]
