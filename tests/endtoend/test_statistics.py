"""The statistics file: what is saved at the end, what survives a kill, two programs, and a disk that refuses."""

from __future__ import annotations

import contextlib
import json
import pathlib
import random
import signal
import subprocess
import time
import unittest
from collections.abc import Iterator

from lab import Behavior, Lab

from .concurrently import ConcurrentTestCase
from .waiting import eventually
from .watch import PATIENCE_SECONDS, PROGRAM, Watch, new_home, settings

COUNTER_KEYS = {"sent", "replied", "lost", "averageMs", "fastestMs", "slowestMs"}
# One ping at the start and none for a minute: nothing happens between the last line and the end.
ONE_PING = settings(PingInterval=60)
SAVE_TICKS = 20
OTHER_HOST = {
    "averageMs": 12.5, "fastestMs": 10, "lost": 1, "replied": 99, "sent": 100, "slowestMs": 30
}  # fmt: skip

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def wait_for_reply(watch: Watch, count: int = 1) -> dict[str, object]:
    """Waits for a line that shows this many replies of the session."""
    return watch.wait_for(
        lambda now: now["session"]["replied"] >= count, count + 2, f"{count} replies"
    )


@contextlib.contextmanager
def mounted(folder: pathlib.Path, *arguments: str) -> Iterator[None]:
    """A mount for the time of a test, in this laboratory's own mount namespace."""
    subprocess.run(["mount", *arguments, str(folder)], check=True, timeout=10)
    try:
        yield
    finally:
        subprocess.run(["umount", "--lazy", str(folder)], check=True, timeout=10)


class TheEndOfTheProgram(ConcurrentTestCase):
    def test_a_termination_signal_saves_what_the_last_line_said(self) -> None:
        for number, address in ((signal.SIGTERM, "10.77.0.10"), (signal.SIGINT, "10.77.0.11")):
            lab.behave(address, Behavior(delay_ms=25))
            with new_home() as home, Watch(home, *ONE_PING, address) as watch:
                wait_for_reply(watch)

                self.assertEqual(watch.finish(number), 0)

                self.assertEqual(home.stats(), {address: watch.latest["site"]})
                self.assertEqual(set(watch.latest["site"]), COUNTER_KEYS)
                self.assertEqual(watch.latest["site"]["sent"], 1)
                self.assertEqual(watch.errors(), "")

    def test_every_ping_of_a_run_is_on_disk_after_it(self) -> None:
        address = "10.77.0.12"
        lab.behave(address, Behavior(delay_ms=5, lose_pattern=".x.", copies=2))
        with new_home() as home, Watch(home, *settings(PingTimeout=0.2), address) as watch:
            # The second ping is lost; a tick later it is known to be.
            watch.wait_for(lambda now: now["session"]["lost"] == 1, 4, "one ping lost")
            before = len(lab.requests(address))
            eventually(lambda: len(lab.requests(address)) > before, PATIENCE_SECONDS, "another ping")
            settled = lab.requests(address)[-1].at + 0.2
            eventually(lambda: time.monotonic() > settled, 1, "its reply to arrive")

            self.assertEqual(watch.finish(), 0)

            requests = lab.requests(address)
            saved = home.stats()[address]
            self.assertEqual(saved["sent"], len(requests))
            self.assertEqual(saved["replied"], sum(request.answered for request in requests))
            self.assertEqual(saved["lost"], 1)

    def test_later_runs_go_on_counting_and_leave_other_hosts_alone(self) -> None:
        address = "10.77.0.13"
        lab.behave(address, Behavior(delay_ms=25))
        with new_home() as home:
            home.write_stats(json.dumps({"other.example": OTHER_HOST}))
            for run in (1, 2):
                with Watch(home, *ONE_PING, address) as watch:
                    now = wait_for_reply(watch)
                    self.assertEqual(now["session"]["sent"], 1)
                    self.assertEqual(now["site"]["sent"], run)
                    self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.stats()["other.example"], OTHER_HOST)
            self.assertEqual(home.stats()[address]["replied"], 2)

    def test_statistics_are_saved_every_twenty_ticks(self) -> None:
        address = "10.77.0.14"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, address):
            eventually(home.stats_file.exists, SAVE_TICKS + PATIENCE_SECONDS, "the first save")

            self.assertGreaterEqual(home.stats()[address]["sent"], SAVE_TICKS - 1)

    def test_an_unreadable_file_is_replaced_at_the_end(self) -> None:
        for text in ("", "{", "[1, 2]", "\0\xff\xfe", '{"10.77.0.15": {"sent": 1}}'):
            lab.behave("10.77.0.15", Behavior())
            with new_home() as home:
                home.write_stats(text)
                with Watch(home, *ONE_PING, "10.77.0.15") as watch:
                    now = wait_for_reply(watch)
                    self.assertEqual(now["site"]["sent"], 1, repr(text))
                    self.assertEqual(watch.finish(), 0)
                self.assertEqual(home.stats()["10.77.0.15"]["sent"], 1, repr(text))

    def test_a_closed_pipe_ends_it_with_the_statistics_saved(self) -> None:
        address = "10.77.0.16"
        lab.behave(address, Behavior(delay_ms=5))
        for options in (["--json"], []):
            with new_home() as home:
                with subprocess.Popen(
                    [PROGRAM, *options, "--for", "30", address],
                    env=home.environment(),
                    stdout=subprocess.PIPE,
                ) as process:
                    try:
                        for _ in range(2):
                            self.assertTrue(process.stdout.readline())
                        process.stdout.close()
                        self.assertEqual(process.wait(timeout=3 + PATIENCE_SECONDS), 0)
                    finally:
                        process.kill()
                self.assertGreaterEqual(home.stats()[address]["sent"], 1)


