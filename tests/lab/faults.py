"""What can go wrong in the chain, as data. Each fault says by which rules it acts; `Chain.begin` and `end` switch it."""

from __future__ import annotations

import dataclasses
import random
import typing

from . import packets
from .topology import (
    ACCESS, ADDRESSES, CLIENT, HOME_ROUTER, HOST, LAN, LINKS, NAME_SERVER, OTHER_ADDRESSES, OTHER_COMPUTER, device,
    is_address_of, links_of,
)  # fmt: skip
from .wires import ARRIVING, BACK, LEAVING, OUT, Frame, Lost, Place, Rule

if typing.TYPE_CHECKING:
    from .chain import Chain

Rules = list[tuple[Place, Rule]]
BOTH = "both"
FAMILIES = (4, 6)

NAME_ANSWERS = (
    "right", "silent", "refused", "no-such-name", "failure", "wrong-address", "wrong-name", "wrong-identifier",
)  # fmt: skip


@dataclasses.dataclass(frozen=True)
class Fault:
    """One thing that is wrong, or a circumstance. Times are in milliseconds; directions are OUT (to the host), BACK or BOTH.

    Links delay and lose no housekeeping, such as questions for hardware addresses: between routers there is none in real
    life. Only what is cut or down takes it too.
    """

    def rules(self, chance: random.Random) -> Rules:
        """The rules by which it acts on frames. Each call makes fresh ones."""
        return []

    def begin(self, chain: Chain) -> None:
        """What else has to be done when it begins: its rules stand already."""

    def end(self, chain: Chain) -> None:
        """What has to be undone when it ends: its rules are gone already."""


def _lanes(link: str, direction: str) -> list[Place]:
    if link not in LINKS or direction not in (OUT, BACK, BOTH):
        raise ValueError(f"no such link or direction: {link}, {direction}")
    return [(link, one) for one in (OUT, BACK) if direction in (one, BOTH)]


@dataclasses.dataclass(frozen=True)
class Delay(Fault):
    """The link holds every packet for so long, and up to `jitter_ms` longer at random; none overtakes another."""

    link: str
    ms: float
    jitter_ms: float = 0.0
    direction: str = BOTH

    def rules(self, chance: random.Random) -> Rules:
        return [(lane, self._rule(chance)) for lane in _lanes(self.link, self.direction)]

    def _rule(self, chance: random.Random) -> Rule:
        last = 0.0

        def hold(frame: Frame, now: float) -> float:
            nonlocal last
            if frame.is_housekeeping:
                return 0.0
            last = max(last, now + (self.ms + (chance.uniform(0, self.jitter_ms) if self.jitter_ms else 0)) / 1000)
            return last - now

        return hold


@dataclasses.dataclass(frozen=True)
class Loss(Fault):
    """The link loses packets, at random or by a pattern: `"x"` is lost, `"."` is not."""

    link: str
    fraction: float = 0.0
    pattern: str = "."
    direction: str = BOTH

    def rules(self, chance: random.Random) -> Rules:
        return [(lane, _lossy(chance, self.fraction, self.pattern)) for lane in _lanes(self.link, self.direction)]


def _lossy(chance: random.Random, fraction: float, pattern: str) -> Rule:
    index = -1

    def lose(frame: Frame, now: float) -> float | Lost:
        nonlocal index
        if frame.is_housekeeping:
            return 0.0
        index += 1
        lost = pattern[index % len(pattern)] == "x" or (fraction > 0 and chance.random() < fraction)
        return Lost() if lost else 0.0

    return lose


def _lose_all(frame: Frame, now: float) -> Lost:
    return Lost()


@dataclasses.dataclass(frozen=True)
class Cut(Fault):
    """Nothing passes the link at all. Both ends still see a carrier, as behind a switch or a modem."""

    link: str
    direction: str = BOTH

    def rules(self, chance: random.Random) -> Rules:
        return [(lane, _lose_all) for lane in _lanes(self.link, self.direction)]


@dataclasses.dataclass(frozen=True)
class Down(Fault):
    """The node neither gets nor sends anything.

    Those beside it still know its hardware address for a while, unless `known` is false. Then, and later, their neighbor
    entries of it fail, and a router among them answers that the host is unreachable.
    """

    node: str
    known: bool = True

    def rules(self, chance: random.Random) -> Rules:
        return [((self.node, place), _lose_all) for place in (ARRIVING, LEAVING)]

    def begin(self, chain: Chain) -> None:
        if not self.known:
            for link in links_of(self.node):
                chain.forget_neighbors(link)


