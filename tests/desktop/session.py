"""A desktop session of its own: home folder, XDG folders, session bus, and everything started in it."""

from __future__ import annotations

import contextlib
import ctypes
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import uuid
from collections.abc import Iterator, Sequence

from endtoend.waiting import eventually

from .bus import Bus, BusError

OUTPUT = pathlib.Path(__file__).resolve().parents[2] / "build/desktop"
# Carried by everything that a session starts, directly or not: so all of it is found again at the end.
MARK = "TARNWICK_TEST_SESSION"
# Some compositors refuse to run as root.
NOBODY = 65534
PR_SET_PDEATHSIG = 1
# An ordinary session bus, except that the tests may listen on it as any user, and that it starts only the session's own
# services.
USUAL_BUS = pathlib.Path("/usr/share/dbus-1/session.conf")
USUAL_SERVICES = "<standard_session_servicedirs />"
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <include>{usual}</include>
  <policy context="mandatory"><allow user="*"/></policy>
</busconfig>
"""
INSTALLED_SERVICES = pathlib.Path("/usr/share/dbus-1/services")
SERVICE_NAME = re.compile(r"^Name=(\S+)", re.MULTILINE)
KEPT_VARIABLES = ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS")

libc = ctypes.CDLL(None)


def die_with_parent() -> None:
    libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def new_log_folder(name: str) -> pathlib.Path:
    """Modules that are tried at the same time may start the same panel; those of earlier runs are cleared away."""
    logs = OUTPUT / "logs"
    for folder in logs.glob(f"{name}-[0-9]*"):
        process = int(folder.name.rpartition("-")[2])
        if process == os.getpid() or not pathlib.Path(f"/proc/{process}").exists():
            shutil.rmtree(folder, ignore_errors=True)
    folder = logs / f"{name}-{os.getpid()}"
    folder.mkdir(parents=True)
    return folder


class Session:
    """Has folders from the constructor on and a bus from `start_bus` on; `close` kills everything in it."""

    def __init__(self, name: str, unprivileged: bool = False, withheld: Sequence[str] = ()) -> None:
        """The bus starts the services that are installed here, but for those whose names begin like one withheld."""
        self.withheld = tuple(withheld)
        self.mark = uuid.uuid4().hex
        self.user = NOBODY if unprivileged and os.geteuid() == 0 else None
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tarnwick-desktop-"))
        self.logs = new_log_folder(name)
        self.processes: list[subprocess.Popen[bytes]] = []
        self.bus: Bus
        self.home = self.folder / "home"
        self.config = self.folder / "config"
        self.data = self.folder / "data"
        self.runtime = self.folder / "runtime"
        cache = self.folder / "cache"
        for path in (self.home, self.config, self.data, self.runtime, cache):
            path.mkdir(mode=0o700)
        self.environment = {name: os.environ[name] for name in KEPT_VARIABLES if name in os.environ} | {
            MARK: self.mark,
            "HOME": str(self.home),
            "XDG_CONFIG_HOME": str(self.config),
            "XDG_DATA_HOME": str(self.data),
            "XDG_CACHE_HOME": str(cache),
            "XDG_RUNTIME_DIR": str(self.runtime),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.runtime}/bus",
            # Nothing of a session of this machine may be reached.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.runtime}/system_bus",
            "LC_ALL": "C.UTF-8",
            "NO_AT_BRIDGE": "0",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "GSETTINGS_BACKEND": "keyfile",
        }
        self.give_away()

    def give_away(self) -> None:
        """Hands the folders to the session's user."""
        if self.user is not None:
            for path in (self.folder, *self.folder.rglob("*")):
                os.chown(path, self.user, self.user, follow_symlinks=False)

    def write(self, path: pathlib.Path, text: str) -> None:
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        self.give_away()

    def own_copy(self, file: str) -> str:
        """The path of an executable that the session's user may start, wherever the original is, with its icons."""
        if self.user is None:
            return file
        original = pathlib.Path(file)
        copy = self.folder / "installed/bin" / original.name
        if not copy.exists():
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(original, copy)
            icons = original.parents[1] / "share/tarnwick/icons"
            if icons.is_dir():
                shutil.copytree(icons, self.folder / "installed/share/tarnwick/icons", dirs_exist_ok=True)
            self.give_away()
        return str(copy)

    def spawn(
        self,
        name: str,
        command: Sequence[str],
        environment: dict[str, str] | None = None,
        pass_fds: Sequence[int] = (),
    ) -> subprocess.Popen[bytes]:
        """Starts a program that writes to the log of that name, and dies with us."""
        with open(self.logs / f"{name}.log", "ab") as log:
            process = subprocess.Popen(
                command,
                env=self.environment | (environment or {}),
                cwd=self.home,
                stdin=subprocess.DEVNULL,
                stdout=log,
                stderr=log,
                start_new_session=True,
                pass_fds=pass_fds,
                preexec_fn=die_with_parent,
                **self._identity(),
            )
        self.processes.append(process)
        return process

    def run(self, command: Sequence[str], timeout: float = 10) -> bytes:
        """The standard output of a program, once it has ended."""
        result = subprocess.run(
            command,
            env=self.environment,
            cwd=self.home,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            timeout=timeout,
            **self._identity(),
        )
        if result.returncode != 0:
            raise AssertionError(f"{command}: {result.returncode}: {result.stderr.decode(errors='replace')}")
        return result.stdout

    def _identity(self) -> dict[str, object]:
        return {} if self.user is None else {"user": self.user, "group": self.user, "extra_groups": []}

    def log(self, name: str) -> str:
        with contextlib.suppress(FileNotFoundError):
            return (self.logs / f"{name}.log").read_text(encoding="utf-8", errors="replace")
        return ""

    def start_bus(self) -> None:
        self.bus = self._start_daemon("bus", self.environment["DBUS_SESSION_BUS_ADDRESS"])

    def start_system_bus(self) -> Bus:
        return self._start_daemon("system_bus", self.environment["DBUS_SYSTEM_BUS_ADDRESS"])

    def _start_daemon(self, name: str, address: str) -> Bus:
        usual = self._bus_without_withheld_services(self.folder / name)
        self.write(self.folder / "bus.conf", BUS_CONFIGURATION.format(usual=usual))
        command = ["dbus-daemon", f"--config-file={self.folder}/bus.conf", "--nofork", "--nopidfile"]
        daemon = self.spawn(name, [*command, f"--address={address}"])

        def connected() -> Bus | None:
            if daemon.poll() is not None:
                raise AssertionError(f"the bus ended with {daemon.returncode}: {self.log(name)}")
            # Its socket is there a moment before it takes connections.
            with contextlib.suppress(BusError):
                return Bus(address)
            return None

        return eventually(connected, 10, "the bus takes connections")

    def _bus_without_withheld_services(self, folder: pathlib.Path) -> pathlib.Path:
        """The file that configures it, in a new folder."""
        services = folder / "services"
        services.mkdir(parents=True)
        for file in INSTALLED_SERVICES.glob("*.service"):
            name = SERVICE_NAME.search(file.read_text(encoding="utf-8"))
            if name is not None and not name[1].startswith(self.withheld):
                (services / file.name).symlink_to(file)
        usual = USUAL_BUS.read_text(encoding="utf-8")
        assert USUAL_SERVICES in usual, f"{USUAL_BUS} is not as expected"
        file = folder / "session.conf"
        self.write(file, usual.replace(USUAL_SERVICES, f"<servicedir>{services}</servicedir>"))
        return file

    @staticmethod
    def kill(process: subprocess.Popen[bytes]) -> None:
        """The process with its group."""
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()

    def close(self) -> None:
        if hasattr(self, "bus"):
            self.bus.close()
        for process in reversed(self.processes):
            self.kill(process)
        eventually(self._kill_marked, 10, "everything of the session has ended")
        shutil.rmtree(self.folder, ignore_errors=True)

    def _kill_marked(self) -> bool:
        """Kills the programs that the session's programs have started; true when none was left."""
        none_left = True
        for process in self._marked():
            none_left = False
            with contextlib.suppress(OSError):
                os.kill(int(process.name), signal.SIGKILL)
        return none_left

    def _marked(self) -> Iterator[pathlib.Path]:
        """All that runs in the session, by its folder in /proc."""
        mark = f"{MARK}={self.mark}".encode()
        for entry in pathlib.Path("/proc").iterdir():
            if entry.name.isdigit():
                with contextlib.suppress(OSError):
                    if mark in (entry / "environ").read_bytes().split(b"\0"):
                        yield entry

    def threads(self) -> str:
        """A line for each thread of all that runs in the session: whether it waits, and where in the kernel."""
        lines = []
        for process in self._marked():
            for thread in sorted((process / "task").iterdir()):
                with contextlib.suppress(OSError):
                    name = (thread / "comm").read_text().strip()
                    state = (thread / "stat").read_text().rpartition(")")[2].split()[0]
                    lines.append(f"{process.name}/{thread.name} {name}: {state} {(thread / 'wchan').read_text()}")
        return "\n".join(lines)
