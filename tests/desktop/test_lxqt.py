"""The program in lxqt-panel: square."""

from __future__ import annotations

import unittest

from .checks import X11Checks
from .notifier_checks import NotifierChecks
from .panels import LxqtPanel


class Lxqt(X11Checks, NotifierChecks, unittest.TestCase):
    panel = LxqtPanel
