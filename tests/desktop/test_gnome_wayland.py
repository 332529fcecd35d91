"""The program in GNOME Shell on Wayland."""

from __future__ import annotations

import dataclasses
import pathlib
import shutil
import unittest

from PIL import Image

from endtoend.waiting import eventually

from .checks import NEAR, distance
from .desktops import START_SECONDS
from .heavy_panels import GnomeWaylandPanel, GnomeWithPortals
from .notifier_checks import MENU_TITLES
from .pictures import Rectangle, changed, solid_change
from .program import APPLICATION, PATIENCE, PROGRAM
from .settings import TITLE as SETTINGS_TITLE
from .test_gnome import Gnome
from .x11 import MIDDLE, RIGHT

OTHER_TITLE = "Another Program"
ENTRY = "org.tarnwick.tarnwick.desktop"
# Of the menu that is open.
ROWS_OF_SHELL = """(() => {
    const {St, Gtk} = imports.gi;
    const theme = St.IconTheme ? new St.IconTheme() : new Gtk.IconTheme();
    const rows = Object.values(Main.panel.statusArea).filter(item => item?.menu?.isOpen)
        .flatMap(item => item.menu._getMenuItems()).filter(row => row.label && row.mapped);
    return rows.map(row => [row.label.text, [...row.get_transformed_position(), ...row.get_transformed_size()],
        row.active, theme.has_icon(row._icon?.icon_name ?? '')]);
})()"""

# Starts a program as a click in the shell's overview does. The identifiers of starts that the pointer tells of.
START_FROM_SHELL = f"""(() => {{
    const app = imports.gi.Shell.AppSystem.get_default().lookup_app('{ENTRY}');
    app?.activate();
    return app !== null;
}})()"""
STARTS_OF_SHELL = """imports.gi.Shell.WindowTracker.get_default().get_startup_sequences()
    .filter(start => !start.get_completed()).map(start => start.get_id())"""
# It writes down what it tells the compositor.
TALKING = """#!/bin/sh
WAYLAND_DEBUG=client exec '{program}' --set Hostname=127.0.0.1 2> "$0.log"
"""

# Far from the middle, where the drop-down opens for want of a place.
AT_THE_LEFT = """
[org/gnome/shell/extensions/appindicator]
tray-pos='left'
"""
# Of the build that the program is from.
EXTENSIONS = pathlib.Path(PROGRAM).resolve().parents[1] / "share/gnome-shell/extensions"

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
    "test_a_click_on_another_window_closes_it",
    "test_settings_from_the_shells_menu_come_to_the_front",
    "test_the_rows_of_the_shells_menu_have_their_icons",
    "test_a_start_without_a_window_ends_for_the_shell",
    "test_without_a_place_it_opens_in_the_middle_with_the_keyboard",
)


@dataclasses.dataclass(frozen=True)
class ShellRow:
    """Of a menu that the shell draws."""

    place: Rectangle
    is_chosen: bool
    has_icon: bool  # the theme has it


