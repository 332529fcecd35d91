"""A maker of releases: bundles around the built programs, archives, feeds, and signatures by a real tool."""

from __future__ import annotations

import dataclasses
import datetime
import hashlib
import json
import os
import pathlib
import platform
import shutil
import subprocess

ARCHIVE_LEVEL = "-1"  # quick, not small


@dataclasses.dataclass(frozen=True)
class Key:
    """A pair without a password."""

    secret: pathlib.Path
    public: str  # as a bundle's information file has it

    @classmethod
    def make(cls, folder: pathlib.Path, name: str) -> Key:
        secret, public = folder / f"{name}.key", folder / f"{name}.pub"
        _run("minisign", "-G", "-W", "-f", "-p", str(public), "-s", str(secret))
        return cls(secret, public.read_text(encoding="ascii").splitlines()[1])

    def sign(self, file: pathlib.Path, comment: str = "signed by a test") -> None:
        """Beside the file."""
        _run("minisign", "-S", "-s", str(self.secret), "-m", str(file), "-t", comment)


def _run(*command: str) -> None:
    done = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)}: {done.stderr.strip()}{done.stdout.strip()}")


def make_bundle(folder: pathlib.Path, version: str, programs: pathlib.Path, feed: str, keys: list[Key]) -> pathlib.Path:
    """`folder` around the programs of a build, as far as an updater cares."""
    shutil.rmtree(folder, ignore_errors=True)
    (folder / "bin").mkdir(parents=True)
    for program in ("tarnwick", "tarnwick-watch", "tarnwick-update"):
        shutil.copy2(programs / program, folder / "bin" / program)
    shutil.copytree(programs.parent / "share/tarnwick/icons", folder / "share/tarnwick/icons")
    information = {"version": version, "feedAddress": feed, "publicKeys": [key.public for key in keys]}
    (folder / "Information.json").write_text(json.dumps(information), encoding="utf-8")
    return folder


@dataclasses.dataclass
class Release:
    """One that the server offers. What is changed before `publish` is a lie of the maker's, or of the server's."""

    version: str
    archive: pathlib.Path
    notes: str = "## What is new\n\n* The chart is drawn **sooner**.\n* A name server that is slow is told of."
    signed_at: datetime.datetime = dataclasses.field(default_factory=lambda: datetime.datetime.now(datetime.timezone.utc))
    size: int | None = None
    digest: str | None = None

    def entry(self, address: str) -> dict[str, object]:
        content = self.archive.read_bytes()
        return {
            "version": self.version,
            "channel": "stable",
            "minimumSystem": "4.0",
            "notes": self.notes,
            "archives": [
                {
                    "address": f"{address}/{self.archive.name}",
                    "machine": platform.machine(),
                    "size": len(content) if self.size is None else self.size,
                    "sha256": self.digest or hashlib.sha256(content).hexdigest(),
                }
            ],
        }


def pack(bundle: pathlib.Path, folder: pathlib.Path, version: str, key: Key) -> Release:
    """An archive of the bundle in the folder that is served, signed."""
    archive = folder / f"Tarnwick-{version}.tar.zst"
    environment = os.environ | {"ZSTD_CLEVEL": ARCHIVE_LEVEL[1:]}
    subprocess.run(
        ["tar", "--zstd", "-cf", str(archive), "-C", str(bundle.parent), bundle.name],
        env=environment, check=True, timeout=60,
    )  # fmt: skip
    sign_archive(archive, version, key)
    return Release(version, archive)


def sign_archive(archive: pathlib.Path, version: str, key: Key) -> None:
    key.sign(archive, f"file:{archive.name}\tversion:{version}")


def publish(folder: pathlib.Path, address: str, releases: list[Release], key: Key) -> None:
    """The feed with its signature."""
    signed_at = max(release.signed_at for release in releases)
    feed = {
        "signedAt": signed_at.strftime("%Y-%m-%dT%H:%M:%SZ"),
        "releases": [release.entry(address) for release in releases],
    }
    file = folder / "feed.json"
    file.write_text(json.dumps(feed), encoding="utf-8")
    key.sign(file)
