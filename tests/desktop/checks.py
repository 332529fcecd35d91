"""What must hold in every panel. A module for a panel derives its test case from one of the classes here."""

from __future__ import annotations

import re
import signal
import unittest
from collections.abc import Callable, Sequence

from PIL import Image

from endtoend.waiting import eventually, never

from .desktops import Desktop, X11Desktop
from .pictures import Color, Rectangle, background, bars, brightness, changed, ink_brightness
from .preference import ColorPreference
from .program import APPLICATION, PATIENCE, TITLE, Program
from .x11 import MIDDLE

# How long something is watched that must not happen.
WATCHED_SECONDS = 0.5
# From a click to the window that belongs to it.
NEAR = 60
ELSEWHERE = (300, 450)
READABLE_CONTRAST = 80
CHART_SUMMARY = re.compile(r"Median \d+ milliseconds, slowest \d+ milliseconds, \d+ lost")
GRID_ROWS = ("Pings sent", "Replies lost", "Packet loss", "Average", "Fastest", "Slowest")


def distance(x: int, y: int, place: Rectangle) -> int:
    """From a point to a rectangle, along the longer axis."""
    return max(place.x - x, x - place.x - place.width, place.y - y, y - place.y - place.height, 0)


def stays_closed(program: Program) -> bool:
    """Whether the drop-down does not open again."""
    return never(program.drop_down, WATCHED_SECONDS)


def is_readable(window: Image.Image, is_light: bool) -> bool:
    """Whether a picture of a window is as light as that, with readable texts."""
    ground = brightness(background(window))
    return (ground > 127) == is_light and abs(ink_brightness(window) - ground) > READABLE_CONTRAST


