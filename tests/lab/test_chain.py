"""Each fault of the chain, as an ordinary user's probes see it."""

from __future__ import annotations

import os
import pathlib
import socket
import subprocess
import sys
import time
import unittest
import urllib.request

from . import faults, forgeries, packets, portal
from .chain import HOST_NAME, UPLINK, Chain
from .chain_case import DELIVERY_SECONDS, REPLY, InTheChain, ask, code_of, open_chain, wait_until
from .prober import PATIENCE_SECONDS, Answer
from .topology import (
    ACCESS, ADDRESSES, CORE, HOME_ROUTER, HOPS, HOST, HOST_ROUTER, HOSTING, LAN, NAME_SERVER, NAME_SERVERS,
    OTHER_ADDRESSES, OTHER_COMPUTER, PATH_LINKS, PROVIDER_1, PROVIDER_2, PROVIDER_NAME_SERVER, ROUTERS, TRANSIT,
)  # fmt: skip
from .wires import BACK, OUT

# Between two clocks read one after the other.
CLOCK_READING = 0.001

chain: Chain


def setUpModule() -> None:
    global chain
    chain = open_chain()


class Path(InTheChain):
    def test_routers_answer_in_order_and_the_host_at_last(self) -> None:
        self.assertEqual(self.path(), [self.address(node) for node in HOPS])

    def test_a_reply_has_passed_every_router(self) -> None:
        self.assertEqual(self.prober.probe().hop_limit, 64 - len(ROUTERS))

    def test_every_link_is_crossed_both_ways(self) -> None:
        self.prober.probe()

        for link in PATH_LINKS:
            self.assertEqual([one.direction for one in self.crossed(link)], [OUT, BACK], link)

    def test_each_node_answers_for_itself(self) -> None:
        for node in (*HOPS, *NAME_SERVERS, OTHER_COMPUTER):
            answer = self.prober.probe(address=self.address(node))
            self.assertEqual((answer.source, answer.kind), (self.address(node), REPLY[self.version]))

    def test_a_router_says_that_there_is_no_such_network(self) -> None:
        answer = self.prober.probe(address={4: "192.0.200.1", 6: "2001:db8:99::1"}[self.version])

        self.assertEqual((answer.source, answer.kind, answer.code),
                         (self.address(PROVIDER_1), *packets.ERRORS["network-unreachable"][self.version]))

    def test_what_the_client_sends_is_recorded(self) -> None:
        before, begun = chain.sent()[-1].at, time.monotonic()

        for hop_limit in (3, 64):
            self.prober.probe(hop_limit)

        first, second = chain.sent(since=before)
        self.assertEqual((first.kind, first.destination, first.hop_limit), ("echo", self.address(HOST), 3))
        self.assertEqual((second.hop_limit, second.size), (64, 64))
        self.assertTrue(begun - CLOCK_READING <= first.at <= second.at <= time.monotonic() + CLOCK_READING)

    def test_nothing_but_the_probes_and_housekeeping_is_sent(self) -> None:
        before, host = chain.sent()[-1].at, self.address(HOST)
        chain.forget_neighbors(LAN)

        for hop_limit in (64, 3, 64):
            self.prober.probe(hop_limit)

        self.assertEqual(chain.tally(before), {("echo", host, 64): 2, ("echo", host, 3): 1})
        self.assertGreater(len(chain.sent("housekeeping", since=before)), 0)


