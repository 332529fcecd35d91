"""The harness alone: each installed panel shows and uses the smallest possible item."""

from __future__ import annotations

import pathlib
import subprocess
import unittest

from endtoend.waiting import eventually

from . import heavy_panels, panels, plasma_panels, scratch_item
from .desktops import Desktop
from .pictures import changed
from .x11 import RIGHT

COLOR = tuple(scratch_item.COLOR.to_bytes(4, "big")[1:])
# Panels may dim an icon or blend it a little.
TINT = 30


class HarnessChecks:
    """Checks for one panel; the classes below choose which."""

    panel: type[Desktop]
    kind = "notifier"
    left_click = "Activate"

    @classmethod
    def setUpClass(cls) -> None:
        missing = cls.panel.missing()
        if missing:
            raise unittest.SkipTest(f"not installed: {', '.join(missing)}")
        cls.desktop = cls.panel()
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)
        cls.desktop.park_pointer()
        cls.before = cls.desktop.still_picture()

    def start_item(self) -> subprocess.Popen[bytes]:
        session = self.desktop.session
        (session.logs / "item.log").unlink(missing_ok=True)
        script = pathlib.Path(scratch_item.__file__)
        item = session.spawn("item", ["/usr/bin/python3", "-B", session.own_copy(str(script)), self.kind])
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(session.kill, item)
        self.wait_for("registered")
        return item

    def wait_for_empty_panel(self) -> None:
        self.desktop.park_pointer()

        def is_empty() -> bool:
            self.desktop.key("Escape")  # A menu that was just opening.
            return changed(self.before, self.desktop.picture(), self.desktop.strip) is None

        eventually(is_empty, 20, "the panel is empty again")

    def wait_for(self, word: str) -> list[str]:
        """The item's line that begins with the word."""

        def line() -> list[str] | None:
            lines = self.desktop.session.log("item").splitlines()
            return next((line.split() for line in lines if line.startswith(word)), None)

        return eventually(line, 10, f"the item is told: {word}")

    def test_an_item_is_drawn_and_goes_with_its_program(self) -> None:
        item = self.start_item()

        place = self.desktop.item_rectangle(self.before)

        picture = self.desktop.screenshot(f"harness-{self.desktop.name}.png")
        for drawn, wanted in zip(picture.getpixel(place.center), COLOR, strict=True):
            self.assertAlmostEqual(drawn, wanted, delta=TINT)
        self.desktop.session.kill(item)
        self.wait_for_empty_panel()

    def test_a_left_click_reaches_the_item(self) -> None:
        self.start_item()
        self.desktop.click(*self.desktop.item_rectangle(self.before).center)

        self.wait_for(self.left_click)

    def test_a_killed_panel_comes_back_empty(self) -> None:
        self.desktop.kill_panel()
        self.assertFalse(self.desktop.has_host())

        self.desktop.start_panel()

        self.assertTrue(self.desktop.has_host())
        self.wait_for_empty_panel()


class NotifierHarnessChecks(HarnessChecks):
    """For panels that host items over the bus."""

    def test_the_menu_that_the_panel_draws_comes_and_goes(self) -> None:
        self.start_item()
        place = self.desktop.item_rectangle(self.before)
        before = self.desktop.still_picture()
        self.desktop.click(*place.center, RIGHT)
        eventually(lambda: changed(before, self.desktop.picture(), self.desktop.rest), 10, "a menu")

        self.desktop.dismiss_menu()

        eventually(lambda: changed(before, self.desktop.picture(), self.desktop.rest) is None, 20, "the menu closes")

    def test_assistive_technology_can_be_asked(self) -> None:
        eventually(lambda: self.desktop.accessible().children, 20, "an application in the accessible tree")


class Xfce(NotifierHarnessChecks, unittest.TestCase):
    panel = panels.XfcePanel


class Lxqt(NotifierHarnessChecks, unittest.TestCase):
    panel = panels.LxqtPanel


class Tint2(HarnessChecks, unittest.TestCase):
    panel = panels.Tint2Panel
    kind = "tray"

    def test_a_right_click_reaches_the_item(self) -> None:
        self.start_item()
        self.desktop.click(*self.desktop.item_rectangle(self.before).center, RIGHT)

        self.wait_for("ContextMenu")


class Waybar(NotifierHarnessChecks, unittest.TestCase):
    panel = panels.WaybarPanel


class Gnome(NotifierHarnessChecks, unittest.TestCase):
    panel = heavy_panels.GnomePanel
    left_click = "Event"  # Of a menu that opens.


class Plasma(NotifierHarnessChecks, unittest.TestCase):
    panel = plasma_panels.PlasmaPanel