class AKill(ConcurrentTestCase):
    def test_it_leaves_a_whole_file_or_none_for_the_next_start(self) -> None:
        address = "10.77.0.20"
        lab.behave(address, Behavior())
        moments = random.Random(20)
        with new_home() as home:
            known = 0
            for attempt in range(16):
                with Watch(home, address) as watch:
                    time.sleep(moments.uniform(0.05, 1.5))  # The moment is what is tried, not waited for.
                    if attempt % 2:
                        # Half of the time while it saves: the end is when it writes.
                        watch.process.send_signal(signal.SIGTERM)
                        time.sleep(moments.uniform(0.0, 0.004))
                    watch.process.kill()
                    watch.process.wait()
                if home.stats_file.exists():
                    saved = home.stats().get(address, {"sent": 0})["sent"]
                    self.assertGreaterEqual(saved, known)
                    known = saved
            with Watch(home, *ONE_PING, address) as watch:
                now = wait_for_reply(watch)
                self.assertEqual(now["site"]["sent"], known + 1)
                self.assertEqual(watch.errors(), "")
                self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.stats()[address]["sent"], known + 1)
            self.assertLessEqual(len(home.files("data")), 3, home.files())


class TwoProgramsAtOnce(ConcurrentTestCase):
    def test_the_second_says_so_and_takes_over_at_its_end(self) -> None:
        self.second_takes_over("10.77.0.30", signal.SIGTERM)

    def test_the_second_takes_over_at_its_end_from_a_killed_first(self) -> None:
        self.second_takes_over("10.77.0.31", signal.SIGKILL)

    def test_the_second_takes_over_at_a_periodic_save(self) -> None:
        address = "10.77.0.32"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, *ONE_PING, address) as first:
            wait_for_reply(first)
            with Watch(home, address) as second:
                wait_for_reply(second)
                self.assertEqual(first.finish(), 0)
                after_first = home.stats()[address]["sent"]

                second.wait_for_lines(SAVE_TICKS + 2)

                taken_over = home.stats()[address]["sent"]
                self.assertGreaterEqual(taken_over, after_first)
                self.assertEqual(second.finish(), 0)
                self.assertGreater(home.stats()[address]["sent"], taken_over)

    def test_the_second_leaves_the_file_alone_while_the_first_lives(self) -> None:
        address = "10.77.0.33"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, *ONE_PING, address) as first:
            wait_for_reply(first)
            with Watch(home, "10.77.0.34") as second:
                second.wait_for_lines(SAVE_TICKS + 2)
                self.assertEqual(set(home.stats()), {address})
                self.assertEqual(second.finish(), 0)
            self.assertEqual(set(home.stats()), {address})
            self.assertEqual(first.finish(), 0)
            self.assertEqual(home.stats(), {address: first.latest["site"]})

    def test_the_first_keeps_recording_after_the_second_has_gone(self) -> None:
        address = "10.77.0.35"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, *ONE_PING, address) as first:
            wait_for_reply(first)
            for _ in range(2):
                with Watch(home, *ONE_PING, address) as second:
                    wait_for_reply(second)
                    second.process.kill()
            self.assertEqual(first.finish(), 0)
            self.assertEqual(home.stats(), {address: first.latest["site"]})

    def test_no_order_of_starts_ends_and_kills_loses_a_count(self) -> None:
        address = "10.77.0.36"
        lab.behave(address, Behavior())
        choices = random.Random(36)
        with new_home() as home, contextlib.ExitStack() as stack:
            running: list[Watch] = []
            known = 0
            for _ in range(24):
                if len(running) < 3 and (not running or choices.random() < 0.5):
                    running.append(stack.enter_context(Watch(home, address)))
                else:
                    ended = running.pop(choices.randrange(len(running)))
                    number = choices.choice((signal.SIGTERM, signal.SIGTERM, signal.SIGKILL))
                    self.assertEqual(ended.finish(number), 0 if number == signal.SIGTERM else -number)
                time.sleep(choices.uniform(0, 0.8))  # Any moment will do; this one is drawn.
                if home.stats_file.exists():
                    saved = home.stats()[address]["sent"]
                    self.assertGreaterEqual(saved, known)
                    known = saved
            self.assertGreater(known, 0)
            for watch in running:
                self.assertEqual(watch.finish(), 0)
            self.assertGreaterEqual(home.stats()[address]["sent"], known)
            self.assertLessEqual(home.stats()[address]["sent"], len(lab.requests(address)))

    def second_takes_over(self, address: str, number: int) -> None:
        lab.behave(address, Behavior())
        with new_home() as home:
            with Watch(home, *ONE_PING, address) as earlier:
                wait_for_reply(earlier)
                self.assertEqual(earlier.finish(), 0)
            with Watch(home, *ONE_PING, address) as first:
                wait_for_reply(first)
                with Watch(home, *ONE_PING, address) as second:
                    wait_for_reply(second)
                    self.assertEqual(len(second.errors().splitlines()), 1, second.errors())
                    self.assertEqual(first.errors(), "")
                    before_end = home.stats()[address]["sent"]
                    self.assertEqual(before_end, 1)

                    first.process.send_signal(number)
                    first.wait(PATIENCE_SECONDS)
                    after_first = home.stats()[address]["sent"]
                    self.assertEqual(after_first, 1 if number == signal.SIGKILL else 2)

                    self.assertEqual(second.finish(), 0)
                    counts = home.stats()[address]
                    self.assertGreaterEqual(counts["sent"], after_first)
                    self.assertLessEqual(counts["sent"], after_first + 1)
                    self.assertGreaterEqual(counts["replied"], after_first)
            with Watch(home, *ONE_PING, address) as later:
                wait_for_reply(later)
                self.assertEqual(later.errors(), "")