class Links(InTheChain):
    def test_a_delay_holds_what_crosses_the_link_and_nothing_else(self) -> None:
        chain.begin(faults.Delay(ACCESS, 60), faults.Delay(TRANSIT, 40, direction=BACK))

        near, middle, far = (self.prober.send(hop_limit) for hop_limit in (1, 2, 4))
        for sequence in (near, middle, far):
            self.prober.wait_for(sequence)

        # The hop limit is lower by one behind the home router, which let two of the three pass.
        self.assertEqual([one.packet.hop_limit for one in self.crossed(ACCESS, OUT)], [1, 3])
        for held in self.held(ACCESS, OUT) + self.held(ACCESS, BACK):
            self.assertAlmostEqual(held, 0.060, delta=1e-5)
        self.assertGreaterEqual(self.took(middle), 0.120)
        self.assertGreaterEqual(self.took(far), 0.160)

    def test_a_delay_ends_with_its_fault(self) -> None:
        with chain.under(faults.Delay(CORE, 50)):
            self.prober.probe()

        self.prober.probe()

        self.assertEqual([held > 0 for held in self.held(CORE, OUT) + self.held(CORE, BACK)], [True, False] * 2)

    def test_jitter_varies_within_its_bounds_and_keeps_the_order(self) -> None:
        chain.begin(faults.Delay(LAN, 10, jitter_ms=40, direction=OUT))

        for _ in range(8):
            self.prober.probe()
        sequences = [self.prober.send() for _ in range(20)]
        for sequence in sequences:
            self.prober.wait_for(sequence)

        held = self.held(LAN, OUT)
        self.assertGreaterEqual(min(held), 0.010)
        self.assertLessEqual(max(held), 0.050 + 1e-5)
        self.assertGreater(max(held) - min(held), 0.010)
        answered = [answer.sequence for answer in self.prober.answers if answer.sequence in sequences]
        self.assertEqual(answered, sequences)

    def test_a_pattern_loses_exactly_what_it_marks(self) -> None:
        for link, direction in ((LAN, OUT), (ACCESS, BACK), (HOSTING, OUT)):
            with self.subTest(link), chain.under(fault := faults.Loss(link, pattern="..x", direction=direction)):
                before = len(chain.losses(fault))
                sequences = [self.prober.send() for _ in range(9)]
                wait_until(lambda: len(chain.losses(fault)) - before == 3, "three are lost")
                answered = [index for index, one in enumerate(sequences) if self.prober.answer_to(one, DELIVERY_SECONDS)]
                self.assertEqual(answered, [0, 1, 3, 4, 6, 7])

    def test_a_fraction_loses_about_its_share(self) -> None:
        chain.begin(fault := faults.Loss(CORE, 0.3, direction=OUT))

        for _ in range(200):
            self.prober.send()
        wait_until(lambda: len(chain.losses(fault)) + len(self.crossed(CORE, OUT)) == 200, "all come to the link")

        self.assertTrue(40 <= len(chain.losses(fault)) <= 80, f"{len(chain.losses(fault))} of 200 lost")

    def test_each_fault_draws_its_own_chances(self) -> None:
        first, second = self.losses_of(64), self.losses_of(64)

        self.assertNotEqual(first, second)

    def losses_of(self, count: int) -> list[int]:
        """Which of so many requests are lost when half of them are."""
        fault = faults.Loss(ACCESS, 0.5, direction=OUT)
        before = len(self.crossed(ACCESS, OUT))
        with chain.under(fault):
            sequences = [self.prober.send() for _ in range(count)]
            wait_until(
                lambda: len(chain.losses(fault)) + len(self.crossed(ACCESS, OUT)) - before == count, "all come to the link"
            )
        return [packets.parse_echo_request(loss.packet).sequence - sequences[0] for loss in chain.losses(fault)]

    def test_a_link_that_loses_or_delays_still_tells_hardware_addresses(self) -> None:
        for fault in (faults.Loss(CORE, 1, direction=BACK), faults.Delay(CORE, 100), faults.Shape(CORE, 1e4, 1000)):
            with self.subTest(fault), chain.under(fault):
                chain.forget_neighbors(CORE)
                answer = self.prober.send()
                wait_until(lambda: chain.losses(fault) or self.prober.answer_to(answer), "the request has passed")
                self.assertEqual(self.prober.answer_to(answer) is None, isinstance(fault, faults.Loss))
                self.assertTrue(all(loss.packet for loss in chain.losses(fault)))
                self.assertTrue(all(answer.kind == REPLY[self.version] for answer in self.prober.answers))

    def test_faults_of_one_link_add_up(self) -> None:
        chain.begin(faults.Delay(CORE, 20), faults.Detour(CORE, hops=1, delay_ms=30))

        self.prober.probe()

        self.assertAlmostEqual(self.held(CORE, BACK)[0], 0.050, delta=1e-5)

    def test_a_cut_link_lets_nothing_pass_and_the_near_side_still_answers(self) -> None:
        for hop, link in enumerate(PATH_LINKS[1:], start=1):
            with self.subTest(link), chain.under(fault := faults.Cut(link)):
                self.assert_no_answer(fault)
                self.assert_no_answer(fault, hop_limit=hop + 1)
                self.assertEqual(self.prober.probe(hop).source, self.address(HOPS[hop - 1]))

    def test_a_link_cut_one_way_still_carries_the_other(self) -> None:
        chain.begin(fault := faults.Cut(CORE, direction=BACK))

        self.assert_no_answer(fault)

        outwards, lost = self.crossed(CORE, OUT)[-1].packet, chain.losses(fault)[-1].packet
        self.assertEqual(packets.parse_echo_request(outwards).sequence, packets.parse_echo_reply(lost).sequence)

    def test_a_hole_swallows_large_packets_only(self) -> None:
        chain.begin(fault := faults.MtuHole(CORE, 1300))

        self.assert_no_answer(fault, size=1301)

        self.assertEqual(self.prober.probe(size=1300).kind, REPLY[self.version])

    def test_a_router_tells_what_is_not_too_large(self) -> None:
        chain.begin(faults.MtuHole(CORE, 1300, told=True))

        answer = self.prober.probe(size=1400)

        self.assertEqual((answer.source, answer.kind, answer.code, answer.information),
                         (self.address(PROVIDER_1), *packets.ERRORS["too-big"][self.version], 1300))
        self.assertEqual([len(self.crossed(link, BACK)) for link in (LAN, ACCESS, CORE)], [1, 1, 0])

    def test_a_detour_lowers_the_hop_limit_of_answers_and_takes_time(self) -> None:
        chain.begin(faults.Detour(CORE, hops=3, delay_ms=30))

        near, far = self.prober.probe(2), self.prober.probe()

        self.assertEqual(near.source, self.address(PROVIDER_1))
        self.assertEqual(far.hop_limit, 64 - len(ROUTERS) - 3)
        self.assertGreaterEqual(self.took(far.sequence), 0.030)
        self.assertEqual(self.path(), [self.address(node) for node in HOPS])

    def test_a_renumbered_router_answers_from_another_address_and_passes_on_as_ever(self) -> None:
        for hop, router in enumerate(ROUTERS, start=1):
            with self.subTest(router), chain.under(faults.Renumbered(router)):
                answer = self.prober.probe(hop)
                self.assertEqual(answer.source, OTHER_ADDRESSES[router][self.version])
                self.assertEqual(answer.kind, packets.ERRORS["hop-limit-exceeded"][self.version][0])
                self.assertEqual(self.prober.probe().kind, REPLY[self.version])

    def test_a_full_line_holds_packets_as_long_as_its_queue_is(self) -> None:
        load = faults.Load(bits_per_second=4e6)
        shape = faults.Shape(queue_ms=100)
        with chain.under(shape, load):
            wait_until(lambda: len(chain.losses(shape)) > 0, "the queue runs over")
            answered = [self.prober.answer_to(self.prober.send(), seconds=1) for _ in range(5)]
        held = [one.due - one.at for one in chain.crossings(ACCESS, OUT, self.begun)]

        self.assertLessEqual(max(held), 0.100)
        self.assertGreater(max(held), 0.090)
        self.assertGreater(len([answer for answer in answered if answer]), 0)
        self.assertGreater(max(self.took(answer.sequence) for answer in answered if answer), 0.090)
        self.assertGreater(len(chain.sent("udp", ADDRESSES[HOST][4])), 10)

    def test_another_computer_fills_the_line_as_well(self) -> None:
        load = faults.Load(OTHER_COMPUTER, bits_per_second=4e6)
        shape = faults.Shape(queue_ms=80)
        before = len(chain.sent("udp"))
        with chain.under(shape, load):
            wait_until(lambda: len(chain.losses(shape)) > 0, "the queue runs over")

        self.assertEqual(len(chain.sent("udp")), before)

    def test_a_load_can_come_to_the_client(self) -> None:
        load = faults.Load(HOST, "client", bits_per_second=1e6)
        before, errors = len(chain.received("udp")), len(chain.sent("icmp"))
        with chain.under(load):
            wait_until(lambda: len(chain.received("udp")) >= before + 5, "the client is sent something")

        self.assertEqual(len(chain.sent("icmp")), errors)

    def test_a_load_ends_by_itself(self) -> None:
        load = faults.Load(bits_per_second=1e6, seconds=0.05)
        before = len(chain.sent("udp"))
        with chain.under(load):
            wait_until(lambda: len(chain.sent("udp")) > before, "it begins")
            wait_until(lambda: time.monotonic() - chain.sent("udp")[-1].at > DELIVERY_SECONDS, "it ends")

        first, last = chain.sent("udp")[before], chain.sent("udp")[-1]
        self.assertLessEqual(8 * 1200 * (len(chain.sent("udp")) - before - 1), 1e6 * 0.05)
        self.assertLessEqual(first.at, last.at)


