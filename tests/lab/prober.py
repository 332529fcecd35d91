"""An unprivileged observer of a path: echo requests with any hop limit, and what comes back for each of them."""

from __future__ import annotations

import dataclasses
import itertools
import select
import socket
import struct
import time

from . import packets
from .topology import ADDRESSES, HOST

MARK = b"CHAINLAB"
PATIENCE_SECONDS = 10
_HOP_LIMIT = 64
_IP_RECVERR, _IPV6_RECVERR = 11, 25
_IP_RECVTTL = 12
_IP_MTU_DISCOVER, _IPV6_MTU_DISCOVER = 10, 23
_PMTUDISC_PROBE = 3  # never split, and send what was told to be too large
_ICMP_ORIGINS = (2, 3)
# No two probers use one number, so that records of the laboratory can be told apart by it.
_SEQUENCES = itertools.count(1)


@dataclasses.dataclass(frozen=True)
class Answer:
    """What came back for a request: a reply, or an error from some router. `at` is when it was read."""

    source: str
    kind: int
    code: int
    sequence: int
    at: float
    # Of a reply: what was left of its hop limit.
    hop_limit: int | None = None
    # Of an error "too big": what would not be.
    information: int = 0
    is_error: bool = False


class Prober:
    """A datagram ICMP socket with its error queue, as any user may open it."""

    def __init__(self, version: int) -> None:
        self.version = version
        self.host = ADDRESSES[HOST][version]
        self.answers: list[Answer] = []
        self._family = socket.AF_INET if version == 4 else socket.AF_INET6
        protocol = socket.IPPROTO_ICMP if version == 4 else socket.IPPROTO_ICMPV6
        self._socket = socket.socket(self._family, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK, protocol)
        if version == 4:
            for option in (_IP_RECVERR, _IP_RECVTTL):
                self._socket.setsockopt(socket.IPPROTO_IP, option, 1)
            self._socket.setsockopt(socket.IPPROTO_IP, _IP_MTU_DISCOVER, _PMTUDISC_PROBE)
        else:
            for option in (_IPV6_RECVERR, socket.IPV6_RECVHOPLIMIT):
                self._socket.setsockopt(socket.IPPROTO_IPV6, option, 1)
            self._socket.setsockopt(socket.IPPROTO_IPV6, _IPV6_MTU_DISCOVER, _PMTUDISC_PROBE)

    def __enter__(self) -> Prober:
        return self

    def __exit__(self, *_: object) -> None:
        self._socket.close()

    def send(self, hop_limit: int = _HOP_LIMIT, address: str | None = None, size: int = 64) -> int:
        """Sends a request of that size, with its IP header, and returns its sequence number."""
        self.read()
        sequence = next(_SEQUENCES) & 0xFFFF
        if self.version == 4:
            self._socket.setsockopt(socket.IPPROTO_IP, socket.IP_TTL, hop_limit)
        else:
            self._socket.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_UNICAST_HOPS, hop_limit)
        header = struct.pack("!BBHHH", packets.ECHO_REQUEST[self.version], 0, 0, 0, sequence)
        room = size - len(header) - (20 if self.version == 4 else 40)
        self._socket.sendto((header + MARK).ljust(len(header) + room, b"."), (address or self.host, 0))
        return sequence

    def probe(self, hop_limit: int = _HOP_LIMIT, address: str | None = None, size: int = 64) -> Answer:
        """Sends a request and waits for what comes back, which must."""
        return self.wait_for(self.send(hop_limit, address, size))

    def wait_for(self, sequence: int) -> Answer:
        deadline = time.monotonic() + PATIENCE_SECONDS
        while (answer := self.answer_to(sequence)) is None:
            if time.monotonic() > deadline:
                raise AssertionError(f"nothing came back for request {sequence}")
            self._wait(deadline - time.monotonic())
        return answer

    def answer_to(self, sequence: int, seconds: float = 0) -> Answer | None:
        """What has come back for a request by now, or comes within so many seconds."""
        deadline = time.monotonic() + seconds
        while True:
            self.read()
            for answer in self.answers:
                if answer.sequence == sequence:
                    return answer
            if time.monotonic() >= deadline:
                return None
            self._wait(deadline - time.monotonic())

    def read(self) -> None:
        """Takes all that has come."""
        while (answer := self._read_error() or self._read_reply()) is not None:
            self.answers.append(answer)

    def _wait(self, seconds: float) -> None:
        waiting = select.poll()
        waiting.register(self._socket, select.POLLIN | select.POLLERR)
        waiting.poll(1000 * seconds)

    def _read_reply(self) -> Answer | None:
        try:
            message, notes, _, sender = self._socket.recvmsg(65536, 256)
        except OSError:
            return None  # Nothing, or an error that the queue tells as well.
        kind, code, _, _, sequence = struct.unpack_from("!BBHHH", message)
        left = next(struct.unpack_from("=i", note)[0] for _, _, note in notes)
        return Answer(sender[0], kind, code, sequence, time.monotonic(), left)

    def _read_error(self) -> Answer | None:
        try:
            message, notes, _, _ = self._socket.recvmsg(65536, 512, socket.MSG_ERRQUEUE)
        except OSError:
            return None
        wanted = (_IP_RECVERR, _IPV6_RECVERR)
        note = next(note for _, kind, note in notes if kind in wanted)
        _, origin, kind, code, _, information, _ = struct.unpack_from("=IBBBBII", note)
        source = "" if origin not in _ICMP_ORIGINS else socket.inet_ntop(
            self._family, note[20:24] if self.version == 4 else note[24:40]
        )  # fmt: skip
        # The message is what the error quotes: our request.
        sequence = struct.unpack_from("!H", message, 6)[0] if len(message) >= 8 else 0
        return Answer(source, kind, code, sequence, time.monotonic(), None, information, True)
