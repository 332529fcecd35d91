"""A desktop for tests: a display, a bus and a panel of its own, looked at and clicked."""

from __future__ import annotations

import abc
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time

from PIL import Image

from endtoend.waiting import eventually

from .accessible import Node
from .bus import BusError
from .pictures import Rectangle, changed
from .session import OUTPUT, Session
from .x11 import LEFT, X11Screen

PICTURES = OUTPUT / "pictures"
WATCHER, WATCHER_PATH = "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher"
PORTALS = ("org.freedesktop.portal.", "org.freedesktop.impl.portal.")
START_SECONDS = 20
SKIPPED = 77
# Where no panel is.
PARKED = (400, 400)
# The panel is at rest when this many pictures in a row are equal.
STILL_LOOKS = 4
# Seconds that it is given for that, beside other panels.
REST_PATIENCE = 30


class Installed(abc.ABC):
    """What a test finds on this machine."""

    executables: tuple[str, ...]

    @classmethod
    def missing(cls) -> list[str]:
        """What this machine lacks for it."""
        return [program for program in cls.executables if shutil.which(program) is None]

    @classmethod
    def require(cls) -> None:
        """Ends the run when it is not installed: with 77, or with 1 where it is required."""
        missing = cls.missing()
        if missing:
            required = os.environ.get("TARNWICK_DESKTOPS") == "require"
            print(f"{'FAILED' if required else 'SKIPPED'}: not installed: {', '.join(missing)}", file=sys.stderr)
            sys.exit(1 if required else SKIPPED)


