"""The scenarios: each has the effect on pings and lookups that it names, and all of them make sense."""

from __future__ import annotations

import collections
import pathlib
import socket
import subprocess
import sys
import time
import unittest

from . import faults, packets, scenarios
from .chain import Chain
from .chain_case import DELIVERY_SECONDS, REPLY, InTheChain, ask, code_of, open_chain, wait_until
from .prober import PATIENCE_SECONDS
from .topology import ADDRESSES, HOST, NAME_SERVER

chain: Chain


def setUpModule() -> None:
    global chain
    chain = open_chain()


class Scenarios(InTheChain):
    PINGS = 16

    def test_each_has_the_effect_that_it_names(self) -> None:
        for scenario in scenarios.SCENARIOS:
            if self.version in scenario.versions:
                with self.subTest(scenario.name):
                    self.assert_effect(scenario)

    def test_so_have_those_drawn_at_random(self) -> None:
        for scenario in scenarios.random_scenarios(30, seed=15):
            if self.version in scenario.versions:
                with self.subTest(scenario.name, faults=scenario.faults):
                    self.assert_effect(scenario)

    def assert_effect(self, scenario: scenarios.Scenario) -> None:
        with chain.under(*scenario.faults):
            shape = next((fault for fault in scenario.faults if isinstance(fault, faults.Shape)), None)
            if shape:
                wait_until(lambda: chain.losses(shape), "the queue runs over")
            begun = time.monotonic()
            sequences = [self.sent_or_none() for _ in range(self.PINGS)]
            self.assertEqual(self.trouble(sequences, begun), scenario.trouble)
            if scenario.lookup != scenarios.FOUND:
                self.assertEqual(self.lookup(), scenario.lookup)
        self.wait_until_well()

    def sent_or_none(self) -> int | None:
        try:
            return self.prober.send()
        except OSError:
            return None

    def trouble(self, sequences: list[int | None], begun: float) -> str:
        """What the pings met with."""
        sent = [sequence for sequence in sequences if sequence is not None]

        def is_over() -> bool:
            answers = [self.prober.answer_to(sequence) for sequence in sent]
            lost = [loss for loss in chain.losses(since=begun) if loss.packet and self.is_ping(loss.packet)]
            return len([one for one in answers if one]) + len(lost) >= len(sent)

        deadline = time.monotonic() + 0.3
        while not is_over() and (time.monotonic() < deadline or self.is_under_way()):
            time.sleep(0.005)
        replies = [
            answer for sequence in sent
            if (answer := self.prober.answer_to(sequence)) and answer.kind == REPLY[self.version]
        ]  # fmt: skip
        if not replies:
            return scenarios.DOWN
        # What the links held: a busy machine adds to it.
        held: collections.Counter[int] = collections.Counter()
        for one in chain.crossings(since=begun):
            if echo := packets.parse_echo_request(one.packet) or packets.parse_echo_reply(one.packet):
                held[echo.sequence] += one.due - one.at
        slow = [one for one in replies if held[one.sequence] * 1000 > scenarios.SLOW_MS]
        return scenarios.DEGRADED if slow or len(replies) < len(sequences) else scenarios.NONE

    @staticmethod
    def is_ping(packet: packets.Packet) -> bool:
        return packets.parse_echo_request(packet) is not None or packets.parse_echo_reply(packet) is not None

    def is_under_way(self) -> bool:
        """Whether a link still holds one of the pings, or did so a moment ago."""
        recently = time.monotonic() - DELIVERY_SECONDS
        return any(one.due > recently and self.is_ping(one.packet) for one in chain.crossings())

    def lookup(self) -> str:
        begun = time.monotonic()
        response = ask(self.address(NAME_SERVER), patience=0.1)
        if response is None and any(
            isinstance(fault, faults.NameAnswers) and fault.delay_ms > scenarios.LATE_MS for fault in chain.faults
        ):
            response = ask(self.address(NAME_SERVER))
            self.assertGreaterEqual(1000 * (time.monotonic() - begun), scenarios.LATE_MS)
            return scenarios.LATE
        if response is None or code_of(response):
            return scenarios.MISSING
        right = response.endswith(socket.inet_aton(ADDRESSES[HOST][4]))
        return scenarios.FOUND if right else scenarios.WRONG


class ScenariosOverIPv4(Scenarios):
    version = 4


class ScenariosOverIPv6(Scenarios):
    version = 6


