"""When the kernel sent and delivered packets on a device: true however late the laboratory itself comes to them."""

from __future__ import annotations

import errno
import socket
import struct
import time
from collections.abc import Iterator

_SO_TIMESTAMPNS = 35
_ANY_PROTOCOL = 0x0003  # ETH_P_ALL
# The system caps it at net.core.rmem_max: with the usual 212,992 bytes it holds some 500 small packets.
_BUFFER_BYTES = 4 << 20


def _wall_to_monotonic() -> float:
    """What to add to the wall clock's time. A thread switch between the readings would spoil it: the tightest of five."""
    readings = []
    for _ in range(5):
        before = time.monotonic()
        wall = time.time()
        after = time.monotonic()
        readings.append((after - before, (before + after) / 2 - wall))
    return min(readings)[1]


class Tap:
    """Sees a copy of every packet of the device, from the constructor on. Times are seconds of CLOCK_MONOTONIC."""

    def __init__(self, device: str) -> None:
        kind = socket.SOCK_DGRAM | socket.SOCK_NONBLOCK
        self._socket = socket.socket(socket.AF_PACKET, kind, socket.htons(_ANY_PROTOCOL))
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, _BUFFER_BYTES)
        self._socket.setsockopt(socket.SOL_SOCKET, _SO_TIMESTAMPNS, 1)
        self._socket.bind((device, _ANY_PROTOCOL))

    def fileno(self) -> int:
        return self._socket.fileno()

    def close(self) -> None:
        self._socket.close()

    def packets(self) -> Iterator[tuple[bool, float, bytes]]:
        """Whether the machine sent it (or received it), when, and the packet; all that are new, oldest first."""
        offset = _wall_to_monotonic()
        while True:
            try:
                raw, notes, _, address = self._socket.recvmsg(65536, 64)
            except (BlockingIOError, InterruptedError):
                return
            except OSError as error:
                if error.errno == errno.ENETDOWN:
                    continue  # Reading it has cleared the error; packets may lie behind it.
                raise
            seconds, nanoseconds = struct.unpack("qq", notes[0][2][:16])
            # The kernel stamps with the wall clock.
            at = seconds + nanoseconds * 1e-9 + offset
            yield address[2] == socket.PACKET_OUTGOING, at, raw
