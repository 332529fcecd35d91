"""Each behavior of the laboratory, as a plain ICMP datagram socket sees it."""

from __future__ import annotations

import os
import random
import select
import socket
import struct
import subprocess
import tempfile
import time
import unittest

from . import DEAD_NAME_SERVER, OWN_IPV4, SILENT, Behavior, Lab, LabError, Names, network

MAGIC = b"LABTESTS"
IDENTIFIER = 4711
# The answering address of each family, and one that has no behavior.
ADDRESS = {socket.AF_INET: "10.77.0.10", socket.AF_INET6: "fd77::10"}
UNKNOWN = {socket.AF_INET: "10.77.0.99", socket.AF_INET6: "fd77::99"}
REQUEST_TYPE = {socket.AF_INET: 8, socket.AF_INET6: 128}
REPLY_TYPE = {socket.AF_INET: 0, socket.AF_INET6: 129}
PROTOCOL = {socket.AF_INET: socket.IPPROTO_ICMP, socket.AF_INET6: socket.IPPROTO_ICMPV6}
IP_RECVERR = 11
IPV6_RECVERR = 25
PATIENCE_SECONDS = 10
# From the laboratory's device to a socket: no other program takes part.
DELIVERY_SECONDS = 0.05
# Between two clocks read one after the other.
CLOCK_READING = 0.001

lab: Lab


def setUpModule() -> None:
    global lab
    lab = Lab()
    unittest.addModuleCleanup(lab.close)


class EchoSocket:
    """An ICMP datagram socket that is bound to an identifier, so that the kernel leaves the identifier alone."""

    def __init__(self, family: socket.AddressFamily, report_errors: bool = False) -> None:
        self.family = family
        self.awaited: dict[str, int] = {}
        self.socket = socket.socket(family, socket.SOCK_DGRAM, PROTOCOL[family])
        self.socket.bind(("", IDENTIFIER))
        if report_errors and family == socket.AF_INET:
            self.socket.setsockopt(socket.IPPROTO_IP, IP_RECVERR, 1)
        elif report_errors:
            self.socket.setsockopt(socket.IPPROTO_IPV6, IPV6_RECVERR, 1)

    def __enter__(self) -> EchoSocket:
        return self

    def __exit__(self, *_: object) -> None:
        self.socket.close()

    def send(self, sequence: int, address: str | None = None) -> float:
        message = struct.pack("!BBHHH", REQUEST_TYPE[self.family], 0, 0, IDENTIFIER, sequence)
        message += MAGIC + struct.pack("!Q", sequence)
        address = address or ADDRESS[self.family]
        self.awaited[address] = 1 + self.awaited.get(address, len(lab.requests(address)))
        sent = time.monotonic()
        self.socket.sendto(message, (address, 0))
        return sent

    def receive(self, timeout: float = PATIENCE_SECONDS) -> bytes | None:
        """The next message, or None when none comes in time."""
        if not select.select([self.socket], [], [], timeout)[0]:
            return None
        return self.socket.recv(2048)

    def exchange(self, sequence: int) -> bytes | None:
        self.send(sequence)
        return self.receive()

    def receive_all(self) -> list[bytes]:
        """All messages that answer what was sent so far."""
        deadline = time.monotonic() + PATIENCE_SECONDS
        while not all(lab.has_answered(address, count) for address, count in self.awaited.items()):
            if time.monotonic() > deadline:
                raise AssertionError(f"the laboratory has not answered {self.awaited}")
            time.sleep(0.002)
        messages = []
        while (message := self.receive(DELIVERY_SECONDS)) is not None:
            messages.append(message)
        return messages


def sequence_of(message: bytes) -> int:
    return struct.unpack_from("!H", message, 6)[0]


