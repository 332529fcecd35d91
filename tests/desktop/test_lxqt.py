"""The program in lxqt-panel: square."""

from __future__ import annotations

import unittest

from .checks import NotifierChecks, X11Checks
from .panels import LxqtPanel


class Lxqt(X11Checks, NotifierChecks, unittest.TestCase):
    panel = LxqtPanel
