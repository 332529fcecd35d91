"""Where the built programs are."""

from __future__ import annotations

import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
# What people run, else what developers build.
PRESETS = ("release", "debug")


def program(name: str, named: str | None = None) -> str:
    """The one named, else the first that is built. Ends Python where there is none."""
    candidates = [pathlib.Path(named).absolute()] if named else [ROOT / f"build/{preset}/app/{name}" for preset in PRESETS]
    for candidate in candidates:
        if os.access(candidate, os.X_OK):
            return str(candidate)
    sys.exit(f"{named or name} is not built: cmake --preset release && cmake --build --preset release")
