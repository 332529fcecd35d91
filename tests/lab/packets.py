"""Reads and builds the few kinds of IP packets that the laboratory's responder understands."""

from __future__ import annotations

import dataclasses
import ipaddress
import struct

ICMP = 1
TCP = 6
UDP = 17
ICMPV6 = 58

ECHO_REQUEST = {4: 8, 6: 128}
ECHO_REPLY = {4: 0, 6: 129}
# A type that no echo socket may be handed: timestamp reply, and neighbor advertisement.
OTHER_TYPE = {4: 14, 6: 136}

# Reason -> (type, code), by IP version.
ERRORS = {
    "network-unreachable": {4: (3, 0), 6: (1, 0)},
    "host-unreachable": {4: (3, 1), 6: (1, 3)},
    "prohibited": {4: (3, 13), 6: (1, 1)},
    "hop-limit-exceeded": {4: (11, 0), 6: (3, 0)},
    "too-big": {4: (3, 4), 6: (2, 0)},
}


@dataclasses.dataclass(frozen=True)
class Packet:
    """An IP packet taken apart; `payload` is what follows the IP header, `raw` the whole packet."""

    version: int
    protocol: int
    source: str
    destination: str
    payload: bytes
    raw: bytes

    @property
    def hop_limit(self) -> int:
        return self.raw[8 if self.version == 4 else 7]


@dataclasses.dataclass(frozen=True)
class Echo:
    """The fields of an echo message."""

    kind: int
    code: int
    identifier: int
    sequence: int
    data: bytes


def checksum(message: bytes) -> int:
    """The Internet checksum: the complement of the one's-complement sum of all 16-bit words."""
    if len(message) % 2:
        message += b"\0"
    total = sum(struct.unpack(f"!{len(message) // 2}H", message))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


def parse_packet(raw: bytes) -> Packet | None:
    """Takes an IP packet apart; None for what is no whole IPv4 or IPv6 packet."""
    version = raw[0] >> 4 if raw else 0
    if version == 4 and len(raw) >= 20:
        header = (raw[0] & 0x0F) * 4
        source, destination = raw[12:16], raw[16:20]
        protocol = raw[9]
    elif version == 6 and len(raw) >= 40:
        header = 40
        source, destination = raw[8:24], raw[24:40]
        protocol = raw[6]
    else:
        return None
    return Packet(
        version,
        protocol,
        str(ipaddress.ip_address(source)),
        str(ipaddress.ip_address(destination)),
        raw[header:],
        raw,
    )


def parse_echo_request(packet: Packet) -> Echo | None:
    """The echo request that a packet carries, or None when it carries something else."""
    return _parse_echo(packet, ECHO_REQUEST)


def parse_echo_reply(packet: Packet) -> Echo | None:
    """Likewise for an echo reply."""
    return _parse_echo(packet, ECHO_REPLY)


def _parse_echo(packet: Packet, wanted: dict[int, int]) -> Echo | None:
    if packet.protocol != (ICMP if packet.version == 4 else ICMPV6) or len(packet.payload) < 8:
        return None
    kind, code, _, identifier, sequence = struct.unpack_from("!BBHHH", packet.payload)
    if kind != wanted[packet.version]:
        return None
    return Echo(kind, code, identifier, sequence, packet.payload[8:])


def udp_destination_port(packet: Packet) -> int | None:
    """The port that a UDP packet is for, or None when it is no UDP packet."""
    if packet.protocol != UDP or len(packet.payload) < 8:
        return None
    return struct.unpack_from("!H", packet.payload, 2)[0]


def icmp_type(packet: Packet) -> int | None:
    """The type of an ICMP message, or None when the packet has none."""
    if packet.protocol != (ICMP if packet.version == 4 else ICMPV6) or not packet.payload:
        return None
    return packet.payload[0]


def is_hop_limit_exceeded(packet: Packet) -> bool:
    return icmp_type(packet) == ERRORS["hop-limit-exceeded"][packet.version][0]


def lower_hop_limit(packet: Packet, hops: int) -> bytes:
    """The packet after so many more routers, whose limit must allow it."""
    raw = bytearray(packet.raw)
    if packet.version == 6:
        raw[7] -= hops
        return bytes(raw)
    raw[8] -= hops
    header = (raw[0] & 0x0F) * 4
    raw[10:12] = bytes(2)
    raw[10:12] = struct.pack("!H", checksum(bytes(raw[:header])))
    return bytes(raw)


def icmp_from(packet: Packet, source: str) -> bytes:
    """The ICMP message of a packet as if someone else had sent it."""
    kind, code = packet.payload[:2]
    return build_icmp(kind, code, packet.payload[4:], source, packet.destination)


def build_echo(echo: Echo, source: str, destination: str, good_checksum: bool = True) -> bytes:
    """A whole IP packet with one echo message in it."""
    rest = struct.pack("!HH", echo.identifier, echo.sequence) + echo.data
    return build_icmp(echo.kind, echo.code, rest, source, destination, good_checksum)


def build_error(reason: str, refused: Packet, router: str, size: int = 0) -> bytes:
    """An ICMP error about `refused`, sent by `router` to the packet's sender; `size` is what would not be too big."""
    kind, code = ERRORS[reason][refused.version]
    quoted = refused.raw[: 1232 if refused.version == 6 else 548]
    return build_icmp(kind, code, struct.pack("!I", size) + quoted, router, refused.source)


def build_icmp(
    kind: int, code: int, rest: bytes, source: str, destination: str, good_checksum: bool = True
) -> bytes:
    """A whole IP packet with one ICMP message; `rest` is what follows the checksum."""
    sender, receiver = ipaddress.ip_address(source), ipaddress.ip_address(destination)
    message = struct.pack("!BBH", kind, code, 0) + rest
    covered = message
    if sender.version == 6:
        covered = (
            sender.packed
            + receiver.packed
            + struct.pack("!IHBB", len(message), 0, 0, ICMPV6)
            + message
        )
    total = checksum(covered) ^ (0 if good_checksum else 0x5555)
    message = message[:2] + struct.pack("!H", total) + message[4:]
    if sender.version == 6:
        header = struct.pack("!IHBB", 6 << 28, len(message), ICMPV6, 64)
        return header + sender.packed + receiver.packed + message
    header = struct.pack("!BBHHHBBH", 0x45, 0, 20 + len(message), 0, 0, 64, ICMP, 0)
    header += sender.packed + receiver.packed
    return header[:10] + struct.pack("!H", checksum(header)) + header[12:] + message
