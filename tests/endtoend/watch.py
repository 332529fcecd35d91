"""Starts the terminal program in folders of its own and follows what it prints."""

from __future__ import annotations

import contextlib
import dataclasses
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import threading
import time
from collections.abc import Callable, Iterator, Sequence

from . import built

PROGRAM = built.program("tarnwick-watch", os.environ.get("TARNWICK_WATCH"))
# Every program is told to end after this, so that none outlives an interrupted test run.
LIFETIME_SECONDS = 100
# Added to what a wait should take, for a machine that is busy with other things.
PATIENCE_SECONDS = 10


class Home:
    """A home folder with nothing in it but what the test puts there."""

    def __init__(self, path: str) -> None:
        self.path = pathlib.Path(path)
        self.config = self.path / "config"
        self.data = self.path / "data"
        self.state = self.path / "state"
        self.journal_file = self.state / "Tarnwick" / "journal.sqlite"
        self.settings_file = self.config / "Tarnwick" / "settings.json"
        self.stats_file = self.data / "Tarnwick" / "stats.json"
        self.lock_file = self.data / "Tarnwick" / "stats.json.lock"

    def environment(self) -> dict[str, str]:
        kept = {name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS") if name in os.environ}
        return kept | {
            "HOME": str(self.path),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_DATA_HOME": str(self.data),
            "XDG_STATE_HOME": str(self.state),
            # Nothing of this machine's own may be reached.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.path}/no-bus",
            "LC_ALL": "C.UTF-8",
            "TERM": "screen-256color",
        }

    def write_settings(self, text: str) -> None:
        self.settings_file.parent.mkdir(parents=True, exist_ok=True)
        self.settings_file.write_text(text, encoding="utf-8")

    def write_stats(self, text: str) -> None:
        self.stats_file.parent.mkdir(parents=True, exist_ok=True)
        self.stats_file.write_text(text, encoding="utf-8")

    def stats(self) -> dict[str, dict[str, float]]:
        """The statistics on disk, by host."""
        return json.loads(self.stats_file.read_text(encoding="utf-8"))

    def files(self, below: str = "") -> list[str]:
        """Everything below the home folder that is not a folder; only what begins with `below`."""
        files = sorted(str(path.relative_to(self.path)) for path in self.path.rglob("*") if not path.is_dir())
        return [file for file in files if file.startswith(below)]


@contextlib.contextmanager
def new_home() -> Iterator[Home]:
    with tempfile.TemporaryDirectory(prefix="tarnwick-test-", ignore_cleanup_errors=True) as path:
        yield Home(path)


@dataclasses.dataclass(frozen=True)
class Line:
    """One line of output, with the time at which it arrived."""

    at: float
    text: str

    @property
    def values(self) -> dict[str, object]:
        return json.loads(self.text)


class Watch:
    """A running program whose output is read as it comes. Use it as a context manager: at its end it is killed."""

    def __init__(
        self,
        home: Home,
        *arguments: str,
        as_json: bool = True,
        prefix: Sequence[str] = (),
        environment: dict[str, str] | None = None,
        lifetime: float = LIFETIME_SECONDS,
    ) -> None:
        options = (["--json"] if as_json else []) + ["--for", str(lifetime)]
        self.lines: list[Line] = []
        self._news = threading.Condition()
        self._ended = False
        self._errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen(
            [*prefix, PROGRAM, *options, *arguments],
            env=home.environment() | (environment or {}),
            cwd=home.path,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=self._errors,
        )
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def __enter__(self) -> Watch:
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._reader.join(timeout=5)
        if not self._reader.is_alive():
            self.process.stdout.close()
        self._errors.close()

    @property
    def pid(self) -> int:
        return self.process.pid

    @property
    def latest(self) -> dict[str, object]:
        with self._news:
            return self.lines[-1].values

    def values(self) -> list[dict[str, object]]:
        """All JSON objects printed so far."""
        with self._news:
            return [line.values for line in self.lines]

    def wait_for(
        self, condition: Callable[[dict[str, object]], object], within: float, what: str
    ) -> dict[str, object]:
        """The first JSON object, from the latest one on, for which the condition holds."""
        deadline = time.monotonic() + within + PATIENCE_SECONDS
        with self._news:
            index = max(0, len(self.lines) - 1)
            while True:
                for line in self.lines[index:]:
                    if condition(line.values):
                        return line.values
                index = len(self.lines)
                if self._ended or not self._news.wait(deadline - time.monotonic()):
                    raise AssertionError(f"{what}: not seen; last line: {self._last_text()}; {self.errors()}")

    def wait_for_lines(self, count: int) -> list[Line]:
        """Waits until this many lines were printed altogether, one a second, and gives them all."""
        deadline = time.monotonic() + count + PATIENCE_SECONDS
        with self._news:
            while len(self.lines) < count:
                if self._ended or not self._news.wait(deadline - time.monotonic()):
                    raise AssertionError(f"{len(self.lines)} of {count} lines; {self.errors()}")
            return list(self.lines)

    def finish(self, number: int = signal.SIGTERM, within: float = PATIENCE_SECONDS) -> int:
        """Sends the signal and gives the exit status; fails when the program does not end in time."""
        self.process.send_signal(number)
        return self.wait(within)

    def wait(self, within: float) -> int:
        """The exit status of a program that is about to end; all of its output has been read then."""
        try:
            status = self.process.wait(timeout=within)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"still running after {within} s") from None
        self._reader.join(timeout=5)
        return status

    def errors(self) -> str:
        """What the program has written to standard error so far."""
        return os.pread(self._errors.fileno(), 1 << 20, 0).decode(errors="replace")

    def _last_text(self) -> str:
        return self.lines[-1].text if self.lines else "none"

    def _read(self) -> None:
        for raw in self.process.stdout:
            line = Line(time.monotonic(), raw.decode("utf-8").rstrip("\n"))
            with self._news:
                self.lines.append(line)
                self._news.notify_all()
        with self._news:
            self._ended = True
            self._news.notify_all()


def run(
    home: Home, *arguments: str, environment: dict[str, str] | None = None, within: float = 15.0
) -> subprocess.CompletedProcess[str]:
    """Runs the program to its end."""
    return subprocess.run(
        [PROGRAM, *arguments],
        env=home.environment() | (environment or {}),
        cwd=home.path,
        stdin=subprocess.DEVNULL,
        capture_output=True,
        encoding="utf-8",
        timeout=within,
        check=False,
    )


def settings(**values: object) -> list[str]:
    """`--set KEY=VALUE` for each setting named."""
    return [word for key, value in values.items() for word in ("--set", f"{key}={value}")]
