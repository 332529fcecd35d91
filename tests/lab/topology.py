"""Who is in the chain, at which addresses, and who is joined to whom."""

from __future__ import annotations

CLIENT = "client"
HOME_ROUTER = "home-router"
PROVIDER_1 = "provider-1"
PROVIDER_2 = "provider-2"
HOST_ROUTER = "host-router"
HOST = "host"
# On the home network.
NAME_SERVER = "name-server"
OTHER_COMPUTER = "other-computer"
# On the network of the first provider router.
PROVIDER_NAME_SERVER = "provider-name-server"

# From the client outwards: hop 1 and so on.
HOPS = (HOME_ROUTER, PROVIDER_1, PROVIDER_2, HOST_ROUTER, HOST)
ROUTERS = HOPS[:-1]
NAME_SERVERS = (NAME_SERVER, PROVIDER_NAME_SERVER)

LAN = "lan"
ACCESS = "access"
CORE = "core"
TRANSIT = "transit"
HOSTING = "hosting"
PROVIDER_NAMES = "names"

# The members of each link; the two ends of the way to the host stand first, the inner one before the outer one.
LINKS = {
    LAN: (CLIENT, HOME_ROUTER, NAME_SERVER, OTHER_COMPUTER),
    ACCESS: (HOME_ROUTER, PROVIDER_1),
    CORE: (PROVIDER_1, PROVIDER_2),
    TRANSIT: (PROVIDER_2, HOST_ROUTER),
    HOSTING: (HOST_ROUTER, HOST),
    PROVIDER_NAMES: (PROVIDER_1, PROVIDER_NAME_SERVER),
}
# Those on the way to the host, from the client outwards.
PATH_LINKS = (LAN, ACCESS, CORE, TRANSIT, HOSTING)

ADDRESSES = {
    CLIENT: {4: "192.0.2.10", 6: "2001:db8:0:1::10"},
    OTHER_COMPUTER: {4: "192.0.2.20", 6: "2001:db8:0:1::20"},
    NAME_SERVER: {4: "192.0.2.53", 6: "2001:db8:0:1::53"},
    HOME_ROUTER: {4: "192.0.2.1", 6: "2001:db8:0:1::1"},
    PROVIDER_1: {4: "198.51.100.1", 6: "3fff:1::1"},
    PROVIDER_2: {4: "198.51.100.7", 6: "3fff:1::7"},
    PROVIDER_NAME_SERVER: {4: "198.51.100.53", 6: "3fff:1::53"},
    HOST_ROUTER: {4: "203.0.113.1", 6: "3fff:2::1"},
    HOST: {4: "203.0.113.9", 6: "3fff:2::9"},
}
# What routers are called that another way leads over.
OTHER_ADDRESSES = {
    HOME_ROUTER: {4: "192.0.2.2", 6: "2001:db8:0:1::2"},
    PROVIDER_1: {4: "198.51.100.21", 6: "3fff:1::21"},
    PROVIDER_2: {4: "198.51.100.27", 6: "3fff:1::27"},
    HOST_ROUTER: {4: "203.0.113.21", 6: "3fff:2::21"},
}
# Links with a network prefix. On the others each end has its one address alone, and a route to the other end.
NETWORKS = {
    LAN: {4: "192.0.2.0/24", 6: "2001:db8:0:1::/64"},
    HOSTING: {4: "203.0.113.0/24", 6: "3fff:2::/64"},
}
DEFAULT = {4: "default", 6: "default"}
# What the resolver's `hosts` knows of those on the way to the host, where it is told.
NAMES = {f"{hop}.test": tuple(ADDRESSES[hop].values()) for hop in HOPS}
# What each forwards where, besides what its links say. A packet for anywhere else ends at the second router, which answers
# that there is no such network.
ROUTES = {
    CLIENT: ((DEFAULT, HOME_ROUTER),),
    OTHER_COMPUTER: ((DEFAULT, HOME_ROUTER),),
    NAME_SERVER: ((DEFAULT, HOME_ROUTER),),
    HOME_ROUTER: ((DEFAULT, PROVIDER_1),),
    PROVIDER_1: ((NETWORKS[LAN], HOME_ROUTER), (NETWORKS[HOSTING], PROVIDER_2)),
    PROVIDER_2: ((NETWORKS[LAN], PROVIDER_1), (NETWORKS[HOSTING], HOST_ROUTER)),
    PROVIDER_NAME_SERVER: ((DEFAULT, PROVIDER_1),),
    HOST_ROUTER: ((DEFAULT, PROVIDER_2),),
    HOST: ((DEFAULT, HOST_ROUTER),),
}


def device(link: str) -> str:
    """The name of the network device at every member of the link."""
    return f"{link}0"


def hardware_address(link: str, node: str) -> str:
    links, nodes = list(LINKS), list(ADDRESSES)
    return f"02:00:00:00:{links.index(link):02x}:{nodes.index(node):02x}"


def links_of(node: str) -> list[str]:
    return [link for link, members in LINKS.items() if node in members]


def inner_link(node: str) -> str:
    """The link over which a node answers the client."""
    return next(link for link, members in LINKS.items() if node in members[1:])


def is_address_of(node: str, address: str) -> bool:
    return address in ADDRESSES[node].values()


def configuration(node: str) -> list[str]:
    """The commands for `ip` that bring a node up. They may be given again."""
    lines = ["link set lo up"]
    for link in links_of(node):
        lines += _link_configuration(node, link)
    for networks, gateway in ROUTES[node]:
        link = next(link for link, members in LINKS.items() if {node, gateway} <= set(members))
        lines += [
            f"route replace {networks[version]} via {ADDRESSES[gateway][version]} dev {device(link)}"
            for version in (4, 6)
        ]
    return lines


def _link_configuration(node: str, link: str) -> list[str]:
    own, name = ADDRESSES[node], device(link)
    lines = [f"link set {name} up"]
    if link in NETWORKS:
        lines += [
            f"address replace {own[version]}/{NETWORKS[link][version].split('/')[1]} dev {name} {nodad}"
            for version, nodad in ((4, ""), (6, "nodad"))
        ]
        return lines
    peer = next(member for member in LINKS[link] if member != node)
    lines += [f"address replace {own[4]}/32 dev {name}", f"address replace {own[6]}/128 dev {name} nodad"]
    lines += [f"route replace {ADDRESSES[peer][version]} dev {name}" for version in (4, 6)]
    return lines
