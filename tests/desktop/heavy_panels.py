"""GNOME Shell with its bar, in sessions of their own. Plasma: plasma_panels.py."""

from __future__ import annotations

import json
import pathlib

from gi.repository import GLib

from endtoend.waiting import eventually

from .desktops import START_SECONDS, X11Desktop
from .overlay import OverlayDesktop
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