class Nodes(InTheChain):
    def test_a_silent_router_passes_everything_on(self) -> None:
        for hop, router in enumerate(ROUTERS, start=1):
            with self.subTest(router), chain.under(fault := faults.ProbeAnswers(router, silent=True)):
                self.assert_no_answer(fault, hop_limit=hop)
                self.assertEqual(self.prober.probe(hop + 1).source, self.address(HOPS[hop]))
                self.assertEqual(self.prober.probe(address=self.address(router)).kind, REPLY[self.version])

    def test_a_whole_provider_can_be_silent(self) -> None:
        both = [faults.ProbeAnswers(router, silent=True) for router in (PROVIDER_1, PROVIDER_2)]
        chain.begin(*both)

        self.assert_no_answer(both[0], hop_limit=2)
        self.assert_no_answer(both[1], hop_limit=3)

        self.assertEqual(self.prober.probe(4).source, self.address(HOST_ROUTER))

    def test_a_router_that_answers_once_a_second_answers_the_first_probe_of_each(self) -> None:
        fault = faults.ProbeAnswers(PROVIDER_1, per_second=1)
        with chain.under(fault):
            begun = time.monotonic()
            first = self.prober.probe(2)
            sequences = [self.prober.send(2) for _ in range(5)]
            wait_until(lambda: len(chain.losses(fault)) >= 5, "the others get no answer")
            if time.monotonic() - begun < 1:
                self.assertFalse(any(self.prober.answer_to(one) for one in sequences))
            self.assertEqual(self.prober.probe().kind, REPLY[self.version])
            wait_until(
                lambda: self.prober.answer_to(self.prober.send(2), DELIVERY_SECONDS), "one is answered again"
            )

        second = next(one for one in self.prober.answers if one.sequence > first.sequence and one.is_error)
        self.assertGreaterEqual(second.at - begun, 1)

    def test_a_router_that_answers_late_passes_on_at_once(self) -> None:
        chain.begin(faults.ProbeAnswers(PROVIDER_2, delay_ms=80))

        late, far = self.prober.send(3), self.prober.send()
        self.prober.wait_for(late)

        self.assertGreaterEqual(self.took(late), 0.080)
        self.assertIsNotNone(self.prober.answer_to(far))
        self.assertEqual(self.held(TRANSIT, OUT) + self.held(TRANSIT, BACK), [0, 0])

    def test_a_router_may_lose_its_own_answers_only(self) -> None:
        chain.begin(fault := faults.ProbeAnswers(HOME_ROUTER, lose_pattern="x."))

        self.assert_no_answer(fault, hop_limit=1)

        self.assertEqual(self.prober.probe(1).source, self.address(HOME_ROUTER))
        self.assertEqual([self.prober.probe().kind for _ in range(4)], [REPLY[self.version]] * 4)

    def test_a_node_that_is_down_answers_nothing_and_passes_nothing(self) -> None:
        for hop, node in enumerate(HOPS, start=1):
            with self.subTest(node), chain.under(fault := faults.Down(node)):
                self.assert_no_answer(fault)
                self.assert_no_answer(fault, hop_limit=hop)
                if hop > 1:
                    self.assertEqual(self.prober.probe(hop - 1).source, self.address(HOPS[hop - 2]))

    def test_a_router_finds_the_host_gone_and_says_so(self) -> None:
        chain.begin(faults.Down(HOST, known=False))

        answer = self.prober.probe()

        self.assertEqual((answer.source, answer.kind, answer.code),
                         (self.address(HOST_ROUTER), *packets.ERRORS["host-unreachable"][self.version]))

    def test_a_host_that_ignores_pings_is_there_otherwise(self) -> None:
        chain.begin(fault := faults.EchoSilent(HOST))

        self.assert_no_answer(fault)

        with socket.socket(socket.AF_INET if self.version == 4 else socket.AF_INET6) as visitor:
            visitor.settimeout(PATIENCE_SECONDS)
            self.assertRaises(ConnectionRefusedError, visitor.connect, (self.address(HOST), 80))

    def test_a_router_that_ignores_pings_passes_those_of_others_on(self) -> None:
        chain.begin(fault := faults.EchoSilent(PROVIDER_1))

        sequence = self.prober.send(address=self.address(PROVIDER_1))
        wait_until(lambda: chain.losses(fault), "its answer is lost")

        self.assertIsNone(self.prober.answer_to(sequence, DELIVERY_SECONDS))
        self.assertEqual(self.prober.probe().kind, REPLY[self.version])
        self.assertEqual(self.prober.probe(2).source, self.address(PROVIDER_1))

    def test_routers_refuse_in_each_way(self) -> None:
        for router, error in ((HOME_ROUTER, "network-unreachable"), (PROVIDER_1, "prohibited"),
                              (PROVIDER_2, "host-unreachable"), (HOST_ROUTER, "prohibited")):  # fmt: skip
            with self.subTest(router), chain.under(faults.Refuse(router, error)):
                answer = self.prober.probe()
                self.assertEqual((answer.source, answer.kind, answer.code),
                                 (self.address(router), *packets.ERRORS[error][self.version]))
                # The path up to there is as ever.
                hop = HOPS.index(router) + 1
                self.assertEqual(self.prober.probe(hop).kind, packets.ERRORS["hop-limit-exceeded"][self.version][0])


