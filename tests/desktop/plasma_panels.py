"""Plasma's panel, in sessions of their own."""

from __future__ import annotations

import pathlib
import shutil

from endtoend.waiting import eventually

from .desktops import START_SECONDS, X11Desktop
from .overlay import OverlayDesktop
from .pictures import Rectangle, background, solid_change
from .session import Session

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
            "XDG_CONFIG_DIRS": f"{session.config}/kdedefaults:/etc/xdg",  # the first one has what global themes set
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

    def set_global_theme(self, name: str) -> None:
        """Of the panel and all programs. The shell notices it only if the user's own file with its theme is there."""
        self.session.run(["plasma-apply-lookandfeel", "--apply", name], timeout=START_SECONDS)

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
