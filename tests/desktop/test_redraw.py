"""How often the panel is told anything: only when something that it shows has changed."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .bus import Listener, Message
from .item import Item
from .panels import XfcePanel
from .program import PATIENCE, Program, pings_sent

PINGS = 10
ATTEMPTS = 12


class Redraw(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        cls.desktop = XfcePanel()
        cls.desktop.name = "redraw"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def test_pings_that_change_nothing_touch_the_panel_not_once(self) -> None:
        program = Program(self.desktop)
        self.addCleanup(program.end)
        item = program.item_up()
        for _ in range(ATTEMPTS):
            unchanged, signals = self.follow(item)
            if unchanged:
                self.assertEqual(signals, [])
                return
        self.fail("the machine is too busy for a steady latency on the loopback device")

    def follow(self, item: Item) -> tuple[bool, list[Message]]:
        """Whether the item has stayed the same for PINGS pings, and the signals of that time."""
        bus = self.desktop.session.bus
        before = item.properties()
        with Listener(bus.address, f"type='signal',sender='{bus.owner(item.service)}'") as listener:
            start = pings_sent()

            def is_over() -> bool:
                # A changed text stays until the next ping, so none is missed.
                return item.properties() != before or pings_sent() >= start + PINGS

            eventually(is_over, PINGS + PATIENCE, f"{PINGS} pings")
            return item.properties() == before, [
                message for message in listener.messages() if message.interface != "org.freedesktop.DBus"
            ]

    def test_a_change_is_told(self) -> None:
        program = Program(self.desktop)
        self.addCleanup(program.end)
        item = program.item_up()
        bus = self.desktop.session.bus
        with Listener(bus.address, f"type='signal',sender='{bus.owner(item.service)}'") as listener:
            settings = self.desktop.session.config / "Tarnwick/settings.json"
            self.desktop.session.write(settings, '{"PanelFace": "wide"}')
            self.addCleanup(settings.unlink)

            def is_told() -> bool:
                return "NewIcon" in {message.member for message in listener.messages()}

            eventually(is_told, PATIENCE, "the panel is told of the other image")