class Forgeries(InTheChain):
    """Which forged errors the kernel hands to the program, and what is in them."""

    # The others it keeps, or gives to a socket with another identifier.
    ARRIVING = {
        4: {"other-destination", "wrong-sequence", "wrong-mark", "mark-left-out", "off-path", "from-the-host"},
        6: {"other-destination", "wrong-sequence", "wrong-mark", "mark-left-out", "off-path", "from-the-host",
            "from-itself", "unknown-type", "unknown-code"},
    }  # fmt: skip

    def setUp(self) -> None:
        super().setUp()
        # The request that they are about gets no answer of its own.
        chain.begin(faults.EchoSilent(HOST))
        self.sequence = self.prober.send()
        wait_until(lambda: chain.sent("echo")[-1].echo.sequence == self.sequence, "the request is sent")
        self.request = chain.sent("echo")[-1].packet

    def arrived(self, name: str, error: str = "host-unreachable") -> list[Answer]:
        """What the program is told: everything before the true error that follows the forged one."""
        self.prober.answers.clear()
        chain.forge(name, self.request, error)
        chain.inject(packets.build_error("prohibited", self.request, self.address(HOME_ROUTER)))
        told = packets.ERRORS["prohibited"][self.version]

        def is_last(answer: Answer) -> bool:
            return (answer.source, answer.kind, answer.code) == (self.address(HOME_ROUTER), *told)

        wait_until(lambda: self.prober.read() or any(map(is_last, self.prober.answers)), "the true error arrives")
        return [answer for answer in self.prober.answers if not is_last(answer)]

    def test_the_kernel_keeps_some_and_delivers_the_others(self) -> None:
        for name in forgeries.FORGERIES:
            with self.subTest(name):
                self.assertEqual(len(self.arrived(name)), int(name in self.ARRIVING[self.version]))

    def test_a_forged_error_differs_from_a_true_one_where_its_name_says(self) -> None:
        true = (self.address(PROVIDER_2), *packets.ERRORS["hop-limit-exceeded"][self.version], self.sequence)
        for name, expected in (
            ("wrong-mark", true),
            ("wrong-sequence", (*true[:3], self.sequence ^ 0x5000)),
            ("off-path", (forgeries.STRANGER[self.version], *true[1:])),
            ("from-the-host", (self.address(HOST), *true[1:])),
            ("unknown-code", (true[0], true[1], 99, true[3])),
        ):
            with self.subTest(name):
                answer = self.arrived(name, "hop-limit-exceeded")[0]
                self.assertEqual((answer.source, answer.kind, answer.code, answer.sequence), expected)


