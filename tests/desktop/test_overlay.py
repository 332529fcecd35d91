"""What drops down in an overlay of the screen: panels at each edge, screens of several scales side by side."""

from __future__ import annotations

import itertools
import unittest

from endtoend.waiting import eventually, never

from .checks import NEAR, distance
from .notifier_checks import NotifierChecks
from .panels import WaybarPanel
from .pictures import Rectangle, changed
from .program import PATIENCE

WIDTH = 1280
THICKNESS = 40
USUAL_SIZE = (320, 400)  # in the usual font, at the least
LONG_HOST = "0000:0000:0000:0000:0000:0000:0000:0001"
# How long the pointer rests before it moves again.
REST_SECONDS = 3
BESIDE = (WIDTH + 640, 100)


class SecondScreen(WaybarPanel):
    """The right one of two, both of 1280 x 800 in the units of windows."""

    area = Rectangle(0, 0, 2 * WIDTH, 800)
    height = THICKNESS
    edge: str
    scale = 1.5

    @property
    def outputs(self) -> tuple[str, ...]:
        second = f"resolution {int(WIDTH * self.scale)}x{int(800 * self.scale)} position {WIDTH} 0 scale {self.scale}"
        return ("resolution 1280x800 position 0 0", second)

    @property
    def bar(self) -> dict[str, object]:
        bar = {"output": "HEADLESS-2", "position": self.edge, "modules-right": ["tray"]}
        return bar | ({"width": THICKNESS, "height": 0} if self.edge in ("left", "right") else {})

    @property
    def strip(self) -> Rectangle:
        thick = THICKNESS
        return {
            "top": Rectangle(WIDTH, 0, WIDTH, thick),
            "bottom": Rectangle(WIDTH, 800 - thick, WIDTH, thick),
            "left": Rectangle(WIDTH, 0, thick, 800),
            "right": Rectangle(2 * WIDTH - thick, 0, thick, 800),
        }[self.edge]

    @property
    def rest(self) -> Rectangle:
        """The second screen without the panel."""
        thick = THICKNESS
        return {
            "top": Rectangle(WIDTH, thick, WIDTH, 800 - thick),
            "bottom": Rectangle(WIDTH, 0, WIDTH, 800 - thick),
            "left": Rectangle(WIDTH + thick, 0, WIDTH - thick, 800),
            "right": Rectangle(WIDTH, 0, WIDTH - thick, 800),
        }[self.edge]


class AtTheEdge(NotifierChecks):
    shows_text_beside = True

    def test_it_opens_at_the_item_and_a_press_beside_it_closes_it(self) -> None:
        program = self.running()
        place = self.shown(program)

        self.open_drop_down(place)

        window = self.opened(program)
        self.desktop.screenshot(f"{self.desktop.name}.png")
        self.assertLess(distance(*place.center, window), NEAR)
        self.assertGreaterEqual((window.width, window.height), USUAL_SIZE)
        self.desktop.click(*BESIDE)
        self.wait_until_closed(program)


class AtTheTop(AtTheEdge, unittest.TestCase):
    class panel(SecondScreen):
        name, edge = "overlay-top", "top"

    def test_a_host_that_has_no_room_has_a_tool_tip(self) -> None:
        program = self.started(Hostname=LONG_HOST)
        self.open_drop_down(self.shown(program))
        window = self.opened(program)
        below_header = Rectangle(window.x + 20, window.y + 56, 80, 16)  # at the left of the pointer
        before = self.desktop.picture()
        steps = itertools.cycle((150, 160))

        def shows_after_a_move() -> bool:
            self.desktop.move(window.x + next(steps), window.y + 36)
            return not never(lambda: changed(before, self.desktop.picture(), below_header), REST_SECONDS)

        eventually(shows_after_a_move, PATIENCE, "the tool tip")
        self.desktop.screenshot("overlay-tool-tip.png")
        self.desktop.key("Escape")
        self.wait_until_closed(program)


class AtTheBottom(AtTheEdge, unittest.TestCase):
    class panel(SecondScreen):
        name, edge = "overlay-bottom", "bottom"


class AtTheLeft(AtTheEdge, unittest.TestCase):
    class panel(SecondScreen):
        name, edge, scale = "overlay-left", "left", 2


class AtTheRight(AtTheEdge, unittest.TestCase):
    class panel(SecondScreen):
        name, edge, scale = "overlay-right", "right", 1.25


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    chosen = "test_it_opens_at_the_item_and_a_press_beside_it_closes_it"
    edges = [case(chosen) for case in (AtTheTop, AtTheBottom, AtTheLeft, AtTheRight)]
    return unittest.TestSuite([AtTheTop("test_a_host_that_has_no_room_has_a_tool_tip"), *edges])
