"""A connection to a message bus, and a listener that writes down what passes on it."""

from __future__ import annotations

import dataclasses
import pathlib
import subprocess
import tempfile
from collections.abc import Sequence

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from endtoend.waiting import eventually  # noqa: E402

BUS = "org.freedesktop.DBus"
BUS_PATH = "/org/freedesktop/DBus"
CALL_TIMEOUT_MS = 5000

BusError = GLib.Error


class Bus:
    def __init__(self, address: str) -> None:
        self.address = address
        self._connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )
        self._connection.set_exit_on_close(False)

    def close(self) -> None:
        if not self._connection.is_closed():
            try:
                self._connection.close_sync(None)
            except BusError:
                pass  # The bus was the first to go.

    def call(
        self, name: str, path: str, interface: str, member: str, arguments: str = "()", values: Sequence[object] = ()
    ) -> tuple[object, ...]:
        """The answer, as Python values; BusError when there is none."""
        answer = self._connection.call_sync(
            name,
            path,
            interface,
            member,
            GLib.Variant(arguments, tuple(values)),
            None,
            Gio.DBusCallFlags.NONE,
            CALL_TIMEOUT_MS,
            None,
        )
        return answer.unpack()

    def property(self, name: str, path: str, interface: str, property_name: str) -> object:
        return self.call(name, path, f"{BUS}.Properties", "Get", "(ss)", (interface, property_name))[0]

    def properties(self, name: str, path: str, interface: str) -> dict[str, object]:
        return self.call(name, path, f"{BUS}.Properties", "GetAll", "(s)", (interface,))[0]

    def owner(self, name: str) -> str | None:
        try:
            return self.call(BUS, BUS_PATH, BUS, "GetNameOwner", "(s)", (name,))[0]
        except BusError:
            return None

    def process(self, name: str) -> int | None:
        """The process that owns a name."""
        try:
            return self.call(BUS, BUS_PATH, BUS, "GetConnectionUnixProcessID", "(s)", (name,))[0]
        except BusError:
            return None


@dataclasses.dataclass(frozen=True)
class Message:
    kind: str  # "sig", "mc" (a call), "mr" (an answer), "err"
    at: float  # wall clock
    sender: str
    destination: str
    interface: str
    member: str


class Listener:
    """Writes down every message that fits the rule, from the constructor on. Use it as a context manager."""

    def __init__(self, address: str, rule: str) -> None:
        self._folder = tempfile.TemporaryDirectory()
        self._file = pathlib.Path(self._folder.name) / "messages"
        with open(self._file, "wb") as file:
            self._process = subprocess.Popen(
                ["stdbuf", "-oL", "dbus-monitor", "--address", address, "--profile", rule], stdout=file
            )
        # A monitor gives up its own name: that is the first message that it hears.
        eventually(lambda: "NameLost" in self._file.read_text(), 10, "the listener listens")

    def __enter__(self) -> Listener:
        return self

    def __exit__(self, *_: object) -> None:
        self._process.kill()
        self._process.wait()
        self._folder.cleanup()

    def messages(self) -> list[Message]:
        found = []
        for line in self._file.read_text(encoding="utf-8").split("\n")[:-1]:
            fields = line.split("\t")
            if len(fields) == 8 and fields[0] in ("sig", "mc"):
                kind, at, _, sender, destination, _, interface, member = fields
                found.append(Message(kind, float(at), sender, destination, interface, member))
        return found