class NamesOfTheChain(InTheChain):
    def setUp(self) -> None:
        super().setUp()
        self.server = self.address(NAME_SERVER)

    def test_both_servers_know_the_hosts_addresses(self) -> None:
        for node in NAME_SERVERS:
            for kind, version in (("A", 4), ("AAAA", 6)):
                response = ask(self.address(node), kind=kind)
                self.assertEqual(code_of(response), 0)
                self.assertTrue(response.endswith(socket.inet_pton(
                    socket.AF_INET if version == 4 else socket.AF_INET6, ADDRESSES[HOST][version])))  # fmt: skip

    def test_an_unknown_name_is_unknown(self) -> None:
        self.assertEqual(code_of(ask(self.server, "nowhere.test")), 3)

    def test_queries_are_recorded(self) -> None:
        ask(self.address(PROVIDER_NAME_SERVER), kind="AAAA")

        query = chain.queries(PROVIDER_NAME_SERVER)[-1]
        self.assertEqual((query.server, query.name, query.kind, query.identifier),
                         (self.address(PROVIDER_NAME_SERVER), HOST_NAME, 28, 0x1234))
        self.assertGreater(len(chain.sent("udp", self.address(PROVIDER_NAME_SERVER))), 0)

    def test_each_error_has_its_code(self) -> None:
        for answer, code in (("refused", 5), ("no-such-name", 3), ("failure", 2)):
            with self.subTest(answer), chain.under(faults.NameAnswers(answer=answer)):
                self.assertEqual(code_of(ask(self.server)), code)
                self.assertEqual(code_of(ask(self.address(PROVIDER_NAME_SERVER))), 0)

    def test_a_silent_server_takes_the_query(self) -> None:
        before = len(chain.queries())
        with chain.under(faults.NameAnswers(answer="silent")):
            self.assertIsNone(ask(self.server, patience=DELIVERY_SECONDS))
            wait_until(lambda: len(chain.queries()) == before + 1, "the query comes")

    def test_a_server_that_is_down_gets_no_query(self) -> None:
        ask(self.server)
        before = len(chain.queries())
        with chain.under(fault := faults.Down(NAME_SERVER)):
            self.assertIsNone(ask(self.server, patience=DELIVERY_SECONDS))
            wait_until(lambda: chain.losses(fault), "the query is lost")
        self.assertEqual(len(chain.queries()), before)

    def test_an_ignored_query_is_answered_when_it_is_asked_again(self) -> None:
        chain.begin(faults.NameAnswers(lose_pattern="x."))

        self.assertIsNone(ask(self.server, patience=DELIVERY_SECONDS))

        self.assertIsNotNone(ask(self.server))

    def test_a_slow_server_answers_in_the_end(self) -> None:
        chain.begin(faults.NameAnswers(delay_ms=120))
        begun = time.monotonic()

        self.assertEqual(code_of(ask(self.server)), 0)

        self.assertGreaterEqual(time.monotonic() - begun, 0.120)

    def test_wrong_answers_are_wrong_as_they_say(self) -> None:
        right = ask(self.server)
        with chain.under(faults.NameAnswers(answer="wrong-address")):
            self.assertEqual(ask(self.server)[-4:], socket.inet_aton("192.0.2.66"))
        with chain.under(faults.NameAnswers(answer="wrong-identifier")):
            response = ask(self.server)
            self.assertNotEqual(response[:2], right[:2])
            self.assertEqual(response[2:], right[2:])
        with chain.under(faults.NameAnswers(answer="wrong-name")):
            self.assertIn(b"\5wrong\4test\0", ask(self.server))

    def test_a_portal_answers_names_and_requests_and_lets_nothing_else_through(self) -> None:
        chain.begin(fault := faults.Portal())

        for asked in (PROVIDER_NAME_SERVER, HOST, HOME_ROUTER):
            self.assertEqual(ask(self.address(asked))[-4:], socket.inet_aton(ADDRESSES[HOME_ROUTER][4]))
        self.assert_no_answer(fault)
        place = self.address(HOST) if self.version == 4 else f"[{self.address(HOST)}]"
        with urllib.request.urlopen(f"http://{place}/anything", timeout=PATIENCE_SECONDS) as page:
            self.assertEqual((page.url, page.read()), (f"http://{ADDRESSES[HOME_ROUTER][4]}{portal.PATH}", portal.PAGE))

    def test_a_portal_that_closes_leaves_the_way_open(self) -> None:
        with chain.under(faults.Portal()):
            ask(self.address(PROVIDER_NAME_SERVER))

        self.assertEqual(ask(self.address(PROVIDER_NAME_SERVER))[-4:], socket.inet_aton(ADDRESSES[HOST][4]))
        self.assertEqual(self.prober.probe().kind, REPLY[self.version])