class Replies:
    """What holds for both families; the two classes below say which one is meant."""

    family: socket.AddressFamily

    def setUp(self) -> None:
        self.address = ADDRESS[self.family]
        self.echo = self.enterContext(EchoSocket(self.family))

    def test_a_request_is_answered_with_what_it_held(self) -> None:
        lab.behave(self.address, Behavior())

        message = self.echo.exchange(7)

        kind, code, _, identifier, sequence = struct.unpack_from("!BBHHH", message)
        self.assertEqual((kind, code), (REPLY_TYPE[self.family], 0))
        self.assertEqual((identifier, sequence), (IDENTIFIER, 7))
        self.assertEqual(message[8:], MAGIC + struct.pack("!Q", 7))

    def test_a_reply_comes_after_the_delay_and_both_times_are_known(self) -> None:
        lab.behave(self.address, Behavior(delay_ms=80, copies=2))

        sent = self.echo.send(1)
        self.assertIsNotNone(self.echo.receive())
        received = time.monotonic()
        self.assertIsNotNone(self.echo.receive())

        request = lab.requests(self.address)[-1]
        self.assertGreaterEqual(request.at, sent - CLOCK_READING)
        self.assertGreaterEqual(request.took_ms, 80)
        self.assertLessEqual(request.left, received + CLOCK_READING)

    def test_a_requests_time_does_not_depend_on_when_it_is_read(self) -> None:
        lab.behave(self.address, Behavior())
        with lab.held_up():
            self.echo.send(1)
            sent = time.monotonic()
            self.assertIsNone(self.echo.receive(0.1))

        self.assertIsNotNone(self.echo.receive())

        request = lab.requests(self.address)[-1]
        self.assertLessEqual(request.at, sent + CLOCK_READING)
        self.assertGreaterEqual(request.took_ms, 100)

    def test_a_pattern_loses_exactly_the_requests_it_marks(self) -> None:
        lab.behave(self.address, Behavior(lose_pattern="..x"))

        for sequence in range(9):
            self.echo.send(sequence)

        answered = sorted(sequence_of(message) for message in self.echo.receive_all())
        self.assertEqual(answered, [0, 1, 3, 4, 6, 7])

    def test_a_fraction_loses_about_its_share(self) -> None:
        lab.behave(self.address, Behavior(lose_fraction=0.3))

        answered = 0
        for sequence in range(200):
            self.echo.send(sequence)
            if sequence % 20 == 19:
                answered += len(self.echo.receive_all())

        self.assertTrue(110 <= answered <= 170, f"{answered} of 200 answered")

    def test_duplicates_are_sent_as_often_as_asked(self) -> None:
        lab.behave(self.address, Behavior(copies=3))

        self.echo.send(5)

        self.assertEqual([sequence_of(message) for message in self.echo.receive_all()], [5, 5, 5])

    def test_a_silent_address_answers_again_when_told_to(self) -> None:
        lab.behave(self.address, SILENT)
        self.echo.send(1)
        self.assertEqual(self.echo.receive_all(), [])
        self.assertIsNone(lab.requests(self.address)[-1].left)

        lab.change(self.address, silent=False)

        self.assertEqual(sequence_of(self.echo.exchange(2)), 2)

    def test_an_address_without_a_behavior_is_silent_but_counted(self) -> None:
        address = UNKNOWN[self.family]
        before = len(lab.requests(address))

        self.echo.send(1, address)

        self.assertEqual(self.echo.receive_all(), [])
        self.assertEqual(len(lab.requests(address)), before + 1)

    def test_requests_are_recorded_with_time_and_content(self) -> None:
        lab.behave(self.address, Behavior(lose_pattern=".x"))
        before = len(lab.requests(self.address))

        first_sent = self.echo.send(65535)
        self.echo.send(8)
        self.assertEqual(len(self.echo.receive_all()), 1)

        first, second = lab.requests(self.address)[before:]
        self.assertTrue(first_sent - CLOCK_READING <= first.at <= second.at <= time.monotonic())
        self.assertEqual([request.sequence for request in (first, second)], [65535, 8])
        self.assertEqual([request.ping_id for request in (first, second)], [65535, 8])
        self.assertEqual([request.answered for request in (first, second)], [True, False])
        self.assertEqual({first.identifier, second.identifier}, {IDENTIFIER})
        self.assertEqual(first.payload, MAGIC + struct.pack("!Q", 65535))

    def test_a_wrong_magic_spoils_only_the_magic(self) -> None:
        message = self.spoiled("wrong-magic")

        self.assertEqual(sequence_of(message), 3)
        self.assertNotEqual(message[8:16], MAGIC)
        self.assertEqual(message[16:], struct.pack("!Q", 3))

    def test_a_wrong_sequence_spoils_only_the_sequence(self) -> None:
        message = self.spoiled("wrong-sequence")

        self.assertEqual(sequence_of(message), 4)
        self.assertEqual(message[8:], MAGIC + struct.pack("!Q", 3))

    def test_a_truncated_reply_lacks_its_last_byte(self) -> None:
        self.assertEqual(len(self.spoiled("truncated")), 23)

    def test_an_empty_reply_is_a_header_alone(self) -> None:
        self.assertEqual(len(self.spoiled("empty")), 8)

    def test_a_wrong_code_arrives(self) -> None:
        self.assertEqual(self.spoiled("wrong-code")[:2], bytes([REPLY_TYPE[self.family], 1]))

    def test_what_the_kernel_filters_never_arrives(self) -> None:
        for distortion in ("foreign-identifier", "wrong-type", "bad-checksum"):
            with self.subTest(distortion):
                self.assertIsNone(self.spoiled(distortion))

    def test_a_foreign_identifier_reaches_the_socket_that_has_it(self) -> None:
        with socket.socket(self.family, socket.SOCK_DGRAM, PROTOCOL[self.family]) as other:
            other.bind(("", IDENTIFIER ^ 0x0101))
            other.settimeout(PATIENCE_SECONDS)
            self.assertIsNone(self.spoiled("foreign-identifier"))
            self.assertEqual(sequence_of(other.recv(2048)), 3)

    def test_distorted_replies_come_before_the_good_one(self) -> None:
        lab.behave(self.address, Behavior(distortions=("wrong-sequence", "truncated")))

        self.echo.send(3)

        messages = self.echo.receive_all()
        self.assertEqual([len(message) for message in messages], [24, 23, 24])
        self.assertEqual([sequence_of(message) for message in messages], [4, 3, 3])

    def test_an_error_is_reported_with_its_type_and_code(self) -> None:
        expected = {socket.AF_INET: (2, 3, 13), socket.AF_INET6: (3, 1, 1)}
        lab.behave(self.address, Behavior(error="prohibited"))

        self.echo.socket.close()
        with EchoSocket(self.family, report_errors=True) as echo:
            echo.send(1)
            waiting = select.poll()
            waiting.register(echo.socket, select.POLLERR)
            self.assertTrue(waiting.poll(1000 * PATIENCE_SECONDS))
            _, notes, _, _ = echo.socket.recvmsg(2048, 512, socket.MSG_ERRQUEUE)

        _, origin, kind, code = struct.unpack_from("=IBBB", notes[0][2])
        self.assertEqual((origin, kind, code), expected[self.family])

    def spoiled(self, distortion: str) -> bytes | None:
        """The one reply to request 3 with this distortion, or None when nothing arrives."""
        lab.behave(self.address, Behavior(copies=0, distortions=(distortion,)))
        self.echo.send(3)
        messages = self.echo.receive_all()
        self.assertLessEqual(len(messages), 1)
        return messages[0] if messages else None


