"""What can be wrong with a connection, whose fault it is, and how much of that can be known: data for the chain."""

from __future__ import annotations

import dataclasses
import random
from collections.abc import Callable

from .faults import (
    FAMILIES, OTHERS_LOAD, Cut, Delay, Detour, Down, EchoSilent, Fault, LinkOff, Load, Loss, MtuHole, NameAnswers,
    NoAddress, NoCarrier, NoDefaultRoute, Portal, ProbeAnswers, Refuse, Renumbered, Shape,
)  # fmt: skip
from .topology import (
    ACCESS, CORE, HOME_ROUTER, HOST, HOST_ROUTER, HOSTING, LAN, NAME_SERVER, PROVIDER_1, PROVIDER_2, ROUTERS, TRANSIT,
)  # fmt: skip
from .wires import BACK, OUT

THIS_COMPUTER = "thisComputer"
WIFI = "wifi"
LOCAL_NETWORK = "localNetwork"
PROVIDER = "provider"
BEYOND_PROVIDER = "beyondProvider"
THE_HOST = "host"
THE_NAME_SERVER = "nameServer"
SIGN_IN = "signIn"
OWN_LOAD = "ownLoad"
UNCLEAR = "unclear"
BLAMES = (
    THIS_COMPUTER, WIFI, LOCAL_NETWORK, PROVIDER, BEYOND_PROVIDER, THE_HOST, THE_NAME_SERVER, SIGN_IN, OWN_LOAD, UNCLEAR,
)  # fmt: skip

# What pings of the host's address meet with: all is well, some are lost or take more than SLOW_MS, none is answered.
NONE, DEGRADED, DOWN = "none", "degraded", "down"
SLOW_MS = 100
# What a lookup of the host's name meets with: "no answer" or an error, an answer after LATE_MS, another address.
FOUND, MISSING, LATE, WRONG = "found", "missing", "late", "wrong"
LATE_MS = 1000


@dataclasses.dataclass(frozen=True)
class Scenario:
    """Faults, and what may be said about them."""

    name: str
    faults: tuple[Fault, ...]
    # Whose fault it is: the first is the truth, the others can't be told from it with what the client sees. None: nobody's.
    blames: tuple[str, ...]
    trouble: str = NONE
    # Whether it may be said that it is not clear.
    unclear: bool = False
    versions: tuple[int, ...] = FAMILIES
    # Of the host's name, where it matters: the client then knows the host by its name.
    lookup: str = FOUND
    # What can't be seen on a network made of wires, for whoever stands in for those that tell it: the signal of Wi-Fi in
    # dBm, and what the system's network service says.
    signal_dbm: int | None = None
    connectivity: str = "full"

    @property
    def is_by_chance(self) -> bool:
        """Whether it is drawn for each packet what becomes of it."""
        return any(isinstance(fault, Loss) for fault in self.faults)

    def allows(self, blame: str | None) -> bool:
        """Whether this may be said; None is for saying nothing."""
        if not self.blames:
            return blame is None
        return blame in self.blames or (self.unclear and blame == UNCLEAR)


# Traffic of this computer that fills no line here.
UPLOAD = Load(bits_per_second=1.5e6)


def _silent(*routers: str) -> tuple[Fault, ...]:
    return tuple(ProbeAnswers(router, silent=True) for router in routers)


