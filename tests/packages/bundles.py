"""Bundles on bare systems, shown on a display of this machine."""

from __future__ import annotations

import os
import pathlib
import subprocess
import tempfile

from desktop.desktops import Desktop
from desktop.session import NOBODY

from .system import PATIENCE, System, make_bare

FOLDER = "Zoë’s Programme/Neu – 2"


def unpack(archive: pathlib.Path, folder: pathlib.Path) -> pathlib.Path:
    """As an ordinary user, who may not see the archive's folder."""
    folder.mkdir(parents=True)
    for made in (folder, *folder.parents[:2]):
        os.chown(made, NOBODY, NOBODY)
    with archive.open("rb") as content:
        subprocess.run(
            ["tar", "-C", folder, "--zstd", "-xf", "-"],
            stdin=content, check=True, timeout=PATIENCE, user=NOBODY, group=NOBODY, extra_groups=[],
        )  # fmt: skip
    return folder / "Tarnwick.app"


class OnBareSystem:
    """A bundle on a bare system of one release. What is shared has the path /packages there."""

    suite: str
    bare: pathlib.Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.bare = pathlib.Path(folder.name) / "bare"
        make_bare(cls.bare, cls.suite)

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.shared = pathlib.Path(folder.name)
        self.shared.chmod(0o755)
        self.unpacked = unpack(self.archive(), self.shared / FOLDER)
        self.app = f"/packages/{FOLDER}/Tarnwick.app"
        self.system = System(self.bare, self.shared)
        self.addCleanup(self.system.close)

    def archive(self) -> pathlib.Path:
        raise NotImplementedError

    def started(self, desktop: Desktop) -> Desktop:
        desktop.start()
        self.addCleanup(desktop.stop)
        return desktop
