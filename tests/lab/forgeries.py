"""ICMP errors that nobody on the way to the host has a reason to send: a program must believe none of them."""

from __future__ import annotations

import dataclasses
from collections.abc import Callable

from . import packets
from .topology import ADDRESSES, HOST, PROVIDER_2

# A router that is on nobody's way, and a host that nobody asked.
STRANGER = {4: "203.0.113.177", 6: "3fff:2::177"}
ELSEWHERE = {4: "203.0.113.200", 6: "3fff:2::200"}


@dataclasses.dataclass(frozen=True)
class Forgery:
    """An ICMP error in the making, about an echo request that the client sent."""

    kind: int
    code: int
    router: str
    request: packets.Packet
    echo: packets.Echo
    # What the error quotes: from the IP header on.
    quoted: bytes
    good_checksum: bool = True

    def about(self, echo: packets.Echo, destination: str | None = None) -> Forgery:
        """The same about another echo message."""
        request = self.request
        return dataclasses.replace(
            self, quoted=packets.build_echo(echo, request.source, destination or request.destination)
        )

    def build(self) -> bytes:
        rest = bytes(4) + self.quoted
        return packets.build_icmp(
            self.kind, self.code, rest, self.router, self.request.source, self.good_checksum
        )


def _with_echo(**changes: Callable[[packets.Echo], object]) -> Callable[[Forgery], Forgery]:
    def change(forgery: Forgery) -> Forgery:
        fields = {name: value(forgery.echo) for name, value in changes.items()}
        return forgery.about(dataclasses.replace(forgery.echo, **fields))

    return change


def _with(**changes: object) -> Callable[[Forgery], Forgery]:
    return lambda forgery: dataclasses.replace(forgery, **changes)


def _header(forgery: Forgery) -> int:
    return 20 if forgery.request.version == 4 else 40


FORGERIES: dict[str, Callable[[Forgery], Forgery]] = {
    # What it quotes is not what the client sent.
    "foreign-packet": lambda forgery: forgery.about(
        dataclasses.replace(forgery.echo, identifier=forgery.echo.identifier ^ 0x0101, data=b"foreign!"),
        ELSEWHERE[forgery.request.version],
    ),
    "other-destination": lambda forgery: forgery.about(forgery.echo, ELSEWHERE[forgery.request.version]),
    "wrong-identifier": _with_echo(identifier=lambda echo: echo.identifier ^ 0x0101),
    "wrong-sequence": _with_echo(sequence=lambda echo: echo.sequence ^ 0x5000),
    "wrong-mark": _with_echo(data=lambda echo: bytes(byte ^ 0x20 for byte in echo.data)),
    "quotes-a-reply": lambda forgery: forgery.about(
        dataclasses.replace(forgery.echo, kind=packets.ECHO_REPLY[forgery.request.version])
    ),
    # It quotes too little to tell.
    "mark-left-out": lambda forgery: dataclasses.replace(forgery, quoted=forgery.quoted[: _header(forgery) + 8]),
    "truncated": lambda forgery: dataclasses.replace(forgery, quoted=forgery.quoted[: _header(forgery) + 4]),
    "header-cut": lambda forgery: dataclasses.replace(forgery, quoted=forgery.quoted[:12]),
    "empty": _with(quoted=b""),
    # It makes no sense, or comes from where no error can come from.
    "unknown-type": _with(kind=99),
    "unknown-code": _with(code=99),
    "bad-checksum": _with(good_checksum=False),
    "off-path": lambda forgery: dataclasses.replace(forgery, router=STRANGER[forgery.request.version]),
    "from-the-host": lambda forgery: dataclasses.replace(
        forgery, router=ADDRESSES[HOST][forgery.request.version]
    ),
    "from-itself": lambda forgery: dataclasses.replace(forgery, router=forgery.request.source),
    "garbage": lambda forgery: dataclasses.replace(forgery, quoted=bytes(range(256)) * 4),
}


def forge(name: str, request: packets.Packet, error: str, router: str = PROVIDER_2) -> bytes:
    """The packet with the forged error about the request; `error` is a name from packets.ERRORS."""
    echo = packets.parse_echo_request(request)
    if echo is None:
        raise ValueError("only errors about echo requests are forged")
    kind, code = packets.ERRORS[error][request.version]
    address = ADDRESSES[router][request.version]
    return FORGERIES[name](Forgery(kind, code, address, request, echo, request.raw)).build()
