"""Commands that the documents tell to run."""

from __future__ import annotations

import os
import shlex
import subprocess
from typing import TYPE_CHECKING

from endtoend.built import ROOT

if TYPE_CHECKING:
    from collections.abc import Sequence


def output(command: Sequence[str | os.PathLike[str]], seconds: float = 60, status: int = 0, **environment: str) -> str:
    """What it prints and complains of, without a terminal. Raises an error that holds this when it ends otherwise."""
    done = subprocess.run(
        command,
        cwd=ROOT,
        env=os.environ | environment,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=seconds,
        check=False,
    )
    if done.returncode != status:
        raise AssertionError(f"{shlex.join(map(str, command))} exits with {done.returncode}:\n{done.stdout}")
    return done.stdout
