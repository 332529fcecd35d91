"""The journal of the built program: what it holds, who may read it, what a kill leaves, two programs at once."""

from __future__ import annotations

import contextlib
import datetime
import json
import signal
import sqlite3
import stat
import subprocess
import time
import unittest
import xml.etree.ElementTree as ElementTree

from lab import Behavior, Lab

from .concurrently import ConcurrentTestCase
from .waiting import eventually
from .watch import PATIENCE_SECONDS, PROGRAM, Home, Watch, new_home, settings

lab: Lab

MINUTE = 60


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def utc(*moment: int) -> int:
    return int(datetime.datetime(*moment, tzinfo=datetime.timezone.utc).timestamp())


def rows(home: Home, query: str) -> list[tuple[object, ...]]:
    """What the journal answers, read beside the program."""
    with contextlib.closing(sqlite3.connect(f"file:{home.journal_file}?mode=ro", uri=True)) as journal:
        return journal.execute(query).fetchall()


def wait_for_replies(watch: Watch, count: int) -> None:
    watch.wait_for(lambda now: now["session"]["replied"] >= count, count + 2, f"{count} replies")


class TheJournal(ConcurrentTestCase):
    def test_it_holds_the_pings_of_a_run_and_is_for_its_user_alone(self) -> None:
        lab.behave("10.77.0.10", Behavior(delay_ms=25))
        with new_home() as home, Watch(home, "10.77.0.10") as watch:
            wait_for_replies(watch, 3)
            self.assertEqual(watch.finish(), 0)

            [(name, sent, replied, fastest)] = rows(
                home,
                "SELECT name, sum(sent), sum(replied), min(fastest) FILTER (WHERE replied > 0)"
                " FROM periods JOIN hosts ON id = host GROUP BY name",
            )
            site = home.stats()["10.77.0.10"]
            self.assertEqual((name, sent, replied), ("10.77.0.10", site["sent"], site["replied"]))
            self.assertGreaterEqual(fastest, 25_000)
            self.assertEqual(rows(home, "PRAGMA user_version"), [(1,)])
            self.assertEqual(stat.S_IMODE(home.journal_file.stat().st_mode), 0o600)
            self.assertEqual(stat.S_IMODE(home.journal_file.parent.stat().st_mode), 0o700)
            self.assertEqual(watch.errors(), "")

    def test_switched_off_it_is_not_made(self) -> None:
        lab.behave("10.77.0.11", Behavior())
        with new_home() as home, Watch(home, *settings(KeepHistory="false"), "10.77.0.11") as watch:
            wait_for_replies(watch, 1)
            self.assertEqual(watch.finish(), 0)

            self.assertEqual(home.files("state"), [])

    def test_an_outage_is_there_at_once_and_outlives_a_kill(self) -> None:
        address = "10.77.0.12"
        lab.behave(address, Behavior())
        with new_home() as home:
            with Watch(home, *settings(PingTimeout=0.2), address) as watch:
                wait_for_replies(watch, 2)
                lab.behave(address, Behavior(silent=True))
                eventually(lambda: rows(home, "SELECT 1 FROM episodes"), MINUTE, "the outage")
                self.assertEqual(rows(home, "SELECT kind, end, address FROM episodes"), [("outage", None, address)])
                watch.process.send_signal(signal.SIGKILL)
                watch.process.wait(PATIENCE_SECONDS)
            [(until,)] = rows(home, "SELECT until FROM recording")

            eventually(lambda: time.time() >= until + 1, PATIENCE_SECONDS, "a second that is a gap")
            lab.behave(address, Behavior())
            with Watch(home, address) as watch:
                wait_for_replies(watch, 2)
                self.assertEqual(watch.finish(), 0)

            self.assertEqual(rows(home, "SELECT end FROM episodes WHERE kind = 'outage'"), [(until,)])
            self.assertEqual(rows(home, "SELECT kind, start FROM gaps WHERE start = (SELECT min(start) FROM gaps)"),
                             [("notRunning", until)])  # fmt: skip

    def test_of_two_programs_one_writes(self) -> None:
        lab.behave("10.77.0.13", Behavior())
        with new_home() as home, Watch(home, "10.77.0.13") as first:
            wait_for_replies(first, 1)
            with Watch(home, "10.77.0.13") as second:
                wait_for_replies(second, 3)
                self.assertEqual(second.finish(), 0)
            self.assertEqual(first.finish(), 0)

            self.assertEqual(
                rows(home, "SELECT sum(sent) FROM periods"), [(home.stats()["10.77.0.13"]["sent"],)]
            )

    def test_one_of_a_newer_version_stays_and_is_named(self) -> None:
        lab.behave("10.77.0.14", Behavior())
        with new_home() as home:
            home.journal_file.parent.mkdir(parents=True)
            with contextlib.closing(sqlite3.connect(home.journal_file)) as journal:
                journal.execute("PRAGMA user_version = 2")
            before = home.journal_file.read_bytes()
            with Watch(home, "10.77.0.14") as watch:
                now = watch.wait_for(lambda now: now["notices"], PATIENCE_SECONDS, "a notice")
                self.assertEqual(
                    now["notices"], ["The history is not stored: a newer version of Tarnwick has written it."]
                )
                self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.journal_file.read_bytes(), before)


