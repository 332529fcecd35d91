"""The wires between the namespaces: one thread carries every frame from one device to the next, as rules tell it to."""

from __future__ import annotations

import collections
import contextlib
import dataclasses
import fcntl
import heapq
import itertools
import os
import select
import struct
import threading
import time
import traceback
from collections.abc import Callable, Iterable

from . import packets, topology

_TUNSETCARRIER = 0x400454E2
_IPV4, _IPV6 = 0x0800, 0x86DD
_NEIGHBOR_TYPES = range(130, 138)  # listener reports, solicitations, advertisements, redirects
_LISTENER_REPORT = 143
_IGMP = 2
_HOP_BY_HOP = 0
# How many are remembered of what happened on the wires.
_MEMORY = 20_000

# Places where rules stand: (link, OUT or BACK) and (node, ARRIVING or LEAVING).
OUT, BACK = "out", "back"
ARRIVING, LEAVING = "arriving", "leaving"
Place = tuple[str, str]


class Frame:
    """An Ethernet frame under way. A rule may replace its packet."""

    def __init__(self, raw: bytes) -> None:
        self.header = raw[:14]
        self.kind = int.from_bytes(raw[12:14], "big")
        self.packet = packets.parse_packet(raw[14:]) if self.kind in (_IPV4, _IPV6) else None
        self._raw = raw

    @property
    def raw(self) -> bytes:
        return self._raw

    @property
    def is_housekeeping(self) -> bool:
        """Whether systems send it for themselves: address resolution, and who listens to which group."""
        return self.packet is None or is_housekeeping(self.packet)

    def replace_packet(self, raw: bytes) -> None:
        self._raw = self.header + raw
        self.packet = packets.parse_packet(raw)


def is_housekeeping(packet: packets.Packet) -> bool:
    if packet.version == 4:
        return packet.protocol == _IGMP
    kind = packets.icmp_type(packet)
    return packet.protocol == _HOP_BY_HOP or kind in _NEIGHBOR_TYPES or kind == _LISTENER_REPORT


@dataclasses.dataclass(frozen=True)
class Lost:
    """What a rule says of a frame that goes no further; `answer` is a packet that the node there sends instead."""

    answer: bytes | None = None
    # Who sends it; without a name the node whose place it is.
    sender: str | None = None


# Says for how many seconds more a frame is under way, or that it is lost. Told the time, of CLOCK_MONOTONIC.
Rule = Callable[[Frame, float], float | Lost]


@dataclasses.dataclass(frozen=True)
class Loss:
    """A frame that was lost to a rule, and where."""

    at: float
    place: Place
    owner: object
    packet: packets.Packet | None


@dataclasses.dataclass(frozen=True)
class Crossing:
    """A packet that crossed a link. It was read `at` that time and held until `due`, in seconds of CLOCK_MONOTONIC."""

    at: float
    due: float
    link: str
    direction: str
    packet: packets.Packet


@dataclasses.dataclass(eq=False)
class Port:
    """A node's device on a link."""

    node: str
    link: str
    descriptor: int
    hardware: bytes

    def send(self, raw: bytes) -> None:
        # A device that is down takes nothing: the frame is lost, as on a real network.
        with contextlib.suppress(OSError):
            os.write(self.descriptor, raw)

    def set_carrier(self, present: bool) -> None:
        fcntl.ioctl(self.descriptor, _TUNSETCARRIER, struct.pack("i", present))


