"""The program in a bundle, which no package has put into the menu of applications."""

from __future__ import annotations

import json
import pathlib
import subprocess
import tempfile
import unittest

from endtoend.waiting import eventually

from .panels import XfcePanel
from .program import APPLICATION, HOST, PATIENCE, PROGRAM

BUILD = pathlib.Path(PROGRAM).parents[1]
TITLE = "Tarnwick Settings"
NAME = "org.tarnwick.tarnwick"
ENTRY = f"{NAME}.desktop"


class Bundle(unittest.TestCase):
    desktop: XfcePanel

    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.bundle = pathlib.Path(folder.name) / "My programs/Tarnwick.app"
        command = ["cmake", "--install", str(BUILD), "--prefix", str(cls.bundle)]
        subprocess.run(command, check=True, capture_output=True, timeout=PATIENCE)
        cls.desktop = XfcePanel()
        cls.desktop.name = "bundle"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def start(self) -> subprocess.Popen[bytes]:
        process = self.desktop.session.spawn("program", [str(self.bundle / "bin/tarnwick"), "--settings"])
        self.addCleanup(self.desktop.session.kill, process)
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "the window has the keyboard")
        return process

    def offers(self, name: str) -> bool:
        return any(node.role == "push button" and node.name == name for node in self.desktop.accessible(APPLICATION).all())

    def act(self, name: str) -> None:
        eventually(lambda: self.offers(name), PATIENCE, f"the button {name}")
        self.desktop.act(APPLICATION, name)

    def test_it_is_added_to_the_applications_started_from_there_and_taken_out_again(self) -> None:
        session = self.desktop.session
        menu = session.data / "applications" / ENTRY
        login = session.config / "autostart" / ENTRY
        session.write(session.config / "Tarnwick/settings.json", json.dumps({"Hostname": HOST}))
        first = self.start()
        eventually(lambda: self.offers("Add"), PATIENCE, "the offer")
        self.desktop.screenshot("bundle-offer.png")
        self.act("Add")
        eventually(lambda: menu.exists() and login.exists(), PATIENCE, "the entries of the menu and of the session's start")
        eventually(lambda: not self.offers("Add"), PATIENCE, "the offer has gone")
        session.run(["desktop-file-validate", str(menu)])
        session.kill(first)
        eventually(lambda: not session.bus.owner(NAME), PATIENCE, "the first one has gone")

        session.spawn("menu", ["gio", "launch", str(menu)])
        eventually(lambda: session.bus.owner(NAME), PATIENCE, "the program from the menu")
        subprocess.run([self.bundle / "bin/tarnwick", "--settings"], env=session.environment, check=True, timeout=PATIENCE)
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "its window has the keyboard")
        self.act("Advanced")
        self.act("Uninstall…")
        eventually(lambda: "Uninstall Tarnwick" in self.desktop.focused_title(), PATIENCE, "the question")
        self.desktop.screenshot("bundle-uninstall.png")
        self.act("Uninstall")
        eventually(lambda: not menu.exists() and not login.exists(), PATIENCE, "both entries have gone")
        eventually(lambda: self.offers("Add Tarnwick"), PATIENCE, "the row offers to add it")


if __name__ == "__main__":
    unittest.main()