SCENARIOS = (
    # Nothing is wrong, however odd it looks.
    Scenario("all is well", (), ()),
    Scenario("a router is silent", _silent(PROVIDER_1), ()),
    Scenario("all routers of the provider are silent", _silent(PROVIDER_1, PROVIDER_2), ()),
    Scenario("all routers are silent", _silent(*ROUTERS), ()),
    Scenario("all routers answer once a second", tuple(ProbeAnswers(router, per_second=1) for router in ROUTERS), ()),
    Scenario("a router answers slowly", (ProbeAnswers(PROVIDER_2, delay_ms=400),), ()),
    Scenario("a router answers every third probe", (ProbeAnswers(PROVIDER_1, lose_pattern="xx."),), ()),
    Scenario("the home router answers slowly and seldom",
             (ProbeAnswers(HOME_ROUTER, delay_ms=300, lose_pattern=".x"),), ()),
    Scenario("answers come back another way", (Detour(CORE, hops=3, delay_ms=15),), ()),
    Scenario("the way has become another one", (Renumbered(PROVIDER_2), Renumbered(HOST_ROUTER)), ()),
    Scenario("the way is long but not slow", (Delay(TRANSIT, 20), Delay(ACCESS, 8)), ()),
    Scenario("large packets vanish", (MtuHole(ACCESS, 1400),), ()),
    Scenario("large packets are refused", (MtuHole(CORE, 1400, told=True),), ()),
    # This computer.
    Scenario("the cable is out", (NoCarrier(),), (THIS_COMPUTER,), DOWN),
    Scenario("the device is off", (LinkOff(),), (THIS_COMPUTER,), DOWN),
    Scenario("there is no address", (NoAddress(),), (THIS_COMPUTER,), DOWN),
    Scenario("there is no default route", (NoDefaultRoute(),), (THIS_COMPUTER,), DOWN),
    # The home.
    Scenario("the LAN is cut", (Cut(LAN),), (LOCAL_NETWORK,), DOWN),
    Scenario("the home router is down", (Down(HOME_ROUTER),), (LOCAL_NETWORK,), DOWN),
    Scenario("the home router is not found", (Down(HOME_ROUTER, known=False),), (LOCAL_NETWORK,), DOWN),
    Scenario("the LAN loses much", (Loss(LAN, 0.3),), (LOCAL_NETWORK,), DEGRADED),
    Scenario("the LAN is slow", (Delay(LAN, 90),), (LOCAL_NETWORK,), DEGRADED),
    Scenario("the Wi-Fi is weak", (Loss(LAN, 0.15), Delay(LAN, 40, jitter_ms=120)), (WIFI, LOCAL_NETWORK), DEGRADED,
             signal_dbm=-84),
    Scenario("the Wi-Fi is weak, and nothing passes", (Cut(LAN),), (WIFI, LOCAL_NETWORK), DOWN, signal_dbm=-88),
    Scenario("the home router forbids it", (Refuse(HOME_ROUTER, "prohibited"),), (LOCAL_NETWORK,), DOWN, unclear=True),
    # The provider.
    Scenario("the access line is cut", (Cut(ACCESS),), (PROVIDER,), DOWN),
    Scenario("the access line is cut, and the router says so", (Refuse(HOME_ROUTER, "network-unreachable"),), (PROVIDER,),
             DOWN, unclear=True),
    Scenario("the access line loses much", (Loss(ACCESS, 0.25),), (PROVIDER,), DEGRADED),
    Scenario("the access line loses what comes back", (Loss(ACCESS, 0.4, direction=BACK),), (PROVIDER,), DEGRADED),
    Scenario("the access line is slow", (Delay(ACCESS, 150),), (PROVIDER,), DEGRADED),
    Scenario("the access line is unsteady", (Delay(ACCESS, 30, jitter_ms=200),), (PROVIDER,), DEGRADED),
    Scenario("the provider's first router is down", (Down(PROVIDER_1),), (PROVIDER,), DOWN),
    Scenario("the provider's second router is down", (Down(PROVIDER_2),), (PROVIDER,), DOWN, unclear=True),
    Scenario("the provider's own network loses much", (Loss(CORE, 0.3),), (PROVIDER,), DEGRADED, unclear=True),
    Scenario("the provider's network is cut behind a silent router", (*_silent(PROVIDER_1), Cut(CORE)), (PROVIDER,), DOWN,
             unclear=True),
    Scenario("the provider forbids it", (Refuse(PROVIDER_1, "prohibited"),), (PROVIDER,), DOWN, unclear=True),
    # Beyond the provider.
    Scenario("the way beyond the provider is cut", (Cut(TRANSIT),), (BEYOND_PROVIDER,), DOWN),
    Scenario("the way beyond the provider loses much", (Loss(TRANSIT, 0.3),), (BEYOND_PROVIDER,), DEGRADED),
    Scenario("the way beyond the provider is slow", (Delay(TRANSIT, 160),), (BEYOND_PROVIDER,), DEGRADED),
    Scenario("the way beyond the provider is slow while this computer uploads", (UPLOAD, Delay(TRANSIT, 160)),
             (BEYOND_PROVIDER,), DEGRADED),
    Scenario("the way back to the provider is slow and another", (Detour(TRANSIT, hops=2, delay_ms=300),),
             (BEYOND_PROVIDER,), DEGRADED),
    Scenario("the provider knows no way there", (Refuse(PROVIDER_2, "network-unreachable"),), (BEYOND_PROVIDER, PROVIDER),
             DOWN, unclear=True),
    Scenario("the host's router is down", (Down(HOST_ROUTER),), (BEYOND_PROVIDER, THE_HOST), DOWN),
    # Between the home router and the host's everybody is silent: more than that can't be known.
    Scenario("the way beyond a silent provider loses much", (*_silent(PROVIDER_1, PROVIDER_2), Loss(TRANSIT, 0.3)),
             (BEYOND_PROVIDER, PROVIDER), DEGRADED, unclear=True),
    Scenario("the way beyond the provider is cut, and all routers answer once a second",
             (*(ProbeAnswers(router, per_second=1) for router in ROUTERS), Cut(TRANSIT)), (BEYOND_PROVIDER,), DOWN,
             unclear=True),
    # The host.
    Scenario("the host is down", (Down(HOST),), (THE_HOST,), DOWN),
    Scenario("the host is down, and its router says so", (Down(HOST, known=False),), (THE_HOST,), DOWN),
    Scenario("the host is down, and the way there has become another one",
             (Renumbered(PROVIDER_2), Renumbered(HOST_ROUTER), Down(HOST)), (THE_HOST,), DOWN, unclear=True),
    Scenario("the host answers no ping", (EchoSilent(HOST),), (THE_HOST,), DOWN),
    Scenario("the host answers some pings", (Loss(HOSTING, 0.4, direction=OUT),), (THE_HOST,), DEGRADED),
    Scenario("the host is slow", (Delay(HOSTING, 400, direction=BACK),), (THE_HOST,), DEGRADED),
    Scenario("the host is slow while this computer uploads", (UPLOAD, Delay(HOSTING, 400, direction=BACK)), (THE_HOST,),
             DEGRADED),
    Scenario("the host is down behind a router that answers slowly", (ProbeAnswers(PROVIDER_1, delay_ms=500), Down(HOST)),
             (THE_HOST,), DOWN),
    Scenario("the host's router forbids it", (Refuse(HOST_ROUTER, "prohibited"),), (THE_HOST, BEYOND_PROVIDER), DOWN,
             unclear=True),
    # Names.
    Scenario("the name server is down", (Down(NAME_SERVER),), (THE_NAME_SERVER,), lookup=MISSING),
    Scenario("the name server is silent", (NameAnswers(answer="silent"),), (THE_NAME_SERVER,), lookup=MISSING),
    Scenario("the name server refuses", (NameAnswers(answer="refused"),), (THE_NAME_SERVER,), lookup=MISSING),
    Scenario("the name server fails", (NameAnswers(answer="failure"),), (THE_NAME_SERVER,), lookup=MISSING),
    Scenario("the name server knows no such name", (NameAnswers(answer="no-such-name"),), (THE_NAME_SERVER, THE_HOST),
             lookup=MISSING, unclear=True),
    Scenario("the name server is slow", (NameAnswers(delay_ms=1500),), (THE_NAME_SERVER,), lookup=LATE),
    Scenario("the name server names another address", (NameAnswers(answer="wrong-address"),), (THE_NAME_SERVER, THE_HOST),
             lookup=WRONG, unclear=True),
    # Who is at home.
    Scenario("the network wants people to sign in", (Portal(),), (SIGN_IN,), DOWN, connectivity="portal"),
    Scenario("this computer fills the line", (Shape(), Load()), (OWN_LOAD,), DEGRADED),
    # This computer sees a slow access line and no traffic of its own.
    Scenario("another computer fills the line", (Shape(), OTHERS_LOAD), (PROVIDER,), DEGRADED, unclear=True),
)  # fmt: skip


