"""What the program makes of a connection: good, slow, lossy, silent, refused, several addresses, odd replies."""

from __future__ import annotations

import os
import signal
import socket
import statistics
import subprocess
import tempfile
import unittest

from lab import SILENT, Behavior, Lab, Names

from .concurrently import ConcurrentTestCase
from .round_trips import errors_ms
from .waiting import eventually
from .watch import PATIENCE_SECONDS, Watch, new_home, settings

# With a time-out of 1 s and pings every second, 5 s without a reply mean that the connection is down.
QUICK = settings(PingTimeout=1)
QUICK_SILENCE_SECONDS = 5
DEFAULT_SILENCE_SECONDS = 8
# Ticks may be put off by this much, to come together with other timers.
TICK_TOLERANCE = 0.05
# A reply that is read within a millisecond after it came counts as read at once.
STRAY_MS = 2
# Latencies between which the score falls from 1 to 0.
FAST_MS, SLOW_MS = 100, 1000

HOSTS = {
    "pair.lab": ["10.77.0.40", "10.77.0.41"],
    "families.lab": ["10.77.0.42", "fd77::42"],
    "both.lab": ["10.77.0.43", "fd77::43"],
    "xn--bcher-kva.example": ["10.77.0.49"],
    "five.lab": [f"10.77.0.{last}" for last in range(44, 49)],
}

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)
    folder = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(folder.cleanup)
    names = Names(folder.name)
    names.write(hosts=HOSTS)
    names.install()


def strayed_ms(watch: Watch, address: str) -> float:
    """How far the latencies that the program shows stray from those that the kernel stamped: the middle one.

    For an address that answers every request in order. A busy machine makes single pings stray: the program reads the
    clock just before it sends, and may wait for a processor in between.
    """
    return statistics.median(abs(error) for error in errors_ms(lab, watch, address))


def score_of(latency_ms: float) -> float:
    """The score of a connection that always has this latency."""
    return min(1.0, max(0.0, 1 - (latency_ms - FAST_MS) / (SLOW_MS - FAST_MS)))


def addresses_of(name: str) -> list[str]:
    """The addresses of a name in the order in which the system's resolver gives them."""
    return [entry[4][0] for entry in socket.getaddrinfo(name, None, type=socket.SOCK_DGRAM)]


