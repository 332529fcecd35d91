"""The drop-down in GNOME Shell on Wayland with two monitors, of which the first has twice the scale."""

from __future__ import annotations

import unittest

from gi.repository import GLib

from endtoend.waiting import eventually

from .checks import NEAR, distance
from .desktops import START_SECONDS
from .pictures import Rectangle, solid_change
from .program import PATIENCE
from .test_gnome import Gnome
from .test_gnome_wayland import GnomeThatTellsPlaces
from .x11 import MIDDLE

MONITORS = "org.gnome.Mutter.DisplayConfig"
MONITORS_PATH = "/org/gnome/Mutter/DisplayConfig"
SCALES = (2, 1)  # of the monitors, from left to right
TEMPORARY, IN_PIXELS = 1, 2  # what the configuration is for, and how places are counted


class GnomeWithTwoMonitors(GnomeThatTellsPlaces):
    """The panel is on the first one. The shell counts in pixels, as it does unless scales are fractions."""

    name = "gnome-monitors"
    size = (3200, 1200)
    area = Rectangle(0, 0, 1600, 1200)
    second = Rectangle(1600, 0, 1600, 1200)
    height = 2 * GnomeThatTellsPlaces.height
    beside_workspaces = 2 * GnomeThatTellsPlaces.beside_workspaces

    def start_display(self) -> None:
        super().start_display()
        self.session.environment["MUTTER_DEBUG_NUM_DUMMY_MONITORS"] = str(len(SCALES))

    def pointer_is_on_second(self) -> bool:
        return self.evaluated("global.get_pointer()")[0] >= self.second.x

    def start_panel(self) -> None:
        super().start_panel()
        self.scale_monitors()
        eventually(lambda: self.evaluated("Main.panel.height") == self.height, START_SECONDS, "the panel is scaled")

    def scale_monitors(self) -> None:
        name = (MONITORS, MONITORS_PATH, MONITORS)
        serial, monitors, _, state = self.session.bus.call(*name, "GetCurrentState", "()", ())
        logical = []
        for number, (((connector, *_), modes, _), scale) in enumerate(zip(monitors, SCALES, strict=True)):
            mode = next(mode[0] for mode in modes if mode[6].get("is-current"))
            logical.append((number * self.area.width, 0, scale, 0, number == 0, [(connector, mode, {})]))
        # GNOME 43 counts this session so in any case.
        can_choose = state.get("supports-changing-layout-mode", False)
        options = {"layout-mode": GLib.Variant("u", IN_PIXELS)} if can_choose else {}
        self.session.bus.call(
            *name, "ApplyMonitorsConfig", "(uua(iiduba(ssa{sv}))a{sv})", (serial, TEMPORARY, logical, options)
        )


class GnomeMonitors(Gnome):
    panel = GnomeWithTwoMonitors

    def test_it_opens_below_the_item_at_twice_the_scale(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)

        self.desktop.click(*place.center, MIDDLE)

        window = self.opened(program)
        self.desktop.screenshot(f"{self.desktop.name}.png")
        self.assertLess(distance(*place.center, window), NEAR)
        # The item is nearer to the screen's edge than the drop-down's middle would be.
        self.assertLess(window.x, self.desktop.beside_workspaces // 2)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_a_second_start_opens_it_where_the_pointer_is(self) -> None:
        """Windows come up there, and no program can choose another monitor."""
        program = self.not_yet_clicked()
        self.shown(program)
        self.desktop.move(*self.desktop.second.center)
        # The shell, not only the display that it fills, knows where the pointer is.
        eventually(self.desktop.pointer_is_on_second, PATIENCE, "the pointer is on the second monitor")

        program.start_again()

        def is_in_the_corner() -> bool:
            """Alone: a first picture may show it where it would be on the other monitor."""
            drawn = solid_change(self.desktop.bare, self.desktop.picture(), self.desktop.second)
            corner = (self.desktop.size[0], 0)
            return drawn is not None and distance(*corner, drawn) < NEAR and drawn.width < drawn.height

        eventually(is_in_the_corner, PATIENCE, "the drop-down at the upper right of the second monitor")
        self.desktop.screenshot(f"{self.desktop.name}-second.png")
        self.desktop.key("Escape")
        self.wait_until_closed(program)


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    return unittest.TestSuite(GnomeMonitors(name) for name in vars(GnomeMonitors) if name.startswith("test_"))
