"""Pages of reports on histories as people have them."""

from __future__ import annotations

import os
import pathlib
import subprocess

BUILD = pathlib.Path(os.environ.get("TARNWICK_BUILD") or pathlib.Path(__file__).parents[2] / "build/debug")
NAMES = {"quiet-week", "bad-week", "terrible-week", "one-day", "ten-minutes", "ninety-days", "two-years", "empty"}


def write(folder: str) -> dict[str, pathlib.Path]:
    """The page of each sample by its name."""
    subprocess.run([BUILD / "tests/app/tarnwick-report-samples", folder], check=True, timeout=120)
    return {page.stem: page for page in pathlib.Path(folder).glob("*.html")}