class PanelChecks:
    """In every panel, whatever its protocol is."""

    panel: type[Desktop]
    # A wide face, or a label beside the icon, takes more room than an icon.
    shows_text_beside = False
    # Where windows can place themselves.
    opens_at_click = True

    desktop: Desktop
    program: Program | None = None

    @classmethod
    def setUpClass(cls) -> None:
        cls.panel.require()
        cls.desktop = cls.panel()
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)
        cls.desktop.park_pointer()
        cls.empty = cls.desktop.still_picture()

        cls.addClassCleanup(cls.end_program)

    def setUp(self) -> None:
        self.desktop.park_pointer()

    def run(self, result: unittest.TestResult) -> unittest.TestResult | None:
        """A failed test leaves a picture."""
        failed = len(result.failures) + len(result.errors)
        outcome = super().run(result)
        if len(result.failures) + len(result.errors) > failed:
            self.desktop.keep_failure(self.id())
        return outcome

    @classmethod
    def end_program(cls) -> None:
        if cls.program is not None:
            cls.program.end()
            cls.program.forget_statistics()
            cls.program = None

    def running(self) -> Program:
        """A program at rest, with the usual settings: that of the test before unless it has ended."""
        program = self.program
        if program is None or program.process.poll() is not None or program.drop_down() is not None:
            return self.started()
        return program

    def started(self, **settings: object) -> Program:
        """A new program."""
        self.end_program()
        self.wait_for_empty_panel()
        if settings:
            self.addCleanup(self.end_program)
        type(self).program = Program(self.desktop, **settings)
        return self.program

    def is_empty(self) -> bool:
        return changed(self.empty, self.desktop.picture(), self.desktop.strip) is None

    def wait_for_empty_panel(self) -> None:
        self.desktop.park_pointer()

        def is_empty() -> bool:
            if self.is_empty():
                return True
            self.desktop.key("Escape")  # Whatever a failed test has left open.
            return False

        eventually(is_empty, PATIENCE, "the item has gone from the panel")

    def shown(self, program: Program) -> Rectangle:
        """Where the item is drawn, once there is a verdict to be shown."""
        place = self.desktop.item_rectangle(self.empty)
        self.wait_for_verdict(program)
        self.desktop.still_picture()
        return changed(self.empty, self.desktop.picture(), self.desktop.strip) or place

    def wait_for_verdict(self, program: Program) -> None:
        raise NotImplementedError

    def click_item(self, place: Rectangle) -> None:
        """With the button that opens the drop-down, and closes it again."""
        self.desktop.click(*place.center)

    def open_drop_down(self, place: Rectangle) -> None:
        """As people do it."""
        self.click_item(place)

    def opened(self, program: Program) -> Rectangle:
        """The drop-down at rest, ready for keys."""
        eventually(program.drop_down, PATIENCE, "the drop-down")
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "the drop-down has the keyboard")

        def settled() -> Rectangle | None:
            first, second = program.drop_down(), program.drop_down()
            return first if first == second else None

        return eventually(settled, PATIENCE, "the drop-down at rest")

    def check_it_follows(self, program: Program, set_dark: Callable[[bool], None], order: Sequence[bool]) -> None:
        """The drop-down that has been opened, while the desktop becomes dark and light."""
        window = self.opened(program)
        for dark in order:
            set_dark(dark)

            eventually(
                lambda dark=dark: is_readable(self.desktop.picture().crop(window.box), not dark),
                PATIENCE,
                f"readable, dark: {dark}",
            )
            self.desktop.screenshot(f"{self.desktop.name}-drop-down-{'dark' if dark else 'light'}.png")
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def wait_until_closed(self, program: Program) -> None:
        eventually(lambda: program.drop_down() is None, PATIENCE, "the drop-down closes")

    # What is drawn.

    def test_it_is_drawn_readably_in_the_panel(self) -> None:
        program = self.running()
        place = self.shown(program)

        picture = self.desktop.screenshot(f"{self.desktop.name}.png")

        self.assertGreaterEqual(place.height, 10)
        if self.shows_text_beside:
            self.assertGreater(place.width, 2 * place.height)
        else:
            self.assertLessEqual(place.width, self.desktop.strip.height)
        self.assertGreater(self.contrast(picture, place), READABLE_CONTRAST)

    def contrast(self, picture: Image.Image, place: Rectangle) -> float:
        """Between what is drawn there and the panel."""
        ground = self.ground(picture)
        return abs(ink_brightness(picture.crop(place.box), ground) - brightness(ground))

    def ground(self, picture: Image.Image) -> Color:
        """The panel's color."""
        return background(picture.crop(self.desktop.strip.box))

    def stands_out(self, place: Rectangle, on_light: bool) -> bool:
        """Whether the panel is as light as that, and what is drawn there readable on it."""
        picture = self.desktop.picture()
        return (brightness(self.ground(picture)) > 127) == on_light and self.contrast(picture, place) > READABLE_CONTRAST

    def test_the_icon_alone_is_five_rising_bars(self) -> None:
        program = self.started(ShowText="false")
        place = self.shown(program)

        def five_bars() -> list[Rectangle]:
            picture = self.desktop.screenshot(f"{self.desktop.name}-icon.png")
            found = bars(picture.crop(place.box), self.ground(picture))
            return found if len(found) == 5 and self.contrast(picture, place) > READABLE_CONTRAST else []

        heights = [bar.height for bar in eventually(five_bars, PATIENCE, "five bars")]

        self.assertEqual(heights, sorted(heights))
        self.assertGreaterEqual(heights[-1], 3 * heights[0])

    # The drop-down.

    def test_a_click_opens_the_drop_down_and_escape_closes_it(self) -> None:
        program = self.running()
        place = self.shown(program)

        self.open_drop_down(place)

        window = self.opened(program)
        self.assertTrue(self.desktop.area.contains(window), window)
        if self.opens_at_click:
            self.assertLess(distance(*place.center, window), NEAR)
        self.desktop.screenshot(f"{self.desktop.name}-drop-down.png")
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_a_second_click_on_the_icon_closes_it_for_good(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.open_drop_down(place)
        self.opened(program)

        self.click_item(place)

        self.wait_until_closed(program)
        self.assertTrue(stays_closed(program), "it opened again")

    def test_a_click_elsewhere_closes_it(self) -> None:
        program = self.running()
        self.open_drop_down(self.shown(program))
        window = self.opened(program)
        self.assertGreater(distance(*ELSEWHERE, window), NEAR)

        self.desktop.click(*ELSEWHERE)

        self.wait_until_closed(program)
        self.assertTrue(stays_closed(program), "it opened again")

    def test_a_second_start_opens_the_drop_down_of_the_first(self) -> None:
        program = self.running()
        self.shown(program)

        self.assertEqual(program.start_again(), 0)

        self.opened(program)
        self.assertIsNone(program.process.poll())
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def check_notification(self) -> None:
        """The desktop's own service shows it."""
        program = self.running()
        program.item_up()
        self.assertEqual(program.start_again("--settings"), 0)
        eventually(lambda: "Test" in self.desktop.accessible(APPLICATION).texts(), PATIENCE, "the settings")
        self.assertFalse(self.desktop.shows_notification("Tarnwick — Test"))
        self.desktop.act(APPLICATION, "Test")
        eventually(lambda: self.desktop.shows_notification("Tarnwick — Test"), PATIENCE, "the notification")
        self.desktop.screenshot(f"{self.desktop.name}-notification.png")

    def test_assistive_technology_sees_all_of_the_drop_down(self) -> None:
        program = self.running()
        self.open_drop_down(self.shown(program))
        self.opened(program)

        def texts() -> list[str]:
            found = self.desktop.accessible(APPLICATION).texts()
            return found if any(text.startswith("Quit") for text in found) else []

        seen = eventually(texts, PATIENCE, "the drop-down in the accessible tree")

        header = [text for text in seen if text.startswith("Excellent")]
        self.assertTrue(any("127.0.0.1" in text and " ms" in text for text in header), seen)
        self.assertTrue(any(CHART_SUMMARY.match(text) for text in seen), seen)
        for title in GRID_ROWS:
            self.assertTrue(any(text.startswith(f"{title}: session ") for text in seen), (title, seen))
        titles = (
            "Reset Session Stats", "Pause for an Hour", "Outages…", "Settings…", "About Tarnwick", "Quit Tarnwick"
        )  # fmt: skip
        for title in titles:
            self.assertIn(title, seen)
        self.assertNotIn("Change Host…", seen)

    # Coming and going.

    def test_it_goes_when_the_program_is_killed(self) -> None:
        program = self.running()
        self.shown(program)

        program.end()

        eventually(self.is_empty, PATIENCE, "the item goes")

    def test_it_comes_back_with_a_new_panel(self) -> None:
        program = self.running()
        self.shown(program)
        self.desktop.kill_panel()

        self.desktop.start_panel()

        self.assertTrue(self.desktop.item_rectangle(self.empty, timeout=PATIENCE))

    def ends_well(self, program: Program, end: Callable[[], object]) -> None:
        """Whether the program, told to end, does so with its statistics saved."""
        self.shown(program)
        end()
        self.assertEqual(program.exit_status(), 0, program.output)
        self.assertGreaterEqual(program.saved_pings(), 1)

    def test_a_polite_signal_ends_it_with_the_statistics_saved(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                program = self.running()
                self.ends_well(program, lambda program=program, number=number: program.send(number))

    def test_a_polite_signal_ends_it_while_the_drop_down_is_open(self) -> None:
        program = self.running()

        def end() -> None:
            self.open_drop_down(self.shown(program))
            self.opened(program)
            program.send(signal.SIGTERM)

        self.ends_well(program, end)

    def test_the_quit_shortcut_ends_it_with_the_statistics_saved(self) -> None:
        program = self.running()

        def quit_by_keyboard() -> None:
            self.open_drop_down(self.shown(program))
            self.opened(program)
            self.desktop.key("q", "Control_L")

        self.ends_well(program, quit_by_keyboard)

    def test_assistive_technology_can_quit_it(self) -> None:
        program = self.running()

        def quit_by_action() -> None:
            self.open_drop_down(self.shown(program))
            self.opened(program)
            eventually(self.tree_has_quit, PATIENCE, "the drop-down in the accessible tree")
            self.desktop.act(APPLICATION, "Quit Tarnwick")

        self.ends_well(program, quit_by_action)

    def tree_has_quit(self) -> bool:
        return "Quit Tarnwick" in self.desktop.accessible(APPLICATION).texts()


class X11Checks(PanelChecks):
    """Where the tests can hold a button down, and windows place themselves."""

    desktop: X11Desktop

    def test_a_button_held_on_the_icon_closes_it_for_good(self) -> None:
        program = self.running()
        place = self.shown(program)
        self.open_drop_down(place)
        self.opened(program)

        self.desktop.screen.press(*place.center)
        self.addCleanup(self.desktop.screen.release)
        self.wait_until_closed(program)
        self.assertTrue(stays_closed(program), "it opened again while the button was held")
        self.desktop.screen.release()

        self.assertTrue(stays_closed(program), "it opened again when the button was let go")

    def test_a_middle_click_opens_the_drop_down_too(self) -> None:
        program = self.running()
        place = self.shown(program)

        self.desktop.click(*place.center, MIDDLE)

        self.opened(program)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_turning_the_wheel_over_it_does_nothing(self) -> None:
        program = self.running()
        place = self.shown(program)

        for up in (True, False):
            self.desktop.scroll(*place.center, up)

        self.assertTrue(stays_closed(program), "it opened")
        self.assertIsNone(program.process.poll())

    def test_an_open_drop_down_turns_dark_with_the_desktop(self) -> None:
        program = self.running()
        place = self.shown(program)
        preference = ColorPreference(self.desktop.session, dark=False)
        self.addCleanup(preference.close)
        self.open_drop_down(place)

        self.check_it_follows(program, preference.set_dark, (False, True))
