"""The smallest item that a panel shows: the tests of the harness itself use it in the place of the real program.

    scratch_item.py notifier    a StatusNotifierItem with a menu
    scratch_item.py tray        a window in the classic X11 tray

It writes one line on standard output for everything that it is asked to do.
"""

from __future__ import annotations

import struct
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

COLOR = 0xFFFF40C0
SIZE = 22
ITEM_PATH, MENU_PATH = "/StatusNotifierItem", "/Menu"
WATCHER = "org.kde.StatusNotifierWatcher"
MENU_ROWS = {1: "First row", 2: "Second row"}
XEMBED_DOCK = 0
BUTTONS = {1: "Activate", 2: "SecondaryActivate", 3: "ContextMenu"}

ITEM_XML = """<node><interface name="org.kde.StatusNotifierItem">
<property name="Category" type="s" access="read"/><property name="Id" type="s" access="read"/>
<property name="Title" type="s" access="read"/><property name="Status" type="s" access="read"/>
<property name="IconName" type="s" access="read"/><property name="IconPixmap" type="a(iiay)" access="read"/>
<property name="Menu" type="o" access="read"/><property name="ItemIsMenu" type="b" access="read"/>
<method name="Activate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="SecondaryActivate"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="ContextMenu"><arg type="i" direction="in"/><arg type="i" direction="in"/></method>
<method name="Scroll"><arg type="i" direction="in"/><arg type="s" direction="in"/></method>
</interface></node>"""

MENU_XML = """<node><interface name="com.canonical.dbusmenu">
<property name="Version" type="u" access="read"/><property name="Status" type="s" access="read"/>
<property name="TextDirection" type="s" access="read"/><property name="IconThemePath" type="as" access="read"/>
<method name="GetLayout"><arg type="i" direction="in"/><arg type="i" direction="in"/><arg type="as" direction="in"/>
<arg type="u" direction="out"/><arg type="(ia{sv}av)" direction="out"/></method>
<method name="GetGroupProperties"><arg type="ai" direction="in"/><arg type="as" direction="in"/>
<arg type="a(ia{sv})" direction="out"/></method>
<method name="Event"><arg type="i" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="in"/>
<arg type="u" direction="in"/></method>
<method name="EventGroup"><arg type="a(isvu)" direction="in"/><arg type="ai" direction="out"/></method>
<method name="AboutToShow"><arg type="i" direction="in"/><arg type="b" direction="out"/></method>
<method name="AboutToShowGroup"><arg type="ai" direction="in"/><arg type="ai" direction="out"/>
<arg type="ai" direction="out"/></method>
</interface></node>"""


def say(*words: object) -> None:
    print(*words, flush=True)


def pixmap() -> GLib.Variant:
    return GLib.Variant("a(iiay)", [(SIZE, SIZE, struct.pack(">I", COLOR) * SIZE * SIZE)])


ITEM_PROPERTIES = {
    "Category": GLib.Variant("s", "SystemServices"),
    "Id": GLib.Variant("s", "scratch"),
    "Title": GLib.Variant("s", "Scratch"),
    "Status": GLib.Variant("s", "Active"),
    "IconName": GLib.Variant("s", ""),
    "IconPixmap": pixmap(),
    "Menu": GLib.Variant("o", MENU_PATH),
    "ItemIsMenu": GLib.Variant("b", False),
}
MENU_PROPERTIES = {
    "Version": GLib.Variant("u", 3),
    "Status": GLib.Variant("s", "normal"),
    "TextDirection": GLib.Variant("s", "ltr"),
    "IconThemePath": GLib.Variant("as", []),
}


def row(identifier: int) -> tuple[int, dict[str, GLib.Variant], list[GLib.Variant]]:
    return identifier, {"label": GLib.Variant("s", MENU_ROWS[identifier])}, []


def menu_answer(method: str, arguments: tuple[object, ...]) -> GLib.Variant | None:
    if method == "GetLayout":
        rows = [GLib.Variant("(ia{sv}av)", row(identifier)) for identifier in MENU_ROWS]
        root = (0, {"children-display": GLib.Variant("s", "submenu")}, rows)
        return GLib.Variant("(u(ia{sv}av))", (1, root))
    if method == "GetGroupProperties":
        chosen = [identifier for identifier in arguments[0] if identifier in MENU_ROWS]
        return GLib.Variant("(a(ia{sv}))", ([row(identifier)[:2] for identifier in chosen],))
    if method == "AboutToShow":
        return GLib.Variant("(b)", (False,))
    if method == "AboutToShowGroup":
        return GLib.Variant("(aiai)", ([], []))
    return GLib.Variant("(ai)", ([],)) if method == "EventGroup" else None


def called(
    _connection: Gio.DBusConnection,
    _sender: str,
    path: str,
    _interface: str,
    method: str,
    parameters: GLib.Variant,
    invocation: Gio.DBusMethodInvocation,
) -> None:
    arguments = parameters.unpack()
    say(method, *arguments)
    invocation.return_value(menu_answer(method, arguments) if path == MENU_PATH else None)


def asked(_connection: Gio.DBusConnection, _sender: str, path: str, _interface: str, name: str) -> GLib.Variant:
    return (MENU_PROPERTIES if path == MENU_PATH else ITEM_PROPERTIES)[name]


def register(connection: Gio.DBusConnection, _name: str, _owner: str) -> None:
    connection.call(
        WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisterStatusNotifierItem",
        GLib.Variant("(s)", (connection.get_unique_name(),)), None, Gio.DBusCallFlags.NONE, -1, None,
        lambda *_: say("registered"),
    )  # fmt: skip


def run_notifier() -> None:
    connection = Gio.bus_get_sync(Gio.BusType.SESSION)
    for path, xml in ((ITEM_PATH, ITEM_XML), (MENU_PATH, MENU_XML)):
        interface = Gio.DBusNodeInfo.new_for_xml(xml).interfaces[0]
        connection.register_object(path, interface, called, asked, None)
    Gio.bus_watch_name_on_connection(connection, WATCHER, Gio.BusNameWatcherFlags.NONE, register, None)
    GLib.MainLoop().run()


def run_tray() -> None:
    from Xlib import X, display
    from Xlib.protocol import event

    server = display.Display()
    screen = server.screen()
    window = screen.root.create_window(
        0, 0, SIZE, SIZE, 0, screen.root_depth,
        background_pixel=COLOR & 0xFFFFFF, event_mask=X.ButtonPressMask | X.StructureNotifyMask,
    )  # fmt: skip
    window.change_property(server.intern_atom("_XEMBED_INFO"), server.intern_atom("_XEMBED_INFO"), 32, [0, 1])
    tray = server.get_selection_owner(server.intern_atom("_NET_SYSTEM_TRAY_S0"))
    opcode = server.intern_atom("_NET_SYSTEM_TRAY_OPCODE")
    data = (32, [X.CurrentTime, XEMBED_DOCK, window.id, 0, 0])
    tray.send_event(event.ClientMessage(window=tray, client_type=opcode, data=data))
    server.flush()
    while True:
        news = server.next_event()
        if news.type == X.ReparentNotify:
            say("registered")
        elif news.type == X.ButtonPress:
            say(BUTTONS.get(news.detail, "Scroll"), news.root_x, news.root_y)


if __name__ == "__main__":
    {"notifier": run_notifier, "tray": run_tray}[sys.argv[1]]()
