"""What the panel is told, and the drop-down shows, while the connection is down."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually
from lab import Behavior, Lab

from .panels import XfcePanel
from .pictures import changed
from .program import APPLICATION, PATIENCE, Program

ADDRESS = "10.77.0.31"
# With a time-out of a second, silence is an outage within this time.
OUTAGE_SECONDS = 10


class Outage(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        cls.lab = Lab()
        cls.addClassCleanup(cls.lab.close)
        cls.desktop = XfcePanel()
        cls.desktop.name = "outage"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)
        cls.desktop.park_pointer()
        empty = cls.desktop.still_picture()
        cls.lab.behave(ADDRESS, Behavior())
        cls.program = Program(cls.desktop, Hostname=ADDRESS, PingTimeout=1)
        cls.addClassCleanup(cls.program.end)
        cls.item = cls.program.item_up()
        cls.place = cls.desktop.item_rectangle(empty)
        cls.up = cls.desktop.still_picture()
        cls.rows_while_up = {row.label for row in cls.item.rows() if row.visible}
        cls.lab.change(ADDRESS, silent=True)
        eventually(
            lambda: "No replies" in "\n".join(cls.item.tool_tip), OUTAGE_SECONDS + PATIENCE, "the outage is noticed"
        )

    def test_another_icon_is_drawn(self) -> None:
        eventually(lambda: changed(self.up, self.desktop.picture(), self.place), PATIENCE, "another icon")
        self.desktop.screenshot("down.png")

    def test_the_menu_offers_another_host(self) -> None:
        self.assertNotIn("Change Host…", self.rows_while_up)
        self.assertTrue(self.item.row("Change Host…").visible)
        self.assertTrue(self.item.rows()[0].label.startswith("Connection down"), self.item.rows())

    def test_the_drop_down_says_so(self) -> None:
        self.desktop.click(*self.place.center)
        eventually(self.program.drop_down, PATIENCE, "the drop-down")

        def texts() -> list[str]:
            found = self.desktop.accessible(APPLICATION).texts()
            return found if "Change Host…" in found else []

        seen = eventually(texts, PATIENCE, "the drop-down in the accessible tree")
        self.assertTrue(any("Connection down" in text and "No replies" in text for text in seen), seen)
        self.desktop.screenshot("down-drop-down.png")
        self.desktop.key("Escape")
        eventually(lambda: self.program.drop_down() is None, PATIENCE, "the drop-down closes")
