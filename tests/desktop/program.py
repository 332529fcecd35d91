"""The desktop program, started in a session."""

from __future__ import annotations

import json
import os
import pathlib
import shutil
import signal
import subprocess
from collections.abc import Sequence

from endtoend import built
from endtoend.waiting import eventually

from .item import Item
from .desktops import Desktop
from .pictures import Rectangle

PROGRAM = built.program("tarnwick", os.environ.get("TARNWICK"))
HOST = "127.0.0.1"
TITLE = "Tarnwick"
# As assistive technology and the windowing system know it.
APPLICATION = "tarnwick"
# For a machine that is busy with other things, and for sanitizers.
PATIENCE = 30
# Of a drop-down.
SMALLEST_HEIGHT = 100


def pings_sent() -> int:
    """By everything in this network namespace.

    The request that learns the path to a host on this machine counts as well, once after each start."""
    lines = pathlib.Path("/proc/net/snmp").read_text(encoding="ascii").splitlines()
    names, values = (line.split() for line in lines if line.startswith("Icmp:"))
    return int(values[names.index("OutEchos")])


class Program:
    """Running from the constructor on; `end` kills what is left of it."""

    def __init__(
        self, desktop: Desktop, prefix: Sequence[str] = (), options: Sequence[str] = (), **settings: object
    ) -> None:
        """`prefix` is a command that becomes the program, whose own command line follows."""
        self.desktop = desktop
        self.prefix = prefix
        self.session = desktop.session
        (self.session.logs / "program.log").unlink(missing_ok=True)
        arguments = list(options)
        for key, value in ({"Hostname": HOST, "PingInterval": 1} | settings).items():
            arguments += ["--set", f"{key}={value}"]
        self.process = self._spawn("program", arguments)

    def _spawn(self, log: str, arguments: Sequence[str]) -> subprocess.Popen[bytes]:
        return self.session.spawn(log, [*self.prefix, self.session.own_copy(PROGRAM), *arguments])

    def start_again(self, *arguments: str) -> int:
        """The exit status of a second program beside this one."""
        return self.start_beside(*arguments).wait(timeout=PATIENCE)

    def start_beside(self, *arguments: str) -> subprocess.Popen[bytes]:
        """A second program."""
        return self._spawn("second", arguments)

    def end(self) -> None:
        self.session.kill(self.process)

    @property
    def output(self) -> str:
        return self.session.log("program")

    def item(self) -> Item:
        """Once it is registered with the watcher."""

        def registered() -> Item | None:
            if self.process.poll() is not None:
                raise AssertionError(f"the program ended with {self.process.returncode}: {self.output}")
            return Item.of_process(self.desktop, self.process.pid)

        return eventually(registered, PATIENCE, "the item is registered")

    def item_up(self) -> Item:
        """Once the connection has been judged."""
        item = self.item()
        eventually(lambda: "Packet Loss: 0%" in "\n".join(item.tool_tip), PATIENCE, "a first verdict")
        return item

    def drop_down(self) -> Rectangle | None:
        """Where it is, if it is open."""
        for title, place in self.desktop.windows():
            # An icon in the classic tray is a window with this title, too.
            if title == TITLE and place.height > SMALLEST_HEIGHT:
                return place
        return None

    def exit_status(self) -> int:
        return self.process.wait(timeout=PATIENCE)

    def send(self, number: signal.Signals) -> None:
        self.process.send_signal(number)

    @property
    def _data(self) -> pathlib.Path:
        return self.session.data / "Tarnwick"

    def forget_statistics(self) -> None:
        """To be called when it has ended."""
        shutil.rmtree(self._data, ignore_errors=True)

    def saved_pings(self, host: str = HOST) -> int:
        """As the statistics file on disk has them; 0 without one."""
        file = self._data / "stats.json"
        if not file.exists():
            return 0
        return json.loads(file.read_text(encoding="utf-8"))[host]["sent"]
