"""Real panels, each in a session of its own: started, killed, looked at and clicked."""

from __future__ import annotations

import abc
import contextlib
import json
import os
import pathlib
import shutil
import subprocess
import sys
import time
from collections.abc import Iterator

from gi.repository import GLib
from PIL import Image

from endtoend.waiting import eventually

from .accessible import Node
from .bus import BusError
from .pictures import Rectangle, changed, foreground
from .session import OUTPUT, Session
from .wayland import Devices
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

    def still_picture(self, timeout: float = 10) -> Image.Image:
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

    def item_rectangle(self, before: Image.Image, timeout: float = 10) -> Rectangle:
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
    window_manager = True
    size = (1280, 800)
    screen: X11Screen

    @property
    def area(self) -> Rectangle:
        return self.screen.area

    def start_display(self) -> None:
        self.screen = X11Screen(self.session, *self.size)
        self.session.start_bus()
        if self.window_manager:
            self.screen.start_window_manager(self.session)

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


XFCE_PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="26"/>
      <property name="icon-size" type="uint" value="0"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="false"/>
    </property>
  </property>
</channel>
"""


class XfcePanel(X11Desktop):
    name = "xfce"
    executables = ("Xvfb", "openbox", "xfce4-panel")
    height = 26

    def start_panel(self) -> None:
        file = self.session.config / "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        if not file.exists():
            self.session.write(file, XFCE_PANEL)
        self.panel = self.session.spawn("panel", ["xfce4-panel", "--disable-wm-check", "--sm-client-disable"])
        self.wait_for_watcher()

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, 0, self.area.width, self.height)

    def set_dark(self, dark: bool) -> None:
        self.session.run(["xfconf-query", "-c", "xfce4-panel", "-p", "/panels/dark-mode", "-s", str(dark).lower()])


class ScaledXfcePanel(XfcePanel):
    """On a display with twice as many dots an inch."""

    name = "xfce-2x"
    size = (1920, 1200)
    height = 2 * XfcePanel.height

    def start_display(self) -> None:
        super().start_display()
        self.screen.set_dots_per_inch(192)
        # What makes other programs large is the panel's own scale.
        self.session.environment["GDK_SCALE"] = "2"


class LatePanel(XfcePanel):
    """A desktop without any place for items until `start_panel` is called."""

    name = "late"

    def start(self) -> None:
        self.session = self.new_session()
        try:
            self.start_display()
        except BaseException:
            self.stop()
            raise


LXQT_PANEL = """[General]
__userfile__=true
panels=panel1

[panel1]
plugins=spacer,statusnotifier
position=Bottom
panelSize=32
iconSize=22
width=100
width-percent=true

[spacer]
type=spacer
expandable=true

[statusnotifier]
type=statusnotifier
"""


class LxqtPanel(X11Desktop):
    name = "lxqt"
    executables = ("Xvfb", "openbox", "lxqt-panel")
    height = 32

    def start_panel(self) -> None:
        file = self.session.config / "panel.conf"
        self.session.write(file, LXQT_PANEL)
        self.panel = self.session.spawn("panel", ["lxqt-panel", "-c", str(file)])
        self.wait_for_watcher()

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, self.area.height - self.height, self.area.width, self.height)


TINT2_PANEL = """panel_items = FS
panel_position = bottom center horizontal
panel_size = 100% 30
panel_padding = 4 4 4
rounded = 0
border_width = 0
background_color = #000000 100
border_color = #000000 100
panel_background_id = 1
systray_icon_size = 22
systray_padding = 4 2 4
strut_policy = follow_size
"""


class Tint2Panel(X11Desktop):
    """Only the classic tray."""

    name = "tint2"
    executables = ("Xvfb", "openbox", "tint2")
    height = 30

    def start_panel(self) -> None:
        file = self.session.config / "tint2rc"
        self.session.write(file, TINT2_PANEL)
        self.panel = self.session.spawn("panel", ["tint2", "-c", str(file)])
        eventually(self.has_host, START_SECONDS, "the panel takes icons")

    def has_host(self) -> bool:
        return self.screen.has_tray()

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, self.area.height - self.height, self.area.width, self.height)


SWAY = """xwayland disable
output HEADLESS-1 resolution {width}x{height} position 0 0
output HEADLESS-1 background #203040 solid_color
seat seat0 fallback true
default_border none
for_window [app_id="tarnwick" title="^Tarnwick$"] floating enable, border none, move position 930 40
"""
WAYBAR = '{"layer": "top", "height": 30, "modules-right": ["tray"], "tray": {"icon-size": 22, "spacing": 6}}'
WAYBAR_STYLE = "window#waybar { background: #202020; color: #ffffff; }"


def share_memory_with_everybody() -> None:
    """In a changed root the folder may be without its file system, and closed to the session's user."""
    open_to_all = 0o1777
    if os.stat("/dev/shm").st_mode & open_to_all != open_to_all and os.geteuid() == 0:
        # The mounts are the laboratory's own.
        subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=1777", "tmpfs", "/dev/shm"], check=True, timeout=10)


