"""The outages window, opened for tests in any panel, and a past for it that no program had to live through."""

from __future__ import annotations

import contextlib
import datetime
import math
import pathlib
import sqlite3
import time

from endtoend.waiting import eventually

from .accessible import Node
from .desktops import Desktop
from .pictures import Rectangle
from .program import APPLICATION, HOST, PATIENCE, Program

TITLE = "Tarnwick Outages"
QUARTER_HOUR = 900
# Of the journal's histogram of latencies.
LOWEST_MS, BUCKETS_PER_DOUBLING = 0.001, 16
PINGS = 180


def number_of_journal(value: int) -> bytes:
    """Seven bits a byte, the low ones first."""
    low = value & 0x7F
    return bytes([low]) if value < 0x80 else bytes([low | 0x80]) + number_of_journal(value >> 7)


def latencies_of(ms: float) -> bytes:
    """All pings of a quarter hour."""
    bucket = int(math.log2(ms / LOWEST_MS) * BUCKETS_PER_DOUBLING)
    return number_of_journal(bucket + 1) + number_of_journal(PINGS)


def moment(days_ago: int, clock: str) -> int:
    """Of the local clock."""
    day = datetime.date.today() - datetime.timedelta(days=days_ago)
    return int(datetime.datetime.combine(day, datetime.time.fromisoformat(clock)).timestamp())


def date_text(days_ago: int) -> str:
    return (datetime.date.today() - datetime.timedelta(days=days_ago)).strftime("%A, %Y-%m-%d")


def is_made(journal: pathlib.Path) -> bool:
    """A program opens it a moment after its first ping."""
    with contextlib.suppress(sqlite3.OperationalError):
        with contextlib.closing(sqlite3.connect(f"file:{journal}?mode=ro", uri=True)) as database:
            return database.execute("PRAGMA user_version").fetchone()[0] > 0
    return False


class PastDays:
    """Written into the journal of a program that runs. Use it as a context manager."""

    def __init__(self, journal: pathlib.Path, host: str = HOST) -> None:
        self._address = host
        eventually(lambda: is_made(journal), PATIENCE, "the journal")
        self._database = sqlite3.connect(journal, timeout=PATIENCE)
        self._database.execute("INSERT OR IGNORE INTO hosts (name) VALUES (?)", (host,))
        [(self._host,)] = self._database.execute("SELECT id FROM hosts WHERE name = ?", (host,)).fetchall()

    def __enter__(self) -> PastDays:
        return self

    def __exit__(self, *_: object) -> None:
        self._database.execute("INSERT OR REPLACE INTO recording VALUES (0, ?)", (int(time.time()),))
        with contextlib.closing(self._database):
            self._database.commit()

    def watched(self, days_ago: int, first: str = "00:00", ms: float = 20) -> None:
        """A whole day, or from a time of it on."""
        for start in range(moment(days_ago, first), moment(days_ago - 1, "00:00"), QUARTER_HOUR):
            figures = (QUARTER_HOUR * 1000, PINGS, PINGS, 0, int(ms * 1000), int(ms * 1000), 0, 0, latencies_of(ms))
            self._database.execute(
                "INSERT OR REPLACE INTO periods VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                (self._host, QUARTER_HOUR, start, *figures),
            )

    def bad(self, kind: str, days_ago: int, clock: str, seconds: int, verdict: tuple[str, str, str] | None = None) -> None:
        """`kind` is outage or degradation; a verdict is whose fault, how likely, and the evidence."""
        start = moment(days_ago, clock)
        blame, likelihood, evidence = verdict or (None, None, None)
        self._database.execute(
            "INSERT OR REPLACE INTO episodes VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            (self._host, kind, start, start + seconds, blame, likelihood, evidence, self._address, "eth0", seconds),
        )

    def asleep(self, days_ago: int, first: str, last: str) -> None:
        span = (moment(days_ago, first), moment(days_ago, last))
        self._database.execute("INSERT OR REPLACE INTO gaps VALUES ('asleep', ?, ?)", span)


