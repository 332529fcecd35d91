"""Whose fault it is that the host's name is not found or found late, and that the network wants people to sign in.

In the chain, with the program as it is. Where a name was found before, the program is told of another network, so that it
looks the name up anew.
"""

from __future__ import annotations

import contextlib
import os
import tempfile
import time
import unittest
from collections.abc import Iterator, Sequence

from lab import Names, faults, scenarios
from lab.chain import HOST_NAME, Chain
from lab.network import ip, open_tun
from lab.network_service import NetworkService
from lab.scenarios import Scenario
from lab.topology import ACCESS, ADDRESSES, HOPS, HOST, NAME_SERVER, PROVIDER_NAME_SERVER

from .judging import PROBES_TO_LEARN
from .waiting import eventually, never
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


def setUpModule() -> None:
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
    def setUp(self) -> None:
        self.addCleanup(chain.clear)
        self.begun = time.monotonic()


class NamesThatAreMissing(InTheChain):
    """By what the name server does; "{address}" is the host's last one, where the name was found before."""

    CONTRAST = "nameServer certain: Name server {server} does not answer; {address}, the host's last address, does."
    EXPECTED_WHEN_KNOWN_BEFORE = {
        "the name server is down": CONTRAST,
        "the name server is silent": CONTRAST,
        "the name server refuses": "nameServer certain: Name server {server} refuses to answer.",
        "the name server fails": "nameServer certain: Name server {server} fails to look up host.test.",
        "the name server knows no such name": "nameServer likely: Name server {server} knows no host.test.",
    }
    EXPECTED_WHEN_NEVER_KNOWN = {
        "the name server is down": "nameServer possible: Name server {server} does not answer.",
        "the name server is silent": "nameServer possible: Name server {server} does not answer.",
        "the name server refuses": "nameServer likely: Name server {server} refuses to answer.",
        "the name server fails": "nameServer possible: Name server {server} fails to look up host.test.",
        "the name server knows no such name": "host likely: Name server {server} knows no host.test.",
    }

    def test_all_scenarios_of_missing_names_are_told(self) -> None:
        told = {one.name: one for one in scenarios.SCENARIOS if one.lookup == scenarios.MISSING}
        self.assertEqual(set(told), set(self.EXPECTED_WHEN_KNOWN_BEFORE))
        self.assertEqual(set(told), set(self.EXPECTED_WHEN_NEVER_KNOWN))
        for name, scenario in told.items():
            with self.subTest(name):
                self.assert_told(scenario)

    def assert_told(self, scenario: Scenario) -> None:
        with watching() as known:
            address = wait_until_up(known)["resolvedAddress"]
            with chain.under(*scenario.faults), another_network(), watching() as unknown:
                verdict = blame(known)
                self.assertEqual(
                    words(verdict),
                    self.EXPECTED_WHEN_KNOWN_BEFORE[scenario.name].format(server=HOME_SERVER, address=address),
                )
                self.assertTrue(scenario.allows(verdict["verdict"]))
                verdict = blame(unknown)
                self.assertEqual(
                    words(verdict), self.EXPECTED_WHEN_NEVER_KNOWN[scenario.name].format(server=HOME_SERVER)
                )
                self.assertTrue(scenario.allows(verdict["verdict"]))

    def test_the_providers_name_server_is_named_until_it_answers(self) -> None:
        fault = faults.NameAnswers(PROVIDER_NAME_SERVER, answer="refused")
        with watching([PROVIDERS_SERVER]) as watch:
            with chain.under(fault):
                self.assertEqual(
                    words(blame(watch)), f"nameServer likely: Name server {PROVIDERS_SERVER} refuses to answer."
                )
            watch.wait_for(lambda now: now["verdict"] is None, 2 * VERDICT_SECONDS, "no verdict any more")


class NamesThatAreLate(InTheChain):
    def test_a_slow_name_server_is_told_while_the_host_answers(self) -> None:
        scenario = next(one for one in scenarios.SCENARIOS if one.lookup == scenarios.LATE)
        with chain.under(*scenario.faults), watching() as watch:
            verdict = blame(watch)

        self.assertRegex(words(verdict), rf"^nameServer likely: Name server {HOME_SERVER} took \d+ ms to answer\.$")
        self.assertGreaterEqual(int(verdict["evidence"].split()[-4]), scenario.faults[0].delay_ms)
        self.assertTrue(scenario.allows(verdict["verdict"]))
        self.assertEqual(verdict["status"], "up")

    def test_a_silent_first_one_of_two_is_told_while_the_host_answers(self) -> None:
        with chain.under(faults.NameAnswers(answer="silent")), watching([HOME_SERVER, PROVIDERS_SERVER]) as watch:
            verdict = blame(watch)

        self.assertEqual(words(verdict), f"nameServer likely: Name server {HOME_SERVER} does not answer.")
        self.assertEqual(verdict["status"], "up")


class TheWay(InTheChain):
    def test_a_cut_way_to_the_name_server_is_not_its_fault(self) -> None:
        with watching([PROVIDERS_SERVER]) as watch:
            wait_until_learnt(self.begun)
            with chain.under(faults.Cut(ACCESS)):
                first = blame(watch)
                self.assertEqual(first["verdict"], scenarios.PROVIDER, words(first))
                # The pings begin anew meanwhile, and the name is looked up in vain.
                watch.wait_for(lambda now: now["startError"], 2 * VERDICT_SECONDS, "a lookup in vain")
                blamed = (scenarios.PROVIDER, *NO_BLAME)
                self.assertTrue(never(lambda: watch.latest["verdict"] not in blamed, STEADY_SECONDS), watch.latest)


class WhileAllIsWell(InTheChain):
    def test_only_the_resolver_asks_name_servers(self) -> None:
        before = len(chain.queries())
        with watching() as watch:
            wait_until_up(watch)
            # One for each kind of address.
            self.assertEqual(len(chain.queries()) - before, 2)
            self.assertTrue(never(lambda: len(chain.queries()) - before > 2, STEADY_SECONDS))


class SignIn(InTheChain):
    def setUp(self) -> None:
        super().setUp()
        if missing := NetworkService.missing():
            self.skipTest(f"not installed: {', '.join(missing)}")

    def test_a_network_that_wants_people_to_sign_in_says_so(self) -> None:
        scenario = next(one for one in scenarios.SCENARIOS if one.connectivity == "portal")
        with (
            tempfile.TemporaryDirectory() as folder,
            NetworkService(folder, scenario.connectivity) as service,
            watching(host=ADDRESSES[HOST][4], environment=service.environment) as watch,
        ):
            wait_until_up(watch)
            with chain.under(*scenario.faults):
                self.assertEqual(words(blame(watch)), "signIn certain: The network wants you to sign in.")
            watch.wait_for(lambda now: now["verdict"] is None, VERDICT_SECONDS, "no verdict any more")

    def test_a_service_that_has_found_nothing_is_not_believed(self) -> None:
        with (
            tempfile.TemporaryDirectory() as folder,
            NetworkService(folder, "full") as service,
            watching(host=ADDRESSES[HOST][4], environment=service.environment) as watch,
        ):
            wait_until_learnt(self.begun)
            with chain.under(faults.Cut(ACCESS)):
                self.assertEqual(blame(watch)["verdict"], scenarios.PROVIDER)


if __name__ == "__main__":
    unittest.main()
