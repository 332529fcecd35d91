"""Both programs in a session that has neither a display nor a panel: what they owe to their connection alone."""

from __future__ import annotations

import pathlib
import signal
import unittest

from endtoend import watch
from lab import Behavior, Lab

from .program import PATIENCE, PROGRAM
from .session import Session


class Headless(unittest.TestCase):
    """A laboratory whose address answers, and a session with nothing in it yet."""

    address: str
    program: str

    def setUp(self) -> None:
        self.lab = Lab()
        self.addCleanup(self.lab.close)
        self.lab.behave(self.address, Behavior())
        self.session = Session(f"headless-{pathlib.Path(self.program).name}")
        self.addCleanup(self.session.close)
        self.stats_file = self.session.data / "Tarnwick/stats.json"

    def start(self) -> None:
        settings = watch.settings(Hostname=self.address, PingInterval=1)
        self.process = self.session.spawn("program", [self.program, *settings], {"QT_QPA_PLATFORM": "offscreen"})
        self.addCleanup(self.session.kill, self.process)

    def finish(self) -> int:
        """Its exit status after a polite signal."""
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(timeout=PATIENCE)

    def requests(self) -> int:
        return len(self.lab.requests(self.address))


class OfTheDesktop:
    program = PROGRAM


class OfTheTerminal:
    program = watch.PROGRAM
