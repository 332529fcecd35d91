"""What real notification daemons show of an outage and its end, and the programs where there is none or it hangs."""

from __future__ import annotations

import contextlib
import pathlib
import signal
import time
from collections.abc import Iterator, Sequence
from typing import ClassVar

from endtoend import watch
from endtoend.concurrently import ConcurrentTestCase
from endtoend.waiting import eventually
from lab import Behavior, Lab

from .bus import BUS, BUS_PATH, Listener
from .item import Item
from .notifications import NOTIFICATIONS, BareDesktop, Daemon, Dunst, Requests, Xfce4Notifyd
from .desktops import X11Desktop
from .notifier_checks import click_until_called, item_calls
from .panels import XfcePanel
from .pictures import Rectangle, changed
from .program import APPLICATION, PATIENCE, PROGRAM, Program
from .sandbox import sandbox_prefix
from .session import Session
from .settings import TITLE as SETTINGS_TITLE

# Whose fault that is may follow.
DOWN = ("Tarnwick — Connection down", "Your internet connection seems to be down. No replies for 5 s.")
RESTORED = ("Tarnwick — Connection restored", "Your internet connection has been restored.")
# No router lies before the pinged host.
BLAME = "in your own network, does not answer."
# With a time-out of a second, silence is an outage within this time; a connection that is down is tried again as often.
OUTAGE_SECONDS = 10
# A notification that no daemon could show is dropped after five seconds.
STALE_SECONDS = 7
# Of a path without routers.
PROBES_TO_LEARN = 3
# A program that waits for the answer of a daemon that hangs waits longer: 25 seconds, the bus's usual limit.
UNHELD_SECONDS = 15
# What passes on the bus when a daemon is asked.
QUESTION = f"type='method_call',destination='{NOTIFICATIONS}'"
# As its packager would have named it.
SANDBOXED = "org.example.Tarnwick"
PORTAL, PORTAL_BACKEND = "/usr/libexec/xdg-desktop-portal", "/usr/libexec/xdg-desktop-portal-gtk"


class PanelWithoutDaemons(XfcePanel):
    """Where the bus starts none either."""

    withheld_services = (*XfcePanel.withheld_services, NOTIFICATIONS)


class SmallPanel(PanelWithoutDaemons):
    """So small that a notification and a window in the middle of the screen overlap."""

    size = (800, 600)


class DesktopWithPortals(BareDesktop):
    executables = (*BareDesktop.executables, PORTAL, PORTAL_BACKEND)
    # It would mount a file system, which outlives it.
    withheld_services = ("org.freedesktop.portal.Documents",)


def load_bus_library() -> None:
    """The library loads its parts at their first use, which must not happen in two threads at once."""
    session = Session("notifications")
    try:
        session.start_bus()
        session.bus.call(BUS, BUS_PATH, BUS, "UpdateActivationEnvironment", "(a{ss})", ({"LOADED": "yes"},))
        assert session.bus.properties(BUS, BUS_PATH, BUS)
        assert session.bus.owner(NOTIFICATIONS) is None
    finally:
        session.close()


def bus_of(session: Session) -> dict[str, str]:
    name = "DBUS_SESSION_BUS_ADDRESS"
    return {name: session.environment[name]}


def settings(address: str) -> dict[str, object]:
    return {"Hostname": address, "PingInterval": 1, "PingTimeout": 1, "ShowNotifications": "true"}


