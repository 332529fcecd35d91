"""A name server that never answers: the program stays awake, gives up in time, and ends when asked."""

from __future__ import annotations

import contextlib
import os
import signal
import tempfile
import unittest
from collections.abc import Iterator

from lab import Lab, Names

from .concurrently import ConcurrentTestCase
from .waiting import eventually
from .watch import PATIENCE_SECONDS, Watch, new_home, settings

# The shorter the time-out, the sooner the next try: 4.1 s after the first that failed.
QUICK = settings(PingTimeout=0.1)
LOOKUP_LIMIT_SECONDS = 10
LINK_SECONDS = 2

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


@contextlib.contextmanager
def dead_name_server(address: str) -> Iterator[list[str]]:
    """What to put before a command so that its lookups go to a name server that never answers."""
    with tempfile.TemporaryDirectory() as folder:
        names = Names(folder)
        names.write(order="files dns", name_servers=[address])
        yield names.prefix()


def thread_count(pid: int) -> int:
    return len(os.listdir(f"/proc/{pid}/task"))


class AResolverThatHangs(ConcurrentTestCase):
    def test_it_is_given_up_and_retried_without_piling_up_threads(self) -> None:
        with (
            new_home() as home,
            dead_name_server("10.77.0.53") as prefix,
            Watch(home, *QUICK, "slow.lab", prefix=prefix) as watch,
        ):
            eventually(lambda: lab.queries("10.77.0.53"), PATIENCE_SECONDS, "the lookup")
            threads_at_first = thread_count(watch.pid)

            down = watch.wait_for(lambda now: now["status"] == "down", 12, "down")
            waited = down["monotonic"] - watch.values()[0]["monotonic"]
            self.assertGreater(waited, LOOKUP_LIMIT_SECONDS - 0.1)
            self.assertEqual(down["startError"], "Could not resolve host: lookup timed out")
            self.assertEqual(down["lastError"], down["startError"])
            self.assertEqual(down["downReason"], "hostNotFound")
            self.assertEqual(down["downReasonText"], "Can’t find host “slow.lab”")

            # The second try begins at about 15 s and is given up at about 25 s. The first one still hangs.
            for count in range(len(watch.values()) + 1, 28):
                watch.wait_for_lines(count)
                # The thread that looks at the link ends at once; one that looks up a name stays for minutes.
                eventually(
                    lambda: thread_count(watch.pid) <= threads_at_first + 1, LINK_SECONDS, "no third lookup"
                )

            arrivals = [line.at for line in watch.lines]
            gaps = [later - earlier for earlier, later in zip(arrivals, arrivals[1:])]
            self.assertLess(max(gaps), LOOKUP_LIMIT_SECONDS / 2, "lookups hold up the lines")
            self.assertEqual(watch.latest["status"], "down")
            self.assertEqual(watch.finish(signal.SIGTERM), 0)

    def test_it_does_not_hold_up_the_end_while_the_first_lookup_runs(self) -> None:
        for number, server in ((signal.SIGTERM, "10.77.0.54"), (signal.SIGINT, "10.77.0.55")):
            with (
                new_home() as home,
                dead_name_server(server) as prefix,
                Watch(home, "hanging.lab", prefix=prefix) as watch,
            ):
                eventually(lambda: lab.queries(server), PATIENCE_SECONDS, "the lookup")
                watch.wait_for_lines(1)

                # The lookup goes on for minutes.
                self.assertEqual(watch.finish(number), 0)

    def test_a_name_that_is_found_after_all_starts_the_pinging(self) -> None:
        with tempfile.TemporaryDirectory() as folder, new_home() as home:
            names = Names(folder)
            with Watch(home, "late.lab", prefix=names.prefix()) as watch:
                watch.wait_for(lambda now: now["startError"], 3, "a start error")

                names.write(hosts={"late.lab": ["127.0.0.1"]})

                up = watch.wait_for(lambda now: now["status"] == "up", 6, "up")
                self.assertIsNone(up["startError"])


if __name__ == "__main__":
    unittest.main()
