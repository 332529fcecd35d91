"""Whose fault it is that the host's name is not found, by what its name server does."""

from __future__ import annotations

import unittest

from lab import faults, scenarios
from lab.scenarios import Scenario
from lab.topology import PROVIDER_NAME_SERVER

from .name_cases import (
    HOME_SERVER, PROVIDERS_SERVER, VERDICT_SECONDS, InTheChain, another_network, blame, open_chain, wait_until_up,
    watching, words,
)  # fmt: skip


def setUpModule() -> None:
    open_chain()


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
        "the name server refuses": "nameServer possible: Name server {server} refuses to answer.",
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
            with self.chain.under(*scenario.faults), another_network(), watching() as unknown:
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
            with self.chain.under(fault):
                self.assertEqual(
                    words(blame(watch)), f"nameServer possible: Name server {PROVIDERS_SERVER} refuses to answer."
                )
            watch.wait_for(lambda now: now["verdict"] is None, 2 * VERDICT_SECONDS, "no verdict any more")


if __name__ == "__main__":
    unittest.main()
