"""The terminal view, read back as a screen: what it shows at each size, and how it leaves the terminal."""

from __future__ import annotations

import re
import signal
import tempfile
import unittest

from lab import SILENT, Behavior, Lab, Names

from .concurrently import ConcurrentTestCase
from .terminal import COLOR, ENTER_ALTERNATE, HIDE_CURSOR, LEAVE_ALTERNATE, SHOW_CURSOR, Terminal
from .watch import PATIENCE_SECONDS, new_home, settings

GRID_ROWS = ("Pings sent", "Replies lost", "Packet loss", "Average", "Fastest", "Slowest")
GRID_COLUMNS = ("Session", "All Time")
BLOCKS = "▁▂▃▄▅▆▇█"

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    names = Names(folder.name)
    names.write(hosts={"steady.lab": ["10.77.0.10"]})
    names.install()
    lab.behave("10.77.0.10", Behavior(delay_ms=40))


def is_up(text: str) -> bool:
    return "Excellent" in text and re.search(r"\b[4-9]\d ms", text) is not None


class TheScreen(ConcurrentTestCase):
    def test_the_usual_size_shows_everything(self) -> None:
        with new_home() as home, Terminal(home, "steady.lab") as terminal:
            text = terminal.wait_for(is_up, 4, "a good connection")

            self.shows_everything(text)
            self.assertIn("steady.lab · 10.77.0.10", text)
            self.assertIn("0% loss", text)
            self.stayed_in_place(terminal)

    def test_a_large_one_shows_everything(self) -> None:
        with new_home() as home, Terminal(home, "steady.lab", columns=120, rows=40) as terminal:
            text = terminal.wait_for(is_up, 4, "a good connection")

            self.shows_everything(text)
            self.stayed_in_place(terminal)

    def test_the_smallest_one_shows_quality_host_and_latency(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10", columns=40, rows=6) as terminal:
            text = terminal.wait_for(is_up, 4, "a good connection")

            self.assertIn("10.77.0.10", text)
            self.assertTrue(any(block in text for block in BLOCKS), text)
            self.stayed_in_place(terminal)

    def test_it_follows_the_window_down_and_up_again(self) -> None:
        with new_home() as home, Terminal(home, "steady.lab") as terminal:
            terminal.wait_for(is_up, 4, "a good connection")
            for columns, rows in ((40, 6), (60, 12), (120, 40), (41, 40), (200, 7), (80, 24)):
                terminal.resize(columns, rows)

                terminal.wait_for(is_up, 2, f"the view at {columns} by {rows}")
                self.stayed_in_place(terminal)

            self.shows_everything(terminal.wait_for(lambda text: "Slowest" in text, 2, "the grid"))

    def test_sizes_below_the_smallest_do_no_harm(self) -> None:
        with new_home() as home, Terminal(home, "steady.lab") as terminal:
            terminal.wait_for(is_up, 4, "a good connection")
            for columns, rows in ((20, 3), (5, 2), (1, 1), (39, 5)):
                sent = len(lab.requests("10.77.0.10"))
                terminal.resize(columns, rows)
                terminal.wait_for(
                    lambda _, sent=sent: len(lab.requests("10.77.0.10")) > sent + 1, 3, "more pings"
                )
                self.assertIsNone(terminal.process.poll())
            terminal.resize(80, 24)
            terminal.wait_for(is_up, 2, "the view again")
            self.assertEqual(terminal.finish(), 0)

    def test_the_figures_are_redrawn_in_place(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10") as terminal:
            for count in (3, 5):
                terminal.wait_for(
                    lambda text, count=count: re.search(rf"Pings sent +{count}\b", text),
                    count + 2,
                    f"{count} pings",
                )
            self.stayed_in_place(terminal)

    def test_the_terminal_stays_blocking_so_that_no_output_is_lost(self) -> None:
        with new_home() as home, Terminal(home, "127.0.0.1") as terminal:
            terminal.wait_for(lambda text: "Excellent" in text, 3, "the first verdict")
            self.assertTrue(terminal.is_blocking())

    def test_an_outage_is_shown_with_its_reason(self) -> None:
        lab.behave("10.77.0.11", SILENT)
        with new_home() as home, Terminal(home, *settings(PingTimeout=1), "10.77.0.11") as terminal:
            terminal.wait_for(lambda text: "Connecting…" in text, 2, "connecting")

            text = terminal.wait_for(lambda text: "Connection down" in text, 9, "the outage")

            self.assertIn("No replies for 5 s", text)
            self.assertRegex(text, r"\bDown\b")
            self.stayed_in_place(terminal)

    def test_refused_sockets_are_shown_with_what_to_change(self) -> None:
        closed = ["unshare", "--net"]
        with (
            new_home() as home,
            new_home() as small_home,
            Terminal(home, "127.0.0.1", prefix=closed) as usual,
            Terminal(small_home, "127.0.0.1", prefix=closed, columns=40, rows=6) as small,
        ):
            for terminal in (usual, small):
                terminal.wait_for(lambda text: "ping_group_range" in text, 3, "what to change")
                self.stayed_in_place(terminal)
            self.assertIn("net.ipv4.ping_group_range", usual.text())

    def test_a_second_program_says_that_it_records_nothing(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10") as first:
            first.wait_for(is_up, 4, "a good connection")
            with Terminal(home, "10.77.0.10") as second:
                second.wait_for(lambda text: "records nothing" in text, 3, "the note")
                self.stayed_in_place(second)
            self.assertNotIn("records nothing", first.text())

    def test_a_long_host_name_is_cut_and_wraps_nowhere(self) -> None:
        host = "a-name-that-goes-on-and-on." * 6 + "lab"
        with new_home() as home, Terminal(home, host, columns=40, rows=6) as terminal:
            terminal.wait_for(lambda text: host[:20] in text, 2, "the host")
            self.stayed_in_place(terminal)

    def test_no_color_is_sent_when_the_user_wants_none(self) -> None:
        with (
            new_home() as home,
            new_home() as other_home,
            Terminal(home, "10.77.0.10", environment={"NO_COLOR": "1"}) as plain,
            Terminal(other_home, "10.77.0.10") as colored,
        ):
            for terminal in (plain, colored):
                terminal.wait_for(is_up, 4, "a good connection")

            self.assertIsNone(COLOR.search(plain.raw))
            self.assertIsNotNone(COLOR.search(colored.raw))

    def test_a_locale_without_unicode_gets_plain_ascii(self) -> None:
        lab.behave("10.77.0.12", Behavior(delay_ms=40))
        with (
            new_home() as home,
            new_home() as other_home,
            Terminal(home, "steady.lab", environment={"LC_ALL": "C"}) as up,
            Terminal(other_home, "nowhere.lab", environment={"LC_ALL": "C"}) as unknown,
        ):
            text = up.wait_for(is_up, 4, "a good connection")
            for row in GRID_ROWS:
                self.assertIn(row, text)
            text = unknown.wait_for(lambda text: "Connection down" in text, 13, "the outage")
            self.assertIn("nowhere.lab", text)
            for terminal in (up, unknown):
                self.assertTrue(terminal.raw.isascii(), terminal.raw)
                self.stayed_in_place(terminal)

    def test_a_dumb_terminal_is_served_or_refused_with_a_reason(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10", environment={"TERM": "no-such-terminal"}) as terminal:
            terminal.wait_for(lambda text: text.strip(), 4, "anything")
            if terminal.process.poll() is None:
                self.assertEqual(terminal.finish(), 0)
            self.assertNotIn(b"terminate called", terminal.raw)
            self.assertGreaterEqual(terminal.wait(), 0)

    def shows_everything(self, text: str) -> None:
        for part in (*GRID_ROWS, *GRID_COLUMNS, "Last 5 minutes", "slow above 100 ms", "Excellent"):
            self.assertIn(part, text)
        self.assertTrue(any(block in text for block in BLOCKS), text)

    def stayed_in_place(self, terminal: Terminal) -> None:
        self.assertEqual((terminal.screen.overflows, terminal.screen.scrolls), (0, 0), terminal.text())


class TheTerminalAfterwards(ConcurrentTestCase):
    def test_the_q_key_ends_it_and_leaves_the_terminal_as_it_was(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10") as terminal:
            terminal.wait_for(is_up, 4, "a good connection")
            self.assertIn("q quits", terminal.text())
            terminal.type(b"q")
            self.was_restored(terminal, terminal.wait())
            self.assertGreaterEqual(home.stats()["10.77.0.10"]["sent"], 1)

    def test_control_c_ends_it_and_leaves_the_terminal_as_it_was(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10") as terminal:
            terminal.wait_for(is_up, 4, "a good connection")
            terminal.type(b"\x03")
            self.was_restored(terminal, terminal.wait())
            self.assertGreaterEqual(home.stats()["10.77.0.10"]["sent"], 1)

    def test_a_termination_signal_leaves_the_terminal_as_it_was(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT):
            with new_home() as home, Terminal(home, "10.77.0.10") as terminal:
                terminal.wait_for(is_up, 4, "a good connection")
                self.was_restored(terminal, terminal.finish(number))

    def test_a_termination_signal_ends_it_while_the_output_is_paused(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10") as terminal:
            terminal.wait_for(is_up, 4, "a good connection")
            terminal.pause()
            self.was_restored(terminal, terminal.finish())

    def test_at_the_end_of_its_time_the_terminal_is_as_it_was(self) -> None:
        with new_home() as home, Terminal(home, "10.77.0.10", lifetime=2) as terminal:
            self.was_restored(terminal, terminal.wait(within=2 + PATIENCE_SECONDS))

    def test_a_wrong_argument_never_touches_the_screen(self) -> None:
        with new_home() as home, Terminal(home, "--bogus") as terminal:
            self.assertEqual(terminal.wait(), 2)
            self.assertNotIn(b"\x1b", terminal.raw)
            self.assertEqual(terminal.attributes(), terminal.attributes_before)

    def was_restored(self, terminal: Terminal, status: int) -> None:
        self.assertEqual(status, 0)
        self.assertIn(ENTER_ALTERNATE, terminal.raw)
        self.assertGreater(terminal.raw.rfind(LEAVE_ALTERNATE), terminal.raw.rfind(ENTER_ALTERNATE))
        self.assertGreater(terminal.raw.rfind(SHOW_CURSOR), terminal.raw.rfind(HIDE_CURSOR))
        self.assertEqual(terminal.attributes(), terminal.attributes_before)
        self.assertTrue(terminal.is_blocking())


if __name__ == "__main__":
    unittest.main()
