"""The program's command line and its output: JSON Lines, plain lines, timing, and what it refuses."""

from __future__ import annotations

import contextlib
import datetime
import fcntl
import os
import pathlib
import signal
import statistics
import subprocess
import time
import unittest
from collections.abc import Iterator, Sequence

from lab import SILENT, Behavior, Lab

from .concurrently import ConcurrentTestCase
from .waiting import eventually
from .watch import PATIENCE_SECONDS, PROGRAM, Watch, new_home, run, settings

NUMBER = (int, float)
NOTHING = type(None)
# Every key with the types of its values, in the order in which it is printed.
KEYS: dict[str, tuple[type, ...]] = {
    "time": (str,),
    "monotonic": NUMBER,
    "host": (str,),
    "resolvedAddress": (str, NOTHING),
    "status": (str,),
    "pausedUntil": (str, NOTHING),
    "score": (*NUMBER, NOTHING),
    "bars": (int,),
    "latestPingMs": (*NUMBER, NOTHING),
    "lossPercent": NUMBER,
    "lossIsKnown": (bool,),
    "menuTitle": (str,),
    "tooltip": (str,),
    "qualityTitle": (str,),
    "qualityTone": (str,),
    "downReason": (str, NOTHING),
    "downReasonText": (str, NOTHING),
    "lastError": (str, NOTHING),
    "startError": (str, NOTHING),
    "verdict": (str, NOTHING),
    "likelihood": (str, NOTHING),
    "evidence": (str, NOTHING),
    "path": (list,),
    "accessibilitySummary": (str,),
    "session": (dict,),
    "site": (dict,),
    "samples": (int,),
    "notices": (list,),
}
COUNTER_KEYS = {"sent", "replied", "lost", "averageMs", "fastestMs", "slowestMs"}
F_SETPIPE_SZ = 1031
# Between the halves of eleven beats. A timer that is late by 3 ms each time and never makes up for it drifts by more.
DRIFT_SECONDS = 0.01

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


def drift(times: Sequence[float], interval: float) -> float:
    """By how much the beat of the first half differs from that of the second.

    A busy machine makes single beats late: the most punctual one of each half counts.
    """
    lateness = [at - times[0] - interval * round((at - times[0]) / interval) for at in times]
    middle = len(times) // 2
    return min(lateness[middle:]) - min(lateness[:middle])


@contextlib.contextmanager
def full_pipe() -> Iterator[int]:
    """The writing end of the smallest pipe there is, filled, with a reader that never reads."""
    reader, writer = os.pipe()
    try:
        os.write(writer, bytes(fcntl.fcntl(writer, F_SETPIPE_SZ, 4096)))
        yield writer
    finally:
        os.close(reader)
        os.close(writer)