class RepliesOverIPv4(Replies, unittest.TestCase):
    family = socket.AF_INET


class RepliesOverIPv6(Replies, unittest.TestCase):
    family = socket.AF_INET6


class DelaysOfABehavior(unittest.TestCase):
    def delays(self, behavior: Behavior, count: int) -> list[float]:
        """In seconds, of the first requests."""
        chance = random.Random(1)
        return [behavior.delay_seconds(index, chance) for index in range(count)]

    def test_several_delays_are_used_in_turn(self) -> None:
        behavior = Behavior(delay_ms=(150.0, 0.0, 20.0))

        self.assertEqual(self.delays(behavior, 5), [0.15, 0, 0.02, 0.15, 0])

    def test_jitter_adds_to_the_delay_and_never_more_than_it_says(self) -> None:
        delays = self.delays(Behavior(delay_ms=10, jitter_ms=60), 100)

        self.assertGreaterEqual(min(delays), 0.010)
        self.assertLessEqual(max(delays), 0.070)
        self.assertGreater(max(delays) - min(delays), 0.030)


class TheLaboratory(unittest.TestCase):
    def test_it_refuses_to_work_outside_its_namespace(self) -> None:
        elsewhere = dict(os.environ, **{network.NAMESPACE_VARIABLE: "net:[0]"})
        command = ["/usr/bin/python3", "-c", "import lab; lab.Lab()"]
        folder = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

        done = subprocess.run(
            command, cwd=folder, env=elsewhere, capture_output=True, text=True, timeout=20, check=False
        )

        self.assertNotEqual(done.returncode, 0)
        self.assertIn(LabError.__name__, done.stderr)

    def test_changes_between_requests_lose_none_of_them(self) -> None:
        address = "10.77.0.30"
        lab.behave(address, Behavior())
        with EchoSocket(socket.AF_INET) as echo:
            for sequence in range(100):
                lab.change(address, copies=1 + sequence % 2)
                echo.send(sequence, address)
                self.assertIsNotNone(echo.receive())
            echo.receive_all()
        self.assertEqual(len(lab.requests(address)), 100)

    def test_an_unknown_behavior_is_refused(self) -> None:
        for fields in ({"distortions": ("odd",)}, {"lose_pattern": "..?"}, {"error": "odd"}):
            with self.subTest(fields), self.assertRaises(ValueError):
                Behavior(**fields)


