"""The chain laboratory: a client, a home router, a provider, a host and name servers, each in a namespace: see README.md."""

from __future__ import annotations

import collections
import contextlib
import dataclasses
import random
import socket
import sys
import threading
import time
from collections.abc import Callable, Iterator

from . import packets, topology, wires
from .faults import Fault
from .forgeries import forge
from .name_server import NameServer, Query, open_sockets
from .namespaces import Namespace
from .network import LabError, open_tap, refuse_elsewhere
from .portal import CaptivePortal
from .tap import Tap
from .topology import ADDRESSES, CLIENT, HOST, LAN, LINKS, NAME_SERVERS, ROUTERS, device
from .wires import Crossing, Loss, Port, Wires

HOST_NAME = "host.test"
# The client's device.
UPLINK = device(LAN)
DISCARD_PORT = 9
_LOAD_PACKET = 1200
_LOAD_STEP_SECONDS = 0.004
_HOUSEKEEPING = "housekeeping"


@dataclasses.dataclass(frozen=True)
class Seen:
    """A packet that the client sent or received, stamped by its kernel (seconds of CLOCK_MONOTONIC)."""

    at: float
    # "echo" (requests and replies), "icmp", "udp", "tcp" or "other"; "housekeeping" is the kernel's own.
    kind: str
    packet: packets.Packet | None
    size: int

    @property
    def destination(self) -> str | None:
        return self.packet.destination if self.packet else None

    @property
    def source(self) -> str | None:
        return self.packet.source if self.packet else None

    @property
    def hop_limit(self) -> int | None:
        return self.packet.hop_limit if self.packet else None

    @property
    def echo(self) -> packets.Echo | None:
        """What it holds, if it is an echo message."""
        if self.packet is None:
            return None
        return packets.parse_echo_request(self.packet) or packets.parse_echo_reply(self.packet)

    @property
    def port(self) -> int | None:
        """The port that a UDP packet is for."""
        return packets.udp_destination_port(self.packet) if self.packet else None


