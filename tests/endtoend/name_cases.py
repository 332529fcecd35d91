"""What tests of name servers in the chain have in common: one chain a module, and a program that looks a name up."""

from __future__ import annotations

import contextlib
import os
import tempfile
import time
import unittest
from collections.abc import Iterator, Sequence

from lab import Names, scenarios
from lab.chain import HOST_NAME, Chain
from lab.network import ip, open_tun
from lab.topology import ADDRESSES, HOPS, NAME_SERVER, PROVIDER_NAME_SERVER

from .judging import PROBES_TO_LEARN
from .waiting import eventually
from .watch import PATIENCE_SECONDS, Watch, new_home, settings

QUICK = settings(PingTimeout=1)
# Within which a verdict has to be there: a lookup that hangs is given up after ten.
VERDICT_SECONDS = 16
# For how long nobody else may be blamed, or nothing asked.
STEADY_SECONDS = 12
OTHER_DEVICE = "other0"
NO_BLAME = (None, scenarios.UNCLEAR)
HOME_SERVER, PROVIDERS_SERVER = ADDRESSES[NAME_SERVER][4], ADDRESSES[PROVIDER_NAME_SERVER][4]

chain: Chain


def open_chain() -> None:
    """For a module's setUpModule."""
    global chain
    chain = Chain()
    unittest.addModuleCleanup(chain.close)


@contextlib.contextmanager
def another_network() -> Iterator[None]:
    """A second device with a way to the internet, which nobody prefers."""
    device = open_tun(OTHER_DEVICE)
    try:
        ip("link", "set", OTHER_DEVICE, "up")
        ip("route", "add", "default", "dev", OTHER_DEVICE, "metric", "4000")
        yield
    finally:
        os.close(device)


@contextlib.contextmanager
def watching(
    name_servers: Sequence[str] = (HOME_SERVER,), host: str = HOST_NAME, environment: dict[str, str] | None = None
) -> Iterator[Watch]:
    with tempfile.TemporaryDirectory() as folder, new_home() as home:
        names = Names(folder)
        names.write(order="files dns", name_servers=name_servers, patience=2)
        with Watch(home, *QUICK, host, prefix=names.prefix(), environment=environment) as watch:
            yield watch


def wait_until_up(watch: Watch) -> dict[str, object]:
    return watch.wait_for(lambda now: now["status"] == "up", PATIENCE_SECONDS, "answers")


def wait_until_learnt(begun: float) -> None:
    """By a program that was started then."""
    eventually(
        lambda: sum((one.hop_limit or 0) <= len(HOPS) for one in chain.sent("echo", since=begun)) >= PROBES_TO_LEARN,
        PROBES_TO_LEARN + PATIENCE_SECONDS,
        "the path is learnt",
    )


def blame(watch: Watch) -> dict[str, object]:
    """The first line that blames somebody."""
    return watch.wait_for(lambda now: now["verdict"] not in NO_BLAME, VERDICT_SECONDS, "a verdict")


def words(line: dict[str, object]) -> str:
    return f"{line['verdict']} {line['likelihood']}: {line['evidence']}"


class InTheChain(unittest.TestCase):
    chain: Chain

    def setUp(self) -> None:
        self.chain = chain
        self.addCleanup(chain.clear)
        self.begun = time.monotonic()
