"""The program in lxqt-panel: square, on the ground that the panel's theme draws."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import X11Checks
from .notifier_checks import NotifierChecks
from .panels import LxqtPanel
from .pictures import Rectangle
from .program import PATIENCE

# Of the panel's end that the item is in.
WIDTH = 60
# Dark and light ones in turn, of those that the desktop comes with; the last one is its own.
THEMES = {"dark": False, "light": True, "Leech": False, "KDE-Plasma": True, "ambiance": False, "Clearlooks": True}


class Lxqt(X11Checks, NotifierChecks, unittest.TestCase):
    panel = LxqtPanel
    desktop: LxqtPanel

    def test_it_stands_out_in_each_theme_while_they_change(self) -> None:
        program = self.running()
        self.shown(program)
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_theme, "Clearlooks")
        strip = self.desktop.strip
        # Themes have other margins.
        end = Rectangle(strip.width - WIDTH, strip.y, WIDTH, strip.height)

        for theme, is_light in THEMES.items():
            self.desktop.set_theme(theme)

            eventually(
                lambda is_light=is_light: self.stands_out(end, is_light), PATIENCE, f"readable in {theme}"
            )
            self.desktop.screenshot(f"lxqt-{theme}.png")
