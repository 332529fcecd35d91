"""Light panels, each in a session of its own. The heavy ones: heavy_panels.py, plasma_panels.py."""

from __future__ import annotations

import contextlib
import json
import os
import pathlib
import subprocess
from collections.abc import Iterator, Mapping

from PIL import Image

from endtoend.waiting import eventually

from .desktops import PARKED, START_SECONDS, X11Desktop
from .overlay import OverlayDesktop
from .pictures import Rectangle
from .session import Session
from .wayland import Devices
from .x11 import LEFT

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
    settings = LXQT_PANEL

    def new_session(self) -> Session:
        session = super().new_session()
        # As `startlxqt` sets it: without it the panel finds no theme.
        session.environment["XDG_CONFIG_DIRS"] = "/etc:/etc/xdg:/usr/share"
        return session

    def start_panel(self) -> None:
        file = self.session.config / "panel.conf"
        self.session.write(file, self.settings)
        self.panel = self.session.spawn("panel", ["lxqt-panel", "-c", str(file)])
        self.wait_for_watcher()

    def set_theme(self, name: str) -> None:
        self.session.write(self.session.config / "lxqt/lxqt.conf", f"[General]\ntheme={name}\n")

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
output * background #203040 solid_color
seat seat0 fallback true
default_border none
"""
WAYBAR_STYLE = "window#waybar { background: #202020; color: #ffffff; }"


def share_memory_with_everybody() -> None:
    """In a changed root the folder may be without its file system, and closed to the session's user."""
    open_to_all = 0o1777
    if os.stat("/dev/shm").st_mode & open_to_all != open_to_all and os.geteuid() == 0:
        # The mounts are the laboratory's own.
        subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=1777", "tmpfs", "/dev/shm"], check=True, timeout=10)


class WaybarPanel(OverlayDesktop):
    """On a Wayland compositor without a screen."""

    name = "waybar"
    executables = ("sway", "waybar", "grim", "swaymsg")
    unprivileged = True
    height = 30
    area = Rectangle(0, 0, 1280, 800)
    outputs: tuple[str, ...] = ("resolution 1280x800 position 0 0",)
    bar: Mapping[str, object] = {"modules-right": ["tray"]}
    devices: Devices

    def start_display(self) -> None:
        session = self.session
        share_memory_with_everybody()
        session.start_bus()
        session.environment |= {
            "WLR_BACKENDS": "headless",
            "WLR_HEADLESS_OUTPUTS": str(len(self.outputs)),
            "WLR_LIBINPUT_NO_DEVICES": "1",
            "WLR_RENDERER": "pixman",
            "SWAYSOCK": str(session.runtime / "sway"),
            "XDG_SESSION_TYPE": "wayland",
            "XDG_CURRENT_DESKTOP": "sway",
        }
        file = session.config / "sway.conf"
        outputs = (f"output HEADLESS-{number} {output}\n" for number, output in enumerate(self.outputs, 1))
        session.write(file, SWAY + "".join(outputs))
        self.display = session.spawn("display", ["sway", "-c", str(file)])

        def socket() -> pathlib.Path | None:
            if self.display.poll() is not None:
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
        usual = {"layer": "top", "height": self.height, "tray": {"icon-size": 22, "spacing": 6}}
        self.session.write(folder / "config", json.dumps(usual | self.bar))
        self.session.write(folder / "style.css", WAYBAR_STYLE)
        self.panel = self.session.spawn("panel", ["waybar"], {"GDK_BACKEND": "wayland"})
        self.wait_for_watcher()

    @property
    def strip(self) -> Rectangle:
        return Rectangle(0, 0, self.area.width, self.height)

    def picture(self) -> Image.Image:
        file = self.session.runtime / "picture.ppm"
        self.session.run(["grim", "-s", "1", "-t", "ppm", str(file)])
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

    def clipboard(self) -> str:
        return self.session.run(["wl-paste", "--no-newline"]).decode()

    def dismiss_menu(self) -> None:
        """The panel never has the keyboard."""
        self.click(*PARKED)

    def placed_windows(self) -> list[tuple[str, Rectangle]]:
        return [
            (view["name"] or "", Rectangle(*(view["rect"][key] for key in ("x", "y", "width", "height"))))
            for view in self._views()
            if view.get("visible")
        ]

    def focused_window_title(self) -> str:
        return next((view["name"] or "" for view in self._views() if view["focused"]), "")

    def _views(self) -> list[dict[str, object]]:
        """The compositor's nodes that are windows."""

        def below(node: dict[str, object]) -> Iterator[dict[str, object]]:
            if node.get("pid"):
                yield node
            for child in (*node["nodes"], *node["floating_nodes"]):
                yield from below(child)

        return list(below(json.loads(self.session.run(["swaymsg", "-t", "get_tree", "-r"]))))


class BareCompositor(WaybarPanel):
    """Without its panel."""

    name = "bare-compositor"
    executables = ("sway", "swaymsg", "grim")

    def start_panel(self) -> None:
        pass
