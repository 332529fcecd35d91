"""A pause of the desktop program: nothing on the wire after `--pause`, and what a real panel shows of it."""

from __future__ import annotations

import re
import unittest

from endtoend.judging import wait_until_learnt
from endtoend.waiting import eventually, never
from endtoend.watch import settings
from lab.chain import Chain
from lab.faults import Cut
from lab.topology import ACCESS, ADDRESSES, HOST

from .panels import XfcePanel
from .pictures import changed
from .program import APPLICATION, PATIENCE, PROGRAM, Program, pings_sent
from .session import Session
from .test_path import ping_sockets

OFFSCREEN = {"QT_QPA_PLATFORM": "offscreen"}
PING_HOP_LIMIT = 64
# How long nothing may be sent, with a ping and a probe due each second.
PAUSED_SECONDS = 4
PAUSED = re.compile(r"Paused until \d\d:\d\d")


class OnTheWire(unittest.TestCase):
    """Behind routers, while the connection is down, so that pings and probes of the path are sent."""

    def setUp(self) -> None:
        self.chain = self.enterContext(Chain())
        self.session = Session("headless-pause")
        self.addCleanup(self.session.close)
        self.session.start_bus()
        address = ADDRESSES[HOST][4]
        program = self.session.spawn("program", [PROGRAM, *settings(Hostname=address)], OFFSCREEN)
        self.addCleanup(self.session.kill, program)
        wait_until_learnt(self.chain)

    def probes(self) -> int:
        return sum(one.hop_limit != PING_HOP_LIMIT for one in self.chain.sent("echo"))

    def packets(self) -> int:
        """Of every kind, but for the kernel's own."""
        return sum(one.kind != "housekeeping" for one in self.chain.sent())

    def second(self, *arguments: str) -> int:
        """The exit status of a second start."""
        return self.session.spawn("second", [PROGRAM, *arguments], OFFSCREEN).wait(timeout=PATIENCE)

    def test_a_pause_ends_pings_and_probes_until_it_is_ended(self) -> None:
        learnt = self.probes()
        self.chain.begin(Cut(ACCESS))
        eventually(lambda: self.probes() >= learnt + 3, PATIENCE, "the path is probed")

        self.assertEqual(self.second("--pause", "3600"), 0, self.session.log("second"))
        eventually(lambda: not ping_sockets(), PATIENCE, "it has no sockets to ping with")
        before = self.packets()
        self.assertTrue(never(lambda: self.packets() > before, PAUSED_SECONDS), "a packet in the pause")

        self.chain.end(Cut(ACCESS))
        self.assertEqual(self.second("--pause=0"), 0, self.session.log("second"))
        eventually(lambda: self.packets() > before, PATIENCE, "pings again")

    def test_a_pause_ends_by_itself(self) -> None:
        self.assertEqual(self.second("--pause", "3"), 0, self.session.log("second"))
        eventually(lambda: not ping_sockets(), PATIENCE, "it has no sockets to ping with")
        paused = self.packets()

        eventually(lambda: self.packets() > paused + 1, PATIENCE, "pings again")

    def test_a_length_that_is_none_is_refused(self) -> None:
        self.assertEqual(self.second("--pause", "a while"), 2)
        self.assertRegex(self.session.log("second"), r"^tarnwick: --pause takes [^\n]*; see --help\n$")


class WithoutAnother(unittest.TestCase):
    def test_it_says_that_none_runs(self) -> None:
        session = Session("headless-pause-alone")
        self.addCleanup(session.close)
        session.start_bus()

        status = session.spawn("second", [PROGRAM, "--pause", "60"]).wait(timeout=PATIENCE)

        self.assertEqual(status, 1)
        self.assertEqual(session.log("second"), "tarnwick: it is not running\n")


class InThePanel(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        cls.desktop = XfcePanel()
        cls.desktop.name = "pause"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def setUp(self) -> None:
        self.desktop.park_pointer()
        empty = self.desktop.still_picture()
        self.program = Program(self.desktop)
        self.addCleanup(self.program.end)
        self.item = self.program.item_up()
        self.place = self.desktop.item_rectangle(empty)

    def visible(self) -> set[str]:
        return {row.label for row in self.item.rows() if row.visible}

    def tip(self) -> str:
        return "\n".join(self.item.tool_tip)

    def texts(self) -> list[str]:
        return self.desktop.accessible(APPLICATION).texts()

    def test_the_panels_menu_pauses_and_resumes(self) -> None:
        up = self.desktop.still_picture()
        self.assertIn("Pause for an Hour", self.visible())
        self.assertNotIn("Resume", self.visible())

        self.item.choose(self.item.row("Pause for an Hour"))

        eventually(lambda: PAUSED.search(self.tip()), PATIENCE, "the tool tip says so")
        eventually(lambda: changed(up, self.desktop.picture(), self.place), PATIENCE, "another icon")
        self.desktop.screenshot("paused.png")
        self.assertTrue(PAUSED.match(self.item.rows()[0].label), self.item.rows())
        self.assertIn("Resume", self.visible())
        self.assertNotIn("Pause for an Hour", self.visible())

        sent = pings_sent()
        self.item.choose(self.item.row("Resume"))
        eventually(lambda: pings_sent() > sent + 1, PATIENCE, "pings again")
        eventually(lambda: "Packet Loss: 0%" in self.tip(), PATIENCE, "the connection is judged again")

    def test_the_drop_down_says_until_when_and_resumes(self) -> None:
        self.assertEqual(self.program.start_again("--pause", "7200"), 0)
        eventually(lambda: PAUSED.search(self.tip()), PATIENCE, "the pause")
        self.desktop.click(*self.place.center)
        eventually(self.program.drop_down, PATIENCE, "the drop-down")

        eventually(lambda: "Resume" in self.texts(), PATIENCE, "the drop-down in the accessible tree")
        self.assertTrue(any(PAUSED.match(text) for text in self.texts()), self.texts())
        self.assertNotIn("Pause for an Hour", self.texts())
        self.desktop.park_pointer()
        self.desktop.screenshot("paused-drop-down.png")

        self.desktop.act(APPLICATION, "Resume")
        eventually(lambda: "Packet Loss: 0%" in self.tip(), PATIENCE, "the connection is judged again")


if __name__ == "__main__":
    unittest.main()
