"""The settings window, opened for tests in any panel."""

from __future__ import annotations

import json
import pathlib

from endtoend.waiting import eventually

from .accessible import Node
from .desktops import Desktop
from .pictures import Rectangle
from .program import APPLICATION, HOST, PATIENCE, Program

TITLE = "Tarnwick Settings"
ABOUT_TITLE = "About Tarnwick"
# By role and name; a picker's name is what it has picked.
CONTROLS = [
    ("text", "Host to Ping"),
    ("push button", "Choose Host"),
    ("spin button", "Ping Every"),
    ("slider", "Slow Ping Threshold"),
    ("combo box", "Icon and Text"),
    ("combo box", "When There's Loss"),
    ("check box", "Connection Up/Down Alerts"),
    ("push button", "Test"),
    ("check box", "Launch at Login"),
    ("push button", "Advanced"),
    ("push button", "Restore Default Settings"),
]


class SettingsWindow:
    """Opened anew for each test, in one panel."""

    panel: type[Desktop]

    @classmethod
    def setUpClass(cls) -> None:
        cls.panel.require()
        cls.desktop = cls.panel()
        cls.desktop.name = f"settings-{cls.panel.name}"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def setUp(self) -> None:
        self.stored.unlink(missing_ok=True)
        self.program = Program(self.desktop)
        self.addCleanup(self.program.end)
        self.item = self.program.item_up()
        self.open_settings()

    @property
    def stored(self) -> pathlib.Path:
        return self.desktop.session.config / "Tarnwick/settings.json"

    def open_settings(self) -> None:
        self.item.choose(self.item.row("Settings…"))
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "the window has the keyboard")

    def open_about(self) -> None:
        self.item.choose(self.item.row(ABOUT_TITLE))
        eventually(lambda: self.desktop.focused_title() == ABOUT_TITLE, PATIENCE, "the other window has the keyboard")

    def windows(self) -> list[Rectangle]:
        return [place for title, place in self.desktop.windows() if title == TITLE]

    def window(self) -> Rectangle:
        (place,) = eventually(self.windows, PATIENCE, "the window")
        return place

    def setting(self, key: str) -> object:
        """As it is stored; none when it is not."""
        return json.loads(self.stored.read_text(encoding="utf-8")).get(key) if self.stored.exists() else None

    def wait_for(self, key: str, value: object) -> None:
        eventually(lambda: self.setting(key) == value, PATIENCE, f"{key} is {value}")

    def controls(self) -> list[Node]:
        tree = self.desktop.accessible(APPLICATION)
        shown = [node for node in tree.all() if "showing" in node.states]
        return [node for node in shown if "focusable" in node.states and (node.role, node.name) in CONTROLS]

    def held(self, name: str) -> str | None:
        """The text that the field with this name holds."""
        return next((node.text for node in self.controls() if node.name == name), None)

    def wait_until_held(self, name: str, text: str) -> None:
        eventually(lambda: self.held(name) == text, PATIENCE, f"{name} shows {text}")

    def focused(self) -> str:
        """The address can have the keyboard, too; its name is its text."""
        control = self.desktop.accessible(APPLICATION).has_keyboard()
        return "" if control is None else control.name

    def tab_to(self, name: str) -> None:
        """Presses Tab until a control has the keyboard."""
        for _ in range(len(CONTROLS) + 1):  # and the address
            if self.focused() == name:
                return
            before = self.focused()
            self.desktop.key("Tab")
            eventually(lambda before=before: self.focused() not in ("", before), PATIENCE, "Tab leads on")
        self.fail(f"Tab does not lead to {name}")

    def type(self, *keys: str) -> None:
        """In place of what the field holds."""
        self.desktop.key("a", "Control_L")
        for key in keys:
            self.desktop.key(key)

    def set_host_by_keyboard(self) -> None:
        eventually(lambda: self.focused() == "Host to Ping", PATIENCE, "the host's field has the keyboard")
        self.type(*"localhost")
        self.assertIsNone(self.setting("Hostname"))
        self.desktop.key("Return")
        self.wait_for("Hostname", "localhost")
        eventually(self.shows_an_address_of_this_machine, PATIENCE, "its address")

    def shows_an_address_of_this_machine(self) -> bool:
        return not {HOST, "::1"}.isdisjoint(self.desktop.accessible(APPLICATION).texts())

    def close_by_keyboard(self) -> None:
        self.desktop.key("w", "Control_L")
        eventually(lambda: not self.windows(), PATIENCE, "the window closes")
        self.assertIsNone(self.program.process.poll())
