"""The program inside a sandbox: what it asks of the desktop goes through portals."""

from __future__ import annotations

import unittest

from gi.repository import GLib

from endtoend.waiting import eventually

from .panels import XfcePanel
from .program import APPLICATION, PATIENCE, Program
from .sandbox import sandbox_prefix
from .session import Session
from .settings import TITLE as SETTINGS_TITLE

PORTAL, PORTAL_PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
BACKGROUND, REQUEST = "org.freedesktop.portal.Background", "org.freedesktop.portal.Request"
MOCK = "org.freedesktop.DBus.Mock"
INSTANCE = "org.tarnwick.tarnwick"
# As its packager would have named it.
SANDBOXED = "org.example.Tarnwick"
SWITCH = "Launch at Login"
AGREED, REFUSED = 0, 1


class BackgroundPortal:
    """A mock in the place of the portal's part for programs that start with the session."""

    def __init__(self, session: Session) -> None:
        self.session = session
        command = ["/usr/bin/python3", "-m", "dbusmock", "--session", PORTAL, PORTAL_PATH, BACKGROUND]
        session.spawn("portal", command)
        eventually(lambda: session.bus.owner(PORTAL) is not None, PATIENCE, "the portal has its name")
        answer = f"ret = '{PORTAL_PATH}/request/any'"
        self._tell(PORTAL_PATH, "AddMethod", "(sssss)", (BACKGROUND, "RequestBackground", "sa{sv}", "o", answer))

    def asked(self) -> list[dict[str, object]]:
        """The options of each request."""
        (calls,) = self._tell(PORTAL_PATH, "GetMethodCalls", "(s)", ("RequestBackground",))
        return [arguments[1] for _, arguments in calls]

    def answer(self, response: int, autostart: bool) -> None:
        """To the latest request."""
        client = self.session.bus.owner(INSTANCE).removeprefix(":").replace(".", "_")
        path = f"{PORTAL_PATH}/request/{client}/{self.asked()[-1]['handle_token']}"
        self._tell(PORTAL_PATH, "AddObject", "(ssa{sv}a(ssss))", (path, REQUEST, {}, []))
        results = {"background": GLib.Variant("b", True), "autostart": GLib.Variant("b", autostart)}
        values = [GLib.Variant("u", response), GLib.Variant("a{sv}", results)]
        self._tell(path, "EmitSignal", "(sssav)", (REQUEST, "Response", "ua{sv}", values))

    def _tell(self, path: str, member: str, arguments: str, values: tuple[object, ...]) -> tuple[object, ...]:
        return self.session.bus.call(PORTAL, path, MOCK, member, arguments, values)


class Sandbox(unittest.TestCase):
    def setUp(self) -> None:
        XfcePanel.require()
        self.desktop = XfcePanel()
        self.desktop.name = "sandbox"
        self.desktop.start()
        self.addCleanup(self.desktop.stop)
        self.portal = BackgroundPortal(self.desktop.session)
        self.prefix = sandbox_prefix(self.desktop.session, SANDBOXED)

    def open_settings(self) -> Program:
        program = Program(self.desktop, self.prefix)
        self.addCleanup(program.end)
        item = program.item()
        item.choose(item.row("Settings…"))
        eventually(lambda: self.desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the window has the keyboard")
        return program

    def is_on(self) -> bool | None:
        """The switch; none while it is not there."""
        nodes = self.desktop.accessible(APPLICATION).all()
        switch = next((node for node in nodes if (node.role, node.name) == ("check box", SWITCH)), None)
        return None if switch is None else "checked" in switch.states

    def ask(self) -> dict[str, object]:
        """Turns the switch; what the portal is then asked."""
        before = len(self.portal.asked())
        self.desktop.act(APPLICATION, SWITCH)
        eventually(lambda: len(self.portal.asked()) == before + 1, PATIENCE, "the portal is asked")
        return self.portal.asked()[-1]

    def test_the_portal_starts_it_with_the_session_until_it_is_switched_off(self) -> None:
        program = self.open_settings()
        eventually(lambda: self.is_on() is False, PATIENCE, "the switch is off")
        asked = self.ask()
        self.assertEqual((asked["autostart"], asked["commandline"]), (True, ["tarnwick", "--from-session"]))
        granted = self.desktop.session.data / "Tarnwick/starts-with-session"
        self.assertFalse(granted.exists())
        self.portal.answer(AGREED, autostart=True)
        eventually(granted.exists, PATIENCE, "it remembers the answer")
        program.end()

        self.open_settings()

        eventually(lambda: self.is_on() is True, PATIENCE, "the switch is on in the next run")
        self.assertFalse(self.ask()["autostart"])
        self.portal.answer(AGREED, autostart=False)
        eventually(lambda: not granted.exists(), PATIENCE, "it remembers the answer")
        self.assertFalse((self.desktop.session.config / "autostart").exists())

    def test_a_refusal_of_the_portal_is_told(self) -> None:
        self.open_settings()
        self.ask()

        self.portal.answer(REFUSED, autostart=False)

        def is_told() -> bool:
            return any("does not let Tarnwick start" in text for text in self.desktop.accessible(APPLICATION).texts())

        eventually(is_told, PATIENCE, "the refusal in the window")
        self.assertIs(self.is_on(), False)
        self.desktop.screenshot("sandbox-refused.png")
