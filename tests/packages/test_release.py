"""A whole release, made twice: `scripts/test packages` does it."""

from __future__ import annotations

import json
import pathlib
import re
import subprocess
import tempfile
import unittest

from endtoend.built import ROOT
from update.maker import Key

from .system import PATIENCE

FEED = "https://one.example/feed.json"
TIME = "2026-11-23T04:00:00Z"


def day_of_release() -> str:
    metainfo = (ROOT / "packaging/org.tarnwick.tarnwick.metainfo.xml.in").read_text(encoding="utf-8")
    return re.findall(r'date="([^"]+)"', metainfo)[0]


def clone_with_version(folder: pathlib.Path) -> pathlib.Path:
    """What is committed here, as the version that it leads to. The same commit each time."""
    subprocess.run(["git", "clone", "--quiet", ROOT, folder], check=True, timeout=PATIENCE)
    project = (folder / "CMakeLists.txt").read_text(encoding="utf-8")
    version = re.findall(r"^project\(Tarnwick VERSION (\S+)", project, re.MULTILINE)[0]
    changelog = folder / "CHANGELOG.md"
    text = changelog.read_text(encoding="utf-8")
    changelog.write_text(text.replace("## Unreleased", f"## {version} - {day_of_release()}"), encoding="utf-8")
    commit = ["commit", "--quiet", "--allow-empty", "--all", "--message=Release", f"--date={TIME}"]
    subprocess.run(
        ["env", f"GIT_COMMITTER_DATE={TIME}", "git", "-C", folder, "-c", "user.name=one", "-c", "user.email=one@one.example", *commit],
        check=True, timeout=PATIENCE,
    )  # fmt: skip
    return folder


class Release(unittest.TestCase):
    first: pathlib.Path
    second: pathlib.Path
    key: Key

    @classmethod
    def setUpClass(cls) -> None:
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        folder = pathlib.Path(temporary.name)
        cls.key = Key.make(folder, "one")
        cls.first, cls.second = folder / "made", folder / "elsewhere/made anew"
        clones = [clone_with_version(folder / name) for name in ("clone", "another clone")]
        for clone, made in zip(clones, (cls.first, cls.second)):
            options = ["--feed", FEED, "--public-key", cls.key.public, "--secret-key", cls.key.secret, "--signed-at", TIME]
            command = [clone / "packaging/release", made, *options]
            done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE)
            if done.returncode != 0:
                raise AssertionError(done.stderr)

    def test_it_is_the_same_bytes_made_anew_elsewhere(self) -> None:
        first, second = ({file.name: file.read_bytes() for file in folder.iterdir()} for folder in (self.first, self.second))

        self.assertEqual(set(first), set(second))
        self.assertEqual([name for name in first if first[name] != second[name]], [])

    def test_it_has_all_packages_and_the_bundle(self) -> None:
        names = sorted(file.name.split("_")[0] for file in self.first.glob("*.deb"))

        self.assertEqual([name for name in names if "dbgsym" not in name], ["tarnwick", "tarnwick-common", "tarnwick-watch"])
        subprocess.run(["sha256sum", "--quiet", "--check", "SHA256SUMS"], cwd=self.first, check=True, timeout=PATIENCE)
        for name in ("SHA256SUMS", "feed.json", *(file.name for file in self.first.glob("*.tar.zst"))):
            verify = ["minisign", "-V", "-q", "-P", self.key.public, "-m", self.first / name]
            subprocess.run(verify, check=True, timeout=PATIENCE)

    def test_the_bill_names_the_package_of_each_library(self) -> None:
        (file,) = self.first.glob("*.spdx.json")
        bill = json.loads(file.read_text(encoding="utf-8"))
        owners = {
            relation["relatedSpdxElement"]: relation["spdxElementId"]
            for relation in bill["relationships"]
            if relation["relationshipType"] == "CONTAINS"
        }
        libraries = {entry["fileName"]: owners[entry["SPDXID"]] for entry in bill["files"] if entry["fileName"].startswith("./lib/")}

        self.assertEqual(libraries["./lib/libQt6Core.so.6"], "SPDXRef-Package-libqt6core6")
        # The empty data of ICU.
        own = [name for name, owner in libraries.items() if owner == "SPDXRef-Tarnwick"]
        self.assertEqual([name.partition(".so")[0] for name in own], ["./lib/libicudata"])


if __name__ == "__main__":
    unittest.main()