class OutagesWindow:
    """Opened anew for each test, in one panel."""

    panel: type[Desktop]

    @classmethod
    def setUpClass(cls) -> None:
        cls.panel.require()
        cls.desktop = cls.panel()
        cls.desktop.name = f"outages-{cls.panel.name}"
        cls.desktop.start()
        cls.addClassCleanup(cls.desktop.stop)

    def setUp(self) -> None:
        for file in self.journal.parent.glob("journal*"):
            file.unlink()
        self.program = Program(self.desktop)
        self.addCleanup(self.program.end)
        self.item = self.program.item_up()
        self.write_past()

    @property
    def journal(self) -> pathlib.Path:
        return self.desktop.session.home / ".local/state/Tarnwick/journal.sqlite"

    def write_past(self, host: str = HOST) -> None:
        """Thirty days: good ones, and bad ones of each kind."""
        with PastDays(self.journal, host) as past:
            for days_ago in range(1, 31):
                if days_ago not in (12, 13):
                    past.watched(days_ago, ms=18 + days_ago % 5)
            past.bad("outage", 1, "10:12:07", 187, ("provider", "likely", PROVIDER))
            past.bad("outage", 1, "18:40:00", 42)
            past.bad("degradation", 2, "20:15:30", 640, ("ownLoad", "likely", LOAD))
            past.bad("outage", 6, "07:02:11", 4211, ("wifi", "certain", WIFI))
            past.bad("degradation", 9, "13:00:00", 95, ("nameServer", "possible", NAMES))
            past.bad("outage", 21, "03:30:00", 61, ("beyondProvider", "possible", BEYOND))

    def open_outages(self) -> None:
        self.item.choose(self.item.row("Outages…"))
        eventually(lambda: self.desktop.focused_title() == TITLE, PATIENCE, "the window has the keyboard")

    def windows(self) -> list[Rectangle]:
        return [place for title, place in self.desktop.windows() if title == TITLE]

    def nodes(self) -> list[Node]:
        tree = self.desktop.accessible(APPLICATION)
        return [node for node in tree.all() if "showing" in node.states]

    def texts(self) -> list[str]:
        return [node.name for node in self.nodes() if node.name]

    def focused(self) -> Node | None:
        return self.desktop.accessible(APPLICATION).has_keyboard()

    def focused_name(self) -> str:
        node = self.focused()
        return "" if node is None else node.name

    def rows(self) -> list[str]:
        """Of the list, those that can be seen."""
        return [node.name for node in self.nodes() if node.role == "list item"]

    def selected(self) -> list[str]:
        """The rows of the list that are."""
        return [node.name for node in self.nodes() if node.role == "list item" and "selected" in node.states]

    def tab_to(self, name: str) -> None:
        """The next control, whose name begins so."""
        self.desktop.key("Tab")
        eventually(lambda: self.focused_name().startswith(name), PATIENCE, f"{name} has the keyboard")

    def go_to_day(self, days_ago: int) -> None:
        """From a later one."""
        wanted = date_text(days_ago)
        for _ in range(days_ago + 2):
            before = eventually(self.focused_name, PATIENCE, "a day has the keyboard")
            if before.startswith(wanted):
                return
            self.desktop.key("Left")
            eventually(lambda before=before: self.focused_name() not in ("", before), PATIENCE, "Left leads on")
        raise AssertionError(f"Left does not lead to {wanted}")


PROVIDER = "Your router answers in 2 ms; nothing beyond it has answered for 14 s."
LOAD = "Latency rises from 20 to 160 ms while this computer uploads 9 Mbit/s."
WIFI = "The Wi-Fi signal is weak (-82 dBm), and the router answers late."
NAMES = "Name server 192.0.2.53 does not answer; 203.0.113.9, the host's last address, does."
BEYOND = "The provider's network answers up to 198.51.100.7; loss begins after it."
