"""Processes of an update that are killed at one step after another: a whole version starts, and the user is told."""

from __future__ import annotations

import contextlib
import dataclasses
import hashlib
import os
import pathlib
import signal
import unittest
from collections.abc import Callable, Iterator

from endtoend.waiting import eventually
from update.server import Behavior

from .panels import XfcePanel
from .program import PATIENCE
from .updates import NEW, OLD, UpdateCase

LEFT_BEHIND = ".Tarnwick.app.update"
LOST = "The updater has ended unexpectedly."
# Seconds that a new version has to run.
TRIAL = 60
BROUGHT_BACK = f"Tarnwick {NEW} did not run on this machine, so version {OLD} is back."


@dataclasses.dataclass(frozen=True)
class Step:
    """Before the n-th such system call of a thread, on a path where one is named. The path is relative to the place."""

    call: str
    path: str | None = None
    number: int = 1

    def __str__(self) -> str:
        return f"{self.call} {self.number} {self.path or ''}"


# What the process does that checks, and the one that downloads.
CHECKING = (Step("execve"), Step("openat", "Tarnwick.app/Information.json"))
DOWNLOADING = (
    Step("mkdir", LEFT_BEHIND),
    Step("openat", f"{LEFT_BEHIND}/archive.tar.zst"),
    Step("write", f"{LEFT_BEHIND}/archive.tar.zst"),
    Step("write", f"{LEFT_BEHIND}/archive.tar.zst", 5),
    Step("read", f"{LEFT_BEHIND}/archive.tar.zst"),
    Step("openat", f"{LEFT_BEHIND}/archive.tar.zst", 2),
    Step("mkdir", f"{LEFT_BEHIND}/unpacked"),
    Step("openat", f"{LEFT_BEHIND}/unpacked/Tarnwick.app/bin"),
    Step("openat", f"{LEFT_BEHIND}/unpacked/Tarnwick.app/bin", 3),
    Step("write", f"{LEFT_BEHIND}/unpacked/Tarnwick.app/bin/tarnwick", 5),
    Step("symlinkat"),
    Step("syncfs"),
    Step("openat", f"{LEFT_BEHIND}/update.json.new"),
    Step("rename", f"{LEFT_BEHIND}/update.json.new"),
)
# What the program does at its end, with the old version in its place and with the new one.
BEFORE_EXCHANGE = (Step("rename", f"{LEFT_BEHIND}/update.json.new"), Step("renameat2"))
# The last one is the new version's first look, and that of the process of the old version that watches over it.
AFTER_EXCHANGE = (
    Step("fsync", "."),
    Step("openat", f"{LEFT_BEHIND}/update.json.new", 2),
    Step("clone"),
    Step("openat", f"{LEFT_BEHIND}/update.json", 2),
)


class XfceWithTracer(XfcePanel):
    name = "xfce-kills"
    executables = (*XfcePanel.executables, "strace")


def content(folder: pathlib.Path) -> dict[str, str]:
    """Of all files and links below."""
    found = {}
    for path in folder.rglob("*"):
        if path.is_symlink():
            found[str(path.relative_to(folder))] = f"to {os.readlink(path)}"
        elif path.is_file():
            found[str(path.relative_to(folder))] = hashlib.sha256(path.read_bytes()).hexdigest()
    return found


def state_and_group(process: pathlib.Path) -> tuple[str, int]:
    """In the system's words; "X" is one that has gone."""
    with contextlib.suppress(OSError):
        state, _, group = (process / "stat").read_text(encoding="ascii", errors="replace").rpartition(")")[2].split()[:3]
        return state, int(group)
    return "X", 0


def has_ended(process: int) -> bool:
    """Also when nobody has asked for its status yet."""
    return state_and_group(pathlib.Path(f"/proc/{process}"))[0] in "XZ"


def is_in(group: int, process: pathlib.Path) -> bool:
    if not process.name.isdigit():
        return False
    state, own = state_and_group(process)
    return own == group and state not in "XZ"


