"""The program in lxqt-panel: square."""

from __future__ import annotations

import unittest

from .checks import NotifierChecks
from .panels import LxqtPanel


class Lxqt(NotifierChecks, unittest.TestCase):
    panel = LxqtPanel
