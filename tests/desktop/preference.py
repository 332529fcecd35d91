"""What the user prefers for all programs, light or dark, as the desktop's portal tells it."""

from __future__ import annotations

from gi.repository import GLib

from endtoend.waiting import eventually

from .session import Session

NAME, PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
SETTING = ("org.freedesktop.appearance", "color-scheme")
DARK, LIGHT = 1, 2


class ColorPreference:
    """A mock in the place of the portal's settings; there until `close`."""

    def __init__(self, session: Session, dark: bool) -> None:
        self.session = session
        self.mock = session.spawn(
            "portal", ["/usr/bin/python3", "-m", "dbusmock", "--session", NAME, PATH, SETTINGS]
        )
        eventually(lambda: session.bus.owner(NAME) is not None, 10, "the portal has its name")
        self.set_dark(dark)

    def set_dark(self, dark: bool) -> None:
        scheme = DARK if dark else LIGHT
        answer = f"ret = dbus.UInt32({scheme}, variant_level=1)"
        self._tell_mock("AddMethod", "(sssss)", (SETTINGS, "Read", "ss", "v", answer))
        change = [GLib.Variant("s", text) for text in SETTING] + [GLib.Variant("v", GLib.Variant("u", scheme))]
        self._tell_mock("EmitSignal", "(sssav)", (SETTINGS, "SettingChanged", "ssv", change))

    def _tell_mock(self, member: str, arguments: str, values: tuple[object, ...]) -> None:
        self.session.bus.call(NAME, PATH, "org.freedesktop.DBus.Mock", member, arguments, values)

    def close(self) -> None:
        self.session.kill(self.mock)
