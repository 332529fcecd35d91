"""The program in a panel of twice the size, on a display with twice as many dots an inch."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import X11Checks
from .notifier_checks import NotifierChecks
from .panels import ScaledXfcePanel
from .pictures import Rectangle
from .program import APPLICATION, PATIENCE
from .settings import CONTROLS
from .settings import TITLE as SETTINGS_TITLE

# What size has to do with; all the rest is tried at the usual one.
CHOSEN = (
    "test_it_is_drawn_readably_in_the_panel",
    "test_the_icon_alone_is_five_rising_bars",
    "test_a_click_opens_the_drop_down_and_escape_closes_it",
    "test_a_second_click_on_the_icon_closes_it_for_good",
    "test_a_click_elsewhere_closes_it",
    "test_it_is_drawn_at_twice_the_size",
    "test_the_drop_down_is_twice_as_wide",
    "test_the_settings_window_is_twice_as_wide_and_still_fits",
)
# In the usual font: of what drops down, and of the settings window.
USUAL_WIDTH, USUAL_SETTINGS_WIDTH = 320, 440
# From the drop-down's lower edge into its last row, in the usual font.
ABOVE_EDGE = 14
# To the end of the drop-down.
WHEEL_NOTCHES = 5


class Scaled(X11Checks, NotifierChecks, unittest.TestCase):
    panel = ScaledXfcePanel

    def test_it_is_drawn_at_twice_the_size(self) -> None:
        place = self.shown(self.running())

        self.assertGreater(place.height, self.desktop.height / 2)

    def test_the_drop_down_is_twice_as_wide(self) -> None:
        program = self.running()
        self.open_drop_down(self.shown(program))

        window = self.opened(program)

        self.assertGreaterEqual(window.width, 2 * USUAL_WIDTH)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_the_settings_window_is_twice_as_wide_and_still_fits(self) -> None:
        program = self.running()
        self.addCleanup(self.end_program)
        item = program.item()
        item.choose(item.row("Settings…"))

        window = eventually(self.settings_window, PATIENCE, "the settings window")

        self.assertGreaterEqual(window.width, 2 * USUAL_SETTINGS_WIDTH)
        self.assertTrue(self.desktop.rest.contains(window), window)
        eventually(lambda: set(CONTROLS) <= self.shown_controls(), PATIENCE, "all controls in the accessible tree")
        self.desktop.screenshot(f"{self.desktop.name}-settings.png")

    def settings_window(self) -> Rectangle | None:
        return next((place for title, place in self.desktop.windows() if title == SETTINGS_TITLE), None)

    def shown_controls(self) -> set[tuple[str, str]]:
        tree = self.desktop.accessible(APPLICATION)
        return {(node.role, node.name) for node in tree.all() if "showing" in node.states}


class LowScreen(ScaledXfcePanel):
    name = "xfce-2x-low"
    size = (1366, 768)


class Low(X11Checks, NotifierChecks, unittest.TestCase):
    panel = LowScreen

    def test_on_a_low_screen_the_last_item_is_in_reach(self) -> None:
        program = self.running()
        self.open_drop_down(self.shown(program))
        window = self.opened(program)
        self.desktop.screenshot(f"{self.desktop.name}.png")
        self.assertTrue(self.desktop.rest.contains(window), window)

        # At twice the size the menu is higher than this screen.
        for _ in range(WHEEL_NOTCHES):
            self.desktop.scroll(*window.center, up=False)
        self.desktop.click(window.center[0], window.y + window.height - 2 * ABOVE_EDGE)

        self.assertEqual(program.exit_status(), 0, program.output)


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    low = Low("test_on_a_low_screen_the_last_item_is_in_reach")
    return unittest.TestSuite((*map(Scaled, CHOSEN), low))
