#!/usr/bin/python3
"""What the terminal program says of scenarios of the chain, each played in a laboratory of its own, many at a time."""

from __future__ import annotations

import argparse
import collections
import concurrent.futures
import contextlib
import dataclasses
import json
import pathlib
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable

TESTS = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TESTS))

from endtoend.watch import PATIENCE_SECONDS, Watch, new_home  # noqa: E402
from lab import LabError, Names  # noqa: E402
from lab.chain import HOST_NAME, Chain  # noqa: E402
from lab.network_service import NetworkService  # noqa: E402
from lab.scenarios import DEGRADED, DOWN, FOUND, NONE, SCENARIOS, UNCLEAR, Scenario, random_scenarios  # noqa: E402
from lab.topology import ADDRESSES, HOPS, HOST, NAME_SERVER  # noqa: E402

PROBES_TO_LEARN = 3 * len(HOPS)
# Then everything has been said: what is only possible is said later of a slow or lossy connection than of one that is down.
SECONDS_OF_FAULT = {NONE: 20, DOWN: 20, DEGRADED: 28}
LONGEST_SECONDS = 120
RANDOM_SEED = 15
# Of the program's lines, in the order of a saying.
KEYS = ("status", "bars", "verdict", "likelihood", "evidence")
# Lit, when the connection counts as bad.
BAD_BARS = 3


@dataclasses.dataclass(frozen=True)
class Saying:
    """What one line of the program said; `after` is the seconds since the fault began."""

    after: float
    status: str
    bars: int | None
    blame: str | None
    likelihood: str | None
    evidence: str | None


@dataclasses.dataclass(frozen=True)
class Outcome:
    scenario: Scenario
    version: int
    sayings: tuple[Saying, ...]

    @property
    def last(self) -> Saying:
        return self.sayings[-1]

    @property
    def is_right(self) -> bool:
        """Whether the truth was said in the end, or another blame that can't be told from it."""
        return self.last.blame in (self.scenario.blames or (None,))

    @property
    def is_allowed(self) -> bool:
        return self.scenario.allows(self.last.blame)

    @property
    def wrong(self) -> list[Saying]:
        """Wrong blames that were said, at any time, with high likelihood."""
        return [
            one for one in self.sayings
            if one.likelihood in ("likely", "certain") and one.blame != UNCLEAR and one.blame not in self.scenario.blames
        ]  # fmt: skip

    @property
    def seconds_from_down(self) -> float | None:
        """How long "down" was shown before someone was blamed; None when it never was, or nobody was."""
        return self._seconds_between(lambda one: one.status == "down", lambda one: one.blame not in (None, UNCLEAR))

    @property
    def seconds_from_degraded(self) -> float | None:
        """How long few bars were shown before anything was said, or how long the fault lasted until then when it took no
        bars; None when nothing was said."""
        has_few_bars = any((one.bars or 0) <= BAD_BARS for one in self.sayings)
        return self._seconds_between(
            lambda one: not has_few_bars or (one.bars or 0) <= BAD_BARS, lambda one: one.blame is not None
        )

    def _seconds_between(self, begin: Callable[[Saying], bool], end: Callable[[Saying], bool]) -> float | None:
        begun = next((one.after for one in self.sayings if begin(one)), None)
        ended = next((one.after for one in self.sayings if end(one)), None)
        return None if begun is None or ended is None else max(0.0, ended - begun)

    def __str__(self) -> str:
        said = f"{self.last.blame or 'nobody'} ({self.last.likelihood})" if self.last.blame else "nobody"
        return f"{self.scenario.name} (IPv{self.version}): {said}: {self.last.evidence}"


def scenario_named(name: str) -> Scenario:
    """One of the list or, as "SEED.INDEX: …", one drawn at random, with a circumstance as "SEED+INDEX: …"."""
    number = name.partition(":")[0]
    seed, mark, index = number.partition("+" if "+" in number else ".")
    if mark and seed.isdigit() and index.isdigit():
        return random_scenarios(int(index) + 1, int(seed), beside=mark == "+")[int(index)]
    return next(scenario for scenario in SCENARIOS if scenario.name == name)


