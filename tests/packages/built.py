"""The built packages, and older versions of them, on a bare system."""

from __future__ import annotations

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from .system import PATIENCE, System, make_bare, release

BUILT = pathlib.Path(os.environ["TARNWICK_PACKAGES"])
INSTALL = "dpkg --install"


def package(name: str) -> pathlib.Path:
    (found,) = BUILT.glob(f"{name}_*.deb")
    return found


def make_older(newer: pathlib.Path, folder: pathlib.Path) -> None:
    """The same package, as an older version."""
    with tempfile.TemporaryDirectory() as content:
        subprocess.run(["dpkg-deb", "--raw-extract", newer, content], check=True, timeout=PATIENCE)
        control = pathlib.Path(content) / "DEBIAN/control"
        text = control.read_text(encoding="utf-8")
        version = next(line.split(": ")[1] for line in text.splitlines() if line.startswith("Version: "))
        control.write_text(text.replace(version, "0.0.1"), encoding="utf-8")
        subprocess.run(["dpkg-deb", "--root-owner-group", "--build", content, folder], check=True, timeout=PATIENCE)


class PackagesCase(unittest.TestCase):
    bare: pathlib.Path
    packages: pathlib.Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.bare = pathlib.Path(folder.name) / "bare"
        make_bare(cls.bare, release())
        cls.packages = pathlib.Path(folder.name) / "packages"
        (cls.packages / "older").mkdir(parents=True)
        for name in ("tarnwick", "tarnwick-common", "tarnwick-watch"):
            shutil.copy2(package(name), cls.packages / f"{name}.deb")
            make_older(package(name), cls.packages / "older")
            (made,) = (cls.packages / "older").glob(f"{name}_*.deb")
            made.rename(cls.packages / "older" / f"{name}.deb")

    def system(self) -> System:
        system = System(self.bare, self.packages)
        self.addCleanup(system.close)
        return system
