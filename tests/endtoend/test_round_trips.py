"""How close the latencies shown come to the round trips that the kernel stamped in the laboratory."""

from __future__ import annotations

import contextlib
import os
import statistics
import subprocess
import sys
import unittest
from collections.abc import Iterator

from lab import Behavior, Lab

from .round_trips import errors_ms
from .watch import Watch, new_home

# The clock is read before a request is sent, so a ping may come out longer than it was by what sending takes.
MOST_TOO_SHORT_MS = 0.05
MEDIAN_ERROR_MS = 0.2
PROGRAMS = 8
LINES = 12
DELAYS_MS = (1, 40, 90)

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


@contextlib.contextmanager
def busy_processors() -> Iterator[None]:
    """Every processor has something to do all the time."""
    command = [sys.executable, "-c", "while True: pass"]
    processes = [subprocess.Popen(command) for _ in os.sched_getaffinity(0)]
    try:
        yield
    finally:
        for process in processes:
            process.kill()
            process.wait()


def errors_of_programs(first_address: int) -> list[float]:
    """Of the round trips that several programs show, each pinging an address of its own."""
    addresses = [f"10.77.0.{first_address + number}" for number in range(PROGRAMS)]
    with contextlib.ExitStack() as stack:
        watches = []
        for address in addresses:
            lab.behave(address, Behavior(delay_ms=DELAYS_MS))
            watches.append(stack.enter_context(Watch(stack.enter_context(new_home()), address)))
        for watch in watches:
            watch.wait_for_lines(LINES)
        return [error for watch, address in zip(watches, addresses) for error in errors_ms(lab, watch, address)]


class ARoundTrip(unittest.TestCase):
    def check(self, machine: str, errors: list[float]) -> None:
        median = statistics.median(abs(error) for error in errors)
        print(
            f"{machine}: {len(errors)} round trips, errors {min(errors):+.3f} to {max(errors):+.3f} ms,"
            f" median {median:.3f} ms",
            file=sys.stderr,
        )
        self.assertGreaterEqual(len(errors), PROGRAMS * LINES // 2)
        self.assertGreaterEqual(min(errors), -MOST_TOO_SHORT_MS)
        self.assertLessEqual(median, MEDIAN_ERROR_MS)

    def test_on_an_idle_machine_is_never_shown_shorter_than_it_was(self) -> None:
        self.check("idle", errors_of_programs(first_address=10))

    def test_on_a_busy_machine_is_never_shown_shorter_than_it_was(self) -> None:
        with busy_processors():
            self.check("all processors busy", errors_of_programs(first_address=30))


if __name__ == "__main__":
    unittest.main()
