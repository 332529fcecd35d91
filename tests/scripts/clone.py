"""A clone with the project's scripts, in which everything that they call is a stand-in that keeps a record."""

from __future__ import annotations

import fcntl
import os
import pathlib
import pty
import shutil
import signal
import subprocess
import tempfile
import termios
import threading
import unittest

from endtoend.waiting import eventually

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
PATIENCE_SECONDS = 20
PASSWORD = "open sesame"
# An ordinary user and group that every system has.
NOBODY = 65534

# What the scripts take from the system.
REAL = "bash sh dirname basename sed awk sort comm id mktemp rm cat flock getent setpriv nproc mkdir tail test env head touch grep".split()

# Asks at the terminal, wherever input and output go. A password is good for all later calls.
SUDO = f"""#!/bin/bash
if [ "$1" = -n ]; then
    [ -e "$RECORDS/ticket" ] || {{ echo "sudo: a password is required" >&2; exit 1; }}
    shift
elif [ ! -e "$RECORDS/ticket" ]; then
    exec 3<>/dev/tty || exit 1
    printf '[sudo] password: ' >&3
    read -rsu 3 password
    [ "$password" = "{PASSWORD}" ] || exit 1
    touch "$RECORDS/ticket"
fi
case $1 in -v | true) exit ;; --) shift ;; esac
printf '%s\\n' "$*" >>"$RECORDS/sudo"
case $1 in env | apt-get) exec "$@" ;; esac
"""

STAND_INS = {
    "dpkg-query": 'printf "%s installed\\n" $INSTALLED',
    "apt-get": 'printf "%s\\n" "$*" >>"$RECORDS/apt-get"; [ -z "${APT_HANGS:-}" ] || { : >"$RECORDS/hangs"; exec cat "$APT_HANGS"; }',
    "cmake": 'printf "%s\\n" "$*" >>"$RECORDS/cmake"',
    "ninja": "echo ninja: no work to do.",
}


class Clone:
    """The scripts in a folder of their own, with a program that is built and says that it was started."""

    def __init__(self, *, sudo: bool = True, installed: bool = True) -> None:
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tarnwick-clone-"))
        self.folder.chmod(0o755)
        self.root, self.records, self.temporary = (self._make(name) for name in ("root", "records", "temporary"))
        self.commands = self._make("commands")
        shutil.copytree(ROOT / "scripts", self.root / "scripts")
        programs = self._make("root/build/release/app")
        for program in ("tarnwick", "tarnwick-watch"):
            self._put(programs / program, 'echo "started with: $*"')
        for command in REAL:
            (self.commands / command).symlink_to(shutil.which(command) or f"/bin/{command}")
        for command, script in STAND_INS.items():
            self._put(self.commands / command, script)
        if sudo:
            self._put(self.commands / "sudo", SUDO)
        self.environment = {
            "PATH": str(self.commands),
            "HOME": str(self.folder),
            "TMPDIR": str(self.temporary),
            "RECORDS": str(self.records),
            "INSTALLED": " ".join((*self._packages("run"), *self._packages("desktop"))) if installed else "g++",
        }

    def close(self) -> None:
        shutil.rmtree(self.folder)

    def record(self, command: str) -> str:
        """What a stand-in was called with, a call a line."""
        path = self.records / command
        return path.read_text(encoding="utf-8") if path.exists() else ""

    def as_user(self, *command: str) -> list[str]:
        """The command as an ordinary user runs it."""
        if os.geteuid() != 0:
            return list(command)
        if pathlib.Path("/proc/self/uid_map").read_text(encoding="ascii").split()[2] == "1":
            raise unittest.SkipTest("this namespace has one user only, who is root")
        for path in (self.folder, *self.folder.rglob("*")):
            if not path.is_symlink():
                os.chown(path, NOBODY, NOBODY)
        return ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups", *command]

    def script(self, name: str, *arguments: str) -> list[str]:
        return [str(self.root / "scripts" / name), *arguments]

    def run(self, command: list[str], **environment: str) -> subprocess.CompletedProcess[str]:
        """Without a terminal."""
        return subprocess.run(
            command,
            env=self.environment | environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            timeout=PATIENCE_SECONDS,
            start_new_session=True,
            check=False,
        )

    def _make(self, name: str) -> pathlib.Path:
        path = self.folder / name
        path.mkdir(parents=True)
        return path

    @staticmethod
    def _put(path: pathlib.Path, script: str) -> None:
        path.write_text(script if script.startswith("#!") else f"#!/bin/sh\n{script}\n", encoding="utf-8")
        path.chmod(0o755)

    @staticmethod
    def _packages(section: str) -> list[str]:
        lines = (ROOT / "scripts" / "packages.txt").read_text(encoding="utf-8").split(f"\n[{section}]\n")[1].split("\n[")[0]
        return [line.split("#")[0].strip() for line in lines.splitlines() if line.split("#")[0].strip()]


class Dialog:
    """A command in a terminal of its own, whose questions a test answers."""

    def __init__(self, clone: Clone, command: list[str], **environment: str) -> None:
        self._master, slave = pty.openpty()
        self._output = bytearray()
        self.process = subprocess.Popen(
            command,
            env=clone.environment | environment,
            stdin=slave,
            stdout=slave,
            stderr=slave,
            start_new_session=True,
            preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
        )
        os.close(slave)
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def __enter__(self) -> Dialog:
        return self

    def __exit__(self, *_: object) -> None:
        if self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()
        self._reader.join()
        os.close(self._master)

    @property
    def output(self) -> str:
        return self._output.decode(errors="replace").replace("\r\n", "\n")

    def expect(self, text: str) -> None:
        try:
            eventually(lambda: text in self.output, PATIENCE_SECONDS, text)
        except AssertionError as error:
            raise AssertionError(f"{error}, but: {self.output}") from None

    def type(self, text: str) -> None:
        os.write(self._master, text.encode())

    def end(self) -> int:
        status = self.process.wait(PATIENCE_SECONDS)
        self._reader.join()
        return status

    def _read(self) -> None:
        while True:
            try:
                data = os.read(self._master, 4096)
            except OSError:
                return  # the last one to hold the terminal has ended
            self._output += data