class Json(ConcurrentTestCase):
    def test_every_object_has_just_the_keys_in_order_with_types(self) -> None:
        lab.behave("10.77.0.10", Behavior(delay_ms=10))
        with (
            new_home() as home,
            new_home() as other_home,
            Watch(home, "10.77.0.10") as watch,
            Watch(other_home, "10.77.0.99") as silent,
        ):
            for values in [line.values for line in watch.wait_for_lines(3) + silent.wait_for_lines(3)]:
                self.assertEqual(list(values), list(KEYS))
                for key, types in KEYS.items():
                    self.assertIsInstance(values[key], types, key)
                    if bool not in types:
                        self.assertNotIsInstance(values[key], bool, key)
                for counter in ("session", "site"):
                    self.assertEqual(set(values[counter]), COUNTER_KEYS)
                    for key in ("sent", "replied", "lost"):
                        self.assertIs(type(values[counter][key]), int)

    def test_the_first_object_comes_at_once_and_knows_nothing_yet(self) -> None:
        lab.behave("10.77.0.11", SILENT)
        with new_home() as home, Watch(home, "10.77.0.11") as watch:
            line, after_a_tick = watch.wait_for_lines(2)[:2]

            self.assertLess(line.at, after_a_tick.values["monotonic"])
            values = line.values
            self.assertEqual((values["status"], values["host"]), ("starting", "10.77.0.11"))
            self.assertEqual((values["qualityTitle"], values["qualityTone"]), ("Connecting…", "neutral"))
            self.assertEqual((values["menuTitle"], values["bars"]), ("…", 0))
            self.assertEqual(values["tooltip"], "Latest Ping Time: –\nRecent Packet Loss: –")
            self.assertEqual(values["accessibilitySummary"], "Connecting")
            self.assertEqual((values["score"], values["latestPingMs"]), (None, None))
            self.assertEqual((values["lossIsKnown"], values["lossPercent"]), (False, 0))

    def test_an_object_follows_every_second_without_drift(self) -> None:
        lab.behave("10.77.0.12", Behavior(delay_ms=10))
        with new_home() as home, Watch(home, "10.77.0.12") as watch:
            lines = watch.wait_for_lines(12)[1:]

            ticks = [line.values["monotonic"] for line in lines]
            self.assertLess(abs(drift(ticks, 1)), DRIFT_SECONDS)
            # None is held back until the next one is due.
            delays = [line.at - tick for line, tick in zip(lines, ticks)]
            self.assertLess(statistics.median(delays), 0.5)

    def test_the_time_is_now_in_universal_time_with_milliseconds(self) -> None:
        lab.behave("10.77.0.13", Behavior())
        before = datetime.datetime.now(datetime.timezone.utc)
        with new_home() as home, Watch(home, "10.77.0.13", environment={"TZ": "Asia/Kathmandu"}) as watch:
            watch.wait_for_lines(2)
            text = watch.latest["time"]

            self.assertRegex(text, r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z$")
            shown = datetime.datetime.fromisoformat(text)
            now = datetime.datetime.now(datetime.timezone.utc)
            self.assertTrue(before <= shown <= now, (before, shown, now))

    def test_it_stops_by_itself_after_the_seconds_asked_for(self) -> None:
        lab.behave("10.77.0.14", Behavior())
        with new_home() as home:
            started = time.monotonic()
            done = run(home, "--json", "--for", "3", "10.77.0.14")
            elapsed = time.monotonic() - started

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertGreaterEqual(elapsed, 3)
            # Each second a line and a ping, and both at the start; a busy machine may leave some out.
            self.assertIn(len(done.stdout.splitlines()), (2, 3, 4))
            self.assertIn(home.stats()["10.77.0.14"]["sent"], (2, 3, 4))

    def test_the_sample_count_follows_the_pings(self) -> None:
        lab.behave("10.77.0.15", Behavior())
        with new_home() as home, Watch(home, "10.77.0.15") as watch:
            watch.wait_for_lines(5)
            for values in watch.values():
                self.assertEqual(values["samples"], values["session"]["sent"])
            self.assertGreaterEqual(watch.latest["samples"], 4)


class Timing(ConcurrentTestCase):
    def test_pings_keep_their_interval_without_drift(self) -> None:
        address, intervals = "10.77.0.20", 11
        lab.behave(address, Behavior(delay_ms=40))
        with new_home() as home, Watch(home, address):
            requests = eventually(
                lambda: len(lab.requests(address)) > intervals + 1 and lab.requests(address),
                intervals + PATIENCE_SECONDS,
                "the pings",
            )
        self.assertLess(abs(drift([request.at for request in requests[1 : intervals + 2]], 1)), DRIFT_SECONDS)

    def test_a_longer_interval_is_kept(self) -> None:
        address = "10.77.0.21"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, *settings(PingInterval=3), address):
            requests = eventually(
                lambda: len(lab.requests(address)) >= 4 and lab.requests(address), 9 + PATIENCE_SECONDS, "pings"
            )
        times = [request.at for request in requests]
        self.assertEqual(round(statistics.median(later - earlier for earlier, later in zip(times, times[1:]))), 3)

    def test_the_first_ping_goes_out_at_once(self) -> None:
        address = "10.77.0.22"
        lab.behave(address, Behavior())
        with new_home() as home, Watch(home, address) as watch:
            requests = eventually(lambda: lab.requests(address), PATIENCE_SECONDS, "the first ping")
            first_tick = watch.wait_for_lines(2)[1].values["monotonic"]
            self.assertLess(requests[0].at, first_tick)

    def test_a_reader_of_json_that_stalls_does_not_stop_the_pings(self) -> None:
        self.stalls("10.77.0.23", "--json")

    def test_a_stalled_reader_of_plain_lines_does_not_stop_pings(self) -> None:
        self.stalls("10.77.0.24")

    def stalls(self, address: str, *options: str) -> None:
        lab.behave(address, Behavior(delay_ms=5))
        with new_home() as home, full_pipe() as pipe:
            process = subprocess.Popen(
                [PROGRAM, *options, "--for", "60", address], env=home.environment(), stdout=pipe
            )
            try:
                eventually(lambda: len(lab.requests(address)) >= 8, 8 + PATIENCE_SECONDS, "pings")

                process.send_signal(signal.SIGTERM)

                self.assertEqual(process.wait(timeout=PATIENCE_SECONDS), 0)
                self.assertGreaterEqual(home.stats()[address]["sent"], 8)
            finally:
                process.kill()
                process.wait()


class PlainLines(ConcurrentTestCase):
    def test_one_line_a_tick_has_quality_host_and_latency(self) -> None:
        lab.behave("10.77.0.30", Behavior(delay_ms=43))
        with new_home() as home, Watch(home, "10.77.0.30", as_json=False) as watch:
            lines = watch.wait_for_lines(5)

            gaps = [later.at - earlier.at for earlier, later in zip(lines[1:], lines[2:])]
            self.assertEqual(round(statistics.median(gaps)), 1)
            text = lines[-1].text
            for part in ("Excellent", "10.77.0.30"):
                self.assertIn(part, text)
            self.assertRegex(text, r"\b\d+ ?ms")
            for line in lines:
                self.assertNotRegex(line.text, r"[\x00-\x1f\x7f]")
            self.assertEqual(watch.finish(), 0)
            self.assertEqual(watch.errors(), "")


