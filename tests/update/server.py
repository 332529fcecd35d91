"""A server of updates on loopback. It answers each path as told, and records what it was asked."""

from __future__ import annotations

import contextlib
import dataclasses
import http.server
import os
import pathlib
import socket
import socketserver
import ssl
import threading
import time
import urllib.parse
from collections.abc import Iterator

from .authority import Certificate


@dataclasses.dataclass(frozen=True)
class Behavior:
    """How a path is answered. Without one: with the file of that name in the server's folder, or that there is none."""

    status: int = 200
    # In place of the file's content.
    body: str | None = None
    # Beside those of every answer.
    headers: tuple[tuple[str, str], ...] = ()
    # The Content-Length, where it is not that of the body.
    announced_size: int | None = None
    # Takes the request, and sends nothing.
    mute: bool = False
    # After so many bytes of the body nothing more is sent, and the connection stays.
    hang_after: int | None = None
    # After so many bytes of the body the connection ends, and nothing says that this is the end.
    cut_after: int | None = None
    # The body comes again and again, without an announced size.
    endless: bool = False
    # The body comes in chunks, without an announced size.
    chunked: bool = False
    # The body comes in pieces of so many bytes, with so many seconds before each.
    piece: int | None = None
    pause: float = 0.0


def redirect(target: str, status: int = 302) -> Behavior:
    return Behavior(status=status, headers=(("Location", target),), body="")


@dataclasses.dataclass(frozen=True)
class Request:
    path: str
    # Names are in small letters: their case carries no meaning, and differs between versions of the toolkit.
    headers: tuple[tuple[str, str], ...]


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # An answer is written in several pieces.
    disable_nagle_algorithm = True
    server: UpdateServer

    def do_GET(self) -> None:
        headers = tuple((name.lower(), value) for name, value in self.headers.items())
        self.server.requests.append(Request(self.path, headers))
        behavior = self.server.behavior(self.path)
        try:
            self._answer(behavior)
        except OSError:
            self.server.left.append(self.path)
            self.close_connection = True

    def _answer(self, behavior: Behavior) -> None:
        body = behavior.body.encode("latin-1") if behavior.body is not None else self._file()
        if body is None:
            self.send_error(404)
            return
        if behavior.mute:
            self._hang()
            return
        self._send_headers(behavior, len(body))
        if behavior.endless:
            while True:
                self._send_chunk(body)
        stop = behavior.hang_after if behavior.hang_after is not None else behavior.cut_after
        self._send_body(behavior, body[:stop])
        if behavior.hang_after is not None:
            self._hang()
        elif behavior.cut_after is not None:
            self.close_connection = True
        elif behavior.chunked:
            self.wfile.write(b"0\r\n\r\n")

    def _file(self) -> bytes | None:
        name = urllib.parse.unquote(urllib.parse.urlsplit(self.path).path).lstrip("/")
        path = (self.server.folder / name).resolve()
        is_inside = path.is_relative_to(self.server.folder.resolve())
        return path.read_bytes() if is_inside and path.is_file() else None

    def _send_headers(self, behavior: Behavior, size: int) -> None:
        self.send_response(behavior.status)
        for name, value in behavior.headers:
            self.send_header(name, value)
        if behavior.endless or behavior.chunked:
            self.send_header("Transfer-Encoding", "chunked")
        else:
            self.send_header("Content-Length", str(size if behavior.announced_size is None else behavior.announced_size))
        self.end_headers()

    def _send_body(self, behavior: Behavior, body: bytes) -> None:
        if behavior.chunked:
            self._send_chunk(body)
        elif behavior.piece is not None:
            for start in range(0, len(body), behavior.piece):
                time.sleep(behavior.pause)
                self.wfile.write(body[start : start + behavior.piece])
        else:
            self.wfile.write(body)

    def _send_chunk(self, content: bytes) -> None:
        self.wfile.write(b"%x\r\n%s\r\n" % (len(content), content))
        self.server.chunks += 1

    def _hang(self) -> None:
        """Until the other side goes, or the server ends."""
        while self.connection.recv(1024):
            pass
        raise ConnectionError("The other side has gone.")

    def log_message(self, format: str, *arguments: object) -> None:
        pass


class UpdateServer(socketserver.ThreadingMixIn, http.server.HTTPServer):
    """Serves a folder over HTTPS, or over plain HTTP without a certificate, from its making to `stop`.

    `requests` are those that came, `left` the paths of those whose client went before the end of the answer, `chunks` is
    how many the connections have taken.
    """

    daemon_threads = True
    block_on_close = False

    def __init__(self, folder: str | os.PathLike[str], certificate: Certificate | None, port: int = 0) -> None:
        super().__init__(("127.0.0.1", port), _Handler)
        self.folder = pathlib.Path(folder)
        self.requests: list[Request] = []
        self.left: list[str] = []
        self.chunks = 0
        self._behaviors: dict[str, Behavior] = {}
        self._connections: set[socket.socket] = set()
        self._context: ssl.SSLContext | None = None
        if certificate is not None:
            self._context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            self._context.load_cert_chain(certificate.certificate, certificate.key)
        self.address = f"{'https' if certificate else 'http'}://127.0.0.1:{self.server_address[1]}"
        self._thread = threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.05}, daemon=True)
        self._thread.start()

    def __enter__(self) -> UpdateServer:
        return self

    def __exit__(self, *exception: object) -> None:
        self.stop()

    def behave(self, path: str, behavior: Behavior | None) -> None:
        """From the next request on; None: as at first."""
        if behavior is None:
            self._behaviors.pop(path, None)
        else:
            self._behaviors[path] = behavior

    def behavior(self, path: str) -> Behavior:
        return self._behaviors.get(path, Behavior())

    def paths(self) -> list[str]:
        """What was asked for, in order."""
        return [request.path for request in self.requests]

    def stop(self) -> None:
        """Ends the connections too."""
        self.shutdown()
        self._thread.join()
        self.server_close()
        for connection in list(self._connections):
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)

    def finish_request(self, request: socket.socket, client_address: object) -> None:
        """In the connection's own thread."""
        try:
            connection = self._context.wrap_socket(request, server_side=True) if self._context else request
        except OSError:
            return  # it does not trust us
        with connection, self._kept(connection):
            super().finish_request(connection, client_address)

    @contextlib.contextmanager
    def _kept(self, connection: socket.socket) -> Iterator[None]:
        self._connections.add(connection)
        try:
            yield
        except OSError:
            pass  # the client has gone between two requests
        finally:
            self._connections.discard(connection)
