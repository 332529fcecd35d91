"""What must hold in every panel that hosts items over the bus."""

from __future__ import annotations

import signal
from collections.abc import Callable

from PIL import Image

from endtoend.waiting import eventually, never

from .bus import Listener
from .checks import NEAR, PanelChecks, distance, stays_closed
from .item import INTERFACE, Item
from .pictures import Rectangle, solid_change
from .program import APPLICATION, PATIENCE, TITLE, Program
from .x11 import RIGHT

# A panel hands a click on within this time.
CLICK_SECONDS = 5
# From an item to a place inside its menu.
ASIDE = 40
MENU_HEIGHT = 150  # at the least, with header and items
MENU_TITLES = (
    "Reset Session Stats",
    "Reset All Time Stats…",
    "Pause for an Hour",
    "Outages…",
    "Settings…",
    "About Tarnwick",
    "Quit Tarnwick",
)


def item_calls(bus: str) -> Listener:
    """What panels ask of items on this bus."""
    return Listener(bus, f"type='method_call',interface='{INTERFACE}'")


def click_until_called(click: Callable[[], None], calls: Listener) -> None:
    """A panel that lays itself out just then takes the click for nothing: it is repeated if no call follows."""
    before = len(calls.messages())

    def is_taken() -> bool:
        click()
        return not never(lambda: len(calls.messages()) > before, CLICK_SECONDS)

    eventually(is_taken, PATIENCE, "the panel hands the click on to the item")


class NotifierChecks(PanelChecks):
    """In panels that host items over the bus."""

    first_row = 14  # of the panel's menu, from its top to the middle of the row
    item_calls: Listener

    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        cls.item_calls = cls.enterClassContext(item_calls(cls.desktop.session.bus.address))

    def open_drop_down(self, place: Rectangle) -> None:
        click_until_called(lambda: self.click_item(place), self.item_calls)

    def wait_for_verdict(self, program: Program) -> None:
        program.item_up()

    def item_of(self, program: Program) -> Item | None:
        return Item.of_process(self.desktop, program.process.pid)

    def test_it_says_what_it_is(self) -> None:
        item = self.running().item_up()

        properties = item.properties()

        self.assertEqual(properties["Category"], "SystemServices")
        self.assertEqual(properties["Status"], "Active")
        self.assertEqual(properties["Title"], TITLE)
        self.assertRegex(properties["XAyatanaLabel"], r"^\s*\d+ms")
        self.assertTrue(properties["XAyatanaLabelGuide"])
        self.assertIn("Latest Ping Time: ", "\n".join(item.tool_tip))
        self.assertTrue(item.tool_tip[0])
        sizes = [(width, height) for width, height, _ in properties["IconPixmap"]]
        self.assertTrue(properties["IconName"] or len(sizes) > 1, properties)
        for width, height, pixels in properties["IconPixmap"]:
            self.assertEqual(len(pixels), 4 * width * height)

    def test_its_menu_begins_with_the_state_of_the_connection(self) -> None:
        item = self.running().item_up()

        rows = [row for row in item.rows() if row.visible]

        labels = [row.label for row in rows]
        self.assertTrue(labels[0].startswith("Excellent · "), labels)
        self.assertIn(" ms", labels[0])
        self.assertIn("127.0.0.1", labels[1])
        self.assertEqual(len(labels[2]), 36, labels[2])
        self.assertTrue(labels[3].startswith("Session: "), labels)
        for title in MENU_TITLES:
            self.assertTrue(item.row(title).visible)
        self.assertFalse(item.row("Change Host…").visible)
        self.assertFalse(rows[-1].is_separator)

    def test_a_right_click_shows_the_menu_that_the_panel_draws(self) -> None:
        program = self.running()
        place = self.shown(program)
        before = self.desktop.picture()

        self.desktop.click(*place.center, RIGHT)

        drawn = eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")
        self.assertGreater(drawn.width, 100)
        self.desktop.screenshot(f"{self.desktop.name}-menu.png")
        self.desktop.dismiss_menu()
        eventually(lambda: self.menu_drawn(before) is None, PATIENCE, "the menu closes")
        self.assertIsNone(program.drop_down())

    def menu_drawn(self, before: Image.Image) -> Rectangle | None:
        """What is drawn on the rest of the screen, if it is as high as a menu. Some pictures show the pointer."""
        found = solid_change(before, self.desktop.picture(), self.desktop.rest)
        return found if found is not None and found.height > MENU_HEIGHT else None

    def test_the_header_of_the_panels_menu_opens_the_drop_down(self) -> None:
        program = self.running()
        place = self.shown(program)
        before = self.desktop.picture()
        self.desktop.click(*place.center, RIGHT)
        menu = eventually(lambda: self.menu_drawn(before), PATIENCE, "a menu is drawn")

        # Menus reach from the item to the left, whatever their width.
        row = (place.x - ASIDE, menu.y + self.first_row)
        self.desktop.move(*row)
        # Some panels take a click right after the opening one for a part of it.
        self.assertTrue(stays_closed(program), "pointing at it is enough")
        self.desktop.click(*row)

        window = self.opened(program)
        if self.opens_at_click:
            self.assertLess(distance(*row, window), NEAR)
        self.desktop.key("Escape")
        self.wait_until_closed(program)

    def test_quit_in_the_panels_menu_ends_it_and_saves_statistics(self) -> None:
        program = self.running()

        def quit_by_menu() -> None:
            item = program.item()
            item.choose(item.row("Quit Tarnwick"))

        self.ends_well(program, quit_by_menu)

    def test_its_registration_goes_when_the_program_is_killed(self) -> None:
        program = self.running()
        program.item()

        program.end()

        eventually(lambda: self.item_of(program) is None, PATIENCE, "the watcher forgets the item")

    def test_it_registers_with_a_new_watcher(self) -> None:
        program = self.running()
        program.item_up()
        self.desktop.kill_panel()
        self.desktop.start_panel()

        # The classic tray would not count: it registers no item.
        eventually(lambda: self.item_of(program), PATIENCE, "the item is registered again")

    def test_a_question_comes_to_the_front_and_sigterm_ends_it(self) -> None:
        program = self.running()

        def end() -> None:
            item = program.item()
            item.choose(item.row("Reset All Time Stats…"))
            eventually(self.question_has_keyboard, PATIENCE, "the question has the keyboard")
            eventually(lambda: "Cancel" in self.desktop.accessible(APPLICATION).texts(), PATIENCE, "the question")
            self.desktop.screenshot(f"{self.desktop.name}-question.png")
            program.send(signal.SIGTERM)

        self.ends_well(program, end)

    def question_has_keyboard(self) -> bool:
        return self.desktop.focused_title().startswith("Reset")