class OwnNetwork(InTheChain):
    """What goes wrong at the client itself."""

    def shown(self, *words: str) -> str:
        command = ["ip", f"-{self.version}", *words]
        return subprocess.run(command, capture_output=True, text=True, timeout=10, check=True).stdout

    def test_a_lost_carrier_shows_and_comes_back(self) -> None:
        with chain.under(faults.NoCarrier()):
            wait_until(lambda: "NO-CARRIER" in self.shown("link", "show", UPLINK), "the carrier is lost")
        wait_until(lambda: "NO-CARRIER" not in self.shown("link", "show", UPLINK), "the carrier is back")
        self.wait_until_well()

    def test_a_device_that_is_off_has_no_way_out(self) -> None:
        with chain.under(faults.LinkOff()):
            self.assertNotIn("UP", self.shown("link", "show", UPLINK).split("<")[1].split(">")[0].split(","))
            self.assertRaises(OSError, self.prober.send)
        self.wait_until_well()

    def test_without_an_address_nothing_can_be_sent(self) -> None:
        with chain.under(faults.NoAddress((self.version,))):
            self.assertNotIn("global", self.shown("address", "show", "dev", UPLINK))
            self.assertRaises(OSError, self.prober.send)
        self.wait_until_well()

    def test_without_a_default_route_only_the_home_is_reached(self) -> None:
        with chain.under(faults.NoDefaultRoute((self.version,))):
            self.assertRaises(OSError, self.prober.send)
            self.assertEqual(self.prober.probe(address=self.address(HOME_ROUTER)).kind, REPLY[self.version])
        self.wait_until_well()

    def test_the_routers_neighbor_entry_fails_and_recovers(self) -> None:
        with chain.under(faults.Down(HOME_ROUTER, known=False)):
            self.prober.send()
            wait_until(lambda: "FAILED" in self.shown("neigh", "show", self.address(HOME_ROUTER)), "the entry fails")
            self.assertEqual(self.prober.probe(address=self.address(NAME_SERVER)).kind, REPLY[self.version])
        self.wait_until_well()


