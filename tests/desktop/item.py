"""A status item as a panel meets it on the bus."""

from __future__ import annotations

import dataclasses

from gi.repository import GLib

from .bus import Bus, BusError
from .desktops import Desktop

INTERFACE, MENU_INTERFACE = "org.kde.StatusNotifierItem", "com.canonical.dbusmenu"
USUAL_PATH = "/StatusNotifierItem"
ROOT, WHOLE_DEPTH = 0, -1


@dataclasses.dataclass(frozen=True)
class Row:
    id: int
    label: str
    enabled: bool
    visible: bool
    is_separator: bool


class Item:
    def __init__(self, bus: Bus, service: str, path: str) -> None:
        self.bus = bus
        self.service = service
        self.path = path

    @classmethod
    def of_process(cls, desktop: Desktop, process: int) -> Item | None:
        """The item that a process has registered with the watcher."""
        bus = desktop.session.bus
        for entry in desktop.watcher_property("RegisteredStatusNotifierItems") or ():
            service, slash, path = entry.replace("@", "").partition("/")
            if bus.process(service) == process:
                return cls(bus, service, slash + path or USUAL_PATH)
        return None

    def properties(self) -> dict[str, object]:
        return self.bus.properties(self.service, self.path, INTERFACE)

    @property
    def tool_tip(self) -> tuple[str, str]:
        """Title and text."""
        tip = self.bus.property(self.service, self.path, INTERFACE, "ToolTip")
        return tip[2], tip[3]

    @property
    def label(self) -> str:
        return self.bus.property(self.service, self.path, INTERFACE, "XAyatanaLabel")

    def is_there(self) -> bool:
        try:
            return bool(self.properties())
        except BusError:
            return False

    def rows(self) -> list[Row]:
        """The menu, from top to bottom."""
        arguments = (ROOT, WHOLE_DEPTH, [])
        _, (_, _, children) = self._menu("GetLayout", "(iias)", arguments)
        return [
            Row(
                id=identifier,
                label=properties.get("label", ""),
                enabled=properties.get("enabled", True),
                visible=properties.get("visible", True),
                is_separator=properties.get("type") == "separator",
            )
            for identifier, properties, _ in children
        ]

    def row(self, label: str) -> Row:
        for row in self.rows():
            # An underscore marks a mnemonic, a doubled one stands for itself.
            if row.label.replace("__", "\0").replace("_", "").replace("\0", "_") == label:
                return row
        raise AssertionError(f"no row {label!r} in {[row.label for row in self.rows()]}")

    def choose(self, row: Row) -> None:
        """As a panel tells of a click."""
        self._menu("Event", "(isvu)", (row.id, "clicked", GLib.Variant("i", 0), 0))

    def _menu(self, member: str, arguments: str, values: tuple[object, ...]) -> tuple[object, ...]:
        path = self.bus.property(self.service, self.path, INTERFACE, "Menu")
        return self.bus.call(self.service, path, MENU_INTERFACE, member, arguments, values)
