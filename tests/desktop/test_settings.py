"""The settings window in a real session, with nothing but a keyboard, and as assistive technology sees it."""

from __future__ import annotations

import os
import signal
import unittest
from collections.abc import Callable

from endtoend.waiting import eventually
from lab.network import ip, open_tun

from .panels import XfcePanel
from .pictures import Rectangle
from .program import APPLICATION, PATIENCE
from .settings import CONTROLS, SettingsWindow

DEFAULT_HOST = "1.1.1.1"
TITLE_HEIGHT = 20  # of the window manager's frame, or less
ROUTER = "10.77.9.1"
CABLE = "cable0"
# In the middle of the arrow, and from there to the first entry of the menu.
ARROW_FROM_RIGHT, FIELD_FROM_TOP, FIRST_ENTRY_BELOW = 47, 40, 32


def connect_router() -> int:
    """The way to the internet leads over it, until the descriptor is closed."""
    cable = open_tun(CABLE)
    ip("address", "add", "10.77.9.2/24", "dev", CABLE)
    ip("link", "set", CABLE, "up")
    ip("route", "add", "default", "via", ROUTER, "dev", CABLE, "metric", "1")
    return cable


class Settings(SettingsWindow, unittest.TestCase):
    panel = XfcePanel

    def test_it_is_one_window_in_the_middle_of_the_screen(self) -> None:
        (place,) = eventually(self.windows, PATIENCE, "the window")
        self.desktop.screenshot("settings.png")
        self.assertTrue(self.desktop.area.contains(place), place)
        # The window manager keeps the panel free, and adds a title.
        self.assertLess(abs(place.center[0] - self.desktop.area.center[0]), 10)
        self.assertLess(abs(place.center[1] - self.desktop.area.center[1]), 40)

        # With another window before it, a second one would be noticed.
        self.open_about()
        self.open_settings()

        self.assertEqual(self.windows(), [place])

    def drag_title(self, right: int, down: int) -> Rectangle:
        """Moves the window as people do it, and tells where it is then."""
        before = self.window()
        after = Rectangle(before.x + right, before.y + down, before.width, before.height)
        x, y = before.center[0], before.y - TITLE_HEIGHT // 2

        def follows() -> bool:
            # The first motion only begins it.
            for pixel in (1, 0):
                self.desktop.move(x + right + pixel, y + down)
            return self.windows() == [after]

        self.desktop.screen.press(x, y)
        try:
            eventually(follows, PATIENCE, "the window follows its title")
        finally:
            self.desktop.screen.release()
        eventually(self.desktop.screen.keyboard_is_free, PATIENCE, "the window manager has let go of the keyboard")
        return after

    def test_closed_with_its_shortcut_it_reopens_where_it_was_left(self) -> None:
        left_at = self.drag_title(-150, 40)

        # The second time would show a window that wanders by the size of its frame.
        for _ in range(2):
            self.close_by_keyboard()
            self.open_settings()
            self.assertEqual(self.windows(), [left_at])

    def test_it_shrinks_and_grows_with_the_screen(self) -> None:
        before = self.window()
        usual, low = self.desktop.area, Rectangle(0, 0, 640, 480)
        self.addCleanup(self.desktop.screen.resize, usual.width, usual.height)

        self.desktop.screen.resize(low.width, low.height)
        eventually(lambda: self.window().height < low.height, PATIENCE, "the window is no higher than the screen")
        self.desktop.screen.resize(usual.width, usual.height)

        eventually(lambda: self.window().height == before.height, PATIENCE, "the window is as high as its form")

    def test_the_quit_shortcut_ends_it_and_drops_what_is_typed(self) -> None:
        self.type_into("Host to Ping", "localhost")

        self.assert_dropped_at_the_end(lambda: self.desktop.key("q", "Control_L"))

    def test_a_polite_signal_drops_what_is_typed(self) -> None:
        self.tab_to("Ping Every")
        self.type_into("Ping Every", "30")

        self.assert_dropped_at_the_end(lambda: self.program.send(signal.SIGTERM))

    def type_into(self, name: str, text: str) -> None:
        """Into the field that has the keyboard."""
        eventually(lambda: self.focused() == name, PATIENCE, f"{name} has the keyboard")
        self.type(*text)
        self.wait_until_held(name, text)

    def assert_dropped_at_the_end(self, end: Callable[[], None]) -> None:
        end()

        self.assertEqual(self.program.exit_status(), 0, self.program.output)
        self.assertGreaterEqual(self.program.saved_pings(), 1)
        self.assertFalse(self.stored.exists())

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
        self.set_host_by_keyboard()

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
        self.wait_until_held("Ping Every", "30")
        self.assertEqual(self.setting("PingInterval"), 30)
        self.desktop.key("space")
        self.wait_for("ShowNotifications", True)
        self.desktop.screenshot("settings-changed.png")

        self.tab_to("Restore Default Settings")
        self.desktop.key("space")
        self.wait_for("Hostname", DEFAULT_HOST)
        for key, value in (("PingInterval", 1), ("SlowPingLowThreshold", 100), ("ShowNotifications", False)):
            self.assertEqual(self.setting(key), value)

    def test_the_router_is_chosen_in_the_hosts_field(self) -> None:
        self.addCleanup(os.close, connect_router())
        eventually(lambda: self.focused() == "Host to Ping", PATIENCE, "the host's field has the keyboard")

        self.desktop.key("Down")
        eventually(lambda: f"Router — {ROUTER}" in self.menu(), PATIENCE, "the menu names the router")
        self.assertIn("Google — 8.8.8.8", self.menu())
        self.desktop.screenshot("settings-hosts.png")
        self.desktop.key("Down")
        self.desktop.key("Return")

        self.wait_for("Hostname", ROUTER)
        self.wait_until_held("Host to Ping", ROUTER)

    def test_a_click_chooses_a_host(self) -> None:
        eventually(lambda: self.focused() == "Host to Ping", PATIENCE, "the host's field has the keyboard")
        window = self.window()
        x, y = window.x + window.width - ARROW_FROM_RIGHT, window.y + FIELD_FROM_TOP
        self.desktop.click(x, y)
        first = eventually(self.menu, PATIENCE, "the menu")[0]

        self.desktop.click(x - 60, y + FIRST_ENTRY_BELOW)

        self.wait_for("Hostname", first.rpartition(" ")[2])

    def menu(self) -> list[str]:
        tree = self.desktop.accessible(APPLICATION)
        return [node.name for node in tree.all() if node.role == "menu item" and "showing" in node.states]

    def test_assistive_technology_can_turn_alerts_on(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")

        self.desktop.act(APPLICATION, "Connection Up/Down Alerts")

        self.wait_for("ShowNotifications", True)

    def test_assistive_technology_writes_and_restores_settings(self) -> None:
        eventually(lambda: self.focused() == "Host to Ping", PATIENCE, "the host's field has the keyboard")
        self.write("Host to Ping", "localhost")
        self.assertIsNone(self.setting("Hostname"))
        self.tab_to("Ping Every")
        self.wait_for("Hostname", "localhost")

        for written, seconds in (("600", 60), ("0", 1), ("abc", 1)):
            self.write("Ping Every", written)
            self.desktop.key("Return")
            self.wait_until_held("Ping Every", str(seconds))
            self.wait_for("PingInterval", seconds)

        self.desktop.act(APPLICATION, "Restore Default Settings")
        self.wait_for("Hostname", DEFAULT_HOST)
        self.wait_until_held("Host to Ping", DEFAULT_HOST)

    def write(self, name: str, text: str) -> None:
        """As assistive technology does it."""
        self.desktop.set_text(APPLICATION, name, text)
        self.wait_until_held(name, text)

    def test_assistive_technology_sets_the_threshold_in_milliseconds(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")

        for ms in (50, 700, 2000):
            self.desktop.set_value(APPLICATION, "Slow Ping Threshold", ms)
            self.wait_for("SlowPingLowThreshold", ms)

    def test_launch_at_login_makes_an_entry_and_takes_it_away(self) -> None:
        eventually(self.controls, PATIENCE, "the controls in the accessible tree")
        entry = self.desktop.session.config / "autostart/org.tarnwick.tarnwick.desktop"
        self.addCleanup(entry.unlink, missing_ok=True)

        self.desktop.act(APPLICATION, "Launch at Login")
        eventually(entry.exists, PATIENCE, "the entry is there")
        self.desktop.act(APPLICATION, "Launch at Login")
        eventually(lambda: not entry.exists(), PATIENCE, "the entry has gone")

    def test_it_says_what_the_panel_has_no_room_for(self) -> None:
        def says_so() -> bool:
            return "Your panel has no room for it." in self.desktop.accessible(APPLICATION).texts()

        eventually(says_so, PATIENCE, "the note below the packet loss text")

    def test_what_is_changed_by_hand_is_shown(self) -> None:
        self.desktop.session.write(self.stored, '{"SlowPingLowThreshold": 300}')

        eventually(lambda: "300 ms" in self.desktop.accessible(APPLICATION).texts(), PATIENCE, "the new threshold")


if __name__ == "__main__":
    unittest.main()
