"""A virtual X display with a pointer and a keyboard."""

from __future__ import annotations

import contextlib
import os
import pathlib
import subprocess
from collections.abc import Sequence

from PIL import Image, ImageGrab
from Xlib import XK, X, Xatom, display, error
from Xlib.ext import randr, xtest
from Xlib.protocol import rq
from Xlib.xobject.drawable import Window

from endtoend.waiting import eventually

from .pictures import Rectangle
from .session import Session

LEFT, MIDDLE, RIGHT = 1, 2, 3
SCROLL_UP, SCROLL_DOWN = 4, 5
START_SECONDS = 20
ANSWER_SECONDS = 20
# Of displays that are tried.
FIRST_NUMBER, NUMBERS, ATTEMPTS = 100, 800, 50


def holds(lock: pathlib.Path, process: int) -> bool:
    try:
        return int(lock.read_text(encoding="ascii")) == process
    except (FileNotFoundError, ValueError):
        return False


class SetMonitor(rq.Request):
    """The library's own can't be sent."""

    _request = rq.Struct(
        rq.Card8("opcode"),
        rq.Opcode(43),
        rq.RequestLength(),
        rq.Window("window"),
        rq.Card32("name"),
        rq.Bool("primary"),
        rq.Bool("automatic"),
        rq.LengthOf("outputs", 2),
        rq.Int16("x"),
        rq.Int16("y"),
        rq.Card16("width"),
        rq.Card16("height"),
        rq.Card32("millimeters_wide"),
        rq.Card32("millimeters_high"),
        rq.List("outputs", rq.Card32Obj),
    )