class Wires:
    """Carries frames from start() to stop(). All methods may be called from any thread."""

    def __init__(self) -> None:
        self.lock = threading.RLock()
        self._ports: dict[str, list[Port]] = collections.defaultdict(list)
        self._readers: dict[int, Callable[[], None]] = {}
        self._rules: dict[Place, list[tuple[object, Rule]]] = collections.defaultdict(list)
        self._due: list[tuple[float, int, Callable[[], None]]] = []
        self._order = itertools.count()
        self._losses: collections.deque[Loss] = collections.deque(maxlen=_MEMORY)
        self._crossings: collections.deque[Crossing] = collections.deque(maxlen=_MEMORY)
        self._stopping = False
        self._failure: str | None = None
        self._epoll = select.epoll()
        self._wake_reader, self._wake_writer = os.pipe()
        self.read_from(self._wake_reader, lambda: None)
        self._thread = threading.Thread(target=self._work, name="wires", daemon=True)

    def start(self) -> None:
        self._thread.start()

    def stop(self) -> str | None:
        """Carries nothing more. Returns what went wrong in the thread, if anything did."""
        self._stopping = True
        if self._thread.is_alive():
            os.write(self._wake_writer, b"x")
            self._thread.join(timeout=5)
        return self._failure

    def close(self) -> None:
        """Takes all devices away, after a stop."""
        for ports in self._ports.values():
            for port in ports:
                os.close(port.descriptor)
        self._ports.clear()
        self._epoll.close()
        os.close(self._wake_reader)
        os.close(self._wake_writer)

    def add(self, port: Port) -> None:
        self._ports[port.link].append(port)
        self.read_from(port.descriptor, lambda: self._take_frames(port))

    def port(self, node: str, link: str) -> Port:
        return next(port for port in self._ports[link] if port.node == node)

    def read_from(self, descriptor: int, callback: Callable[[], None]) -> None:
        """Calls back in the thread, with the lock held, whenever there is something to read."""
        with self.lock:
            self._readers[descriptor] = callback
            self._epoll.register(descriptor, select.EPOLLIN)

    def stop_reading(self, descriptor: int) -> None:
        with self.lock:
            del self._readers[descriptor]
            self._epoll.unregister(descriptor)

    def add_rules(self, owner: object, rules: Iterable[tuple[Place, Rule]]) -> None:
        """From the next frame on; what is under way already is delivered."""
        with self.lock:
            for place, rule in rules:
                self._rules[place].append((owner, rule))

    def remove_rules(self, owner: object) -> None:
        with self.lock:
            for place, rules in self._rules.items():
                self._rules[place] = [rule for rule in rules if rule[0] is not owner]

    def losses(self) -> list[Loss]:
        with self.lock:
            return list(self._losses)

    def crossings(self) -> list[Crossing]:
        with self.lock:
            return list(self._crossings)

    def later(self, due: float, action: Callable[[], None]) -> None:
        """Does it in the thread at that time, or now if that has passed."""
        with self.lock:
            heapq.heappush(self._due, (due, next(self._order), action))
        if threading.current_thread() is not self._thread:
            os.write(self._wake_writer, b"x")

    def emit(self, node: str, packet: bytes) -> None:
        """Sends a packet towards the client as if the node had."""
        link = topology.inner_link(node)
        source = self.port(node, link)
        target = self.port(topology.LINKS[link][0], link)
        kind = _IPV4 if packet[0] >> 4 == 4 else _IPV6
        frame = Frame(target.hardware + source.hardware + struct.pack("!H", kind) + packet)
        self._pass(source, target, frame, time.monotonic())

    def _work(self) -> None:
        try:
            while not self._stopping:
                with self.lock:
                    timeout = max(0.0, self._due[0][0] - time.monotonic()) if self._due else None
                ready = self._epoll.poll(timeout)
                with self.lock:
                    for descriptor, _ in ready:
                        # An earlier one of this round may have taken it away.
                        self._readers.get(descriptor, lambda: None)()
                    if any(descriptor == self._wake_reader for descriptor, _ in ready):
                        os.read(self._wake_reader, 4096)
                    self._do_due()
        except Exception:  # whatever it was, stop() hands it on
            self._failure = traceback.format_exc()

    def _do_due(self) -> None:
        while self._due and self._due[0][0] <= time.monotonic():
            heapq.heappop(self._due)[2]()

    def _take_frames(self, port: Port) -> None:
        while True:
            try:
                raw = os.read(port.descriptor, 65536)
            except OSError:
                return  # Nothing more, or the device is down.
            now = time.monotonic()
            for target in self._ports[port.link]:
                if target is not port and (raw[0] & 1 or raw[:6] == target.hardware):
                    self._pass(port, target, Frame(raw), now)

    def _pass(self, source: Port, target: Port, frame: Frame, now: float) -> None:
        lane = _lane(source, target)
        places = [(source.node, LEAVING), *([lane] if lane else []), (target.node, ARRIVING)]
        held = 0.0
        for place in places:
            for owner, rule in self._rules.get(place, ()):
                fate = rule(frame, now)
                if isinstance(fate, Lost):
                    self._lose(fate, place, owner, frame, now)
                    return
                held += fate
        if lane is not None and frame.packet is not None and not frame.is_housekeeping:
            self._crossings.append(Crossing(now, now + held, *lane, frame.packet))
        if held > 0:
            self.later(now + held, lambda: target.send(frame.raw))
        else:
            target.send(frame.raw)

    def _lose(self, fate: Lost, place: Place, owner: object, frame: Frame, now: float) -> None:
        self._losses.append(Loss(now, place, owner, frame.packet))
        if fate.answer is not None:
            self.emit(fate.sender or place[0], fate.answer)


def _lane(source: Port, target: Port) -> Place | None:
    """The link and direction, seen from the client; none between others of the home network."""
    inner = topology.LINKS[source.link][0]
    if source.node == inner:
        return (source.link, OUT)
    return (source.link, BACK) if target.node == inner else None