class ADiskThatRefuses(ConcurrentTestCase):
    def test_with_a_read_only_folder_it_goes_on_and_the_file_stays(self) -> None:
        address = "10.77.0.40"
        lab.behave(address, Behavior())
        with new_home() as home:
            home.write_stats(json.dumps({"other.example": OTHER_HOST}))
            before = home.stats_file.read_bytes()
            with mounted(home.data, "--bind", "-o", "ro", str(home.data)):
                with Watch(home, address) as watch:
                    watch.wait_for_lines(SAVE_TICKS + 2)
                    self.assertEqual(watch.latest["status"], "up")
                    self.assertGreaterEqual(watch.latest["session"]["replied"], SAVE_TICKS)
                    self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.stats_file.read_bytes(), before)
            self.assertEqual(home.files("data"), ["data/Tarnwick/stats.json"])

    def test_a_folder_that_cannot_be_made_stops_nothing(self) -> None:
        address = "10.77.0.41"
        lab.behave(address, Behavior())
        with new_home() as home:
            home.data.write_text("a file where a folder should be", encoding="utf-8")
            with Watch(home, *ONE_PING, address) as watch:
                wait_for_reply(watch)
                self.assertEqual(watch.finish(), 0)
            self.assertEqual(home.files("data"), ["data"])

    def test_a_full_disk_keeps_the_old_file_until_there_is_room(self) -> None:
        address = "10.77.0.42"
        lab.behave(address, Behavior())
        with new_home() as home:
            home.data.mkdir(parents=True)
            with mounted(home.data, "-t", "tmpfs", "-o", "size=32k", "tmpfs"):
                home.write_stats(json.dumps({"other.example": OTHER_HOST}))
                before = home.stats_file.read_bytes()
                filler = home.data / "filler"
                fill(filler)
                with Watch(home, address) as watch:
                    watch.wait_for_lines(SAVE_TICKS + 2)
                    self.assertEqual(watch.latest["status"], "up")
                    self.assertEqual(home.stats_file.read_bytes(), before)
                    self.assertLessEqual(len(home.files("data")), 3, home.files())
                    filler.unlink()
                    self.assertEqual(watch.finish(), 0)
                self.assertEqual(home.stats()["other.example"], OTHER_HOST)
                self.assertGreaterEqual(home.stats()[address]["sent"], SAVE_TICKS)

    def test_a_disk_full_to_the_end_keeps_the_old_file(self) -> None:
        address = "10.77.0.43"
        lab.behave(address, Behavior())
        with new_home() as home:
            home.data.mkdir(parents=True)
            with mounted(home.data, "-t", "tmpfs", "-o", "size=32k", "tmpfs"):
                home.write_stats(json.dumps({"other.example": OTHER_HOST}))
                before = home.stats_file.read_bytes()
                fill(home.data / "filler")
                with Watch(home, *ONE_PING, address) as watch:
                    wait_for_reply(watch)
                    self.assertEqual(watch.finish(), 0)
                    self.assertIn("the statistics could not be stored: No space left on device", watch.errors())
                self.assertEqual(home.stats_file.read_bytes(), before)

    def test_a_host_that_was_never_pinged_is_not_written(self) -> None:
        with new_home() as home, Watch(home, "nowhere.invalid") as watch:
            watch.wait_for_lines(2)
            self.assertEqual(watch.finish(), 0)
            if home.stats_file.exists():
                self.assertEqual(home.stats(), {})


def fill(path: pathlib.Path) -> None:
    """Takes all room that the file's file system has left."""
    with open(path, "wb", buffering=0) as file, contextlib.suppress(OSError):
        while True:
            file.write(bytes(4096))


if __name__ == "__main__":
    unittest.main()
