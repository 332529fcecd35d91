"""The program in tint2: the classic tray, where an icon is a window."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import READABLE_CONTRAST, X11Checks
from .panels import Tint2Panel
from .pictures import background, bars, brightness, changed, ink_brightness
from .preference import ColorPreference
from .program import APPLICATION, PATIENCE, Program
from .x11 import RIGHT


class Tint2(X11Checks, unittest.TestCase):
    panel = Tint2Panel

    def wait_for_verdict(self, program: Program) -> None:
        """A tray icon has no tool tip to ask: its five bars must be lit."""

        def five_bars() -> bool:
            picture = self.desktop.picture()
            place = changed(self.empty, picture, self.desktop.strip)
            return place is not None and len(bars(picture.crop(place.box), self.ground(picture))) == 5

        eventually(five_bars, PATIENCE, "five bars are lit")

    def test_a_right_click_shows_the_menu(self) -> None:
        program = self.running()
        place = self.shown(program)

        self.desktop.click(*place.center, RIGHT)

        eventually(self.tree_has_quit, PATIENCE, "the menu in the accessible tree")
        seen = self.desktop.accessible(APPLICATION).texts()
        self.assertTrue(any(text.startswith("Excellent") for text in seen), seen)
        self.desktop.screenshot("tint2-menu.png")
        self.desktop.key("Escape")
        eventually(lambda: not self.tree_has_quit(), PATIENCE, "the menu closes")

    def test_it_is_back_in_a_new_panel(self) -> None:
        self.shown(self.running())
        self.desktop.kill_panel()
        self.desktop.start_panel()

        def is_drawn() -> bool:
            return changed(self.empty, self.desktop.picture(), self.desktop.strip) is not None

        eventually(is_drawn, PATIENCE, "the icon is back")

    def test_its_ink_is_the_one_that_the_user_has_chosen(self) -> None:
        place = self.shown(self.started(PanelInk="dark"))

        self.assertLess(self.contrast(self.desktop.picture(), place), READABLE_CONTRAST)

    def test_its_ink_follows_the_desktop_from_dark_to_light_and_back(self) -> None:
        place = self.shown(self.running())
        preference = ColorPreference(self.desktop.session, dark=True)
        self.addCleanup(preference.close)

        def is_dark_on_a_plate() -> bool:
            face = self.desktop.picture().crop(place.box)
            return brightness(background(face)) - ink_brightness(face) > READABLE_CONTRAST

        # The panel itself stays black, which nothing tells: a plate keeps dark ink readable.
        light_ink = self.desktop.still_picture()
        preference.set_dark(False)
        eventually(is_dark_on_a_plate, PATIENCE, "dark ink")
        self.desktop.screenshot("tint2-plate.png")
        preference.set_dark(True)
        eventually(
            lambda: changed(light_ink, self.desktop.picture(), self.desktop.strip) is None, PATIENCE, "light ink"
        )