class AConnection(ConcurrentTestCase):
    def test_a_steady_fast_one_is_excellent_with_five_bars(self) -> None:
        lab.behave("10.77.0.10", Behavior(delay_ms=40))
        with new_home() as home, Watch(home, "10.77.0.10") as watch:
            watch.wait_for_lines(12)
            now = watch.latest

            self.assertEqual(now["status"], "up")
            self.assertEqual(now["qualityTitle"], "Excellent")
            self.assertEqual(now["qualityTone"], "good")
            self.assertEqual(now["bars"], 5)
            self.assertLessEqual(score_of(now["session"]["slowestMs"]), now["score"])
            self.assertLessEqual(now["score"], 1)
            self.assertEqual(now["lossPercent"], 0)
            self.assertIs(now["lossIsKnown"], True)
            self.assertEqual(now["resolvedAddress"], "10.77.0.10")
            self.assertLess(strayed_ms(watch, "10.77.0.10"), STRAY_MS)
            session = now["session"]
            self.assertLessEqual(session["fastestMs"], now["latestPingMs"])
            self.assertLessEqual(session["fastestMs"], session["averageMs"])
            self.assertLessEqual(session["averageMs"], session["slowestMs"])
            latency = f"{now['latestPingMs']:.0f}"
            self.assertEqual(now["menuTitle"], f"{latency}ms")
            self.assertEqual(now["tooltip"], f"Latest Ping Time: {latency}ms\nRecent Packet Loss: 0%")
            self.assertEqual(
                now["accessibilitySummary"], f"Excellent, {latency} milliseconds, 0 percent packet loss"
            )
            for name in ("downReason", "downReasonText", "lastError", "startError"):
                self.assertIsNone(now[name], name)

    def test_a_steady_slow_one_is_fair_with_three_bars(self) -> None:
        lab.behave("10.77.0.11", Behavior(delay_ms=550))
        with new_home() as home, Watch(home, "10.77.0.11") as watch:
            watch.wait_for_lines(8)
            now = watch.latest

            self.assertEqual((now["qualityTitle"], now["qualityTone"]), ("Fair", "middle"))
            self.assertEqual(now["bars"], 3)
            self.assertLessEqual(score_of(now["session"]["slowestMs"]), now["score"])
            self.assertLessEqual(now["score"], score_of(now["session"]["fastestMs"]))
            self.assertLess(strayed_ms(watch, "10.77.0.11"), STRAY_MS)
            self.assertEqual(now["menuTitle"], f"{now['latestPingMs'] / 1000:.1f}s")

    def test_a_lossy_one_shows_its_loss_in_figures_and_title(self) -> None:
        lab.behave("10.77.0.12", Behavior(delay_ms=22, lose_pattern="....x"))
        with new_home() as home, Watch(home, *QUICK, "10.77.0.12") as watch:
            watch.wait_for_lines(24)
            now = watch.latest

            self.assertEqual(now["status"], "up")
            self.assertAlmostEqual(now["lossPercent"], 20, delta=4)
            self.assertRegex(now["menuTitle"], rf"^\d+ms \({now['lossPercent']:.0f}%\)$")
            unanswered = [request for request in lab.requests("10.77.0.12") if not request.answered]
            self.assertLessEqual(abs(now["session"]["lost"] - len(unanswered)), 1)
            self.assertLessEqual(now["session"]["lost"], len(unanswered))
            self.assertLess(now["score"], 1.0)

    def test_replies_after_the_time_out_count_as_lost(self) -> None:
        lab.behave("10.77.0.13", Behavior(delay_ms=1500))
        with new_home() as home, Watch(home, *QUICK, "10.77.0.13") as watch:
            now = watch.wait_for(lambda now: now["session"]["lost"] >= 4, 8, "four pings lost")

            self.assertEqual(now["session"]["replied"], 0)
            self.assertEqual(now["status"], "up")
            taken = [request.took_ms for request in lab.requests("10.77.0.13") if request.left is not None]
            self.assertLess(min(abs(now["latestPingMs"] - took) for took in taken), STRAY_MS)
            self.assertEqual(now["session"]["averageMs"], 0)

    def test_a_literal_of_the_sixth_version_is_pinged(self) -> None:
        lab.behave("fd77::14", Behavior(delay_ms=30))
        with new_home() as home, Watch(home, "fd77::14") as watch:
            now = watch.wait_for(lambda now: now["session"]["replied"] >= 3, 4, "three replies")

            self.assertEqual((now["status"], now["resolvedAddress"]), ("up", "fd77::14"))
            self.assertLess(strayed_ms(watch, "fd77::14"), STRAY_MS)

    def test_a_name_beyond_ascii_is_found_in_every_locale(self) -> None:
        lab.behave("10.77.0.49", Behavior(delay_ms=10))
        for locale in ("C", "C.UTF-8"):
            with self.subTest(locale), new_home() as home:
                with Watch(home, "bücher.example", environment={"LC_ALL": locale}) as watch:
                    up = watch.wait_for(lambda now: now["status"] == "up", 4, "up")

                    self.assertEqual(up["host"], "bücher.example")
                    self.assertEqual(up["resolvedAddress"], "10.77.0.49")

    def test_loopback_answers_over_both_families(self) -> None:
        with (
            new_home() as home,
            new_home() as other_home,
            Watch(home, "127.0.0.1") as fourth,
            Watch(other_home, "::1") as sixth,
        ):
            for watch in (fourth, sixth):
                now = watch.wait_for(lambda now: now["session"]["replied"] >= 2, 3, "two replies")
                self.assertEqual(now["status"], "up")
                self.assertGreater(now["latestPingMs"], 0)

    def test_requests_carry_mark_identifier_and_ascending_numbers(self) -> None:
        lab.behave("10.77.0.15", Behavior())
        with new_home() as home, Watch(home, "10.77.0.15"):
            eventually(lambda: len(lab.requests("10.77.0.15")) >= 4, 4 + PATIENCE_SECONDS, "four requests")
        requests = lab.requests("10.77.0.15")

        self.assertEqual({len(request.payload) for request in requests}, {16})
        self.assertEqual({request.payload[:8] for request in requests}, {b"TARNWICK"})
        self.assertEqual(len({request.identifier for request in requests}), 1)
        first = requests[0].ping_id
        self.assertEqual(
            [request.ping_id for request in requests], list(range(first, first + len(requests)))
        )
        self.assertEqual(
            [request.sequence for request in requests],
            [request.ping_id & 0xFFFF for request in requests],
        )

    def test_distorted_and_repeated_replies_change_no_count(self) -> None:
        lab.behave(
            "10.77.0.16",
            Behavior(
                copies=3,
                delay_ms=10,
                distortions=("wrong-magic", "wrong-sequence", "truncated", "empty", "wrong-code"),
            ),
        )
        with new_home() as home, Watch(home, "10.77.0.16") as watch:
            watch.wait_for_lines(8)

            for now in watch.values():
                self.assertLessEqual(now["session"]["replied"], now["session"]["sent"])
                self.assertEqual(now["session"]["lost"], 0)
            self.assertGreaterEqual(watch.latest["session"]["replied"], 6)

    def test_distorted_replies_alone_are_silence(self) -> None:
        distortions = (
            "wrong-magic", "wrong-sequence", "truncated", "empty", "wrong-code", "foreign-identifier",
            "wrong-type", "bad-checksum",
        )  # fmt: skip
        for address in ("10.77.0.17", "fd77::17"):
            lab.behave(address, Behavior(copies=0, distortions=distortions))
        with (
            new_home() as home,
            new_home() as other_home,
            Watch(home, *QUICK, "10.77.0.17") as fourth,
            Watch(other_home, *QUICK, "fd77::17") as sixth,
        ):
            for watch in (fourth, sixth):
                now = watch.wait_for(lambda now: now["status"] != "starting", 8, "an outcome")
                self.assertEqual((now["status"], now["downReason"]), ("down", "noReplies"))
                self.assertEqual(now["session"]["replied"], 0)
                self.assertIsNone(now["latestPingMs"])

    def test_errors_from_a_router_are_silence_until_a_reply(self) -> None:
        lab.behave("10.77.0.18", Behavior(error="host-unreachable"))
        with new_home() as home, Watch(home, *QUICK, "10.77.0.18") as watch:
            now = watch.wait_for(lambda now: now["status"] != "starting", 8, "an outcome")
            self.assertEqual((now["status"], now["downReason"]), ("down", "noReplies"))

            lab.behave("10.77.0.18", Behavior())

            watch.wait_for(lambda now: now["status"] == "up", 3, "recovery")


