"""Where the focus follows the pointer: the drop-down stays while the pointer goes to it over another window."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually, never

from .notifier_checks import NotifierChecks
from .overlay import OverlayDesktop
from .panels import WaybarPanel, XfcePanel
from .pictures import Rectangle
from .program import PATIENCE, Program
from .settings import TITLE as SETTINGS_TITLE

# Longer than the drop-down waits for the focus to come back.
WATCHED_SECONDS = 2
OPENBOX = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><followMouse>yes</followMouse><focusDelay>0</focusDelay></focus>
</openbox_config>
"""


class FollowingXfce(XfcePanel):
    name = "focus-xfce"

    def start_display(self) -> None:
        self.session.write(self.session.config / "openbox/rc.xml", OPENBOX)
        super().start_display()


class FollowingSway(WaybarPanel):
    """As it is without settings."""

    name = "focus-sway"


class OnTheWay(NotifierChecks):
    def over_settings(self, program: Program) -> tuple[int, int]:
        """A point of the settings window, which is open then."""
        item = program.item()
        item.choose(item.row("Settings…"))
        place = eventually(self.settings_window, PATIENCE, "the settings window")
        if isinstance(self.desktop, OverlayDesktop):
            self.desktop.bare = self.desktop.still_picture()
        return place.x + place.width // 4, place.y + place.height // 2

    def settings_window(self) -> Rectangle | None:
        return next((place for title, place in self.desktop.windows() if title == SETTINGS_TITLE), None)

    def test_it_stays_while_the_pointer_goes_over_another_window(self) -> None:
        program = self.started()
        self.addCleanup(self.end_program)
        place = self.shown(program)
        way = self.over_settings(program)
        self.open_drop_down(place)
        window = self.opened(program)

        self.desktop.move(*way)
        self.pointer_arrived(program)
        self.desktop.move(*window.center)

        self.assertTrue(never(lambda: program.drop_down() is None, WATCHED_SECONDS), "it closed")
        self.opened(program)
        self.desktop.screenshot(f"{self.desktop.name}.png")
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def pointer_arrived(self, program: Program) -> None:
        """Over the other window."""


class InOpenbox(OnTheWay, unittest.TestCase):
    panel = FollowingXfce

    def pointer_arrived(self, program: Program) -> None:
        del program
        eventually(lambda: self.desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the other window has the focus")

    def test_it_closes_when_the_pointer_stays_over_another_window(self) -> None:
        program = self.started()
        self.addCleanup(self.end_program)
        place = self.shown(program)
        way = self.over_settings(program)
        self.open_drop_down(place)
        self.opened(program)

        self.desktop.move(*way)

        self.wait_until_closed(program)


class InSway(OnTheWay, unittest.TestCase):
    panel = FollowingSway


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    stays = "test_it_stays_while_the_pointer_goes_over_another_window"
    closes = "test_it_closes_when_the_pointer_stays_over_another_window"
    return unittest.TestSuite((InOpenbox(stays), InOpenbox(closes), InSway(stays)))
