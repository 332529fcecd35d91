"""The program in Plasma's panel: square, on a light ground."""

from __future__ import annotations

import unittest

from .checks import NotifierChecks
from .panels import PlasmaPanel


class Plasma(NotifierChecks, unittest.TestCase):
    panel = PlasmaPanel