class WaybarPanel(Desktop):
    """On a Wayland compositor without a screen."""

    name = "waybar"
    executables = ("sway", "waybar", "grim", "swaymsg")
    unprivileged = True
    height = 30
    area = Rectangle(0, 0, 1280, 800)
    devices: Devices

    def start_display(self) -> None:
        session = self.session
        share_memory_with_everybody()
        session.start_bus()
        session.environment |= {
            "WLR_BACKENDS": "headless",
            "WLR_LIBINPUT_NO_DEVICES": "1",
            "WLR_RENDERER": "pixman",
            "SWAYSOCK": str(session.runtime / "sway"),
            "XDG_SESSION_TYPE": "wayland",
            "XDG_CURRENT_DESKTOP": "sway",
        }
        file = session.config / "sway.conf"
        session.write(file, SWAY.format(width=self.area.width, height=self.area.height))
        compositor = session.spawn("display", ["sway", "-c", str(file)])

        def socket() -> pathlib.Path | None:
            if compositor.poll() is not None:
                raise AssertionError(f"the compositor ended: {session.log('display')}")
            sockets = session.runtime.glob("wayland-*")
            return next((path for path in sockets if not path.name.endswith(".lock")), None)

        path = eventually(socket, START_SECONDS, "the compositor has its socket")
        session.environment["WAYLAND_DISPLAY"] = path.name
        eventually(lambda: (session.runtime / "sway").exists(), START_SECONDS, "the compositor takes commands")

        def devices() -> Devices | None:
            with contextlib.suppress(OSError):
                return Devices(str(path), self.area.width, self.area.height)
            return None

        self.devices = eventually(devices, START_SECONDS, "the compositor takes connections")

    def close_display(self) -> None:
        if hasattr(self, "devices"):
            self.devices.close()

    def start_panel(self) -> None:
        folder = self.session.config / "waybar"
        self.session.write(folder / "config", WAYBAR)
        self.session.write(folder / "style.css", WAYBAR_STYLE)
        self.panel = self.session.spawn("panel", ["waybar"], {"GDK_BACKEND": "wayland"})
        self.wait_for_watcher()

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, 0, self.area.width, self.height)

    def picture(self) -> Image.Image:
        file = self.session.runtime / "picture.ppm"
        self.session.run(["grim", "-t", "ppm", str(file)])
        with Image.open(file) as picture:
            return picture.convert("RGB")

    def move(self, x: int, y: int) -> None:
        self.devices.move(x, y)

    def click(self, x: int, y: int, button: int = LEFT) -> None:
        self.devices.click(x, y, button)

    def scroll(self, x: int, y: int, up: bool = True) -> None:
        self.devices.scroll(x, y, up)

    def key(self, name: str, *modifiers: str) -> None:
        self.devices.key(name, *modifiers)

    def dismiss_menu(self) -> None:
        """The panel never has the keyboard."""
        self.click(*PARKED)

    def windows(self) -> list[tuple[str, Rectangle]]:
        return [
            (view["name"] or "", Rectangle(*(view["rect"][key] for key in ("x", "y", "width", "height"))))
            for view in self._views()
            if view.get("visible")
        ]

    def focused_title(self) -> str:
        return next((view["name"] or "" for view in self._views() if view["focused"]), "")

    def _views(self) -> list[dict[str, object]]:
        """The compositor's nodes that are windows."""

        def below(node: dict[str, object]) -> Iterator[dict[str, object]]:
            if node.get("pid"):
                yield node
            for child in (*node["nodes"], *node["floating_nodes"]):
                yield from below(child)

        return list(below(json.loads(self.session.run(["swaymsg", "-t", "get_tree", "-r"]))))


# A busy machine may take its time between two clicks.
DOUBLE_CLICK_MS = 1000
GNOME_SETTINGS = """[org/gnome/shell]
enabled-extensions=['ubuntu-appindicators@ubuntu.com']
disable-user-extensions=false
disable-extension-version-validation=true
welcome-dialog-last-shown-version='99.0'

[org/gnome/desktop/interface]
enable-animations=false
toolkit-accessibility=true

[org/gnome/desktop/screensaver]
lock-enabled=false

[org/gnome/desktop/peripherals/mouse]
double-click={double_click}
"""


