"""A pause in the terminal program, counted on the wire: the key, and what the history and a report say of it."""

from __future__ import annotations

import contextlib
import json
import re
import sqlite3
import subprocess
import time
import unittest

from lab import Behavior, Lab
from lab.behavior import Request

from .concurrently import ConcurrentTestCase
from .terminal import Terminal
from .waiting import eventually, never
from .watch import PATIENCE_SECONDS, PROGRAM, Home, new_home

# How long no ping may come, with one due each second.
PAUSED_SECONDS = 3

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def gaps(home: Home) -> list[tuple[str, int, int]]:
    with contextlib.closing(sqlite3.connect(f"file:{home.journal_file}?mode=ro", uri=True)) as journal:
        return journal.execute("SELECT kind, start, end FROM gaps").fetchall()


class TheKey(ConcurrentTestCase):
    def pause(self, terminal: Terminal) -> float:
        """When it had begun."""
        terminal.wait_for(lambda text: "p pauses" in text and re.search(r"Pings sent +[3-9]\b", text), 4, "some pings")
        terminal.type(b"p")
        terminal.wait_for(lambda text: re.search(r"Paused until \d\d:\d\d\b", text), PATIENCE_SECONDS, "the pause")
        return time.monotonic()

    def assert_no_ping(self, address: str, since: float) -> None:
        self.assertTrue(never(lambda: self.pings(address, since), PAUSED_SECONDS), "a ping in the pause")

    @staticmethod
    def pings(address: str, since: float) -> list[Request]:
        return [request for request in lab.requests(address) if request.at > since]

    def test_it_stops_the_pings_and_starts_them_again(self) -> None:
        address = "10.77.0.60"
        lab.behave(address, Behavior())
        with new_home() as home, Terminal(home, address) as terminal:
            begun = self.pause(terminal)

            self.assert_no_ping(address, begun)
            self.assertIn("p resumes", terminal.text())
            self.assertEqual((terminal.screen.overflows, terminal.screen.scrolls), (0, 0), terminal.text())

            resumed = time.monotonic()
            terminal.type(b"p")
            terminal.wait_for(lambda text: "Excellent" in text and "p pauses" in text, 4, "the connection again")
            pings = eventually(lambda: self.pings(address, begun), PATIENCE_SECONDS, "pings")
            self.assertGreater(pings[0].at, resumed)
            self.assertEqual(terminal.finish(), 0)

            [(kind, start, end)] = gaps(home)
            self.assertEqual(kind, "paused")
            self.assertGreaterEqual(end - start, PAUSED_SECONDS - 1)

    def test_a_report_counts_it_neither_as_up_nor_as_down(self) -> None:
        address = "10.77.0.61"
        lab.behave(address, Behavior())
        with new_home() as home, Terminal(home, address) as terminal:
            begun = self.pause(terminal)
            lab.behave(address, Behavior(silent=True))  # nobody notices
            self.assert_no_ping(address, begun)
            self.assertEqual(terminal.finish(), 0)

            done = subprocess.run(
                [PROGRAM, "report", "--host", address, "--format", "json", "--since", "1h"],
                env=home.environment(),
                capture_output=True,
                text=True,
                timeout=PATIENCE_SECONDS,
                check=True,
            )

            availability = json.loads(done.stdout)["availability"]
            self.assertEqual(availability["percent"], 100)
            self.assertGreaterEqual(availability["pausedSeconds"], PAUSED_SECONDS - 1)


if __name__ == "__main__":
    unittest.main()