# Where something between two systems goes wrong, and whose it is.
_LINK_BLAMES = (
    (LAN, LOCAL_NETWORK),
    (ACCESS, PROVIDER),
    (CORE, PROVIDER),
    (TRANSIT, BEYOND_PROVIDER),
    (HOSTING, THE_HOST),
)
_NODE_BLAMES = (
    (HOME_ROUTER, (LOCAL_NETWORK,)),
    (PROVIDER_1, (PROVIDER,)),
    (PROVIDER_2, (PROVIDER,)),
    (HOST_ROUTER, (BEYOND_PROVIDER, THE_HOST)),
    (HOST, (THE_HOST,)),
)


def _lossy_link(chance: random.Random) -> Scenario:
    link, blame = chance.choice(_LINK_BLAMES)
    direction = chance.choice((OUT, BACK))
    fault = Loss(link, round(chance.uniform(0.3, 0.7), 2), direction=direction)
    return Scenario("loss", (fault,), (blame,), DEGRADED, unclear=True)


def _slow_link(chance: random.Random) -> Scenario:
    link, blame = chance.choice(_LINK_BLAMES)
    delay = round(chance.uniform(120, 600))
    fault = Delay(link, delay, jitter_ms=round(chance.uniform(0, delay / 2)), direction=chance.choice((OUT, BACK)))
    return Scenario("delay", (fault,), (blame,), DEGRADED, unclear=True)