class GnomePanel(X11Desktop):
    name = "gnome"
    executables = ("Xvfb", "gnome-shell")
    extension = pathlib.Path("/usr/share/gnome-shell/extensions/ubuntu-appindicators@ubuntu.com")
    window_manager = False  # The shell is one.
    height = 32

    @classmethod
    def missing(cls) -> list[str]:
        return super().missing() + ([] if cls.extension.exists() else ["gnome-shell-extension-appindicator"])

    def start_display(self) -> None:
        super().start_display()
        session = self.session
        session.environment |= {
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "XDG_CURRENT_DESKTOP": "GNOME",
            "GNOME_SHELL_SESSION_MODE": "user",
            "XDG_SESSION_TYPE": "x11",
        }
        system = session.start_system_bus()
        session.spawn("logind", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"])
        eventually(lambda: system.owner("org.freedesktop.login1"), 10, "the login manager answers")
        system.close()
        settings = GNOME_SETTINGS.format(double_click=DOUBLE_CLICK_MS)
        session.write(session.config / "glib-2.0/settings/keyfile", settings)

    def start_panel(self) -> None:
        starts = self.starts()
        self.panel = self.session.spawn("panel", ["gnome-shell", "--x11", "--sm-disable"])
        self.wait_for_watcher()
        eventually(lambda: self.starts() > starts, START_SECONDS, "the shell has started")
        eventually(self.leave_overview, START_SECONDS, "the overview is left")
        right_end = Rectangle(self.area.width - 40, 0, 40, self.height)
        eventually(
            lambda: foreground(self.picture().crop(right_end.box)).getbbox(), START_SECONDS, "the bar is drawn"
        )

    def starts(self) -> int:
        """How often the shell has said that it is up."""
        return self.session.log("panel").count("GNOME Shell started")

    def leave_overview(self) -> bool:
        """The shell starts in it. True when it is left."""
        shell, path = "org.gnome.Shell", "/org/gnome/Shell"
        if self.session.bus.property(shell, path, shell, "OverviewActive") is False:
            return True
        value = (shell, "OverviewActive", GLib.Variant("b", False))
        self.session.bus.call(shell, path, "org.freedesktop.DBus.Properties", "Set", "(ssv)", value)
        return False

    @property
    def strip(self) -> Rectangle:
        # The clock is in the middle, the shell's own menu at the right end does not move.
        middle = self.area.width * 5 // 8
        return Rectangle(middle, 0, self.area.width - middle, self.height)


PLASMA_LAYOUT = """[Containments][1]
formfactor=0
lastScreen=0
location=0
plugin=org.kde.desktopcontainment
wallpaperplugin=org.kde.color

[Containments][2]
formfactor=2
lastScreen=0
location=4
plugin=org.kde.panel

[Containments][2][General]
AppletOrder=3;4

[Containments][2][Applets][3]
plugin=org.kde.plasma.panelspacer

[Containments][2][Applets][4]
plugin=org.kde.plasma.systemtray

[Containments][2][Applets][4][Configuration]
SystrayContainmentId=5

[Containments][5]
formfactor=2
lastScreen=0
location=4
plugin=org.kde.plasma.private.systemtray

[Containments][5][General]
extraItems=
knownItems={own_items}
showAllItems=true
"""
# What the tray would otherwise fill itself with.
PLASMA_ITEMS = ("devicenotifier", "notifications", "clipboard", "manage-inputmethod", "keyboardindicator",
                "keyboardlayout", "mediacontroller", "battery", "printmanager", "bluetooth", "networkmanagement",
                "volume", "nightcolorcontrol", "kscreen", "vault")  # fmt: skip


class PlasmaPanel(X11Desktop):
    name = "plasma"
    executables = ("Xvfb", "openbox", "kded5", "plasmashell")
    height = 30

    def start_display(self) -> None:
        super().start_display()
        self.session.environment |= {
            "XDG_CURRENT_DESKTOP": "KDE",
            "KDE_FULL_SESSION": "true",
            "KDE_SESSION_VERSION": "5",
            "QT_QUICK_BACKEND": "software",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "QT_QPA_PLATFORM": "xcb",
        }
        items = ",".join(f"org.kde.plasma.{item}" for item in PLASMA_ITEMS) + ",org.kde.kscreen"
        file = self.session.config / "plasma-org.kde.plasma.desktop-appletsrc"
        self.session.write(file, PLASMA_LAYOUT.format(own_items=items))

    def start_panel(self) -> None:
        # The daemon is the watcher, the shell draws.
        self.daemon = self.session.spawn("daemon", ["kded5"])
        eventually(self.has_host, START_SECONDS, "the watcher")
        self.panel = self.session.spawn("panel", ["plasmashell", "--no-respawn"])
        self.wait_for_watcher()
        width = self.area.width
        eventually(
            lambda: any((place.width, place.height) == (width, self.height) for _, place in self.windows()),
            START_SECONDS,
            "the panel's window",
        )

    def kill_panel(self) -> None:
        self.session.kill(self.panel)
        self.session.kill(self.daemon)
        super().kill_panel()

    @property
    def strip(self) -> Rectangle:
        half = self.area.width // 2
        return Rectangle(half, self.area.height - self.height, half, self.height)


LIGHT = (XfcePanel, LxqtPanel, Tint2Panel, WaybarPanel)
HEAVY = (GnomePanel, PlasmaPanel)
