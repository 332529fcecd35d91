"""The program in GNOME Shell: an icon with a label, and every click opens the menu that the shell draws."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import NotifierChecks, never
from .panels import GnomePanel
from .pictures import Rectangle
from .program import PATIENCE

# So far does an open item's highlight reach beside it.
HIGHLIGHT = 4


class Gnome(NotifierChecks, unittest.TestCase):
    panel = GnomePanel
    shows_text_beside = True
    first_row = 25

    def open_drop_down(self, place: Rectangle) -> None:
        """A double click: the first one alone opens the shell's menu, which the second one closes."""
        idle = self.beside(place)
        for _ in range(2):
            self.desktop.click(*place.center)
        # The shell has the keyboard until its menu has gone, and with it the highlight of the item.
        assert self.program is not None
        eventually(self.program.drop_down, PATIENCE, "the drop-down")
        self.desktop.park_pointer()
        eventually(lambda: self.beside(place) == idle, PATIENCE, "the shell's menu closes")

    def beside(self, place: Rectangle) -> object:
        """The color where an item is highlighted while its menu is open, or the pointer on it."""
        return self.desktop.picture().getpixel((place.x - HIGHLIGHT, place.center[1]))

    def test_a_second_click_on_the_icon_closes_it_for_good(self) -> None:
        program = self.running()
        place = self.shown(program)
        idle = self.beside(place)
        self.open_drop_down(place)
        self.opened(program)

        self.desktop.click(*place.center)

        self.wait_until_closed(program)
        self.desktop.park_pointer()

        def menu_is_closed() -> bool:
            # The shell takes its time to tell a click from a double click before it opens its menu.
            self.desktop.dismiss_menu()
            return bool(never(lambda: self.beside(place) != idle))

        eventually(menu_is_closed, PATIENCE, "the shell's menu closes")
        self.assertTrue(never(program.drop_down), "it opened again")

    def test_a_single_click_shows_the_menu_that_the_shell_draws(self) -> None:
        program = self.running()
        place = self.shown(program)
        before = self.desktop.picture()

        self.desktop.click(*place.center)

        eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")
        self.desktop.dismiss_menu()
        eventually(lambda: self.menu_drawn(before) is None, PATIENCE, "the menu closes")
