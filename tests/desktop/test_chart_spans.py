"""Charts of longer spans in the drop-down of a real panel: what was recorded, chosen by buttons and keys."""

from __future__ import annotations

import signal
import unittest

from endtoend.past import Past
from endtoend.waiting import eventually

from .panels import XfcePanel
from .pictures import Rectangle
from .program import APPLICATION, HOST, PATIENCE, Program


class ChartSpans(unittest.TestCase):
    def setUp(self) -> None:
        XfcePanel.require()
        self.desktop = XfcePanel()
        self.desktop.start()
        self.addCleanup(self.desktop.stop)
        self.desktop.park_pointer()
        self.empty = self.desktop.still_picture()
        self.journal = self.desktop.session.home / ".local" / "state" / "Tarnwick" / "journal.sqlite"

    def texts(self) -> list[str]:
        return self.desktop.accessible(APPLICATION).texts()

    def record(self) -> None:
        """A day with loss, slow hours, an outage, a night asleep."""
        program = Program(self.desktop)
        program.item_up()
        program.send(signal.SIGTERM)
        self.assertEqual(program.exit_status(), 0)
        with Past(self.journal, HOST) as past:
            past.answered(1440, 900, slowest_ms=30)
            past.answered(1200, 1100, slowest_ms=130)
            past.answered(1090, 1080, slowest_ms=40, lost=6)
            past.gap("asleep", 900, 420)
            past.answered(420, 1, slowest_ms=35)
            past.answered(240, 200, slowest_ms=84, lost=20)
            past.outage(120, 90)

    def opened(self) -> Rectangle:
        program = Program(self.desktop)
        program.item_up()
        icon = self.desktop.item_rectangle(self.empty)
        self.desktop.click(*icon.center)
        return eventually(program.drop_down, PATIENCE, "the drop-down")

    def test_a_day_is_shown_with_what_each_part_of_it_was_like(self) -> None:
        self.record()
        place = self.opened()
        self.desktop.act(APPLICATION, "1 day")

        def charts() -> list[str]:
            return [text for text in self.texts() if text.startswith("Last ")]

        [day] = eventually(charts, PATIENCE, "the chart of a day")
        self.assertRegex(day, r"^Last 24 hours, .*down for 30 min$")
        self.desktop.park_pointer()
        self.desktop.screenshot("chart-day.png")

        def told() -> list[str]:
            return [text for text in self.texts() if " to " in text and "computer asleep" in text]

        # The night is in the middle of the chart, which is somewhere in the upper part.
        for y in range(place.y, place.y + place.height // 2, 20):
            self.desktop.move(place.x + place.width * 55 // 100, y)
            if told():
                break
        [night] = eventually(told, PATIENCE, "the figures of the part at the pointer")
        self.assertRegex(night, r"^[A-Z][a-z]{2} \d\d:\d0 to (?:\d\d:\d0|24:00): computer asleep$")
        self.desktop.screenshot("chart-day-pointed.png")

        self.desktop.key("4")
        eventually(lambda: any(text.startswith("Last 7 days") for text in charts()), PATIENCE, "the week")
        self.desktop.screenshot("chart-week.png")
        self.desktop.key("1")
        eventually(lambda: not charts(), PATIENCE, "five minutes again")


if __name__ == "__main__":
    unittest.main()
