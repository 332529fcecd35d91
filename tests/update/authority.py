"""A certificate authority of a test's own, and certificates of servers, good ones and bad ones."""

from __future__ import annotations

import contextlib
import dataclasses
import datetime
import os
import pathlib
import subprocess
from collections.abc import Iterator

# Where programs look for the authorities that they trust.
SYSTEM_STORE = "/etc/ssl/certs"
LOOPBACK = "IP:127.0.0.1,DNS:localhost"
OTHER_HOST = "DNS:other.example"

_KEY = ("-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes")
_MOUNT_AND_RUN = f'set -e; mount --bind "$1" {SYSTEM_STORE}; shift; exec "$@"'
# How an authority signs. Strict programs want to see whose key it was.
_SETTINGS = """
[ca]
default_ca = own
[own]
database = {folder}/index
new_certs_dir = {folder}
rand_serial = yes
unique_subject = no
default_md = sha256
policy = any
x509_extensions = server
[any]
commonName = supplied
[server]
subjectAltName = {hosts}
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
"""


def _day(number: int) -> str:
    """So many days from now, as openssl reads it."""
    return (datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=number)).strftime("%Y%m%d%H%M%SZ")


def _openssl(*arguments: str) -> str:
    done = subprocess.run(["openssl", *arguments], capture_output=True, text=True, timeout=60, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"openssl {' '.join(arguments)}: {done.stderr.strip()}")
    return done.stdout


@dataclasses.dataclass(frozen=True)
class Certificate:
    """The files of a certificate and of its key."""

    certificate: pathlib.Path
    key: pathlib.Path


def self_signed(folder: pathlib.Path, name: str, hosts: str = LOOPBACK, extensions: tuple[str, ...] = ()) -> Certificate:
    """A certificate that nobody else has signed, for two days."""
    made = Certificate(folder / f"{name}.pem", folder / f"{name}.key")
    added = [word for extension in (f"subjectAltName={hosts}", *extensions) for word in ("-addext", extension)]
    _openssl(
        "req", "-x509", *_KEY, "-keyout", str(made.key), "-out", str(made.certificate),
        "-subj", f"/CN={name}", "-days", "2", *added,
    )  # fmt: skip
    return made


class Authority:
    """Signs certificates. Programs trust it when `prefix` stands before their command."""

    def __init__(self, folder: str | os.PathLike[str], name: str = "authority") -> None:
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        self._own = self_signed(self.folder, name, "DNS:authority.example", ("keyUsage=critical,keyCertSign",))
        # Under the name by which it is looked up.
        self.store = self.folder / f"{name}-store"
        self.store.mkdir()
        digest = _openssl("x509", "-hash", "-noout", "-in", str(self._own.certificate)).strip()
        (self.store / f"{digest}.0").write_bytes(self._own.certificate.read_bytes())

    def certificate(self, name: str, hosts: str = LOOPBACK, has_expired: bool = False) -> Certificate:
        """A certificate for these hosts, from two days ago until tomorrow, or until yesterday."""
        made = Certificate(self.folder / f"{name}.pem", self.folder / f"{name}.key")
        request, settings = self.folder / f"{name}.csr", self.folder / f"{name}.cnf"
        settings.write_text(_SETTINGS.format(folder=self.folder, hosts=hosts), encoding="ascii")
        (self.folder / "index").touch()
        _openssl("req", *_KEY, "-keyout", str(made.key), "-out", str(request), "-subj", f"/CN={name}")
        _openssl(
            "ca", "-batch", "-config", str(settings), "-in", str(request), "-out", str(made.certificate), "-notext",
            "-cert", str(self._own.certificate), "-keyfile", str(self._own.key),
            "-startdate", _day(-2), "-enddate", _day(-1 if has_expired else 1),
        )  # fmt: skip
        return made

    def prefix(self) -> list[str]:
        """What to put before a command, in the laboratory, so that it trusts this authority and no other. The command
        keeps its process id."""
        # Mounts are private in the laboratory already, and in a changed root they can't be made so again.
        return ["unshare", "--mount", "--propagation", "unchanged", "sh", "-c", _MOUNT_AND_RUN, "sh", str(self.store)]

    @contextlib.contextmanager
    def trusted(self) -> Iterator[None]:
        """In the laboratory, as root: all that runs there from now on trusts this authority and no other."""
        subprocess.run(["mount", "--bind", str(self.store), SYSTEM_STORE], check=True, timeout=10)
        try:
            yield
        finally:
            subprocess.run(["umount", "--lazy", SYSTEM_STORE], check=True, timeout=10)