# What both have in common is no test of its own.
del InTheChain, Scenarios


class TheScenarios(unittest.TestCase):
    def test_there_are_enough_and_each_has_a_name_of_its_own(self) -> None:
        names = [scenario.name for scenario in scenarios.SCENARIOS]
        self.assertGreaterEqual(len(names), 30)
        self.assertEqual(len(names), len(set(names)))

    def test_all_blames_are_known_and_all_but_unclear_occur(self) -> None:
        named = {blame for scenario in scenarios.SCENARIOS for blame in scenario.blames}
        self.assertEqual(named, set(scenarios.BLAMES) - {scenarios.UNCLEAR})

    def test_whoever_is_blamed_something_is_wrong(self) -> None:
        for scenario in (*scenarios.SCENARIOS, *scenarios.random_scenarios(200, seed=3)):
            well = scenario.trouble == scenarios.NONE and scenario.lookup == scenarios.FOUND
            self.assertEqual(well, not scenario.blames, scenario.name)
            self.assertEqual(scenario.allows(None), well)
            self.assertEqual(scenario.allows(scenarios.UNCLEAR), scenario.unclear)

    def test_the_same_seed_draws_the_same_scenarios_with_one_fault_each(self) -> None:
        drawn = scenarios.random_scenarios(200, seed=7)

        self.assertEqual(drawn, scenarios.random_scenarios(200, seed=7))
        self.assertNotEqual(drawn, scenarios.random_scenarios(200, seed=8))
        self.assertEqual({len(scenario.faults) for scenario in drawn}, {1})
        self.assertGreaterEqual(len({scenario.blames for scenario in drawn}), 6)
        self.assertGreater(len({scenario.faults for scenario in drawn}), 60)

    def test_beside_the_same_faults_there_is_something_else(self) -> None:
        alone = scenarios.random_scenarios(200, seed=7)
        beside = scenarios.random_scenarios(200, seed=7, beside=True)

        circumstances = collections.Counter(type(one.faults[0]) for one in beside if len(one.faults) == 2)
        self.assertEqual(set(circumstances), {faults.Load, faults.Renumbered})
        self.assertGreater(min(circumstances.values()), 60)
        self.assertEqual([one.faults[-1:] for one in beside], [one.faults for one in alone])
        self.assertEqual([one.blames for one in beside], [one.blames for one in alone])
        self.assertFalse({one.name for one in beside} & {one.name for one in alone})


class Play(unittest.TestCase):
    FOLDER = pathlib.Path(__file__).resolve().parent.parent

    SCENARIO = "the name server names another address"
    LOOK_UP = "socket.getaddrinfo('host.test', 0, socket.AF_INET)[0][4][0]"

    def play(self, code: str, *options: str) -> subprocess.CompletedProcess[str]:
        """Plays the scenario to Python code, in a namespace in the namespace."""
        enter = 'export TARNWICK_LAB_NAMESPACE=$(readlink /proc/self/ns/net); exec "$@"'
        command = [sys.executable, "-B", "lab/play.py", *options, self.SCENARIO, "--", sys.executable, "-c", code]
        return subprocess.run(
            ["unshare", "--net", "sh", "-c", enter, "sh", *command],
            cwd=self.FOLDER, capture_output=True, text=True, timeout=30, check=False,
        )  # fmt: skip

    def test_a_scenario_can_be_played_to_a_command(self) -> None:
        done = self.play(f"import socket, sys; print({self.LOOK_UP}); sys.exit(3)")

        self.assertEqual((done.stdout, done.returncode), ("192.0.2.66\n", 3), done.stderr)

    def test_all_is_well_for_as_long_as_was_asked(self) -> None:
        done = self.play(f"import socket; print({self.LOOK_UP})", "--well-for", "1000")

        self.assertEqual((done.stdout, done.returncode), ("203.0.113.9\n", 0), done.stderr)

    def test_all_is_well_no_longer(self) -> None:
        code = f"""
import socket, time
deadline = time.monotonic() + {PATIENCE_SECONDS}
while (found := {self.LOOK_UP}) == "203.0.113.9" and time.monotonic() < deadline:
    pass
print(found)
"""
        done = self.play(code, "--well-for", "0.3")

        self.assertEqual((done.stdout, done.returncode), ("192.0.2.66\n", 0), done.stderr)


if __name__ == "__main__":
    unittest.main()