def _cut_link(chance: random.Random) -> Scenario:
    link, blame = chance.choice(_LINK_BLAMES)
    return Scenario("cut", (Cut(link),), (blame,), DOWN, unclear=True)


def _node_down(chance: random.Random) -> Scenario:
    node, blames = chance.choice(_NODE_BLAMES)
    return Scenario("down", (Down(node, known=chance.random() < 0.5),), blames, DOWN, unclear=True)


def _own_fault(chance: random.Random) -> Scenario:
    fault = chance.choice((NoCarrier(), LinkOff(), NoAddress(), NoDefaultRoute()))
    return Scenario("client", (fault,), (THIS_COMPUTER,), DOWN, unclear=True)


def _name_fault(chance: random.Random) -> Scenario:
    fault = chance.choice(
        (NameAnswers(answer="silent"), NameAnswers(answer="refused"), NameAnswers(answer="failure"), Down(NAME_SERVER))
    )
    return Scenario("names", (fault,), (THE_NAME_SERVER,), lookup=MISSING, unclear=True)


def _odd_router(chance: random.Random) -> Scenario:
    """No fault at all."""
    router = chance.choice(ROUTERS)
    answers = chance.choice(
        (
            ProbeAnswers(router, silent=True),
            ProbeAnswers(router, per_second=1),
            ProbeAnswers(router, delay_ms=round(chance.uniform(120, 600))),
            ProbeAnswers(router, lose_fraction=round(chance.uniform(0.2, 0.8), 2)),
        )
    )
    return Scenario("odd router", (answers,), ())


# How often each kind is drawn.
_KINDS: tuple[tuple[Callable[[random.Random], Scenario], int], ...] = (
    (_lossy_link, 6), (_slow_link, 6), (_cut_link, 4), (_node_down, 4), (_own_fault, 2), (_name_fault, 2), (_odd_router, 2),
)  # fmt: skip


# Beside which nothing else can happen: this computer reaches no further than its own network, or no pings are sent.
_ALONE = (_own_fault, _name_fault)


def _beside(chance: random.Random) -> Fault:
    """A circumstance that makes a fault harder to tell, and is none itself."""
    return chance.choice((UPLOAD, Renumbered(chance.choice(ROUTERS[1:]))))


def random_scenarios(count: int, seed: int, *, beside: bool = False) -> list[Scenario]:
    """So many scenarios with one fault each, over one version of IP each. The same for the same seed.

    With `beside`, most of the same faults have a circumstance that makes them harder to tell.
    """
    chance, aside = random.Random(seed), random.Random(f"beside {seed}")
    makers, weights = zip(*_KINDS)
    drawn = []
    for index in range(count):
        maker = chance.choices(makers, weights)[0]
        scenario = maker(chance)
        circumstances = (_beside(aside),) if beside and maker not in _ALONE else ()
        name = ", ".join((scenario.name, *(type(one).__name__.lower() for one in circumstances)))
        drawn.append(
            dataclasses.replace(
                scenario,
                name=f"{seed}{'+' if beside else '.'}{index}: {name}",
                faults=(*circumstances, *scenario.faults),
                versions=(chance.choice(FAMILIES),),
            )
        )
    return drawn
