"""The servers of updates themselves: who trusts them, what they record, and that they end."""

from __future__ import annotations

import contextlib
import pathlib
import subprocess
import sys
import tempfile
import unittest

from endtoend.waiting import eventually

from .authority import OTHER_HOST, Authority
from .server import Behavior, UpdateServer, redirect

# Python looks for authorities where the program does.
_FETCH = "import sys, urllib.request; print(urllib.request.urlopen(sys.argv[1], timeout=20).read().decode(), end='')"


class UpdateServers(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "files").mkdir()
        (self.folder / "files/feed").write_text("what is new", encoding="ascii")
        self.authority = Authority(self.folder / "authority")

    def server(self, hosts: str | None = None, has_expired: bool = False, port: int = 0) -> UpdateServer:
        named = {} if hosts is None else {"hosts": hosts}
        certificate = self.authority.certificate("server", has_expired=has_expired, **named)
        return UpdateServer(self.folder / "files", certificate, port)

    def fetch(self, address: str, prefix: list[str] | None = None) -> subprocess.CompletedProcess[str]:
        command = [*(self.authority.prefix() if prefix is None else prefix), sys.executable, "-c", _FETCH, address]
        return subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)

    def test_a_command_behind_the_prefix_trusts_the_authority(self) -> None:
        with self.server() as server:
            done = self.fetch(f"{server.address}/feed")
            self.assertEqual((done.returncode, done.stdout), (0, "what is new"), done.stderr)
            self.assertEqual(server.paths(), ["/feed"])

    def test_any_other_command_does_not(self) -> None:
        with self.server() as server:
            self.assertIn("CERTIFICATE_VERIFY_FAILED", self.fetch(f"{server.address}/feed", prefix=[]).stderr)
            self.assertEqual(server.paths(), [])

    def test_bad_certificates_are_bad_for_their_own_reason(self) -> None:
        with self.server(has_expired=True) as server:
            self.assertIn("certificate has expired", self.fetch(server.address).stderr)
        with self.server(OTHER_HOST) as server:
            self.assertIn("IP address mismatch", self.fetch(server.address).stderr)

    def test_a_path_behaves_as_told_until_it_is_told_otherwise(self) -> None:
        with self.server() as server:
            server.behave("/old", redirect("/feed"))
            self.assertEqual(self.fetch(f"{server.address}/old").stdout, "what is new")
            server.behave("/old", None)
            self.assertIn("HTTP Error 404", self.fetch(f"{server.address}/old").stderr)

    def test_a_server_that_is_started_again_has_its_old_address(self) -> None:
        with self.server() as server:
            port = server.server_address[1]
        self.assertIn("Connection refused", self.fetch(server.address).stderr)
        with self.server(port=port) as server:
            self.assertEqual(self.fetch(f"{server.address}/feed").stdout, "what is new")

    def test_the_end_of_a_server_ends_connections_that_hang(self) -> None:
        with contextlib.ExitStack() as stack:
            server = stack.enter_context(self.server())
            server.behave("/feed", Behavior(hang_after=4))
            command = [*self.authority.prefix(), sys.executable, "-c", _FETCH, f"{server.address}/feed"]
            fetching = stack.enter_context(subprocess.Popen(command, stderr=subprocess.PIPE, text=True))
            eventually(lambda: server.paths(), 20, "the request")
            server.stop()
            self.assertIn("IncompleteRead(4 bytes read", fetching.communicate(timeout=20)[1])
