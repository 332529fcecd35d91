"""A virtual pointer and keyboard for a Wayland compositor without devices, spoken on the wire."""

from __future__ import annotations

import array
import socket
import struct
import tempfile
import time

# Of the evdev protocol.
BUTTONS = {1: 0x110, 2: 0x112, 3: 0x111}
LETTERS = {"qwertyuiop": 16, "asdfghjkl": 30, "zxcvbnm": 44}
KEYS = {
    "Escape": 1, "Tab": 15, "Return": 28, "Control_L": 29, "Shift_L": 42, "comma": 51, "Alt_L": 56, "space": 57,
    "Home": 102, "Up": 103, "Left": 105, "Right": 106, "End": 107, "Down": 108,
} | {letter: first + index for row, first in LETTERS.items() for index, letter in enumerate(row)}  # fmt: skip
MODIFIER_BITS = {"Shift_L": 1, "Control_L": 4, "Alt_L": 8}
KEYMAP = """xkb_keymap {
    xkb_keycodes { include "evdev+aliases(qwerty)" };
    xkb_types { include "complete" };
    xkb_compat { include "complete" };
    xkb_symbols { include "pc+us+inet(evdev)" };
};
"""
DISPLAY, REGISTRY = 1, 2
SCROLL_STEP = 15
FIXED_POINT = 256  # wl_fixed_t counts in 256ths
TIMEOUT_SECONDS = 20
VERTICAL, RELEASED, PRESSED, WHEEL = 0, 0, 1, 0


def text(value: str) -> bytes:
    data = value.encode() + b"\0"
    return struct.pack("<I", len(data)) + data + b"\0" * (-len(data) % 4)


class Devices:
    """Every method returns after the compositor has seen what was sent."""

    def __init__(self, path: str, width: int, height: int) -> None:
        self._size = (width, height)
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(TIMEOUT_SECONDS)
        try:
            self._socket.connect(path)
        except OSError:
            self._socket.close()
            raise
        self._last_id = REGISTRY
        self._received = b""
        self._globals: dict[str, int] = {}
        self._send(DISPLAY, 1, struct.pack("<I", REGISTRY))
        self._round_trip()
        seat = self._bind("wl_seat")
        self._pointer = self._device("zwlr_virtual_pointer_manager_v1", seat)
        self._keyboard = self._device("zwp_virtual_keyboard_manager_v1", seat)
        self._send_keymap()
        self._round_trip()

    def close(self) -> None:
        self._socket.close()

    def move(self, x: int, y: int) -> None:
        self._send(self._pointer, 1, struct.pack("<IIIII", self._time(), x, y, *self._size))
        self._frame()

    def click(self, x: int, y: int, button: int = 1) -> None:
        self.move(x, y)
        for state in (PRESSED, RELEASED):
            self._send(self._pointer, 2, struct.pack("<III", self._time(), BUTTONS[button], state))
            self._frame()

    def scroll(self, x: int, y: int, up: bool = True) -> None:
        self.move(x, y)
        steps = -1 if up else 1
        self._send(self._pointer, 5, struct.pack("<I", WHEEL))
        distance = steps * SCROLL_STEP * FIXED_POINT
        self._send(self._pointer, 7, struct.pack("<IIii", self._time(), VERTICAL, distance, steps))
        self._frame()

    def key(self, name: str, *modifiers: str) -> None:
        held = sum(MODIFIER_BITS[modifier] for modifier in modifiers)
        self._send(self._keyboard, 2, struct.pack("<IIII", held, 0, 0, 0))
        for state in (PRESSED, RELEASED):
            self._send(self._keyboard, 1, struct.pack("<III", self._time(), KEYS[name], state))
        self._send(self._keyboard, 2, struct.pack("<IIII", 0, 0, 0, 0))
        self._round_trip()

    @staticmethod
    def _time() -> int:
        return int(time.monotonic() * 1000) & 0xFFFFFFFF

    def _new_id(self) -> int:
        self._last_id += 1
        return self._last_id

    def _send(self, target: int, opcode: int, arguments: bytes = b"") -> None:
        self._socket.sendall(struct.pack("<II", target, (8 + len(arguments)) << 16 | opcode) + arguments)

    def _frame(self) -> None:
        self._send(self._pointer, 4)
        self._round_trip()

    def _bind(self, interface: str) -> int:
        bound = self._new_id()
        name = struct.pack("<I", self._globals[interface])
        self._send(REGISTRY, 0, name + text(interface) + struct.pack("<II", 1, bound))
        return bound

    def _device(self, manager_interface: str, seat: int) -> int:
        manager = self._bind(manager_interface)
        device = self._new_id()
        self._send(manager, 0, struct.pack("<II", seat, device))
        return device

    def _send_keymap(self) -> None:
        data = KEYMAP.encode() + b"\0"
        with tempfile.TemporaryFile() as file:
            file.write(data)
            file.flush()
            message = struct.pack("<IIII", self._keyboard, 16 << 16, 1, len(data))
            descriptors = array.array("i", [file.fileno()])
            self._socket.sendmsg([message], [(socket.SOL_SOCKET, socket.SCM_RIGHTS, descriptors)])

    def _round_trip(self) -> None:
        callback = self._new_id()
        self._send(DISPLAY, 0, struct.pack("<I", callback))
        while not self._event_came(callback):
            data = self._socket.recv(65536)
            if not data:
                raise AssertionError("the compositor has gone")
            self._received += data

    def _event_came(self, callback: int) -> bool:
        """Reads the events that are here; true when this callback's was among them."""
        came = False
        while len(self._received) >= 8:
            sender, word = struct.unpack_from("<II", self._received)
            size, opcode = word >> 16, word & 0xFFFF
            if len(self._received) < size:
                break
            arguments, self._received = self._received[8:size], self._received[size:]
            if (sender, opcode) == (DISPLAY, 0):
                raise AssertionError(f"the compositor refuses: {arguments[12:]!r}")
            if (sender, opcode) == (REGISTRY, 0):
                name, length = struct.unpack_from("<II", arguments)
                self._globals[arguments[8 : 8 + length - 1].decode()] = name
            came = came or sender == callback
        return came
