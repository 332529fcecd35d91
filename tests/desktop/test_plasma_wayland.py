"""The program in Plasma's panel on Wayland, where what drops down lies in an overlay of the screen."""

from __future__ import annotations

import unittest

from .heavy_panels import PlasmaWaylandPanel
from .notifier_checks import NotifierChecks


class PlasmaOnWayland(NotifierChecks, unittest.TestCase):
    panel = PlasmaWaylandPanel
