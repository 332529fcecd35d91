"""What the terminal program sends beside its pings, counted on the wire; and errors that nobody had a reason to send."""

from __future__ import annotations

import collections
import contextlib
import tempfile
import unittest
from collections.abc import Sequence
from typing import ClassVar

from lab import Names
from lab.chain import Chain
from lab.faults import FAMILIES, Cut
from lab.forgeries import FORGERIES
from lab.scenarios import UNCLEAR
from lab.topology import ACCESS, ADDRESSES, HOPS, HOST, NAMES

from .judging import wait_until_learnt
from .watch import Watch, new_home

PING_HOP_LIMIT = 64
SECONDS_WELL = 25
SECONDS_DOWN = 25
# For which probes go on when all is well again, in case that it breaks once more.
SECONDS_AFTER = 30
SECONDS_WELL_AGAIN = 5
# More than all of these, and what comes between.
LIFETIME_SECONDS = 200
# Between the first packet that is counted and the last one, there may be one more or one less than there are seconds.
EDGE = 1
# Some routers quote as little as that.
BELIEVED = {"mark-left-out"}

# How many packets went where, by kind, destination and hop limit.
Tally = collections.Counter[tuple[str, str | None, int | None]]


def forge_all(chain: Chain) -> None:
    """Errors of all kinds about the latest ping and the latest probe of each program."""
    sent = [one for one in chain.sent("echo") if one.packet is not None]
    for version in FAMILIES:
        own = [one for one in sent if one.destination == ADDRESSES[HOST][version]]
        ping = next(one for one in reversed(own) if one.hop_limit == PING_HOP_LIMIT)
        probe = next(one for one in reversed(own) if one.hop_limit != PING_HOP_LIMIT)
        for name in sorted(FORGERIES.keys() - BELIEVED):
            for request in (ping, probe):
                chain.forge(name, request.packet, "host-unreachable")
                chain.forge(name, request.packet, "hop-limit-exceeded")


def wait_for_more(watches: Sequence[Watch], lines: int) -> None:
    for watch in watches:
        watch.wait_for_lines(len(watch.values()) + lines)


class OnTheWire(unittest.TestCase):
    """Two programs at the client of a chain, over IPv4 and IPv6: all is well, the access line is cut, then it is mended."""

    well: ClassVar[Tally]
    down: ClassVar[Tally]
    after: ClassVar[Tally]
    well_again: ClassVar[Tally]
    told_well: ClassVar[list[list[dict[str, object]]]]
    told_down: ClassVar[list[list[dict[str, object]]]]

    @classmethod
    def setUpClass(cls) -> None:
        with contextlib.ExitStack() as stack:
            chain = stack.enter_context(Chain())
            names = Names(stack.enter_context(tempfile.TemporaryDirectory()))
            names.write(hosts=NAMES)
            homes = [stack.enter_context(new_home()) for _ in FAMILIES]
            watches = [
                stack.enter_context(
                    Watch(home, ADDRESSES[HOST][version], prefix=names.prefix(), lifetime=LIFETIME_SECONDS)
                )
                for home, version in zip(homes, FAMILIES, strict=True)
            ]
            wait_until_learnt(chain, len(watches))
            wait_for_more(watches, 2)
            begun = watches[0].latest["monotonic"]
            wait_for_more(watches[:1], SECONDS_WELL)
            cls.well = chain.tally(since=begun)
            forge_all(chain)
            wait_for_more(watches, 3)
            cls.told_well = [watch.values()[1:] for watch in watches]

            chain.begin(Cut(ACCESS))
            for watch in watches:
                watch.wait_for(lambda now: now["verdict"] not in (None, UNCLEAR), 15, "the verdict")
            begun = watches[0].latest["monotonic"]
            for _ in range(SECONDS_DOWN):
                forge_all(chain)
                wait_for_more(watches[:1], 1)
            cls.down = chain.tally(since=begun)
            cls.told_down = [watch.values()[len(well) + 1 :] for watch, well in zip(watches, cls.told_well, strict=True)]

            chain.clear()
            for watch in watches:
                watch.wait_for(lambda now: now["verdict"] is None, 30, "no verdict any more")
            begun = watches[0].latest["monotonic"]
            wait_for_more(watches[:1], SECONDS_AFTER + EDGE)
            cls.after = chain.tally(since=begun)
            begun = watches[0].latest["monotonic"]
            wait_for_more(watches[:1], SECONDS_WELL_AGAIN)
            cls.well_again = chain.tally(since=begun)

    def test_while_all_is_well_it_is_a_ping_a_second_and_nothing_else(self) -> None:
        hosts = ADDRESSES[HOST].values()
        self.assertEqual(set(self.well), {("echo", host, PING_HOP_LIMIT) for host in hosts})
        for count in self.well.values():
            self.assertLessEqual(abs(count - SECONDS_WELL), EDGE)

    def test_while_the_connection_is_down_it_is_a_probe_a_second_more(self) -> None:
        for host in ADDRESSES[HOST].values():
            probes = sum(count for (_, to, limit), count in self.down.items() if to == host and limit <= len(HOPS))
            pings = self.down[("echo", host, PING_HOP_LIMIT)]
            self.assertLessEqual(abs(probes - SECONDS_DOWN), EDGE)
            # A few more where pinging is begun anew.
            self.assertLessEqual(pings, SECONDS_DOWN + SECONDS_DOWN // 5 + EDGE)
        self.assertEqual({to for _, to, _ in self.down}, set(ADDRESSES[HOST].values()))

    def test_after_that_probes_go_on_for_half_a_minute(self) -> None:
        for host in ADDRESSES[HOST].values():
            probes = sum(count for (_, to, limit), count in self.after.items() if to == host and limit <= len(HOPS))
            self.assertLessEqual(probes, SECONDS_AFTER + EDGE)
            self.assertGreaterEqual(probes, SECONDS_AFTER - 2 * EDGE)
        self.assertEqual(set(self.well_again), {("echo", host, PING_HOP_LIMIT) for host in ADDRESSES[HOST].values()})

    def test_forged_errors_bring_no_verdict(self) -> None:
        for lines in self.told_well:
            self.assertEqual({(now["status"], now["verdict"]) for now in lines}, {("up", None)})

    def test_forged_errors_change_no_verdict(self) -> None:
        for version, lines in zip(FAMILIES, self.told_down, strict=True):
            told = {(now["verdict"], now["likelihood"]) for now in lines if now["verdict"] not in (None, UNCLEAR)}
            self.assertEqual({blame for blame, _ in told}, {"provider"})
            self.assertEqual(lines[-1]["likelihood"], "likely")
            self.assertEqual([hop["address"] for hop in lines[-1]["path"]], [ADDRESSES[hop][version] for hop in HOPS])

    def test_hops_have_the_names_that_the_resolver_knows(self) -> None:
        for lines in self.told_down:
            self.assertEqual([hop["name"] for hop in lines[-1]["path"]], list(NAMES))


if __name__ == "__main__":
    unittest.main()