class Kills(UpdateCase, unittest.TestCase):
    panel = XfceWithTracer

    def setUp(self) -> None:
        self.contents: dict[str, dict[str, str]] = {}
        super().setUp()
        self.offer(self.release())

    def bundle_of(self, folder: pathlib.Path, version: str) -> pathlib.Path:
        """With a link, and with a file at its end that differs between versions."""
        super().bundle_of(folder, version)
        (folder / "tarnwick").symlink_to("bin/tarnwick")
        (folder / "share/version").write_text(version, encoding="ascii")
        self.contents[version] = content(folder)
        return folder

    @contextlib.contextmanager
    def killed_at(self, step: Step, process: int) -> Iterator[None]:
        """The process, or one that it starts in the meantime."""
        path = [] if step.path is None else ["-P", os.path.normpath(self.place / step.path)]
        tracer = self.desktop.session.spawn(
            "strace",
            ["strace", "-f", "-qq", "-o", str(self.desktop.session.logs / "trace.log"), "-p", str(process), *path,
             "-e", f"trace={step.call}", "-e", f"inject={step.call}:signal=KILL:when={step.number}"],
        )  # fmt: skip
        eventually(lambda: self.is_traced(process), PATIENCE, "the tracer has every thread")
        try:
            yield
        finally:
            tracer.terminate()
            tracer.wait(PATIENCE)
        trace = (self.desktop.session.logs / "trace.log").read_text(encoding="utf-8", errors="replace")
        self.assertIn("killed by SIGKILL", trace, "the step never came")

    @staticmethod
    def is_traced(process: int) -> bool:
        threads = pathlib.Path(f"/proc/{process}/task").iterdir()
        return not any("TracerPid:\t0\n" in (thread / "status").read_text(encoding="utf-8") for thread in threads)

    def kill(self) -> None:
        """Its locks are gone afterwards."""
        self.program.send(signal.SIGKILL)
        self.assertEqual(self.program.exit_status(), -signal.SIGKILL)

    def of_group(self) -> list[int]:
        """The program, and what it has left behind."""
        group = self.program.process.pid
        return [int(entry.name) for entry in pathlib.Path("/proc").iterdir() if is_in(group, entry)]

    def is_whole(self, version: str) -> None:
        self.assertEqual(self.version_in_place(), version)
        self.assertEqual(content(self.bundle), self.contents[version])

    def told(self, sentence: str) -> None:
        self.wait_for(sentence)
        self.choose("OK")
        eventually(lambda: not self.is_open(), PATIENCE, "the window closes")

    def starts_clean(self, version: str) -> None:
        """As the user starts it after all that."""
        self.start()
        self.is_whole(version)
        self.assertEqual(self.beside, [])

    def starts_on_trial(self) -> None:
        """As the user starts it: it is the new version, and the old one waits."""
        self.start()
        self.is_whole(NEW)
        self.assertEqual(self.beside, [LEFT_BEHIND])

    def each(self, steps: tuple[Step | None, ...], meet: Callable[[Step | None], None]) -> None:
        """With a place of its own for each."""
        for number, step in enumerate(steps):
            with self.subTest(str(step)):
                if number > 0:
                    self.setUp()
                meet(step)
            self.doCleanups()

    def test_a_check_or_a_download_that_is_killed_is_told_of(self) -> None:
        program = self.start()
        for step in CHECKING + DOWNLOADING:
            with self.subTest(str(step)):
                if step in CHECKING:
                    with self.killed_at(step, program.process.pid):
                        self.check_for_updates()
                        self.wait_for(LOST)
                else:
                    self.find()
                    with self.killed_at(step, program.process.pid):
                        self.choose("Install")
                        self.wait_for(LOST)
                self.assertEqual(self.beside, [])
                self.is_whole(OLD)
                self.told(LOST)
        self.kill()
        self.starts_clean(OLD)

    def test_a_program_that_is_killed_in_a_download_leaves_nothing(self) -> None:
        self.server.behave(f"/Tarnwick-{NEW}.tar.zst", Behavior(hang_after=100_000))
        self.start()
        self.find()
        self.choose("Install")
        archive = self.place / LEFT_BEHIND / "archive.tar.zst"
        eventually(lambda: archive.exists() and archive.stat().st_size == 100_000, PATIENCE, "a part of the archive")

        (worker,) = self.of_bundle("tarnwick-update")

        self.kill()

        eventually(lambda: has_ended(worker), PATIENCE, "the download ends with it")
        self.starts_clean(OLD)

    def test_killed_when_it_is_ready_or_before_the_exchange_the_new_version_starts_on_trial_all_the_same(self) -> None:
        def meet(step: Step | None) -> None:
            if step is None:
                self.make_ready()
                self.kill()
            else:
                self.restart_killed_at(step)
            self.is_whole(OLD)

            self.starts_on_trial()

            self.kill()
            self.told(BROUGHT_BACK)
            self.is_whole(OLD)
            self.assertEqual(self.beside, [])

        self.each((None, *BEFORE_EXCHANGE), meet)

    def test_killed_after_the_exchange_the_new_version_starts_on_trial(self) -> None:
        def meet(step: Step) -> None:
            self.restart_killed_at(step)
            self.starts_on_trial()

            self.kill()

            self.starts_clean(OLD)
            self.told(BROUGHT_BACK)

        self.each(AFTER_EXCHANGE, meet)

    def test_a_new_version_that_is_killed_at_its_first_step_is_brought_back_from_at_once(self) -> None:
        self.make_ready()
        with self.killed_at(Step("rename", f"{LEFT_BEHIND}/update.json.new", 3), self.program.process.pid):
            self.choose("Restart Now")
            self.wait_for(BROUGHT_BACK)

        self.is_whole(OLD)
        self.assertEqual(self.beside, [])
        self.told(BROUGHT_BACK)

    def test_killed_at_each_start_of_a_version_the_old_one_is_back_all_the_same(self) -> None:
        self.restart_killed_at(Step("execve", "Tarnwick.app/bin/tarnwick"))

        self.starts_clean(OLD)

        self.told(BROUGHT_BACK)

    def test_a_new_version_that_is_killed_later_in_its_trial_is_too(self) -> None:
        self.update()

        self.kill()

        self.told(BROUGHT_BACK)
        self.is_whole(OLD)
        self.assertEqual(self.beside, [])

    def test_killed_at_the_end_of_its_trial_the_new_version_stays(self) -> None:
        self.update()
        # Between the removal of the record and that of the old version.
        with self.killed_at(Step("fsync", LEFT_BEHIND), self.program.process.pid):
            self.assertEqual(self.program.process.wait(TRIAL + PATIENCE), -signal.SIGKILL)
        self.assertEqual(self.beside, [LEFT_BEHIND])
        eventually(lambda: not self.of_old_version(), PATIENCE, "the old version watches no more")
        self.is_whole(NEW)

        self.starts_clean(NEW)

    def test_a_way_back_that_is_killed_is_gone_at_the_next_start(self) -> None:
        self.update()
        (guard,) = [process for process in self.of_old_version() if process != self.program.process.pid]
        with self.killed_at(Step("renameat2"), guard):
            self.kill()
            eventually(lambda: has_ended(guard), PATIENCE, "it is killed, too")
        self.is_whole(NEW)

        self.starts_clean(OLD)

        self.told(BROUGHT_BACK)

    def restart_killed_at(self, step: Step) -> None:
        """Into the new version, with the program itself killed."""
        self.make_ready()
        with self.killed_at(step, self.program.process.pid):
            self.choose("Restart Now")
            self.assertEqual(self.program.exit_status(), -signal.SIGKILL)
            eventually(lambda: not self.of_group(), PATIENCE, "what watches is killed, too")

    def update(self) -> None:
        """The new version runs, and the old one watches."""
        self.make_ready()
        self.choose("Restart Now")
        eventually(lambda: self.version_in_place() == NEW and self.item(), PATIENCE, "the new version's item")

    def of_old_version(self) -> list[int]:
        """The exchange has moved its program."""
        old = str(self.place / LEFT_BEHIND / "unpacked")
        return [process for process in self.of_bundle() if os.readlink(f"/proc/{process}/exe").startswith(old)]


if __name__ == "__main__":
    unittest.main()
