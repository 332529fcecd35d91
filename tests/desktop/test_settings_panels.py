"""The settings window with a keyboard in panels whose menus, or whose windowing system, are of another kind."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .panels import LxqtPanel, WaybarPanel
from .program import PATIENCE
from .settings import SettingsWindow


class KeyboardWalk(SettingsWindow):
    def test_the_host_can_be_set_with_the_keyboard_alone(self) -> None:
        self.set_host_by_keyboard()
        self.desktop.screenshot(f"settings-{self.panel.name}.png")

        self.close_by_keyboard()

        eventually(lambda: "localhost" in self.item.rows()[1].label, PATIENCE, "the item's menu names the new host")


class InLxqt(KeyboardWalk, unittest.TestCase):
    panel = LxqtPanel


class InWaybar(KeyboardWalk, unittest.TestCase):
    panel = WaybarPanel