class Memory(ConcurrentTestCase):
    def test_it_has_nothing_in_memory_that_only_the_desktop_program_needs(self) -> None:
        with new_home() as home, Watch(home, "10.77.0.7") as watch:
            watch.wait_for_lines(2)

            loaded = pathlib.Path(f"/proc/{watch.pid}/maps").read_text(encoding="utf-8")
            self.assertNotRegex(loaded, r"lib(Qt|archive|sodium|ssl|xcb|wayland)")


class ClosedDescriptors(ConcurrentTestCase):
    def test_the_programs_own_files_do_not_take_their_numbers(self) -> None:
        without_descriptors = ("sh", "-c", 'exec "$0" "$@" <&- >&- 2>&-')
        with new_home() as home, Watch(home, "10.77.0.19", as_json=False, prefix=without_descriptors) as watch:
            eventually(lambda: lab.requests("10.77.0.19"), PATIENCE_SECONDS, "a ping")

            opened = [os.readlink(f"/proc/{watch.pid}/fd/{number}") for number in range(3)]
            self.assertEqual(opened, ["/dev/null"] * 3)


class HelpAndVersion(unittest.TestCase):
    def test_help_names_every_option_and_touches_nothing(self) -> None:
        with new_home() as home:
            done = run(home, "--help")

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            for word in ("--json", "--for", "--set", "--help", "--version", "HOST"):
                self.assertIn(word, done.stdout)
            self.assertEqual(home.files(), [])

    def test_version_is_one_line(self) -> None:
        with new_home() as home:
            done = run(home, "--version")

            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertRegex(done.stdout, r"\A[^\n]*\d+\.\d+[^\n]*\n\Z")
            self.assertEqual(home.files(), [])


class WrongArguments(unittest.TestCase):
    REFUSED = (
        ["--bogus"],
        ["-x"],
        ["--json=yes"],
        ["--for"],
        ["--for", ""],
        ["--for", "soon"],
        ["--for", "-1"],
        ["--for", "3x"],
        ["--set"],
        ["--set", "PingTimeout"],
        ["--set", "=4"],
        ["--set", "Bogus=1"],
        ["--set", "hostname=127.0.0.1"],
        ["--set", "PingTimeout="],
        ["--set", "PingTimeout=abc"],
        ["--set", "PingTimeout=4s"],
        ["--set", "PingTimeout=true"],
        ["--set", "PingTimeout=nan"],
        ["--set", "PingInterval=1,5"],
        ["--set", "SlowPingLowThreshold=fast"],
        ["--set", "ShowIcon=1"],
        ["--set", "ShowText=yes"],
        ["--set", "ShowNotifications=TRUE "],
        ["--set", "ShowPacketLossText=2"],
        ["--set", "PacketLossTextMode=sometimes"],
        ["--set", "PacketLossTextMode=WhenLossy"],
        ["--set", "PingTimeout=2", "--set", "PingTimeout=x"],
        ["127.0.0.1", "::1"],
    )

    def test_each_is_refused_in_one_line_with_nothing_on_disk(self) -> None:
        for arguments in self.REFUSED:
            with self.subTest(arguments), new_home() as home:
                done = run(home, *arguments, within=5)

                self.assertEqual(done.returncode, 2)
                self.assertEqual(done.stdout, "")
                self.assertRegex(done.stderr, r"\A[^\n]+; see --help\n\Z")
                self.assertEqual(home.files(), [])

    def test_the_line_names_what_was_wrong(self) -> None:
        for arguments, word in (
            (["--bogus"], "--bogus"),
            (["--set", "Bogus=1"], "Bogus"),
            (["--set", "PingTimeout=abc"], "PingTimeout"),
            (["--for", "soon"], "--for"),
        ):
            with self.subTest(arguments), new_home() as home:
                self.assertIn(word, run(home, *arguments, within=5).stderr)

    def test_a_wrong_argument_leaves_stored_files_alone(self) -> None:
        with new_home() as home:
            home.write_settings('{"Hostname": "10.77.0.40"}')
            home.write_stats("{}")

            done = run(home, "--set", "Hostname=10.77.0.41", "--set", "ShowIcon=1")

            self.assertEqual(done.returncode, 2)
            self.assertEqual(home.settings_file.read_text(), '{"Hostname": "10.77.0.40"}')
            self.assertEqual(home.stats_file.read_text(), "{}")
            self.assertEqual(len(home.files()), 2)


if __name__ == "__main__":
    unittest.main()
