"""A past for a journal, as if the program had recorded the hours before the test."""

from __future__ import annotations

import contextlib
import pathlib
import sqlite3
import time

MINUTE = 60


class Past:
    """Of one host, in a journal in which a program has recorded at least a minute of it. Times are minutes ago, counted
    from the full minute in which this object was made. Nothing else writes meanwhile. Use it as a context manager."""

    def __init__(self, journal: pathlib.Path, host: str) -> None:
        self._now = int(time.time()) // MINUTE * MINUTE
        self._journal = sqlite3.connect(journal)
        [(self._host,)] = self._journal.execute("SELECT id FROM hosts WHERE name = ?", (host,)).fetchall()

    def __enter__(self) -> Past:
        return self

    def __exit__(self, *_: object) -> None:
        with contextlib.closing(self._journal):
            self._journal.commit()

    def at(self, minutes_ago: float) -> int:
        return self._now - int(minutes_ago * MINUTE)

    def answered(self, first: int, last: int, slowest_ms: float, lost: int = 0) -> None:
        """Each minute from `first` to before `last` minutes ago, with a ping a second. Its latencies are those that the
        program has recorded."""
        for minutes_ago in range(first, last, -1):
            self._journal.execute(
                "INSERT OR REPLACE INTO periods SELECT host, 60, ?, 60000, 60, ?, ?, fastest, ?, 0, 0, latencies"
                " FROM periods WHERE host = ? ORDER BY start DESC LIMIT 1",
                (self.at(minutes_ago), MINUTE - lost, lost, int(slowest_ms * 1000), self._host),
            )

    def outage(self, first: float, last: float) -> None:
        self._journal.execute(
            "INSERT INTO episodes (host, kind, start, end, address, interface, lost) VALUES (?, 'outage', ?, ?, '', '', 9)",
            (self._host, self.at(first), self.at(last)),
        )

    def gap(self, kind: str, first: float, last: float) -> None:
        self._journal.execute("INSERT INTO gaps (kind, start, end) VALUES (?, ?, ?)", (kind, self.at(first), self.at(last)))