@dataclasses.dataclass(frozen=True)
class ProbeAnswers(Fault):
    """The node's own answers to packets whose hop limit ran out there; it passes everything else on as ever."""

    node: str
    silent: bool = False
    delay_ms: float = 0.0
    lose_pattern: str = "."
    lose_fraction: float = 0.0
    # At most so many in a second, one at a time.
    per_second: float | None = None

    def rules(self, chance: random.Random) -> Rules:
        lose = _lossy(chance, self.lose_fraction, "x" if self.silent else self.lose_pattern)
        next_allowed = 0.0

        def answer(frame: Frame, now: float) -> float | Lost:
            nonlocal next_allowed
            if not _is_own_probe_answer(frame, self.node):
                return 0.0
            if self.per_second is not None:
                if now < next_allowed:
                    return Lost()
                next_allowed = now + 1 / self.per_second
            fate = lose(frame, now)
            return fate if isinstance(fate, Lost) else self.delay_ms / 1000

        return [((self.node, LEAVING), answer)]


def _is_own_probe_answer(frame: Frame, node: str) -> bool:
    packet = frame.packet
    return packet is not None and packets.is_hop_limit_exceeded(packet) and is_address_of(node, packet.source)


@dataclasses.dataclass(frozen=True)
class Renumbered(Fault):
    """The router's own answers to packets whose hop limit ran out there come from another address: the way is another one."""

    node: str

    def rules(self, chance: random.Random) -> Rules:
        def rename(frame: Frame, now: float) -> float:
            packet = frame.packet
            if packet is not None and _is_own_probe_answer(frame, self.node):
                frame.replace_packet(packets.icmp_from(packet, OTHER_ADDRESSES[self.node][packet.version]))
            return 0.0

        return [((self.node, LEAVING), rename)]


@dataclasses.dataclass(frozen=True)
class EchoSilent(Fault):
    """The node answers no echo request that is for itself. What else it does, it does."""

    node: str

    def rules(self, chance: random.Random) -> Rules:
        def keep_quiet(frame: Frame, now: float) -> float | Lost:
            packet = frame.packet
            if packet is None or packets.parse_echo_reply(packet) is None:
                return 0.0
            return Lost() if is_address_of(self.node, packet.source) else 0.0

        return [((self.node, LEAVING), keep_quiet)]


@dataclasses.dataclass(frozen=True)
class Refuse(Fault):
    """The router answers packets for the host with this ICMP error, a name from packets.ERRORS, and forwards none."""

    node: str
    error: str = "host-unreachable"

    def rules(self, chance: random.Random) -> Rules:
        def refuse(frame: Frame, now: float) -> float | Lost:
            packet = frame.packet
            # One whose hop limit runs out here gets the usual answer.
            if packet is None or not is_address_of(HOST, packet.destination) or packet.hop_limit <= 1:
                return 0.0
            router = ADDRESSES[self.node][packet.version]
            return Lost(packets.build_error(self.error, packet, router))

        return [((self.node, ARRIVING), refuse)]


@dataclasses.dataclass(frozen=True)
class MtuHole(Fault):
    """The link loses every packet of more than so many bytes; if `told`, the router before it says so (not on the LAN)."""

    link: str
    size: int
    told: bool = False
    direction: str = OUT

    def rules(self, chance: random.Random) -> Rules:
        router = LINKS[self.link][0]
        if self.told and (self.direction != OUT or router == CLIENT):
            raise ValueError("only a router tells, and only of packets from the client")

        def swallow(frame: Frame, now: float) -> float | Lost:
            packet = frame.packet
            if packet is None or len(packet.raw) <= self.size:
                return 0.0
            if not self.told:
                return Lost()
            error = packets.build_error("too-big", packet, ADDRESSES[router][packet.version], self.size)
            return Lost(error, sender=router)

        return [(lane, swallow) for lane in _lanes(self.link, self.direction)]


@dataclasses.dataclass(frozen=True)
class Detour(Fault):
    """Answers come back over other routers from this link on: so many hops more, and so much later."""

    link: str
    hops: int
    delay_ms: float = 0.0

    def rules(self, chance: random.Random) -> Rules:
        def lead_around(frame: Frame, now: float) -> float | Lost:
            packet = frame.packet
            if packet is None or frame.is_housekeeping:
                return 0.0
            if packet.hop_limit <= self.hops:
                return Lost()
            frame.replace_packet(packets.lower_hop_limit(packet, self.hops))
            return self.delay_ms / 1000

        return [((self.link, BACK), lead_around)]


