"""Real notification daemons, and desktops for them."""

from __future__ import annotations

import abc
import json
import os
import pathlib
import re
import signal

from endtoend.waiting import eventually

from .desktops import Desktop, Installed, X11Desktop
from .pictures import Rectangle
from .program import PATIENCE
from .session import Session

NOTIFICATIONS = "org.freedesktop.Notifications"
SENDER = re.compile(r"^method call .* sender=(\S+)", re.MULTILINE)
# Notifications stay for two minutes: reading them off the screen may take long on a busy machine.
XFCE_SETTINGS = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-notifyd" version="1.0"><property name="expire-timeout" type="int" value="120"/></channel>
"""


class BareDesktop(X11Desktop):
    """A display, and no panel."""

    name = "bare"
    executables = ("Xvfb", "openbox")
    size = (640, 480)

    def start_panel(self) -> None:
        pass

    @property
    def strip(self) -> Rectangle:
        """Notifications may be anywhere."""
        return self.area


class Daemon(Installed):
    """Running from the constructor on."""

    name: str

    def __init__(self, desktop: Desktop) -> None:
        self.desktop = desktop
        self.session = desktop.session
        self.process = self.session.spawn("daemon", self.command())
        eventually(lambda: self.session.bus.owner(NOTIFICATIONS), PATIENCE, "the daemon has its name")

    @abc.abstractmethod
    def command(self) -> list[str]: ...

    @abc.abstractmethod
    def shown(self) -> list[tuple[str, str]]:
        """Summary and body of each notification that it shows now or has just shown."""

    def hang(self) -> None:
        """It keeps its name and answers no call."""
        os.kill(self.process.pid, signal.SIGSTOP)


class Requests:
    """Writes down, from the constructor on, what daemons are asked to show, and with which hints."""

    def __init__(self, session: Session) -> None:
        self.session = session
        rule = f"type='method_call',interface='{NOTIFICATIONS}',member='Notify'"
        session.spawn("requests", ["stdbuf", "-oL", "dbus-monitor", "--session", rule])
        # A monitor gives up its own name: that is the first message that it hears.
        eventually(lambda: "NameLost" in self.text, PATIENCE, "the listener listens")

    @property
    def text(self) -> str:
        return self.session.log("requests")

    def sender(self) -> str:
        """The executable that asked first."""
        name = SENDER.search(self.text)
        assert name is not None, "no program has asked"
        return os.readlink(f"/proc/{self.session.bus.process(name[1])}/exe")


class Dunst(Daemon):
    name = "dunst"
    executables = ("dunst", "dunstctl")
    title = "Dunst"  # of the window with its notifications

    def command(self) -> list[str]:
        return ["dunst"]

    def shown(self) -> list[tuple[str, str]]:
        """It tells only of those that it no longer shows, so they are closed first. The latest one is the first."""
        self.session.run(["dunstctl", "close-all"])
        entries = json.loads(self.session.run(["dunstctl", "history"]))["data"][0]
        return [(entry["summary"]["data"], entry["body"]["data"]) for entry in entries]


class Xfce4Notifyd(Daemon):
    name = "xfce4-notifyd"
    # Below the folder of libraries, whose name is the machine's.
    path = str(next(pathlib.Path("/usr/lib").glob("*/xfce4/notifyd/xfce4-notifyd"), name))
    executables = (path,)

    def command(self) -> list[str]:
        file = self.session.config / "xfce4/xfconf/xfce-perchannel-xml/xfce4-notifyd.xml"
        self.session.write(file, XFCE_SETTINGS)
        return [self.path]

    def shown(self) -> list[tuple[str, str]]:
        """As assistive technology sees it: in each, the summary stands above the body."""
        texts = self.desktop.accessible(self.name).texts()
        return list(zip(texts, texts[1:], strict=False))
