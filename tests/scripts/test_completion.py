"""What the shells complete, with the files that are installed for them."""

from __future__ import annotations

import os
import pathlib
import pty
import select
import signal
import subprocess
import tempfile
import time
import unittest

import pyte

BUILD = pathlib.Path(os.environ.get("TARNWICK_BUILD") or pathlib.Path(__file__).parents[2] / "build/debug")
SHARE = BUILD / "share/share"
PATIENCE = 60
COLUMNS, ROWS = 200, 24


class Shell:
    """An interactive shell without a user's start-up files."""

    def __init__(self, home: str, command: list[str], start: str) -> None:
        self._screen = pyte.Screen(COLUMNS, ROWS)
        self._stream = pyte.ByteStream(self._screen)
        environment = {
            "HOME": home, "PATH": os.environ["PATH"], "TERM": "xterm", "LANG": "C.UTF-8",
            "COLUMNS": str(COLUMNS), "LINES": str(ROWS),
        }
        self._process, self._terminal = pty.fork()
        if self._process == 0:
            os.chdir(home)
            os.execvpe(command[0], command, environment)
        self.type(f"{start}; PS1='ready> '\r")
        self.wait_for("\nready> ")

    def close(self) -> None:
        os.kill(self._process, signal.SIGKILL)
        os.waitpid(self._process, 0)
        os.close(self._terminal)

    def type(self, keys: str) -> None:
        os.write(self._terminal, keys.encode())

    def wait_for(self, text: str) -> None:
        deadline = time.monotonic() + PATIENCE
        while text not in self.shown():
            ready, _, _ = select.select([self._terminal], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                raise AssertionError(f"{text!r} is not shown:\n{self.shown()}")
            self._stream.feed(os.read(self._terminal, 65536))

    def shown(self) -> str:
        return "\n".join(["", *(line.rstrip(" ") + " " for line in self._screen.display)])


class Completion:
    """For bash and zsh, which complete at a terminal alone."""

    shell: Shell

    def command_line(self, program: str) -> pathlib.Path:
        raise NotImplementedError

    def start(self, home: str) -> Shell:
        raise NotImplementedError

    def setUp(self) -> None:
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.shell = self.start(home.name)
        self.addCleanup(self.shell.close)

    def assert_completed(self, typed: str, line: str) -> None:
        self.shell.type(typed + "\t")
        self.shell.wait_for("ready> " + line)
        self.shell.type("\x15")  # the line goes

    def test_options(self) -> None:
        self.assert_completed("tarnwick --from", "tarnwick --from-session ")
        self.assert_completed("tarnwick-watch --js", "tarnwick-watch --json ")

    def test_a_setting_and_its_value(self) -> None:
        self.assert_completed("tarnwick-watch --set PanelI", "tarnwick-watch --set PanelInk=")
        self.assert_completed("tarnwick-watch --set PanelInk=d", "tarnwick-watch --set PanelInk=dark ")
        self.assert_completed("tarnwick --set PacketLossTextMode=w", "tarnwick --set PacketLossTextMode=whenLossy ")

    def test_the_host_of_the_terminal_program(self) -> None:
        self.assert_completed("tarnwick-watch --json localh", "tarnwick-watch --json localhost")

    def test_the_options_of_a_report(self) -> None:
        self.assert_completed("tarnwick-watch rep", "tarnwick-watch report ")
        self.assert_completed("tarnwick-watch report --sin", "tarnwick-watch report --since ")
        self.assert_completed("tarnwick-watch report --since 7d --fo", "tarnwick-watch report --since 7d --format ")
        self.assert_completed("tarnwick-watch report --format ht", "tarnwick-watch report --format html ")
        self.assert_completed("tarnwick-watch report --host localh", "tarnwick-watch report --host localhost")

    def test_a_report_has_no_options_of_the_program_and_no_operand(self) -> None:
        # What can't be completed stays, and a second word behind it is typed.
        self.assert_completed("tarnwick-watch report --js\t x", "tarnwick-watch report --js x")
        self.assert_completed("tarnwick-watch report localh\t x", "tarnwick-watch report localh x")


class Bash(Completion, unittest.TestCase):
    def start(self, home: str) -> Shell:
        files = " ".join(str(SHARE / "bash-completion/completions" / name) for name in ("tarnwick", "tarnwick-watch"))
        return Shell(home, ["bash", "--norc", "--noprofile"], f"for f in {files}; do source $f; done")

    def test_a_value_behind_an_equals_sign(self) -> None:
        self.assert_completed("tarnwick-watch report --format=ht", "tarnwick-watch report --format=html ")
        self.assert_completed("tarnwick-watch report --host=localh", "tarnwick-watch report --host=localhost")


class Zsh(Completion, unittest.TestCase):
    def start(self, home: str) -> Shell:
        folder = next(SHARE.glob("zsh/*"))
        return Shell(home, ["zsh", "-f"], f"fpath=({folder} $fpath); autoload -U compinit; compinit -u -D")


class Fish(unittest.TestCase):
    # It looks for completion only of programs that are there.
    def completed(self, line: str) -> list[str]:
        folder = SHARE / "fish/vendor_completions.d"
        with tempfile.TemporaryDirectory() as home:
            known = pathlib.Path(home) / ".ssh/config"
            known.parent.mkdir(mode=0o700)
            known.write_text("Host one.example\n", encoding="utf-8")
            done = subprocess.run(
                ["fish", "--no-config", "-c", f"set -p fish_complete_path {folder}; complete -C '{line}'"],
                env={"HOME": home, "PATH": f"{BUILD}/app:{os.environ['PATH']}", "LANG": "C.UTF-8", "TERM": "xterm"},
                check=True, capture_output=True, text=True, timeout=PATIENCE)
        return [completion.split("\t")[0] for completion in done.stdout.splitlines()]

    def test_options(self) -> None:
        self.assertEqual(self.completed("tarnwick --from"), ["--from-session"])
        self.assertEqual(self.completed("tarnwick-watch --js"), ["--json"])

    def test_a_setting_and_its_value(self) -> None:
        self.assertEqual(self.completed("tarnwick-watch --set PingI"), ["PingInterval="])
        self.assertEqual(self.completed("tarnwick --set PanelInk=d"), ["PanelInk=dark"])

    def test_the_host_of_the_terminal_program(self) -> None:
        self.assertEqual(self.completed("tarnwick-watch --json one.ex"), ["one.example"])
        self.assertEqual(self.completed("tarnwick one.ex"), [])

    def test_the_options_of_a_report(self) -> None:
        self.assertEqual(self.completed("tarnwick-watch rep"), ["report"])
        self.assertEqual(self.completed("tarnwick-watch report --sin"), ["--since"])
        self.assertEqual(self.completed("tarnwick-watch report --format ht"), ["html"])
        self.assertEqual(self.completed("tarnwick-watch report --format=ht"), ["--format=html"])
        self.assertEqual(self.completed("tarnwick-watch report --host one.ex"), ["one.example"])
        self.assertEqual(self.completed("tarnwick-watch report --js"), [])
        self.assertEqual(self.completed("tarnwick-watch report one.ex"), [])
        self.assertEqual(self.completed("tarnwick-watch --si"), [])


if __name__ == "__main__":
    unittest.main()
