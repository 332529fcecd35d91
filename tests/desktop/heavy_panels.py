"""The panels of whole desktops, each in a session of its own."""

from __future__ import annotations

import json
import pathlib
import shutil

from gi.repository import GLib

from endtoend.waiting import eventually

from .desktops import START_SECONDS, X11Desktop
from .overlay import OverlayDesktop
from .pictures import Rectangle, background, foreground, solid_change
from .session import Session

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
    window_manager = ()  # The shell is one.
    extensions = "['ubuntu-appindicators@ubuntu.com']"
    height = 32
    session_type = "x11"
    shell = ("gnome-shell", "--x11", "--sm-disable")

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
            "XDG_SESSION_TYPE": self.session_type,
        }
        system = session.start_system_bus()
        session.spawn("logind", ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"])
        eventually(lambda: system.owner("org.freedesktop.login1"), 10, "the login manager answers")
        system.close()
        settings = GNOME_SETTINGS.format(extensions=self.extensions, double_click=DOUBLE_CLICK_MS)
        session.write(session.config / "glib-2.0/settings/keyfile", settings)

    def start_panel(self) -> None:
        starts = self.starts()
        self.panel = self.session.spawn("panel", self.shell)
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


class GnomeWithPortals(GnomePanel):
    """With the service that tells programs what the user prefers."""

    name = "gnome-portals"
    executables = (*GnomePanel.executables, "/usr/libexec/xdg-desktop-portal", "/usr/libexec/xdg-desktop-portal-gtk")
    # It would mount a file system, which outlives it.
    withheld_services = ("org.freedesktop.portal.Documents",)

    def set_dark(self, dark: bool) -> None:
        keyfile = self.session.config / "glib-2.0/settings/keyfile"
        section = "[org/gnome/desktop/interface]\n"
        lines = [line for line in keyfile.read_text(encoding="utf-8").splitlines() if "color-scheme" not in line]
        scheme = "color-scheme='prefer-dark'\n" if dark else ""
        self.session.write(keyfile, "\n".join(lines).replace(section, section + scheme) + "\n")


class BareGnome(GnomePanel):
    """Without the extension that shows status items."""

    name = "bare-gnome"
    extensions = "@as []"

    @classmethod
    def missing(cls) -> list[str]:
        return super(GnomePanel, cls).missing()

    def wait_for_items(self) -> None:
        pass  # There is no place for them.


WINDOWS_OF_SHELL = """global.get_window_actors().map(actor => {
    const place = actor.meta_window.get_frame_rect();
    return [actor.meta_window.get_title() || "", place.x, place.y, place.width, place.height];
})"""


NOTIFICATIONS_OF_SHELL = "Main.messageTray.getSources().flatMap(source => source.notifications.map(one => one.title))"

# The shell tells that this is no usual session.
NO_BANNERS = """
[org/gnome/desktop/notifications]
show-banners=false
"""


class GnomeWaylandPanel(OverlayDesktop, GnomePanel):
    """The shell fills an X display, on which it gets pointer and keys and its pictures are taken."""

    name = "gnome-wayland"
    session_type = "wayland"
    shell = ("gnome-shell", "--nested", "--wayland", "--unsafe-mode")  # unsafe: it may be asked for its windows

    def start_display(self) -> None:
        super().start_display()
        size = f"{self.area.width}x{self.area.height}"
        keyfile = self.session.config / "glib-2.0/settings/keyfile"
        self.session.write(keyfile, keyfile.read_text(encoding="utf-8") + NO_BANNERS)
        self.session.environment["MUTTER_DEBUG_DUMMY_MODE_SPECS"] = size

    def start_panel(self) -> None:
        super().start_panel()
        self.screen.give_keyboard("gnome-shell")
        self.session.environment["WAYLAND_DISPLAY"] = "wayland-0"
        self.session.environment.pop("DISPLAY")

    def placed_windows(self) -> list[tuple[str, Rectangle]]:
        return [(title, Rectangle(*map(int, place))) for title, *place in self.evaluated(WINDOWS_OF_SHELL)]

    def shows_notification(self, title: str) -> bool:
        return title in self.evaluated(NOTIFICATIONS_OF_SHELL)

    def focused_window_title(self) -> str:
        return self.evaluated("global.display.focus_window ? global.display.focus_window.get_title() : ''")

    def evaluated(self, expression: str) -> object:
        """The value of an expression in the shell's own language."""
        script = f"JSON.stringify({expression})"
        answer = self.session.bus.call("org.gnome.Shell", "/org/gnome/Shell", "org.gnome.Shell", "Eval", "(s)", (script,))
        is_evaluated, text = answer
        if not is_evaluated:
            raise AssertionError(f"the shell can't tell: {text}")
        return json.loads(json.loads(text)) if text.startswith('"') else json.loads(text)


# Plasma leaves out a desktop that belongs to no activity, and adds one with a picture that follows the colors.
ACTIVITY = "6c1cf9ab-0ef1-4d0b-9b2c-5d3f60f8f2a1"
ACTIVITIES = f"""[activities]
{ACTIVITY}=Default

[main]
currentActivity={ACTIVITY}
runningActivities={ACTIVITY}
"""
PLASMA_LAYOUT = """[Containments][1]
activityId={activity}
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
AppletOrder=6;3;4

[Containments][2][Applets][6]
plugin=org.kde.plasma.taskmanager

[Containments][2][Applets][6][Configuration][General]
launchers=

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
extraItems={items}
knownItems={own_items}
showAllItems=true
"""
# What the tray would otherwise fill itself with.
PLASMA_ITEMS = ("devicenotifier", "notifications", "clipboard", "manage-inputmethod", "keyboardindicator",
                "keyboardlayout", "mediacontroller", "battery", "printmanager", "bluetooth", "networkmanagement",
                "volume", "nightcolorcontrol", "brightness", "cameraindicator", "kscreen", "vault")  # fmt: skip


# Pictures of a translucent one have many grounds, and one that floats, as in Plasma 6, has an edge around it.
PLAIN_PANEL = """[PlasmaViews][Panel 2]
panelOpacity=1
floating=0
"""


# On X11. Windows that fade in and out are hard to compare.
WITHOUT_EFFECTS = """[Compositing]
Enabled=false
"""


# Debian 12 has Plasma 5, Debian 13 has Plasma 6.
PLASMA_VERSION = 6 if shutil.which("kded6") else 5
PLASMA_DAEMON = f"kded{PLASMA_VERSION}"
PACKAGING = pathlib.Path(__file__).resolve().parents[2] / "packaging"


class PlasmaPanel(X11Desktop):
    name = "plasma"
    platform = "xcb"
    executables = ("Xvfb", "kwin_x11", PLASMA_DAEMON, "plasmashell")
    # With another one the shell may mistake where its panel is, and then tells items wrong places of clicks.
    window_manager = ("kwin_x11",)
    height = 30
    items = ""  # the desktop's own in the tray

    def new_session(self) -> Session:
        session = super().new_session()
        session.environment |= {
            "XDG_CURRENT_DESKTOP": "KDE",
            "KDE_FULL_SESSION": "true",
            # Of the menu with the programs. The compositor tells the shell of windows only if the shell is one of them.
            "XDG_MENU_PREFIX": "plasma-" if PLASMA_VERSION == 6 else "kf5-",
            "KDE_SESSION_VERSION": str(PLASMA_VERSION),
            "QT_QUICK_BACKEND": "software",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "QT_QPA_PLATFORM": self.platform,
        }
        self.lay_out(session)
        self.install_entry(session)
        return session

    def lay_out(self, session: Session) -> None:
        """In the panel are the tray, with all items, and the bar of the open windows, at the left."""
        known = ",".join(f"org.kde.plasma.{item}" for item in PLASMA_ITEMS) + ",org.kde.kscreen"
        files = {
            "plasma-org.kde.plasma.desktop-appletsrc": PLASMA_LAYOUT.format(
                activity=ACTIVITY, items=self.items, own_items=known
            ),
            "kactivitymanagerdrc": ACTIVITIES,
            "plasmashellrc": PLAIN_PANEL,
            "kwinrc": WITHOUT_EFFECTS,
        }
        for name, text in files.items():
            session.write(session.config / name, text)

    def install_entry(self, session: Session) -> None:
        """On Wayland it leads to the icon of the program's windows."""
        entries = session.data / "applications"
        entries.mkdir()
        shutil.copy2(PACKAGING / "org.tarnwick.tarnwick.desktop", entries)
        shutil.copytree(PACKAGING / "icons", session.data / "icons")

    def start_panel(self) -> None:
        # The daemon is the watcher, the shell draws.
        self.daemon = self.session.spawn("daemon", [PLASMA_DAEMON])
        eventually(self.has_host, START_SECONDS, "the watcher")
        self.panel = self.session.spawn("panel", ["plasmashell", "--no-respawn"])
        self.wait_for_watcher()
        eventually(self.is_drawn, START_SECONDS, "the panel's window")

    def is_drawn(self) -> bool:
        return any((place.width, place.height) == (self.area.width, self.height) for _, place in self.windows())

    def set_theme(self, name: str) -> None:
        """Of the panel, which draws it a moment later. Plasma 6.3 draws only the second change after its start."""
        self.session.run(["plasma-apply-desktoptheme", name])
        eventually(lambda: self.theme() == name, START_SECONDS, f"the shell knows the theme {name}")

    def theme(self) -> str:
        shell, path, script = "org.kde.plasmashell", "/PlasmaShell", "print(theme)"
        return self.session.bus.call(shell, path, "org.kde.PlasmaShell", "evaluateScript", "(s)", (script,))[0].strip()

    def set_colors(self, name: str) -> None:
        """Of all programs, and of panels whose theme has none of its own."""
        self.session.run(["plasma-apply-colorscheme", name])

    def kill_panel(self) -> None:
        self.session.kill(self.panel)
        self.session.kill(self.daemon)
        super().kill_panel()

    @property
    def strip(self) -> Rectangle:
        half = self.area.width // 2
        return Rectangle(half, self.area.height - self.height, half, self.height)

    @property
    def task_bar(self) -> Rectangle:
        """The other part of the panel."""
        return Rectangle(0, self.strip.y, self.strip.x, self.height)


class PlasmaWaylandPanel(OverlayDesktop, PlasmaPanel):
    """Its compositor fills an X display, on which it gets pointer and keys and its pictures are taken."""

    name = "plasma-wayland"
    platform = "wayland"
    executables = ("Xvfb", "kwin_wayland", PLASMA_DAEMON, "plasmashell")
    window_manager = ()

    def start_display(self) -> None:
        super().start_display()
        session = self.session
        session.environment["XDG_SESSION_TYPE"] = "wayland"
        # The packaged file has a capability, without which a container does not let it start. A copy has none.
        compositor = session.folder / "kwin_wayland"
        shutil.copyfile(shutil.which("kwin_wayland"), compositor)
        compositor.chmod(0o755)
        size = ["--width", str(self.area.width), "--height", str(self.area.height)]
        session.spawn(
            "compositor",
            [str(compositor), "--x11-display", self.screen.name, *size, "--no-lockscreen", "--socket", "wayland-0"],
            {"QT_QPA_PLATFORM": ""},
        )
        eventually((session.runtime / "wayland-0").exists, START_SECONDS, "the compositor has its socket")
        eventually(lambda: self.screen.give_keyboard("KDE"), START_SECONDS, "the compositor's window")
        session.environment["WAYLAND_DISPLAY"] = "wayland-0"
        del session.environment["DISPLAY"]

    def is_drawn(self) -> bool:
        picture = self.picture()
        return background(picture.crop(self.strip.box)) != background(picture.crop(self.rest.box))

    def placed_windows(self) -> list[tuple[str, Rectangle]]:
        """Their places are not known."""
        return []

    def shows_notification(self, title: str) -> bool:
        """Of Plasma only the place is known: above the end of the panel, beside a window in the middle."""
        del title
        corner = Rectangle(self.area.width * 3 // 4, 0, self.area.width // 4, self.area.height - self.height)
        return solid_change(self.bare, self.picture(), corner) is not None

    def focused_window_title(self) -> str:
        """As assistive technology sees it."""
        windows = (node for application in self.accessible().children for node in application.children)
        return next((node.name for node in windows if "active" in node.states), "")
