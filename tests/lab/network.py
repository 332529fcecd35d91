"""The laboratory itself: a TUN device whose other end is a scripted responder, all inside our own network namespace."""

from __future__ import annotations

import collections
import contextlib
import dataclasses
import fcntl
import heapq
import ipaddress
import itertools
import os
import random
import select
import struct
import subprocess
import sys
import threading
import time
from collections.abc import Iterable, Iterator

from . import packets
from .behavior import SILENT, Behavior, Request
from .tap import Tap

DEVICE = "lab0"
# The machine's own addresses; every other address of the two networks is the responder's.
OWN_IPV4 = "10.77.0.1"
OWN_IPV6 = "fd77::1"
ROUTER = {4: "10.77.0.254", 6: "fd77::fe"}
# A name server that takes queries and never answers.
DEAD_NAME_SERVER = "10.77.0.53"

NAMESPACE_VARIABLE = "TARNWICK_LAB_NAMESPACE"

_TUNSETIFF = 0x400454CA
_IFF_TUN = 0x0001
_IFF_TAP = 0x0002
_IFF_NO_PI = 0x1000
_DNS_PORT = 53
# An echo request that may take at most so many hops is a probe of the path.
_MOST_HOPS = 12
# The kernel makes a change wait while it takes down the namespaces of others: seconds on a busy machine.
_HANGING_SECONDS = 60


class LabError(Exception):
    """The laboratory cannot be set up here; the message says why."""


def open_tun(name: str) -> int:
    """Makes a TUN device that lives as long as the descriptor returned."""
    return _open_device(name, _IFF_TUN)


def open_tap(name: str) -> int:
    """Likewise one that carries Ethernet frames."""
    return _open_device(name, _IFF_TAP)


def _open_device(name: str, kind: int) -> int:
    try:
        descriptor = os.open("/dev/net/tun", os.O_RDWR | os.O_CLOEXEC | os.O_NONBLOCK)
    except OSError as error:
        raise LabError(f"/dev/net/tun cannot be opened: {error.strerror}") from error
    try:
        request = struct.pack("16sH22x", name.encode(), kind | _IFF_NO_PI)
        fcntl.ioctl(descriptor, _TUNSETIFF, request)
    except OSError as error:
        os.close(descriptor)
        raise LabError(f"the device {name} can't be made: {error.strerror}") from error
    return descriptor


def ip(*arguments: str) -> None:
    """Runs the `ip` command and raises LabError when it fails."""
    _run_ip([*arguments], "")


def ip_batch(lines: Iterable[str], version: int | None = None) -> None:
    """Likewise for many of them at once; the version of IP where no address in them tells it."""
    family = [f"-{version}"] if version else []
    _run_ip([*family, "-batch", "-"], "".join(f"{line}\n" for line in lines))


def _run_ip(arguments: list[str], text: str) -> None:
    command = ["ip", *arguments]
    try:
        subprocess.run(command, input=text, check=True, capture_output=True, text=True, timeout=_HANGING_SECONDS)
    except FileNotFoundError as error:
        raise LabError("the ip command (iproute2) is missing") from error
    except subprocess.CalledProcessError as error:
        raise LabError(f"{' '.join(command)}: {error.stderr.strip()}") from error


def refuse_elsewhere() -> None:
    """Raises LabError outside a namespace that tests/lab/run made: no laboratory may touch the machine's network."""
    if os.environ.get(NAMESPACE_VARIABLE) != os.readlink("/proc/self/ns/net"):
        raise LabError("this is no laboratory namespace: start the command with tests/lab/run")


