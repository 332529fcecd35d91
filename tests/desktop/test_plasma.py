"""The program in Plasma's panel: square, on the ground that its theme draws."""

from __future__ import annotations

import unittest

from PIL import Image

from endtoend.waiting import eventually, never

from .checks import WATCHED_SECONDS, is_readable, stays_closed
from .notifier_checks import NotifierChecks
from .overlay import OverlayDesktop
from .pictures import Rectangle, changed, solid_change
from .plasma_panels import PlasmaPanel
from .program import PATIENCE, Program
from .settings import TITLE as SETTINGS_TITLE

# From a window's corner to a place in it without controls.
INSIDE = 40


def has_bars_of_icon(picture: Image.Image) -> bool:
    """Whether something in it is as green as the bars of the program's icon."""
    clearly = 60
    return any(g > b and g > r + clearly for r, g, b in picture.convert("RGB").getdata())


class PlasmaChecks(NotifierChecks):
    desktop: PlasmaPanel

    def test_it_follows_the_panels_own_theme_to_dark_and_back(self) -> None:
        place = self.shown(self.running())
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_theme, "default")

        self.desktop.set_theme("breeze-light")
        # The programs stay light.
        for theme, is_light in (("breeze-dark", False), ("default", True)):
            self.desktop.set_theme(theme)

            eventually(lambda is_light=is_light: self.stands_out(place, is_light), PATIENCE, f"readable in {theme}")
            self.desktop.screenshot(f"{self.desktop.name}-{theme}.png")

    def test_it_follows_the_programs_colors_to_dark_and_back(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_colors, "BreezeLight")

        for colors, is_light in (("BreezeDark", False), ("BreezeLight", True)):
            self.desktop.set_colors(colors)

            eventually(lambda is_light=is_light: self.stands_out(place, is_light), PATIENCE, f"item in {colors}")
            self.open_drop_down(place)
            window = self.opened(program)
            eventually(
                lambda window=window, is_light=is_light: is_readable(self.desktop.picture().crop(window.box), is_light),
                PATIENCE,
                f"drop-down in {colors}",
            )
            self.desktop.screenshot(f"{self.desktop.name}-{colors}.png")
            self.desktop.key("Escape")
            self.wait_until_closed(program)

    def open_settings(self, program: Program) -> None:
        item = program.item()
        self.addCleanup(self.end_program)
        item.choose(item.row("Settings…"))
        eventually(lambda: self.desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the window has the keyboard")

    def test_only_the_settings_window_is_in_the_task_bar(self) -> None:
        program = self.running()
        bar = self.desktop.task_bar

        def entry() -> Rectangle | None:
            return changed(self.empty, self.desktop.picture(), bar)

        self.open_drop_down(self.shown(program))
        self.opened(program)
        self.assertTrue(never(entry, WATCHED_SECONDS), "the drop-down is there")
        self.desktop.key("Escape")
        self.wait_until_closed(program)
        self.open_settings(program)

        eventually(entry, PATIENCE, "an entry")
        eventually(lambda: has_bars_of_icon(self.desktop.picture().crop(bar.box)), PATIENCE, "the program's icon")
        self.desktop.screenshot(f"{self.desktop.name}-task-bar.png")

    def test_a_click_on_another_window_closes_it(self) -> None:
        program = self.running()
        place = self.shown(program)
        before = self.desktop.picture()
        self.open_settings(program)

        def at_rest() -> Image.Image | None:
            first, second = self.desktop.picture(), self.desktop.picture()
            is_still = solid_change(first, second, self.desktop.rest) is None
            return second if is_still and solid_change(before, second, self.desktop.rest) else None

        picture = eventually(at_rest, PATIENCE, "the settings window at rest")
        window = solid_change(before, picture, self.desktop.rest)
        if isinstance(self.desktop, OverlayDesktop):
            self.addCleanup(setattr, self.desktop, "bare", self.desktop.bare)
            self.desktop.bare = picture
        self.open_drop_down(place)
        self.opened(program)
        self.desktop.screenshot(f"{self.desktop.name}-two-windows.png")

        self.desktop.click(window.x + INSIDE, window.y + INSIDE)

        self.wait_until_closed(program)
        self.assertTrue(stays_closed(program), "it opened again")
        eventually(lambda: self.desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the other has the keyboard")


class Plasma(PlasmaChecks, unittest.TestCase):
    panel = PlasmaPanel

    def test_it_follows_a_global_theme_with_a_dark_panel_and_back(self) -> None:
        place = self.shown(self.running())
        self.addCleanup(self.wait_for_empty_panel)
        self.addCleanup(self.end_program)
        self.addCleanup(self.desktop.set_global_theme, "org.kde.breeze.desktop")
        for theme in ("breeze-light", "default"):
            self.desktop.set_theme(theme)

        for name, is_light in (("breezetwilight", False), ("breeze", True)):
            self.desktop.set_global_theme(f"org.kde.{name}.desktop")

            eventually(lambda is_light=is_light: self.stands_out(place, is_light), PATIENCE, f"readable in {name}")
            self.desktop.screenshot(f"{self.desktop.name}-{name}.png")
