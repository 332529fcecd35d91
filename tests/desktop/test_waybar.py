"""The program in waybar on a Wayland compositor: icon and text in one wide image."""

from __future__ import annotations

import unittest

from .notifier_checks import NotifierChecks
from .panels import WaybarPanel


class Waybar(NotifierChecks, unittest.TestCase):
    panel = WaybarPanel
    shows_text_beside = True
    first_row = 4  # Its menu overlaps the panel.