class Desktop(Installed):
    """A display, a bus and a panel. `start` brings all of it up, `stop` ends it."""

    name: str
    unprivileged = False
    # Tests put their own in the place of these, if any.
    withheld_services: tuple[str, ...] = PORTALS
    session: Session

    def start(self) -> None:
        self.session = self.new_session()
        try:
            self.start_display()
            self.start_panel()
        except BaseException:
            self.stop()
            raise

    def new_session(self) -> Session:
        return Session(self.name, self.unprivileged, self.withheld_services)

    def stop(self) -> None:
        self.close_display()
        self.session.close()

    def kill_panel(self) -> None:
        self.session.kill(self.panel)
        eventually(lambda: not self.has_host(), 10, "the panel's place for items has gone")

    def restart_panel(self) -> None:
        self.kill_panel()
        self.start_panel()

    @abc.abstractmethod
    def start_display(self) -> None: ...

    display: subprocess.Popen[bytes]  # the program that draws the screen, once it is started

    @abc.abstractmethod
    def close_display(self) -> None: ...

    @abc.abstractmethod
    def start_panel(self) -> None:
        """Returns when items can register."""

    area: Rectangle  # the whole screen

    @property
    @abc.abstractmethod
    def strip(self) -> Rectangle:
        """The part of the screen in which items are drawn, and nothing else changes."""

    @property
    def rest(self) -> Rectangle:
        """The screen without the panel."""
        top = self.strip.height if self.strip.y == 0 else 0
        return Rectangle(0, top, self.area.width, self.area.height - self.strip.height)

    @abc.abstractmethod
    def picture(self) -> Image.Image: ...

    @abc.abstractmethod
    def move(self, x: int, y: int) -> None: ...

    @abc.abstractmethod
    def click(self, x: int, y: int, button: int = LEFT) -> None: ...

    @abc.abstractmethod
    def scroll(self, x: int, y: int, up: bool = True) -> None: ...

    @abc.abstractmethod
    def key(self, name: str, *modifiers: str) -> None: ...

    @abc.abstractmethod
    def windows(self) -> list[tuple[str, Rectangle]]: ...

    @abc.abstractmethod
    def focused_title(self) -> str:
        """Of the window that has the keyboard."""

    def clipboard(self) -> str:
        """What another program would paste."""
        raise NotImplementedError

    def dismiss_menu(self) -> None:
        """A menu that the panel has drawn."""
        self.key("Escape")

    def has_host(self) -> bool:
        return self.session.bus.owner(WATCHER) is not None

    def wait_for_watcher(self) -> None:
        eventually(self.has_host, START_SECONDS, "the panel watches for items")
        self.watched_since = time.time()

        def is_ready() -> bool:
            if self.panel.poll() is not None:
                raise AssertionError(f"the panel ended with {self.panel.returncode}: {self.session.log('panel')}")
            return self.watcher_property("IsStatusNotifierHostRegistered") is True

        eventually(is_ready, START_SECONDS, "the panel takes items")

    def watcher_property(self, name: str) -> object:
        try:
            return self.session.bus.property(WATCHER, WATCHER_PATH, WATCHER, name)
        except BusError:
            return None

    def screenshot(self, path: pathlib.Path | str) -> Image.Image:
        """Also kept as a file; a relative path is below the folder of pictures."""
        picture = self.picture()
        file = PICTURES / path
        file.parent.mkdir(parents=True, exist_ok=True)
        picture.save(file)
        return picture

    def keep_failure(self, test: str) -> None:
        """What there was to see when a test failed, and what each thread was doing: among the pictures."""
        self.screenshot(f"failed/{test}.png")
        (PICTURES / f"failed/{test}.txt").write_text(self.session.threads(), encoding="utf-8")

    def still_picture(self, timeout: float = REST_PATIENCE) -> Image.Image:
        """A picture of the panel at rest."""
        latest = [self.picture()] * STILL_LOOKS

        def is_still() -> Image.Image | None:
            latest.append(self.picture())
            recent = latest[-STILL_LOOKS:]
            still = all(changed(recent[0], other, self.strip) is None for other in recent[1:])
            return recent[-1] if still and len(latest) >= 2 * STILL_LOOKS else None

        return eventually(is_still, timeout, "the panel is at rest")

    def park_pointer(self) -> None:
        """Away from the panel: what is pointed at may look different."""
        self.move(*PARKED)

    def item_rectangle(self, before: Image.Image, timeout: float = REST_PATIENCE) -> Rectangle:
        """Where something is drawn in the panel that was not there before."""
        self.park_pointer()

        def appeared() -> Rectangle | None:
            return changed(before, self.picture(), self.strip) and changed(before, self.still_picture(), self.strip)

        return eventually(appeared, timeout, "something new in the panel")

    def accessible(self, application: str = "*") -> Node:
        """What assistive technology sees of the applications of that name, below one node."""
        trees = json.loads(self.session.run(self._accessible_command("tree", application), timeout=30))
        return Node("", "", "", None, (), tuple(Node.from_json(tree) for tree in trees))

    def act(self, application: str, name: str) -> None:
        """Carries out the first action of the control with that name."""
        self.session.run(self._accessible_command("act", application, name), timeout=30)

    def set_value(self, application: str, name: str, value: float) -> None:
        """Sets the value of the control with that name."""
        self.session.run(self._accessible_command("set", application, name, str(value)), timeout=30)

    def set_text(self, application: str, name: str, text: str) -> None:
        """Puts a text in the place of the one that the field with that name holds."""
        self.session.run(self._accessible_command("write", application, name, text), timeout=30)

    def _accessible_command(self, *arguments: str) -> list[str]:
        script = pathlib.Path(__file__).with_name("accessible.py")
        return ["/usr/bin/python3", "-B", self.session.own_copy(str(script)), *arguments]

    panel: subprocess.Popen[bytes]
    watched_since: float  # wall clock


class X11Desktop(Desktop):
    window_manager: tuple[str, ...] = ("openbox",)  # its command, or none
    size = (1280, 800)
    screen: X11Screen

    @property
    def area(self) -> Rectangle:
        return self.screen.area

    def start_display(self) -> None:
        self.screen = X11Screen(self.session, *self.size)
        self.session.start_bus()
        if self.window_manager:
            self.screen.start_window_manager(self.session, self.window_manager)

    @property
    def display(self) -> subprocess.Popen[bytes]:
        return self.screen.server

    def close_display(self) -> None:
        if hasattr(self, "screen"):
            self.screen.close()

    def picture(self) -> Image.Image:
        return self.screen.screenshot()

    def move(self, x: int, y: int) -> None:
        self.screen.move(x, y)

    def click(self, x: int, y: int, button: int = LEFT) -> None:
        self.screen.click(x, y, button)

    def scroll(self, x: int, y: int, up: bool = True) -> None:
        self.screen.scroll(x, y, up)

    def key(self, name: str, *modifiers: str) -> None:
        self.screen.key(name, *modifiers)

    def windows(self) -> list[tuple[str, Rectangle]]:
        return self.screen.windows()

    def focused_title(self) -> str:
        return self.screen.focused_title()

    def clipboard(self) -> str:
        return self.screen.clipboard()