class Notifications(ConcurrentTestCase):
    lab: ClassVar[Lab]

    @classmethod
    def setUpClass(cls) -> None:
        for needed in (PanelWithoutDaemons, DesktopWithPortals, Dunst, Xfce4Notifyd):
            needed.require()
        load_bus_library()
        cls.lab = Lab()
        cls.addClassCleanup(cls.lab.close)
        super().setUpClass()

    @contextlib.contextmanager
    def desktop(self, kind: type[X11Desktop], name: str) -> Iterator[X11Desktop]:
        """A test that fails on it leaves a picture."""
        desktop = kind()
        desktop.name = f"notifications-{name}"
        desktop.start()
        try:
            desktop.park_pointer()
            yield desktop
        except BaseException:
            desktop.keep_failure(self.id())
            raise
        finally:
            desktop.stop()

    def start(self, desktop: X11Desktop, address: str, prefix: Sequence[str] = ()) -> Program:
        """A program that gets answers."""
        self.lab.behave(address, Behavior())
        program = Program(desktop, prefix, **settings(address))
        self.wait_for_answers(address)
        return program

    def wait_for_answers(self, address: str) -> None:
        self.wait_for_pings(address, 3)

    def wait_for_pings(self, address: str, count: int) -> None:
        """Which come each second."""
        sent = len(self.lab.requests(address))
        eventually(lambda: len(self.lab.requests(address)) >= sent + count, count + PATIENCE, "pings")

    def wait_until_stale(self, address: str) -> None:
        """By the stamps of pings: the program works, and drops what no daemon could show so far."""
        posted = time.monotonic()
        eventually(
            lambda: any(request.at > posted + STALE_SECONDS for request in self.lab.requests(address)),
            STALE_SECONDS + PATIENCE, "a ping so much later"
        )  # fmt: skip

    def wait_until_learnt(self, address: str) -> None:
        """Of a path that was not known before, nothing can be said once it is silent."""
        eventually(lambda: self.lab.probes(address) >= PROBES_TO_LEARN, PATIENCE, "the path is learnt")

    def begin_outage(self, address: str) -> None:
        self.lab.change(address, silent=True)

    def end_outage(self, address: str) -> None:
        self.lab.change(address, silent=False)

    def wait_for(self, notification: tuple[str, str], daemon: Daemon) -> None:
        title, body = notification

        def is_shown() -> bool:
            return any(shown[0] == title and shown[1].startswith(body) for shown in daemon.shown())

        eventually(is_shown, OUTAGE_SECONDS + PATIENCE, f"shown: {title}")

    def wait_until_down(self, item: Item) -> None:
        eventually(lambda: self.says_down(item), OUTAGE_SECONDS + PATIENCE, "the item says that it is down")

    def wait_until_up(self, item: Item) -> None:
        eventually(lambda: not self.says_down(item), OUTAGE_SECONDS + PATIENCE, "the item says no more that it is down")

    @staticmethod
    def says_down(item: Item) -> bool:
        return "No replies" in "\n".join(item.tool_tip)

    def check_drop_down(self, desktop: X11Desktop, program: Program, icon: Rectangle) -> None:
        """It opens, and says that the connection is down, and whose fault that is."""
        with item_calls(desktop.session.bus.address) as calls:
            click_until_called(lambda: desktop.click(*icon.center), calls)
        eventually(program.drop_down, UNHELD_SECONDS, "the drop-down")

        def says_so() -> bool:
            texts = desktop.accessible(APPLICATION).texts()
            return any("Connection down" in text for text in texts) and any(BLAME in text for text in texts)

        eventually(says_so, PATIENCE, "the outage in the drop-down")
        desktop.screenshot("verdict.png")

    def check_outage(self, kind: type[Daemon], address: str, executable: str = PROGRAM) -> None:
        """An outage and its end are shown one beside the other."""
        name = f"{kind.name}-{pathlib.Path(executable).name}"
        with self.desktop(BareDesktop, name) as desktop:
            daemon = kind(desktop)
            Requests(desktop.session)  # what was asked for is in the log of a failed test
            empty = desktop.picture()
            self.lab.behave(address, Behavior())
            desktop.session.spawn("program", [executable, *watch.settings(**settings(address))])
            self.wait_for_answers(address)

            self.begin_outage(address)

            eventually(
                lambda: changed(empty, desktop.picture(), desktop.area), OUTAGE_SECONDS + PATIENCE, "something is drawn"
            )
            desktop.screenshot(f"notification-{name}.png")
            self.wait_for(DOWN, daemon)

            self.end_outage(address)

            # Beside the first one, not in its place.
            self.wait_for(RESTORED, daemon)
            self.assertIn(DOWN[0], [title for title, _ in daemon.shown()])

    def test_dunst_shows_an_outage_and_its_end(self) -> None:
        self.check_outage(Dunst, "10.77.0.35")

    def test_xfce4_notifyd_shows_an_outage_and_its_end(self) -> None:
        self.check_outage(Xfce4Notifyd, "10.77.0.36")

    def test_dunst_shows_the_terminal_programs_outage_and_its_end(self) -> None:
        self.check_outage(Dunst, "10.77.0.41", watch.PROGRAM)

    def test_it_covers_the_settings_window_and_takes_no_keyboard(self) -> None:
        address = "10.77.0.37"
        with self.desktop(SmallPanel, "frontmost") as desktop:
            daemon, requests = Dunst(desktop), Requests(desktop.session)
            program = self.start(desktop, address)
            item = program.item()
            item.choose(item.row("Settings…"))
            eventually(lambda: desktop.focused_title() == SETTINGS_TITLE, PATIENCE, "the window has the keyboard")
            before = desktop.picture()

            def window(title: str) -> Rectangle | None:
                return next((place for found, place in desktop.windows() if found == title), None)

            def covered() -> bool:
                nonlocal before
                now = desktop.picture()
                settings, banner = window(SETTINGS_TITLE), window(Dunst.title)
                if banner is None:
                    before = now
                    return False
                both = settings.common(banner)
                return both is not None and changed(before, now, both) == both

            self.begin_outage(address)

            eventually(covered, OUTAGE_SECONDS + PATIENCE, "a notification over a part of the window")
            desktop.screenshot("notification-settings.png")
            self.assertEqual(desktop.focused_title(), SETTINGS_TITLE)
            eventually(lambda: '"sound-name"' in requests.text, PATIENCE, "it asks for a sound")
            self.wait_for(DOWN, daemon)
            desktop.key("w", "Control_L")
            eventually(lambda: window(SETTINGS_TITLE) is None, PATIENCE, "the keyboard closes the window")

    def test_without_a_daemon_it_goes_on_and_uses_one_that_comes(self) -> None:
        address = "10.77.0.38"
        with self.desktop(PanelWithoutDaemons, "none") as desktop:
            empty = desktop.still_picture()
            program = self.start(desktop, address)
            icon = desktop.item_rectangle(empty)
            item = program.item()
            self.wait_until_learnt(address)

            self.begin_outage(address)
            self.wait_until_down(item)
            self.check_drop_down(desktop, program, icon)
            self.assertIsNone(desktop.session.bus.owner(NOTIFICATIONS))
            self.end_outage(address)
            self.wait_until_up(item)
            self.wait_until_stale(address)
            daemon = Dunst(desktop)
            self.begin_outage(address)

            self.wait_for(DOWN, daemon)
            # The outage before the daemon came is not shown later.
            self.assertEqual([title for title, _ in daemon.shown()], [DOWN[0]])
            self.assertEqual(program.output, "")

    def test_a_daemon_that_hangs_holds_nothing_up(self) -> None:
        address = "10.77.0.39"
        with self.desktop(PanelWithoutDaemons, "hanging") as desktop:
            empty = desktop.still_picture()
            Dunst(desktop).hang()
            program = self.start(desktop, address)
            icon = desktop.item_rectangle(empty)
            item = program.item()
            self.wait_until_learnt(address)
            with Listener(desktop.session.bus.address, QUESTION) as listener:
                self.begin_outage(address)
                eventually(listener.messages, OUTAGE_SECONDS + PATIENCE, "the daemon is asked")

                self.wait_until_down(item)
                self.check_drop_down(desktop, program, icon)
                told = time.monotonic()
                program.send(signal.SIGTERM)

                self.assertEqual(program.exit_status(), 0, program.output)
                self.assertLess(time.monotonic() - told, UNHELD_SECONDS)
                self.assertGreaterEqual(program.saved_pings(address), 1)
                self.assertEqual(program.output, "")

    def check_terminal(self, address: str, environment: dict[str, str]) -> None:
        """It notices an outage and its end, without a word on its standard error."""
        self.lab.behave(address, Behavior())
        arguments = watch.settings(**settings(address))
        with watch.new_home() as home, watch.Watch(home, *arguments, environment=environment) as program:
            program.wait_for(lambda values: values["status"] == "up", PATIENCE, "a reply")
            self.begin_outage(address)
            program.wait_for(lambda values: values["status"] == "down", OUTAGE_SECONDS, "the outage")
            self.end_outage(address)
            program.wait_for(lambda values: values["status"] == "up", OUTAGE_SECONDS, "the end of the outage")
            self.assertEqual(program.finish(within=UNHELD_SECONDS), 0)
            self.assertEqual(program.errors(), "")

    def test_without_a_bus_the_terminal_program_goes_on(self) -> None:
        self.check_terminal("10.77.0.42", {})

    def test_without_a_daemon_the_terminal_program_goes_on(self) -> None:
        with contextlib.closing(Session("notifications-terminal", withheld=(NOTIFICATIONS,))) as session:
            session.start_bus()
            self.check_terminal("10.77.0.43", bus_of(session))

    def test_a_hanging_daemon_does_not_hold_the_terminal_program_up(self) -> None:
        with self.desktop(BareDesktop, "hanging-terminal") as desktop:
            Dunst(desktop).hang()
            with Listener(desktop.session.bus.address, QUESTION) as listener:
                self.check_terminal("10.77.0.44", bus_of(desktop.session))
                eventually(listener.messages, PATIENCE, "the daemon was asked")

    def test_in_a_sandbox_an_outage_is_shown_through_the_portal(self) -> None:
        address = "10.77.0.40"
        with self.desktop(DesktopWithPortals, "sandbox") as desktop:
            daemon, requests = Dunst(desktop), Requests(desktop.session)
            self.start(desktop, address, sandbox_prefix(desktop.session, SANDBOXED))

            self.begin_outage(address)
            self.wait_for(DOWN, daemon)
            self.end_outage(address)

            self.wait_for(RESTORED, daemon)
            self.assertIn(DOWN[0], [title for title, _ in daemon.shown()])
            self.assertEqual(requests.sender(), PORTAL_BACKEND)
            # The portal itself has found out which application asks.
            self.assertIn(f'"{SANDBOXED}"', requests.text)
