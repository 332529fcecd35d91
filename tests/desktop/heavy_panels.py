"""The panels of whole desktops, each in a session of its own."""

from __future__ import annotations

import pathlib

from gi.repository import GLib

from endtoend.waiting import eventually

from .desktops import START_SECONDS, X11Desktop
from .pictures import Rectangle, foreground

# A busy machine may take its time between two clicks.
DOUBLE_CLICK_MS = 1000
GNOME_SETTINGS = """[org/gnome/shell]
enabled-extensions={extensions}
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
    extensions = "['ubuntu-appindicators@ubuntu.com']"
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
        settings = GNOME_SETTINGS.format(extensions=self.extensions, double_click=DOUBLE_CLICK_MS)
        session.write(session.config / "glib-2.0/settings/keyfile", settings)

    def start_panel(self) -> None:
        starts = self.starts()
        self.panel = self.session.spawn("panel", ["gnome-shell", "--x11", "--sm-disable"])
        self.wait_for_items()
        eventually(lambda: self.starts() > starts, START_SECONDS, "the shell has started")
        eventually(self.leave_overview, START_SECONDS, "the overview is left")
        right_end = Rectangle(self.area.width - 40, 0, 40, self.height)
        eventually(
            lambda: foreground(self.picture().crop(right_end.box)).getbbox(), START_SECONDS, "the bar is drawn"
        )

    def wait_for_items(self) -> None:
        self.wait_for_watcher()

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


class BareGnome(GnomePanel):
    """Without the extension that shows status items."""

    name = "bare-gnome"
    extensions = "@as []"

    @classmethod
    def missing(cls) -> list[str]:
        return super(GnomePanel, cls).missing()

    def wait_for_items(self) -> None:
        pass  # There is no place for them.


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
