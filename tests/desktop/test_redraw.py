"""How often the panel is told anything: only when something that it shows has changed."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually
from lab import SILENT, Lab

from .bus import Listener
from .item import Item
from .panels import XfcePanel
from .program import PATIENCE, Program

SILENT_ADDRESS = "10.77.0.38"
# With a time-out of a second, silence is an outage within this time.
OUTAGE_SECONDS = 10
PINGS = 10
# The last thing that the item says of it.
VERDICT = "What is wrong is not clear yet."


class Redraw(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        cls.lab = Lab()
        cls.addClassCleanup(cls.lab.close)
        cls.lab.behave(SILENT_ADDRESS, SILENT)
        cls.desktop = XfcePanel()
        cls.desktop.name = "redraw"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def listener(self, item: Item) -> Listener:
        """Of the signals that the program sends to panels."""
        bus = self.desktop.session.bus
        return Listener(bus.address, f"type='signal',sender='{bus.owner(item.service)}'")

    def test_pings_that_change_nothing_touch_the_panel_not_once(self) -> None:
        program = Program(self.desktop, Hostname=SILENT_ADDRESS, PingTimeout=1)
        self.addCleanup(program.end)
        item = program.item()
        # While the connection is down, no latency of this machine shows in the item.
        eventually(lambda: VERDICT in "\n".join(item.tool_tip), OUTAGE_SECONDS + PATIENCE, "the outage is noticed")
        with self.listener(item) as listener:
            before = len(self.lab.requests(SILENT_ADDRESS))

            eventually(
                lambda: len(self.lab.requests(SILENT_ADDRESS)) >= before + PINGS, PINGS + PATIENCE, f"{PINGS} pings"
            )

            signals = [message for message in listener.messages() if message.interface != "org.freedesktop.DBus"]
        self.assertEqual(signals, [])

    def test_a_change_is_told(self) -> None:
        program = Program(self.desktop)
        self.addCleanup(program.end)
        item = program.item_up()
        with self.listener(item) as listener:
            settings = self.desktop.session.config / "Tarnwick/settings.json"
            self.desktop.session.write(settings, '{"PanelFace": "wide"}')
            self.addCleanup(settings.unlink)

            def is_told() -> bool:
                return "NewIcon" in {message.member for message in listener.messages()}

            eventually(is_told, PATIENCE, "the panel is told of the other image")
