"""The program where there is no panel, or none yet."""

from __future__ import annotations

import signal
import unittest

from endtoend.waiting import eventually

from .desktops import Desktop
from .heavy_panels import BareGnome
from .panels import BareCompositor, LatePanel
from .program import APPLICATION, PATIENCE, Program, pings_sent

# Longer than the time between two looks for a tray.
LOOK_SECONDS = 6


class WithoutPanel(unittest.TestCase):
    def setUp(self) -> None:
        LatePanel.require()
        self.desktop = LatePanel()
        self.desktop.start()
        self.addCleanup(self.desktop.stop)
        self.program = Program(self.desktop)
        self.addCleanup(self.program.end)

    def complaints(self) -> list[str]:
        return [line for line in self.program.output.splitlines() if line.startswith("tarnwick: ")]

    def wait_for_pings(self, count: int) -> None:
        before = pings_sent()
        eventually(lambda: pings_sent() >= before + count, count + PATIENCE, f"{count} more pings")

    def test_it_says_so_once_and_keeps_measuring(self) -> None:
        eventually(self.complaints, PATIENCE, "a line on standard error")

        self.wait_for_pings(3)

        self.assertEqual(len(self.complaints()), 1, self.program.output)
        self.assertIsNone(self.program.process.poll())

    def test_it_appears_as_soon_as_there_is_a_panel(self) -> None:
        eventually(self.complaints, PATIENCE, "a line on standard error")
        self.close_drop_down()
        self.desktop.park_pointer()
        bare = self.desktop.picture()

        self.desktop.start_panel()

        self.program.item_up()
        place = self.desktop.item_rectangle(bare)
        self.assertGreater(place.width, 0)
        self.assertEqual(len(self.complaints()), 1, self.program.output)

    def test_the_drop_down_opens_once_and_says_so(self) -> None:
        window = eventually(self.program.drop_down, PATIENCE, "the drop-down")
        self.assertTrue(self.desktop.area.contains(window), window)
        eventually(self.tells_of_it, PATIENCE, "the line that says so")
        self.desktop.screenshot("late-no-panel.png")

        self.close_drop_down()

        self.wait_for_pings(LOOK_SECONDS)
        self.assertIsNone(self.program.drop_down())

    def test_the_line_goes_when_a_panel_comes(self) -> None:
        eventually(self.tells_of_it, PATIENCE, "the line that says so")

        self.desktop.start_panel()

        eventually(lambda: not self.tells_of_it(), PATIENCE, "the line goes")

    def tells_of_it(self) -> bool:
        return any(text.startswith("No panel") for text in self.desktop.accessible(APPLICATION).texts())

    def close_drop_down(self) -> None:
        eventually(self.program.drop_down, PATIENCE, "the drop-down")
        self.desktop.key("Escape")
        eventually(lambda: self.program.drop_down() is None, PATIENCE, "it closes")

    def test_a_second_start_opens_the_drop_down_without_a_panel(self) -> None:
        self.close_drop_down()

        self.assertEqual(self.program.start_again(), 0)

        window = eventually(self.program.drop_down, PATIENCE, "the drop-down")
        self.assertTrue(self.desktop.area.contains(window), window)

    def test_a_polite_signal_saves_the_statistics(self) -> None:
        self.wait_for_pings(2)

        self.program.send(signal.SIGTERM)

        self.assertEqual(self.program.exit_status(), 0)
        self.assertGreaterEqual(self.program.saved_pings(), 1)


class Bare(unittest.TestCase):
    """Desktops that stand, but show no status items."""

    def opens_and_says(self, desktop: Desktop, said: str) -> None:
        desktop.require()
        desktop.start()
        self.addCleanup(desktop.stop)
        program = Program(desktop)
        self.addCleanup(program.end)

        eventually(program.drop_down, PATIENCE, "the drop-down")

        eventually(lambda: any(said in text for text in self.texts(desktop)), PATIENCE, "the line that says so")
        desktop.screenshot(f"{desktop.name}-no-panel.png")

    def texts(self, desktop: Desktop) -> list[str]:
        return desktop.accessible(APPLICATION).texts()

    def test_sway_without_a_tray(self) -> None:
        self.opens_and_says(BareCompositor(), "No panel here")

    def test_gnome_without_its_extension(self) -> None:
        self.opens_and_says(BareGnome(), "AppIndicator and KStatusNotifierItem Support")


if __name__ == "__main__":
    unittest.main()
