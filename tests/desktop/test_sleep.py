"""A night's sleep: what the terminal program does when the login manager announces it.

systemd-logind cannot run here: python-dbusmock's template stands in for it, with its methods and its signal.
"""

from __future__ import annotations

import os
import sys
import time
import unittest
from collections.abc import Callable
from importlib.util import find_spec

from gi.repository import GLib

from endtoend.waiting import eventually
from endtoend.watch import Home, Watch, new_home
from lab import Behavior, Lab

from .panels import SKIPPED
from .program import PATIENCE
from .session import Session

ADDRESS = "10.77.0.36"
LOGIND, LOGIND_PATH, MANAGER = "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"
# The network gets so long to come back after a sleep.
RESTART_SECONDS = 2
# So long pings are watched to stay away.
ASLEEP_SECONDS = 3


def never(condition: Callable[[], object], seconds: float) -> bool:
    """Whether a condition stays false for so long."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if condition():
            return False
    return True


class Night(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        if find_spec("dbusmock") is None:
            required = os.environ.get("TARNWICK_DESKTOPS") == "require"
            print(f"{'FAILED' if required else 'SKIPPED'}: not installed: python3-dbusmock", file=sys.stderr)
            sys.exit(1 if required else SKIPPED)

    def setUp(self) -> None:
        self.lab = Lab()
        self.addCleanup(self.lab.close)
        self.lab.behave(ADDRESS, Behavior())
        self.session = Session("sleep")
        self.addCleanup(self.session.close)
        self.system = self.session.start_system_bus()
        self.addCleanup(self.system.close)

    def start_logind(self) -> None:
        command = ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"]
        self.session.spawn("logind", command)
        eventually(lambda: self.system.owner(LOGIND), PATIENCE, "the login manager answers")

    def inhibitors(self) -> list[tuple[object, ...]]:
        return self.system.call(LOGIND, LOGIND_PATH, MANAGER, "ListInhibitors")[0]

    def announce(self, start: bool) -> None:
        self.system.call(
            LOGIND,
            LOGIND_PATH,
            "org.freedesktop.DBus.Mock",
            "EmitSignal",
            "(sssav)",
            (MANAGER, "PrepareForSleep", "b", [GLib.Variant("b", start)]),
        )

    def requests(self) -> int:
        return len(self.lab.requests(ADDRESS))

    def watching(self, home: Home) -> Watch:
        return Watch(home, ADDRESS, environment={"DBUS_SYSTEM_BUS_ADDRESS": self.system.address})

    def test_the_sleep_waits_until_the_statistics_are_saved_and_pings_come_back_after_it(self) -> None:
        self.start_logind()
        with new_home() as home, self.watching(home) as program:
            eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")
            eventually(lambda: self.requests() >= 3, PATIENCE, "pings")
            self.assertFalse(home.stats_file.exists(), "nothing is due to be saved yet")

            self.announce(True)

            eventually(lambda: not self.inhibitors(), PATIENCE, "the sleep may begin")
            saved = home.stats()[ADDRESS]["sent"]
            asleep = self.requests()
            self.assertGreaterEqual(saved, 3)
            self.assertLessEqual(asleep - saved, 1, "one may have been on its way")
            self.assertTrue(never(lambda: self.requests() > asleep, ASLEEP_SECONDS), "no pings while asleep")

            self.announce(False)
            woken = time.monotonic()

            eventually(lambda: self.requests() > asleep, RESTART_SECONDS + PATIENCE, "pings after the sleep")
            self.assertGreaterEqual(time.monotonic() - woken, RESTART_SECONDS - 0.1)
            eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "the next sleep is asked to wait")
            self.assertEqual(program.errors(), "")

    def test_a_login_manager_that_comes_late_is_heard(self) -> None:
        with new_home() as home, self.watching(home):
            eventually(lambda: self.requests() >= 1, PATIENCE, "pings")

            self.start_logind()

            eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")

    def test_the_end_of_the_program_lets_a_sleep_begin(self) -> None:
        self.start_logind()
        with new_home() as home, self.watching(home) as program:
            eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")

            self.assertEqual(program.finish(), 0)

        eventually(lambda: not self.inhibitors(), PATIENCE, "nobody holds a sleep up")
