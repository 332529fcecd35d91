"""What goes wrong on the way to a new version: each time the user reads why, and keeps the old one."""

from __future__ import annotations

import dataclasses
import datetime
import fcntl
import io
import json
import os
import signal
import subprocess
import tarfile
import unittest
from collections.abc import Callable

from endtoend.waiting import eventually
from update.authority import OTHER_HOST, Authority
from update.maker import Key, Release, sign_archive
from update.server import Behavior, UpdateServer, redirect

from .panels import XfcePanel
from .program import PATIENCE
from .updates import NEW, OLD, UpdateCase

FAILED = "Tarnwick was not updated"
FEED, SIGNATURE = "/feed.json", "/feed.json.minisig"
ARCHIVE = f"/Tarnwick-{NEW}.tar.zst"
MIB = 1 << 20
# Seconds that the program waits for a server that says nothing more.
SILENCE = 30
# More than a feed and more than the archive may have.
MUCH = "0" * MIB
# More than a version may have when it is unpacked.
BOMB_BYTES = 520 * MIB


@dataclasses.dataclass(frozen=True)
class Fault:
    name: str
    prepare: Callable[[Faults], None]
    sentence: str  # as a whole
    # It shows once the user has chosen to install what was found.
    after_install: bool = False
    title: str = FAILED
    patience: float = PATIENCE


def now(days: float = 0) -> datetime.datetime:
    return datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(days=days)


def plain_bundle(version: str = NEW) -> dict[str, bytes]:
    """A new version that is never started."""
    information = json.dumps({"version": version, "checkInterval": 86400}).encode()
    return {"Tarnwick.app/Information.json": information, "Tarnwick.app/bin/tarnwick": b"#!/bin/sh\n"}