def play(scenario: Scenario, version: int) -> list[Saying]:
    """Only inside the laboratory."""
    with contextlib.ExitStack() as stack:
        folder = stack.enter_context(tempfile.TemporaryDirectory())
        home, chain = stack.enter_context(new_home()), stack.enter_context(Chain())
        service = stack.enter_context(NetworkService(folder, scenario.connectivity))
        names = Names(folder)
        names.write(order="files dns", name_servers=[ADDRESSES[NAME_SERVER][4]], patience=2)
        is_by_name = scenario.lookup != FOUND
        if is_by_name:
            chain.begin(*scenario.faults)
        host = HOST_NAME if is_by_name else ADDRESSES[HOST][version]
        watch = stack.enter_context(Watch(home, host, prefix=names.prefix(), environment=service.environment))
        if not is_by_name:
            wait_until_learnt(chain)
            chain.begin(*scenario.faults)
        begun = time.monotonic()
        while time.monotonic() < begun + SECONDS_OF_FAULT[scenario.trouble]:
            watch.wait_for_lines(len(watch.values()) + 1)
        return [
            Saying(now["monotonic"] - begun, *(now[key] for key in KEYS))
            for now in watch.values() if now["monotonic"] > begun
        ]  # fmt: skip


def wait_until_learnt(chain: Chain, programs: int = 1) -> None:
    """By programs that were started a moment ago."""
    deadline = time.monotonic() + PROBES_TO_LEARN + PATIENCE_SECONDS
    while sum((one.hop_limit or 0) <= len(HOPS) for one in chain.sent("echo")) < programs * PROBES_TO_LEARN:
        if time.monotonic() > deadline:
            raise AssertionError("the path was not learnt")
        time.sleep(0.1)


def judge(scenario: Scenario, version: int) -> Outcome:
    """Plays it in a laboratory of its own. Takes a minute, nearly all of it waiting."""
    command = [TESTS / "lab/run", sys.executable, "-B", __file__, "--play", scenario.name, str(version)]
    done = subprocess.run(command, capture_output=True, text=True, timeout=LONGEST_SECONDS, check=False)
    if done.returncode != 0:
        raise AssertionError(f"{scenario.name}: {done.stderr}")
    return Outcome(scenario, version, tuple(Saying(*saying) for saying in json.loads(done.stdout)))


def judge_all(scenarios: list[tuple[Scenario, int]], at_a_time: int) -> list[Outcome]:
    with concurrent.futures.ThreadPoolExecutor(at_a_time) as pool:
        return list(pool.map(lambda one: judge(*one), scenarios))


def report(outcomes: list[Outcome]) -> str:
    """One line for each scenario that was not named rightly, and the figures of all."""
    counts = collections.Counter(
        "right" if one.is_right else "not clear" if one.is_allowed else "wrong" for one in outcomes
    )
    lines = [str(one) for one in outcomes if not one.is_right]
    lines += [f"{one}, but meanwhile {one.wrong[0]}" for one in outcomes if one.wrong]
    lines.append(
        f"{len(outcomes)} scenarios: {counts['right']} named rightly, {counts['not clear']} not clear, {counts['wrong']}"
        f" wrong; {sum(bool(one.wrong) for one in outcomes)} wrong with high likelihood"
    )
    for title, seconds in (
        ("from down to a blame", [one.seconds_from_down for one in outcomes if one.scenario.trouble == DOWN]),
        ("from degraded to a word", [one.seconds_from_degraded for one in outcomes if one.scenario.trouble == DEGRADED]),
    ):
        known = sorted(one for one in seconds if one is not None)
        if known:
            lines.append(f"seconds {title}: median {known[len(known) // 2]:.1f}, longest {known[-1]:.1f}")
    return "\n".join(lines)


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        usage="tests/endtoend/judging.py [--at-a-time N] [--random N [--seed N] [--beside]] [SCENARIO]...",
        description="Plays the scenarios named, all by default, and prints whose fault the program says that each is.",
    )
    parser.add_argument("--at-a-time", type=int, default=8, metavar="N", help="so many laboratories (8)")
    parser.add_argument("--random", type=int, default=0, metavar="N", help="so many scenarios drawn at random instead")
    parser.add_argument("--seed", type=int, default=RANDOM_SEED, metavar="N", help=f"for drawing ({RANDOM_SEED})")
    parser.add_argument("--beside", action="store_true", help="with something beside each that makes it harder to tell")
    parser.add_argument("--play", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("scenario", nargs="*", metavar="SCENARIO")
    return parser.parse_args()


def main() -> int:
    options = parse_arguments()
    if options.play:
        name, version = options.scenario
        try:
            print(json.dumps([dataclasses.astuple(one) for one in play(scenario_named(name), int(version))]))
        except (AssertionError, LabError) as error:
            print(error, file=sys.stderr)
            return 1
        return 0
    if options.random:
        scenarios = random_scenarios(options.random, options.seed, beside=options.beside)
    else:
        scenarios = [scenario_named(name) for name in options.scenario] or list(SCENARIOS)
    outcomes = judge_all([(one, version) for one in scenarios for version in one.versions], options.at_a_time)
    print(report(outcomes))
    return 0 if not any(one.wrong for one in outcomes) else 1


if __name__ == "__main__":
    sys.exit(main())