class AnOutage(ConcurrentTestCase):
    def noticed_at_the_first_tick(self, watch: Watch, due: float) -> None:
        """No tick after that moment still called the connection up; however late ticks come."""
        for now in watch.values():
            if now["monotonic"] > due + TICK_TOLERANCE:
                self.assertEqual(now["status"], "down", now)

    def test_silence_is_an_outage_until_a_reply(self) -> None:
        lab.behave("10.77.0.20", Behavior(delay_ms=20))
        with new_home() as home, Watch(home, *QUICK, "10.77.0.20") as watch:
            watch.wait_for(lambda now: now["session"]["replied"] >= 3, 4, "three replies")
            lab.change("10.77.0.20", silent=True)

            down = watch.wait_for(lambda now: now["status"] == "down", 8, "down")
            last_reply = [request.left for request in lab.requests("10.77.0.20") if request.left is not None][-1]
            silence = down["monotonic"] - last_reply
            self.assertGreater(silence, QUICK_SILENCE_SECONDS)
            self.noticed_at_the_first_tick(watch, last_reply + QUICK_SILENCE_SECONDS)
            self.assertEqual((down["menuTitle"], down["bars"]), ("Failed", 0))
            self.assertEqual(down["downReason"], "noReplies")
            self.assertEqual(down["downReasonText"], "No replies for 5 s")
            self.assertEqual((down["qualityTitle"], down["qualityTone"]), ("Connection down", "bad"))
            self.assertEqual(down["accessibilitySummary"], "Connection down, No replies for 5 s")

            lab.change("10.77.0.20", silent=False)

            up = watch.wait_for(lambda now: now["status"] == "up", 3, "recovery")
            self.assertIsNone(up["downReason"])
            self.assertIsNone(up["downReasonText"])
            self.assertNotEqual(up["menuTitle"], "Failed")

    def test_pings_sent_while_down_are_not_counted(self) -> None:
        lab.behave("10.77.0.21", SILENT)
        with new_home() as home, Watch(home, *QUICK, "10.77.0.21") as watch:
            counted = watch.wait_for(lambda now: now["status"] == "down", 8, "down")["session"]["sent"]
            requests = len(lab.requests("10.77.0.21"))
            eventually(
                lambda: len(lab.requests("10.77.0.21")) >= requests + 4,
                6 + PATIENCE_SECONDS,
                "pings sent while down",
            )
            watch.wait_for_lines(len(watch.values()) + 1)

            self.assertEqual(watch.latest["status"], "down")
            # A ping may have gone out between that tick and its own line.
            self.assertLessEqual(watch.latest["session"]["sent"] - counted, 1)

    def test_the_default_timings_bear_eight_seconds_of_silence(self) -> None:
        lab.behave("10.77.0.22", SILENT)
        with new_home() as home, Watch(home, "10.77.0.22") as watch:
            down = watch.wait_for(lambda now: now["status"] == "down", 10, "down")

            # Silence counts from the moment at which pinging starts: after the first line, and before the first request.
            started_after = watch.values()[0]["monotonic"]
            self.assertGreater(down["monotonic"] - started_after, DEFAULT_SILENCE_SECONDS)
            first = lab.requests("10.77.0.22")[0].at
            self.noticed_at_the_first_tick(watch, first + DEFAULT_SILENCE_SECONDS)
            self.assertEqual(down["downReasonText"], "No replies for 8 s")

    def test_an_unknown_host_is_down_after_the_grace_and_named(self) -> None:
        with new_home() as home, Watch(home, "nowhere.lab") as watch:
            early = watch.wait_for(lambda now: now["startError"], 3, "a start error")
            self.assertEqual(early["status"], "starting")
            self.assertRegex(early["startError"], r"^Could not resolve host: .+")
            self.assertEqual(early["qualityTitle"], "Connecting…")

            down = watch.wait_for(lambda now: now["status"] == "down", 13, "down")

            self.assertGreaterEqual(down["monotonic"] - watch.values()[0]["monotonic"], 9.9)
            self.assertEqual(down["downReason"], "hostNotFound")
            self.assertEqual(down["downReasonText"], "Can’t find host “nowhere.lab”")
            self.assertEqual(down["session"]["sent"], 0)
            self.assertIsNone(down["resolvedAddress"])

    def test_a_missing_interface_is_named(self) -> None:
        with new_home() as home, Watch(home, *QUICK, "fe80::1%eth7") as watch:
            down = watch.wait_for(lambda now: now["status"] == "down", 12, "down")

            self.assertEqual(down["downReasonText"], "There is no interface “eth7”")

    def test_refused_sockets_are_named_and_recover_with_the_range(self) -> None:
        # A network namespace of the program's own: its range starts closed, and opening it disturbs no other test.
        # A way to the internet leads out of it, or there would be no network instead.
        setup = (
            "ip link set lo up && ip link add out type veth peer name far && ip link set far up && ip link set out up"
            " && ip address add 192.0.2.1/24 dev out && ip route add default via 192.0.2.2"
        )
        closed = ["unshare", "--net", "sh", "-c", f'{setup} && exec "$@"', "sh"]
        with (
            new_home() as home,
            new_home() as plain_home,
            Watch(home, *QUICK, "127.0.0.1", prefix=closed) as watch,
            Watch(plain_home, *QUICK, "127.0.0.1", prefix=closed, as_json=False) as plain,
        ):
            early = watch.wait_for(lambda now: now["startError"], 3, "a start error")
            self.assertEqual(early["startError"], "Could not open ICMP socket: Permission denied")
            self.assertEqual(early["status"], "starting")

            down = watch.wait_for(lambda now: now["status"] == "down", 13, "down")
            self.assertEqual(down["downReason"], "socketError")
            self.assertEqual(down["downReasonText"], "Can’t open a ping socket")
            self.assertIn(
                "net.ipv4.ping_group_range", plain.errors() + "".join(line.text for line in plain.lines)
            )

            open_range = f"echo '{os.getegid()} {os.getegid()}' > /proc/sys/net/ipv4/ping_group_range"
            enter = ["nsenter", "--target", str(watch.pid), "--net", "sh", "-c"]
            subprocess.run([*enter, open_range], check=True, timeout=10)

            up = watch.wait_for(lambda now: now["status"] == "up", 20, "recovery")
            self.assertIsNone(up["startError"])
            self.assertEqual(plain.finish(signal.SIGTERM), 0)


