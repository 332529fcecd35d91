"""The desktop program in a bundle, with a maker and a server of its updates."""

from __future__ import annotations

import json
import os
import pathlib
import shutil
import signal
import subprocess
from collections.abc import Sequence

from endtoend import built
from endtoend.waiting import eventually
from update.authority import Authority
from update.maker import Key, Release, make_bundle, pack, publish
from update.server import UpdateServer

from .desktops import Desktop
from .item import Item
from .program import APPLICATION, PATIENCE, PROGRAM, Program

TITLE = "Software Update"
CHECK = "Check for Updates…"
WATCH = built.program("tarnwick-watch", os.environ.get("TARNWICK_WATCH"))
OLD, NEW = "1.0", "1.1"


class BundledProgram(Program):
    """From a bundle instead of the build."""

    bundle: pathlib.Path  # before the constructor

    def __init__(self, desktop: Desktop, bundle: pathlib.Path, **settings: object) -> None:
        self.bundle = bundle
        super().__init__(desktop, **settings)

    def _spawn(self, log: str, arguments: Sequence[str]) -> subprocess.Popen[bytes]:
        return self.session.spawn(log, [*self.prefix, str(self.bundle / "bin/tarnwick"), *arguments])


class UpdateCase:
    """A bundle of the old version that runs in a panel, and a server that may offer the new one."""

    panel: type[Desktop]

    @classmethod
    def setUpClass(cls) -> None:
        cls.panel.require()
        cls.desktop = cls.panel()
        cls.desktop.name = f"update-{cls.panel.name}"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)
        session = cls.desktop.session
        cls.folder = session.folder / "updates"
        cls.folder.mkdir()
        cls.authority = Authority(cls.folder / "authority")
        cls.enterClassContext(cls.authority.trusted())
        cls.key = Key.make(cls.folder, "one")
        cls.spare_key = Key.make(cls.folder, "two")
        cls.stranger = Key.make(cls.folder, "stranger")
        cls.certificate = cls.authority.certificate("good")

    def setUp(self) -> None:
        self.files = self.folder / "files"
        shutil.rmtree(self.files, ignore_errors=True)
        self.files.mkdir()
        self.server = UpdateServer(self.files, self.certificate)
        self.addCleanup(self.server.stop)
        self.place = self.folder / "Programs é"
        shutil.rmtree(self.place, ignore_errors=True)
        self.place.mkdir()
        self.bundle = self.bundle_of(self.place / "Tarnwick.app", OLD)
        (self.desktop.session.config / "Tarnwick/settings.json").unlink(missing_ok=True)
        (self.data / "updates.json").unlink(missing_ok=True)
        self.desktop.session.give_away()

    @property
    def data(self) -> pathlib.Path:
        return self.desktop.session.data / "Tarnwick"

    def bundle_of(self, folder: pathlib.Path, version: str) -> pathlib.Path:
        return make_bundle(
            folder, version, pathlib.Path(PROGRAM).parent, f"{self.server.address}/feed.json", [self.key, self.spare_key]
        )

    def release(self, version: str = NEW, script: str | None = None) -> Release:
        """Packed and signed; not yet in the feed. A script takes the place of the desktop program."""
        bundle = self.bundle_of(self.folder / "made" / "Tarnwick.app", version)
        if script is not None:
            (bundle / "bin/tarnwick").write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        return pack(bundle, self.files, version, self.key)

    def offer(self, *releases: Release) -> None:
        publish(self.files, self.server.address, list(releases), self.key)

    def start(self, **settings: object) -> BundledProgram:
        program = BundledProgram(self.desktop, self.bundle, **settings)
        self.addCleanup(self.end, program)
        self.program = program
        program.item_up()
        return program

    def end(self, program: BundledProgram) -> None:
        program.end()
        for process in self.of_bundle():
            os.kill(process, signal.SIGKILL)
        eventually(lambda: not self.of_bundle(), PATIENCE, "nothing of the bundle runs")

    def of_bundle(self, name: str = "tarnwick") -> list[int]:
        """The processes that run from the bundle's place, or from that of the version before it."""
        found = []
        for process in pathlib.Path("/proc").iterdir():
            if process.name.isdigit():
                try:
                    program = os.readlink(process / "exe")
                except OSError:
                    continue
                if program.startswith(str(self.place)) and program.endswith(f"/bin/{name}"):
                    found.append(int(process.name))
        return found

    def version_in_place(self) -> str:
        return json.loads((self.bundle / "Information.json").read_text(encoding="utf-8"))["version"]

    @property
    def beside(self) -> list[str]:
        """What lies beside the bundle."""
        return sorted(entry.name for entry in self.place.iterdir() if entry.name != self.bundle.name)

    def check_for_updates(self) -> None:
        """As a user does it, from the panel's menu."""
        item = eventually(self.item, PATIENCE, "the item")
        item.choose(item.row(CHECK))

    def item(self) -> Item | None:
        return Item.of_process(self.desktop, self.program.process.pid)

    def texts(self) -> list[str]:
        return self.desktop.accessible(APPLICATION).texts()

    def wait_for(self, text: str, patience: float = PATIENCE) -> None:
        eventually(lambda: any(text in shown for shown in self.texts()), patience, f"the window says: {text}")

    def choose(self, button: str) -> None:
        self.desktop.act(APPLICATION, button)

    def is_open(self, window: str = TITLE) -> bool:
        return any(title == window for title, _ in self.desktop.windows())

    def find(self) -> None:
        self.check_for_updates()
        self.wait_for(f"Version {NEW} can be installed now.")

    def make_ready(self) -> None:
        """What is offered."""
        self.start()
        self.find()
        self.choose("Install")
        self.wait_for(f"Tarnwick {NEW} is ready")