class X11Screen:
    def __init__(self, session: Session, width: int = 1280, height: int = 800) -> None:
        self.area = Rectangle(0, 0, width, height)
        self.server, self.name = self._start_server(session, f"{width}x{height}x24")
        session.environment["DISPLAY"] = self.name
        self._display = self._connect()

    def _connect(self) -> display.Display:
        """The server's socket is there a moment before it takes connections."""

        def connected() -> display.Display | None:
            if self.server.poll() is not None:
                raise AssertionError(f"the display ended with {self.server.returncode}")
            with contextlib.suppress(error.DisplayConnectionError, error.ConnectionClosedError, OSError):
                return display.Display(self.name)
            return None

        return eventually(connected, START_SECONDS, "the display takes connections")

    @staticmethod
    def _start_server(session: Session, screen: str) -> tuple[subprocess.Popen[bytes], str]:
        """A server and the name of its display."""
        # Letting the server choose its number would make it ignore the locks, and with them the servers of
        # other network namespaces.
        first = FIRST_NUMBER + os.getpid() % NUMBERS
        for number in range(first, first + ATTEMPTS):
            socket = pathlib.Path(f"/tmp/.X11-unix/X{number}")
            if socket.exists():
                continue
            options = ["-screen", "0", screen, "-nolisten", "tcp", "-ac", "-noreset"]
            server = session.spawn("display", ["Xvfb", f":{number}", *options])
            lock = pathlib.Path(f"/tmp/.X{number}-lock")

            def is_decided(server: subprocess.Popen[bytes] = server, lock: pathlib.Path = lock) -> bool:
                return server.poll() is not None or holds(lock, server.pid)

            def is_open(server: subprocess.Popen[bytes] = server, socket: pathlib.Path = socket) -> bool:
                return server.poll() is not None or socket.exists()

            eventually(is_decided, START_SECONDS, "the display has its number")
            eventually(is_open, START_SECONDS, "the display has its socket")
            if server.poll() is None:
                return server, f":{number}"
        raise AssertionError(f"no display: {session.log('display')}")

    def close(self) -> None:
        try:
            self._display.close()
        except (OSError, error.ConnectionClosedError):
            pass  # The server was the first to go.
        # It takes its socket and its lock away.
        self.server.terminate()
        self.server.wait()

    def start_window_manager(self, session: Session, command: Sequence[str]) -> subprocess.Popen[bytes]:
        manager = session.spawn("window-manager", command)
        eventually(self.window_manager_is_there, START_SECONDS, "the window manager manages")
        return manager

    def window_manager_is_there(self) -> bool:
        check = self._display.intern_atom("_NET_SUPPORTING_WM_CHECK")
        return self._display.screen().root.get_full_property(check, X.AnyPropertyType) is not None

    def set_dots_per_inch(self, dots: int) -> None:
        """As users set them, for programs that are started afterwards."""
        self._display.screen().root.change_property(
            self._display.intern_atom("RESOURCE_MANAGER"), Xatom.STRING, 8, f"Xft.dpi:\t{dots}\n".encode()
        )
        self._display.sync()

    def set_monitors(self, *monitors: Rectangle) -> None:
        """Divides the screen. The first one is the primary monitor."""
        root = self._display.screen().root
        output = root.xrandr_get_screen_resources().outputs[0]
        for number, monitor in enumerate(monitors):
            SetMonitor(
                display=self._display.display,
                opcode=self._display.display.get_extension_major(randr.extname),
                window=root,
                name=self._display.intern_atom(f"MONITOR-{number}"),
                primary=number == 0,
                automatic=False,
                x=monitor.x,
                y=monitor.y,
                width=monitor.width,
                height=monitor.height,
                millimeters_wide=monitor.width * 254 // 960,
                millimeters_high=monitor.height * 254 // 960,
                outputs=[output] if number == 0 else [],
            )
        self._display.sync()

    def resize(self, width: int, height: int) -> None:
        """The screen's one monitor, to a size that is no larger than the first one."""
        root = self._display.screen().root
        mode = self._mode(width, height)
        resources = root.xrandr_get_screen_resources()
        crtc, output, changed_at = resources.crtcs[0], resources.outputs[0], resources.config_timestamp
        # It is switched off in between: it has to lie within the screen at all times.
        self._display.xrandr_set_crtc_config(crtc, changed_at, 0, 0, X.NONE, randr.Rotate_0, [])
        root.xrandr_set_screen_size(width, height, *(length * 254 // 960 for length in (width, height)))
        self._display.xrandr_set_crtc_config(crtc, changed_at, 0, 0, mode, randr.Rotate_0, [output])
        self._display.sync()

    def _mode(self, width: int, height: int) -> int:
        """The number of the monitor's mode with that size, which it is given if it has none."""
        root = self._display.screen().root
        resources = root.xrandr_get_screen_resources()
        for mode in resources.modes:
            if (mode.width, mode.height) == (width, height):
                return mode.id
        name = f"{width}x{height}"
        no_timings = (0,) * 8
        mode = root.xrandr_create_mode((0, width, height, *no_timings, len(name), 0), name).mode
        self._display.xrandr_add_output_mode(resources.outputs[0], mode)
        return mode

    def has_tray(self) -> bool:
        owner = self._display.get_selection_owner(self._display.intern_atom("_NET_SYSTEM_TRAY_S0"))
        return owner != X.NONE

    def screenshot(self) -> Image.Image:
        return ImageGrab.grab(xdisplay=self.name).convert("RGB")

    def move(self, x: int, y: int) -> None:
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()

    def click(self, x: int, y: int, button: int = LEFT) -> None:
        self.press(x, y, button)
        self.release(button)

    def press(self, x: int, y: int, button: int = LEFT) -> None:
        self.move(x, y)
        xtest.fake_input(self._display, X.ButtonPress, button)
        self._display.sync()

    def release(self, button: int = LEFT) -> None:
        xtest.fake_input(self._display, X.ButtonRelease, button)
        self._display.sync()

    def scroll(self, x: int, y: int, up: bool = True) -> None:
        self.click(x, y, SCROLL_UP if up else SCROLL_DOWN)

    def key(self, name: str, *modifiers: str) -> None:
        """Names as X gives them: "Escape", "Return", "Down", "q"; modifiers "Alt_L", "Control_L"."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(key)) for key in (*modifiers, name)]
        for code in codes:
            xtest.fake_input(self._display, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()

    def keyboard_is_free(self) -> bool:
        """Whether no program has grabbed the keyboard, as a window manager does while it moves a window."""
        root = self._display.screen().root
        if root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime) != X.GrabSuccess:
            return False
        self._display.ungrab_keyboard(X.CurrentTime)
        self._display.sync()
        return True

    def focused_title(self) -> str:
        """Of the window that has the keyboard."""
        focus = self._display.get_input_focus().focus
        try:
            # The keyboard may be with a child of the window that has the title.
            while isinstance(focus, Window):
                title = self._title(focus)
                if title:
                    return title
                focus = focus.query_tree().parent
        except error.XError:
            pass  # It went while it was looked at.
        return ""

    def clipboard(self) -> str:
        """What another program would paste."""
        root = self._display.screen().root
        window = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        try:
            names = (self._display.intern_atom(name) for name in ("CLIPBOARD", "UTF8_STRING", "PASTED"))
            clipboard, kind, place = names
            window.convert_selection(clipboard, kind, place, X.CurrentTime)
            eventually(self._is_answered, ANSWER_SECONDS, "the clipboard's owner answers")
            value = window.get_full_property(place, X.AnyPropertyType)
            return "" if value is None else value.value.decode()
        finally:
            window.destroy()

    def _is_answered(self) -> bool:
        """Reads the events that are here; true when one of them tells that a selection is there."""
        types = [self._display.next_event().type for _ in range(self._display.pending_events())]
        return X.SelectionNotify in types

    def give_keyboard(self, title: str) -> bool:
        """Gives the keyboard to the top window whose title begins so, where no window manager does; false without one."""
        for child in self._display.screen().root.query_tree().children:
            if self._title(child).startswith(title):
                child.set_input_focus(X.RevertToParent, X.CurrentTime)
                self._display.sync()
                return True
        return False

    def windows(self) -> list[tuple[str, Rectangle]]:
        """Title and place of all visible windows; those without a title have an empty one."""
        found: list[tuple[str, Rectangle]] = []
        root = self._display.screen().root
        self._collect(root, root, found)
        return found

    def _collect(self, window: Window, root: Window, found: list[tuple[str, Rectangle]]) -> None:
        try:
            children = window.query_tree().children
        except error.XError:
            return
        for child in children:
            try:
                if child.get_attributes().map_state != X.IsViewable:
                    continue
                geometry = child.get_geometry()
                corner = root.translate_coords(child, 0, 0)
                place = Rectangle(corner.x, corner.y, geometry.width, geometry.height)
                found.append((self._title(child), place))
            except error.XError:
                continue  # It went while it was looked at.
            self._collect(child, root, found)

    def _title(self, window: Window) -> str:
        for name in ("_NET_WM_NAME", "WM_NAME"):
            value = window.get_full_property(self._display.intern_atom(name), X.AnyPropertyType)
            if value is not None:
                return value.value.decode(errors="replace") if isinstance(value.value, bytes) else str(value.value)
        return ""
