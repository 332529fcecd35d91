#!/usr/bin/python3
"""The chain from the command line: something is wrong in it while a command runs; ends with the command's status."""

from __future__ import annotations

import argparse
import contextlib
import os
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

from lab import LabError, Names  # noqa: E402
from lab.chain import HOST_NAME, Chain  # noqa: E402
from lab.network_service import NetworkService  # noqa: E402
from lab.scenarios import SCENARIOS  # noqa: E402
from lab.topology import ADDRESSES, HOST, NAME_SERVER  # noqa: E402


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        usage="tests/lab/run python3 tests/lab/play.py [--list] [--well-for S] SCENARIO -- COMMAND [ARGUMENT]...",
        description="Runs COMMAND at the client of the chain while SCENARIO holds. The host is "
        f"{HOST_NAME}: {' and '.join(ADDRESSES[HOST].values())}.",
    )
    parser.add_argument("--list", action="store_true", help="name the scenarios, and whose fault each is")
    parser.add_argument("--well-for", type=float, default=0.0, metavar="S", help="so many seconds nothing is wrong yet")
    parser.add_argument("scenario", nargs="?", metavar="SCENARIO")
    parser.add_argument("command", nargs="*", metavar="COMMAND")
    options = parser.parse_args()
    if not options.list and options.scenario not in {scenario.name for scenario in SCENARIOS}:
        parser.error(f"no such scenario: {options.scenario}; --list names them")
    return options


def play(name: str, command: list[str], well_for: float) -> int:
    scenario = next(scenario for scenario in SCENARIOS if scenario.name == name)
    environment = dict(os.environ)
    with contextlib.ExitStack() as stack:
        folder = stack.enter_context(tempfile.TemporaryDirectory())
        chain = stack.enter_context(Chain())
        if scenario.connectivity != "full":
            environment |= stack.enter_context(NetworkService(folder, scenario.connectivity)).environment
        names = Names(folder)
        names.write(order="files dns", name_servers=[ADDRESSES[NAME_SERVER][4]], patience=2)
        if well_for <= 0:
            chain.begin(*scenario.faults)
            return subprocess.run(names.prefix() + command, env=environment, check=False).returncode
        with subprocess.Popen(names.prefix() + command, env=environment) as running:
            try:
                running.wait(well_for)
            except subprocess.TimeoutExpired:
                chain.begin(*scenario.faults)
            return running.wait()


def main() -> int:
    options = parse_arguments()
    if options.list:
        for scenario in SCENARIOS:
            print(f"{scenario.name}: {', '.join(scenario.blames) or 'nobody'}")
        return 0
    try:
        return play(options.scenario, options.command, options.well_for)
    except LabError as error:
        print(f"play.py: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
