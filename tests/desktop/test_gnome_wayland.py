"""The program in GNOME Shell on Wayland."""

from __future__ import annotations

import unittest

from .heavy_panels import GnomeWaylandPanel
from .test_gnome import Gnome

# The others are tried on X11: there the shell can be restarted alone.
CHOSEN = (
    "test_it_is_drawn_readably_in_the_panel",
    "test_a_click_opens_the_drop_down_and_escape_closes_it",
    "test_a_second_click_on_the_icon_closes_it_for_good",
    "test_a_click_elsewhere_closes_it",
    "test_a_second_start_opens_the_drop_down_of_the_first",
    "test_a_double_click_opens_the_drop_down",
    "test_a_right_click_shows_the_menu_that_the_panel_draws",
    "test_a_question_comes_to_the_front_and_sigterm_ends_it",
)


class GnomeOnWayland(Gnome):
    panel = GnomeWaylandPanel


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    return unittest.TestSuite(map(GnomeOnWayland, CHOSEN))
