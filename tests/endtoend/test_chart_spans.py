"""Charts of longer spans in the terminal view: keys choose them, and they show what the journal holds."""

from __future__ import annotations

import re
import unittest
from collections.abc import Callable

from lab import Behavior, Lab

from .concurrently import ConcurrentTestCase
from .past import Past
from .terminal import Terminal
from .test_terminal import BLOCKS
from .watch import PATIENCE_SECONDS, Home, Watch, new_home, settings

TITLES = {b"1": "Last 5 minutes", b"2": "Last hour", b"3": "Last 24 hours", b"4": "Last 7 days"}
WALL, HATCH = "▒", "╱"

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def record(home: Home, address: str) -> None:
    """Leaves a journal in which the host has a minute."""
    lab.behave(address, Behavior(delay_ms=25))
    with Watch(home, address) as watch:
        watch.wait_for(lambda now: now["session"]["replied"] >= 1, PATIENCE_SECONDS, "a reply")
        if watch.finish() != 0:
            raise AssertionError(watch.errors())


def is_titled(title: str) -> Callable[[str], bool]:
    return lambda text: re.search(rf"^ {title} ", text, re.MULTILINE) is not None


def chart_of(text: str, title: str) -> str:
    """The rows between the header and the caption."""
    lines = text.splitlines()
    caption = next(number for number, line in enumerate(lines) if line.startswith(f" {title} "))
    return "\n".join(lines[3:caption])


class Spans(ConcurrentTestCase):
    def test_keys_show_what_was_recorded(self) -> None:
        address = "10.77.0.30"
        with new_home() as home:
            record(home, address)
            with Past(home.journal_file, address) as past:
                past.answered(50, 30, slowest_ms=40)
                past.outage(28, 24)
                past.gap("asleep", 20, 10)
                past.answered(3000, 2000, slowest_ms=40)  # of the day before yesterday
            with Terminal(home, address) as terminal:
                terminal.wait_for(lambda text: "Excellent" in text, PATIENCE_SECONDS, "a good connection")
                self.assertIn("1-4 span, q quits", terminal.text())
                charts = {}
                for key, title in reversed(TITLES.items()):
                    terminal.type(key)
                    text = terminal.wait_for(is_titled(title), PATIENCE_SECONDS, title)
                    charts[title] = chart_of(text, title)
                self.assertEqual((terminal.screen.overflows, terminal.screen.scrolls), (0, 0), terminal.text())
                terminal.type(b"q")
                self.assertEqual(terminal.wait(), 0)

        for title in ("Last hour", "Last 24 hours", "Last 7 days"):
            self.assertIn(WALL, charts[title], title)
            self.assertTrue(any(block in charts[title] for block in BLOCKS), charts[title])
        self.assertIn(HATCH, charts["Last hour"])
        self.assertRegex(charts["Last hour"].splitlines()[-1], r"\b\d\d:\d0\b")
        self.assertRegex(charts["Last 7 days"].splitlines()[-1], r"\b(Mon|Tue|Wed|Thu|Fri|Sat|Sun)\b")
        self.assertNotIn(WALL, charts["Last 5 minutes"])
        self.assertNotIn(HATCH, charts["Last 5 minutes"])

    def test_the_present_minute_is_in_the_hour(self) -> None:
        address = "10.77.0.31"
        lab.behave(address, Behavior(delay_ms=25))
        with new_home() as home, Terminal(home, address) as terminal:
            terminal.wait_for(lambda text: "Excellent" in text, PATIENCE_SECONDS, "a good connection")
            terminal.type(b"2")
            text = terminal.wait_for(is_titled("Last hour"), PATIENCE_SECONDS, "the hour")

            self.assertTrue(any(block in chart_of(text, "Last hour") for block in BLOCKS), text)

    def test_without_a_history_it_says_why(self) -> None:
        address = "10.77.0.32"
        lab.behave(address, Behavior(delay_ms=25))
        with new_home() as home, Terminal(home, *settings(KeepHistory="false"), address) as terminal:
            terminal.wait_for(lambda text: "Excellent" in text, PATIENCE_SECONDS, "a good connection")
            terminal.type(b"2")
            text = terminal.wait_for(is_titled("Last hour"), PATIENCE_SECONDS, "the hour")

            self.assertIn("No history is kept: KeepHistory is off.", chart_of(text, "Last hour"))
            terminal.type(b"1")
            terminal.wait_for(is_titled("Last 5 minutes"), PATIENCE_SECONDS, "the five minutes")
            terminal.type(b"q")
            self.assertEqual(terminal.wait(), 0)
        self.assertEqual(home.files("state"), [])


if __name__ == "__main__":
    unittest.main()
