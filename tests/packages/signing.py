"""A certificate and a time stamp authority for signing the packages."""

import subprocess
import tempfile
import threading
from http.server import BaseHTTPRequestHandler, HTTPServer
from pathlib import Path

PASSWORD = "correct horse"

# The configuration of the authority.
TSA_CONFIG = """\
[tsa]
default_tsa = this
[this]
serial = {folder}/serial
crypto_device = builtin
signer_digest = sha256
default_policy = 1.2.3.4
digests = sha256
ess_cert_id_alg = sha256
accuracy = secs:1
"""


def run(*command):
    subprocess.run([*map(str, command)], check=True, capture_output=True)


class Identity:
    """A key and a self-signed certificate."""

    def __init__(self, folder, name, use):
        self.key = folder / f"{name}.key"
        self.certificate = folder / f"{name}.pem"
        run(
            *["openssl", "req", "-x509", "-newkey", "rsa:2048", "-sha256", "-nodes", "-days", "2"],
            *["-subj", f"/CN=Quillmont test {name}", "-addext", f"extendedKeyUsage=critical,{use}"],
            *["-addext", "keyUsage=critical,digitalSignature"],
            *["-keyout", self.key, "-out", self.certificate],
        )

    def pack(self, password):
        """Writes a PKCS#12 file and a file with its password. Returns both."""
        packed, secret = self.key.with_suffix(".p12"), self.key.with_suffix(".password")
        secret.write_text(password)
        run(
            *["openssl", "pkcs12", "-export", "-inkey", self.key, "-in", self.certificate],
            *["-out", packed, "-passout", f"file:{secret}"],
        )
        return packed, secret


class TimestampAuthority:
    """A server on 127.0.0.1 for requests as in RFC 3161, until closed."""

    def __init__(self, folder):
        self.identity = Identity(folder, "authority", "timeStamping")
        self.folder = folder
        (folder / "serial").write_text("01\n")
        (folder / "tsa.cnf").write_text(TSA_CONFIG.format(folder=folder))
        self.answered = 0
        authority = self

        class Handler(BaseHTTPRequestHandler):
            def do_POST(self):
                reply = authority.answer(self.rfile.read(int(self.headers["Content-Length"])))
                self.send_response(200)
                self.send_header("Content-Type", "application/timestamp-reply")
                self.send_header("Content-Length", str(len(reply)))
                self.end_headers()
                self.wfile.write(reply)

            def log_message(self, *_):
                pass

        self.server = HTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self.server.server_port}/"
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def answer(self, request):
        with tempfile.TemporaryDirectory() as folder:
            query, reply = Path(folder, "query"), Path(folder, "reply")
            query.write_bytes(request)
            run(
                *["openssl", "ts", "-reply", "-config", self.folder / "tsa.cnf", "-queryfile", query],
                *["-signer", self.identity.certificate, "-inkey", self.identity.key, "-out", reply],
            )
            self.answered += 1
            return reply.read_bytes()

    def close(self):
        self.server.shutdown()
        self.server.server_close()


def verify(file, signer, authority):
    """Returns whether the signature is valid, and the report. Trusts these two certificates only."""
    result = subprocess.run(
        ["osslsigncode", "verify", "-in", file, "-CAfile", signer.certificate, "-TSA-CAfile", authority.certificate],
        capture_output=True,
        text=True,
        check=False,
    )
    return result.returncode == 0, result.stdout + result.stderr
