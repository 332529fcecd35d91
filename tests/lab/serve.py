#!/usr/bin/python3
"""The laboratory from the command line: serves its addresses while a command runs, and ends with its status."""

from __future__ import annotations

import argparse
import pathlib
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

from lab import SILENT, Behavior, Lab, LabError, Names  # noqa: E402

STEADY = ("10.77.0.10", "fd77::10")
QUIET = ("10.77.0.12", "fd77::12")
HOSTS = {
    "steady.lab": STEADY,
    "steady4.lab": STEADY[:1],
    "steady6.lab": STEADY[1:],
    "silent.lab": QUIET,
    "failover.lab": ("10.77.0.12", "10.77.0.10"),
}


def parse_arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(
        usage="tests/lab/run python3 tests/lab/serve.py [OPTION]... -- COMMAND [ARGUMENT]...",
        description="Runs COMMAND in a network where %s (steady.lab) answer as the options say and %s (silent.lab) "
        "never do." % (" and ".join(STEADY), " and ".join(QUIET)),
    )
    parser.add_argument("--delay", type=float, default=0.0, metavar="MS", help="hold answers back")
    parser.add_argument("--jitter", type=float, default=0.0, metavar="MS", help="add up to this much at random")
    parser.add_argument("--loss", type=float, default=0.0, metavar="PERCENT", help="lose this share at random")
    parser.add_argument("--copies", type=int, default=1, metavar="N", help="send every reply N times")
    parser.add_argument("--seed", type=int, default=1, help="start of the random numbers")
    parser.add_argument("command", nargs="+", metavar="COMMAND")
    return parser.parse_args()


def main() -> int:
    options = parse_arguments()
    behavior = Behavior(
        delay_ms=options.delay,
        jitter_ms=options.jitter,
        lose_fraction=options.loss / 100,
        copies=options.copies,
    )
    try:
        with tempfile.TemporaryDirectory() as folder, Lab(options.seed) as lab:
            names = Names(folder)
            names.write(hosts=HOSTS)
            for address in STEADY:
                lab.behave(address, behavior)
            for address in QUIET:
                lab.behave(address, SILENT)
            return subprocess.run(names.prefix() + options.command, check=False).returncode
    except LabError as error:
        print(f"serve.py: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
