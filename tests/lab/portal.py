"""A captive portal in the home router: it takes every name query and every HTTP request, wherever they were meant to go."""

from __future__ import annotations

import http.server
import socket
import threading

from . import name_server
from .namespaces import Namespace
from .topology import ADDRESSES, HOME_ROUTER, LAN, device
from .wires import Wires

PAGE = b"<!DOCTYPE html><title>Sign in</title><p>Please sign in.</p>\n"
PATH = "/sign-in"
_HTTP_PORT = 80
_TABLE = 53
_IP_TRANSPARENT = 19
_IPV6_TRANSPARENT = 75


class _Names(dict[str, tuple[str, ...]]):
    """Every name leads to the home router."""

    def __contains__(self, name: object) -> bool:
        return True

    def get(self, name: str, default: object = None) -> tuple[str, ...]:  # type: ignore[override]
        return tuple(ADDRESSES[HOME_ROUTER].values())


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self) -> None:
        at_portal = self.path == PATH
        self.send_response(200 if at_portal else 302)
        if not at_portal:
            self.send_header("Location", f"http://{ADDRESSES[HOME_ROUTER][4]}{PATH}")
        self.send_header("Content-Length", str(len(PAGE)))
        self.end_headers()
        self.wfile.write(PAGE)

    def log_message(self, *_: object) -> None:
        pass


class CaptivePortal:
    """Is open until it is closed."""

    def __init__(self, wires: Wires, home_router: Namespace) -> None:
        self._home_router = home_router
        self._redirect("add")
        sockets = home_router.call(name_server.open_sockets)
        self._names = name_server.NameServer(wires, sockets, _Names())
        self._servers = [self._serve(one) for one in home_router.call(_listen)]

    def close(self) -> None:
        for server in self._servers:
            server.shutdown()
            server.server_close()
        self._names.close()
        self._redirect("delete")

    def _redirect(self, verb: str) -> None:
        """Makes the router hold every address for its own, as far as queries and requests from the LAN go."""
        for version in (4, 6):
            lines = [
                f"rule {verb} iif {device(LAN)} ipproto {protocol} dport {port} lookup {_TABLE}"
                for protocol, port in (("udp", name_server.PORT), ("tcp", _HTTP_PORT))
            ]
            self._home_router.ip([*lines, f"route {verb} local default dev lo table {_TABLE}"], version)

    @staticmethod
    def _serve(listening: socket.socket) -> http.server.ThreadingHTTPServer:
        address = listening.getsockname()[:2]
        server = http.server.ThreadingHTTPServer(address, _Handler, bind_and_activate=False)
        server.socket.close()
        server.socket = listening
        server.daemon_threads = True
        threading.Thread(target=server.serve_forever, args=(0.05,), name="portal", daemon=True).start()
        return server


def _listen() -> list[socket.socket]:
    listening = []
    for family, level, transparent in (
        (socket.AF_INET, socket.IPPROTO_IP, _IP_TRANSPARENT),
        (socket.AF_INET6, socket.IPPROTO_IPV6, _IPV6_TRANSPARENT),
    ):
        one = socket.socket(family, socket.SOCK_STREAM)
        if family == socket.AF_INET6:
            one.setsockopt(socket.IPPROTO_IPV6, socket.IPV6_V6ONLY, 1)
        one.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        one.setsockopt(level, transparent, 1)
        one.bind(("", _HTTP_PORT))
        one.listen()
        listening.append(one)
    return listening
