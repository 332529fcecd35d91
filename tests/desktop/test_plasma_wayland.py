"""The program in Plasma's panel on Wayland, where what drops down lies in an overlay of the screen."""

from __future__ import annotations

import unittest

from .plasma_panels import PlasmaWaylandPanel
from .test_plasma import PlasmaChecks


class PlasmaOnWayland(PlasmaChecks, unittest.TestCase):
    panel = PlasmaWaylandPanel


class PlasmaWithNotifications(PlasmaWaylandPanel):
    name = "plasma-notifications"
    items = "org.kde.plasma.notifications"


class PlasmaThatNotifies(PlasmaChecks, unittest.TestCase):
    panel = PlasmaWithNotifications

    def test_the_shell_shows_a_notification(self) -> None:
        self.check_notification()


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    own = [PlasmaThatNotifies(name) for name in vars(PlasmaThatNotifies) if name.startswith("test_")]
    return unittest.TestSuite([loader.loadTestsFromTestCase(PlasmaOnWayland), *own])
