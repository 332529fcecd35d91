"""The history in the settings of a real session: its switch, its clearing with the question; and what About says."""

from __future__ import annotations

import contextlib
import pathlib
import sqlite3
import stat
import unittest

from endtoend.waiting import eventually, never

from .panels import XfcePanel
from .program import APPLICATION, HOST, PATIENCE
from .settings import ABOUT_TITLE, SettingsWindow

QUESTION_TITLE = "Clear History"
SHORT_SECONDS = 0.5
OLD_HOST = "forgotten.example"


class History(SettingsWindow, unittest.TestCase):
    panel = XfcePanel

    def setUp(self) -> None:
        super().setUp()
        self.file = self.desktop.session.home / ".local/state/Tarnwick/journal.sqlite"
        eventually(self.file.exists, PATIENCE, "the history")

    def texts(self) -> list[str]:
        return self.desktop.accessible(APPLICATION).texts()

    def open_advanced(self) -> None:
        eventually(lambda: "Advanced" in self.texts(), PATIENCE, "the form in the accessible tree")
        self.desktop.act(APPLICATION, "Advanced")
        eventually(lambda: "Keep a History" in self.texts(), PATIENCE, "the history's row")

    def remember_host(self) -> None:
        """As if it had been watched before."""
        with contextlib.closing(sqlite3.connect(self.file)) as journal, journal:
            journal.execute("INSERT INTO hosts (name) VALUES (?)", (OLD_HOST,))

    def hosts(self) -> list[str]:
        with contextlib.closing(sqlite3.connect(f"file:{self.file}?mode=ro", uri=True)) as journal:
            return [name for (name,) in journal.execute("SELECT name FROM hosts")]

    def ask(self) -> None:
        self.desktop.act(APPLICATION, "Clear History…")
        eventually(lambda: self.desktop.focused_title() == QUESTION_TITLE, PATIENCE, "the question")
        eventually(lambda: "Cancel" in self.texts(), PATIENCE, "its buttons")

    def test_the_switch_keeps_none_from_then_on(self) -> None:
        self.open_advanced()
        self.assertTrue(any("~/.local/state/Tarnwick/journal.sqlite" in text for text in self.texts()), self.texts())
        self.desktop.screenshot("settings-history.png")

        self.desktop.act(APPLICATION, "Keep a History")
        self.wait_for("KeepHistory", False)
        self.desktop.act(APPLICATION, "Keep a History")
        self.wait_for("KeepHistory", True)

    def test_it_is_cleared_after_a_question(self) -> None:
        self.remember_host()
        self.open_advanced()

        self.ask()
        self.desktop.screenshot("clear-history.png")
        self.desktop.key("Escape")
        eventually(lambda: self.desktop.focused_title() != QUESTION_TITLE, PATIENCE, "the question is gone")
        self.assertTrue(never(lambda: OLD_HOST not in self.hosts(), SHORT_SECONDS), "it was cleared")

        self.ask()
        self.desktop.act(APPLICATION, "Clear")
        eventually(lambda: not self.is_remembered(), PATIENCE, "nothing of it is left in any file")
        self.assertNotIn(OLD_HOST, self.hosts())
        for file in self.own_files():
            self.assertEqual(stat.S_IMODE(file.stat().st_mode), 0o600, file)
        self.assertGreaterEqual(self.all_time_pings(), 1)

    def own_files(self) -> list[pathlib.Path]:
        return sorted(self.file.parent.iterdir())

    def is_remembered(self) -> bool:
        """In any of the files, read without a lock that the program would wait for."""
        return any(OLD_HOST.encode() in file.read_bytes() for file in self.own_files())

    def all_time_pings(self) -> int:
        """As they are saved at the end."""
        self.desktop.key("q", "Control_L")
        self.assertEqual(self.program.exit_status(), 0, self.program.output)
        return self.program.saved_pings(HOST)

    def test_about_tells_what_is_sent_and_kept(self) -> None:
        self.open_about()

        def is_told() -> bool:
            texts = "\n".join(self.texts())
            return "~/.local/state/Tarnwick/journal.sqlite" in texts and "sends pings to the host" in texts

        eventually(is_told, PATIENCE, f"{ABOUT_TITLE} tells")
        self.desktop.screenshot("about.png")


if __name__ == "__main__":
    unittest.main()