class Chain:
    """The namespaces and what goes wrong between them. Use it as a context manager, inside tests/lab/run.

    The namespace that the process is in becomes the client's: programs are simply started there. All methods may be called
    from any thread. `neighbor_retry_ms` is how long the kernels wait for an answer about a neighbor's hardware address, three
    times, before they give it up; a second unless this says otherwise.
    """

    def __init__(self, seed: int = 1, neighbor_retry_ms: int | None = None) -> None:
        refuse_elsewhere()
        self._seed = seed
        self._closed = False
        self._faults: list[Fault] = []
        self._begun = 0
        # When each fault last began.
        self._begun_at: dict[Fault, float] = {}
        self._loads: dict[int, threading.Event] = {}
        self._portal: CaptivePortal | None = None
        self._sent: list[Seen] = []
        self._received: list[Seen] = []
        self._switching = threading.RLock()
        self._closing = contextlib.ExitStack()
        # The wires share the interpreter with the test's threads: let them in quickly, so that delays stay true.
        sys.setswitchinterval(0.0005)
        self._wires = Wires()
        self._closing.callback(self._wires.close)
        try:
            self._nodes = {node: self._make_node(node, neighbor_retry_ms) for node in ADDRESSES}
            self._name_servers = {node: self._make_name_server(node) for node in NAME_SERVERS}
            for node in (HOST, CLIENT):
                self._open_sink(node)
            self._tap = Tap(UPLINK)
        except (LabError, OSError) as error:
            self._closing.close()
            raise error if isinstance(error, LabError) else LabError(f"no chain: {error}") from error
        self._closing.callback(self._tap.close)
        self._wires.read_from(self._tap.fileno(), self._take_stamps)
        self._wires.start()

    def __enter__(self) -> Chain:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Ends all faults and takes the network down. Raises LabError when the laboratory itself has failed meanwhile."""
        if self._closed:
            return
        self.clear()
        self.sent()
        self._closed = True
        failure = self._wires.stop()
        self._closing.close()
        if failure is not None:
            raise LabError(f"the chain has failed: {failure}")

    # Faults.

    @property
    def faults(self) -> tuple[Fault, ...]:
        """Those that are on, in the order in which they began."""
        return tuple(self._faults)

    def begin(self, *faults: Fault) -> None:
        """Switches faults on, from the next packet on. Each draws its chances anew, from the laboratory's seed."""
        with self._switching:
            for fault in faults:
                if fault in self._faults:
                    raise ValueError(f"has begun already: {fault}")
                self._begun += 1
                self._begun_at[fault] = time.monotonic()
                rules = fault.rules(random.Random(self._seed * 1_000_003 + self._begun))
                self._wires.add_rules(fault, rules)
                self._faults.append(fault)
                fault.begin(self)

    def end(self, *faults: Fault) -> None:
        """Switches faults off. Packets that they hold still arrive at their time."""
        with self._switching:
            for fault in faults:
                own = self._faults[self._faults.index(fault)]
                self._faults.remove(own)
                self._wires.remove_rules(own)
                own.end(self)

    def clear(self) -> None:
        """Switches all faults off, the latest first."""
        with self._switching:
            self.end(*reversed(self._faults))

    @contextlib.contextmanager
    def under(self, *faults: Fault) -> Iterator[None]:
        """Switches faults on for a while."""
        self.begin(*faults)
        try:
            yield
        finally:
            self.end(*(fault for fault in reversed(faults) if fault in self._faults))

    # What happened.

    def sent(self, kind: str | None = None, destination: str | None = None, since: float = 0.0) -> list[Seen]:
        """What has left the client after that time, oldest first; its kernel's own housekeeping only if asked for."""
        return self._seen(self._sent, kind, lambda one: one.at > since and destination in (None, one.destination))

    def received(self, kind: str | None = None, source: str | None = None, since: float = 0.0) -> list[Seen]:
        """Likewise what came to the client."""
        return self._seen(self._received, kind, lambda one: one.at > since and source in (None, one.source))

    def tally(self, since: float = 0.0) -> collections.Counter[tuple[str, str | None, int | None]]:
        """How much has left the client after that time, by kind, destination and hop limit."""
        return collections.Counter((one.kind, one.destination, one.hop_limit) for one in self.sent(since=since))

    def losses(self, fault: Fault | None = None, since: float = 0.0) -> list[Loss]:
        """The latest packets that were lost, to any fault, or to this one since it last began; `owner` is the fault."""
        since = max(since, self._begun_at.get(fault, 0.0)) if fault is not None else since
        return [loss for loss in self._wires.losses() if loss.at >= since and fault in (None, loss.owner)]

    def crossings(self, link: str | None = None, direction: str | None = None, since: float = 0.0) -> list[Crossing]:
        """The latest packets that crossed a link between the client and the host or the provider's name server."""
        return [
            one
            for one in self._wires.crossings()
            if link in (None, one.link) and direction in (None, one.direction) and one.at > since
        ]

    def queries(self, node: str = topology.NAME_SERVER) -> list[Query]:
        """What a name server was asked so far."""
        return self._name_servers[node].queries()

    # What can be done besides.

    def inject(self, packet: bytes) -> None:
        """Hands the client a packet, as its router would."""
        port, router = self._wires.port(CLIENT, LAN), self._wires.port(topology.HOME_ROUTER, LAN)
        kind = b"\x08\x00" if packet[0] >> 4 == 4 else b"\x86\xdd"
        port.send(port.hardware + router.hardware + kind + packet)

    def forge(
        self, name: str, request: packets.Packet, error: str = "host-unreachable", router: str = topology.PROVIDER_2
    ) -> bytes:
        """Hands the client a forged error, one of FORGERIES, about an echo request that it sent. Returns the packet."""
        packet = forge(name, request, error, router)
        self.inject(packet)
        return packet

    def forget_neighbors(self, link: str) -> None:
        """Lets all members of the link forget each other's hardware addresses."""
        for node in LINKS[link]:
            self._nodes[node].ip([f"neigh flush dev {device(link)}"])

    # For faults.

    def name_server(self, node: str) -> NameServer:
        return self._name_servers[node]

    def client_ip(self, lines: list[str]) -> None:
        """Runs commands of `ip` in the client's namespace."""
        self._nodes[CLIENT].ip(lines)

    def configure_client(self) -> None:
        """Gives the client's device its addresses and routes."""
        self._configure(self._nodes[CLIENT], CLIENT)

    def set_client_carrier(self, present: bool) -> None:
        self._wires.port(CLIENT, LAN).set_carrier(present)

    def open_portal(self) -> None:
        self._portal = CaptivePortal(self._wires, self._nodes[topology.HOME_ROUTER])

    def close_portal(self) -> None:
        if self._portal is not None:
            self._portal.close()
            self._portal = None

    def start_load(self, owner: object, source: str, sink: str, bits_per_second: float, seconds: float) -> None:
        stop = self._loads[id(owner)] = threading.Event()
        out = self._nodes[source].call(lambda: socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        arguments = (out, ADDRESSES[sink][4], bits_per_second, seconds, stop)
        threading.Thread(target=_send_load, args=arguments, name="load", daemon=True).start()

    def stop_load(self, owner: object) -> None:
        self._loads.pop(id(owner)).set()

    # How it is made.

    def _open_sink(self, node: str) -> None:
        """Lets the node take what a load sends: it reads none of it."""
        sink = self._nodes[node].call(lambda: socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        self._closing.callback(sink.close)
        sink.bind((ADDRESSES[node][4], DISCARD_PORT))

    def _make_node(self, node: str, neighbor_retry_ms: int | None) -> Namespace:
        namespace = Namespace.own() if node == CLIENT else Namespace()
        self._closing.callback(namespace.close)
        is_router = node in ROUTERS
        if is_router:
            namespace.set({"ipv4/ip_forward": 1, "ipv6/conf/all/forwarding": 1})
        if node != CLIENT:
            # Answer every packet that deserves an error; faults say which go missing.
            namespace.set({"ipv4/icmp_ratelimit": 0, "ipv6/icmp/ratelimit": 0})
        namespace.set({"ipv4/conf/all/rp_filter": 0})
        for link in topology.links_of(node):
            self._plug_in(namespace, node, link)
            name = device(link)
            settings = ("accept_ra", "router_solicitations", "accept_dad")
            namespace.set({f"ipv6/conf/{name}/{setting}": 0 for setting in settings})
            namespace.set({f"ipv4/conf/{name}/{setting}": 0 for setting in ("rp_filter", "send_redirects")})
            namespace.ip([f"link set {name} address {topology.hardware_address(link, node)}"])
            if neighbor_retry_ms is not None:
                namespace.set({f"ipv{one}/neigh/{name}/retrans_time_ms": neighbor_retry_ms for one in (4, 6)})
        self._configure(namespace, node)
        return namespace

    @staticmethod
    def _configure(namespace: Namespace, node: str) -> None:
        namespace.ip(topology.configuration(node))
        namespace.wait_for_address(ADDRESSES[node][6])

    def _plug_in(self, namespace: Namespace, node: str, link: str) -> None:
        descriptor = namespace.call(lambda: open_tap(device(link)))
        hardware = bytes.fromhex(topology.hardware_address(link, node).replace(":", ""))
        self._wires.add(Port(node, link, descriptor, hardware))

    def _make_name_server(self, node: str) -> NameServer:
        names = {HOST_NAME: tuple(ADDRESSES[HOST].values())}
        server = NameServer(self._wires, self._nodes[node].call(open_sockets), names)
        self._closing.callback(server.close)
        return server

    # What the client sends and receives.

    def _take_stamps(self) -> None:
        for is_sent, at, raw in self._tap.packets():
            packet = packets.parse_packet(raw)
            (self._sent if is_sent else self._received).append(Seen(at, _kind(packet), packet, len(raw)))

    def _seen(self, of: list[Seen], kind: str | None, is_wanted: Callable[[Seen], bool]) -> list[Seen]:
        with self._wires.lock:
            if not self._closed:
                self._take_stamps()
            return [
                one
                for one in of
                if (one.kind == kind if kind is not None else one.kind != _HOUSEKEEPING) and is_wanted(one)
            ]


def _kind(packet: packets.Packet | None) -> str:
    if packet is None or wires.is_housekeeping(packet):
        return _HOUSEKEEPING
    if packets.parse_echo_request(packet) or packets.parse_echo_reply(packet):
        return "echo"
    if packets.icmp_type(packet) is not None:
        return "icmp"
    return {packets.UDP: "udp", packets.TCP: "tcp"}.get(packet.protocol, "other")


def _send_load(
    out: socket.socket, address: str, bits_per_second: float, seconds: float, stop: threading.Event
) -> None:
    begun, count = time.monotonic(), 0
    with out:
        while not stop.is_set() and (passed := time.monotonic() - begun) < seconds:
            while count * 8 * _LOAD_PACKET < passed * bits_per_second:
                count += 1
                with contextlib.suppress(OSError):
                    out.sendto(bytes(_LOAD_PACKET), (address, DISCARD_PORT))
            stop.wait(_LOAD_STEP_SECONDS)
