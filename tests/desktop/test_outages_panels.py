"""The outages window with a keyboard in panels whose menus, or whose windowing system, are of another kind."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .outages import LOAD, PROVIDER, OutagesWindow, date_text
from .panels import LxqtPanel, WaybarPanel
from .program import PATIENCE

DAYS = 90


class KeyboardWalk(OutagesWindow):
    def test_the_keyboard_leads_through_it_and_assistive_technology_follows(self) -> None:
        self.open_outages()
        self.check_roles()
        self.go_to_day(1)
        eventually(lambda: len(self.selected()) == 1, PATIENCE, "the day's outage is selected")
        self.check_chart()
        self.check_list()
        self.desktop.screenshot(f"outages-{self.panel.name}.png")
        self.tab_to("Copy")
        self.tab_to("Export…")
        self.desktop.key("Return")
        eventually(lambda: self.desktop.focused_title() == "Export Outages", PATIENCE, "the dialog has the keyboard")
        self.desktop.key("Escape")
        eventually(lambda: self.focused_name() == "Export…", PATIENCE, "the window has the keyboard again")

        self.desktop.key("Escape")

        eventually(lambda: not self.windows(), PATIENCE, "it has closed")

    def check_roles(self) -> None:
        def days() -> list[str]:
            found = [node.name for node in self.nodes() if node.role == "radio button"]
            return found if len(found) == DAYS else []

        names = eventually(days, PATIENCE, "all days")
        self.assertTrue(names[-2].startswith(f"{date_text(1)}: 99.734% available, 2 outages"), names[-2])
        self.assertTrue(self.focused_name().startswith(date_text(0)), self.focused_name())
        roles = {(node.role, node.name.split(",")[0]) for node in self.nodes()}
        for part in (("chart", "By half hours"), ("list", "Outages"), ("push button", "Export…")):
            self.assertIn(part, roles)

    def check_chart(self) -> None:
        self.tab_to("By half hours")

        def told() -> str:
            node = self.focused()
            return "" if node is None else node.description

        last = eventually(told, PATIENCE, "the last half hour is told")
        self.assertIn(" 23:30 to 24:00: slowest ", last)
        self.desktop.key("Left")
        eventually(lambda: " 23:00 to 23:30: slowest " in told(), PATIENCE, "the half hour before it")

    def check_list(self) -> None:
        self.tab_to("Outages")
        self.desktop.key("Home")
        self.desktop.key("Down")
        eventually(lambda: self.is_selected(PROVIDER), PATIENCE, "the outage before the newest one")
        self.desktop.key("Down")
        eventually(lambda: self.is_selected(LOAD), PATIENCE, "the one before it")
        self.assertIn(date_text(2), self.texts())

        self.desktop.key("c", "Control_L")

        row = self.selected()[0]
        eventually(lambda: self.desktop.clipboard() == row, PATIENCE, "another program can paste it")

    def is_selected(self, text: str) -> bool:
        rows = self.selected()
        return len(rows) == 1 and text in rows[0]


class InLxqt(KeyboardWalk, unittest.TestCase):
    panel = LxqtPanel


class WaybarPanelAndClipboard(WaybarPanel):
    executables = (*WaybarPanel.executables, "wl-paste")


class InWaybar(KeyboardWalk, unittest.TestCase):
    panel = WaybarPanelAndClipboard