class Reports(ConcurrentTestCase):
    def report(
        self, home: Home, *arguments: str, environment: dict[str, str] | None = None
    ) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [PROGRAM, "report", *arguments],
            env=home.environment() | (environment or {}),
            capture_output=True,
            text=True,
            timeout=PATIENCE_SECONDS,
            check=False,
        )

    def test_they_tell_what_was_measured_also_beside_a_running_program(self) -> None:
        address = "10.77.0.20"
        lab.behave(address, Behavior(delay_ms=25))
        with new_home() as home:
            with Watch(home, address) as watch:
                wait_for_replies(watch, 3)
                self.assertEqual(watch.finish(), 0)
            with Watch(home, address) as watch:
                wait_for_replies(watch, 1)
                done = self.report(home, "--host", address, "--format", "json", "--since", "1h")

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            told = json.loads(done.stdout)
            self.assertEqual(told["host"], address)
            self.assertGreaterEqual(told["figures"]["replied"], 3)
            self.assertEqual(told["availability"]["percent"], 100)
            self.assertEqual(told["outages"], [])

            text = self.report(home, "--host", address)
            self.assertEqual((text.returncode, text.stderr), (0, ""))
            self.assertRegex(text.stdout, rf"\AConnection to {address}\n")
            self.assertIn("100% of the time watched", text.stdout)

    def test_as_html_they_are_one_page_also_beside_a_running_program(self) -> None:
        address = "10.77.0.22"
        lab.behave(address, Behavior(delay_ms=25))
        with new_home() as home:
            with Watch(home, *settings(PingTimeout=0.2), address) as watch:
                wait_for_replies(watch, 2)
                lab.behave(address, Behavior(silent=True))
                eventually(lambda: rows(home, "SELECT 1 FROM episodes"), MINUTE, "the outage")
                done = self.report(home, "--host", address, "--format", "html", "--since", "1h")

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            page = ElementTree.fromstring(done.stdout)
            shown = " ".join(page.itertext())
            self.assertIn(f"Connection to {address}", shown)
            self.assertIn("Outages: 1", shown)
            self.assertIn(", and it lasts", shown)
            self.assertRegex(shown, rf"{address} over \w+, \d+ pings lost")

    def test_of_an_unknown_host_they_name_those_that_are_known(self) -> None:
        lab.behave("10.77.0.23", Behavior())
        with new_home() as home:
            with Watch(home, "10.77.0.23") as watch:
                wait_for_replies(watch, 1)
                self.assertEqual(watch.finish(), 0)
            done = self.report(home)

            self.assertEqual(done.returncode, 0)
            self.assertEqual(done.stdout, "Nothing is known of 1.1.1.1 in this time.\n")
            self.assertEqual(
                done.stderr,
                "tarnwick-watch report: The history has nothing of 1.1.1.1, but of 10.77.0.23: name one with --host.\n",
            )

    def test_in_the_night_of_a_clock_change_they_tell_the_repeated_hour_apart(self) -> None:
        address = "10.77.0.24"
        lab.behave(address, Behavior())
        with new_home() as home:
            with Watch(home, address) as watch:  # it makes the tables
                wait_for_replies(watch, 1)
                self.assertEqual(watch.finish(), 0)
            self.remember_outages(home, address, [utc(2026, 10, 25, 0, 30), utc(2026, 10, 25, 1, 30)])
            zone = {"TZ": "CET-1CEST,M3.5.0,M10.5.0/3"}
            night = ("--host", address, "--since", "2026-10-25", "--until", "2026-10-26")

            text = self.report(home, *night, environment=zone).stdout
            self.assertIn("2026-10-25 02:30:00 UTC+02:00  1 min\n  2026-10-25 02:30:00 UTC+01:00  1 min\n", text)
            for form in ("csv", "json", "html"):
                told = self.report(home, *night, "--format", form, environment=zone).stdout
                self.assertLess(told.index("2026-10-25T02:30:00+02:00"), told.index("2026-10-25T02:30:00+01:00"))
            page = " ".join(ElementTree.fromstring(told).itertext())
            self.assertIn("times in UTC+02:00, from 2026-10-25 on UTC+01:00", page)

            india = self.report(home, *night, environment={"TZ": "IST-5:30"}).stdout
            self.assertIn("Times are in UTC+05:30.", india)
            self.assertIn("  2026-10-25 06:00:00  1 min\n  2026-10-25 07:00:00  1 min\n", india)

    @staticmethod
    def remember_outages(home: Home, host: str, starts: list[int]) -> None:
        """Each of a minute."""
        with contextlib.closing(sqlite3.connect(home.journal_file)) as journal:
            for start in starts:
                journal.execute(
                    "INSERT INTO episodes SELECT id, 'outage', ?, ?, NULL, NULL, NULL, '192.0.2.1', 'eth0', 3"
                    " FROM hosts WHERE name = ?",
                    [start, start + 60, host],
                )
            journal.commit()

    def test_without_a_history_they_say_so_and_write_nothing(self) -> None:
        with new_home() as home:
            done = self.report(home)

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(done.stdout, "Nothing is known of 1.1.1.1 in this time.\n")
            self.assertEqual(home.files(), [])

    def test_a_wrong_command_line_is_named(self) -> None:
        with new_home() as home:
            for arguments in (["--since", "yesterday"], ["--until", "9d"], ["--format", "pdf"], ["10.77.0.21"]):
                done = self.report(home, *arguments)

                self.assertEqual((done.returncode, done.stdout), (2, ""), arguments)
                self.assertRegex(done.stderr, r"\Atarnwick-watch report: [^\n]+; see --help\n\Z")

    def test_its_help_tells_its_options(self) -> None:
        with new_home() as home:
            done = self.report(home, "--help")

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            for word in ("tarnwick-watch report", "--since", "--format"):
                self.assertIn(word, done.stdout)


if __name__ == "__main__":
    unittest.main()