class GnomeOnWayland(Gnome):
    panel = GnomeWaylandPanel
    opens_at_click = False

    def with_other_window(self) -> Rectangle:
        """Where another program's window is, which has the keyboard."""
        session, bare = self.desktop.session, self.desktop.bare
        script = str(pathlib.Path(__file__).with_name("other_window.py"))
        other = session.spawn("other", ["/usr/bin/python3", "-B", script, OTHER_TITLE])

        def end() -> None:
            session.kill(other)
            eventually(lambda: self.place_of(OTHER_TITLE) is None, PATIENCE, "the other window has gone")
            self.desktop.bare = bare

        self.addCleanup(end)
        eventually(lambda: self.desktop.focused_title() == OTHER_TITLE, PATIENCE, "the other window has the keyboard")
        place = self.place_of(OTHER_TITLE)
        self.desktop.bare = eventually(lambda: self.picture_with(place, bare), PATIENCE, "the other window is drawn")
        return place

    def picture_with(self, place: Rectangle, before: Image.Image) -> Image.Image | None:
        """A picture, once all there has changed and is at rest."""
        first, second = self.desktop.picture(), self.desktop.picture()
        drawn = solid_change(before, second, place)
        is_all = drawn is not None and drawn.width > place.width // 2 and drawn.height > place.height // 2
        return second if is_all and changed(first, second, place) is None else None

    def place_of(self, title: str) -> Rectangle | None:
        return next((place for name, place in self.desktop.placed_windows() if name == title), None)

    def test_a_click_on_another_window_closes_it(self) -> None:
        program = self.running()
        place = self.shown(program)
        other = self.with_other_window()
        self.open_drop_down(place)
        window = self.opened(program)
        aside = (other.x + 10, other.y + other.height // 2)  # the drop-down may be in the middle
        self.assertGreater(distance(*aside, window), NEAR)

        self.desktop.click(*aside)

        self.wait_until_closed(program)
        eventually(lambda: self.desktop.focused_title() == OTHER_TITLE, PATIENCE, "the other window has the keyboard")

    def test_settings_from_the_shells_menu_come_to_the_front(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.with_other_window()
        before = self.desktop.picture()
        self.desktop.click(*place.center, RIGHT)
        eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")

        row = self.menu_rows("Settings…")["Settings…"].place.center
        self.desktop.move(*row)
        eventually(lambda: self.menu_rows("Settings…")["Settings…"].is_chosen, PATIENCE, "the pointer is on the row")
        # The shell may take a click right after the opening one for a part of it.
        self.desktop.key("Return")

        eventually(lambda: self.desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the settings have the keyboard")
        self.desktop.screenshot(f"{self.desktop.name}-settings.png")
        self.end_program()

    def test_the_rows_of_the_shells_menu_have_their_icons(self) -> None:
        program = self.running()
        place = self.shown(program)
        before = self.desktop.picture()
        self.desktop.click(*place.center, RIGHT)
        eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")

        rows = self.menu_rows(*MENU_TITLES)
        self.desktop.dismiss_menu()
        self.assertEqual([title for title in MENU_TITLES if not rows[title].has_icon], [])

    def test_without_a_place_it_opens_in_the_middle_with_the_keyboard(self) -> None:
        program = self.not_yet_clicked()
        self.shown(program)

        program.start_again()

        window = self.opened(program)
        rest = self.desktop.rest
        self.assertLess(abs(window.center[0] - rest.center[0]), NEAR)
        self.assertLess(abs(window.center[1] - rest.center[1]), NEAR)
        self.desktop.screenshot(f"{self.desktop.name}-middle.png")

    def test_a_start_without_a_window_ends_for_the_shell(self) -> None:
        self.end_program()
        session = self.desktop.session
        script = session.folder / "talking-program"
        session.write(script, TALKING.format(program=session.own_copy(PROGRAM)))
        script.chmod(0o755)
        entry = f"[Desktop Entry]\nType=Application\nName=Tarnwick\nStartupNotify=true\nExec={script}\n"
        session.write(session.data / "applications" / ENTRY, entry)
        self.addCleanup(lambda: session.spawn("quit", [session.own_copy(PROGRAM), "--quit"]).wait(PATIENCE))
        eventually(lambda: self.desktop.evaluated(START_FROM_SHELL), PATIENCE, "the shell knows the program")

        (start,) = eventually(lambda: self.desktop.evaluated(STARTS_OF_SHELL), PATIENCE, "the shell waits for the program")

        # The shell also stops waiting by itself, after some time.
        told = f'set_startup_id("{start}")'
        log = script.with_suffix(".log")
        eventually(lambda: log.exists() and told in log.read_text(encoding="utf-8"), PATIENCE, "the program has told")
        eventually(lambda: not self.desktop.evaluated(STARTS_OF_SHELL), PATIENCE, "the shell waits no more")

    def menu_rows(self, *titles: str) -> dict[str, ShellRow]:
        """By their titles, once these have their places: the shell lays rows out again whenever a text changes."""

        def rows() -> dict[str, ShellRow] | None:
            found = {
                title: ShellRow(Rectangle(*map(round, place)), is_chosen, has_icon)
                for title, place, is_chosen, has_icon in self.desktop.evaluated(ROWS_OF_SHELL)
                if None not in place
            }
            return found if all(title in found for title in titles) else None

        return eventually(rows, PATIENCE, "the rows of the shell's menu")


class GnomeWaylandWithPortals(GnomeWaylandPanel, GnomeWithPortals):
    name = "gnome-wayland-portals"


class GnomeThatTellsPrograms(Gnome):
    """What has happened, and what the user prefers."""

    panel = GnomeWaylandWithPortals

    def test_the_shell_shows_a_notification(self) -> None:
        self.check_notification()

    def test_an_open_drop_down_follows_what_the_user_prefers(self) -> None:
        program = self.started()
        self.open_drop_down(self.shown(program))

        self.check_it_follows(program, self.desktop.set_dark, (True, False))


class GnomeThatTellsPlaces(GnomeWaylandPanel):
    """With our own extension, from the tree that the program was built in."""

    name = "gnome-places"
    extensions = "['ubuntu-appindicators@ubuntu.com', 'item-place@tarnwick.org', 'item-place-43@tarnwick.org']"
    is_on = True
    beside_workspaces = 64  # GNOME 43 has the word "Activities" there, which does not move

    def start_display(self) -> None:
        super().start_display()
        shutil.copytree(EXTENSIONS, self.session.data / "gnome-shell/extensions")
        keyfile = self.session.config / "glib-2.0/settings/keyfile"
        self.session.write(keyfile, keyfile.read_text(encoding="utf-8") + AT_THE_LEFT)

    def start_panel(self) -> None:
        super().start_panel()
        if self.is_on:
            eventually(self.tells_places, START_SECONDS, "the extension is on the bus")

    def tells_places(self) -> bool:
        return self.session.bus.owner("org.tarnwick.ItemPlace") is not None

    @property
    def strip(self) -> Rectangle:
        return Rectangle(
            self.beside_workspaces, 0, self.area.width * 3 // 8 - self.beside_workspaces, self.height
        )


class GnomeWithTheExtension(Gnome):
    panel = GnomeThatTellsPlaces

    def test_a_middle_click_opens_the_drop_down_below_the_item(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        self.desktop.click(*place.center, MIDDLE)
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)

    def test_a_second_start_opens_it_below_the_item(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        program.start_again()
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)


class GnomeThatKnowsTheExtension(GnomeThatTellsPlaces):
    """It is installed and switched off."""

    name = "gnome-offer"
    extensions = GnomeWaylandPanel.extensions
    is_on = False


class GnomeWithTheOffer(Gnome):
    panel = GnomeThatKnowsTheExtension

    def test_the_extension_is_offered_once_and_switched_on(self) -> None:
        program = self.not_yet_clicked()
        place = self.shown(program)
        self.desktop.click(*place.center, MIDDLE)
        self.opened(program)

        def is_offered() -> bool:
            return "Switch On" in self.desktop.accessible(APPLICATION).texts()

        eventually(is_offered, PATIENCE, "the offer")
        self.desktop.screenshot("offer.png")
        self.desktop.act(APPLICATION, "Switch On")
        eventually(self.desktop.tells_places, PATIENCE, "the extension is on the bus")
        eventually(lambda: not is_offered(), PATIENCE, "the offer has gone")
        self.desktop.key("Escape")
        self.wait_until_closed(program)
        self.desktop.click(*place.center, MIDDLE)
        self.assertLess(distance(*place.center, self.opened(program)), NEAR)


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    own = [case(name) for case in (GnomeThatTellsPrograms, GnomeWithTheExtension, GnomeWithTheOffer) for name in vars(case) if name.startswith("test_")]
    return unittest.TestSuite([*map(GnomeOnWayland, CHOSEN), *own])
