"""Whose fault the terminal program says it is, for faults of all kinds in a chain of routers."""

from __future__ import annotations

import unittest
from typing import ClassVar

from lab.scenarios import DEGRADED, DOWN, SCENARIOS

from . import judging
from .judging import Outcome

# They wait nearly all the time.
AT_A_TIME = 26
# Within this time of "down" someone is blamed, or of a slow or lossy connection it is said that it is not clear. Lines
# come once a second.
SECONDS_FROM_DOWN = 5 + 1
SECONDS_FROM_DEGRADED = 10 + 1


class EachFault(unittest.TestCase):
    """Over IPv4 and IPv6 in turn."""

    outcomes: ClassVar[list[Outcome]]

    @classmethod
    def setUpClass(cls) -> None:
        cases = [(one, one.versions[number % len(one.versions)]) for number, one in enumerate(SCENARIOS)]
        cls.outcomes = judging.judge_all(cases, AT_A_TIME)

    def test_is_named(self) -> None:
        for outcome in self.outcomes:
            if not outcome.scenario.is_by_chance:
                with self.subTest(str(outcome)):
                    self.assertTrue(outcome.is_allowed)

    def test_most_of_those_that_lose_by_chance_are_named(self) -> None:
        """With little luck a link looks well for half a minute: then another one may be blamed as possible."""
        by_chance = [one for one in self.outcomes if one.scenario.is_by_chance]
        right = [one for one in by_chance if one.is_allowed]
        self.assertGreater(len(right), len(by_chance) / 2, [str(one) for one in by_chance])

    def test_nobody_else_is_likely_at_any_time(self) -> None:
        for outcome in self.outcomes:
            with self.subTest(str(outcome)):
                self.assertEqual(outcome.wrong, [])

    def test_is_named_soon_after_down(self) -> None:
        down = [one for one in self.outcomes if one.scenario.trouble == DOWN and not one.scenario.unclear]
        self.assertTrue(down)
        for outcome in down:
            with self.subTest(str(outcome)):
                self.assertIsNotNone(outcome.seconds_from_down)
                self.assertLessEqual(outcome.seconds_from_down, SECONDS_FROM_DOWN)

    def test_something_is_said_soon_of_a_slow_or_lossy_connection(self) -> None:
        degraded = [one for one in self.outcomes if one.scenario.trouble == DEGRADED]
        self.assertTrue(degraded)
        for outcome in degraded:
            with self.subTest(str(outcome)):
                self.assertIsNotNone(outcome.seconds_from_degraded)
                self.assertLessEqual(outcome.seconds_from_degraded, SECONDS_FROM_DEGRADED)


if __name__ == "__main__":
    unittest.main()