class PathOverIPv4(Path):
    version = 4


class PathOverIPv6(Path):
    version = 6


class LinksOverIPv4(Links):
    version = 4


class LinksOverIPv6(Links):
    version = 6


class NodesOverIPv4(Nodes):
    version = 4


class NodesOverIPv6(Nodes):
    version = 6


class ForgeriesOverIPv4(Forgeries):
    version = 4


class ForgeriesOverIPv6(Forgeries):
    version = 6


class NamesOverIPv4(NamesOfTheChain):
    version = 4


class NamesOverIPv6(NamesOfTheChain):
    version = 6


class OwnNetworkOverIPv4(OwnNetwork):
    version = 4


class OwnNetworkOverIPv6(OwnNetwork):
    version = 6


# What they have in common is no test of its own.
del InTheChain, Path, Links, Nodes, Forgeries, NamesOfTheChain, OwnNetwork


class TheChain(unittest.TestCase):
    FOLDER = pathlib.Path(__file__).resolve().parent.parent

    def run_python(self, code: str, **environment: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [sys.executable, "-B", "-c", code], cwd=self.FOLDER, env={**os.environ, **environment},
            capture_output=True, text=True, timeout=30, check=False,
        )  # fmt: skip

    def test_it_refuses_to_work_outside_its_namespace(self) -> None:
        done = self.run_python("from lab.chain import Chain; Chain()", TARNWICK_LAB_NAMESPACE="net:[0]")

        self.assertNotEqual(done.returncode, 0)
        self.assertIn("LabError", done.stderr)

    def test_a_fault_begins_once(self) -> None:
        with chain.under(faults.Cut(CORE)):
            self.assertRaises(ValueError, chain.begin, faults.Cut(CORE))
        self.assertEqual(chain.faults, ())

    def test_nonsense_is_refused(self) -> None:
        self.assertRaises(ValueError, faults.NameAnswers, answer="odd")
        self.assertRaises(ValueError, chain.begin, faults.Cut("odd"))
        self.assertRaises(ValueError, chain.begin, faults.MtuHole(LAN, 1000, told=True))
        self.assertEqual(chain.faults, ())

    def test_nothing_is_left_of_it_after_a_close_or_a_kill(self) -> None:
        for end, printed in (("chain.close(); print(held())", ["0"]), ("os.kill(os.getpid(), 9)", [])):
            with self.subTest(end):
                command = ["unshare", "--net", "sh", "-c", self.NESTED, "sh", sys.executable, self.CODE + end]
                done = subprocess.run(command, cwd=self.FOLDER, capture_output=True, text=True, timeout=30, check=False)
                self.assertEqual(done.stdout.splitlines(), [*printed, "left: 1: lo:"], done.stderr)

    # A namespace in the namespace, which sees what is left in it.
    NESTED = (
        'ip link set lo up; export TARNWICK_LAB_NAMESPACE=$(readlink /proc/self/ns/net); "$1" -B -c "$2"; '
        'echo "left:" $(ip -oneline link | cut -d " " -f 1,2)'
    )
    CODE = """
import os
from lab.chain import Chain

def held():
    links = [os.readlink(f"/proc/self/fd/{one}") for one in os.listdir("/proc/self/fd") if os.path.islink(f"/proc/self/fd/{one}")]
    return len([link for link in links if link.startswith(("net:", "socket:", "/dev/net"))])

chain = Chain()
assert held() > 20
"""


if __name__ == "__main__":
    unittest.main()
