"""The program in Plasma's panel: square, on a light ground."""

from __future__ import annotations

import unittest

from .heavy_panels import PlasmaPanel
from .notifier_checks import NotifierChecks


class Plasma(NotifierChecks, unittest.TestCase):
    panel = PlasmaPanel
