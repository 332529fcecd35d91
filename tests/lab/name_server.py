"""A name server of the chain: reads a query, and builds the answer that it was told to give."""

from __future__ import annotations

import dataclasses
import functools
import ipaddress
import socket
import struct
import time

from .faults import NameAnswers
from .wires import Wires

PORT = 53
TYPES = {"A": 1, "AAAA": 28}
_RESPONSE_BITS = 0x8180  # a response; recursion was desired and is available
_CODES = {"right": 0, "failure": 2, "no-such-name": 3, "refused": 5}
_WRONG_ADDRESS = {1: "192.0.2.66", 28: "2001:db8:0:1::66"}
_WRONG_NAME = b"\5wrong\4test\0"
_SECONDS_TO_LIVE = 1
_IP_TRANSPARENT = 19
_IPV6_TRANSPARENT = 75
_IP_PKTINFO = 8


@dataclasses.dataclass(frozen=True)
class Query:
    """A question that came, and when (CLOCK_MONOTONIC); `server` is the address that was asked."""

    at: float
    server: str
    name: str
    kind: int
    identifier: int


def parse_query(message: bytes) -> tuple[int, str, int, bytes] | None:
    """The identifier, name and kind of a query's one question, and the question itself; None for anything else."""
    if len(message) < 17:
        return None
    identifier, flags, questions = struct.unpack_from("!HHH", message)
    if flags & 0x8000 or questions != 1:
        return None
    labels, offset = [], 12
    while offset < len(message) and message[offset]:
        labels.append(message[offset + 1 : offset + 1 + message[offset]].decode("ascii", "replace"))
        offset += 1 + message[offset]
    if len(message) < offset + 5:
        return None
    kind = struct.unpack_from("!H", message, offset + 1)[0]
    return identifier, ".".join(labels).lower(), kind, message[12 : offset + 5]


def build_response(message: bytes, names: dict[str, tuple[str, ...]], answer: str) -> bytes | None:
    """What a server answers; None when nothing."""
    query = parse_query(message)
    if query is None or answer == "silent":
        return None
    identifier, name, kind, question = query
    version = {1: 4, 28: 6}.get(kind)
    addresses = [one for one in names.get(name, ()) if ipaddress.ip_address(one).version == version]
    code = _CODES.get(answer, 0)
    if name not in names and code == 0:
        code = _CODES["no-such-name"]
    if code:
        addresses = []
    elif answer == "wrong-address" and addresses:
        addresses = [_WRONG_ADDRESS[kind]]
    if answer == "wrong-name":
        question = _WRONG_NAME + question[-4:]
    if answer == "wrong-identifier":
        identifier ^= 0x5555
    records = b"".join(
        struct.pack("!HHHIH", 0xC00C, kind, 1, _SECONDS_TO_LIVE, len(packed)) + packed
        for packed in (ipaddress.ip_address(one).packed for one in addresses)
    )
    return struct.pack("!HHHHHH", identifier, _RESPONSE_BITS | code, 1, len(addresses), 0, 0) + question + records


def open_sockets() -> list[socket.socket]:
    """Sockets for queries to any address at all, IPv4 and IPv6, in the caller's namespace; needs its administrator."""
    opened = []
    for family in (socket.AF_INET, socket.AF_INET6):
        one = socket.socket(family, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        if family == socket.AF_INET:
            one.setsockopt(socket.IPPROTO_IP, _IP_TRANSPARENT, 1)
            one.setsockopt(socket.IPPROTO_IP, _IP_PKTINFO, 1)
        else:
            one.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
            one.setsockopt(socket.IPPROTO_IPV6, _IPV6_TRANSPARENT, 1)
            one.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_RECVPKTINFO, 1)
        one.bind(("", PORT))
        opened.append(one)
    return opened


class NameServer:
    """Answers on its sockets, in the wires' thread, until it is closed."""

    def __init__(self, wires: Wires, sockets: list[socket.socket], names: dict[str, tuple[str, ...]]) -> None:
        self._wires = wires
        self._sockets = sockets
        self._names = names
        self._behavior = NameAnswers()
        self._index = 0
        self._queries: list[Query] = []
        for one in sockets:
            wires.read_from(one.fileno(), functools.partial(self._take, one))

    def close(self) -> None:
        for one in self._sockets:
            self._wires.stop_reading(one.fileno())
            one.close()

    def behave(self, behavior: NameAnswers | None) -> None:
        """From the next query on; None is for right answers at once."""
        with self._wires.lock:
            self._behavior = behavior or NameAnswers()
            self._index = 0

    def queries(self) -> list[Query]:
        with self._wires.lock:
            return list(self._queries)

    def _take(self, asked: socket.socket) -> None:
        try:
            message, notes, _, sender = asked.recvmsg(4096, 256)
        except BlockingIOError:
            return
        query = parse_query(message)
        if query is None or not notes:
            return
        now, (level, kind, note) = time.monotonic(), notes[0]
        # The address that was asked is the one that answers, whosever it is.
        if asked.family == socket.AF_INET:
            server = socket.inet_ntop(socket.AF_INET, note[8:12])
            note = struct.pack("=i4s4s", 0, note[8:12], bytes(4))
        else:
            server = socket.inet_ntop(socket.AF_INET6, note[:16])
            note = note[:16] + bytes(4)
        self._queries.append(Query(now, server, query[1], query[2], query[0]))
        pattern = self._behavior.lose_pattern
        lost = pattern[self._index % len(pattern)] == "x"
        self._index += 1
        response = build_response(message, self._names, self._behavior.answer)
        if lost or response is None:
            return
        self._wires.later(
            now + self._behavior.delay_ms / 1000,
            functools.partial(_send, asked, response, [(level, kind, note)], sender),
        )


def _send(through: socket.socket, message: bytes, notes: list[tuple[int, int, bytes]], receiver: object) -> None:
    try:
        through.sendmsg([message], notes, 0, receiver)
    except OSError:
        pass  # Closed meanwhile, or there is no way: the answer is lost.
