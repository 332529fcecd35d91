"""A proxy on loopback that passes encrypted connections through, and records where they went."""

from __future__ import annotations

import http.server
import socket
import threading


class _Handler(http.server.BaseHTTPRequestHandler):
    server: Proxy

    def do_CONNECT(self) -> None:
        host, port = self.path.rsplit(":", 1)
        self.server.targets.append(self.path)
        with socket.create_connection((host, int(port))) as far:
            self.send_response(200)
            self.end_headers()
            back = threading.Thread(target=_pass_on, args=(far, self.connection), daemon=True)
            back.start()
            _pass_on(self.connection, far)
            back.join()

    def log_message(self, format: str, *arguments: object) -> None:
        pass


def _pass_on(source: socket.socket, sink: socket.socket) -> None:
    try:
        while part := source.recv(65536):
            sink.sendall(part)
        sink.shutdown(socket.SHUT_WR)
    except OSError:
        pass  # one side has gone


class Proxy(http.server.ThreadingHTTPServer):
    daemon_threads = True
    block_on_close = False

    def __init__(self) -> None:
        super().__init__(("127.0.0.1", 0), _Handler)
        self.targets: list[str] = []
        self.address = f"http://127.0.0.1:{self.server_address[1]}"
        threading.Thread(target=self.serve_forever, daemon=True).start()
