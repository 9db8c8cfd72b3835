# SPDX-License-Identifier: GPL-3.0-or-later
"""A certificate authority for one run, and the certificates that go wrong.

Keys are P-256: made in milliseconds, and accepted by every TLS library the program and the servers use.
"""

import ipaddress
import os
import subprocess

CA_CONFIG = """[ca]
default_ca = lab
[lab]
new_certs_dir = {directory}
database = {directory}/index.txt
rand_serial = yes
default_md = sha256
policy = any
email_in_dn = no
unique_subject = no
copy_extensions = none
[any]
commonName = supplied
"""


def _openssl(*arguments):
    done = subprocess.run(["openssl", *arguments], capture_output=True, text=True, check=False,
                          stdin=subprocess.DEVNULL)
    if done.returncode != 0:
        raise RuntimeError(f"openssl {' '.join(arguments)}: {done.stderr.strip()}")


class Certificate:
    """A certificate with its chain-less PEM, its key, and both in one file (as icecast wants it)."""

    def __init__(self, stem):
        self.certificate = stem + ".pem"
        self.key = stem + ".key"
        self.both = stem + ".both.pem"


class Authority:
    """Issues certificates for names and addresses. The directory is made when first needed."""

    def __init__(self, directory, common_name):
        self._directory = directory
        self.certificate = os.path.join(directory, "authority.pem")
        self._key = os.path.join(directory, "authority.key")
        self._count = 0
        os.makedirs(directory, mode=0o755)
        _openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2",
                 "-subj", f"/CN={common_name}", "-addext", "keyUsage=critical,keyCertSign,cRLSign",
                 "-keyout", self._key, "-out", self.certificate)
        with open(os.path.join(directory, "ca.conf"), "w", encoding="ascii") as file:
            file.write(CA_CONFIG.format(directory=directory))
        open(os.path.join(directory, "index.txt"), "w", encoding="ascii").close()

    def issue(self, names, start=None, end=None):
        """A server certificate for these names or addresses; `start` and `end` as YYYYMMDDHHMMSSZ."""
        self._count += 1
        issued = Certificate(os.path.join(self._directory, f"server{self._count}"))
        request = os.path.join(self._directory, f"server{self._count}.csr")
        extensions = os.path.join(self._directory, f"server{self._count}.ext")
        with open(extensions, "w", encoding="ascii") as file:
            file.write("basicConstraints=CA:FALSE\nextendedKeyUsage=serverAuth\n"
                       "keyUsage=critical,digitalSignature\n"
                       f"subjectAltName={','.join(_alternative_name(n) for n in names)}\n")
        _openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                 "-subj", "/CN=Zofra lab server", "-keyout", issued.key, "-out", request)
        dates = ["-startdate", start, "-enddate", end] if start else ["-days", "2"]
        _openssl("ca", "-batch", "-notext", "-config", os.path.join(self._directory, "ca.conf"),
                 "-cert", self.certificate, "-keyfile", self._key, "-in", request, "-out", issued.certificate,
                 "-extfile", extensions, *dates)
        with open(issued.both, "wb") as both:
            for part in (issued.certificate, issued.key):
                with open(part, "rb") as file:
                    both.write(file.read())
        for path in (issued.key, issued.both):
            os.chmod(path, 0o644)  # read by a server that is another user; the run directory's top is the guard
        return issued

    def issue_own(self, names):
        """A certificate for these names that is its own authority."""
        issued = Certificate(os.path.join(self._directory, "own"))
        _openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2",
                 "-subj", f"/CN={names[0]}", "-addext",
                 f"subjectAltName={','.join(_alternative_name(n) for n in names)}",
                 "-keyout", issued.key, "-out", issued.certificate)
        return issued


def _alternative_name(name):
    try:
        return f"IP:{ipaddress.ip_address(name)}"
    except ValueError:
        return f"DNS:{name}"
