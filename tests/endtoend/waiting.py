"""Waiting for a condition, with a bound."""

from __future__ import annotations

import time
from collections.abc import Callable
from typing import TypeVar

Result = TypeVar("Result")

POLL_SECONDS = 0.01


def eventually(condition: Callable[[], Result], timeout: float, what: str) -> Result:
    """The first true result of the condition; AssertionError saying what was missed when none comes in time."""
    deadline = time.monotonic() + timeout
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {timeout} s: {what}")
        time.sleep(POLL_SECONDS)


def never(condition: Callable[[], object], seconds: float) -> bool:
    """Whether a condition stays false for that time."""
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if condition():
            return False
        time.sleep(POLL_SECONDS)
    return True