class Lab:
    """A network with scripted delay, loss and silence. Use it as a context manager, inside tests/lab/run.

    All methods may be called from any thread. One thread of its own answers the packets; an address without a
    behavior is silent, but its requests are recorded.
    """

    def __init__(self, seed: int = 1) -> None:
        refuse_elsewhere()
        self._chance = random.Random(seed)
        self._lock = threading.RLock()
        self._behaviors: dict[str, Behavior] = {}
        self._indexes: collections.Counter[str] = collections.Counter()
        self._requests: dict[str, list[Request]] = collections.defaultdict(list)
        # When each request was sent, by the packet, until the responder reads it.
        self._sent_at: dict[bytes, float] = {}
        self._queries: collections.Counter[str] = collections.Counter()
        self._probes: collections.Counter[str] = collections.Counter()
        self._due: list[tuple[float, int, bytes]] = []
        self._order = itertools.count()
        self._stopping = False
        # The responder shares the interpreter with the test's threads: let it in quickly, so that delays stay true.
        sys.setswitchinterval(0.0005)
        self._tun = open_tun(DEVICE)
        try:
            self._tap = Tap(DEVICE)
            self._bring_up()
        except (LabError, OSError) as error:
            os.close(self._tun)
            raise error if isinstance(error, LabError) else LabError(f"{DEVICE} cannot be watched: {error}") from error
        self._wake_reader, self._wake_writer = os.pipe()
        self._thread = threading.Thread(target=self._respond, name="responder", daemon=True)
        self._thread.start()

    def __enter__(self) -> Lab:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Stops the responder and takes the network down. Bounded: answers still due are dropped."""
        if self._stopping:
            return
        self._stopping = True
        os.write(self._wake_writer, b"x")
        self._thread.join(timeout=5)
        for descriptor in (self._tun, self._wake_reader, self._wake_writer):
            os.close(descriptor)
        self._tap.close()

    def behave(self, address: str, behavior: Behavior) -> None:
        """Gives an address a behavior, from the next request on; answers under way are still sent."""
        with self._lock:
            self._behaviors[_canonical(address)] = behavior
            self._indexes[_canonical(address)] = 0

    def change(self, address: str, **fields: object) -> None:
        """Changes single fields of the behavior that an address has now."""
        with self._lock:
            now = self._behaviors.get(_canonical(address), Behavior())
            self._behaviors[_canonical(address)] = dataclasses.replace(now, **fields)
            self._indexes[_canonical(address)] = 0

    @contextlib.contextmanager
    def held_up(self) -> Iterator[None]:
        """Keeps the responder from working, as a busy machine does."""
        with self._lock:
            yield

    def requests(self, address: str) -> list[Request]:
        """All echo requests that came for an address so far, oldest first, without probes of the path."""
        with self._lock:
            if not self._stopping:
                self._take_stamps()
            return list(self._requests[_canonical(address)])

    def has_answered(self, address: str, count: int) -> bool:
        """Whether this many requests came for an address, and no answer of the laboratory is still to be sent."""
        with self._lock:
            return len(self._requests[_canonical(address)]) >= count and not self._due

    def probes(self, address: str) -> int:
        """How many probes of the path came for an address so far."""
        with self._lock:
            return self._probes[_canonical(address)]

    def queries(self, address: str) -> int:
        """How many name-server queries (UDP) came for an address so far. None is ever answered."""
        with self._lock:
            return self._queries[_canonical(address)]

    def _bring_up(self) -> None:
        for setting, value in (("accept_ra", "0"), ("router_solicitations", "0"), ("accept_dad", "0")):
            try:
                with open(f"/proc/sys/net/ipv6/conf/{DEVICE}/{setting}", "w") as file:
                    file.write(value)
            except OSError as error:
                raise LabError(f"IPv6 cannot be configured: {error.strerror}") from error
        ip("address", "add", f"{OWN_IPV4}/24", "dev", DEVICE)
        ip("address", "add", f"{OWN_IPV6}/64", "dev", DEVICE, "nodad")
        ip("link", "set", DEVICE, "up")
        # A way to the internet, as far as the program can tell; what goes there ends at the responder as well.
        ip("route", "add", "default", "dev", DEVICE)
        ip("-6", "route", "add", "default", "dev", DEVICE)

    def _respond(self) -> None:
        while not self._stopping:
            timeout = max(0.0, self._due[0][0] - time.monotonic()) if self._due else None
            readable, _, _ = select.select([self._tun, self._wake_reader], [], [], timeout)
            if self._tun in readable:
                self._receive()
            self._send_due()

    def _receive(self) -> None:
        try:
            raw = os.read(self._tun, 65536)
        except OSError:
            return  # Nothing there after all, or the link is down just now.
        packet = packets.parse_packet(raw)
        if packet is None:
            return
        echo = packets.parse_echo_request(packet)
        with self._lock:
            self._take_stamps()
            if echo is not None:
                at = self._sent_at.pop(raw, time.monotonic())
                self._take_request(at, packet, echo)
            elif packets.udp_destination_port(packet) == _DNS_PORT:
                self._queries[packet.destination] += 1

    def _take_stamps(self) -> None:
        """Notes when requests were sent, and when their good replies arrived."""
        for is_sent, at, raw in self._tap.packets():
            packet = packets.parse_packet(raw)
            if packet is None:
                continue
            if is_sent and packets.parse_echo_request(packet) is not None:
                self._sent_at.setdefault(raw, at)
            elif not is_sent and (reply := packets.parse_echo_reply(packet)) is not None:
                self._stamp_answer(packet.source, reply, at)

    def _stamp_answer(self, address: str, reply: packets.Echo, at: float) -> None:
        for request in reversed(self._requests[address]):
            if (request.identifier, request.sequence, request.payload) == (
                reply.identifier, reply.sequence, reply.data,
            ):  # fmt: skip
                # Of several copies, the first.
                request.left = request.left or at
                return

    def _take_request(self, at: float, packet: packets.Packet, echo: packets.Echo) -> None:
        address = packet.destination
        behavior = self._behaviors.get(address, SILENT)
        # Probes meet with the same, and change nothing of what pings meet with.
        is_probe = packet.hop_limit <= _MOST_HOPS
        index = self._indexes[address]
        self._indexes[address] += not is_probe
        self._probes[address] += is_probe
        lost = behavior.loses(index, self._chance)
        if not is_probe:
            self._requests[address].append(
                Request(at, address, echo.identifier, echo.sequence, echo.data, not lost)
            )
        if lost:
            return
        due = at + behavior.delay_seconds(index, self._chance)
        for answer in behavior.answers(packet, echo, ROUTER[packet.version]):
            heapq.heappush(self._due, (due, next(self._order), answer))

    def _send_due(self) -> None:
        with self._lock:
            while self._due and self._due[0][0] <= time.monotonic():
                try:
                    os.write(self._tun, self._due[0][2])
                except OSError:
                    pass  # The link is down just now: the packet is lost, as on a real network.
                heapq.heappop(self._due)


def _canonical(address: str) -> str:
    return str(ipaddress.ip_address(address))
