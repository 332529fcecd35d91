"""Two monitors on one X11 display: the drop-down keeps clear of the panel, which lies on one of them."""

from __future__ import annotations

import unittest

from endtoend.waiting import eventually

from .checks import NEAR, X11Checks, distance, is_readable
from .notifier_checks import NotifierChecks
from .panels import LXQT_PANEL, XFCE_PANEL, LxqtPanel, XfcePanel
from .pictures import Rectangle
from .program import PATIENCE

FIRST, SECOND = Rectangle(0, 0, 1280, 800), Rectangle(1280, 0, 1024, 768)
NEAR_END = 10


class TwoMonitors(XfcePanel):
    size = (FIRST.width + SECOND.width, FIRST.height)
    place: str  # as the panel's settings number them

    def start_display(self) -> None:
        super().start_display()
        self.screen.set_monitors(FIRST, SECOND)
        file = self.session.config / "xfce4/xfconf/xfce-perchannel-xml/xfce4-panel.xml"
        self.session.write(file, XFCE_PANEL.replace("p=6;", f"p={self.place};"))


class OnMonitors(X11Checks, NotifierChecks):
    def free(self) -> Rectangle:
        """The first monitor without the panel."""
        strip = self.desktop.strip
        top = strip.height if strip.y == 0 else 0
        return Rectangle(0, top, FIRST.width, FIRST.height - strip.height)

    def end_of_panel(self) -> tuple[int, int]:
        """The point of the free part of the monitor that is next to the panel's end."""
        free = self.free()
        return free.x + free.width, free.y if self.desktop.strip.y == 0 else free.y + free.height

    def test_it_opens_beside_the_panel(self) -> None:
        program = self.started()
        place = self.shown(program)

        self.open_drop_down(place)

        window = self.opened(program)
        eventually(lambda: is_readable(self.desktop.picture().crop(window.box), True), PATIENCE, "it is drawn")
        self.desktop.screenshot(f"{self.desktop.name}.png")
        self.assertTrue(self.free().contains(window), window)
        self.assertLess(distance(*place.center, window), NEAR)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_a_second_start_opens_it_at_the_end_of_the_panel(self) -> None:
        program = self.started()
        self.shown(program)

        self.assertEqual(program.start_again(), 0)

        window, free = self.opened(program), self.free()
        self.assertTrue(free.contains(window), window)
        self.assertLess(distance(*self.end_of_panel(), window), NEAR_END)
        self.desktop.key("Escape")
        self.wait_until_closed(program)


class AtTheTop(OnMonitors, unittest.TestCase):
    class panel(TwoMonitors):
        name, place = "monitors-top", "6"

        @property
        def strip(self) -> Rectangle:
            return Rectangle(0, 0, FIRST.width, self.height)


class AtTheBottom(OnMonitors, unittest.TestCase):
    class panel(TwoMonitors):
        name, place = "monitors-bottom", "10"

        @property
        def strip(self) -> Rectangle:
            return Rectangle(0, FIRST.height - self.height, FIRST.width, self.height)


class InLxqt(OnMonitors, unittest.TestCase):
    class panel(LxqtPanel):
        """At the bottom of the first monitor. That of Debian 12 knows only real outputs, and so one monitor."""

        name = "monitors-lxqt"
        size = TwoMonitors.size
        width = f"width={FIRST.width}\nwidth-percent=false\nalignment=-1"
        settings = LXQT_PANEL.replace("width=100\nwidth-percent=true", width)

        def start_display(self) -> None:
            super().start_display()
            self.screen.set_monitors(FIRST, SECOND)

        @property
        def strip(self) -> Rectangle:
            return Rectangle(0, FIRST.height - self.height, FIRST.width, self.height)


CHOSEN = ("test_it_opens_beside_the_panel", "test_a_second_start_opens_it_at_the_end_of_the_panel")


def load_tests(loader: unittest.TestLoader, _tests: unittest.TestSuite, _pattern: str | None) -> unittest.TestSuite:
    del loader
    return unittest.TestSuite(case(chosen) for case in (AtTheTop, AtTheBottom, InLxqt) for chosen in CHOSEN)
