"""A whole release, made twice, and taken by the version before it: `scripts/test packages` does it."""

from __future__ import annotations

import contextlib
import datetime
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from desktop.desktops import Desktop
from desktop.item import Item
from desktop.panels import WaybarPanel, XfcePanel
from endtoend.built import ROOT
from endtoend.waiting import eventually
from update.authority import Authority
from update.maker import Key
from update.server import Behavior, UpdateServer

from .bundles import OnBareSystem
from .system import PATIENCE

HOST = "one.example"
TIME = datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
BEFORE = "0.0.1"
# As assistive technology knows it.
APPLICATION = "tarnwick"
VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON")
SHOWN = 60  # seconds, for what the program shows
RUN = """
cp /packages/authority/* /etc/ssl/certs/
echo '127.0.0.1 {host}' >>/etc/hosts
env {variables} "{app}/tarnwick" --set Hostname=127.0.0.1
"""


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


def processes_of(program: str) -> list[pathlib.Path]:
    """Those in any system that have a program of this path there; from here its path is longer."""
    found = []
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            if os.readlink(process / "exe").endswith(program):
                found.append(process)
    return found


def mapped(process: pathlib.Path) -> set[str]:
    """The files that a process has in memory."""
    return set(re.findall(r" (/.*)$", (process / "maps").read_text(encoding="utf-8"), re.MULTILINE))


class Made:
    """One release, made in two places, and a server of it."""

    def __init__(self, folder: pathlib.Path) -> None:
        self.authority = Authority(folder / "authority")
        self.first, self.second = folder / "made", folder / "elsewhere/made anew"
        self.first.mkdir()
        self.server = UpdateServer(self.first, self.authority.certificate("good", f"DNS:{HOST}"))
        unittest.addModuleCleanup(self.server.stop)
        self.feed = f"https://{HOST}:{self.server.server_address[1]}/feed.json"
        self.key = Key.make(folder, "one")
        clones = [clone_with_version(folder / name) for name in ("clone", "another clone")]
        for clone, made in zip(clones, (self.first, self.second)):
            self.make(clone, made)

    def make(self, clone: pathlib.Path, folder: pathlib.Path) -> None:
        options = ["--feed", self.feed, "--public-key", self.key.public, "--secret-key", self.key.secret, "--signed-at", TIME]
        command = [clone / "packaging/release", folder, *options]
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=2 * PATIENCE)
        if done.returncode != 0:
            raise AssertionError(done.stderr)

    @property
    def archive(self) -> pathlib.Path:
        (found,) = self.first.glob("*.tar.zst")
        return found


made: Made


def setUpModule() -> None:
    global made
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    made = Made(pathlib.Path(folder.name))


class Release(unittest.TestCase):
    def test_it_is_the_same_bytes_made_anew_elsewhere(self) -> None:
        first, second = ({file.name: file.read_bytes() for file in folder.iterdir()} for folder in (made.first, made.second))

        self.assertEqual(set(first), set(second))
        self.assertEqual([name for name in first if first[name] != second[name]], [])

    def test_it_has_all_packages_and_the_bundle(self) -> None:
        names = sorted(file.name.split("_")[0] for file in made.first.glob("*.deb"))

        self.assertEqual([name for name in names if "dbgsym" not in name], ["tarnwick", "tarnwick-common", "tarnwick-watch"])
        subprocess.run(["sha256sum", "--quiet", "--check", "SHA256SUMS"], cwd=made.first, check=True, timeout=PATIENCE)
        for name in ("SHA256SUMS", "feed.json", made.archive.name):
            verify = ["minisign", "-V", "-q", "-P", made.key.public, "-m", made.first / name]
            subprocess.run(verify, check=True, timeout=PATIENCE)

    def test_the_bill_names_the_package_of_each_library(self) -> None:
        (file,) = made.first.glob("*.spdx.json")
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


class TheVersionBefore(OnBareSystem):
    """The same bundle, but that it calls itself an older version."""

    panel: type[Desktop] = XfcePanel

    @classmethod
    def setUpClass(cls) -> None:
        cls.panel.require()
        super().setUpClass()

    def archive(self) -> pathlib.Path:
        return made.archive

    def setUp(self) -> None:
        super().setUp()
        self.file = self.unpacked / "Information.json"
        self.information = json.loads(self.file.read_text(encoding="utf-8"))
        self.file.write_text(json.dumps(self.information | {"version": BEFORE}), encoding="utf-8")
        # A bundle is replaced only by whom it belongs to.
        subprocess.run(["chown", "-R", "root:root", self.shared], check=True, timeout=PATIENCE)
        shutil.copytree(made.authority.store, self.shared / "authority")
        self.addCleanup(made.server.behave, "/feed.json", None)
        made.server.requests.clear()
        self.desktop = self.started(self.panel())
        self.start()

    def start(self) -> None:
        session = self.desktop.session
        variables = " ".join(f"{name}={session.environment[name]}" for name in VARIABLES if name in session.environment)
        script = RUN.format(host=HOST, variables=variables, app=self.app)
        process = self.system.start(script, own_network=False, shared=session.folder)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)

    def check_for_updates(self) -> None:
        program = eventually(lambda: self.desktop.session.bus.process("org.tarnwick.tarnwick"), SHOWN, "the program")
        item = eventually(lambda: Item.of_process(self.desktop, program), SHOWN, "the item")
        item.choose(item.row("Check for Updates…"))

    def wait_for(self, text: str) -> None:
        def says() -> bool:
            return any(text in shown for shown in self.desktop.accessible(APPLICATION).texts())

        eventually(says, SHOWN, f"the window says: {text}")

    def test_it_becomes_the_one_that_was_made(self) -> None:
        version = self.information["version"]
        self.check_for_updates()
        self.wait_for(f"Version {version} can be installed now. You have version {BEFORE}.")
        self.desktop.screenshot(f"{self.id().rpartition('.')[2]}-{self.desktop.name}-{self.suite}.png")
        self.desktop.act(APPLICATION, "Install")
        self.wait_for(f"Tarnwick {version} is ready")
        self.desktop.act(APPLICATION, "Restart Now")

        eventually(lambda: json.loads(self.file.read_text(encoding="utf-8")) == self.information, SHOWN, "the new version")
        self.check_for_updates()
        self.wait_for(f"Version {version} is the newest one.")

    def test_https_is_by_the_library_of_the_bundle(self) -> None:
        made.server.behave("/feed.json", Behavior(mute=True))
        self.check_for_updates()
        eventually(lambda: "/feed.json" in made.server.paths(), SHOWN, "the feed is asked for")

        (process,) = processes_of(f"{self.app}/bin/tarnwick-update")
        libraries = [name for name in mapped(process) if re.search(r"/lib(ssl|crypto)\.so", name)]
        self.assertEqual(len(libraries), 2, libraries)
        self.assertEqual([name for name in libraries if f"{self.app}/lib/" not in name], [])


class OnDebian12(TheVersionBefore, unittest.TestCase):
    suite = "bookworm"


class OnDebian13(TheVersionBefore, unittest.TestCase):
    suite = "trixie"


class OnDebian13InWayland(TheVersionBefore, unittest.TestCase):
    suite = "trixie"
    panel = WaybarPanel


if __name__ == "__main__":
    unittest.main()
