"""The programs as `cmake --install` puts them somewhere, and what panels get of their icons."""

from __future__ import annotations

import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest
from xml.etree import ElementTree

from endtoend.hardening import lacks_of_hardening
from endtoend.waiting import eventually

from .item import Item
from .panels import XfcePanel
from .program import HOST, PATIENCE, PROGRAM

BUILD = pathlib.Path(PROGRAM).parents[1]
SOURCES = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = ("tarnwick", "tarnwick-watch")
OWN_ICONS = "share/tarnwick/icons"
ICON = "hicolor/scalable/apps/org.tarnwick.tarnwick.svg"


def built_for_release() -> bool:
    cache = (BUILD / "CMakeCache.txt").read_text(encoding="utf-8")
    return "CMAKE_BUILD_TYPE:STRING=Release" in cache


class Installed(unittest.TestCase):
    folder: pathlib.Path
    desktop: XfcePanel

    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        first = pathlib.Path(folder.name) / "first"
        command = ["cmake", "--install", str(BUILD), "--prefix", str(first)]
        subprocess.run(command, check=True, capture_output=True, timeout=PATIENCE)
        cls.folder = first.rename(first.with_name("moved"))
        cls.desktop = XfcePanel()
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def icon_properties(self, program: pathlib.Path) -> dict[str, object]:
        """Of the item of a program that shows bars alone."""
        settings = ("--set", f"Hostname={HOST}", "--set", "ShowText=false")
        process = self.desktop.session.spawn("installed", [str(program), *settings])
        self.addCleanup(self.desktop.session.kill, process)
        item = eventually(lambda: Item.of_process(self.desktop, process.pid), PATIENCE, "the item is registered")

        def known() -> dict[str, object] | None:
            properties = item.properties()
            # The panel is known a moment after the item is there.
            return properties if properties["IconName"] or not properties["IconThemePath"] else None

        return eventually(known, PATIENCE, "the icon")

    def test_the_programs_start_where_they_are_moved_to(self) -> None:
        for name in PROGRAMS:
            done = subprocess.run(
                [self.folder / "bin" / name, "--version"], capture_output=True, text=True, timeout=PATIENCE, check=True
            )

            self.assertRegex(done.stdout, rf"^{name} \d")

    def test_they_find_the_icons_there(self) -> None:
        properties = self.icon_properties(self.folder / "bin/tarnwick")

        folder = self.folder / OWN_ICONS
        self.assertEqual(properties["IconThemePath"], str(folder))
        name = properties["IconName"]
        self.assertTrue((folder / f"hicolor/symbolic/apps/{name}.svg").is_file(), name)
        # Some panels look for icons nowhere else, and read what this names.
        self.assertIn("symbolic/apps", (folder / "hicolor/index.theme").read_text(encoding="utf-8"))

    def test_a_panel_gets_pictures_where_the_icons_are_missing(self) -> None:
        icons = self.folder / OWN_ICONS
        away = icons.rename(icons.with_name("away"))
        self.addCleanup(away.rename, icons)

        properties = self.icon_properties(self.folder / "bin/tarnwick")

        self.assertEqual((properties["IconThemePath"], properties["IconName"]), ("", ""))
        self.assertTrue(properties["IconPixmap"])

    def test_the_build_tree_has_them_too(self) -> None:
        folder = pathlib.Path(self.icon_properties(pathlib.Path(PROGRAM))["IconThemePath"])

        self.assertTrue((folder / ICON).is_file(), folder)

    def test_the_desktop_finds_the_entry_and_its_icon(self) -> None:
        entry = self.folder / "share/applications/org.tarnwick.tarnwick.desktop"
        subprocess.run(["desktop-file-validate", entry], check=True, timeout=PATIENCE)

        self.assertIn("\nIcon=org.tarnwick.tarnwick\n", entry.read_text(encoding="utf-8"))
        self.assertTrue((self.folder / "share/icons" / ICON).is_file())

    def test_it_has_one_identity_everywhere(self) -> None:
        process = self.desktop.session.spawn("identity", [str(self.folder / "bin/tarnwick"), "--set", f"Hostname={HOST}"])
        self.addCleanup(self.desktop.session.kill, process)
        identity = "org.tarnwick.tarnwick"
        eventually(lambda: self.desktop.session.bus.owner(identity), PATIENCE, "its name on the bus")

        entry = (self.folder / f"share/applications/{identity}.desktop").read_text(encoding="utf-8")
        self.assertIn(f"\nIcon={identity}\n", entry)
        self.assertTrue((self.folder / f"share/icons/hicolor/scalable/apps/{identity}.svg").is_file())
        component = ElementTree.parse(self.folder / f"share/metainfo/{identity}.metainfo.xml").getroot()
        self.assertEqual(component.findtext("id"), identity)
        self.assertEqual(component.findtext("launchable"), f"{identity}.desktop")
        self.assertEqual(component.findtext("provides/dbus"), identity)

    def test_software_centers_accept_what_they_show(self) -> None:
        file = self.folder / "share/metainfo/org.tarnwick.tarnwick.metainfo.xml"
        done = subprocess.run(
            ["appstreamcli", "validate", "--pedantic", "--no-net", file], capture_output=True, text=True, timeout=PATIENCE, check=False
        )
        # Debian 12's version does not know the element yet.
        found = [line for line in re.findall(r"^[EWIP]: .*", done.stdout, re.MULTILINE) if "unknown-tag developer" not in line]

        self.assertEqual((done.returncode, found), (0, []))
        version = ElementTree.parse(file).getroot().find("releases/release").get("version")
        told = subprocess.run(
            [self.folder / "bin/tarnwick", "--version"], capture_output=True, text=True, timeout=PATIENCE, check=True
        )
        self.assertEqual(told.stdout.split(), ["tarnwick", version])

    def test_each_program_has_its_manual_page(self) -> None:
        if "TARNWICK_SCDOC:FILEPATH=/" not in (BUILD / "CMakeCache.txt").read_text(encoding="utf-8"):
            self.skipTest("scdoc was missing when the build was configured")
        for name in PROGRAMS:
            page = (self.folder / f"share/man/man1/{name}.1").read_text(encoding="utf-8")
            self.assertIn(f'.TH "{name}" "1"', page)
            done = subprocess.run(
                [self.folder / "bin" / name, "--help"], capture_output=True, text=True, timeout=PATIENCE, check=True
            )
            for option in re.findall(r"--[a-z-]+", done.stdout):
                self.assertIn(option, page.replace("\\-", "-"))

    def test_the_shells_find_the_completion(self) -> None:
        for name in PROGRAMS:
            bash = self.folder / "share/bash-completion/completions" / name
            zsh = self.folder / "share/zsh/site-functions" / f"_{name}"
            fish = self.folder / "share/fish/vendor_completions.d" / f"{name}.fish"
            for file, sign in ((bash, f"complete -F _{name.replace('-', '_')} {name}"), (zsh, f"#compdef {name}\n"), (fish, f"-c {name} ")):
                self.assertIn(sign, file.read_text(encoding="utf-8"), file)

    def test_the_drop_in_lets_every_group_ping(self) -> None:
        drop_in = self.folder / "lib/sysctl.d/60-tarnwick-ping.conf"
        done = subprocess.run(
            ["unshare", "--net", "sh", "-c", 'sysctl -q -p "$1" && cat /proc/sys/net/ipv4/ping_group_range', "sh", drop_in],
            capture_output=True, text=True, timeout=PATIENCE, check=True,
        )  # fmt: skip

        self.assertEqual(done.stdout.split(), ["0", "2147483647"])

    def test_the_unit_starts_the_terminal_program(self) -> None:
        unit = (self.folder / "lib/systemd/user/tarnwick-watch.service").read_text(encoding="utf-8")
        command = re.search(r"^ExecStart=(.*)$", unit, re.MULTILINE)
        assert command is not None
        self.assertRegex(command[1], r"^/.*/bin/tarnwick-watch$")
        if shutil.which("systemd-analyze") is None:
            self.skipTest("systemd-analyze is missing")
        # It also looks whether the program is there.
        moved = self.folder / "tarnwick-watch.service"
        moved.write_text(unit.replace(command[1], str(self.folder / "bin/tarnwick-watch")), encoding="utf-8")
        done = subprocess.run(
            ["systemd-analyze", "verify", "--user", "--man=no", moved],
            env={**os.environ, "XDG_RUNTIME_DIR": str(self.folder)},
            capture_output=True, text=True, timeout=PATIENCE, check=False,
        )  # fmt: skip

        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_gnome_finds_the_extension_for_each_of_its_versions(self) -> None:
        folder = self.folder / "share/gnome-shell/extensions"
        versions = []
        for extension in folder.iterdir():
            self.assertTrue((extension / "extension.js").is_file())
            about = json.loads((extension / "metadata.json").read_text(encoding="utf-8"))
            self.assertEqual(about["uuid"], extension.name)
            versions += about["shell-version"]
        self.assertEqual(sorted(versions), ["43", "44", "45", "46", "47", "48", "49"])

    @unittest.skipUnless(built_for_release(), "other builds name the sources in their checks")
    def test_nothing_names_the_place_of_the_sources(self) -> None:
        for name in PROGRAMS:
            self.assertNotIn(str(SOURCES).encode(), (self.folder / "bin" / name).read_bytes())

    @unittest.skipUnless(built_for_release(), "other builds are not hardened")
    def test_mistakes_in_memory_are_hard_to_use(self) -> None:
        for name in PROGRAMS:
            with self.subTest(name):
                self.assertEqual(lacks_of_hardening(self.folder / "bin" / name), [])


if __name__ == "__main__":
    unittest.main()
