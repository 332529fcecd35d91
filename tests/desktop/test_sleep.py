"""A night's sleep: what both programs do when the login manager announces it.

systemd-logind cannot run here: python-dbusmock's template stands in for it, with its methods and its signal.
"""

from __future__ import annotations

import json
import time
from importlib.util import find_spec

from gi.repository import GLib

from endtoend.waiting import eventually, never

from .headless import Headless, OfTheDesktop, OfTheTerminal
from .desktops import Installed
from .program import PATIENCE

ADDRESS = "10.77.0.36"
LOGIND, LOGIND_PATH, MANAGER = "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"
# The network gets this time to come back after a sleep.
RESTART_SECONDS = 2
# How long no ping may come.
ASLEEP_SECONDS = 3


class Dbusmock(Installed):
    @classmethod
    def missing(cls) -> list[str]:
        return [] if find_spec("dbusmock") else ["python3-dbusmock"]


class Night(Headless):
    address = ADDRESS

    @classmethod
    def setUpClass(cls) -> None:
        Dbusmock.require()

    def setUp(self) -> None:
        super().setUp()
        self.session.start_bus()
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

    def saved_pings(self) -> int:
        return json.loads(self.stats_file.read_text(encoding="utf-8"))[ADDRESS]["sent"]

    def test_the_sleep_waits_for_the_save_and_pings_come_back(self) -> None:
        self.start_logind()
        self.start()
        eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")
        eventually(lambda: self.requests() >= 3, PATIENCE, "pings")
        self.assertFalse(self.stats_file.exists(), "nothing is due to be saved yet")

        self.announce(True)

        eventually(lambda: not self.inhibitors(), PATIENCE, "the sleep may begin")
        saved = self.saved_pings()
        asleep = self.requests()
        self.assertGreaterEqual(saved, 3)
        self.assertLessEqual(asleep - saved, 1, "one may have been on its way")
        self.assertTrue(never(lambda: self.requests() > asleep, ASLEEP_SECONDS), "no pings while asleep")

        woken = time.monotonic()
        self.announce(False)

        eventually(lambda: self.requests() > asleep, RESTART_SECONDS + PATIENCE, "pings after the sleep")
        self.assertGreaterEqual(time.monotonic() - woken, RESTART_SECONDS)
        eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "the next sleep is asked to wait")

    def test_a_login_manager_that_comes_late_is_heard(self) -> None:
        self.start()
        eventually(lambda: self.requests() >= 1, PATIENCE, "pings")

        self.start_logind()

        eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")

    def test_the_end_of_the_program_lets_a_sleep_begin(self) -> None:
        self.start_logind()
        self.start()
        eventually(lambda: len(self.inhibitors()) == 1, PATIENCE, "sleeps are asked to wait")

        self.assertEqual(self.finish(), 0)

        eventually(lambda: not self.inhibitors(), PATIENCE, "no program holds a sleep up")


class NightOfTheDesktop(OfTheDesktop, Night):
    pass


class NightOfTheTerminal(OfTheTerminal, Night):
    pass


del Night  # only its subclasses are tests
