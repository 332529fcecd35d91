"""The outages window in a real session, with nothing but a keyboard, and as assistive technology sees it."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually
from lab import Behavior, Lab

from .outages import PROVIDER, WIFI, OutagesWindow, date_text
from .panels import XfcePanel
from .preference import ColorPreference
from .program import PATIENCE, Program

DAYS = 90
ADDRESS = "10.77.0.51"
# With a time-out of a second, silence is an outage within this time.
OUTAGE_SECONDS = 10


class Outages(OutagesWindow, unittest.TestCase):
    panel = XfcePanel

    def test_it_is_one_window_in_the_middle_of_the_screen(self) -> None:
        self.open_outages()
        (place,) = eventually(self.windows, PATIENCE, "the window")
        self.assertTrue(self.desktop.area.contains(place), place)
        self.assertLess(abs(place.center[0] - self.desktop.area.center[0]), 10)

        self.assertEqual(self.program.start_again("--outages"), 0)
        self.open_outages()

        self.assertEqual(self.windows(), [place])

    def test_a_second_start_opens_it(self) -> None:
        self.assertEqual(self.program.start_again("--outages"), 0)

        eventually(self.windows, PATIENCE, "the window")
        self.assertIsNone(self.program.drop_down())

    def test_assistive_technology_finds_days_figures_and_outages(self) -> None:
        self.open_outages()

        def days() -> list[str]:
            found = [node.name for node in self.nodes() if node.role == "radio button"]
            return found if len(found) == DAYS else []

        names = eventually(days, PATIENCE, "all days")
        self.assertEqual(names[-2], f"{date_text(1)}: 99.734% available, 2 outages, down for 3 min 49 s")
        self.assertEqual(names[-3], f"{date_text(2)}: 100% available, at times poor")
        self.assertEqual(names[-13], f"{date_text(12)}: not watched")
        texts = self.texts()
        self.assertTrue(any(text.startswith("Availability: ") for text in texts), texts)
        rows = self.rows()
        self.assertGreater(len(rows), 1, texts)
        self.assertTrue(rows[1].endswith(f"10:12:07, down for 3 min 7 s. Provider (likely): {PROVIDER}"), rows)

    def test_the_keyboard_leads_to_days_and_outages(self) -> None:
        self.open_outages()
        self.go_to_day(6)
        eventually(lambda: "Down: 1 h 10 min" in self.texts(), PATIENCE, "the day's figures")

        def is_selected(text: str) -> bool:
            rows = self.selected()
            return len(rows) == 1 and text in rows[0]

        eventually(lambda: is_selected(WIFI), PATIENCE, "the day's outage is selected")
        self.tab_to("By half hours")
        self.tab_to("Outages")
        self.desktop.key("Home")
        eventually(lambda: is_selected("18:40:00, down for 42 s. Not clear."), PATIENCE, "the newest outage")
        self.assertIn(date_text(1), self.texts())
        self.desktop.screenshot("outages-keyboard.png")
        self.desktop.key("Escape")
        eventually(lambda: not self.windows(), PATIENCE, "it has closed")

    def test_an_outage_begins_and_ends_while_it_is_open(self) -> None:
        self.program.end()
        lab = self.enterContext(Lab())
        lab.behave(ADDRESS, Behavior())
        self.program = Program(self.desktop, Hostname=ADDRESS, PingTimeout=1)
        self.addCleanup(self.program.end)
        self.item = self.program.item_up()
        self.write_past(ADDRESS)
        self.open_outages()
        self.tab_to("By half hours")
        self.tab_to("Outages")
        self.desktop.key("Home")
        self.desktop.key("Down")
        selected = [row for row in self.rows() if PROVIDER in row]
        eventually(lambda: self.selected() == selected, PATIENCE, "the outage before the newest one is selected")
        count = len(self.rows())

        def newest(lasts: bool) -> bool:
            """Whether it is one of today that lasts, or one that is over."""
            rows = self.rows()
            return bool(rows) and rows[0].startswith(date_text(0)[-10:]) and (" so far. " in rows[0]) == lasts

        lab.change(ADDRESS, silent=True)
        eventually(lambda: newest(lasts=True), OUTAGE_SECONDS + PATIENCE, "an outage that lasts")
        today = f"{date_text(0)}: "

        def is_counted() -> bool:
            return any(text.startswith(today) and ", 1 outage, down for " in text for text in self.texts())

        eventually(is_counted, PATIENCE, "its day counts it")
        self.assertEqual(self.selected(), selected)
        self.desktop.screenshot("outages-running.png")

        lab.change(ADDRESS, silent=False)
        eventually(lambda: newest(lasts=False), OUTAGE_SECONDS + PATIENCE, "it is over")
        self.assertGreaterEqual(len(self.rows()), count)
        self.assertEqual(self.selected(), selected)

    def test_it_can_be_read_on_a_light_and_a_dark_desktop(self) -> None:
        preference = ColorPreference(self.desktop.session, dark=False)
        self.addCleanup(preference.close)
        self.open_outages()
        self.go_to_day(1)
        for dark in (False, True):
            preference.set_dark(dark)
            eventually(lambda dark=dark: self.is_dark() == dark, PATIENCE, f"dark: {dark}")
            self.desktop.park_pointer()
            self.desktop.screenshot(f"outages-{'dark' if dark else 'light'}.png")

    def is_dark(self) -> bool:
        """Its ground, between the parts."""
        (place,) = self.windows()
        red, green, blue = self.desktop.picture().convert("RGB").getpixel((place.x + 6, place.center[1]))
        return red + green + blue < 3 * 128


if __name__ == "__main__":
    unittest.main()
