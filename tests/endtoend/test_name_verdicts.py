"""Whose fault it is that the host's name is found late, and that the network wants people to sign in."""

from __future__ import annotations

import tempfile
import unittest

from lab import faults, scenarios
from lab.network_service import NetworkService
from lab.topology import ACCESS, ADDRESSES, HOST

from .name_cases import (
    HOME_SERVER, NO_BLAME, PROVIDERS_SERVER, STEADY_SECONDS, VERDICT_SECONDS, InTheChain, blame, open_chain,
    wait_until_learnt, wait_until_up, watching, words,
)  # fmt: skip
from .waiting import never


def setUpModule() -> None:
    open_chain()


class NamesThatAreLate(InTheChain):
    def test_a_slow_name_server_is_told_while_the_host_answers(self) -> None:
        scenario = next(one for one in scenarios.SCENARIOS if one.lookup == scenarios.LATE)
        with self.chain.under(*scenario.faults), watching() as watch:
            verdict = blame(watch)

        self.assertRegex(words(verdict), rf"^nameServer likely: Name server {HOME_SERVER} took \d+ ms to answer\.$")
        self.assertGreaterEqual(int(verdict["evidence"].split()[-4]), scenario.faults[0].delay_ms)
        self.assertTrue(scenario.allows(verdict["verdict"]))
        self.assertEqual(verdict["status"], "up")

    def test_a_silent_first_one_of_two_is_told_while_the_host_answers(self) -> None:
        with self.chain.under(faults.NameAnswers(answer="silent")), watching([HOME_SERVER, PROVIDERS_SERVER]) as watch:
            verdict = blame(watch)

        self.assertEqual(words(verdict), f"nameServer likely: Name server {HOME_SERVER} does not answer.")
        self.assertEqual(verdict["status"], "up")


class TheWay(InTheChain):
    def test_a_cut_way_to_the_name_server_is_not_its_fault(self) -> None:
        with watching([PROVIDERS_SERVER]) as watch:
            wait_until_learnt(self.begun)
            with self.chain.under(faults.Cut(ACCESS)):
                first = blame(watch)
                self.assertEqual(first["verdict"], scenarios.PROVIDER, words(first))
                # The pings begin anew meanwhile, and the name is looked up in vain.
                watch.wait_for(lambda now: now["startError"], 2 * VERDICT_SECONDS, "a lookup in vain")
                blamed = (scenarios.PROVIDER, *NO_BLAME)
                self.assertTrue(never(lambda: watch.latest["verdict"] not in blamed, STEADY_SECONDS), watch.latest)


class WhileAllIsWell(InTheChain):
    def test_only_the_resolver_asks_name_servers(self) -> None:
        before = len(self.chain.queries())
        with watching() as watch:
            wait_until_up(watch)
            # One for each kind of address.
            self.assertEqual(len(self.chain.queries()) - before, 2)
            self.assertTrue(never(lambda: len(self.chain.queries()) - before > 2, STEADY_SECONDS))


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
            with self.chain.under(*scenario.faults):
                self.assertEqual(words(blame(watch)), "signIn certain: The network wants you to sign in.")
            watch.wait_for(lambda now: now["verdict"] is None, VERDICT_SECONDS, "no verdict any more")

    def test_a_service_that_has_found_nothing_is_not_believed(self) -> None:
        with (
            tempfile.TemporaryDirectory() as folder,
            NetworkService(folder, "full") as service,
            watching(host=ADDRESSES[HOST][4], environment=service.environment) as watch,
        ):
            wait_until_learnt(self.begun)
            with self.chain.under(faults.Cut(ACCESS)):
                self.assertEqual(blame(watch)["verdict"], scenarios.PROVIDER)


if __name__ == "__main__":
    unittest.main()