class NamesOfTheLaboratory(unittest.TestCase):
    def setUp(self) -> None:
        self.names = Names(self.enterContext(tempfile.TemporaryDirectory()))

    def look_up(self, name: str, timeout: float = 20) -> subprocess.CompletedProcess[str]:
        command = self.names.prefix() + ["getent", "ahosts", name]
        return subprocess.run(command, capture_output=True, text=True, timeout=timeout, check=False)

    def test_a_name_gives_its_addresses_in_the_order_written(self) -> None:
        self.names.write(hosts={"two.lab": ["10.77.0.21", "10.77.0.20"]})

        lines = self.look_up("two.lab").stdout.splitlines()

        addresses = list(dict.fromkeys(line.split()[0] for line in lines))
        self.assertEqual(addresses, ["10.77.0.21", "10.77.0.20"])

    def test_an_unknown_name_fails_at_once_without_a_name_server(self) -> None:
        self.assertEqual(self.look_up("nowhere.lab").returncode, 2)

    def test_a_dead_name_server_is_asked_and_holds_the_lookup(self) -> None:
        self.names.write(order="files dns", name_servers=[DEAD_NAME_SERVER])
        before = lab.queries(DEAD_NAME_SERVER)

        command = self.names.prefix() + ["getent", "ahosts", "nowhere.lab"]
        with subprocess.Popen(command, stdout=subprocess.DEVNULL) as lookup:
            try:
                deadline = time.monotonic() + PATIENCE_SECONDS
                while lab.queries(DEAD_NAME_SERVER) == before and time.monotonic() < deadline:
                    time.sleep(0.002)

                self.assertGreater(lab.queries(DEAD_NAME_SERVER), before)
                self.assertIsNone(lookup.poll())
            finally:
                lookup.kill()

    def test_a_private_set_of_names_is_seen_by_its_command_alone(self) -> None:
        self.names.write(hosts={"private.lab": [OWN_IPV4]})

        self.assertEqual(self.look_up("private.lab").returncode, 0)
        with open("/etc/hosts", encoding="utf-8") as hosts:
            self.assertNotIn("private.lab", hosts.read())

    def test_installed_names_are_seen_by_every_later_lookup(self) -> None:
        self.names.write(hosts={"early.lab": ["10.77.0.40"]})
        self.names.install()
        self.addCleanup(self.uninstall)
        self.assertEqual(socket.gethostbyname("early.lab"), "10.77.0.40")

        self.names.write(hosts={"late.lab": ["10.77.0.41"]})

        self.assertEqual(socket.gethostbyname("late.lab"), "10.77.0.41")

    def uninstall(self) -> None:
        for name in ("hosts", "resolv.conf", "nsswitch.conf"):
            subprocess.run(["umount", f"/etc/{name}"], check=True, timeout=10)


if __name__ == "__main__":
    unittest.main()
