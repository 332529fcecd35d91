"""The outages window in a real session, with nothing but a keyboard, and as assistive technology sees it."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .outages import PROVIDER, WIFI, OutagesWindow, date_text
from .panels import XfcePanel
from .preference import ColorPreference
from .program import PATIENCE

DAYS = 90


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
        rows = [text for text in texts if " down for " in text and ", down" in text[:27]]
        self.assertGreater(len(rows), 1, texts)  # those that can be seen
        self.assertTrue(rows[1].endswith(f"10:12:07, down for 3 min 7 s. Provider (likely): {PROVIDER}"), rows)

    def test_the_keyboard_leads_to_days_and_outages(self) -> None:
        self.open_outages()
        self.go_to_day(6)
        eventually(lambda: "Down: 1 h 10 min" in self.texts(), PATIENCE, "the day's figures")

        def is_selected(text: str) -> bool:
            rows = self.selected()
            return len(rows) == 1 and text in rows[0]

        eventually(lambda: is_selected(WIFI), PATIENCE, "the day's outage is selected")
        self.desktop.key("Tab")
        eventually(lambda: self.focused_name().startswith("By half hours"), PATIENCE, "the chart has the keyboard")
        self.desktop.key("Tab")
        eventually(lambda: self.focused_name() == "Outages", PATIENCE, "the list has the keyboard")
        self.desktop.key("Home")
        eventually(lambda: is_selected("18:40:00, down for 42 s. Not clear."), PATIENCE, "the newest outage")
        self.assertIn(date_text(1), self.texts())
        self.desktop.screenshot("outages-keyboard.png")
        self.desktop.key("Escape")
        eventually(lambda: not self.windows(), PATIENCE, "it has closed")

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
