"""What an address of the laboratory does with echo requests, and the record of a request that it saw."""

from __future__ import annotations

import dataclasses
import random
import struct
from collections.abc import Callable

from . import packets

# Ways to spoil a reply. Each is seen by the program, or kept from it by the kernel, as a stray packet would be.
DISTORTIONS: dict[str, Callable[[packets.Echo, int], packets.Echo]] = {
    "wrong-magic": lambda echo, version: dataclasses.replace(
        echo, data=bytes(byte ^ 0x20 for byte in echo.data[:8]) + echo.data[8:]
    ),
    "wrong-sequence": lambda echo, version: dataclasses.replace(
        echo, sequence=(echo.sequence + 1) & 0xFFFF
    ),
    "truncated": lambda echo, version: dataclasses.replace(echo, data=echo.data[:-1]),
    "empty": lambda echo, version: dataclasses.replace(echo, data=b""),
    "foreign-identifier": lambda echo, version: dataclasses.replace(
        echo, identifier=echo.identifier ^ 0x0101
    ),
    "wrong-type": lambda echo, version: dataclasses.replace(
        echo, kind=packets.OTHER_TYPE[version]
    ),
    "wrong-code": lambda echo, version: dataclasses.replace(echo, code=1),
    # Only the packet is spoiled; build_echo is told to miscompute the checksum.
    "bad-checksum": lambda echo, version: echo,
}


@dataclasses.dataclass(frozen=True)
class Behavior:
    """How one address answers. Immutable: to change it at run time, give the address another one.

    Times are in milliseconds. Patterns are repeated; they start anew when the address gets a new behavior.
    """

    # One delay, or several that are used in turn.
    delay_ms: float | tuple[float, ...] = 0.0
    # Up to this much is added to every delay, uniformly, from the laboratory's seeded generator.
    jitter_ms: float = 0.0
    # One character a request: "." is answered, "x" is lost. "....x" loses every fifth.
    lose_pattern: str = "."
    # This share of the requests is lost, drawn from the laboratory's seeded generator.
    lose_fraction: float = 0.0
    silent: bool = False
    # How often the good reply is sent; 2 makes duplicates, 0 leaves only the distorted ones.
    copies: int = 1
    # Distorted replies sent just before the good one: names from DISTORTIONS.
    distortions: tuple[str, ...] = ()
    # Answer with this ICMP error instead of a reply: a name from packets.ERRORS.
    error: str | None = None

    def __post_init__(self) -> None:
        unknown = set(self.distortions) - set(DISTORTIONS)
        if unknown or set(self.lose_pattern) - set(".x") or not self.lose_pattern:
            raise ValueError(f"no such distortion or loss pattern: {unknown or self.lose_pattern!r}")
        if self.error is not None and self.error not in packets.ERRORS:
            raise ValueError(f"no such ICMP error: {self.error!r}")

    def loses(self, index: int, chance: random.Random) -> bool:
        """Whether the request with this index goes unanswered."""
        if self.silent or self.lose_pattern[index % len(self.lose_pattern)] == "x":
            return True
        return self.lose_fraction > 0 and chance.random() < self.lose_fraction

    def delay_seconds(self, index: int, chance: random.Random) -> float:
        """How long the answer to the request with this index is held back."""
        delays = self.delay_ms if isinstance(self.delay_ms, tuple) else (self.delay_ms,)
        jitter = chance.uniform(0, self.jitter_ms) if self.jitter_ms else 0.0
        return (delays[index % len(delays)] + jitter) / 1000

    def answers(self, packet: packets.Packet, echo: packets.Echo, router: str) -> list[bytes]:
        """The packets to send back for an echo request that is not lost."""
        if self.error is not None:
            return [packets.build_error(self.error, packet, router)]
        reply = dataclasses.replace(echo, kind=packets.ECHO_REPLY[packet.version])
        spoiled = [
            packets.build_echo(
                DISTORTIONS[name](reply, packet.version),
                packet.destination,
                packet.source,
                good_checksum=name != "bad-checksum",
            )
            for name in self.distortions
        ]
        good = packets.build_echo(reply, packet.destination, packet.source)
        return spoiled + [good] * self.copies


SILENT = Behavior(silent=True)


@dataclasses.dataclass
class Request:
    """One echo request and its answer, as the kernel stamped them. Times are in seconds of CLOCK_MONOTONIC."""

    # When the request left the program.
    at: float
    address: str
    identifier: int
    sequence: int
    payload: bytes
    answered: bool
    # When the good reply reached the machine; none before that, and for a request that gets no good reply.
    left: float | None = None

    @property
    def took_ms(self) -> float:
        """From the request to the reply, which must have come: what a perfect observer measures."""
        return (self.left - self.at) * 1000

    @property
    def ping_id(self) -> int:
        """The 64-bit number behind the first eight bytes of the payload."""
        return struct.unpack_from("!Q", self.payload, 8)[0]
