"""The program in GNOME Shell on Wayland."""

from __future__ import annotations

import pathlib
import shutil
import unittest

from endtoend.waiting import eventually

from .checks import NEAR, distance
from .desktops import START_SECONDS
from .heavy_panels import GnomeWaylandPanel
from .pictures import Rectangle
from .program import APPLICATION, PATIENCE, PROGRAM
from .test_gnome import Gnome
from .x11 import MIDDLE

# Far from the end of the bar, where the drop-down opens for want of a place.
AT_THE_LEFT = """
[org/gnome/shell/extensions/appindicator]
tray-pos='left'
"""
# Of the build that the program is from.
EXTENSIONS = pathlib.Path(PROGRAM).resolve().parents[1] / "share/gnome-shell/extensions"

# The others are tried on X11: there the shell can be restarted alone.
CHOSEN = (
    "test_it_is_drawn_readably_in_the_panel",
    "test_a_click_opens_the_drop_down_and_escape_closes_it",
    "test_a_second_click_on_the_icon_closes_it_for_good",
    "test_a_click_elsewhere_closes_it",
    "test_a_second_start_opens_the_drop_down_of_the_first",
    "test_a_double_click_opens_the_drop_down",
    "test_a_right_click_shows_the_menu_that_the_panel_draws",
    "test_a_question_comes_to_the_front_and_sigterm_ends_it",
)


class GnomeOnWayland(Gnome):
    panel = GnomeWaylandPanel


class GnomeThatNotifies(Gnome):
    panel = GnomeWaylandPanel

    def test_the_shell_shows_a_notification(self) -> None:
        self.check_notification()


class GnomeThatTellsPlaces(GnomeWaylandPanel):
    """With our own extension, from the tree that the program was built in."""

    name = "gnome-places"
    extensions = "['ubuntu-appindicators@ubuntu.com', 'item-place@tarnwick.org', 'item-place-43@tarnwick.org']"
    is_on = True

    def start_display(self) -> None:
        super().start_display()
        shutil.copytree(EXTENSIONS, self.session.data / "gnome-shell/extensions")
        keyfile = self.session.config / "glib-2.0/settings/keyfile"
        self.session.write(keyfile, keyfile.read_text(encoding="utf-8") + AT_THE_LEFT)

    def start_panel(self) -> None:
        super().start_panel()
        if self.is_on:
            eventually(self.tells_places, START_SECONDS, "the extension is on the bus")

    def tells_places(self) -> bool:
        return self.session.bus.owner("org.tarnwick.ItemPlace") is not None

    @property
    def strip(self) -> Rectangle:
        beside_workspaces = 64  # GNOME 43 has the word "Activities" there, which does not move
        return Rectangle(beside_workspaces, 0, self.area.width * 3 // 8 - beside_workspaces, self.height)


class GnomeWithTheExtension(Gnome):
    panel = GnomeThatTellsPlaces

    def test_a_middle_click_opens_the_drop_down_below_the_item(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        self.desktop.click(*place.center, MIDDLE)
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)

    def test_a_second_start_opens_it_below_the_item(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        program.start_again()
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)


class GnomeThatKnowsTheExtension(GnomeThatTellsPlaces):
    """It is installed and switched off."""

    name = "gnome-offer"
    extensions = GnomeWaylandPanel.extensions
    is_on = False


class GnomeWithTheOffer(Gnome):
    panel = GnomeThatKnowsTheExtension

    def test_the_extension_is_offered_once_and_switched_on(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        self.desktop.click(*place.center, MIDDLE)
        self.opened(program)

        def is_offered() -> bool:
            return "Switch On" in self.desktop.accessible(APPLICATION).texts()

        eventually(is_offered, PATIENCE, "the offer")
        self.desktop.screenshot("offer.png")
        self.desktop.act(APPLICATION, "Switch On")
        eventually(self.desktop.tells_places, PATIENCE, "the extension is on the bus")
        eventually(lambda: not is_offered(), PATIENCE, "the offer has gone")
        self.desktop.key("Escape")
        self.wait_until_closed(program)
        self.desktop.click(*place.center, MIDDLE)
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    own = [case(name) for case in (GnomeThatNotifies, GnomeWithTheExtension, GnomeWithTheOffer) for name in vars(case) if name.startswith("test_")]
    return unittest.TestSuite([*map(GnomeOnWayland, CHOSEN), *own])
