"""What the program gives to another one that it starts from the settings window, so that it may come to the front."""

from __future__ import annotations

import os
import unittest

from endtoend.waiting import eventually

from .panels import WaybarPanel, XfcePanel
from .plasma_panels import PlasmaWaylandPanel
from .program import PATIENCE, Program
from .settings import SettingsWindow

REMEDY = "Startup Settings…"
# The desktop has switched it off, which the window tells with a button that leads to the desktop's own settings.
SWITCHED_OFF = "[Desktop Entry]\nType=Application\nName=Tarnwick\nExec=/bin/true\nHidden=true\n"
# A stand-in for Xfce's, which writes down what it gets.
STAND_IN = """#!/bin/sh
printf '%s|%s' "$XDG_ACTIVATION_TOKEN" "$DESKTOP_STARTUP_ID" > "$0.new"
mv "$0.new" "$0.token"
"""


class Tokens(SettingsWindow):
    def setUp(self) -> None:
        session = self.desktop.session
        session.write(session.config / "autostart/org.tarnwick.tarnwick.desktop", SWITCHED_OFF)
        script = session.folder / "stand-in/xfce4-session-settings"
        session.write(script, STAND_IN)
        script.chmod(0o755)
        self.token = script.with_suffix(".token")
        prefix = ("env", "XDG_CURRENT_DESKTOP=XFCE", f"PATH={script.parent}:{os.environ['PATH']}")
        self.program = Program(self.desktop, prefix)
        self.addCleanup(self.program.end)
        self.item = self.program.item_up()
        self.open_settings()

    def check(self, token: str, startup: str) -> None:
        """On Wayland."""
        self.assertNotEqual(token, "")
        # What one compositor gives where it grants nothing.
        self.assertFalse(token.startswith("not-granted"), token)
        self.assertEqual(startup, "")

    def test_the_started_program_gets_a_token(self) -> None:
        def is_reached() -> bool:
            before = self.focused()
            if before != REMEDY:
                self.desktop.key("Tab")
            return before == REMEDY

        eventually(is_reached, PATIENCE, "Tab leads to the button")
        self.desktop.key("space")

        eventually(self.token.exists, PATIENCE, "the other program runs")
        token, startup = self.token.read_text(encoding="utf-8").split("|")
        self.check(token, startup)


class InWaybar(Tokens, unittest.TestCase):
    panel = WaybarPanel


class InXfce(Tokens, unittest.TestCase):
    panel = XfcePanel

    def check(self, token: str, startup: str) -> None:
        self.assertEqual(token, "")
        # The time is that of a key or click, in the display's milliseconds.
        self.assertRegex(startup, r"^tarnwick-\d+-1_TIME[1-9]\d*$")


class InPlasma(Tokens, unittest.TestCase):
    panel = PlasmaWaylandPanel
