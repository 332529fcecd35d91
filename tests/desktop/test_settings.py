"""The settings window in a real session, with nothing but a keyboard, and as assistive technology sees it."""

from __future__ import annotations

import json
import pathlib
import unittest

from endtoend.waiting import eventually

from .accessible import Node
from .panels import XfcePanel
from .pictures import Rectangle
from .program import APPLICATION, HOST, PATIENCE, Program

TITLE = "Tarnwick Settings"
DEFAULT_HOST = "1.1.1.1"
# By role and name; a picker's name is what it has picked.
CONTROLS = [
    ("text", "Host to Ping"),
    ("spin button", "Ping Every"),
    ("slider", "Slow Ping Threshold"),
    ("combo box", "Icon and Text"),
    ("combo box", "When There's Loss"),
    ("check box", "Connection Up/Down Alerts"),
    ("check box", "Launch at Login"),
    ("push button", "Restore Default Settings"),
]


class Settings(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        XfcePanel.require()
        cls.desktop = XfcePanel()
        cls.desktop.name = "settings"
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

    def windows(self) -> list[Rectangle]:
        return [place for title, place in self.desktop.windows() if title == TITLE]

    def setting(self, key: str) -> object:
        """As it is stored; none when it is not."""
        return json.loads(self.stored.read_text(encoding="utf-8")).get(key) if self.stored.exists() else None

    def wait_for(self, key: str, value: object) -> None:
        eventually(lambda: self.setting(key) == value, PATIENCE, f"{key} is {value}")

    def controls(self) -> list[Node]:
        tree = self.desktop.accessible(APPLICATION)
        shown = [node for node in tree.all() if "showing" in node.states]
        return [node for node in shown if "focusable" in node.states and (node.role, node.name) in CONTROLS]

    def focused(self) -> str:
        return next((node.name for node in self.controls() if "focused" in node.states), "")

    def tab_to(self, name: str) -> None:
        """Presses Tab until a control has the keyboard."""
        for _ in range(len(CONTROLS)):
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

    def test_it_is_one_window_in_the_middle_of_the_screen(self) -> None:
        (place,) = eventually(self.windows, PATIENCE, "the window")
        self.desktop.screenshot("settings.png")
        self.assertTrue(self.desktop.area.contains(place), place)
        # The window manager keeps the panel free, and adds a title.
        self.assertLess(abs(place.center[0] - self.desktop.area.center[0]), 10)
        self.assertLess(abs(place.center[1] - self.desktop.area.center[1]), 40)

        self.open_settings()

        self.assertEqual(self.windows(), [place])

    def test_closed_with_its_shortcut_it_opens_again_with_the_same_size(self) -> None:
        (before,) = eventually(self.windows, PATIENCE, "the window")

        self.desktop.key("w", "Control_L")

        eventually(lambda: not self.windows(), PATIENCE, "the window closes")
        self.assertIsNone(self.program.process.poll())
        self.open_settings()
        (after,) = self.windows()
        self.assertEqual((after.width, after.height), (before.width, before.height))

    def test_the_shortcut_for_quitting_works_in_it(self) -> None:
        self.desktop.key("q", "Control_L")

        self.assertEqual(self.program.exit_status(), 0, self.program.output)
        self.assertGreaterEqual(self.program.saved_pings(), 1)

    def test_assistive_technology_sees_every_control_in_order(self) -> None:
        def all_controls() -> list[tuple[str, str]]:
            found = [(node.role, node.name) for node in self.controls()]
            return found if len(found) == len(CONTROLS) else []

        eventually(lambda: all_controls() == CONTROLS, PATIENCE, "all controls in the accessible tree")
        descriptions = {node.name: node.description for node in self.controls()}
        self.assertTrue(descriptions["Host to Ping"].startswith("Tarnwick constantly pings this host"), descriptions)
        self.assertTrue(descriptions["Ping Every"].startswith("1 to 60 seconds."), descriptions)
        self.assertTrue(descriptions["Slow Ping Threshold"].startswith("Pings faster"), descriptions)
        texts = self.desktop.accessible(APPLICATION).texts()
        self.assertIn("Ping Every", texts)
        self.assertIn("100 ms", texts)

    def test_everything_can_be_set_with_the_keyboard_alone(self) -> None:
        eventually(lambda: self.focused() == "Host to Ping", PATIENCE, "the host's field has the keyboard")
        self.type(*"localhost")
        self.assertIsNone(self.setting("Hostname"))
        self.desktop.key("Return")
        self.wait_for("Hostname", "localhost")
        eventually(self.shows_an_address_of_this_machine, PATIENCE, "its address")

        self.tab_to("Ping Every")
        self.type(*"600")
        self.desktop.key("Return")
        self.wait_for("PingInterval", 60)
        self.type("0")
        self.desktop.key("Return")
        self.wait_for("PingInterval", 1)
        self.type(*"30")
        self.tab_to("Slow Ping Threshold")
        self.wait_for("PingInterval", 30)

        self.desktop.key("Home")
        self.wait_for("SlowPingLowThreshold", 50)
        self.desktop.key("Right")
        self.wait_for("SlowPingLowThreshold", 60)
        self.desktop.key("End")
        self.wait_for("SlowPingLowThreshold", 2000)

        self.tab_to("Ping Every")
        self.type(*"abc")
        self.tab_to("Connection Up/Down Alerts")
        self.assertEqual(self.setting("PingInterval"), 30)
        self.desktop.key("space")
        self.wait_for("ShowNotifications", True)
        self.desktop.screenshot("settings-changed.png")

        self.tab_to("Restore Default Settings")
        self.desktop.key("space")
        self.wait_for("Hostname", DEFAULT_HOST)
        for key, value in (("PingInterval", 1), ("SlowPingLowThreshold", 100), ("ShowNotifications", False)):
            self.assertEqual(self.setting(key), value)

    def shows_an_address_of_this_machine(self) -> bool:
        return not {HOST, "::1"}.isdisjoint(self.desktop.accessible(APPLICATION).texts())

    def test_assistive_technology_can_turn_alerts_on(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")

        self.desktop.act(APPLICATION, "Connection Up/Down Alerts")

        self.wait_for("ShowNotifications", True)

    def test_assistive_technology_sets_the_threshold_in_milliseconds(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")

        for ms in (50, 700, 2000):
            self.desktop.set_value(APPLICATION, "Slow Ping Threshold", ms)
            self.wait_for("SlowPingLowThreshold", ms)

    def test_launch_at_login_makes_an_entry_and_takes_it_away(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")
        entry = self.desktop.session.config / "autostart/tarnwick.desktop"
        self.addCleanup(entry.unlink, missing_ok=True)

        self.desktop.act(APPLICATION, "Launch at Login")
        eventually(entry.exists, PATIENCE, "the entry is there")
        self.desktop.act(APPLICATION, "Launch at Login")
        eventually(lambda: not entry.exists(), PATIENCE, "the entry has gone")

    def test_what_is_changed_by_hand_is_shown(self) -> None:
        self.desktop.session.write(self.stored, '{"SlowPingLowThreshold": 300}')

        eventually(lambda: "300 ms" in self.desktop.accessible(APPLICATION).texts(), PATIENCE, "the new threshold")


if __name__ == "__main__":
    unittest.main()
