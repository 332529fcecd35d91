"""The program in GNOME Shell: an icon with a label, and every left click opens the menu that the shell draws."""

from __future__ import annotations

import time
import unittest

from PIL import Image

from endtoend.waiting import eventually

from .bus import Listener
from .checks import NEAR, distance, is_readable, stays_closed
from .heavy_panels import GnomePanel, GnomeWithPortals
from .notifier_checks import NotifierChecks
from .pictures import Rectangle
from .program import PATIENCE, Program
from .x11 import MIDDLE, RIGHT


class Gnome(NotifierChecks, unittest.TestCase):
    panel = GnomePanel
    shows_text_beside = True
    first_row = 25

    menu_calls: Listener

    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        # Called when the shell has read the menu, and whenever it opens it.
        rule = "type='method_call',interface='com.canonical.dbusmenu',member='AboutToShow'"
        cls.menu_calls = cls.enterClassContext(Listener(cls.desktop.session.bus.address, rule))

    def shown(self, program: Program) -> Rectangle:
        """Without its menu the shell already draws an item, but clicks on it go other ways."""
        started = self.desktop.watched_since
        eventually(lambda: self.has_called_menu(program, started), PATIENCE, "the shell has read the menu")
        return super().shown(program)

    def has_called_menu(self, program: Program, since: float) -> bool:
        """Whether the shell has read the program's menu, or opened it, since a time of the wall clock."""
        return any(
            call.at > since
            and self.desktop.session.bus.process(call.destination) == program.process.pid
            for call in self.menu_calls.messages()
        )

    def click_item(self, place: Rectangle) -> None:
        """With the button that the shell leaves to the item."""
        self.desktop.click(*place.center, MIDDLE)

    def waits_for_second_click(self) -> bool:
        """Whether the menu opens only if no second click follows: the extension of GNOME 43 opens it at once."""
        source = self.desktop.extension / "indicatorStatusIcon.js"
        return "_waitForDoubleClick" in source.read_text(encoding="utf-8")

    def not_yet_clicked(self) -> Program:
        """For left clicks, which the shell counts and later tells apart in another way, item by item."""
        return self.started()

    def test_a_double_click_opens_the_drop_down(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        before = self.desktop.picture()
        # Drawn once, the menu comes soon enough for what is to be a double click.
        self.desktop.click(*place.center, RIGHT)
        self.see_menu_and_dismiss_it(before)

        self.desktop.click(*place.center)
        if not self.waits_for_second_click():
            # The shell takes the keyboard for its menu, and gives it back only to a click after that.
            eventually(lambda: self.menu_drawn(before), PATIENCE, "the shell's menu")
        self.desktop.click(*place.center)

        self.assertLess(distance(*place.center, self.opened(program)), NEAR)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_a_left_click_on_the_icon_closes_it_for_good(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        before = self.desktop.picture()
        self.open_drop_down(place)
        self.opened(program)
        clicked = time.time()

        self.desktop.click(*place.center)

        self.wait_until_closed(program)
        # The drop-down may be seen for a moment more, in the same place.
        eventually(lambda: self.has_called_menu(program, clicked), PATIENCE, "the shell opens its menu")
        self.see_menu_and_dismiss_it(before)
        self.assertTrue(stays_closed(program), "it opened again")

    def test_a_single_click_shows_the_menu_that_the_shell_draws(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        before = self.desktop.picture()

        self.desktop.click(*place.center)

        self.see_menu_and_dismiss_it(before)
        self.assertIsNone(program.drop_down())

    def see_menu_and_dismiss_it(self, before: Image.Image) -> None:
        eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")
        self.desktop.dismiss_menu()
        eventually(lambda: self.menu_drawn(before) is None, PATIENCE, "the menu closes")


class GnomeColors(unittest.TestCase):
    def test_an_open_drop_down_follows_what_the_user_prefers(self) -> None:
        GnomeWithPortals.require()
        desktop = GnomeWithPortals()
        desktop.start()
        self.addCleanup(desktop.stop)
        program = Program(desktop, options=("--show",))
        self.addCleanup(program.end)
        window = eventually(program.drop_down, PATIENCE, "the drop-down")

        for dark in (False, True, False):
            desktop.set_dark(dark)

            eventually(
                lambda dark=dark: is_readable(desktop.picture().crop(window.box), not dark),
                PATIENCE,
                f"readable, dark: {dark}",
            )
            desktop.screenshot(f"gnome-drop-down-{'dark' if dark else 'light'}.png")