class Faults(UpdateCase):
    def release_of(self, files: dict[str, bytes], key: Key | None = None, signed_as: str = NEW) -> Release:
        """Packed with each file's folders, signed; not yet in the feed."""
        tar = io.BytesIO()
        with tarfile.open(fileobj=tar, mode="w") as archive:
            for folder in ("Tarnwick.app", "Tarnwick.app/bin"):
                entry = tarfile.TarInfo(folder)
                entry.type, entry.mode = tarfile.DIRTYPE, 0o755
                archive.addfile(entry)
            for name, content in files.items():
                entry = tarfile.TarInfo(name)
                entry.size, entry.mode = len(content), 0o755
                archive.addfile(entry, io.BytesIO(content))
        packed = subprocess.run(["zstd", "-1", "-c"], input=tar.getvalue(), stdout=subprocess.PIPE, check=True, timeout=60)
        path = self.files / ARCHIVE.removeprefix("/")
        path.write_bytes(packed.stdout)
        sign_archive(path, signed_as, key or self.key)
        return Release(NEW, path)

    def offer_with(self, name: str, content: bytes) -> None:
        """A new version with one file more."""
        self.offer(self.release_of(plain_bundle() | {name: content}))

    def offer_on_full_disk(self, content: bytes) -> None:
        self.keep_room(MIB)
        self.offer_with("Tarnwick.app/much", content)

    def offer_good(self, **changes: object) -> None:
        """`changes` are lies in the feed."""
        self.offer(dataclasses.replace(self.release_of(plain_bundle()), **changes))

    def offer_behaving(self, path: str, behavior: Behavior) -> None:
        self.offer_good()
        self.server.behave(path, behavior)

    def offer_archive_of(self, key: Key) -> None:
        self.offer(self.release_of(plain_bundle(), key))

    def sign_feed_again(self, key: Key) -> None:
        self.offer_good()
        key.sign(self.files / "feed.json")

    def offer_for(self, machine: str) -> None:
        self.offer_good()
        archives = json.loads((self.files / "feed.json").read_text(encoding="utf-8"))["releases"][0]["archives"]
        self.offer_truly(archives=[archives[0] | {"machine": machine}])

    def change_feed(self, **members: object) -> None:
        """Behind the maker's back: its first release has these members."""
        self.offer_good()
        file = self.files / "feed.json"
        feed = json.loads(file.read_text(encoding="utf-8"))
        feed["releases"][0] |= members
        file.write_text(json.dumps(feed), encoding="utf-8")

    def offer_truly(self, **members: object) -> None:
        """The same with the maker's signature."""
        self.change_feed(**members)
        self.key.sign(self.files / "feed.json")

    def replay(self) -> None:
        """The feed of yesterday, after that of today was seen."""
        self.offer_good(signed_at=now(days=-1))
        self.data.mkdir(exist_ok=True)
        (self.data / "updates.json").write_text(json.dumps({"lastFeed": int(now().timestamp())}), encoding="utf-8")

    def swap_archive(self) -> None:
        """The maker's archive of another version, which is smaller, with its signature under the name of this one."""
        self.offer_with("Tarnwick.app/more", os.urandom(1000))
        self.release_of(plain_bundle("0.9"), signed_as="0.9")

    def spoil_archive(self, end: bytes) -> None:
        """Behind the maker's back: its last byte is another one, or missing."""
        self.offer_good()
        archive = self.files / ARCHIVE.removeprefix("/")
        archive.write_bytes(archive.read_bytes()[:-1] + end)

    def serve_with(self, authority: Authority, **certificate: object) -> None:
        self.offer_good()
        port = self.server.server_address[1]
        self.server.stop()
        self.server = UpdateServer(self.files, authority.certificate("bad", **certificate), port)
        self.addCleanup(self.server.stop)

    def stop_server(self) -> None:
        self.offer_good()
        self.server.stop()

    def quit(self) -> None:
        self.program.send(signal.SIGTERM)
        self.assertEqual(self.program.exit_status(), 0, self.program.output)

    def meet(self, fault: Fault) -> None:
        """What the user meets, up to the window that tells of it."""
        fault.prepare(self)
        self.start()
        self.check_for_updates()
        if fault.after_install:
            self.wait_for(f"Version {NEW} can be installed now.")
            self.choose("Install")
        self.wait_for(fault.title, fault.patience)
        self.assertIn(fault.sentence, self.texts())

    def holds(self, beside: tuple[str, ...] = ()) -> None:
        """The old version runs, is in its place, and starts again."""
        self.assertIsNone(self.program.process.poll(), self.program.output)
        self.assertEqual(self.beside, list(beside))
        self.choose("OK")
        eventually(lambda: not self.is_open(), PATIENCE, "the window closes")
        self.quit()
        self.assertEqual(self.version_in_place(), OLD)
        self.start()

    def try_all(self, *faults: Fault) -> None:
        for number, fault in enumerate(faults):
            with self.subTest(fault.name):
                if number > 0:
                    self.setUp()
                self.meet(fault)
                self.holds()
            self.doCleanups()

    def over_place(self, *arguments: str) -> None:
        """A mount there, until the end of the test."""
        subprocess.run(["mount", *arguments, str(self.place)], check=True, timeout=10)
        self.addCleanup(subprocess.run, ["umount", "--lazy", str(self.place)], check=True, timeout=10)

    def keep_room(self, size: int) -> None:
        """The bundle on a disk with so many bytes left."""
        used = sum(file.stat().st_size for file in self.bundle.rglob("*") if file.is_file())
        self.over_place("-t", "tmpfs", "-o", f"size={used + size + MIB}", "tmpfs")
        self.bundle_of(self.bundle, OLD)
        disk = os.statvfs(self.place)
        (self.bundle / "ballast").write_bytes(bytes(disk.f_bavail * disk.f_frsize - size))