class ANameWithSeveralAddresses(ConcurrentTestCase):
    def test_a_silent_first_address_is_left_after_the_time_out(self) -> None:
        first, second = addresses_of("pair.lab")
        lab.behave(first, SILENT)
        lab.behave(second, Behavior(delay_ms=10))
        with new_home() as home, Watch(home, *QUICK, "pair.lab") as watch:
            up = watch.wait_for(lambda now: now["status"] == "up", 4, "up")

            self.assertEqual(up["resolvedAddress"], second)
            waited = lab.requests(second)[0].at - lab.requests(first)[0].at
            self.assertGreaterEqual(waited, 1)
            # One more may be due at the moment at which the first is given up.
            before = [request for request in lab.requests(first) if request.at < lab.requests(second)[0].at]
            self.assertLessEqual(len(before), 3)

            lab.change(first, silent=False)
            lab.change(second, silent=True)

            watch.wait_for(lambda now: now["resolvedAddress"] == first, 4, "back to the first address")

    def test_a_silent_family_is_left_for_the_other(self) -> None:
        first, second = addresses_of("families.lab")
        self.assertEqual({":" in first, ":" in second}, {True, False})
        lab.behave(first, SILENT)
        lab.behave(second, Behavior(delay_ms=10))
        with new_home() as home, Watch(home, *QUICK, "families.lab") as watch:
            up = watch.wait_for(lambda now: now["status"] == "up", 5, "up")

            self.assertEqual(up["resolvedAddress"], second)

    def test_the_resolvers_first_address_is_kept_while_it_answers(self) -> None:
        first, second = addresses_of("both.lab")
        lab.behave(first, Behavior(delay_ms=10))
        lab.behave(second, Behavior(delay_ms=10))
        with new_home() as home, Watch(home, *QUICK, "both.lab") as watch:
            watch.wait_for(lambda now: now["session"]["replied"] >= 4, 5, "four replies")

            self.assertEqual({now["resolvedAddress"] for now in watch.values()[1:]}, {first})
            self.assertEqual(watch.latest["host"], "both.lab")
            self.assertEqual(lab.requests(second), [])

    def test_the_fourth_of_five_is_reached_across_restarts(self) -> None:
        fourth = addresses_of("five.lab")[3]
        lab.behave(fourth, Behavior(delay_ms=10))  # the others are silent
        with new_home() as home, Watch(home, "five.lab") as watch:
            watch.wait_for(lambda now: now["status"] == "down", 12, "down")

            # A restart every 15 seconds leaves time for three addresses.
            up = watch.wait_for(lambda now: now["status"] == "up", 14, "up")

            self.assertEqual(up["resolvedAddress"], fourth)


if __name__ == "__main__":
    unittest.main()
