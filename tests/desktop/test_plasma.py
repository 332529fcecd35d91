"""The program in Plasma's panel: square, on the ground that its theme draws."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import is_readable
from .heavy_panels import PlasmaPanel
from .notifier_checks import NotifierChecks
from .program import PATIENCE


class PlasmaChecks(NotifierChecks):
    desktop: PlasmaPanel

    def test_it_follows_the_panels_own_theme_to_dark_and_back(self) -> None:
        place = self.shown(self.running())
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_theme, "default")

        self.desktop.set_theme("breeze-light")
        # The programs stay light.
        for theme, is_light in (("breeze-dark", False), ("default", True)):
            self.desktop.set_theme(theme)

            eventually(lambda is_light=is_light: self.stands_out(place, is_light), PATIENCE, f"readable in {theme}")
            self.desktop.screenshot(f"{self.desktop.name}-{theme}.png")

    def test_it_follows_the_programs_colors_to_dark_and_back(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_colors, "BreezeLight")

        for colors, is_light in (("BreezeDark", False), ("BreezeLight", True)):
            self.desktop.set_colors(colors)

            eventually(lambda is_light=is_light: self.stands_out(place, is_light), PATIENCE, f"item in {colors}")
            self.open_drop_down(place)
            window = self.opened(program)
            eventually(
                lambda window=window, is_light=is_light: is_readable(self.desktop.picture().crop(window.box), is_light),
                PATIENCE,
                f"drop-down in {colors}",
            )
            self.desktop.screenshot(f"{self.desktop.name}-{colors}.png")
            self.desktop.key("Escape")
            self.wait_until_closed(program)


class Plasma(PlasmaChecks, unittest.TestCase):
    panel = PlasmaPanel
