"""A pseudo-terminal with the program in it, read back as a screen."""

from __future__ import annotations

import fcntl
import os
import re
import select
import signal
import struct
import subprocess
import termios
import threading
import time
from collections.abc import Callable, Sequence

import pyte

from .watch import LIFETIME_SECONDS, PATIENCE_SECONDS, PROGRAM, Home

ENTER_ALTERNATE, LEAVE_ALTERNATE = b"\x1b[?1049h", b"\x1b[?1049l"
HIDE_CURSOR, SHOW_CURSOR = b"\x1b[?25l", b"\x1b[?25h"
# Any SGR sequence that sets a foreground or background color.
COLOR = re.compile(rb"\x1b\[(?:[0-9;:]*;)?(?:3[0-8]|4[0-8]|9[0-7]|10[0-7])(?:[;:][0-9;:]*)?m")


class Screen(pyte.Screen):
    """A screen that counts lines that ran over the right edge, and scrolling: a view drawn in place does neither.

    Moving a region inside the screen is a drawing optimization and does not count.
    """

    overflows = 0
    scrolls = 0

    def draw(self, data: str) -> None:
        for character in data:
            if self.cursor.x == self.columns and pyte.modes.DECAWM in self.mode:
                self.overflows += 1
            super().draw(character)

    def index(self) -> None:
        whole = self.margins is None or self.margins == (0, self.lines - 1)
        if whole and self.cursor.y == self.lines - 1:
            self.scrolls += 1
        super().index()


    def erase_in_display(self, how: int = 0, *arguments: object, **options: object) -> None:
        # A frame that was on its way while the window got smaller overflows it; the program then clears and redraws.
        if how == 2 or (how == 0 and (self.cursor.x, self.cursor.y) == (0, 0)):
            self.overflows = self.scrolls = 0
        super().erase_in_display(how, *arguments, **options)

    def scroll_up(self, count: int | None = None) -> None:
        """SU: as many new lines at the bottom of the scrolling region."""
        self._scroll(self._region()[1], super().index, count)

    def scroll_down(self, count: int | None = None) -> None:
        """SD: as many new lines at its top."""
        self._scroll(self._region()[0], super().reverse_index, count)

    def _region(self) -> tuple[int, int]:
        return self.margins or (0, self.lines - 1)

    def _scroll(self, row: int, move: Callable[[], None], count: int | None) -> None:
        before, self.cursor.y = self.cursor.y, row
        for _ in range(count or 1):
            move()
        self.cursor.y = before


class Stream(pyte.ByteStream):
    """Knows the scrolling that the terminals we claim to be offer, and that pyte leaves out."""

    csi = pyte.ByteStream.csi | {"S": "scroll_up", "T": "scroll_down"}
    events = pyte.ByteStream.events | {"scroll_up", "scroll_down"}


class Terminal:
    """The program in a terminal of its own, as the terminal's controlling session. Use it as a context manager."""

    def __init__(
        self,
        home: Home,
        *arguments: str,
        columns: int = 80,
        rows: int = 24,
        lifetime: int = LIFETIME_SECONDS,
        prefix: Sequence[str] = (),
        environment: dict[str, str] | None = None,
    ) -> None:
        self.screen = Screen(columns, rows)
        self.raw = b""
        self._stream = Stream(self.screen)
        self._lock = threading.Lock()
        self._master, self._slave = os.openpty()
        self._set_size(columns, rows)
        self.attributes_before = termios.tcgetattr(self._slave)
        self.process = subprocess.Popen(
            ["setsid", "--ctty", *prefix, PROGRAM, "--for", str(lifetime), *arguments],
            env=home.environment() | (environment or {}),
            cwd=home.path,
            stdin=self._slave,
            stdout=self._slave,
            stderr=self._slave,
        )
        self._stopping = False
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def __enter__(self) -> Terminal:
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        self._stopping = True
        self._reader.join(timeout=5)
        os.close(self._slave)
        os.close(self._master)

    def lines(self) -> list[str]:
        """The rows of the screen, without blanks at their ends."""
        with self._lock:
            return [row.rstrip() for row in self.screen.display]

    def text(self) -> str:
        return "\n".join(self.lines())

    def wait_for(self, condition: Callable[[str], object], within: float, what: str) -> str:
        """The screen's text as soon as the condition holds for it."""
        deadline = time.monotonic() + within + PATIENCE_SECONDS
        while True:
            text = self.text()
            if condition(text):
                return text
            if time.monotonic() > deadline:
                raise AssertionError(f"{what}: not seen on the screen:\n{text}")
            time.sleep(0.02)

    def type(self, keys: bytes) -> None:
        os.write(self._master, keys)

    def pause(self) -> None:
        """Holds up all output, as a user does with Ctrl-S."""
        self.type(b"\x13")
        deadline = time.monotonic() + PATIENCE_SECONDS
        while select.select([], [self._slave], [], 0)[1]:
            if time.monotonic() > deadline:
                raise AssertionError("the output goes on")
            time.sleep(0.01)

    def resize(self, columns: int, rows: int) -> None:
        """Gives the terminal another size; the kernel tells the program. What was drawn before is forgotten."""
        with self._lock:
            self.screen.resize(rows, columns)
            self.screen.reset()
            self.screen.overflows = self.screen.scrolls = 0
        self._set_size(columns, rows)

    def finish(self, number: int = signal.SIGTERM) -> int:
        self.process.send_signal(number)
        return self.wait()

    def wait(self, within: float = PATIENCE_SECONDS) -> int:
        """The exit status of a program that is about to end, with all of its output taken in."""
        try:
            status = self.process.wait(timeout=within)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"still running after {within} s") from None
        self._stopping = True
        self._reader.join(timeout=5)
        return status

    def attributes(self) -> list[object]:
        return termios.tcgetattr(self._slave)

    def is_blocking(self) -> bool:
        """Whether a write to the terminal waits until it takes the text. All programs that have it open share this."""
        return os.get_blocking(self._slave)

    def _set_size(self, columns: int, rows: int) -> None:
        fcntl.ioctl(self._master, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))

    def _read(self) -> None:
        # This side keeps the terminal's slave open, so there is no end of file: read until told to stop and empty.
        while True:
            readable, _, _ = select.select([self._master], [], [], 0.05)
            if not readable:
                if self._stopping:
                    return
                continue
            data = os.read(self._master, 65536)
            with self._lock:
                self.raw += data
                self._stream.feed(data)
