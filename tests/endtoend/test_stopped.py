"""A program that is stopped for a while, as by a machine that swaps."""

from __future__ import annotations

import signal
import time
import unittest

from lab import Behavior, Lab

from .watch import PATIENCE_SECONDS, Watch, new_home, settings

# With a time-out of 1 s, 5 s without a reply mean that the connection is down.
QUICK = settings(PingTimeout=1)
STOP_SECONDS = 7

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


class AStoppedProgram(unittest.TestCase):
    def test_announces_no_outage_and_loses_no_ping(self) -> None:
        lab.behave("10.77.0.10", Behavior(delay_ms=20))
        with new_home() as home, Watch(home, *QUICK, "10.77.0.10") as watch:
            before = watch.wait_for(lambda now: now["session"]["replied"] >= 3, 4, "three replies")

            watch.process.send_signal(signal.SIGSTOP)
            time.sleep(STOP_SECONDS)
            watch.process.send_signal(signal.SIGCONT)

            replied = before["session"]["replied"] + 4
            watch.wait_for(lambda now: now["session"]["replied"] >= replied, PATIENCE_SECONDS, "replies after it")
            lines = watch.values()[1:]
            longest = max(later["monotonic"] - earlier["monotonic"] for earlier, later in zip(lines, lines[1:]))
            self.assertGreater(longest, STOP_SECONDS - 1)
            self.assertEqual({now["status"] for now in lines if now["session"]["replied"]}, {"up"})
            self.assertEqual(watch.latest["session"]["lost"], 0)


if __name__ == "__main__":
    unittest.main()
