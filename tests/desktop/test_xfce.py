"""The program in xfce4-panel: square, and the panel tells whether it is dark."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import X11Checks
from .notifier_checks import NotifierChecks
from .panels import XfcePanel
from .program import PATIENCE


class Xfce(X11Checks, NotifierChecks, unittest.TestCase):
    panel = XfcePanel
    desktop: XfcePanel

    def test_it_follows_the_panel_from_dark_to_light_and_back(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.addCleanup(self.desktop.set_dark, True)

        for on_light in (True, False):
            self.desktop.set_dark(not on_light)

            eventually(lambda on_light=on_light: self.stands_out(place, on_light), PATIENCE, f"readable, light: {on_light}")
            self.desktop.screenshot(f"xfce-{'light' if on_light else 'dark'}.png")
