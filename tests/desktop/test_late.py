"""The program where there is no panel yet."""

from __future__ import annotations

import signal
import unittest

from endtoend.waiting import eventually

from .panels import LatePanel
from .program import PATIENCE, Program, pings_sent


class WithoutPanel(unittest.TestCase):
    def setUp(self) -> None:
        LatePanel.require()
        self.desktop = LatePanel()
        self.desktop.start()
        self.addCleanup(self.desktop.stop)
        self.program = Program(self.desktop)
        self.addCleanup(self.program.end)

    def complaints(self) -> list[str]:
        return [line for line in self.program.output.splitlines() if line.startswith("tarnwick: ")]

    def wait_for_pings(self, count: int) -> None:
        before = pings_sent()
        eventually(lambda: pings_sent() >= before + count, count + PATIENCE, f"{count} more pings")

    def test_it_says_so_once_and_keeps_measuring(self) -> None:
        eventually(self.complaints, PATIENCE, "a line on standard error")

        self.wait_for_pings(3)

        self.assertEqual(len(self.complaints()), 1, self.program.output)
        self.assertIsNone(self.program.process.poll())

    def test_it_appears_as_soon_as_there_is_a_panel(self) -> None:
        eventually(self.complaints, PATIENCE, "a line on standard error")
        self.desktop.park_pointer()
        bare = self.desktop.picture()

        self.desktop.start_panel()

        self.program.item_up()
        place = self.desktop.item_rectangle(bare)
        self.assertGreater(place.width, 0)
        self.assertEqual(len(self.complaints()), 1, self.program.output)

    def test_a_second_start_opens_the_drop_down_without_a_panel(self) -> None:
        self.wait_for_pings(1)

        self.assertEqual(self.program.start_again(), 0)

        window = eventually(self.program.drop_down, PATIENCE, "the drop-down")
        self.assertTrue(self.desktop.area.contains(window), window)

    def test_a_polite_signal_saves_the_statistics(self) -> None:
        self.wait_for_pings(2)

        self.program.send(signal.SIGTERM)

        self.assertEqual(self.program.exit_status(), 0)
        self.assertGreaterEqual(self.program.saved_pings(), 1)
