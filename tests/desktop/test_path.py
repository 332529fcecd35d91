"""The way to the internet changes: both programs start their pings anew, and say so when there is none."""

from __future__ import annotations

import os
import pathlib
import time
import unittest

from endtoend.waiting import eventually
from endtoend.watch import Watch, new_home, settings
from lab import Behavior, Lab
from lab.network import DEVICE, ip, open_tun

from .headless import Headless, OfTheDesktop, OfTheTerminal
from .program import PATIENCE

ADDRESS = "10.77.0.37"
OTHER = "other0"
# Changes come in bursts: the pings start anew when none has come for this time.
DEBOUNCE_SECONDS = 1
# Pings that are watched to go on as they were.
STEADY_PINGS = 3
OUTAGE_SECONDS = 10
# Of a line of the kernel's table of sockets, some of whose headings share a field.
INODE_FIELD = 9


def prefer_other_device() -> int:
    """As when a cable is plugged in beside a wireless network; until the descriptor is closed."""
    cable = open_tun(OTHER)
    ip("link", "set", OTHER, "up")
    ip("route", "add", "default", "dev", OTHER, "metric", "1")
    return cable


def ping_sockets() -> set[str]:
    """By their inodes, of everything in this network namespace: each start of the pings opens its own."""
    lines = pathlib.Path("/proc/net/icmp").read_text(encoding="ascii").splitlines()
    return {line.split()[INODE_FIELD] for line in lines[1:]}


class AnotherWay(Headless):
    address = ADDRESS

    def test_another_way_to_the_internet_starts_the_pings_anew_once(self) -> None:
        self.start()
        eventually(lambda: self.requests() >= STEADY_PINGS, PATIENCE, "pings")
        first = ping_sockets()

        changed = time.monotonic()
        self.addCleanup(os.close, prefer_other_device())

        eventually(lambda: ping_sockets() != first, DEBOUNCE_SECONDS + PATIENCE, "a new start")
        self.assertGreaterEqual(time.monotonic() - changed, DEBOUNCE_SECONDS)
        eventually(ping_sockets, PATIENCE, "its socket")
        second, begun = ping_sockets(), self.requests()
        eventually(lambda: self.requests() >= begun + STEADY_PINGS, PATIENCE, "more pings")
        self.assertEqual(ping_sockets(), second)


class AnotherWayForTheDesktop(OfTheDesktop, AnotherWay):
    pass


class AnotherWayForTheTerminal(OfTheTerminal, AnotherWay):
    pass


del AnotherWay  # only its subclasses are tests


class NoWay(unittest.TestCase):
    def test_without_a_way_to_the_internet_an_outage_is_the_networks(self) -> None:
        with Lab() as lab, new_home() as home:
            lab.behave(ADDRESS, Behavior())
            with Watch(home, *settings(PingTimeout=1), ADDRESS) as watch:
                watch.wait_for(lambda now: now["status"] == "up", PATIENCE, "answers")

                lab.change(ADDRESS, silent=True)
                ip("route", "delete", "default", "dev", DEVICE)
                ip("-6", "route", "delete", "default", "dev", DEVICE)
                down = watch.wait_for(lambda now: now["status"] == "down", OUTAGE_SECONDS, "the outage")
                self.assertEqual(down["downReason"], "noNetwork")

                ip("route", "add", "default", "dev", DEVICE)
                watch.wait_for(lambda now: now["downReason"] == "noReplies", 1, "the network is back, the host is not")
