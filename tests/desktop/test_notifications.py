"""What real notification daemons show of an outage and its end, and the programs where there is none."""

from __future__ import annotations

import abc
import json
import pathlib
import shutil
import signal
import subprocess
import unittest

from endtoend import watch
from endtoend.waiting import eventually
from lab import Behavior, Lab

from .panels import X11Desktop
from .pictures import Rectangle, changed
from .program import PATIENCE, PROGRAM
from .session import Session

ADDRESS = "10.77.0.35"
NOTIFICATIONS = "org.freedesktop.Notifications"
DOWN = ("Tarnwick — Connection down", "Your internet connection seems to be down.")
RESTORED = ("Tarnwick — Connection restored", "Your internet connection has been restored.")
# Silence for so long is an outage, at a time-out of a second; a connection that was down is tried again as often.
OUTAGE_SECONDS = 10
ICONS = pathlib.Path(__file__).resolve().parents[2] / "packaging/icons"
SETTINGS = (f"Hostname={ADDRESS}", "PingInterval=1", "PingTimeout=1", "ShowNotifications=true")
# On which nobody is started who is asked for.
BARE_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <policy context="default"><allow send_destination="*"/><allow own="*"/></policy>
</busconfig>
"""
# Notifications stay for so many seconds: reading them off the screen may take long on a busy machine.
XFCE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-notifyd" version="1.0"><property name="expire-timeout" type="int" value="120"/></channel>
"""


class NotificationDesktop(X11Desktop):
    """A display and a notification daemon, and no panel."""

    size = (640, 480)

    @abc.abstractmethod
    def shown(self) -> set[tuple[str, str]]:
        """Summary and body of each notification that it shows now or has just shown."""

    @property
    def strip(self) -> Rectangle:
        """Notifications may be anywhere."""
        return self.area

    def start_daemon(self, command: list[str]) -> None:
        shutil.copytree(ICONS, self.session.data / "icons")
        self.panel = self.session.spawn("daemon", command)
        eventually(lambda: self.session.bus.owner(NOTIFICATIONS), PATIENCE, "the daemon has its name")


class Dunst(NotificationDesktop):
    name = "dunst"
    executables = ("Xvfb", "openbox", "dunst", "dunstctl")

    def start_panel(self) -> None:
        self.start_daemon(["dunst"])

    def shown(self) -> set[tuple[str, str]]:
        """It tells only of those that it no longer shows, so they are closed first."""
        self.session.run(["dunstctl", "close-all"])
        history = json.loads(self.session.run(["dunstctl", "history"]))["data"][0]
        return {(entry["summary"]["data"], entry["body"]["data"]) for entry in history}


class Xfce4Notifyd(NotificationDesktop):
    name = "xfce4-notifyd"
    # Below the folder of libraries, whose name is the machine's.
    path = str(next(pathlib.Path("/usr/lib").glob("*/xfce4/notifyd/xfce4-notifyd"), "xfce4-notifyd"))
    executables = ("Xvfb", "openbox", path)

    def start_panel(self) -> None:
        file = self.session.config / "xfce4/xfconf/xfce-perchannel-xml/xfce4-notifyd.xml"
        self.session.write(file, XFCE_SETTINGS)
        self.start_daemon([self.path])

    def shown(self) -> set[tuple[str, str]]:
        """As assistive technology sees it."""
        texts = self.accessible("xfce4-notifyd").texts()
        return {notification for notification in (DOWN, RESTORED) if set(notification) <= set(texts)}


def start(desktop: X11Desktop, program: str) -> subprocess.Popen[bytes]:
    settings = [argument for setting in SETTINGS for argument in ("--set", setting)]
    return desktop.session.spawn("program", [program, *settings])


class NotificationChecks:
    desktop_type: type[NotificationDesktop]
    program = PROGRAM

    @classmethod
    def setUpClass(cls) -> None:
        cls.desktop_type.require()
        cls.lab = Lab()
        cls.addClassCleanup(cls.lab.close)
        cls.lab.behave(ADDRESS, Behavior())
        cls.desktop = cls.desktop_type()
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)
        cls.desktop.park_pointer()

    def test_an_outage_and_its_end_are_shown(self) -> None:
        empty = self.desktop.picture()
        process = start(self.desktop, self.program)
        self.addCleanup(self.desktop.session.kill, process)
        eventually(lambda: len(self.lab.requests(ADDRESS)) >= 3, PATIENCE, "answers")

        self.lab.change(ADDRESS, silent=True)

        eventually(
            lambda: changed(empty, self.desktop.picture(), self.desktop.area),
            OUTAGE_SECONDS + PATIENCE,
            "something is drawn",
        )
        self.desktop.screenshot(f"notification-{self.desktop.session.logs.name}-{pathlib.Path(self.program).name}.png")
        eventually(lambda: DOWN in self.desktop.shown(), PATIENCE, "the outage is shown")

        self.lab.change(ADDRESS, silent=False)

        # Beside the first one, not in its place.
        eventually(
            lambda: {DOWN, RESTORED} <= self.desktop.shown(), OUTAGE_SECONDS + PATIENCE, "the end of it is shown"
        )


class InDunst(NotificationChecks, unittest.TestCase):
    desktop_type = Dunst


class InXfce(NotificationChecks, unittest.TestCase):
    desktop_type = Xfce4Notifyd


class OfTheTerminalProgram(NotificationChecks, unittest.TestCase):
    desktop_type = Dunst
    program = watch.PROGRAM


class WithoutDaemon(unittest.TestCase):
    """And with one that hangs."""

    def setUp(self) -> None:
        self.lab = Lab()
        self.addCleanup(self.lab.close)
        self.lab.behave(ADDRESS, Behavior())

    def check_outage(self, environment: dict[str, str]) -> None:
        """It is noticed, and so is its end."""
        settings = [argument for setting in SETTINGS for argument in ("--set", setting)]
        with watch.new_home() as home, watch.Watch(home, *settings, environment=environment) as program:
            program.wait_for(lambda values: values["status"] == "up", PATIENCE, "a reply")
            self.lab.change(ADDRESS, silent=True)
            program.wait_for(lambda values: values["status"] == "down", OUTAGE_SECONDS, "the outage")
            self.lab.change(ADDRESS, silent=False)
            program.wait_for(lambda values: values["status"] == "up", OUTAGE_SECONDS, "the end of the outage")
            self.assertEqual(program.errors(), "")
            self.assertEqual(program.finish(), 0)

    def test_without_a_bus_an_outage_is_noticed_all_the_same(self) -> None:
        self.check_outage({})

    def test_without_a_daemon_an_outage_is_noticed_all_the_same(self) -> None:
        session = Session("no-notifications")
        self.addCleanup(session.close)
        session.write(session.folder / "bare.conf", BARE_BUS)
        address = session.environment["DBUS_SESSION_BUS_ADDRESS"]
        session.spawn(
            "bus", ["dbus-daemon", f"--config-file={session.folder}/bare.conf", "--nofork", f"--address={address}"]
        )
        eventually((session.runtime / "bus").exists, PATIENCE, "the bus")
        self.check_outage({"DBUS_SESSION_BUS_ADDRESS": address})

    def test_with_a_daemon_that_hangs_an_outage_is_noticed_all_the_same(self) -> None:
        Dunst.require()
        desktop = Dunst()
        desktop.start()
        self.addCleanup(desktop.stop)
        desktop.panel.send_signal(signal.SIGSTOP)
        self.check_outage({"DBUS_SESSION_BUS_ADDRESS": desktop.session.environment["DBUS_SESSION_BUS_ADDRESS"]})