class InXfce(Faults, unittest.TestCase):
    panel = XfcePanel

    def test_feeds_that_are_not_trusted(self) -> None:
        self.try_all(
            Fault(
                "signed with a stranger's key",
                lambda case: case.sign_feed_again(case.stranger),
                "The update information is signed with an unknown key, so it is not trusted.",
            ),
            Fault(
                "changed by the server",
                lambda case: case.change_feed(version="1.2"),
                "The update information does not match its signature, so it is not trusted.",
            ),
            Fault(
                "replayed",
                Faults.replay,
                "The update information is older than what was received before, so it is not trusted.",
            ),
            Fault(
                "held back for 91 days",
                lambda case: case.offer_good(signed_at=now(days=-91)),
                "The update information is more than 90 days old, so it is not trusted. This machine's date may be wrong.",
            ),
            Fault(
                "dated in the future",
                lambda case: case.offer_good(signed_at=now(days=3)),
                "The update information is dated in the future. Check this machine's date and time.",
            ),
        )

    def test_versions_that_do_not_fit(self) -> None:
        self.try_all(
            Fault(
                "an older version",
                lambda case: case.offer_truly(version="0.9"),
                f"Version {OLD} is the newest one.",
                title="Tarnwick is up to date",
            ),
            Fault(
                "for another machine",
                lambda case: case.offer_for("pdp11"),
                f"Tarnwick {NEW} is not made for this machine.",
            ),
            Fault(
                "for a later system",
                lambda case: case.offer_truly(minimumSystem="99.0"),
                f"Tarnwick {NEW} needs Linux 99.0 or newer.",
            ),
        )

    def test_servers_that_misbehave(self) -> None:
        self.try_all(
            Fault(
                "an endless feed",
                lambda case: case.offer_behaving(FEED, Behavior(body=MUCH, endless=True)),
                "The update server sends more than it should.",
            ),
            Fault(
                "a redirect to plain HTTP",
                lambda case: case.offer_behaving(FEED, redirect("http://127.0.0.1:9/feed.json")),
                "The update server leads to an address that is not secure (http://127.0.0.1:9/feed.json).",
            ),
            Fault(
                "an expired certificate",
                lambda case: case.serve_with(case.authority, has_expired=True),
                "The update server can't prove who it is (its certificate has expired).",
            ),
            Fault(
                "a certificate of another host",
                lambda case: case.serve_with(case.authority, hosts=OTHER_HOST),
                "The update server can't prove who it is (its certificate is that of another server).",
            ),
            Fault(
                "a certificate of a stranger",
                lambda case: case.serve_with(Authority(case.files / "stranger", "stranger")),
                "The update server can't prove who it is "
                "(its certificate is signed by nobody whom this machine trusts).",
            ),
            Fault("no server", Faults.stop_server, "The update server can't be reached (Connection refused)."),
            Fault(
                "a server that goes in the middle of the feed",
                lambda case: case.offer_behaving(FEED, Behavior(cut_after=100)),
                "The connection to the update server has ended early (Connection closed).",
            ),
            Fault(
                "a server that can't now",
                lambda case: case.offer_behaving(FEED, Behavior(status=503, body="")),
                "The update server can't serve the file now (503 Service Unavailable).",
            ),
            Fault(
                "no signature",
                lambda case: case.offer_behaving(SIGNATURE, Behavior(status=404, body="")),
                "The update server does not have the file (404 Not Found).",
            ),
        )

    def test_archives_that_are_not_trusted(self) -> None:
        faults = (
            Fault(
                "signed with a stranger's key",
                lambda case: case.offer_archive_of(case.stranger),
                "The download is signed with an unknown key, so it is not trusted.",
            ),
            Fault(
                "another digest than the feed's",
                lambda case: case.offer_good(digest="0" * 64),
                "The download is not the file that the update information names.",
            ),
            Fault(
                "changed by the server",
                lambda case: case.spoil_archive(b"\0"),
                "The download is not the file that the update information names.",
            ),
            Fault("cut short", lambda case: case.spoil_archive(b""), "The download is incomplete or too large."),
            Fault(
                "an older version under the name of the new one, by the maker",
                lambda case: case.offer(case.release_of(plain_bundle("0.9"), signed_as="0.9")),
                "The download is signed as another version, so it is not trusted.",
            ),
            Fault(
                "the same by the server",
                Faults.swap_archive,
                "The download is incomplete or too large.",
            ),
            Fault(
                "an older version, signed as the new one",
                lambda case: case.offer(case.release_of(plain_bundle("0.9"))),
                f"The download is not Tarnwick {NEW}.",
            ),
            Fault(
                "a path that climbs out",
                lambda case: case.offer_with("Tarnwick.app/../../climbed", b"out"),
                "The download can't be unpacked: it has files that do not belong there.",
            ),
            Fault(
                "a bomb",
                lambda case: case.offer_with("Tarnwick.app/bomb", bytes(BOMB_BYTES)),
                "The download can't be unpacked: it is larger than Tarnwick can be.",
            ),
        )
        self.try_all(*(dataclasses.replace(fault, after_install=True) for fault in faults))

    def test_archives_that_do_not_come(self) -> None:
        faults = (
            Fault(
                "without end",
                lambda case: case.offer_behaving(ARCHIVE, Behavior(body=MUCH, endless=True)),
                "The update server sends more than it should.",
            ),
            Fault(
                "announced as larger than the feed tells",
                lambda case: case.offer_behaving(ARCHIVE, Behavior(body=MUCH)),
                f"The update server sends more than it should ({MIB} bytes).",
            ),
            Fault(
                "from an address without encryption",
                lambda case: case.offer_behaving(ARCHIVE, redirect("http://127.0.0.1:9/archive")),
                "The update server leads to an address that is not secure (http://127.0.0.1:9/archive).",
            ),
            Fault(
                "from a server that goes in the middle",
                lambda case: case.offer_behaving(ARCHIVE, Behavior(cut_after=100)),
                "The connection to the update server has ended early (Connection closed).",
            ),
            Fault(
                "without a signature",
                lambda case: case.offer_behaving(f"{ARCHIVE}.minisig", Behavior(status=404, body="")),
                "The update server does not have the file (404 Not Found).",
            ),
            Fault(
                "from a server that stops in the middle, but stays",
                lambda case: case.offer_behaving(ARCHIVE, Behavior(hang_after=100)),
                "The update server does not answer.",
                patience=SILENCE + PATIENCE,
            ),
        )
        self.try_all(*(dataclasses.replace(fault, after_install=True) for fault in faults))

    def test_disks_that_are_full(self) -> None:
        faults = (
            Fault(
                "for the download",
                lambda case: case.offer_on_full_disk(os.urandom(3 * MIB)),
                "The download can't be stored: No space left on device.",
            ),
            Fault(
                "for what is in it",
                lambda case: case.offer_on_full_disk(bytes(3 * MIB)),
                "The download can't be unpacked: No space left on device.",
            ),
        )
        self.try_all(*(dataclasses.replace(fault, after_install=True) for fault in faults))

    def test_a_place_that_can_not_be_written_is_told_of_before_the_download(self) -> None:
        self.over_place("--bind", str(self.place))
        subprocess.run(["mount", "-o", "remount,bind,ro", str(self.place)], check=True, timeout=10)

        self.meet(
            Fault(
                "read-only",
                Faults.offer_good,
                "Tarnwick can't be replaced where it is: it lies on a read-only file system.",
                after_install=True,
            )
        )

        self.assertEqual(self.server.paths(), [FEED, SIGNATURE])
        self.holds()

    def test_two_programs_do_not_update_one_folder(self) -> None:
        other = self.place / ".Tarnwick.app.update"
        self.offer_good()
        self.start()
        self.check_for_updates()
        self.wait_for(f"Version {NEW} can be installed now.")
        other.mkdir()
        (other / "archive.tar.zst").write_text("half of the other's", encoding="ascii")
        with open(other / "update.lock", "w", encoding="ascii") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)

            self.choose("Install")

            self.wait_for("Another Tarnwick is updating this folder.")
            self.holds(beside=(other.name,))
            self.assertEqual((other / "archive.tar.zst").read_text(encoding="ascii"), "half of the other's")

    def test_the_second_key_is_trusted_too(self) -> None:
        self.offer_archive_of(self.spare_key)
        self.spare_key.sign(self.files / "feed.json")
        self.start()

        self.check_for_updates()
        self.wait_for(f"Version {NEW} can be installed now.")
        self.choose("Install")

        self.wait_for(f"Tarnwick {NEW} is ready")


if __name__ == "__main__":
    unittest.main()