@dataclasses.dataclass(frozen=True)
class Shape(Fault):
    """The link carries so many bits a second; what does not fit waits in a queue of that length, or is lost."""

    link: str = ACCESS
    bits_per_second: float = 2e6
    queue_ms: float = 300.0
    direction: str = OUT

    def rules(self, chance: random.Random) -> Rules:
        return [(lane, self._rule()) for lane in _lanes(self.link, self.direction)]

    def _rule(self) -> Rule:
        free_at = 0.0

        def queue(frame: Frame, now: float) -> float | Lost:
            nonlocal free_at
            if frame.is_housekeeping:
                return 0.0
            leaves = max(now, free_at) + 8 * len(frame.raw) / self.bits_per_second
            if leaves - now > self.queue_ms / 1000:
                return Lost()
            free_at = leaves
            return leaves - now

        return queue


@dataclasses.dataclass(frozen=True)
class Load(Fault):
    """A computer sends UDP packets to another, the host or the client: as many bits a second, for so many seconds at most."""

    source: str = CLIENT
    sink: str = HOST
    bits_per_second: float = 3e6
    seconds: float = 30.0

    def begin(self, chain: Chain) -> None:
        chain.start_load(self, self.source, self.sink, self.bits_per_second, self.seconds)

    def end(self, chain: Chain) -> None:
        chain.stop_load(self)


@dataclasses.dataclass(frozen=True)
class NameAnswers(Fault):
    """What a name server answers: one of NAME_ANSWERS, after a while; `"x"` in the pattern is a query that is ignored."""

    node: str = NAME_SERVER
    answer: str = "right"
    delay_ms: float = 0.0
    lose_pattern: str = "."

    def __post_init__(self) -> None:
        if self.answer not in NAME_ANSWERS:
            raise ValueError(f"no such answer: {self.answer}")

    def begin(self, chain: Chain) -> None:
        chain.name_server(self.node).behave(self)

    def end(self, chain: Chain) -> None:
        chain.name_server(self.node).behave(None)


@dataclasses.dataclass(frozen=True)
class Portal(Fault):
    """The home router wants people to sign in: it answers names and HTTP itself, and lets nothing else through."""

    def rules(self, chance: random.Random) -> Rules:
        return [((ACCESS, OUT), _lose_all)]

    def begin(self, chain: Chain) -> None:
        chain.open_portal()

    def end(self, chain: Chain) -> None:
        chain.close_portal()


@dataclasses.dataclass(frozen=True)
class NoCarrier(Fault):
    """The client's device has lost its carrier: the cable is out. Its kernel notices within a second."""

    def rules(self, chance: random.Random) -> Rules:
        return [(lane, _lose_all) for lane in _lanes(LAN, BOTH)]

    def begin(self, chain: Chain) -> None:
        chain.set_client_carrier(False)

    def end(self, chain: Chain) -> None:
        chain.set_client_carrier(True)


@dataclasses.dataclass(frozen=True)
class _ClientChange(Fault):
    """A change of the client's own network settings, which are made anew when it ends."""

    def end(self, chain: Chain) -> None:
        chain.configure_client()


@dataclasses.dataclass(frozen=True)
class LinkOff(_ClientChange):
    """The client's device is switched off."""

    def begin(self, chain: Chain) -> None:
        chain.client_ip([f"link set {device(LAN)} down"])


@dataclasses.dataclass(frozen=True)
class NoAddress(_ClientChange):
    """The client has no address, as when nobody gives it one."""

    versions: tuple[int, ...] = FAMILIES

    def begin(self, chain: Chain) -> None:
        chain.client_ip(
            [f"address delete {ADDRESSES[CLIENT][version]}/{24 if version == 4 else 64} dev {device(LAN)}"
             for version in self.versions]
            + [f"route delete default via {ADDRESSES[HOME_ROUTER][6]}" for version in self.versions if version == 6]
        )  # fmt: skip


@dataclasses.dataclass(frozen=True)
class NoDefaultRoute(_ClientChange):
    """The client knows no way beyond its own network."""

    versions: tuple[int, ...] = FAMILIES

    def begin(self, chain: Chain) -> None:
        chain.client_ip([f"route delete default via {ADDRESSES[HOME_ROUTER][version]}" for version in self.versions])


OTHERS_LOAD = Load(source=OTHER_COMPUTER)
