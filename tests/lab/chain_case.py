"""What tests of the chain have in common: one chain a module, a prober a test, and waiting for what happens."""

from __future__ import annotations

import socket
import time
import unittest
from collections.abc import Callable

from . import faults, name_server, packets
from .chain import HOST_NAME, Chain
from .prober import MARK, PATIENCE_SECONDS, Prober
from .topology import ADDRESSES, HOPS
from .wires import Crossing

# In which what must not come would have come: no other program takes part.
DELIVERY_SECONDS = 0.05
REPLY = packets.ECHO_REPLY

chain: Chain


def open_chain() -> Chain:
    """For a module's setUpModule."""
    global chain
    chain = Chain(neighbor_retry_ms=20)
    unittest.addModuleCleanup(chain.close)
    return chain


def wait_until(condition: Callable[[], object], what: str) -> None:
    deadline = time.monotonic() + PATIENCE_SECONDS
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"not within {PATIENCE_SECONDS} s: {what}")
        time.sleep(0.002)


def ask(server: str, name: str = HOST_NAME, kind: str = "A", patience: float = PATIENCE_SECONDS) -> bytes | None:
    """What the server answers; None when nothing comes in time."""
    family = socket.AF_INET6 if ":" in server else socket.AF_INET
    question = b"".join(bytes([len(label)]) + label.encode() for label in name.split(".")) + b"\0"
    question += bytes([0, name_server.TYPES[kind], 0, 1])
    with socket.socket(family, socket.SOCK_DGRAM) as asking:
        asking.settimeout(patience)
        asking.connect((server, name_server.PORT))
        asking.send(b"\x12\x34\x01\x00\0\1\0\0\0\0\0\0" + question)
        try:
            return asking.recv(4096)
        except TimeoutError:
            return None


def code_of(response: bytes) -> int:
    return response[3] & 0x0F


class InTheChain(unittest.TestCase):
    """Every test begins with a chain that is well, and leaves it so."""

    version: int

    def setUp(self) -> None:
        self.addCleanup(chain.clear)
        self.prober = self.enterContext(Prober(self.version))
        # From then on everybody on the way knows the next one's hardware address.
        self.wait_until_well()
        self.begun = time.monotonic()

    def wait_until_well(self) -> None:
        """A kernel that has just looked for a neighbor in vain may say so once more."""
        wait_until(lambda: self.prober.probe().kind == REPLY[self.version], "the host replies")

    def address(self, node: str) -> str:
        return ADDRESSES[node][self.version]

    def path(self) -> list[str]:
        """Who answers, by hop limit, up to the host."""
        return [self.prober.probe(hop_limit).source for hop_limit in range(1, len(HOPS) + 1)]

    def took(self, sequence: int) -> float:
        """The seconds between a request and its answer, as the client's kernel stamped them."""
        request = next(one for one in reversed(chain.sent("echo")) if one.echo.sequence == sequence)
        answers = reversed(chain.received("icmp") + chain.received("echo"))
        return next(one.at for one in answers if self.is_about(one.packet, sequence)) - request.at

    @staticmethod
    def is_about(packet: packets.Packet, sequence: int) -> bool:
        echo = packets.parse_echo_reply(packet)
        if echo is not None:
            return echo.data.startswith(MARK) and echo.sequence == sequence
        quoted = packets.parse_packet(packet.payload[8:])
        echo = packets.parse_echo_request(quoted) if quoted else None
        return echo is not None and echo.sequence == sequence

    def crossed(self, link: str, direction: str | None = None) -> list[Crossing]:
        """What has crossed the link in this test, apart from what a load sends."""
        return [
            one for one in chain.crossings(link, direction, self.begun)
            if packets.icmp_type(one.packet) is not None
        ]  # fmt: skip

    def held(self, link: str, direction: str) -> list[float]:
        """For how long the link has held it, in seconds."""
        return [crossing.due - crossing.at for crossing in self.crossed(link, direction)]

    def assert_no_answer(self, fault: faults.Fault, hop_limit: int = 64, size: int = 64) -> None:
        """Nothing comes back for a request, because the fault has swallowed it or its answer."""
        before = len(chain.losses(fault))
        sequence = self.prober.send(hop_limit, size=size)
        wait_until(lambda: len(chain.losses(fault)) > before, f"{fault} loses a packet")
        self.assertIsNone(self.prober.answer_to(sequence, DELIVERY_SECONDS))
